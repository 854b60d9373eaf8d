#pragma once

#include "common/decimal/decimal.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <optional>

namespace orvo::pos::payments {

// Payment ways, recognised by FORMAPAGO.Nombre.
inline const QString kCash = QStringLiteral("EFECTIVO");
inline const QString kCashDollar = QStringLiteral("EFECTIVO DOLAR");
inline const QString kCheque = QStringLiteral("CHEQUE");
inline const QString kDeposit = QStringLiteral("DEPOSITO");
inline const QString kDebitCard = QStringLiteral("TARJETA DE DEBITO");
inline const QString kCreditCard = QStringLiteral("TARJETA DE CREDITO");
// The bank cell of a payment made through the card terminal.
inline const QString kTerminalBank = QStringLiteral("OTROS BANCO NAC.");

enum class TerminalState { None, Approved, Rejected };

// One row of the payments grid.
struct PaymentRow {
    QString way;                   // FORMAPAGO.Nombre
    std::optional<Decimal> amount; // in the way's currency (dollars for EFECTIVO DOLAR)
    QString document;              // cheque, deposit or card voucher number
    QString lot;                   // card batch
    QString bank;                  // BANCOS.Nombre
    QString pointOfSale;           // CTABANCOS.Nombre of a PuntoVenta account
    TerminalState terminal = TerminalState::None;
    QString merchantJson; // the terminal's answer, for PAGOSVENTA.JSON_Merchant

    bool isCard() const { return way == kDebitCard || way == kCreditCard; }
    bool isEmpty() const { return way.isEmpty(); }
};

// What a row counts toward the invoice: dollars at the day's rate, anything else as it is.
Decimal countedAmount(const PaymentRow& row, const Decimal& exchangeRate);
Decimal totalPaid(const QList<PaymentRow>& rows, const Decimal& exchangeRate);

// Throws UserError for the first row, in order, that lacks a cell its way needs. Empty rows
// (no way chosen) are left out.
void checkRowsComplete(const QList<PaymentRow>& rows);
// Throws UserError unless the paid amount covers the invoice exactly, or exceeds it where change
// may be given.
void checkCoversInvoice(const Decimal& paid, const Decimal& invoiceTotal, bool allowChange);

// An amount as the cashier types it: "1234.5", "1234,50", "1.234,50".
std::optional<Decimal> parseTypedAmount(const QString& text);
// "###,###,###,##0.00" with this country's separators: "1.234,50".
QString formatAmount(const Decimal& amount);

// The lists offered in the grid's cells.
QStringList paymentWayNames(const QSqlDatabase& db, bool cashAllowed);
QStringList bankNames(const QSqlDatabase& db);
QStringList pointOfSaleNames(const QSqlDatabase& db);
// The receiving account of the terminal's acquirer (CTABANCOS.Codigo), if the store has it.
std::optional<QString> accountOfAcquirer(const QSqlDatabase& db, const QString& acquirerCode);

} // namespace orvo::pos::payments
