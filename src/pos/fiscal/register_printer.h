#pragma once

#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/protocol/replies.h"

#include <QString>

namespace orvo::pos::fiscal {

// This register's printer for the whole run: a SerialFiscalPrinter on its own thread, created at
// first use and stopped when the application quits. Calls open it on the configured port with
// ensureOpen().
FiscalPrinterThread& registerPrinter();

// Opens the printer on this workstation's port unless it is open; throws UserError as
// openConfiguredPrinter() does. Call it first inside a queued call:
//   registerPrinter().call([](FiscalPrinter& p) { ensureOpen(p); return p.printXReport(); });
PortChoice ensureOpen(FiscalPrinter& printer);

// The text of a Z report as the closing records it.
QString zReportText(const protocol::ZReport& z);

} // namespace orvo::pos::fiscal
