// Save of a 20-line cash invoice in one transaction (number, VENTAS, MOVVENTAS, stock, PAGOSVENTA,
// totals, the day's accumulated amount) on the demo store: on the embedded engine and, when a
// PostgreSQL server is given (ORVO_TEST_PG=host:port, user ORVO_TEST_PG_USER), on PostgreSQL.
// Prints the mean save in milliseconds, and the slowest.
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/schema/migrate.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"

#include "bench_db.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <cstdio>

using namespace orvo;
using namespace orvo::pos::sale;

namespace {

constexpr int kLines = 20;
constexpr int kInvoices = 200;

bench::Figure measure(const QSqlDatabase& db) {
    shell::demo::seedDemoStore(db);
    const QString serie = QString::fromLatin1(shell::demo::kDemoSerial);
    // A register that prints on paper: the printer is not part of the save.
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET UsaImpresoraFiscal = 0"));
    db::execute(db,
                QStringLiteral("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, "
                               "FacturaFinal, Status, Acumulado) VALUES (?, ?, 1, 0, 0, 0, 0)"),
                {serie, db::dayStart(db::serverNow(db).date())});
    const shell::SessionContext ctx = bench::cashierSession(db, serie);

    const QStringList codes = bench::costedBarcodes(db, kLines);
    SaleDraft draft = newDraft(db, ctx);
    draft.setClient(*findClient(db, QString::fromLatin1(shell::demo::kCashClient)));
    draft.setSeller(findSeller(db, QStringLiteral("003")));
    for (const QString& code : codes)
        addArticle(draft, lookupArticles(db, code).at(0));
    pos::payments::PaymentRow cash;
    cash.way = QStringLiteral("EFECTIVO");
    cash.amount = draft.totals().total + Decimal(10);
    draft.setPayments({cash}, *cash.amount, Decimal(36));

    qint64 worst = 0;
    QElapsedTimer total;
    total.start();
    for (int i = 0; i < kInvoices; ++i) {
        QElapsedTimer one;
        one.start();
        acceptSale(db, ctx, draft, nullptr);
        worst = std::max(worst, one.nsecsElapsed());
    }
    const double meanMs = total.nsecsElapsed() / 1e6 / kInvoices;
    return {meanMs, QStringLiteral("ms"),
            QStringLiteral("slowest %1 ms of %2").arg(worst / 1e6, 0, 'f', 2).arg(kInvoices)};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("orvo.pos.sale.info=false"));
    bench::forEachEngine(QStringLiteral("orvo_bench_sale"),
                         QStringLiteral("save of a %1-line cash invoice").arg(kLines),
                         QStringLiteral("SQLite 2 ms, PostgreSQL 3 ms"), measure);
    return 0;
}
