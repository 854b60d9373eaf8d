#pragma once

#include "common/schema/schema.h"

#include <QSqlDatabase>
#include <QStringList>
#include <functional>

namespace orvo::schema {

using ProgressFn = std::function<void(int percent, const QString& label)>;

struct MigrationResult {
    int fromVersion = 0;
    int toVersion = 0;
    QStringList steps; // one line per applied version
};

// The version the database has reached (0 for an empty database).
int appliedVersion(const QSqlDatabase& db);

// Creates or upgrades the store schema to the description's version; each version is applied in
// its own transaction and recorded in VERSIONESQUEMA. Running it again changes nothing.
MigrationResult migrate(const QSqlDatabase& db, const ProgressFn& progress = {});
// Creates one table of the store description, with its indexes, when it does not exist (tables
// that the program drops and rebuilds, such as SALDODIARIO). Runs inside the caller's transaction
// when one is open. Returns true when the table was created.
bool createTableIfMissing(const QSqlDatabase& db, const QString& table);

// The same for another table list (used to prove upgrades on a small description).
MigrationResult migrate(const QSqlDatabase& db, const QList<Table>& tables,
                        const ProgressFn& progress = {});

} // namespace orvo::schema
