#include "pos/returns/exchange.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/payments/payment_rules.h"

#include <stdexcept>

namespace orvo::pos::returns {

ReturnableInvoice loadExchangeInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      long long number) {
    return loadInvoice(db, ctx, number, Purpose::Exchange);
}

ExchangeAmounts exchangeAmounts(const ReturnDraft& back, const sale::SaleDraft& taken) {
    return {back.totals().total(), taken.totals().total};
}

ExchangeResult acceptExchange(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              const ReturnDraft& back, const sale::SaleDraft& taken,
                              sale::SalePrinter* printer, bool forcedZDone) {
    back.validate();
    if (back.invoice().tipoVenta == kCreditSale)
        throw UserError(QStringLiteral("No puede cambiar una factura a credito...!"));
    if (taken.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));

    ExchangeResult result;
    result.amounts = exchangeAmounts(back, taken);
    const Decimal due = result.amounts.toPay();
    const Decimal rate = taken.exchangeRate();
    QList<payments::PaymentRow> rows;
    fiscal::igtf::Owed igtf;
    if (due > Decimal()) {
        if (!taken.paymentsAccepted())
            throw UserError(QStringLiteral("Debe Especificar el pago del cliente...!"));
        rows = taken.payments();
        // Dollars paying the difference pay their IGTF on top; the printer caps its base at the
        // new invoice's total.
        igtf = payments::amountOwed(rows, rate, result.amounts.taken,
                                    fiscal::igtf::settings(db, ctx.serial));
        igtf.total = due + igtf.tax;
        payments::checkCoversInvoice(rows, rate, igtf.total, true);
        result.paid = payments::totalPaid(rows, rate);
        result.change = payments::changeDue(rows, rate, igtf.total);
        result.igtf = igtf.tax;
    } else {
        // Nothing to collect: a card charged meanwhile has to be voided first.
        taken.checkNoTerminalPayments();
    }
    // The value brought back pays the invoice as cash: the refund leaves the drawer as a
    // withdrawal and comes back in as this payment.
    payments::PaymentRow credit;
    credit.way = payments::kCash;
    credit.amount = std::min(result.amounts.back, result.amounts.taken);
    rows.append(credit);
    sale::SaleDraft paid = taken;
    paid.setMode(sale::PaymentMode::Cash);
    paid.setPayments(rows, result.paid + *credit.amount, rate, igtf);

    SavedReturn saved;
    // The return is written first, inside the sale's own transaction: a refusal or a failure
    // on either side leaves neither.
    const sale::AcceptResult sold = sale::acceptSale(db, ctx, paid, printer, forcedZDone, [&] {
        saved = writeReturn(db, ctx, back, store::NegativeStockLastCost::ListPrice);
        if (saved.totals.total() != result.amounts.back)
            throw std::logic_error("the saved return is not worth what the screen showed");
        settleRefund(db, ctx, back.invoice(), saved);
    });
    if (sold.status == sale::AcceptResult::Status::NeedsForcedZ) {
        result.status = ExchangeResult::Status::NeedsForcedZ;
        return result;
    }
    result.returnNumber = saved.number;
    result.igtfBack = saved.igtf.tax;
    result.cashRefund = saved.cashRefund;
    result.reminder = saved.reminder;
    result.invoiceNumber = sold.number;
    return result;
}

} // namespace orvo::pos::returns
