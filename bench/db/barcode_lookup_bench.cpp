// A catalogue of 1,000,000 article variants loaded in bulk (multi-row INSERTs of 500 rows), then
// 20,000 random barcode look-ups, on the embedded engine and on the PostgreSQL servers given (see
// bench_db.h). Prints the seeding time and the mean look-up.
#include "bench_db.h"
#include "common/db/bulk_insert.h"
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace orvo;

namespace {

constexpr int kArticles = 1'000'000;
constexpr int kLookups = 20'000;

QString barcodeOf(int i) {
    return QStringLiteral("759%1").arg(i, 10, 10, QLatin1Char('0'));
}

bench::Figure seed(const QSqlDatabase& db) {
    QElapsedTimer t;
    t.start();
    db::Transaction tx(db);
    db::BulkInsert rows(db, QStringLiteral("INVENTARIO"),
                        {QStringLiteral("CodigoBarra"), QStringLiteral("Nombre"),
                         QStringLiteral("Referencia"), QStringLiteral("CodigoMarca"),
                         QStringLiteral("Talla"), QStringLiteral("CodigoColor"),
                         QStringLiteral("PrecioDetal"), QStringLiteral("Existencia"),
                         QStringLiteral("CostoPromedio"), QStringLiteral("Status")});
    for (int i = 0; i < kArticles; ++i)
        rows.add({barcodeOf(i), QStringLiteral("CAMISA %1").arg(i / 12),
                  QStringLiteral("REF%1").arg(i / 12), QStringLiteral("M%1").arg(i % 50),
                  QStringLiteral("T%1").arg(i % 4), QStringLiteral("C%1").arg(i % 3),
                  Decimal(100 + i % 900).toVariant(2), Decimal(i % 40).toVariant(3),
                  Decimal(50 + i % 400).toVariant(5), 1});
    rows.flush();
    tx.commit();
    if (db::engineOf(db) == db::Engine::Postgres)
        db::execute(db, QStringLiteral("ANALYZE INVENTARIO"));
    return {t.elapsed() / 1000.0, QStringLiteral("s"), QStringLiteral("multi-row INSERTs")};
}

bench::Figure lookUp(const QSqlDatabase& db) {
    QRandomGenerator rng(42);
    QElapsedTimer total;
    qint64 worst = 0;
    int found = 0;
    total.start();
    for (int i = 0; i < kLookups; ++i) {
        QElapsedTimer one;
        one.start();
        // As the till asks: a new statement each time, served by the connection's cache.
        db::Sql q(db, QStringLiteral("SELECT CodigoBarra, Nombre, PrecioDetal, Existencia FROM "
                                     "INVENTARIO WHERE CodigoBarra = ? AND Status = 1"));
        q.bind(barcodeOf(int(rng.bounded(kArticles)))).exec();
        if (q.next())
            ++found;
        worst = std::max(worst, one.nsecsElapsed());
    }
    return {total.nsecsElapsed() / 1000.0 / kLookups, QStringLiteral("us"),
            QStringLiteral("slowest %1 us, %2/%3 found; budget SQLite 50 us, PostgreSQL 100 us")
                .arg(worst / 1000.0, 0, 'f', 0)
                .arg(found)
                .arg(kLookups)};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    bench::forEachEngine(QStringLiteral("orvo_bench_lookup"), [](const QSqlDatabase& db) {
        bench::Figures out;
        out.append({QStringLiteral("seeding 1,000,000 articles"), seed(db)});
        out.append({QStringLiteral("barcode lookup among 1,000,000"), lookUp(db)});
        return out;
    });
    return 0;
}
