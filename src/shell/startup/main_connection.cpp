#include "shell/startup/main_connection.h"

#include "common/db/connection.h"
#include "common/errors/errors.h"
#include "common/schema/migrate.h"
#include "common/schema/schema.h"
#include "shell/setup/store_setup.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace orvo::shell {

Q_LOGGING_CATEGORY(lcStartup, "orvo.startup")

namespace {

bool openNamed(const ServerConfig& config, const QString& dataDir, bool createEmbedded,
               const QString& name, QString* reason) {
    const auto fail = [&](const QString& why) {
        // Passwords never reach the log or the screen: only the engine's text.
        qCInfo(lcStartup) << "connection failed:" << why;
        if (reason)
            *reason = why;
        db::closeConnection(name);
        return false;
    };
    try {
        if (const QString problem = config.passwordLineProblem(); !problem.isEmpty())
            return fail(problem);
        const db::ConnectionSettings s = config.connectionSettings(dataDir);
        const bool fresh = s.engine == db::Engine::Sqlite && !QFileInfo::exists(s.sqliteFile);
        if (fresh && !createEmbedded)
            return fail(QStringLiteral("No existe la base de datos %1.").arg(s.sqliteFile));
        QSqlDatabase db = db::openConnection(s, name);
        if (fresh) {
            schema::migrate(db);
            setup::initializeStore(db, {});
        }
        return true;
    } catch (const DbError& e) {
        return fail(e.text().trimmed());
    } catch (const UserError& e) {
        return fail(e.text());
    } catch (const std::exception& e) {
        return fail(QString::fromUtf8(e.what()));
    }
}

} // namespace

bool openMainConnection(const ServerConfig& config, const QString& dataDir, bool createEmbedded,
                        QString* reason) {
    db::closeConnection(kMainConnection);
    return openNamed(config, dataDir, createEmbedded, kMainConnection, reason);
}

bool testConnection(const ServerConfig& config, const QString& dataDir, bool createEmbedded,
                    QString* reason) {
    const QString name = QStringLiteral("orvo_test_connection");
    const bool ok = openNamed(config, dataDir, createEmbedded, name, reason);
    db::closeConnection(name);
    return ok;
}

bool mainConnectionOpen() {
    return QSqlDatabase::contains(kMainConnection) &&
           QSqlDatabase::database(kMainConnection, false).isOpen();
}

QSqlDatabase mainDb() {
    return QSqlDatabase::database(kMainConnection, false);
}

void closeMainConnection() {
    db::closeConnection(kMainConnection);
}

StartupConnection connectFromConfigFile(const QString& configPath, const QString& dataDir,
                                        ServerConfig& config, QString* reason) {
    config = ServerConfig{};
    if (!QFileInfo::exists(configPath))
        return StartupConnection::NeedsConfig;
    config = readServerConfig(configPath);
    return openMainConnection(config, dataDir, false, reason) ? StartupConnection::Connected
                                                              : StartupConnection::NeedsConfig;
}

void ensureCurrentSchema(const QSqlDatabase& db) {
    const int applied = schema::appliedVersion(db);
    const int wanted = schema::currentVersion();
    if (applied >= wanted)
        return;
    if (db::engineOf(db) == db::Engine::Sqlite) {
        schema::migrate(db);
        setup::initializeStore(db, {});
        return;
    }
    throw UserError(QStringLiteral("La base de datos %1 está en la versión %2 del esquema y este "
                                   "programa necesita la versión %3: ejecute 'orvo db init' para "
                                   "actualizarla...!")
                        .arg(db::describe(db))
                        .arg(applied)
                        .arg(wanted),
                    QStringLiteral("Orvo"));
}

QString serverPanelText(const QSqlDatabase& db) {
    return QStringLiteral("Servidor SQL:") + db::describe(db);
}

} // namespace orvo::shell
