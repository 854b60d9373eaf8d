#pragma once

#include "pos/returns/returns.h"
#include "pos/sale/sale.h"

// The exchange of goods at the till: what the client brings back becomes a return of its invoice
// and what the client takes a new invoice, saved together in one transaction. The till works on
// the difference: the value brought back pays the new invoice first, and the cashier collects
// only what is left ("A pagar") or hands back what is over ("A devolver").
namespace orvo::pos::returns {

// What the two sides are worth, and the difference the cashier settles.
struct ExchangeAmounts {
    Decimal back;  // the return's total: the goods brought back
    Decimal taken; // the new invoice's total
    Decimal toPay() const { return std::max(Decimal(), taken - back); }
    Decimal toHandBack() const { return std::max(Decimal(), back - taken); }
};
ExchangeAmounts exchangeAmounts(const ReturnDraft& back, const sale::SaleDraft& taken);

struct ExchangeResult {
    enum class Status {
        Saved,
        // The new invoice would take the day over the printer's maximum: the screen says so, runs
        // sale::forcedZ() and accepts again with forcedZDone.
        NeedsForcedZ
    };
    Status status = Status::Saved;
    long long returnNumber = 0;
    long long invoiceNumber = 0;
    ExchangeAmounts amounts;
    Decimal paid;             // what the client handed over for the difference
    Decimal change;           // the cash change of that payment
    Decimal igtf;             // the IGTF the dollars paying the difference paid on top
    Decimal igtfBack;         // the IGTF the return gives back (its invoice was paid in dollars)
    long long cashRefund = 0; // SALIDASCAJA.Numero of the return's refund, 0 when none
    QString reminder;         // what the screen must tell the cashier afterwards, if anything

    // What the cashier hands back: the value brought back over the new invoice, the IGTF the
    // return carries, and the change.
    Decimal handedBack() const { return amounts.toHandBack() + igtfBack + change; }
};

// The invoice being exchanged: this register's, paid in cash, with something left.
ReturnableInvoice loadExchangeInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      long long number);

// Checks both sides, then writes the return (number, lines, returned quantities, stock and cost,
// model average, totals) and the new invoice in one transaction; both are left pending print.
// `taken` carries the payments of the difference, when there is one to pay. The documents are
// whole: the return is refunded like any return (a withdrawal on the refunds account), and the
// new invoice is paid by that refund (a cash row of the value brought back, up to its total) and
// by the payments of the difference, so the drawer moves by the difference alone.
ExchangeResult acceptExchange(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              const ReturnDraft& back, const sale::SaleDraft& taken,
                              sale::SalePrinter* printer, bool forcedZDone = false);

} // namespace orvo::pos::returns
