#pragma once

#include "common/db/sql.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariantList>

namespace orvo::db {

// Rows of one table written with multi-row INSERTs: on PostgreSQL each statement is a round trip
// to the server, so a thousand rows go in a handful of statements instead of a thousand. Rows are
// kept until flush() (or until a statement's worth is waiting); the caller's transaction holds
// them all.
//
//   BulkInsert lines(db, "MOVVENTAS", {"NumeroFactura", "Serie", "Item"});
//   for (...) lines.add({number, serie, item});
//   lines.flush();
class BulkInsert {
public:
    // rowsPerStatement is capped so a statement never holds more than 32,000 values
    // (PostgreSQL takes at most 65,535 parameters).
    BulkInsert(const QSqlDatabase& db, const QString& table, const QStringList& columns,
               int rowsPerStatement = 500);
    BulkInsert(const BulkInsert&) = delete;
    BulkInsert& operator=(const BulkInsert&) = delete;

    // One value per column, in the columns' order (Decimal values as their text).
    void add(const QVariantList& row);
    // Writes what is waiting. Throws DbError; the rows of a failed statement are dropped.
    void flush();
    qsizetype pending() const { return m_pending.size() / m_columns.size(); }
    long long written() const { return m_written; }

private:
    void write(qsizetype rows);
    QSqlDatabase m_db;
    QString m_table;
    QStringList m_columns;
    int m_rowsPerStatement;
    QVariantList m_pending;
    long long m_written = 0;
};

} // namespace orvo::db
