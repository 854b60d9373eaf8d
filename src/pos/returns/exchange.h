#pragma once

#include "pos/returns/returns.h"
#include "pos/sale/sale.h"

// The exchange of goods at the till: what the client brings back becomes a return of its invoice
// and what the client takes a new invoice, saved together in one transaction.
namespace orvo::pos::returns {

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
    Decimal returnTotal;
    Decimal invoiceTotal;
    Decimal change;           // of the new invoice's payments
    long long cashRefund = 0; // SALIDASCAJA.Numero of the return's refund, 0 when none
    QString reminder;         // what the screen must tell the cashier afterwards, if anything

    // What the cashier hands back: the payments' change and, when it was paid out of the drawer,
    // the value of the goods brought back.
    Decimal handedBack() const { return cashRefund ? change + returnTotal : change; }
};

// The invoice being exchanged: this register's, paid in cash, with something left.
ReturnableInvoice loadExchangeInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      long long number);

// Checks both sides, then writes the return (number, lines, returned quantities, stock and cost,
// model average, totals) and the new invoice with its payments (the sale's own accept) in one
// transaction; both are left pending print.
ExchangeResult acceptExchange(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              const ReturnDraft& back, const sale::SaleDraft& taken,
                              sale::SalePrinter* printer, bool forcedZDone = false);

} // namespace orvo::pos::returns
