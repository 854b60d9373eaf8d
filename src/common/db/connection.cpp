#include "common/db/connection.h"

#include "common/db/sql.h"
#include "common/db/statement_cache.h"
#include "common/errors/errors.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace orvo::db {

namespace {

// What is kept per connection belongs to its server session: gone when it closes or reopens.
void forgetSession(const QString& name) {
    statement_cache::forget(name);
    forgetServerClock(name);
}

void applySessionSettings(QSqlDatabase& db, Engine engine) {
    QSqlQuery q(db);
    if (engine == Engine::Sqlite) {
        q.exec(QStringLiteral("PRAGMA journal_mode=WAL"));
        q.exec(QStringLiteral("PRAGMA synchronous=NORMAL"));
        q.exec(QStringLiteral("PRAGMA foreign_keys=OFF"));
    } else {
        q.exec(QStringLiteral("SET statement_timeout = 300000"));
        q.exec(QStringLiteral("SET client_min_messages = WARNING"));
    }
}

} // namespace

QSqlDatabase openConnection(const ConnectionSettings& s, const QString& name) {
    forgetSession(name);
    if (QSqlDatabase::contains(name))
        QSqlDatabase::removeDatabase(name);
    QSqlDatabase db;
    if (s.engine == Engine::Sqlite) {
        db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(s.sqliteFile);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=30000"));
    } else {
        db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
        db.setHostName(s.host);
        if (s.port > 0)
            db.setPort(s.port);
        db.setDatabaseName(s.database);
        if (s.passwordAuth) {
            db.setUserName(s.user);
            db.setPassword(s.password);
        }
        db.setConnectOptions(QStringLiteral("connect_timeout=300"));
    }
    // Amounts come back as exact text, never through a double.
    db.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!db.open()) {
        const QSqlError err = db.lastError();
        QString number = err.nativeErrorCode();
        if (number.isEmpty())
            number = QString::number(int(err.type()));
        const QString text = err.text();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
        throw DbError(number, text);
    }
    applySessionSettings(db, s.engine);
    return db;
}

namespace {
QSqlDatabase openClone(QSqlDatabase db) {
    db.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!db.open()) {
        const QSqlError err = db.lastError();
        const QString name = db.connectionName();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
        throw DbError(err.nativeErrorCode(), err.text());
    }
    applySessionSettings(db, engineOf(db));
    return db;
}
} // namespace

QSqlDatabase cloneConnection(const QSqlDatabase& source, const QString& name) {
    forgetSession(name);
    if (QSqlDatabase::contains(name))
        QSqlDatabase::removeDatabase(name);
    return openClone(QSqlDatabase::cloneDatabase(source, name));
}

QSqlDatabase cloneConnection(const QString& sourceName, const QString& name) {
    forgetSession(name);
    if (QSqlDatabase::contains(name))
        QSqlDatabase::removeDatabase(name);
    return openClone(QSqlDatabase::cloneDatabase(sourceName, name));
}

void closeConnection(const QString& name) {
    forgetSession(name);
    if (!QSqlDatabase::contains(name))
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

Engine engineOf(const QSqlDatabase& db) {
    return db.driverName() == QLatin1String("QPSQL") ? Engine::Postgres : Engine::Sqlite;
}

QString describe(const QSqlDatabase& db) {
    if (engineOf(db) == Engine::Sqlite)
        return QStringLiteral("(local)\\") + QFileInfo(db.databaseName()).completeBaseName();
    QString host = db.hostName().isEmpty() ? QStringLiteral("(local)") : db.hostName();
    if (db.port() > 0 && db.port() != 5432)
        host += u':' + QString::number(db.port());
    return host + u'\\' + db.databaseName();
}

} // namespace orvo::db
