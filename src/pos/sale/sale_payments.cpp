#include "pos/sale/sale_payments.h"

#include "pos/card/fiscal_voucher_printer.h"
#include "pos/payments/payments_screen.h"
#include "pos/sale/sale_draft.h"
#include "pos/sale/sale_store.h"
#include "shell/session/session_context.h"

namespace orvo::pos::sale {

bool takePayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                  fiscal::FiscalPrinterThread& printer, SaleDraft& draft) {
    payments::PaymentsScreenInput in;
    in.invoiceTotal = draft.totals().total;
    in.exchangeRate = store::latestExchangeRate(db);
    in.allowChange = true;
    in.currencySymbol = ctx.simboloMoneda;
    in.serie = ctx.serial;
    const auto vouchers = card::makeVoucherPrinter(db, printer);
    payments::PaymentsScreen screen(db, in, vouchers.get(), parent);
    if (screen.exec() != QDialog::Accepted)
        return false;
    draft.setPayments(screen.rows(), screen.amountPaid(), in.exchangeRate);
    return true;
}

} // namespace orvo::pos::sale
