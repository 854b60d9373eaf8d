#include "app/commands.h"

#include "app/command_support.h"
#include "common/build_info/build_info.h"
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/rate/exchange_rate.h"
#include "common/schema/migrate.h"
#include "exchange/export/export_commands.h"
#include "exchange/import/import_loaders.h"
#include "inventory/prices/received_lists.h"
#include "inventory/stock/stock_rebuild.h"
#include "inventory/transfers/transfer_import.h"
#include "pos/card/terminal_settings.h"
#include "pos/fiscal/company_rif.h"
#include "pos/fiscal/port_finder.h"
#include "shell/session/session_context.h"
#include "shell/startup/app_home.h"
#include "shell/startup/server_config.h"
#include "shell/startup/user_settings.h"
#include "tools/card_emulator/card_emulator.h"
#include "tools/common/run_until_stopped.h"
#include "tools/fiscal_emulator/wire_server.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QStringList>
#include <QTextStream>
#include <functional>

namespace orvo::app {

namespace {

struct Command {
    QString name;
    QString usage;
    QString help;
    std::function<int(const QStringList& args)> run;
};

// Identity of the register's printer, from the store: this workstation's register serial, the
// company's RIF (letters and digits only, as the printer keeps it) and the invoice header lines
// (ENCFISCAL, or the company's name).
void takeRegisterIdentity(tools::fiscal::EmulatorOptions& options) {
    QSqlDatabase db = openConfiguredStore(false);
    const QString serie = shell::settings::read(QStringLiteral("Serie")).trimmed();
    if (serie.isEmpty())
        err() << "Este equipo todavía no es una caja: la impresora lleva la serie "
              << (options.serial.isEmpty() ? QStringLiteral("Z1B0000001") : options.serial)
              << " (configure la caja con esa serie, o use --serial)." << Qt::endl;
    else
        options.serial = serie;
    shell::SessionContext ctx;
    shell::loadCompany(db, ctx);
    options.rif = pos::fiscal::rifKey(ctx.idEmpresa);
    db::Sql q(db, QStringLiteral("SELECT Codigo, Descripcion FROM TABLA_VALORES WHERE IdTabla = "
                                 "'ENCFISCAL' ORDER BY Codigo"));
    q.exec();
    while (q.next())
        options.header << q.text(QStringLiteral("Descripcion"));
    // The printer prints the RIF of its fiscal memory itself, under the header.
    if (options.header.isEmpty())
        options.header << ctx.nombre;
}

// The software fiscal printer on a pseudo-terminal: prints its device path, then serves it.
int fiscalEmulator(const QStringList& args) {
    tools::fiscal::EmulatorOptions options;
    bool fromRegister = false;
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
        else if (a == QLatin1String("--encabezado") && i + 1 < args.size())
            options.header << args[++i];
        else if (a == QLatin1String("--caja"))
            fromRegister = true;
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
    if (fromRegister)
        takeRegisterIdentity(options);
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

// Registers the day's exchange rate as the rate screen does (repricing with ActTasa, the rate
// file with ExpTasa).
int rateCommand(const QStringList& args) {
    QString typed;
    QDate day;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--fecha") && i + 1 < args.size()) {
            day = QDate::fromString(args[++i], QStringLiteral("dd/MM/yyyy"));
            if (!day.isValid()) {
                err() << "fecha no valida (DD/MM/AAAA): " << args[i] << Qt::endl;
                return 2;
            }
        } else if (typed.isEmpty()) {
            typed = args[i];
        } else {
            err() << "argumento desconocido: " << args[i] << Qt::endl;
            return 2;
        }
    }
    const auto value = common::rate::parseTypedRate(typed);
    if (!value) {
        err() << "uso: orvo rate VALOR [--fecha DD/MM/AAAA]  (por ejemplo: orvo rate 36,50)"
              << Qt::endl;
        return 2;
    }
    QSqlDatabase db = openConfiguredStore(false);
    const auto r = common::rate::registerRate(db, {*value, day, true});
    out() << "Tasa de cambio " << r.value.toString() << " registrada";
    if (day.isValid())
        out() << " para el " << day.toString(QStringLiteral("dd/MM/yyyy"));
    out() << "." << Qt::endl;
    if (r.repriced)
        out() << "Precios actualizados de " << r.articlesRepriced << " articulos (tasa anterior "
              << r.previous->toString() << ")." << Qt::endl;
    if (!r.rateFile.isEmpty())
        out() << "Archivo para las tiendas: " << r.rateFile << Qt::endl;
    return 0;
}

// What `orvo import` loads, one line per area that receives files from head office.
void registerImportLoaders() {
    common::rate::registerRateLoader();
    inventory::transfers::registerTransferLoader();
    inventory::prices::registerPriceListLoader();
}

// Loads what lies in Recibe (or the folder given): the rate, then each kind in its order, with
// the screens' code.
int importCommand(const QStringList& args) {
    if (args.size() > 1) {
        err() << "uso: orvo import [CARPETA]" << Qt::endl;
        return 2;
    }
    QSqlDatabase db = openConfiguredStore(false);
    const QString folder = args.isEmpty() ? shell::appHome() + QStringLiteral("/Recibe")
                                          : QDir(args.first()).absolutePath();
    registerImportLoaders();
    const auto lines = exchange::import::loadAll(db, folder, printProgress);
    if (lines.isEmpty())
        out() << "No hay archivos pendientes por cargar en " << folder << "." << Qt::endl;
    for (const auto& l : lines)
        out() << l.loader << ": " << l.text << Qt::endl;
    return 0;
}

const QList<Command>& commands() {
    static const QList<Command> list = {
        {QStringLiteral("db"),
         QStringLiteral("db init [--demo] [--admin CODIGO [--nombre NOMBRE]] [--empresa NOMBRE] "
                        "[--rif RIF] [--tienda CODIGO]"),
         QStringLiteral("crea o actualiza la base de datos de la tienda con lo que una tienda "
                        "necesita para empezar (menú, grupos, formas de pago, empresa); --admin "
                        "crea el administrador y pide su clave; --demo la llena con una tienda "
                        "de demostración"),
         [](const QStringList& args) {
             if (args.value(0) != QLatin1String("init")) {
                 err() << "uso: orvo db init [--demo] [--admin CODIGO]" << Qt::endl;
                 return 2;
             }
             return dbInit(args.mid(1));
         }},
        {QStringLiteral("server-config"),
         QStringLiteral("server-config [SERVIDOR BASE [--usuario USUARIO] [--sin-probar]]"),
         QStringLiteral("muestra o escribe data/srvsql.txt: SERVIDOR es (local) o "
                        "equipo[:puerto]; con --usuario pide la clave y la guarda cifrada; "
                        "prueba la conexión antes de escribir"),
         serverConfig},
        {QStringLiteral("fiscal-emulator"),
         QStringLiteral(
             "fiscal-emulator --state ARCHIVO --tickets CARPETA [--caja] [--serial SERIE] "
             "[--rif RIF] [--encabezado LINEA]... [--control ARCHIVO] "
             "[--z-busy-ms N] [--z-busy-enq] [--paper-out] [--cover-open] [--silence] "
             "[--nak-next] [--drop-ack] [--slow-ack CMD MS] [--silence-after CMD] "
             "[--memory-nearly-full] [--memory-full]"),
         QStringLiteral("impresora fiscal de software en un pseudo-terminal; escribe en la primera "
                        "línea la ruta del puerto; --caja le da la serie de la caja de este "
                        "equipo, el RIF y el encabezado de la empresa"),
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
        {QStringLiteral("rate"), QStringLiteral("rate VALOR [--fecha DD/MM/AAAA]"),
         QStringLiteral("registra la tasa de cambio del dia (o de una fecha anterior); con "
                        "ActTasa actualiza los precios"),
         rateCommand},
        {QStringLiteral("import"), QStringLiteral("import [CARPETA]"),
         QStringLiteral("carga lo recibido en Recibe (o en CARPETA): la tasa de cambio y las "
                        "listas de precios (aprobadas, al inventario)"),
         importCommand},
        {QStringLiteral("export"),
         QStringLiteral("export [--desde DD/MM/AAAA] [--hasta DD/MM/AAAA] "
                        "[--formato orvo|vandu|xml]"),
         QStringLiteral("arma el paquete de la tienda en la carpeta de envío y escribe su ruta"),
         [](const QStringList& args) {
             return exchange::exportCommand(openConfiguredStore(false), args, out(), err());
         }},
        {QStringLiteral("stock"), QStringLiteral("stock rebuild"),
         QStringLiteral("recalcula la existencia de todos los artículos desde el último ajuste "
                        "físico-lógico con los documentos aprobados (Rekardear Inventario)"),
         [](const QStringList& args) {
             if (args != QStringList{QStringLiteral("rebuild")}) {
                 err() << "uso: orvo stock rebuild" << Qt::endl;
                 return 2;
             }
             return inventory::stock::stockCommand(openConfiguredStore(false), args, out(), err());
         }},
        {QStringLiteral("mail"), QStringLiteral("mail [--xml]"),
         QStringLiteral("envía por correo los paquetes de la carpeta de envío (MENSAJES)"),
         [](const QStringList& args) {
             return exchange::mailCommand(openConfiguredStore(false), args, out(), err());
         }},
        {QStringLiteral("mail-account"), QStringLiteral("mail-account [SERVIDOR:PUERTO]"),
         QStringLiteral("muestra o fija el servidor de salida de la cuenta de correo "
                        "(CUENTAS_MAIL)"),
         [](const QStringList& args) {
             return exchange::mailAccountCommand(openConfiguredStore(false), args, out(), err());
         }},
        {QStringLiteral("import"), QStringLiteral("import [CARPETA]"),
         QStringLiteral("carga lo recibido en Recibe (o en CARPETA): las transferencias y las "
                        "devoluciones de transferencias de otras tiendas"),
         importCommand},
    };
    return list;
}

QStringList wrapped(const QString& text, int width) {
    QStringList lines;
    QString line;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            lines << line;
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    if (!line.isEmpty())
        lines << line;
    return lines;
}

int printHelp() {
    out() << "Orvo " << versionString() << Qt::endl
          << "uso: orvo                 inicia el programa de escritorio" << Qt::endl
          << "     orvo <comando> ...   ejecuta un comando sin pantalla" << Qt::endl
          << Qt::endl
          << "Comandos:" << Qt::endl
          << Qt::endl;
    // Each command on its own lines: the usage, then what it does, then a blank line.
    for (const Command& c : commands()) {
        const QStringList usage = wrapped(QStringLiteral("orvo ") + c.usage, 76);
        for (qsizetype i = 0; i < usage.size(); ++i)
            out() << (i == 0 ? "  " : "        ") << usage[i] << Qt::endl;
        for (const QString& line : wrapped(c.help, 74))
            out() << "      " << line << Qt::endl;
        out() << Qt::endl;
    }
    out() << "La carpeta de la aplicación es ORVO_HOME (hoy: " << shell::appHome() << ")."
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
            err() << "Error de base de datos " << e.number() << ": " << e.text().trimmed()
                  << Qt::endl;
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
