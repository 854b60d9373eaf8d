#pragma once

#include "pos/fiscal/fiscal_printer.h"

#include <QString>
#include <QStringList>

namespace orvo::pos::fiscal {

// Where this workstation's printer is: ORVO_PUERTO_FISCAL when set (scripts, the demo), else the
// per-user setting PuertoFiscal (ServidorOrvo, section Orvo). Empty when neither is set.
QString configuredPort();
void saveConfiguredPort(const QString& port);

// The serial ports of this machine, as device paths.
QStringList availablePorts();

struct PortChoice {
    QString port;
    QString message; // "Se le ha asignado el puerto ..." when another port than the configured one
};

// Opens the printer on the configured port when it answers there; otherwise on the first of the
// candidates that answers a status probe. Throws UserError
// "El puerto NO responde. ..." when no port answers. Runs on the printer's thread.
PortChoice openPrinterPort(FiscalPrinter& printer, const QString& configured,
                           const QStringList& candidates);
// The same with this workstation's configured port and ports; a port assigned here is saved
// as the configured one.
PortChoice openConfiguredPrinter(FiscalPrinter& printer);

} // namespace orvo::pos::fiscal
