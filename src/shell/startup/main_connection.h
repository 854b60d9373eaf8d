#pragma once

#include "shell/startup/server_config.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

// The one connection every screen borrows for the whole run.
inline const QString kMainConnection = QStringLiteral("orvo_main");

// Opens (or replaces) the shared connection. False on any failure, without a message of its own;
// `reason` receives the server's own words (never the password). An embedded database must
// already exist unless `createEmbedded` is set; a new embedded file gets the store schema and
// what a new store starts with.
bool openMainConnection(const ServerConfig& config, const QString& dataDir,
                        bool createEmbedded = false, QString* reason = nullptr);
// Opens a throwaway connection with the same settings and closes it again.
bool testConnection(const ServerConfig& config, const QString& dataDir, bool createEmbedded = false,
                    QString* reason = nullptr);
bool mainConnectionOpen();
QSqlDatabase mainDb();
void closeMainConnection();

// What start-up does after reading data/srvsql.txt.
enum class StartupConnection {
    Connected,   // the shared connection is open
    NeedsConfig, // no file, or the connection failed: the configuration screen takes over
};

// Reads the file at `configPath` and opens the shared connection. A file with more than five lines
// or an unreadable file throws StartupError. `config` receives the lines read (empty when the file
// is missing), `reason` why the connection failed.
StartupConnection connectFromConfigFile(const QString& configPath, const QString& dataDir,
                                        ServerConfig& config, QString* reason = nullptr);

// An embedded database is brought up to this program's schema (and given what a new store starts
// with) at start; a server database that
// lags behind is refused with a UserError that says to run "orvo db init" (every register of the
// store shares it, so it is upgraded deliberately).
void ensureCurrentSchema(const QSqlDatabase& db);

// "Servidor SQL:" + data source + "\" + initial catalog, for the status bar.
QString serverPanelText(const QSqlDatabase& db);

} // namespace orvo::shell
