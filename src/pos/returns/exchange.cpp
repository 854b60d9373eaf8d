#include "pos/returns/exchange.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

namespace orvo::pos::returns {

ReturnableInvoice loadExchangeInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      long long number) {
    return loadInvoice(db, ctx, number, Purpose::Exchange);
}

ExchangeResult acceptExchange(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              const ReturnDraft& back, const sale::SaleDraft& taken,
                              sale::SalePrinter* printer, bool forcedZDone) {
    back.validate();
    if (back.invoice().tipoVenta == kCreditSale)
        throw UserError(QStringLiteral("No puede cambiar una factura a credito...!"));

    ExchangeResult result;
    SavedReturn saved;
    // The return is written first, inside the sale's own transaction: a refusal or a failure
    // on either side leaves neither.
    const sale::AcceptResult sold = sale::acceptSale(db, ctx, taken, printer, forcedZDone, [&] {
        saved = writeReturn(db, ctx, back, store::NegativeStockLastCost::ListPrice);
        // The goods brought back are paid out like any return: the new invoice is paid whole.
        settleRefund(db, ctx, back.invoice(), saved);
    });
    result.invoiceTotal = sold.total;
    result.change = sold.change;
    if (sold.status == sale::AcceptResult::Status::NeedsForcedZ) {
        result.status = ExchangeResult::Status::NeedsForcedZ;
        return result;
    }
    result.returnNumber = saved.number;
    result.returnTotal = saved.totals.total();
    result.cashRefund = saved.cashRefund;
    result.reminder = saved.reminder;
    result.invoiceNumber = sold.number;
    return result;
}

} // namespace orvo::pos::returns
