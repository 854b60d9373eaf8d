#include "pos/sale/sale_payments.h"

#include "common/dialogs/dialogs.h"
#include "pos/card/fiscal_voucher_printer.h"
#include "pos/card/vpos_payment.h"
#include "pos/payments/payments_screen.h"
#include "pos/payments/terminal_payments.h"
#include "pos/sale/sale_draft.h"
#include "pos/sale/sale_store.h"
#include "shell/session/session_context.h"

namespace orvo::pos::sale {

bool takePayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                  fiscal::FiscalPrinterThread& printer, SaleDraft& draft,
                  std::optional<Decimal> due) {
    payments::PaymentsScreenInput in;
    in.invoiceTotal = due.value_or(draft.totals().total);
    in.exchangeRate =
        draft.exchangeRate() > Decimal() ? draft.exchangeRate() : store::latestExchangeRate(db);
    in.allowChange = true;
    in.currencySymbol = ctx.simboloMoneda;
    in.serie = ctx.serial;
    in.rows = draft.payments();
    in.igtf = fiscal::igtf::settings(db, ctx.serial);
    const auto vouchers = card::makeVoucherPrinter(db, printer);
    payments::PaymentsScreen screen(db, in, vouchers.get(), parent);
    if (screen.exec() != QDialog::Accepted) {
        draft.keepTerminalPayments(screen.rows(), in.exchangeRate);
        return false;
    }
    draft.setPayments(screen.rows(), screen.amountPaid(), in.exchangeRate, screen.owed());
    return true;
}

bool voidTerminalPayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                          fiscal::FiscalPrinterThread& printer, SaleDraft& draft) {
    const auto held = draft.terminalPayments();
    if (held.isEmpty())
        return true;
    const auto vouchers = card::makeVoucherPrinter(db, printer);
    const auto terminal = payments::terminalOf(db, ctx.serial, vouchers.get());
    for (const payments::PaymentRow& row : held) {
        if (!payments::voidAtTerminal(*terminal, row)) {
            dialogs().information(parent, QStringLiteral("No ha sido posible Anular el Pago "
                                                         "realizado. Por favor intente "
                                                         "nuevamente."));
            return false;
        }
        draft.forgetTerminalPayment(row.idPayment);
        dialogs().information(
            parent, QStringLiteral("Se ha realizado la Anulacion del Pago satisfactoriamente."));
    }
    return true;
}

} // namespace orvo::pos::sale
