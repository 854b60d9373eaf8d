#pragma once

#include "common/decimal/decimal.h"

#include <QSqlDatabase>
#include <optional>

class QWidget;

namespace orvo::shell {
struct SessionContext;
}
namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::sale {

class SaleDraft;

// Takes the payments of `draft` through frmPagosVenta: what is due (the sale's total unless
// `due` says otherwise), dollars at the day's rate, change from cash, card vouchers on the
// register's printer (or the store's voucher folder). The screen shows the draft's payments
// again. Returns false when the cashier left without accepting; payments charged at the card
// terminal meanwhile stay in the draft (kept, to be used or voided).
bool takePayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                  fiscal::FiscalPrinterThread& printer, SaleDraft& draft,
                  std::optional<Decimal> due = std::nullopt);

// Voids at the terminal every payment the draft holds there and takes them out of it. Stops at
// the first one the terminal does not void (false, with the message shown); true when none is
// left.
bool voidTerminalPayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                          fiscal::FiscalPrinterThread& printer, SaleDraft& draft);

} // namespace orvo::pos::sale
