#pragma once

#include "common/db/connection.h"
#include "common/db/statement_cache.h"
#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>
#include <initializer_list>

namespace orvo {
class DbError;
}

namespace orvo::db {

// A prepared statement with bound values that throws DbError (number, text, statement) on any
// failure. Values are never concatenated into SQL text.
//
//   Sql q(db, "SELECT Nombre FROM COLORES WHERE Codigo = ?");
//   q.bind(code).exec();
//   while (q.next()) names << q.text("Nombre");
//
// The prepared statement outlives the Sql: it goes back to its connection's statement cache and
// the next Sql with the same text runs it without preparing it again.
class Sql {
public:
    Sql(const QSqlDatabase& db, const QString& statement);
    ~Sql();
    Sql(const Sql&) = delete;
    Sql& operator=(const Sql&) = delete;

    Sql& bind(const QVariant& value);
    Sql& bind(const QString& value) { return bind(QVariant(value)); }
    Sql& bind(const char* value) { return bind(QVariant(QString::fromUtf8(value))); }
    Sql& bind(int value) { return bind(QVariant(value)); }
    Sql& bind(long long value) { return bind(QVariant(value)); }
    Sql& bind(double value) = delete; // money never travels as a double
    Sql& bind(const Decimal& value) { return bind(QVariant(value.toString())); }
    Sql& bind(const Decimal& value, int decimals) { return bind(value.toVariant(decimals)); }
    Sql& bind(const QDateTime& value) { return bind(QVariant(value)); }
    Sql& bind(const QDate& value) { return bind(QVariant(QDateTime(value, QTime(0, 0)))); }
    Sql& bindNull() { return bind(QVariant()); }
    Sql& bindAll(std::initializer_list<QVariant> values);

    // Runs with the values bound since the last run; the same Sql can be bound and run again.
    Sql& exec();
    bool next() { return m_query->next(); }
    bool first() { return m_query->first(); }

    QVariant value(const QString& column) const;
    QVariant value(int index) const { return m_query->value(index); }
    bool isNull(const QString& column) const { return value(column).isNull(); }
    QString text(const QString& column) const { return value(column).toString(); }
    int integer(const QString& column) const;
    long long bigint(const QString& column) const;
    Decimal decimal(const QString& column) const { return Decimal::fromVariant(value(column)); }
    QDateTime dateTime(const QString& column) const;

    int rowsAffected() const { return m_query->numRowsAffected(); }
    QSqlQuery& raw() { return *m_query; }
    const QString& statement() const { return m_statement; }

private:
    [[noreturn]] void fail() const;
    bool runPrepared();
    QString m_connection;
    QString m_statement;
    statement_cache::Lease m_lease;
    QSqlQuery* m_query;          // the lease's
    QVariantList m_values;       // bound at exec(); a prepared statement can be run again
    mutable QSqlRecord m_record; // columns of the last run, read once
    mutable bool m_recordRead = false;
};

// Locks the rows `selectOrdered` finds, in its ORDER BY, until the transaction ends, so that
// registers taking rows of a shared table (articles' stock) take them in one order and wait for
// each other instead of deadlocking. Only PostgreSQL needs it: on SQLite BEGIN IMMEDIATE already
// lets one writer in at a time, and nothing is run.
void lockRows(const QSqlDatabase& db, const QString& selectOrdered, const QVariantList& values);

// A unique or primary key refused the row (PostgreSQL 23505, SQLite's constraint codes).
bool isUniqueViolation(const DbError& error);

// Statements that change the schema make the connection's cached statements stale.
bool changesSchema(const QString& statement);

// A date-time as either engine returns it: QDateTime from PostgreSQL, ISO text from SQLite.
// Null stays an invalid QDateTime.
QDateTime dateTimeValue(const QVariant& value);

// One-shot helpers.
int execute(const QSqlDatabase& db, const QString& statement,
            std::initializer_list<QVariant> values = {});
// First column of the first row, or an invalid QVariant when there is no row.
QVariant scalar(const QSqlDatabase& db, const QString& statement,
                std::initializer_list<QVariant> values = {});
bool exists(const QSqlDatabase& db, const QString& statement,
            std::initializer_list<QVariant> values = {});
// INSERT ... RETURNING <idColumn>; both engines return the identity of the new row.
long long insertReturningId(const QSqlDatabase& db, const QString& insertStatement,
                            const QString& idColumn, std::initializer_list<QVariant> values);

// Engine differences live here and nowhere else.
QString nowExpression(const QSqlDatabase& db); // the server's current local date-time
QDateTime serverNow(const QSqlDatabase& db);
// Drops what serverNow() keeps for a connection that closes or reconnects.
void forgetServerClock(const QString& connectionName);
bool tableExists(const QSqlDatabase& db, const QString& table);
QStringList columnsOf(const QSqlDatabase& db, const QString& table); // upper-case names

// Half-open day range: [day 00:00, next day 00:00).
inline QDateTime dayStart(const QDate& day) {
    return QDateTime(day, QTime(0, 0));
}
inline QDateTime nextDayStart(const QDate& day) {
    return QDateTime(day.addDays(1), QTime(0, 0));
}

// Numeric flags are true only at 1; text flags only at "TRUE".
bool numericFlag(const QVariant& value);
bool textFlag(const QVariant& value);

} // namespace orvo::db
