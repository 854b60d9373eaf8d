// Barcode lookup over a catalogue of 1,000,000 article variants, on the embedded engine and, when
// a PostgreSQL server is given (ORVO_TEST_PG=host:port, user ORVO_TEST_PG_USER), on PostgreSQL.
// Prints the mean and the slowest of 20,000 random look-ups in microseconds.
#include "bench_db.h"
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/schema/migrate.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <cstdio>

using namespace orvo;

namespace {

constexpr int kArticles = 1'000'000;
constexpr int kLookups = 20'000;

QString barcodeOf(int i) {
    return QStringLiteral("759%1").arg(i, 10, 10, QLatin1Char('0'));
}

void seed(const QSqlDatabase& db) {
    QElapsedTimer t;
    t.start();
    db::Transaction tx(db);
    db::Sql q(db, QStringLiteral("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, "
                                 "CodigoMarca, Talla, CodigoColor, PrecioDetal, Existencia, "
                                 "CostoPromedio, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1)"));
    for (int i = 0; i < kArticles; ++i) {
        q.bind(barcodeOf(i))
            .bind(QStringLiteral("CAMISA %1").arg(i / 12))
            .bind(QStringLiteral("REF%1").arg(i / 12))
            .bind(QStringLiteral("M%1").arg(i % 50))
            .bind(QStringLiteral("T%1").arg(i % 4))
            .bind(QStringLiteral("C%1").arg(i % 3))
            .bind(Decimal(100 + i % 900), 2)
            .bind(Decimal(i % 40), 3)
            .bind(Decimal(50 + i % 400), 5)
            .exec();
    }
    tx.commit();
    std::printf("  seeded %d articles in %.1f s\n", kArticles, t.elapsed() / 1000.0);
}

void measure(const char* engine, const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra, Nombre, PrecioDetal, Existencia FROM "
                                 "INVENTARIO WHERE CodigoBarra = ? AND Status = 1"));
    QRandomGenerator rng(42);
    QElapsedTimer total;
    qint64 worst = 0;
    int found = 0;
    total.start();
    for (int i = 0; i < kLookups; ++i) {
        QElapsedTimer one;
        one.start();
        q.bind(barcodeOf(int(rng.bounded(kArticles)))).exec();
        if (q.next())
            ++found;
        worst = std::max(worst, one.nsecsElapsed());
    }
    const double meanUs = total.nsecsElapsed() / 1000.0 / kLookups;
    std::printf(
        "%-10s barcode lookup: mean %.1f us, slowest %.1f us (%d/%d found; budget 1000 us)\n",
        engine, meanUs, worst / 1000.0, found, kLookups);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    bench::forEachEngine(QStringLiteral("orvo_bench_lookup"),
                         [](const char* engine, const QSqlDatabase& db) {
                             std::printf("%s:\n", engine);
                             seed(db);
                             if (db::engineOf(db) == db::Engine::Postgres)
                                 db::execute(db, QStringLiteral("ANALYZE INVENTARIO"));
                             measure(engine, db);
                         });
    return 0;
}
