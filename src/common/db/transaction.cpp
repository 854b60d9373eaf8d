#include "common/db/transaction.h"

#include "common/db/connection.h"
#include "common/errors/errors.h"

#include <QMutex>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <stdexcept>

namespace orvo::db {

namespace {

QMutex g_mutex;
QSet<QString>& openSet() {
    static QSet<QString> names;
    return names;
}

void run(QSqlDatabase& db, const QString& statement) {
    QSqlQuery q(db);
    if (!q.exec(statement)) {
        const QSqlError err = q.lastError();
        throw DbError(err.nativeErrorCode(), err.text(), statement);
    }
}

} // namespace

Transaction::Transaction(QSqlDatabase db) : m_db(std::move(db)) {
    {
        QMutexLocker lock(&g_mutex);
        if (openSet().contains(m_db.connectionName()))
            throw std::logic_error("a transaction is already open on connection " +
                                   m_db.connectionName().toStdString());
        openSet().insert(m_db.connectionName());
    }
    try {
        run(m_db, engineOf(m_db) == Engine::Sqlite ? QStringLiteral("BEGIN IMMEDIATE")
                                                   : QStringLiteral("BEGIN"));
    } catch (...) {
        QMutexLocker lock(&g_mutex);
        openSet().remove(m_db.connectionName());
        throw;
    }
    m_active = true;
}

Transaction::~Transaction() {
    if (m_active) {
        try {
            rollback();
        } catch (...) {
            // The connection is gone; the engine discards the transaction with it.
        }
    }
}

void Transaction::commit() {
    if (!m_active)
        throw std::logic_error("commit without an open transaction");
    try {
        run(m_db, QStringLiteral("COMMIT"));
    } catch (...) {
        rollback();
        throw;
    }
    m_active = false;
    QMutexLocker lock(&g_mutex);
    openSet().remove(m_db.connectionName());
}

void Transaction::rollback() {
    if (!m_active)
        return;
    m_active = false;
    {
        QMutexLocker lock(&g_mutex);
        openSet().remove(m_db.connectionName());
    }
    QSqlQuery q(m_db);
    q.exec(QStringLiteral("ROLLBACK"));
}

bool Transaction::isOpen(const QSqlDatabase& db) {
    QMutexLocker lock(&g_mutex);
    return openSet().contains(db.connectionName());
}

void requireTransaction(const QSqlDatabase& db) {
    if (!Transaction::isOpen(db))
        throw std::logic_error("store called outside a transaction on " +
                               db.connectionName().toStdString());
}

} // namespace orvo::db
