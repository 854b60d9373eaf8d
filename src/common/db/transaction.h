#pragma once

#include <QSqlDatabase>

namespace orvo::db {

// The one transaction of a user action. Opened by the action's logic function, never by a store:
// BEGIN IMMEDIATE on SQLite (the write lock is taken up front, so two registers queue instead of
// failing half-way), BEGIN on PostgreSQL. commit() throws DbError on failure; the destructor rolls
// back whatever was not committed. Opening a second one on the same connection is a programming
// error and throws std::logic_error.
class Transaction {
public:
    explicit Transaction(QSqlDatabase db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();
    void rollback();
    bool isActive() const { return m_active; }

    // True while a Transaction is open on this connection.
    static bool isOpen(const QSqlDatabase& db);

private:
    QSqlDatabase m_db;
    bool m_active = false;
};

// Stores call this first: writing outside an action's transaction is a programming error.
void requireTransaction(const QSqlDatabase& db);

} // namespace orvo::db
