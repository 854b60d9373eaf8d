#pragma once

#include <QSqlDatabase>
#include <QString>

namespace orvo::db {

enum class Engine { Sqlite, Postgres };

// Where a store database lives. The embedded engine is one SQLite file; a store server or head
// office is a PostgreSQL database.
struct ConnectionSettings {
    Engine engine = Engine::Sqlite;
    QString sqliteFile; // absolute path, embedded engine
    QString host;       // PostgreSQL host name or address; empty = local socket
    int port = 5432;
    QString database;         // PostgreSQL database name
    bool passwordAuth = true; // false: integrated (local socket / the user's own credentials)
    QString user;
    QString password;
};

// Opens a named connection for this thread. Throws DbError when the engine refuses.
// Connections are never shared across threads: each thread opens its own name.
QSqlDatabase openConnection(const ConnectionSettings& settings, const QString& connectionName);

// Opens a second connection to the same database as `db` (for a job's thread).
QSqlDatabase cloneConnection(const QSqlDatabase& db, const QString& connectionName);
// The same from another thread, by the source connection's name.
QSqlDatabase cloneConnection(const QString& sourceName, const QString& connectionName);

void closeConnection(const QString& connectionName);

Engine engineOf(const QSqlDatabase& db);

// Human description for the status bar: "host\database" or the file name.
QString describe(const QSqlDatabase& db);

} // namespace orvo::db
