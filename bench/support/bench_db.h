#pragma once

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::bench {

// Runs `body` on a fresh migrated store database of each engine: an embedded SQLite file, and
// PostgreSQL when ORVO_TEST_PG=host:port names a server (user ORVO_TEST_PG_USER, password
// ORVO_TEST_PG_PASSWORD), on a database `name` created anew.
void forEachEngine(const QString& name,
                   const std::function<void(const char* engine, const QSqlDatabase& db)>& body);

} // namespace orvo::bench
