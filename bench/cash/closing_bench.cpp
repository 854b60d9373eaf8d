// The register's closing over a day of 2,000 invoices on the demo store: the checks, the day's
// figures, the Z reserved and recorded (the database's work), and the whole with the Z on the
// software printer (a real pseudo-terminal, whose busy spell and polling dominate); the backup
// that follows on its own thread is left out. The invoices are saved by the sale's own
// accept (paper register); a third of them is paid partly in dollars.
#include "bench_db.h"
#include "common/db/sql.h"
#include "pos/cash/cash_closing.h"
#include "pos/cash/cash_day.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"
#include "tools/fiscal_emulator/emulator_thread.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSettings>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::pos;

namespace {

constexpr int kInvoices = 2'000;
constexpr int kLines = 3;

bench::Figures closeTheDay(const QSqlDatabase& db) {
    QTemporaryDir home;
    qputenv("ORVO_HOME", home.path().toUtf8());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, home.path());
    shell::demo::seedDemoStore(db);
    const QString serie = QString::fromLatin1(shell::demo::kDemoSerial);

    tools::fiscal::EmulatorOptions options;
    options.zBusyMs = 50;
    tools::fiscal::EmulatorThread emulator(options);
    fiscal::FiscalPrinterThread printer(
        [] { return std::make_unique<fiscal::SerialFiscalPrinter>(); });
    const QString device = emulator.device();
    if (!printer.callAndWait([device](fiscal::FiscalPrinter& p) { return p.open(device); }))
        qFatal("the software printer did not answer on %s", qPrintable(device));

    const QDate today = db::serverNow(db).date();
    cash::OpeningRequest opening;
    opening.serial = serie;
    opening.day = today;
    opening.today = today;
    opening.now = QDateTime::currentDateTime();
    cash::openDayWith(db, printer, opening);

    // The day's sales, saved as the till saves them; printed on paper so that 2,000 fiscal
    // tickets do not count in the setting up.
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET UsaImpresoraFiscal = 0"));
    db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = 100000 WHERE Tipo = 0"));
    const shell::SessionContext ctx = bench::cashierSession(db, serie);
    const QStringList codes = bench::costedBarcodes(db, kLines * 10);
    for (int i = 0; i < kInvoices; ++i) {
        sale::SaleDraft draft = sale::newDraft(db, ctx);
        draft.setClient(*sale::findClient(db, QString::fromLatin1(shell::demo::kCashClient)));
        draft.setSeller(sale::findSeller(db, QStringLiteral("003")));
        for (int l = 0; l < kLines; ++l)
            sale::addArticle(draft,
                             sale::lookupArticles(db, codes.at((i + l) % codes.size())).at(0));
        QList<payments::PaymentRow> paid;
        payments::PaymentRow cash;
        cash.way = QStringLiteral("EFECTIVO");
        cash.amount = draft.totals().total + Decimal(5);
        paid << cash;
        draft.setPayments(paid, *cash.amount, Decimal(36));
        sale::acceptSale(db, ctx, draft, nullptr);
    }
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET UsaImpresoraFiscal = 1"));

    // The steps of closeDayWith(), the database's apart from the printer's.
    QElapsedTimer whole;
    whole.start();
    QElapsedTimer t;
    t.start();
    QStringList notices;
    const cash::ClosingFigures figures = cash::checkClosing(db, serie, today, &notices);
    qint64 databaseNs = t.nsecsElapsed();
    const cash::PrinterZState state =
        printer.callAndWait([](fiscal::FiscalPrinter& p) { return cash::readPrinterZState(p); });
    t.restart();
    cash::checkZAgainstPrinter(db, serie, figures.day.fecha, state);
    const cash::ZReservation reservation =
        cash::reserveClosingZ(db, serie, figures.day.fecha, state);
    databaseNs += t.nsecsElapsed();
    const bool printed = reservation.alreadyPrinted;
    const auto z = printer.callAndWait(
        [printed](fiscal::FiscalPrinter& p) { return cash::printClosingZ(p, printed); });
    t.restart();
    cash::recordClosing(db, serie, figures.day.fecha, z, state.serial,
                        QDateTime::currentDateTime());
    databaseNs += t.nsecsElapsed();
    const double wholeSeconds = whole.nsecsElapsed() / 1e9;
    if (figures.sales.documentos != kInvoices)
        qFatal("the closing counted %d invoices", figures.sales.documentos);
    return {{QStringLiteral("closing over 2,000 invoices: the database"),
             {databaseNs / 1e9, QStringLiteral("s"),
              QStringLiteral("%1 invoices of %2 lines; budget 2 s").arg(kInvoices).arg(kLines)}},
            {QStringLiteral("the same with its Z on the software printer"),
             {wholeSeconds, QStringLiteral("s"), QStringLiteral("Z %1").arg(z.zNumber)}}};
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("orvo.*.info=false"));
    bench::forEachEngine(QStringLiteral("orvo_bench_closing"), closeTheDay);
    return 0;
}
