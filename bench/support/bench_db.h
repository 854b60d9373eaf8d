#pragma once

#include "shell/session/session_context.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <functional>

namespace orvo::bench {

// One measured figure of a benchmark: lower is better.
struct Figure {
    double value = 0;
    QString unit;   // "ms", "us", "s"
    QString detail; // printed after the figure (slowest run, counts...)
};

// Runs `body` on a fresh migrated store database of each engine: an embedded SQLite file; the
// PostgreSQL server named by ORVO_TEST_PG=host:port (the throwaway test cluster: fsync off); and
// the one named by ORVO_BENCH_PG_DURABLE=host:port (a cluster that writes durably, fsync on).
// Users ORVO_TEST_PG_USER (default orvo), passwords ORVO_TEST_PG_PASSWORD. Each run's figure is
// printed on one line with `what` and `budget`, the PostgreSQL ones with their ratio to SQLite.
void forEachEngine(const QString& name, const QString& what, const QString& budget,
                   const std::function<Figure(const QSqlDatabase& db)>& body);

// The same with several figures per run, each printed under its own `what`.
using Figures = QList<std::pair<QString, Figure>>;
void forEachEngine(const QString& name, const std::function<Figures(const QSqlDatabase& db)>& body);

// The session of register `serie` as its cashier (CAJERO1) works it.
shell::SessionContext cashierSession(const QSqlDatabase& db, const QString& serie);
// The barcodes of the first `count` stocked articles that have a cost, in barcode order.
QStringList costedBarcodes(const QSqlDatabase& db, int count);

} // namespace orvo::bench
