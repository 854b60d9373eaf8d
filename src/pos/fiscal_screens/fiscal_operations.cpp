#include "pos/fiscal_screens/fiscal_operations.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/igtf.h"
#include "pos/register/day_state.h"

namespace orvo::pos::fiscal_screens {

using fiscal::FiscalPrinter;

namespace {
[[noreturn]] void failWith(const FiscalPrinter& printer) {
    const QString text = printer.errorText();
    throw UserError(text.isEmpty() ? QStringLiteral("No existe comunicación con la impresora "
                                                    "fiscal...!")
                                   : text);
}
} // namespace

void requireSuccess(const FiscalPrinter& printer, bool ok) {
    if (!ok)
        failWith(printer);
}

void printXReport(FiscalPrinter& printer) {
    requireSuccess(printer, printer.printXReport());
}

void printZReport(FiscalPrinter& printer, int readyTimeoutMs) {
    requireSuccess(printer, printer.printZReport());
    requireSuccess(printer, printer.waitUntilReady(readyTimeoutMs));
}

void printRangeReport(FiscalPrinter& printer, const RangeReport& range) {
    if (range.byDates) {
        if (!range.fromDate.isValid() || !range.toDate.isValid() || range.fromDate > range.toDate)
            throw UserError(QStringLiteral("La fecha inicial debe ser menor o igual a la fecha "
                                           "final...!"));
        requireSuccess(
            printer, printer.printFiscalMemoryByDate(range.fromDate, range.toDate, range.detailed));
    } else {
        if (range.fromNumber <= 0 || range.fromNumber > range.toNumber)
            throw UserError(QStringLiteral("El número inicial debe ser menor o igual al número "
                                           "final...!"));
        requireSuccess(printer, printer.printFiscalMemoryByNumber(range.fromNumber, range.toNumber,
                                                                  range.detailed));
    }
}

QList<fiscal::ProgrammedLine> storeHeaderFooter(const QSqlDatabase& db, const QDate& today) {
    return fiscal::headerFooterLines(db, today);
}

void programHeaderFooter(FiscalPrinter& printer, const QList<fiscal::ProgrammedLine>& lines) {
    requireSuccess(printer, printer.programLines(lines));
}

QList<int> storeTaxRates(const QSqlDatabase& db) {
    QList<int> out;
    for (const Decimal& rate : fiscal::loadRateTable(db))
        out << int(rate.scaled(2));
    return out;
}

void updateTaxRates(FiscalPrinter& printer, const QList<int>& hundredths,
                    const QDate& effectiveDate) {
    requireSuccess(printer, printer.updateTaxRates(hundredths, effectiveDate));
}

PrinterCounters readCounters(FiscalPrinter& printer) {
    const auto s1 = printer.readS1();
    requireSuccess(printer, s1.has_value());
    const auto numbers = printer.lastDocumentNumbers();
    requireSuccess(printer, numbers.has_value());
    PrinterCounters c;
    c.serial = s1->serial;
    c.date = s1->date;
    c.lastInvoice = numbers->lastInvoice;
    c.lastCreditNote = numbers->lastCreditNote;
    c.lastNonFiscal = s1->lastNonFiscal;
    c.invoicesToday = s1->invoicesToday;
    c.creditNotesToday = s1->creditNotesToday;
    c.lastZ = s1->zCounter;
    const int status = printer.probe() ? printer.status() : 0;
    c.memoryState = fiscal::protocol::isMemoryFull(status)         ? 2
                    : fiscal::protocol::isMemoryNearlyFull(status) ? 1
                                                                   : 0;
    c.igtf = printer.igtfEnabled().value_or(false);
    return c;
}

QString countersText(const PrinterCounters& c) {
    return QStringList{
        QStringLiteral("Serie de la impresora: %1").arg(c.serial),
        QStringLiteral("Fecha de la impresora: %1")
            .arg(c.date.toString(QStringLiteral("dd/MM/yyyy"))),
        QStringLiteral("Última factura: %1").arg(c.lastInvoice),
        QStringLiteral("Última nota de crédito: %1").arg(c.lastCreditNote),
        QStringLiteral("Último documento no fiscal: %1").arg(c.lastNonFiscal),
        QStringLiteral("Facturas del día: %1").arg(c.invoicesToday),
        QStringLiteral("Notas de crédito del día: %1").arg(c.creditNotesToday),
        QStringLiteral("Último reporte Z: %1").arg(c.lastZ),
        QStringLiteral("IGTF: %1")
            .arg(c.igtf ? QStringLiteral("activado") : QStringLiteral("desactivado")),
        QStringLiteral("Memoria fiscal: %1")
            .arg(c.memoryState == 2   ? QStringLiteral("LLENA")
                 : c.memoryState == 1 ? QStringLiteral("casi llena")
                                      : QStringLiteral("con espacio"))}
        .join(QLatin1Char('\n'));
}

long long printerLastInvoice(FiscalPrinter& printer) {
    const auto numbers = printer.lastDocumentNumbers();
    requireSuccess(printer, numbers.has_value());
    return numbers->lastInvoice;
}

void testDisplay(FiscalPrinter& printer, const QString& upper, const QString& lower) {
    requireSuccess(printer, printer.showOnDisplay(upper, lower));
}

fiscal::PaymentMeansTable storePaymentMeans(const QSqlDatabase& db) {
    return fiscal::loadPaymentMeans(db);
}

void saveStorePaymentMeans(const QSqlDatabase& db, const QList<fiscal::WayMeans>& rows) {
    db::Transaction tx(db);
    fiscal::savePaymentMeans(db, rows);
    tx.commit();
}

void programPaymentMeans(FiscalPrinter& printer, const QList<std::pair<int, QString>>& names) {
    requireSuccess(printer, printer.nameMeans(names));
}

IgtfChoice registerIgtf(const QSqlDatabase& db, const QString& serial) {
    const fiscal::igtf::Settings s = fiscal::igtf::settings(db, serial);
    return {s.enabled, int(s.percent.scaled(2))};
}

void setPrinterIgtf(FiscalPrinter& printer, const IgtfChoice& choice) {
    if (printer.setIgtf(choice.enabled, choice.rateHundredths))
        return;
    if (printer.error() == 96)
        throw UserError(QStringLiteral("La impresora fiscal acepta el IGTF solo después de un "
                                       "reporte Z...!"));
    failWith(printer);
}

void recordRegisterIgtf(const QSqlDatabase& db, const QString& serial, bool enabled) {
    db::Transaction tx(db);
    fiscal::igtf::setRegisterIgtf(db, serial, enabled);
    tx.commit();
}

void recordZOnRegisterDay(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    db::Transaction tx(db);
    registers::resetAccumulated(db, serial, day);
    tx.commit();
}

} // namespace orvo::pos::fiscal_screens
