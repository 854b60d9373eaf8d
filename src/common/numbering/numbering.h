#pragma once

#include <QDate>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>
#include <functional>

// Document numbers. Catalogue codes and most documents take the highest number of their own table
// plus one; sales invoices and returns take theirs from counters (UltimaFactura,
// UltimaDevolucion) kept per register in CAJAS or once for the company in PARAMETROS, because they
// must follow the fiscal printer's numbering.
namespace orvo::common {

// Highest numeric value of `column` in `table` plus one; 1 for an empty table. Codes compare as
// numbers ("0099" gives 100); text codes with anything but digits ("A12") are passed over. Not
// reserved: two callers at the same moment get the same code. `table` and `column` must be
// described in the schema, otherwise std::invalid_argument.
int nextCode(const QSqlDatabase& db, const QString& table, const QString& column);

// A number taken as the highest plus one and the row that carries it: `insert(number)` writes the
// row (and whatever goes with it). The table has a unique key on the number, so when another
// register took the same number first its row refuses this one, and the next number is taken
// and written again. Each try runs in a savepoint of the caller's open transaction, so the
// transaction goes on after a refused try on PostgreSQL as on SQLite (where the write lock taken
// at BEGIN makes the refusal rare). `scopeColumn` = `scopeValue` numbers within a part of the
// table (per register). Returns the number written; gives up with DbError after many refusals.
struct NumberedRow {
    QString table;
    QString column;
    QString scopeColumn; // empty: the whole table
    QVariant scopeValue;
};
long long insertNumbered(const QSqlDatabase& db, const NumberedRow& row,
                         const std::function<void(long long number)>& insert);

// PARAMETROS.ControlFactura: where the sales counters live.
enum CounterScope : int { kCountersPerRegister = 1, kCountersForCompany = 2 };

// Increments the invoice (return) counter and reads it back, inside the caller's open transaction,
// so two registers sharing the company counter never get the same number. Returns 0 and moves no
// counter when controlFactura is neither 1 nor 2 or the counter row does not exist.
long long takeInvoiceNumber(const QSqlDatabase& db, int controlFactura, const QString& serial);
long long takeReturnNumber(const QSqlDatabase& db, int controlFactura, const QString& serial);

// The register's day (DIARIOCAJA of `serial` on `day`): the invoice becomes the day's last one
// (FacturaFinal) and the day Status 1; a return only sets Status 1.
void recordInvoiceOnRegisterDay(const QSqlDatabase& db, const QString& serial, long long number,
                                const QDate& day);
void recordReturnOnRegisterDay(const QSqlDatabase& db, const QString& serial, const QDate& day);

// Copies an invoice (VENTAS, MOVVENTAS, CUENTASXCOBRAR, PAGOSVENTA) or a return (DEVVENTAS,
// MOVDEVVENTAS) of `serial` under `newNumber`, then voids the old one: amounts and quantities
// become 0 and its rows stay, so the fiscal sequence has no gap. With useToday the copy is dated
// with the server's current date and time, otherwise it keeps the old ones. Requires an open
// transaction.
void renumberInvoice(const QSqlDatabase& db, const QString& serial, long long oldNumber,
                     long long newNumber, bool useToday);
void renumberReturn(const QSqlDatabase& db, const QString& serial, long long oldNumber,
                    long long newNumber, bool useToday);

// The whole step, inside the caller's open transaction: takes the next number, records it on the
// register's day and, when oldNumber > 0, re-numbers that document under it. Returns the new
// number, 0 when no counter moved (nothing else is then written).
long long nextInvoiceNumber(const QSqlDatabase& db, int controlFactura, const QString& serial,
                            long long oldNumber = 0, bool useToday = false);
long long nextReturnNumber(const QSqlDatabase& db, int controlFactura, const QString& serial,
                           long long oldNumber = 0, bool useToday = false);

// Remissions (REMISION/MOVREMISION) and receptions (RECEPCION/MOVRECEPCION).
enum class BoxDocument { Remission, Reception };
// Highest NumeroCaja among the document's lines; 0 without lines.
long long lastBoxNumber(const QSqlDatabase& db, BoxDocument kind, long long number);
// Highest document Numero; 0 for an empty table.
long long lastDocumentNumber(const QSqlDatabase& db, BoxDocument kind);
bool documentHasLines(const QSqlDatabase& db, BoxDocument kind, long long number);

} // namespace orvo::common

namespace orvo::common {

// The sales counters as the correction screen shows and sets them (last numbers used).
struct SalesCounters {
    long long lastInvoice = 0;
    long long lastReturn = 0;
};

// Current counters of the register (ControlFactura 1) or the company (2); 0 when missing.
SalesCounters readSalesCounters(const QSqlDatabase& db, int controlFactura, const QString& serial);

// The counter correction, in its own transaction. The invoice counter must agree with the fiscal
// printer's last invoice, and the return counter may not go back; otherwise UserError with the
// screen's message. ControlFactura other than 1 or 2 changes nothing.
void correctSalesCounters(const QSqlDatabase& db, int controlFactura, const QString& serial,
                          const SalesCounters& wanted, long long printerLastInvoice);

} // namespace orvo::common
