// The commands that set up a store: its database (`db init`) and where it lives
// (`server-config`).
#include "app/command_support.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/schema/migrate.h"
#include "exchange/package/templates.h"
#include "shell/demo/demo_store.h"
#include "shell/setup/store_setup.h"
#include "shell/startup/app_home.h"
#include "shell/startup/main_connection.h"
#include "shell/startup/server_config.h"
#include "shell/startup/user_settings.h"

#include <QFile>
#include <iostream>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace orvo::app {

QTextStream& out() {
    static QTextStream s(stdout);
    return s;
}

QTextStream& err() {
    static QTextStream s(stderr);
    return s;
}

void printProgress(int percent, const QString& label) {
    // A log or a pipe gets each step once, finished; a terminal sees it move.
    if (!isatty(STDOUT_FILENO)) {
        if (percent >= 100)
            out() << label << Qt::endl;
        return;
    }
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
    if (const QString problem = config.passwordLineProblem(); !problem.isEmpty())
        throw UserError(problem);
    try {
        return db::openConnection(config.connectionSettings(shell::dataDir()),
                                  QStringLiteral("orvo_command"));
    } catch (const DbError& e) {
        throw UserError(QStringLiteral("No se pudo establecer la conexión con el servidor "
                                       "(%1):\n%2")
                            .arg(path, e.text().trimmed()));
    }
}

namespace {

// Echo off while the secret is typed, back on whatever happens.
class NoEcho {
public:
    NoEcho() : m_on(tcgetattr(STDIN_FILENO, &m_saved) == 0) {
        if (!m_on)
            return;
        termios quiet = m_saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~NoEcho() {
        if (m_on)
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_saved);
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

private:
    termios m_saved{};
    bool m_on;
};

QString typedLine(const QString& prompt) {
    err() << prompt << Qt::flush;
    std::string line;
    {
        NoEcho quiet;
        std::getline(std::cin, line);
    }
    err() << Qt::endl;
    return QString::fromLocal8Bit(line.c_str());
}

} // namespace

QString readSecret(const QString& prompt, bool confirm) {
    QString secret;
    if (isatty(STDIN_FILENO)) {
        secret = typedLine(prompt);
        if (confirm && typedLine(QStringLiteral("Repita la clave: ")) != secret)
            throw UserError(QStringLiteral("¡Confirmación de clave errada!"));
    } else {
        std::string line;
        if (!std::getline(std::cin, line))
            throw UserError(QStringLiteral("No se recibió la clave por la entrada estándar."));
        secret = QString::fromLocal8Bit(line.c_str());
        if (secret.endsWith(u'\r'))
            secret.chop(1);
    }
    if (secret.trimmed().isEmpty())
        throw UserError(QStringLiteral("La clave no puede estar vacía...!"));
    return secret;
}

Arguments parseArguments(const QStringList& args, const QStringList& valueOptions,
                         const QStringList& flagOptions) {
    Arguments a;
    for (int i = 0; i < args.size(); ++i) {
        const QString& word = args[i];
        if (valueOptions.contains(word)) {
            if (i + 1 >= args.size() || args[i + 1].startsWith(QLatin1String("--")))
                throw UserError(QStringLiteral("Falta el valor de %1.").arg(word));
            a.values.insert(word, args[++i]);
        } else if (flagOptions.contains(word)) {
            a.flags.insert(word);
        } else if (word.startsWith(QLatin1String("--"))) {
            throw UserError(QStringLiteral("Opción desconocida: %1").arg(word));
        } else {
            a.positional << word;
        }
    }
    return a;
}

namespace {

const QString kDemo = QStringLiteral("--demo");
const QString kAdmin = QStringLiteral("--admin");
const QString kName = QStringLiteral("--nombre");
const QString kCompany = QStringLiteral("--empresa");
const QString kRif = QStringLiteral("--rif");
const QString kStore = QStringLiteral("--tienda");

// The demo's register becomes this machine's only when this run created the store: on a store
// that was there already it belongs to the machine that created it, and a machine that already
// is a register stays that register.
void bindToDemoRegister(const QSqlDatabase& db, bool created) {
    const QString demoSerial = QString::fromLatin1(shell::demo::kDemoSerial);
    const QString current = shell::settings::read(QStringLiteral("Serie")).trimmed();
    const bool isRegister =
        !current.isEmpty() &&
        db::exists(db, QStringLiteral("SELECT 1 FROM CAJAS WHERE Serie = ?"), {current});
    if (isRegister) {
        out() << "Este equipo es la caja " << current << "." << Qt::endl;
        return;
    }
    if (!created) {
        out() << "La caja " << demoSerial
              << " de la demostración es del equipo que creó la tienda; configure la caja de "
                 "este equipo en Configuración > Configurar caja."
              << Qt::endl;
        return;
    }
    shell::demo::bindWorkstationToDemoRegister();
    out() << "Este equipo es la caja " << demoSerial << "." << Qt::endl;
}

} // namespace

int dbInit(const QStringList& args) {
    const Arguments a = parseArguments(args, {kAdmin, kName, kCompany, kRif, kStore}, {kDemo});
    if (!a.positional.isEmpty())
        throw UserError(QStringLiteral("Argumento desconocido: %1").arg(a.positional.first()));
    const bool demo = a.has(kDemo);
    const shell::setup::CompanyFacts company{a.value(kCompany), a.value(kRif), a.value(kStore)};
    // The demo company is always the same; --tienda makes the demo another of its branches.
    if (demo && (!company.nombre.isEmpty() || !company.rif.isEmpty()))
        throw UserError(QStringLiteral("--demo crea la empresa de demostración: no lleva --empresa "
                                       "ni --rif (--tienda elige la sucursal)."));
    if (!company.rif.isEmpty())
        shell::setup::checkedRif(company.rif); // before anything is written
    // Asked before the database is touched, so that a mistyped confirmation changes nothing.
    QString password;
    if (a.values.contains(kAdmin))
        password = readSecret(
            QStringLiteral("Clave del administrador %1: ").arg(a.value(kAdmin).trimmed()), true);

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
        bool created = false;
        if (shell::demo::isDemoStore(db)) {
            out() << "La tienda de demostración ya está creada en esta base de datos." << Qt::endl;
        } else {
            const QString branch = company.codigo.isEmpty() ? QStringLiteral("01") : company.codigo;
            shell::demo::seedDemoStore(db, branch);
            created = true;
            out() << "Tienda de demostración creada (sucursal " << branch
                  << "): usuarios ADMIN y CAJERO1, clave 1234." << Qt::endl;
        }
        bindToDemoRegister(db, created);
    } else {
        for (const QString& line : shell::setup::initializeStore(db, company))
            out() << line << Qt::endl;
    }

    if (a.values.contains(kAdmin)) {
        const QString code = a.value(kAdmin).trimmed();
        const auto outcome = shell::setup::saveAdministrator(db, {code, a.value(kName), password});
        out() << (outcome == shell::setup::AdministratorOutcome::Created
                      ? QStringLiteral("Administrador %1 creado (grupos ADMI y SISTEMAS).")
                      : QStringLiteral("Clave del usuario %1 cambiada; es administrador."))
                     .arg(code)
              << Qt::endl;
    }
    if (!shell::setup::hasActiveUser(db))
        out() << "La tienda no tiene usuarios: cree el administrador con 'orvo db init --admin "
                 "CODIGO' (o al iniciar el programa)."
              << Qt::endl;
    return 0;
}

namespace {

const QString kUser = QStringLiteral("--usuario");
const QString kNoTest = QStringLiteral("--sin-probar");

void describeConfig(const shell::ServerConfig& c) {
    if (c.isEmbedded()) {
        out() << "Base de datos incorporada (SQLite): "
              << shell::embeddedFile(shell::dataDir(), c.database()) << Qt::endl;
        return;
    }
    const db::ConnectionSettings s = c.connectionSettings(shell::dataDir());
    out() << "PostgreSQL: servidor " << c.server() << ", base de datos " << s.database << Qt::endl;
    if (c.passwordAuth())
        out() << "Usuario " << c.user() << " con clave"
              << (c.lines[4].trimmed().isEmpty() ? " (vacía)" : " (cifrada)") << Qt::endl;
    else
        out() << "Autenticación integrada: el usuario del sistema (o PGUSER), sin clave o con "
                 "la de ~/.pgpass"
              << Qt::endl;
}

} // namespace

int serverConfig(const QStringList& args) {
    const Arguments a = parseArguments(args, {kUser}, {kNoTest});
    const QString path = shell::serverConfigPath();
    if (a.positional.isEmpty() && a.values.isEmpty() && a.flags.isEmpty()) {
        if (!QFile::exists(path)) {
            out() << "No existe " << path << "." << Qt::endl;
            return 1;
        }
        out() << path << Qt::endl;
        describeConfig(shell::readServerConfig(path));
        return 0;
    }
    if (a.positional.size() != 2)
        throw UserError(QStringLiteral("uso: orvo server-config SERVIDOR BASE [--usuario USUARIO] "
                                       "[--sin-probar]"));
    const QString server = a.positional[0];
    const QString database = a.positional[1];
    const bool withPassword = a.values.contains(kUser);
    const bool test = !a.has(kNoTest);
    QString password;
    if (withPassword)
        password =
            readSecret(QStringLiteral("Clave de %1 en el servidor: ").arg(a.value(kUser)), !test);
    const shell::ServerConfig config =
        shell::ServerConfig::fromFields(server, database, withPassword, a.value(kUser), password);

    shell::ensureAppFolders();
    // The embedded file is created by 'orvo db init'; a server is tried first.
    if (test && !config.isEmbedded()) {
        QString reason;
        if (!shell::testConnection(config, shell::dataDir(), false, &reason)) {
            err() << "No se pudo establecer la conexión con el servidor:" << Qt::endl
                  << reason << Qt::endl
                  << "No se escribió " << path << " (--sin-probar lo escribe igual)." << Qt::endl;
            return 1;
        }
        out() << "Conexión establecida." << Qt::endl;
    }
    shell::writeServerConfig(path, config);
    out() << "Escrito " << path << Qt::endl;
    describeConfig(config);
    return 0;
}

} // namespace orvo::app
