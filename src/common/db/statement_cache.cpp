#include "common/db/statement_cache.h"

#include <QMutex>
#include <unordered_map>
#include <vector>

namespace orvo::db::statement_cache {

namespace {

// Enough for every statement of a register's working day; the least recently used texts go
// first when a screen builds many different ones.
constexpr int kMaxIdlePerConnection = 256;

struct Idle {
    std::vector<std::unique_ptr<QSqlQuery>> queries;
    quint64 lastUse = 0;
};

struct ConnectionStatements {
    quint64 generation = 0;
    quint64 clock = 0;
    int idle = 0;
    std::unordered_map<QString, Idle> byText;
};

struct Cache {
    QMutex mutex;
    quint64 nextGeneration = 1;
    std::unordered_map<QString, ConnectionStatements> connections;
};

// Never destroyed: at exit the drivers may already be gone, and the engines release the
// statements of a closed connection themselves.
Cache& cache() {
    static Cache* c = new Cache;
    return *c;
}

} // namespace

Lease take(const QSqlDatabase& db, const QString& statement) {
    Lease lease;
    {
        Cache& c = cache();
        QMutexLocker lock(&c.mutex);
        auto& conn = c.connections[db.connectionName()];
        if (conn.generation == 0)
            conn.generation = c.nextGeneration++;
        lease.generation = conn.generation;
        auto it = conn.byText.find(statement);
        if (it != conn.byText.end() && !it->second.queries.empty()) {
            lease.query = std::move(it->second.queries.back());
            it->second.queries.pop_back();
            if (it->second.queries.empty())
                conn.byText.erase(it);
            --conn.idle;
            lease.prepared = true;
            return lease;
        }
    }
    lease.query = std::make_unique<QSqlQuery>(db);
    return lease;
}

void giveBack(const QString& connectionName, const QString& statement, Lease lease) {
    if (!lease.query || !lease.prepared)
        return;
    std::unique_ptr<QSqlQuery> evicted;
    {
        Cache& c = cache();
        QMutexLocker lock(&c.mutex);
        auto found = c.connections.find(connectionName);
        if (found == c.connections.end() || found->second.generation != lease.generation)
            return; // forgotten meanwhile: the lease's query is released after the lock
        ConnectionStatements& conn = found->second;
        Idle& idle = conn.byText[statement];
        idle.queries.push_back(std::move(lease.query));
        idle.lastUse = ++conn.clock;
        if (++conn.idle > kMaxIdlePerConnection) {
            auto oldest = conn.byText.begin();
            for (auto it = conn.byText.begin(); it != conn.byText.end(); ++it)
                if (it->second.lastUse < oldest->second.lastUse)
                    oldest = it;
            evicted = std::move(oldest->second.queries.back());
            oldest->second.queries.pop_back();
            if (oldest->second.queries.empty())
                conn.byText.erase(oldest);
            --conn.idle;
        }
    }
    // Releasing a PostgreSQL statement is a round trip: never under the lock.
}

void forget(const QString& connectionName) {
    ConnectionStatements dropped;
    {
        Cache& c = cache();
        QMutexLocker lock(&c.mutex);
        auto it = c.connections.find(connectionName);
        if (it == c.connections.end())
            return;
        dropped = std::move(it->second);
        c.connections.erase(it);
    }
}

int idleCount(const QString& connectionName) {
    Cache& c = cache();
    QMutexLocker lock(&c.mutex);
    auto it = c.connections.find(connectionName);
    return it == c.connections.end() ? 0 : it->second.idle;
}

} // namespace orvo::db::statement_cache
