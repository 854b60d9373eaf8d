#pragma once

#include "pos/card/voucher_printer.h"

#include <QSqlDatabase>
#include <memory>

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::card {

// Prints each voucher copy as a non-fiscal document on the register's fiscal printer. The call
// runs on the printer's thread; the caller waits in a local event loop, so the screen keeps
// painting while the printer works.
class FiscalVoucherPrinter : public VoucherPrinter {
public:
    explicit FiscalVoucherPrinter(fiscal::FiscalPrinterThread& printer);
    void printLines(const QStringList& lines) override;

private:
    fiscal::FiscalPrinterThread& m_printer;
};

// The voucher output the store chose: the folder of VPOS_CARPETA when it is set, otherwise the
// fiscal printer `printer`.
std::unique_ptr<VoucherPrinter> makeVoucherPrinter(const QSqlDatabase& db,
                                                   fiscal::FiscalPrinterThread& printer);

} // namespace orvo::pos::card
