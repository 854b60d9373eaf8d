// The article browser and the barcode and reference look-ups over 100,000 variants (10,000 models
// of five sizes in two colours) in a temporary SQLite file. Prints the time of each.
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/grid/grid_model.h"
#include "common/schema/migrate.h"
#include "inventory/articles/articles.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <cstdio>

using namespace orvo;

namespace {

constexpr int kModels = 10'000;
constexpr int kSizes = 5;
constexpr int kColours = 2;
constexpr int kLookups = 2'000;

QString referenceOf(int m) {
    return QStringLiteral("REF%1").arg(m, 6, 10, QLatin1Char('0'));
}
QString barcodeOf(int m, int s, int c) {
    return QStringLiteral("759%1%2%3").arg(m, 7, 10, QLatin1Char('0')).arg(s).arg(c);
}

void seed(const QSqlDatabase& db) {
    QElapsedTimer t;
    t.start();
    db::Transaction tx(db);
    for (int b = 0; b < 20; ++b)
        db::execute(db,
                    QStringLiteral("INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES (?, ?, 1)"),
                    {QStringLiteral("M%1").arg(b), QStringLiteral("MARCA %1").arg(b)});
    db::execute(db, QStringLiteral("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) "
                                   "VALUES (1, 'GENERAL', 16)"));
    db::Sql q(db, QStringLiteral("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, "
                                 "CodigoMarca, Talla, CodigoColor, TipoImpuesto, PrecioDetal, "
                                 "Existencia, CostoPromedio, Status) VALUES (?, ?, ?, ?, ?, ?, 1, "
                                 "?, ?, ?, 1)"));
    for (int m = 0; m < kModels; ++m)
        for (int s = 0; s < kSizes; ++s)
            for (int c = 0; c < kColours; ++c)
                q.bind(barcodeOf(m, s, c))
                    .bind(QStringLiteral("CAMISA %1 T:%2 COLOR %3").arg(m).arg(36 + 2 * s).arg(c))
                    .bind(referenceOf(m))
                    .bind(QStringLiteral("M%1").arg(m % 20))
                    .bind(QString::number(36 + 2 * s))
                    .bind(QString::number(c))
                    .bind(Decimal(100 + m % 900), 2)
                    .bind(Decimal(m % 40), 3)
                    .bind(Decimal(50 + m % 400), 5)
                    .exec();
    tx.commit();
    std::printf("  seeded %d variants in %.1f s\n", kModels * kSizes * kColours,
                t.elapsed() / 1000.0);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    db::ConnectionSettings settings;
    settings.sqliteFile = dir.path() + QStringLiteral("/articles.sqlite");
    QSqlDatabase db = db::openConnection(settings, QStringLiteral("bench_articles"));
    schema::migrate(db);
    std::printf("SQLite:\n");
    seed(db);

    QElapsedTimer t;
    t.start();
    inventory::ModelList list = inventory::listModels(db, QStringLiteral("SUPERVISOR"));
    const qint64 queried = t.nsecsElapsed();
    // The rows as the browser grid holds them.
    grid::GridModel model;
    model.setColumns({{QStringLiteral("Referencia")},
                      {QStringLiteral("Marca")},
                      {QStringLiteral("Nombre")},
                      {QStringLiteral("Existencia"), grid::GridColumn::Type::Number, 2}});
    QList<QVariantList> rows;
    rows.reserve(list.rows.size());
    for (const inventory::ModelRow& r : list.rows)
        rows.append({r.reference, r.brandName, r.name, QVariant::fromValue(r.stock)});
    model.setRows(rows);
    std::printf("  browser: %d models loaded in %.1f ms (query %.1f ms)\n", model.rowCount(),
                t.nsecsElapsed() / 1e6, queried / 1e6);

    QRandomGenerator rng(7);
    int found = 0;
    t.restart();
    for (int i = 0; i < kLookups; ++i)
        found += int(
            inventory::findArticlesByReference(db, referenceOf(int(rng.bounded(kModels)))).size());
    std::printf("  by reference: mean %.1f us (%d variants over %d look-ups)\n",
                t.nsecsElapsed() / 1000.0 / kLookups, found, kLookups);

    found = 0;
    t.restart();
    for (int i = 0; i < kLookups; ++i)
        found += inventory::findArticleByBarcode(db, barcodeOf(int(rng.bounded(kModels)),
                                                               int(rng.bounded(kSizes)),
                                                               int(rng.bounded(kColours))))
                     ? 1
                     : 0;
    std::printf("  by barcode: mean %.1f us (%d/%d found)\n", t.nsecsElapsed() / 1000.0 / kLookups,
                found, kLookups);

    t.restart();
    for (int i = 0; i < kLookups / 10; ++i) {
        const int m = int(rng.bounded(kModels));
        inventory::loadModel(db, referenceOf(m), QStringLiteral("M%1").arg(m % 20));
    }
    std::printf("  model form load: mean %.1f us\n", t.nsecsElapsed() / 1000.0 / (kLookups / 10));
    return 0;
}
