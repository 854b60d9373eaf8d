#pragma once

#include "pos/cash/cash_closing.h"

#include <QString>

class QTextDocument;

namespace orvo::pos::cash {

// The closing's printed reports: the day's totals, the cash count, withdrawals and deposits and
// the Z report's text, as one document printed through the printer or PDF the user chooses.
QString closingReportHtml(const QSqlDatabase& db, const QString& serial, const QDate& day,
                          const QString& companyName, const CountedCash& counted);
// "###,###,###,##0.00" with this country's separators.
QString amountText(const Decimal& amount);

} // namespace orvo::pos::cash
