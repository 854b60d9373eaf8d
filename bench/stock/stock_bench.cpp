// The stock rebuild over 1,000,000 movement lines (400,000 sale lines, 400,000 purchase lines,
// 200,000 adjustment lines) of 20,000 articles, on each engine. Budget: 10 s.
#include "bench_db.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "inventory/stock/stock_rebuild.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

using namespace orvo;

namespace {

constexpr int kArticles = 20'000;

// 1..n as rows, the same statement on both engines.
QString upTo(int n) {
    return QStringLiteral("WITH RECURSIVE N(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM N WHERE "
                          "i < %1) ")
        .arg(n);
}

QString barcodeOf(const char* i) {
    return QStringLiteral("'B' || CAST(((%1 * 7) % %2 + 1) AS VARCHAR(10))")
        .arg(QString::fromLatin1(i))
        .arg(kArticles);
}

void seed(const QSqlDatabase& db) {
    QElapsedTimer t;
    t.start();
    const QDateTime day(db::serverNow(db).date(), QTime(10, 0));
    db::Transaction tx(db);
    db::execute(db,
                upTo(kArticles) +
                    QStringLiteral("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, "
                                   "CodigoMarca, Existencia, ExistenciaInicial, "
                                   "CostoPromedio, Tipo, Status, FechaPrimerMovimiento) "
                                   "SELECT 'B' || CAST(i AS VARCHAR(10)), 'ARTICULO', "
                                   "'R' || CAST(i / 10 AS VARCHAR(10)), 'M1', 0, 100, 5, 0, "
                                   "1, ? FROM N"),
                {QDateTime(QDate(2020, 1, 1), QTime(8, 0))});
    db::execute(db,
                upTo(100'000) +
                    QStringLiteral("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Status) "
                                   "SELECT i, 'Z1', ?, 1 FROM N"),
                {day});
    db::execute(db, upTo(400'000) +
                        QStringLiteral("INSERT INTO MOVVENTAS (NumeroFactura, Serie, Item, "
                                       "CodigoBarra, Cantidad) SELECT (i - 1) / 4 + 1, 'Z1', "
                                       "(i - 1) % 4 + 1, ") +
                        barcodeOf("i") + QStringLiteral(", 1 FROM N"));
    db::execute(db,
                upTo(20'000) +
                    QStringLiteral("INSERT INTO COMPRAS (Documento, Proveedor, Fecha, Status) "
                                   "SELECT 'F' || CAST(i AS VARCHAR(10)), 'P1', ?, 1 FROM N"),
                {day});
    db::execute(db, upTo(400'000) +
                        QStringLiteral("INSERT INTO MOVCOMPRAS (Documento, Proveedor, Item, "
                                       "CodigoBarra, Cantidad) SELECT 'F' || CAST((i - 1) / 20 "
                                       "+ 1 AS VARCHAR(10)), 'P1', (i - 1) % 20 + 1, ") +
                        barcodeOf("(i + 3)") + QStringLiteral(", 2 FROM N"));
    db::execute(db,
                upTo(10'000) +
                    QStringLiteral("INSERT INTO AJUSTES (Numero, Fecha, TipoAjuste, Signo, "
                                   "Status) SELECT i, ?, 1, CASE WHEN i % 2 = 0 THEN 1 ELSE "
                                   "-1 END, 1 FROM N"),
                {day});
    db::execute(db, upTo(200'000) +
                        QStringLiteral("INSERT INTO MOVAJUSTES (Numero, Item, CodigoBarra, "
                                       "Cantidad, Costo) SELECT (i - 1) / 20 + 1, (i - 1) % 20 + "
                                       "1, ") +
                        barcodeOf("(i + 11)") + QStringLiteral(", 1, 5 FROM N"));
    tx.commit();
    // What autovacuum does to a store that grew over months: the planner knows the tables.
    if (db::engineOf(db) == db::Engine::Postgres)
        db::execute(db, QStringLiteral("ANALYZE"));
    std::printf("  seeded %d articles and 1,000,000 movement lines in %.1f s\n", kArticles,
                t.elapsed() / 1000.0);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    bench::forEachEngine(QStringLiteral("orvo_bench_stock"), [](const QSqlDatabase& db) {
        seed(db);
        bench::Figures figures;
        for (int run = 1; run <= 2; ++run) {
            QElapsedTimer t;
            t.start();
            const auto r = inventory::stock::rebuildNow(db);
            figures.append({QStringLiteral("rebuild %1 (budget 10 s)").arg(run),
                            {t.elapsed() / 1000.0, QStringLiteral("s"),
                             QStringLiteral("%1 articles changed").arg(r.changed)}});
        }
        const Decimal total = Decimal::fromVariant(
            db::scalar(db, QStringLiteral("SELECT SUM(Existencia) FROM INVENTARIO")));
        // 20,000 × 100 − 400,000 + 800,000 + 0 (the adjustments cancel)
        std::printf("  total stock %s (expected 2400000)\n", qPrintable(total.toString()));
        return figures;
    });
    return 0;
}
