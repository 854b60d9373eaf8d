#pragma once

#include "pos/fiscal/igtf.h"
#include "pos/returns/return_types.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <optional>

// SQL of returns. Every writer runs inside the caller's transaction.
namespace orvo::pos::returns::store {

// The invoice of `serie` with its client, client type and lines; nothing when not there.
std::optional<ReturnableInvoice> loadInvoice(const QSqlDatabase& db, long long number,
                                             const QString& serie);

struct ReturnHeader {
    long long number = 0;
    QString serie;
    QDateTime fecha;
    QString usuario;
    bool contingency = false; // a paper return while the fiscal printer was out
};
// DEVVENTAS with its totals at 0, pending print.
void insertHeader(const QSqlDatabase& db, const ReturnHeader& h, const ReturnableInvoice& invoice);
// The IGTF the return carries: the refund's share of what its invoice's dollars paid, and the tax
// on it at `percent`. Written on the return; zero when the invoice paid none.
fiscal::igtf::Owed writeIgtf(const QSqlDatabase& db, long long number, const QString& serie,
                             const ReturnableInvoice& invoice, const Decimal& refund,
                             const Decimal& percent);
// A line of the return; equal lines (barcode, list, prices, discount) become one.
void addLine(const QSqlDatabase& db, long long number, const QString& serie, const QDateTime& hora,
             const ReturnLine& line);
// Adds the quantity to CantidadDevuelta of the invoice's line; false when that would return more
// than was sold (another till returned it meanwhile).
bool markReturned(const QSqlDatabase& db, const ReturnableInvoice& invoice, int item,
                  const Decimal& quantity);

// What the last cost of a variant with negative stock becomes.
enum class NegativeStockLastCost { LineCost, ListPrice };
// Puts the return's goods back: first the variants with stock zero or more (weighted average
// cost, last cost = the line's list price), then those still negative (cost of the line).
void restock(const QSqlDatabase& db, long long number, const QString& serie,
             NegativeStockLastCost negative);
// The totals summed from the saved lines, written to DEVVENTAS.
ReturnTotals writeTotals(const QSqlDatabase& db, long long number, const QString& serie);

// CTACONTABLE.Codigo of the refunds account; empty when none is flagged.
QString refundsAccount(const QSqlDatabase& db);
struct CashRefund {
    QString serie;
    QDateTime fecha;
    QString account;
    QString creditor;
    QString document;
    Decimal amount;
    QString usuario;
};
// A SALIDASCAJA row under the register's next Numero; returns that number.
long long insertCashRefund(const QSqlDatabase& db, const CashRefund& refund);

void markPrinted(const QSqlDatabase& db, long long number, const QString& serie);
// Returns of this register saved but waiting for their print (Impresa = 0), oldest first.
QList<long long> pendingReturnPrints(const QSqlDatabase& db, const QString& serie);

} // namespace orvo::pos::returns::store
