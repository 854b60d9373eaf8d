#pragma once

#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/register_printer.h"
#include "pos/fiscal/running_emulator.h"

#include <memory>

namespace orvo::test {

// This workstation's fiscal port is the software printer's, set as `orvo fiscal-port` sets it
// (the per-user setting PuertoFiscal).
inline void bindFiscalPort(const tools::fiscal::EmulatorThread& emulator) {
    pos::fiscal::saveConfiguredPort(emulator.device());
}

// The register's printer as the program builds it, with short waits, on a workstation bound to
// the software printer. Nothing opens the port before the program's own calls do, so a path that
// forgets to fails its test. Building a second one is what a restart of the program does.
inline std::unique_ptr<pos::fiscal::FiscalPrinterThread>
printerThreadOn(const tools::fiscal::EmulatorThread& emulator) {
    bindFiscalPort(emulator);
    return pos::fiscal::makeRegisterPrinter(fastTiming());
}

} // namespace orvo::test
