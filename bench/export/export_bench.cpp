// The store package of a day holding 100,000 sale lines (20,000 invoices of five lines, their
// payments, the articles that moved) on the demo store: on the embedded engine and, when a
// PostgreSQL server is given (ORVO_TEST_PG=host:port), on PostgreSQL, with its ratio to SQLite.
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "exchange/export/export_job.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"
#include "shell/demo/demo_store.h"

#include "bench_db.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace orvo;

namespace {

constexpr int kInvoices = 20000;
constexpr int kLinesPerInvoice = 5;
const QDate kDay(2024, 6, 14);

void fill(const QSqlDatabase& db) {
    shell::demo::seedDemoStore(db);
    QStringList codes;
    {
        db::Sql q(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 ORDER BY "
                                     "CodigoBarra"));
        q.exec();
        while (q.next())
            codes << q.text(QStringLiteral("CodigoBarra"));
    }
    const QString serie = QString::fromLatin1(shell::demo::kDemoSerial);
    db::Transaction tx(db);
    db::Sql sale(db, QStringLiteral("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Hora, "
                                    "Vendedor, Cliente, TipoVenta, FormaPago, TotalMercancia, "
                                    "TotalDescuento, TotalImpuesto, TotalCosto, Usuario, Status) "
                                    "VALUES (?, ?, ?, ?, '003', 'V00000000', 1, 'EFECTIVO', "
                                    "250, 0, 40, 120, 'CAJERO1', 1)"));
    db::Sql line(db, QStringLiteral("INSERT INTO MOVVENTAS (NumeroFactura, Serie, Hora, TipoLista, "
                                    "CodigoBarra, Precio, PrecioLista, Costo, Impuesto, "
                                    "PorcentajeImpuesto, Cantidad, CantidadDevuelta, Item, "
                                    "PorcentajeDescuento) VALUES (?, ?, ?, 'D', ?, 50, 50, "
                                    "24.12345, 8, 16, 1, 0, ?, 0)"));
    db::Sql payment(db, QStringLiteral("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, "
                                       "FormaPago, Fecha, Monto, Status) VALUES (?, ?, 1, '1', "
                                       "?, 290, 1)"));
    for (int n = 1; n <= kInvoices; ++n) {
        const QDateTime at(kDay, QTime(8, 0).addSecs(n));
        sale.bind(n).bind(serie).bind(at).bind(at).exec();
        for (int i = 1; i <= kLinesPerInvoice; ++i)
            line.bind(n)
                .bind(serie)
                .bind(at)
                .bind(codes[(n * kLinesPerInvoice + i) % codes.size()])
                .bind(i)
                .exec();
        payment.bind(n).bind(serie).bind(at).exec();
    }
    tx.commit();
}

bench::Figure measure(const QSqlDatabase& db) {
    QTemporaryDir home;
    qputenv("ORVO_HOME", home.path().toUtf8());
    exchange::package::installTemplates();
    fill(db);
    QElapsedTimer t;
    t.start();
    const QString zip =
        exchange::exporting::exportNow(db, {exchange::exporting::ExportFormat::Orvo, kDay, kDay});
    const double seconds = t.nsecsElapsed() / 1e9;
    return {seconds, QStringLiteral("s"),
            QStringLiteral("%1 of %2 files, %3 MB")
                .arg(QFileInfo(zip).fileName())
                .arg(exchange::package::zipEntries(zip).size())
                .arg(QFileInfo(zip).size() / 1e6, 0, 'f', 1)};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    bench::forEachEngine(
        QStringLiteral("orvo_bench_export"),
        QStringLiteral("store package of %1 sale lines (%2 invoices with their payments)")
            .arg(kInvoices * kLinesPerInvoice)
            .arg(kInvoices),
        QStringLiteral("10 s"), measure);
    return 0;
}
