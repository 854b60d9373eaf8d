#pragma once

#include <QSqlDatabase>

class QWidget;

namespace orvo::shell {
struct SessionContext;
}
namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::sale {

class SaleDraft;

// Takes the payments of `draft` through frmPagosVenta: the invoice total, dollars at the day's
// rate, change allowed, card vouchers on the register's printer (or the store's voucher
// folder). Returns false when the cashier closed the screen without accepting.
bool takePayments(QWidget* parent, const QSqlDatabase& db, const shell::SessionContext& ctx,
                  fiscal::FiscalPrinterThread& printer, SaleDraft& draft);

} // namespace orvo::pos::sale
