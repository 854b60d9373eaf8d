#pragma once

#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/running_emulator.h"
#include "pos/fiscal/serial_fiscal_printer.h"

#include <memory>

namespace orvo::test {

// The register's printer thread, opened on the software printer's port with short waits.
inline std::unique_ptr<pos::fiscal::FiscalPrinterThread>
printerThreadOn(const RunningEmulator& emulator) {
    const QString device = emulator.device();
    return std::make_unique<pos::fiscal::FiscalPrinterThread>([device] {
        auto p = std::make_unique<pos::fiscal::SerialFiscalPrinter>(fastTiming());
        p->open(device);
        return p;
    });
}

} // namespace orvo::test
