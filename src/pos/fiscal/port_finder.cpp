#include "pos/fiscal/port_finder.h"

#include "common/errors/errors.h"
#include "shell/startup/user_settings.h"

#include <QSerialPortInfo>

namespace orvo::pos::fiscal {

QString configuredPort() {
    const QString env = qEnvironmentVariable("ORVO_PUERTO_FISCAL");
    if (!env.isEmpty())
        return env;
    return shell::settings::read(QStringLiteral("PuertoFiscal"));
}

void saveConfiguredPort(const QString& port) {
    shell::settings::write(QStringLiteral("PuertoFiscal"), port);
}

QStringList availablePorts() {
    QStringList out;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        out << info.systemLocation();
    return out;
}

PortChoice openPrinterPort(FiscalPrinter& printer, const QString& configured,
                           const QStringList& candidates) {
    const auto answers = [&printer](const QString& port) {
        if (!printer.open(port))
            return false;
        if (printer.probe())
            return true;
        printer.close();
        return false;
    };
    if (!configured.isEmpty() && answers(configured))
        return {configured, {}};
    for (const QString& port : candidates) {
        if (port == configured)
            continue;
        if (answers(port))
            return {port, QStringLiteral("Se le ha asignado el puerto ") + port};
    }
    throw UserError(QStringLiteral("El puerto NO responde. Verifique que algún otro ") +
                    QStringLiteral("programa no lo este utilizando."));
}

} // namespace orvo::pos::fiscal

namespace orvo::pos::fiscal {

PortChoice openConfiguredPrinter(FiscalPrinter& printer) {
    const PortChoice choice = openPrinterPort(printer, configuredPort(), availablePorts());
    if (!choice.message.isEmpty() && qEnvironmentVariableIsEmpty("ORVO_PUERTO_FISCAL"))
        saveConfiguredPort(choice.port);
    return choice;
}

} // namespace orvo::pos::fiscal
