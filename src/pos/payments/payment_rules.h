#pragma once

#include "common/decimal/decimal.h"
#include "pos/fiscal/igtf.h"

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
    QString merchantJson;  // the terminal's answer, for PAGOSVENTA.JSON_Merchant
    QString idPayment;     // what the terminal knows the payment by
    QString authorisation; // the terminal's authorisation number, to void it

    bool isCard() const { return way == kDebitCard || way == kCreditCard; }
    bool isEmpty() const { return way.isEmpty(); }
    // Charged at the card terminal: the row is the terminal's until it is used or voided.
    bool isApprovedAtTerminal() const { return terminal == TerminalState::Approved; }
};

// The approved terminal payments among `rows`.
QList<PaymentRow> approvedAtTerminal(const QList<PaymentRow>& rows);

// What a row counts toward the invoice: dollars at the day's rate rounded to the cent (what the
// fiscal printer is sent), anything else as it is.
Decimal countedAmount(const PaymentRow& row, const Decimal& exchangeRate);
Decimal totalPaid(const QList<PaymentRow>& rows, const Decimal& exchangeRate);
// What the dollar rows count toward the invoice.
Decimal foreignPaid(const QList<PaymentRow>& rows, const Decimal& exchangeRate);
// What the client owes when paying the invoice with `rows`: its total and, with IGTF, the tax on
// what the dollars pay of it.
fiscal::igtf::Owed amountOwed(const QList<PaymentRow>& rows, const Decimal& exchangeRate,
                              const Decimal& invoiceTotal, const fiscal::igtf::Settings& igtf);

// Throws UserError for the first row, in order, that lacks a cell its way needs. Empty rows
// (no way chosen) are left out.
void checkRowsComplete(const QList<PaymentRow>& rows);
// Throws UserError unless the rows cover the invoice exactly, or exceed it where change may be
// given. Only cash (EFECTIVO) gives change: a card, cheque, deposit or dollar row that takes the
// payment over the invoice is refused and named. A dollar row may pass the balance by less than
// one cent of a dollar, its own rounding.
void checkCoversInvoice(const QList<PaymentRow>& rows, const Decimal& exchangeRate,
                        const Decimal& invoiceTotal, bool allowChange);
// The change handed back: what the rows pay over the invoice, out of the cash rows only.
Decimal changeDue(const QList<PaymentRow>& rows, const Decimal& exchangeRate,
                  const Decimal& invoiceTotal);
// What a way proposes when it is chosen: the balance, for EFECTIVO DOLAR in dollars rounded up to
// the cent so that it covers; nothing when nothing is due.
std::optional<Decimal> proposedAmount(const QString& way, const Decimal& balance,
                                      const Decimal& exchangeRate);
// The same for a row among `others` (the rows already there) on an invoice of `invoiceTotal`:
// a dollar row proposes what settles the balance with the IGTF it raises itself.
std::optional<Decimal> proposedAmount(const QString& way, const QList<PaymentRow>& others,
                                      const Decimal& exchangeRate, const Decimal& invoiceTotal,
                                      const fiscal::igtf::Settings& igtf);

// An amount as the cashier types it: "1234.5", "1234,50", "1.234,50".
std::optional<Decimal> parseTypedAmount(const QString& text);
// "###,###,###,##0.00" with this country's separators: "1.234,50".
QString formatAmount(const Decimal& amount);
// A quantity as the till shows and reads it back: "6", "1,25", "1250" (never grouped).
QString formatQuantity(const Decimal& quantity);

// The lists offered in the grid's cells.
QStringList paymentWayNames(const QSqlDatabase& db, bool cashAllowed);
QStringList bankNames(const QSqlDatabase& db);
QStringList pointOfSaleNames(const QSqlDatabase& db);
// The receiving account of the terminal's acquirer (CTABANCOS.Codigo), if the store has it.
std::optional<QString> accountOfAcquirer(const QSqlDatabase& db, const QString& acquirerCode);

} // namespace orvo::pos::payments
