#pragma once

#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/protocol/replies.h"
#include "pos/fiscal/serial_link.h"

#include <QString>
#include <memory>

namespace orvo::pos::fiscal {

// The register's printer: a SerialFiscalPrinter on its own thread that, before every call, opens
// itself on this workstation's port when it is closed (openWhenClosed). Every fiscal action goes
// through one: the sale, returns and exchanges, the opening and closing, the fiscal operations,
// the counters, card vouchers and the customer display. Nothing opens the port beforehand, so a
// program restarted with the printer left on its port sells at once.
std::unique_ptr<FiscalPrinterThread> makeRegisterPrinter(const LinkTiming& timing = {});

// The waits of this workstation's printer: the defaults, with the wait of a Z (its ACK and the
// busy time after it) from the setting EsperaReporteZ in seconds (20 when unset).
LinkTiming workstationTiming();

// The program's register printer for the whole run, created at first use and stopped when the
// application quits.
FiscalPrinterThread& registerPrinter();

// The one way the register's printer is opened: unless it is open (and still plugged in: one
// that was pulled out is opened again), on the configured port, else
// on the first serial port that answers (saved as the configured one; see port_finder.h). When
// no port answers the printer stays closed and the call that follows fails with the port's
// message ("El puerto NO responde..."). Runs on the printer's thread.
void openWhenClosed(FiscalPrinter& printer);

// The text of a Z report as the closing records it.
QString zReportText(const protocol::ZReport& z);

} // namespace orvo::pos::fiscal
