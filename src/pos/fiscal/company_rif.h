#pragma once

#include "pos/fiscal/register_check.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::pos::fiscal {

// A RIF as the printer keeps it: letters and digits only, upper case ("J-40123456-7" and
// "J401234567" are the same RIF).
QString rifKey(const QString& rif);

// The company's RIF (PARAMETROS.IDEmpresa); empty when the store has none.
QString companyRif(const QSqlDatabase& db);

// The printer must be the company's: its RIF is the one it prints on every document. Throws
// UserError when both are known and differ; a company without RIF is not compared.
void checkPrinterCompany(const PrinterFacts& printer, const QString& companyRif);

} // namespace orvo::pos::fiscal
