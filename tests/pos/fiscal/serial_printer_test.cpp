// The driver against the software printer through a real pseudo-terminal, with faults injected.
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/register_printer.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "printer_on_emulator.h"

#include "common/errors/errors.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::fiscal;
using orvo::test::RunningEmulator;

namespace {

FiscalLine item(const char* price, const char* qty, const char* name, int rate = 1) {
    FiscalLine l;
    l.price = Decimal::fromString(QString::fromLatin1(price));
    l.taxPercent = rate == 1 ? Decimal(16) : Decimal(0);
    l.quantity = Decimal::fromString(QString::fromLatin1(qty));
    l.name = QString::fromLatin1(name);
    l.rate = rate;
    return l;
}

FiscalDocument invoice(QList<FiscalLine> lines) {
    FiscalDocument d;
    d.clientId = QStringLiteral("V12345678");
    d.clientName = QStringLiteral("MARIA PEREZ");
    d.lines = std::move(lines);
    return d;
}

class SerialPrinterTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(emulator.device().isEmpty());
        test::bindFiscalPort(emulator);
        ASSERT_EQ(openConfiguredPrinter(printer).port, emulator.device());
    }
    RunningEmulator emulator;
    SerialFiscalPrinter printer{test::fastTiming()};
};

} // namespace

TEST_F(SerialPrinterTest, StatusCountersAndAnInvoice) {
    EXPECT_TRUE(printer.check());
    EXPECT_EQ(printer.status(), 4);
    EXPECT_EQ(printer.error(), 0);
    EXPECT_FALSE(printer.lastCallFailed());
    const auto s1 = printer.readS1();
    ASSERT_TRUE(s1);
    EXPECT_EQ(s1->serial, QStringLiteral("Z1B0000001"));
    EXPECT_EQ(s1->date, QDate::currentDate());

    ASSERT_TRUE(
        printer.printDocument(invoice({item("10", "2", "CAMISA AZUL"), item("5", "1", "PAN", 0)})));
    EXPECT_EQ(printer.status(), 4);
    const auto numbers = printer.lastDocumentNumbers();
    ASSERT_TRUE(numbers);
    EXPECT_EQ(numbers->lastInvoice, 1);
    EXPECT_EQ(numbers->lastCreditNote, 0);
    const QString t = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(t.contains("MARIA PEREZ"));
    EXPECT_TRUE(t.contains("TOTAL 28,20")) << t.toStdString();

    // Several ways of payment, the last one closing what is left.
    FiscalDocument d = invoice({item("10", "1", "MEDIAS")});
    d.payments = {{1, Decimal(5)}, {9, Decimal::fromString(u"6.60")}};
    ASSERT_TRUE(printer.printDocument(d));
    EXPECT_EQ(printer.lastDocumentNumbers()->lastInvoice, 2);
    EXPECT_TRUE(emulator.ticket("FACTURA_00000002.txt").contains("MEDIO 09 6,60"));
}

TEST_F(SerialPrinterTest, ALostAckAndANakAreRecoveredWithoutPrintingTwice) {
    // The first item's ACK is lost: the open document shows it was taken, so it is not resent.
    emulator.fault("drop-ack");
    FiscalDocument d = invoice({item("10", "3", "CAMISA"), item("5", "1", "PAN", 0)});
    d.clientId.clear();
    d.clientName.clear();
    ASSERT_TRUE(printer.printDocument(d)) << printer.errorText().toStdString();
    QString t = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_EQ(t.count("CAMISA"), 1) << t.toStdString();
    EXPECT_TRUE(t.contains("TOTAL 39,80"));

    // A garbled frame (NAK) is sent again; customer data whose ACK is lost is simply repeated.
    emulator.fault("nak-next");
    emulator.fault("drop-ack");
    ASSERT_TRUE(printer.printDocument(invoice({item("10", "1", "MEDIAS")})))
        << printer.errorText().toStdString();
    t = emulator.ticket("FACTURA_00000002.txt");
    EXPECT_TRUE(t.contains("MARIA PEREZ"));
    EXPECT_TRUE(t.contains("TOTAL 11,60"));
    EXPECT_EQ(emulator.memory().lastInvoice, 2);

    // A lost ACK on a discount cannot be told apart from a lost command: the invoice is given up.
    ASSERT_TRUE(printer.sendCommands({"!000000116000001000MEDIAS"}));
    emulator.fault("drop-ack");
    EXPECT_FALSE(printer.sendCommands({"p-1000"}));
    EXPECT_EQ(printer.error(), 137);
    EXPECT_TRUE(printer.sendCommand("7"));
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
}

TEST_F(SerialPrinterTest, ASilentPrinterFailsClearlyAndQuickly) {
    emulator.fault("silence");
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(printer.check());
    EXPECT_EQ(printer.status(), 0);
    EXPECT_EQ(printer.error(), 137);
    EXPECT_TRUE(printer.lastCallFailed());
    EXPECT_EQ(printer.errorText(), QStringLiteral("La impresora fiscal no responde."));
    EXPECT_FALSE(printer.printDocument(invoice({item("10", "1", "CAMISA")})));
    EXPECT_EQ(printer.error(), 137);
    EXPECT_FALSE(printer.lastDocumentNumbers());
    EXPECT_LT(clock.elapsed(), 5000);
    emulator.fault("speak");
    EXPECT_TRUE(printer.check());
    EXPECT_FALSE(emulator.hasTicket("FACTURA_00000001.txt"));
}

TEST_F(SerialPrinterTest, PaperOutInTheMiddleOfAnInvoiceLeavesItUnprinted) {
    ASSERT_TRUE(printer.sendCommands({"iS*CLIENTE"}));
    emulator.fault("paper-out");
    EXPECT_FALSE(printer.printDocument(invoice({item("10", "1", "CAMISA")})));
    EXPECT_TRUE(printer.lastCallFailed());
    EXPECT_EQ(printer.error(), 1);
    EXPECT_EQ(printer.errorText(), QStringLiteral("La impresora fiscal no tiene papel."));
    EXPECT_FALSE(emulator.hasTicket("FACTURA_00000001.txt"));
    EXPECT_EQ(emulator.memory().lastInvoice, 0);
    // Paper back: the next invoice takes number 1 and no document was left open.
    emulator.fault("paper-ok");
    ASSERT_TRUE(printer.printDocument(invoice({item("10", "1", "CAMISA")})));
    EXPECT_EQ(printer.lastDocumentNumbers()->lastInvoice, 1);
}

TEST_F(SerialPrinterTest, CountersAfterInvoicesReturnsXAndZ) {
    ASSERT_TRUE(printer.printDocument(invoice({item("10", "1", "CAMISA")})));
    ASSERT_TRUE(printer.printDocument(invoice({item("20", "1", "PANTALON")})));
    FiscalDocument r = invoice({item("10", "1", "CAMISA")});
    r.type = DocumentType::CreditNote;
    r.affectedInvoice = 1;
    r.affectedInvoiceDate = QDate::currentDate();
    r.affectedPrinterSerial = QStringLiteral("Z1B0000001");
    ASSERT_TRUE(printer.printDocument(r)) << printer.errorText().toStdString();
    auto n = printer.lastDocumentNumbers();
    ASSERT_TRUE(n);
    EXPECT_EQ(n->lastInvoice, 2);
    EXPECT_EQ(n->lastCreditNote, 1);
    EXPECT_TRUE(emulator.hasTicket("NOTACREDITO_00000001.txt"));

    ASSERT_TRUE(printer.printXReport());
    EXPECT_TRUE(emulator.hasTicket("REPORTEX_00000001.txt"));
    EXPECT_EQ(printer.lastZNumber(), 0);

    ASSERT_TRUE(printer.printZReport());
    // Busy after the Z: polled until ready.
    EXPECT_TRUE(printer.waitUntilReady(3000, 50));
    EXPECT_EQ(printer.status(), 4);
    EXPECT_EQ(printer.lastZNumber(), 1);
    const auto z = printer.lastZ();
    ASSERT_TRUE(z);
    EXPECT_EQ(z->lastInvoice, 2);
    EXPECT_EQ(z->invoices.total(), 1160 + 2320);
    EXPECT_EQ(z->creditNotes.total(), 1160);
    const auto s1 = printer.readS1();
    EXPECT_EQ(s1->zCounter, 1);
    EXPECT_EQ(s1->invoicesToday, 0);
    const auto range = printer.zReportsByNumber(1, 5);
    ASSERT_TRUE(range);
    ASSERT_EQ(range->size(), 1);
    EXPECT_EQ(range->first().zNumber, 1);
    EXPECT_EQ(printer.zReportsByDate(QDate::currentDate(), QDate::currentDate())->size(), 1);
    EXPECT_TRUE(printer.printFiscalMemoryByNumber(1, 1, true));
}

TEST_F(SerialPrinterTest, NonFiscalDisplayLinesAndRates) {
    ASSERT_TRUE(
        printer.printNonFiscal({QStringLiteral("COPIA CLIENTE"), QStringLiteral("VISA ****1234"),
                                QStringLiteral("APROBADO")}));
    const QString t = emulator.ticket("NOFISCAL_00000001.txt");
    EXPECT_TRUE(t.contains("COPIA CLIENTE"));
    EXPECT_TRUE(t.contains("APROBADO"));

    ASSERT_TRUE(printer.showOnDisplay(QStringLiteral("Total: Bs 11,60"), QStringLiteral("")));
    EXPECT_EQ(emulator.ticket("VISOR.txt"),
              QStringLiteral("Total: Bs 11,60     \n                    \n"));

    // Lines and rates only right after a Z, and rates not before their date.
    ASSERT_TRUE(printer.programLines(
        {{1, QStringLiteral("TIENDA ORVO")}, {91, QStringLiteral("GRACIAS")}}));
    EXPECT_FALSE(printer.updateTaxRates({1500, 800, 3100}, QDate::currentDate().addDays(1)));
    ASSERT_TRUE(printer.updateTaxRates({1500, 800, 3100}, QDate::currentDate()));
    EXPECT_EQ(printer.readS3()->rates[0].hundredths, 1500);
    ASSERT_TRUE(printer.printDocument(invoice({item("10", "1", "CAMISA", 0)})));
    EXPECT_FALSE(printer.programLines({{2, QStringLiteral("OTRA")}}));
    EXPECT_EQ(printer.error(), 96);
    EXPECT_EQ(emulator.memory().lines.value(91), QStringLiteral("GRACIAS"));
}

TEST(FiscalPortFinder, PortsByPathBusyPortsAndSilentPorts) {
    RunningEmulator a;
    RunningEmulator b;
    SerialFiscalPrinter first(test::fastTiming());
    const PortChoice mine = openPrinterPort(first, a.device(), {});
    EXPECT_EQ(mine.port, a.device());
    EXPECT_TRUE(mine.message.isEmpty());

    // The configured port is taken: the next one that answers is assigned.
    SerialFiscalPrinter second(test::fastTiming());
    EXPECT_THROW(openPrinterPort(second, a.device(), {}), UserError);
    EXPECT_TRUE(second.portBusy());
    const PortChoice other = openPrinterPort(second, a.device(), {a.device(), b.device()});
    EXPECT_EQ(other.port, b.device());
    EXPECT_EQ(other.message, QStringLiteral("Se le ha asignado el puerto ") + b.device());

    // Nothing answers.
    RunningEmulator c;
    c.fault("silence");
    SerialFiscalPrinter third(test::fastTiming());
    try {
        openPrinterPort(third, c.device(), {QStringLiteral("/dev/no-existe")});
        ADD_FAILURE() << "no port answers";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("El puerto NO responde. Verifique que algún otro "
                                           "programa no lo este utilizando."));
    }
}

TEST(FiscalPrinterThreadTest, CallsRunOnThePrinterThreadInOrder) {
    RunningEmulator emulator(400);
    const auto printer = test::printerThreadOn(emulator);
    FiscalPrinterThread& thread = *printer;
    QThread* caller = QThread::currentThread();
    const bool opened = thread.callAndWait([&](FiscalPrinter& p) {
        EXPECT_NE(QThread::currentThread(), caller);
        return p.isOpen();
    });
    ASSERT_TRUE(opened);
    // A forced Z and the wait for ready do not hold the caller.
    QFuture<bool> z = thread.call(
        [](FiscalPrinter& p) { return p.printZReport() && p.waitUntilReady(3000, 50); });
    QFuture<std::optional<int>> last =
        thread.call([](FiscalPrinter& p) { return p.lastZNumber(); });
    EXPECT_FALSE(z.isFinished());
    EXPECT_TRUE(z.result());
    EXPECT_EQ(last.result(), 1);
    // A refusal thrown on the printer thread reaches the caller.
    QFuture<void> bad = thread.call([](FiscalPrinter&) { throw UserError(QStringLiteral("X")); });
    EXPECT_THROW(bad.waitForFinished(), UserError);
}

TEST(FiscalRegisterPrinter, OpensOnTheConfiguredPortAndGivesTheZText) {
    RunningEmulator emulator;
    test::bindFiscalPort(emulator);
    const auto z = registerPrinter().callAndWait(
        [](FiscalPrinter& p) { return p.printXReport() ? p.openDay() : std::nullopt; });
    registerPrinter().callAndWait([](FiscalPrinter& p) { p.close(); });
    ASSERT_TRUE(z);
    EXPECT_TRUE(emulator.hasTicket("REPORTEX_00000001.txt"));

    protocol::ZReport r;
    r.zNumber = 12;
    r.zDate = QDate(2026, 11, 21);
    r.zTime = QTime(21, 5);
    r.lastInvoice = 340;
    r.invoices.base[0] = 10000;
    r.invoices.tax[0] = 1600;
    r.creditNotes.exempt = 250;
    const QString text = zReportText(r);
    EXPECT_TRUE(text.startsWith("REPORTE Z 0012\nFecha: 21/11/2026 21:05\nUltima factura: 340"));
    EXPECT_TRUE(text.contains("Base tasa 1: 100.00  Impuesto: 16.00"));
    EXPECT_TRUE(text.contains("Notas de credito\n  Exento: 2.50"));
}
