#include "pos/fiscal/company_rif.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

namespace orvo::pos::fiscal {

QString rifKey(const QString& rif) {
    QString key;
    for (const QChar c : rif)
        if (c.isLetterOrNumber())
            key += c.toUpper();
    return key;
}

QString companyRif(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SELECT IDEmpresa FROM PARAMETROS")).toString().trimmed();
}

void checkPrinterCompany(const PrinterFacts& printer, const QString& company) {
    if (rifKey(company).isEmpty() || rifKey(printer.rif) == rifKey(company))
        return;
    throw UserError(QStringLiteral("El RIF de la impresora fiscal (%1) no corresponde con el RIF "
                                   "de la empresa (%2)...!")
                        .arg(printer.rif.trimmed(), company));
}

} // namespace orvo::pos::fiscal
