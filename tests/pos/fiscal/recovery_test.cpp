// After an unclear failure the driver asks the printer what happened: through a real
// pseudo-terminal, with the software printer slow, silent or busy at the worst moment. No
// document is lost, none is printed twice.
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "printer_on_emulator.h"

#include <QElapsedTimer>
#include <QThread>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::fiscal;
using orvo::test::RunningEmulator;

namespace {

// 100.00 + 16 % = 116.00 a unit.
FiscalDocument invoice(int number, int units = 1) {
    FiscalDocument d;
    d.number = number;
    d.clientId = QStringLiteral("V12345678");
    d.lines = {{Decimal(100), Decimal(16), Decimal(units), Decimal(), QStringLiteral("CAMISA"), 1}};
    return d;
}

class RecoveryTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::bindFiscalPort(emulator);
        ASSERT_EQ(openConfiguredPrinter(printer).port, emulator.device());
    }
    int lastInvoice() { return emulator.memory().lastInvoice; }
    int tickets(const QString& text) {
        int n = 0;
        for (int i = 1; i <= lastInvoice(); ++i)
            n += emulator.ticket(QStringLiteral("FACTURA_%1.txt").arg(i, 8, 10, QLatin1Char('0')))
                     .count(text);
        return n;
    }
    // IGTF as a register enables it, on a printer fresh from its Z.
    void enableIgtf() {
        ASSERT_TRUE(printer.setIgtf(true, 300)) << printer.errorText().toStdString();
        ASSERT_TRUE(printer.nameMeans(
            {{1, QStringLiteral("EFECTIVO")}, {20, QStringLiteral("EFECTIVO DOLAR")}}));
        ASSERT_EQ(printer.igtfEnabled(), true);
    }

    RunningEmulator emulator;
    SerialFiscalPrinter printer{test::fastTiming()};
};

} // namespace

TEST_F(RecoveryTest, SlowAndLostAcksOnItemsAndPayments) {
    // An item's ACK comes after the driver stopped waiting: the printer is busy meanwhile and
    // says so to ENQ; once idle, S2 shows the item was taken. Printed once.
    emulator.fault("slow-ack ! 1200");
    FiscalDocument d = invoice(1, 2);
    d.payments = {{1, Decimal(100)}, {9, Decimal::fromString(u"132.00")}};
    ASSERT_TRUE(printer.printDocument(d)) << printer.errorText().toStdString();
    emulator.fault("fast-ack");
    QString t = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_EQ(t.count("CAMISA"), 1) << t.toStdString();
    EXPECT_TRUE(t.contains("TOTAL 232,00"));

    // The same on a payment.
    emulator.fault("slow-ack 201 1200");
    d = invoice(2);
    d.payments = {{1, Decimal(16)}, {9, Decimal(100)}};
    ASSERT_TRUE(printer.printDocument(d)) << printer.errorText().toStdString();
    emulator.fault("fast-ack");
    t = emulator.ticket("FACTURA_00000002.txt");
    EXPECT_EQ(t.count("EFECTIVO"), 0);
    EXPECT_EQ(t.count("MEDIO 01 16,00"), 1) << t.toStdString();
    EXPECT_EQ(t.count("MEDIO 09 100,00"), 1);
    EXPECT_EQ(lastInvoice(), 2);
}

TEST_F(RecoveryTest, SilenceAfterTheLastPaymentNeverPrintsTwice) {
    // The last payment closes the invoice and the cable is pulled before its ACK.
    emulator.fault("silence-after 101");
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(printer.printDocument(invoice(1)));
    EXPECT_EQ(printer.error(), 137);
    EXPECT_LT(clock.elapsed(), 6000);
    EXPECT_EQ(lastInvoice(), 1);
    // Back on: the printer's own counter shows it printed; nothing goes out again.
    emulator.fault("speak");
    ASSERT_TRUE(printer.printDocument(invoice(1))) << printer.errorText().toStdString();
    EXPECT_TRUE(printer.alreadyPrinted());
    EXPECT_EQ(lastInvoice(), 1);
    // The next one is numbered 2; one that skips a number is refused before anything is sent.
    EXPECT_FALSE(printer.printDocument(invoice(3)));
    EXPECT_EQ(printer.errorText(), QStringLiteral("El numero de factura no concuerda con el "
                                                  "numero de factura de la impresora...!"));
    ASSERT_TRUE(printer.printDocument(invoice(2)));
    EXPECT_FALSE(printer.alreadyPrinted());
    EXPECT_EQ(lastInvoice(), 2);

    // Silent among the items: nothing was paid, so the document is cancelled when the printer
    // answers again, and printed whole the next time.
    emulator.fault("silence-after !");
    EXPECT_FALSE(printer.printDocument(invoice(3, 2)));
    emulator.fault("speak");
    ASSERT_TRUE(printer.printDocument(invoice(3, 2))) << printer.errorText().toStdString();
    EXPECT_FALSE(printer.alreadyPrinted());
    EXPECT_EQ(lastInvoice(), 3);
    EXPECT_TRUE(emulator.ticket("FACTURA_00000003.txt").contains("TOTAL 232,00"));
}

TEST_F(RecoveryTest, WithIgtfAnOpenPaidDocumentIsCompletedWith199) {
    enableIgtf();
    // 116.00: 4 dollars at 36.50 (146.00) under means 20; IGTF 3.48 on 116.00.
    FiscalDocument d = invoice(1);
    d.payments = {{20, Decimal::fromString(u"146.00")}};
    ASSERT_TRUE(printer.printDocument(d)) << printer.errorText().toStdString();
    QString t = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(t.contains("IGTF (3,00%) 3,48")) << t.toStdString();
    EXPECT_TRUE(t.contains("EFECTIVO DOLAR 146,00"));
    EXPECT_TRUE(t.contains("CAMBIO 26,52"));

    // Dollars and bolívars; silent right after the last payment, so the document stays open
    // waiting for 199.
    emulator.fault("silence-after 201");
    d = invoice(2);
    d.payments = {{20, Decimal::fromString(u"73.00")}, {1, Decimal::fromString(u"45.19")}};
    EXPECT_FALSE(printer.printDocument(d));
    EXPECT_EQ(lastInvoice(), 1);
    // The program starts again with a new printer object: the paid document cannot be
    // cancelled, so it is completed: nothing is left to pay, it only waits for 199.
    emulator.fault("speak");
    printer.close();
    SerialFiscalPrinter again(test::fastTiming());
    ASSERT_EQ(openConfiguredPrinter(again).port, emulator.device());
    ASSERT_TRUE(again.printDocument(d)) << again.errorText().toStdString();
    EXPECT_FALSE(again.alreadyPrinted());
    EXPECT_EQ(lastInvoice(), 2);
    t = emulator.ticket("FACTURA_00000002.txt");
    // 73.00 of foreign currency: 2.19 of tax; 116 + 2.19 - 73 - 45.19 = 0.
    EXPECT_TRUE(t.contains("IGTF (3,00%) 2,19")) << t.toStdString();
    EXPECT_EQ(t.count("EFECTIVO DOLAR 73,00"), 1);
    EXPECT_EQ(t.count("EFECTIVO 45,19"), 1);

    // The closing's own ACK lost: printed, and the next attempt finds it so.
    emulator.fault("silence-after 199");
    d = invoice(3);
    d.payments = {{20, Decimal::fromString(u"200.00")}};
    EXPECT_FALSE(again.printDocument(d));
    emulator.fault("speak");
    ASSERT_TRUE(again.printDocument(d));
    EXPECT_TRUE(again.alreadyPrinted());
    EXPECT_EQ(lastInvoice(), 3);

    const auto day = again.openDay();
    ASSERT_TRUE(day);
    EXPECT_TRUE(day->withIgtf);
    EXPECT_EQ(day->invoiceIgtf.base, 11600 + 7300 + 11600);
    EXPECT_EQ(day->invoiceIgtf.igtf, 348 + 219 + 348);
}

TEST_F(RecoveryTest, BusyAfterAZAndALostZAck) {
    // Busy after the Z, still answering ENQ: the invoice waits for it instead of failing.
    emulator.fault("z-busy-enq");
    emulator.fault("z-busy-ms 800");
    ASSERT_TRUE(printer.printZReport());
    ASSERT_TRUE(printer.printDocument(invoice(1))) << printer.errorText().toStdString();
    EXPECT_EQ(lastInvoice(), 1);

    // The Z's ACK comes after the driver's wait: the Z counter tells it was made, once.
    emulator.fault("slow-ack I0Z 3500");
    ASSERT_TRUE(printer.printZReport()) << printer.errorText().toStdString();
    EXPECT_TRUE(printer.waitUntilReady(3000, 50));
    EXPECT_EQ(printer.readS1()->zCounter, 2);
    emulator.fault("fast-ack");

    // A fiscal memory nearly full is still ready; a full one refuses documents and the Z.
    emulator.fault("memory-nearly-full");
    EXPECT_TRUE(printer.waitUntilReady(1000, 50));
    EXPECT_EQ(printer.status(), 7);
    ASSERT_TRUE(printer.printDocument(invoice(2)));
    emulator.fault("memory-full");
    EXPECT_FALSE(printer.printDocument(invoice(3)));
    EXPECT_EQ(printer.errorText(), QStringLiteral("La memoria fiscal de la impresora está llena."));
    EXPECT_FALSE(printer.printZReport());
    EXPECT_EQ(printer.error(), 108);
    EXPECT_EQ(lastInvoice(), 2);
}
