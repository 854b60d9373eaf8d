#include "pos/payments/terminal_payments.h"

#include "pos/card/terminal_settings.h"
#include "pos/card/vpos_payment.h"

namespace orvo::pos::payments {

std::unique_ptr<card::VPosPayment> terminalOf(const QSqlDatabase& db, const QString& serie,
                                              card::VoucherPrinter* vouchers) {
    return std::make_unique<card::VPosPayment>(card::loadTerminalSettings(db, serie), vouchers);
}

bool voidAtTerminal(card::VPosPayment& terminal, const PaymentRow& row) {
    terminal.setIdPayment(row.idPayment);
    terminal.setAuthorisationNumber(row.authorisation.isEmpty() ? row.document : row.authorisation);
    return terminal.voidPayment();
}

} // namespace orvo::pos::payments
