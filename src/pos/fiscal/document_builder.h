#pragma once

#include "pos/fiscal/commands.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <array>

namespace orvo::pos::fiscal {

// The printer's rates 1..3 as percentages, to tell a line's rate character.
using RateTable = std::array<Decimal, 3>;

// IMPUESTOS codes 1, 2 and 3 (the rates the register's opening programs).
RateTable loadRateTable(const QSqlDatabase& db);
// 0 for a zero rate; 1..3 for a programmed one. Throws UserError when the rate is not programmed.
int rateIndex(const Decimal& taxPercent, const RateTable& rates);

// The invoice (VENTAS, MOVVENTAS, PAGOSVENTA) as the printer prints it.
FiscalDocument saleDocument(const QSqlDatabase& db, int invoiceNumber, const QString& serial,
                            const RateTable& rates);
// The return (DEVVENTAS, MOVDEVVENTAS) as a credit note on the invoice it returns.
FiscalDocument returnDocument(const QSqlDatabase& db, int returnNumber, const QString& serial,
                              const RateTable& rates);

// Header lines from TABLA_VALORES "ENCFISCAL" 01..08 and footer lines from "PIEFISCAL" 91..98;
// the footer is printed only between the dates of "FECPIEFIS" 01 and 02 (dd/MM/yyyy), and
// blank outside them.
QList<ProgrammedLine> headerFooterLines(const QSqlDatabase& db, const QDate& today);

} // namespace orvo::pos::fiscal
