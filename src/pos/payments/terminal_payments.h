#pragma once

#include "pos/payments/payment_rules.h"

#include <QSqlDatabase>
#include <memory>

namespace orvo::pos::card {
class VoucherPrinter;
class VPosPayment;
} // namespace orvo::pos::card

// Payments charged at the card terminal, as the payments screen and the sale void them.
namespace orvo::pos::payments {

// The terminal of register `serie`, printing its vouchers on `vouchers`. Throws UserError when
// the register has none.
std::unique_ptr<card::VPosPayment> terminalOf(const QSqlDatabase& db, const QString& serie,
                                              card::VoucherPrinter* vouchers);

// Voids an approved terminal payment: false when the terminal refused. Throws UserError when the
// terminal cannot be reached (the payment then still stands).
bool voidAtTerminal(card::VPosPayment& terminal, const PaymentRow& row);

} // namespace orvo::pos::payments
