#pragma once

#include "pos/returns/return_draft.h"
#include "pos/returns/returns_store.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>

// The till's returns. Saving opens and commits its own transaction; the credit note is printed
// after the commit.
namespace orvo::pos::returns {

// The number the next return of this register will take (the screen's caption).
long long nextReturnNumberPreview(const QSqlDatabase& db, const shell::SessionContext& ctx);

// Who asks: the returns screen and the exchange screen word their refusals a little apart.
enum class Purpose { Return, Exchange };

// The invoice of this register with its lines. Refuses another register's invoice, one with
// nothing left to return and, for an exchange, a credit invoice.
ReturnableInvoice loadInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              long long number, Purpose purpose = Purpose::Return);

struct SavedReturn {
    long long number = 0;
    ReturnTotals totals;
    fiscal::igtf::Owed igtf; // what the dollars of its invoice paid of it, and the tax on it
    // What goes back to the client: the total and the IGTF it carries.
    Decimal refund() const { return totals.total() + igtf.tax; }
    long long cashRefund = 0; // SALIDASCAJA.Numero, 0 when none was written
    QString reminder;         // what the screen must tell the cashier afterwards, if anything
};

// The whole return inside the caller's open transaction: number, register day, header, merged
// lines, CantidadDevuelta, stock and cost, model average, totals. Used by the return and the
// exchange.
SavedReturn writeReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                        const ReturnDraft& draft, store::NegativeStockLastCost negative);

// Inside the caller's transaction: what the client gets back for a saved return. A cash invoice's
// return is paid out of the drawer as a withdrawal on the refunds account (or, without that
// account, the cashier is reminded to record it); a credit invoice's is a reminder to credit the
// client's account.
void settleRefund(const QSqlDatabase& db, const shell::SessionContext& ctx,
                  const ReturnableInvoice& invoice, SavedReturn& saved);

// Checks the day, the draft and the printer, then saves the return and its cash refund in one
// transaction, pending print. `printer` may be null for a register without fiscal printer or a
// contingency return.
SavedReturn saveReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                       const ReturnDraft& draft, sale::SalePrinter* printer);

// After the commit: the credit note on the fiscal printer (or on paper, marked "CONTINGENCIA"
// for a contingency return), then the mark "printed". Can be repeated for a pending return.
sale::PrintResult printReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              long long number, bool contingency, sale::SalePrinter* printer,
                              const sale::PaperPrinter& paper);

// The paper credit note.
QString paperReturnHtml(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                        bool contingency, bool largeFormat);

// Returns of this register saved but not printed yet.
QList<long long> pendingReturnPrints(const QSqlDatabase& db, const QString& serie);

// Prints again, oldest first, the credit notes whose print failed; stops at the first one that
// fails again (its error in the result) so they keep their order on the printer.
sale::PrintResult printPendingReturns(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      sale::SalePrinter* printer, const sale::PaperPrinter& paper);

} // namespace orvo::pos::returns
