#include "pos/fiscal/register_printer.h"

#include "common/errors/errors.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "shell/startup/user_settings.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <memory>

namespace orvo::pos::fiscal {

Q_LOGGING_CATEGORY(lcFiscal, "orvo.pos.fiscal")

namespace {
std::unique_ptr<FiscalPrinterThread> g_printer;

QString money(qint64 cents) {
    return QStringLiteral("%1%2.%3")
        .arg(cents < 0 ? QStringLiteral("-") : QString())
        .arg(qAbs(cents) / 100)
        .arg(qAbs(cents) % 100, 2, 10, QLatin1Char('0'));
}

void appendTotals(QStringList& out, const QString& title, const protocol::DocumentTotals& t) {
    out << title << QStringLiteral("  Exento: %1").arg(money(t.exempt));
    for (int i = 0; i < 3; ++i) {
        out << QStringLiteral("  Base tasa %1: %2  Impuesto: %3")
                   .arg(i + 1)
                   .arg(money(t.base[i]), money(t.tax[i]));
    }
    out << QStringLiteral("  Total: %1").arg(money(t.total()));
}
} // namespace

std::unique_ptr<FiscalPrinterThread> makeRegisterPrinter(const LinkTiming& timing) {
    return std::make_unique<FiscalPrinterThread>(
        [timing] { return std::make_unique<SerialFiscalPrinter>(timing); }, openWhenClosed);
}

LinkTiming workstationTiming() {
    LinkTiming t;
    bool ok = false;
    const int seconds = shell::settings::read(QStringLiteral("EsperaReporteZ")).toInt(&ok);
    if (ok && seconds > 0)
        t.zTimeoutMs = seconds * 1000;
    return t;
}

FiscalPrinterThread& registerPrinter() {
    if (!g_printer) {
        g_printer = makeRegisterPrinter(workstationTiming());
        if (auto* app = QCoreApplication::instance())
            QObject::connect(app, &QCoreApplication::aboutToQuit, [] { g_printer.reset(); });
    }
    return *g_printer;
}

void openWhenClosed(FiscalPrinter& printer) {
    if (printer.isOpen()) {
        if (!printer.lineLost())
            return;
        qCWarning(lcFiscal) << "impresora fiscal desconectada de" << printer.portName();
        printer.close();
    }
    try {
        const PortChoice choice = openConfiguredPrinter(printer);
        if (choice.message.isEmpty())
            qCInfo(lcFiscal) << "impresora fiscal en" << choice.port;
        else
            qCWarning(lcFiscal) << choice.message;
    } catch (const UserError& e) {
        // Left closed: the call reports it, and the next one looks again (the printer may have
        // been switched on meanwhile).
        qCWarning(lcFiscal) << e.text();
    }
}

QString zReportText(const protocol::ZReport& z) {
    QStringList out;
    out << QStringLiteral("REPORTE Z %1").arg(z.zNumber, 4, 10, QLatin1Char('0'))
        << QStringLiteral("Fecha: %1 %2")
               .arg(z.zDate.toString(QStringLiteral("dd/MM/yyyy")),
                    z.zTime.toString(QStringLiteral("HH:mm")))
        << QStringLiteral("Ultima factura: %1").arg(z.lastInvoice)
        << QStringLiteral("Ultima nota de credito: %1").arg(z.lastCreditNote)
        << QStringLiteral("Ultimo documento no fiscal: %1").arg(z.lastNonFiscal);
    appendTotals(out, QStringLiteral("Facturas"), z.invoices);
    appendTotals(out, QStringLiteral("Notas de credito"), z.creditNotes);
    if (z.withIgtf) {
        out << QStringLiteral("IGTF facturas: base %1  IGTF: %2")
                   .arg(money(z.invoiceIgtf.base), money(z.invoiceIgtf.igtf))
            << QStringLiteral("IGTF notas de credito: base %1  IGTF: %2")
                   .arg(money(z.creditNoteIgtf.base), money(z.creditNoteIgtf.igtf));
    }
    return out.join(QLatin1Char('\n'));
}

} // namespace orvo::pos::fiscal
