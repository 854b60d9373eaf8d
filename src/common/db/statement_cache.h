#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <memory>

namespace orvo::db {

// Prepared statements kept per connection and keyed by their SQL text, so that a statement run
// again (the same look-up, the same line insert of the next invoice) is neither prepared nor
// released again: on PostgreSQL each of those is a round trip to the server.
//
// A statement is taken out while a Sql runs it and iterates its rows, and given back when the Sql
// ends; two Sql objects with the same text at once get two statements. Every connection belongs
// to one thread, so a connection's statements are only ever touched from that thread; the lock
// only guards the map of connections.
namespace statement_cache {

struct Lease {
    std::unique_ptr<QSqlQuery> query;
    bool prepared = false;  // already prepared with the text it was taken for
    quint64 generation = 0; // the connection's cache it came from
};

// A prepared statement of `db` for `statement`, or a new unprepared one.
Lease take(const QSqlDatabase& db, const QString& statement);
// Gives a prepared statement back; dropped when its connection's cache was forgotten meanwhile.
void giveBack(const QString& connectionName, const QString& statement, Lease lease);
// Releases every statement kept for the connection: before it closes or reconnects, and after
// the schema changed (a cached SELECT * would no longer fit its table on PostgreSQL).
void forget(const QString& connectionName);
// How many statements the connection keeps idle (for tests).
int idleCount(const QString& connectionName);

} // namespace statement_cache

} // namespace orvo::db
