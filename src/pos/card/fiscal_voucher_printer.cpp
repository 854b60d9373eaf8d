#include "pos/card/fiscal_voucher_printer.h"

#include "common/errors/errors.h"
#include "pos/card/terminal_settings.h"
#include "pos/fiscal/fiscal_printer_thread.h"

#include <QEventLoop>
#include <QFutureWatcher>

namespace orvo::pos::card {

FiscalVoucherPrinter::FiscalVoucherPrinter(fiscal::FiscalPrinterThread& printer)
    : m_printer(printer) {}

void FiscalVoucherPrinter::printLines(const QStringList& lines) {
    QFuture<void> future = m_printer.call([lines](fiscal::FiscalPrinter& p) {
        if (!p.printNonFiscal(lines))
            throw UserError(
                QStringLiteral("No se pudo imprimir el voucher: %1").arg(p.errorText()));
    });
    if (!future.isFinished()) {
        QFutureWatcher<void> watcher;
        QEventLoop loop;
        QObject::connect(&watcher, &QFutureWatcher<void>::finished, &loop, &QEventLoop::quit);
        watcher.setFuture(future);
        if (!future.isFinished())
            loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    future.waitForFinished(); // rethrows what the printer thread threw
}

std::unique_ptr<VoucherPrinter> makeVoucherPrinter(const QSqlDatabase& db,
                                                   fiscal::FiscalPrinterThread& printer) {
    const QString folder = voucherFolder(db);
    if (!folder.isEmpty())
        return std::make_unique<FileVoucherPrinter>(folder);
    return std::make_unique<FiscalVoucherPrinter>(printer);
}

} // namespace orvo::pos::card
