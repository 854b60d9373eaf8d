#include "app/commands.h"

#include "common/build_info/build_info.h"
#include "common/db/connection.h"
#include "common/errors/errors.h"
#include "common/schema/migrate.h"
#include "exchange/package/templates.h"
#include "pos/card/terminal_settings.h"
#include "pos/fiscal/port_finder.h"
#include "shell/demo/demo_store.h"
#include "shell/startup/app_home.h"
#include "shell/startup/server_config.h"
#include "shell/startup/user_settings.h"
#include "tools/card_emulator/card_emulator.h"
#include "tools/common/run_until_stopped.h"
#include "tools/fiscal_emulator/wire_server.h"

#include <QCoreApplication>
#include <QFile>
#include <QSqlDatabase>
#include <QStringList>
#include <QTextStream>
#include <functional>

namespace orvo::app {

namespace {

QTextStream& out() {
    static QTextStream s(stdout);
    return s;
}
QTextStream& err() {
    static QTextStream s(stderr);
    return s;
}

struct Command {
    QString name;
    QString usage;
    QString help;
    std::function<int(const QStringList& args)> run;
};

// Progress of long work on the terminal: one line per step, rewritten in place on a terminal.
void printProgress(int percent, const QString& label) {
    out() << QStringLiteral("\r[%1%] %2").arg(percent, 3).arg(label) << Qt::flush;
    if (percent >= 100)
        out() << Qt::endl;
}

QSqlDatabase openConfiguredStore(bool createDefaultConfig) {
    shell::ensureAppFolders();
    const QString path = shell::serverConfigPath();
    if (!QFile::exists(path)) {
        if (!createDefaultConfig)
            throw UserError(QStringLiteral("No existe %1: ejecute 'orvo db init'.").arg(path));
        shell::writeServerConfig(
            path, shell::ServerConfig::fromFields(QStringLiteral("(local)"), QStringLiteral("ORVO"),
                                                  false, QString(), QString()));
    }
    const shell::ServerConfig config = shell::readServerConfig(path);
    return db::openConnection(config.connectionSettings(shell::dataDir()),
                              QStringLiteral("orvo_command"));
}

int dbInit(const QStringList& args) {
    const bool demo = args.contains(QStringLiteral("--demo"));
    QSqlDatabase db = openConfiguredStore(true);
    out() << "Base de datos: " << db::describe(db) << Qt::endl;
    const auto result = schema::migrate(db, printProgress);
    if (result.steps.isEmpty())
        out() << "El esquema ya está en la versión " << result.toVersion << "." << Qt::endl;
    for (const QString& s : result.steps)
        out() << s << Qt::endl;
    const QStringList templates = exchange::package::installTemplates();
    out() << "Estructuras de intercambio instaladas en " << exchange::package::templateFolder()
          << ": " << templates.size() << "." << Qt::endl;
    if (demo) {
        if (shell::demo::isDemoStore(db)) {
            out() << "La tienda de demostración ya está creada en esta base de datos." << Qt::endl;
        } else {
            shell::demo::seedDemoStore(db);
            out() << "Tienda de demostración creada: usuarios ADMIN y CAJERO1, clave 1234."
                  << Qt::endl;
        }
        // This machine sells as the demo register (also when another machine created the store).
        shell::demo::bindWorkstationToDemoRegister();
        out() << "Este equipo es la caja " << shell::demo::kDemoSerial << "." << Qt::endl;
    }
    return 0;
}

// The software fiscal printer on a pseudo-terminal: prints its device path, then serves it.
int fiscalEmulator(const QStringList& args) {
    tools::fiscal::EmulatorOptions options;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const QString next = args.value(i + 1);
        if (a == QLatin1String("--state") && !next.isEmpty())
            options.statePath = args[++i];
        else if (a == QLatin1String("--tickets") && !next.isEmpty())
            options.ticketsFolder = args[++i];
        else if (a == QLatin1String("--control") && !next.isEmpty())
            options.controlFile = args[++i];
        else if (a == QLatin1String("--serial") && !next.isEmpty())
            options.serial = args[++i];
        else if (a == QLatin1String("--rif") && !next.isEmpty())
            options.rif = args[++i];
        else if (a == QLatin1String("--z-busy-ms") && !next.isEmpty())
            options.zBusyMs = args[++i].toInt();
        else if (a.startsWith(QLatin1String("--")) && a.size() > 2) {
            // A fault as in the control file, with its arguments: --slow-ack 101 5000.
            QString fault = a.mid(2);
            while (i + 1 < args.size() && !args[i + 1].startsWith(QLatin1String("--")))
                fault += QLatin1Char(' ') + args[++i];
            options.faults << fault;
        } else {
            err() << "argumento desconocido: " << a << Qt::endl;
            return 2;
        }
    }
    if (options.statePath.isEmpty() || options.ticketsFolder.isEmpty()) {
        err() << "uso: orvo fiscal-emulator --state ARCHIVO --tickets CARPETA" << Qt::endl;
        return 2;
    }
    tools::fiscal::WireServer server;
    if (!server.start(options)) {
        err() << server.error() << Qt::endl;
        return 1;
    }
    out() << server.devicePath() << Qt::endl << Qt::flush;
    return tools::runUntilStopped(*QCoreApplication::instance());
}

// The fiscal printer's port of this workstation: shown, or set.
int fiscalPort(const QStringList& args) {
    if (args.isEmpty()) {
        out() << pos::fiscal::configuredPort() << Qt::endl;
        return 0;
    }
    pos::fiscal::saveConfiguredPort(args.first());
    return 0;
}

// The card terminal service of this workstation's register: shown, or set.
int cardTerminal(const QStringList& args) {
    QSqlDatabase db = openConfiguredStore(false);
    const QString serie = shell::settings::read(QStringLiteral("Serie"));
    if (args.isEmpty()) {
        out() << pos::card::terminalUrl(db, serie) << Qt::endl;
        return 0;
    }
    pos::card::saveTerminalUrl(db, serie, args.first());
    out() << "La caja " << serie << " usa el punto de venta " << args.first() << "." << Qt::endl;
    return 0;
}

const QList<Command>& commands() {
    static const QList<Command> list = {
        {QStringLiteral("db"), QStringLiteral("db init [--demo]"),
         QStringLiteral("crea o actualiza la base de datos de la tienda; --demo la llena con una "
                        "tienda de demostración"),
         [](const QStringList& args) {
             if (args.value(0) != QLatin1String("init")) {
                 err() << "uso: orvo db init [--demo]" << Qt::endl;
                 return 2;
             }
             return dbInit(args.mid(1));
         }},
        {QStringLiteral("fiscal-emulator"),
         QStringLiteral(
             "fiscal-emulator --state ARCHIVO --tickets CARPETA [--serial SERIE] [--rif RIF] "
             "[--control ARCHIVO] "
             "[--z-busy-ms N] [--z-busy-enq] [--paper-out] [--cover-open] [--silence] "
             "[--nak-next] [--drop-ack] [--slow-ack CMD MS] [--silence-after CMD] "
             "[--memory-nearly-full] [--memory-full]"),
         QStringLiteral("impresora fiscal de software en un pseudo-terminal; escribe en la primera "
                        "línea la ruta del puerto"),
         fiscalEmulator},
        {QStringLiteral("fiscal-port"), QStringLiteral("fiscal-port [PUERTO]"),
         QStringLiteral("muestra o fija el puerto de la impresora fiscal de esta estación "
                        "(PuertoFiscal)"),
         fiscalPort},
        {QStringLiteral("card-emulator"), QStringLiteral("card-emulator [opciones]"),
         QStringLiteral("punto de venta VPOS emulado en 127.0.0.1 (ver docs/card-terminal.md)"),
         tools::card::runCardEmulator},
        {QStringLiteral("card-terminal"), QStringLiteral("card-terminal [URL]"),
         QStringLiteral("muestra o fija el punto de venta VPOS de la caja de esta estación "
                        "(VPOS_URL_<Serie>)"),
         cardTerminal},
    };
    return list;
}

int printHelp() {
    out() << "Orvo " << versionString() << Qt::endl
          << "uso: orvo                 inicia el programa de escritorio" << Qt::endl
          << "     orvo <comando> ...   ejecuta un comando sin pantalla" << Qt::endl
          << Qt::endl
          << "Comandos:" << Qt::endl;
    for (const Command& c : commands())
        out() << "  " << c.usage.leftJustified(34) << c.help << Qt::endl;
    out() << Qt::endl
          << "La carpeta de la aplicación es ORVO_HOME (hoy: " << shell::appHome() << ")."
          << Qt::endl;
    return 0;
}

} // namespace

int runCommand(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ServidorOrvo"));
    QStringList args = app.arguments().mid(1);
    const QString name = args.takeFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help"))
        return printHelp();
    if (name == QLatin1String("--version")) {
        out() << versionString() << Qt::endl;
        return 0;
    }
    for (const Command& c : commands()) {
        if (c.name != name)
            continue;
        try {
            return c.run(args);
        } catch (const UserError& e) {
            err() << e.text() << Qt::endl;
        } catch (const DbError& e) {
            err() << "Error de base de datos " << e.message() << Qt::endl;
        } catch (const shell::StartupError& e) {
            err() << e.message() << Qt::endl;
        } catch (const std::exception& e) {
            err() << e.what() << Qt::endl;
        }
        return 1;
    }
    err() << "Comando desconocido: " << name << " (orvo --help lista los comandos)" << Qt::endl;
    return 2;
}

} // namespace orvo::app
