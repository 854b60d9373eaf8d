// The emulated printer at the byte level: what it answers, what it refuses, what it prints and
// what it remembers.
#include "pos/fiscal/protocol/frame.h"
#include "pos/fiscal/protocol/replies.h"
#include "tools/fiscal_emulator/emulated_printer.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

using namespace orvo::tools::fiscal;
namespace wire = orvo::pos::fiscal::protocol;

namespace {

const QByteArray kAck("\x06", 1);
const QByteArray kNak("\x15", 1);

class EmulatedPrinterTest : public ::testing::Test {
protected:
    void SetUp() override { start(); }

    void start() {
        FiscalMemory memory;
        QString error;
        ASSERT_TRUE(memory.load(statePath(), &error)) << error.toStdString();
        printer = std::make_unique<EmulatedPrinter>(memory, statePath(), TicketWriter(tickets()),
                                                    FaultControl(controlPath()));
        printer->setZBusyMs(200);
    }
    QString statePath() const { return dir.filePath("state.json"); }
    QString tickets() const { return dir.filePath("tickets"); }
    QString controlPath() const { return dir.filePath("control"); }

    QByteArray send(const QByteArray& command) { return printer->receive(wire::frame(command)); }
    // A printer busy with a Z answers nothing, not even ENQ: waits until it answers again.
    void waitUntilItAnswers() {
        QDeadlineTimer deadline(10000);
        while (printer->receive(QByteArray("\x05", 1)).isEmpty()) {
            ASSERT_FALSE(deadline.hasExpired()) << "the printer stayed busy";
            QThread::msleep(5);
        }
    }
    // The status bytes after ENQ.
    std::pair<int, int> status() {
        const QByteArray r = printer->receive(QByteArray("\x05", 1));
        EXPECT_EQ(r.size(), 5);
        if (r.size() != 5)
            return {0, 0};
        return {quint8(r[1]), quint8(r[2])};
    }
    wire::S1Status s1() {
        const QByteArray r = send("S1");
        auto s = wire::parseS1(r.mid(1, r.size() - 3));
        EXPECT_TRUE(s);
        return s.value_or(wire::S1Status{});
    }
    // Runs an upload to its end and returns the blocks.
    QList<QByteArray> upload(const QByteArray& command) {
        QList<QByteArray> blocks;
        QByteArray r = send(command);
        EXPECT_EQ(r, QByteArray("\x05", 1));
        for (;;) {
            r = printer->receive(kAck);
            if (r == QByteArray("\x04", 1))
                break;
            wire::FrameReader reader;
            reader.feed(r);
            if (!reader.hasEvent()) {
                ADD_FAILURE() << "no block";
                break;
            }
            const wire::WireEvent e = reader.take();
            EXPECT_TRUE(e.checkOk);
            blocks << e.data;
        }
        return blocks;
    }
    QString ticket(const QString& name) const {
        QFile f(QDir(tickets()).filePath(name));
        if (!f.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(f.readAll());
    }
    void control(const QByteArray& words) {
        QFile f(controlPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(words);
    }

    QTemporaryDir dir;
    std::unique_ptr<EmulatedPrinter> printer;
};

} // namespace

TEST_F(EmulatedPrinterTest, InvoiceIsNumberedAccumulatedByRateAndPrinted) {
    EXPECT_EQ(status(), std::make_pair(0x60, 0x40));
    EXPECT_EQ(send("iR*V12345678"), kAck);
    EXPECT_EQ(send("iS*MARIA PEREZ"), kAck);
    // 2 x 11.60 at rate 1 (16 %), 1 x 5.00 exempt, 10 % off the exempt line.
    EXPECT_EQ(send("!000000116000002000CAMISA AZUL"), kAck);
    EXPECT_EQ(send(" 000000050000001000PAN"), kAck);
    EXPECT_EQ(send("p-1000"), kAck);
    EXPECT_EQ(status().first, 0x61);
    const QByteArray r = send("S2");
    auto s2 = wire::parseS2(r.mid(1, r.size() - 3));
    ASSERT_TRUE(s2);
    EXPECT_EQ(s2->articles, 3000);
    EXPECT_EQ(s2->payable, 2320 + 450);
    EXPECT_EQ(s2->taxes, 320);
    EXPECT_EQ(s2->documentType, 1);
    // Two partial payments; the second covers the rest and closes.
    EXPECT_EQ(send("201000000001000"), kAck);
    EXPECT_EQ(send("7"), kNak); // no cancelling once paid
    EXPECT_EQ(status().second, 0x60);
    EXPECT_EQ(send("213000000002000"), kAck);
    EXPECT_EQ(status(), std::make_pair(0x60, 0x40));

    const wire::S1Status s = s1();
    EXPECT_EQ(s.lastInvoice, 1);
    EXPECT_EQ(s.invoicesToday, 1);
    EXPECT_EQ(s.dailySubtotal, 2770);
    const QList<QByteArray> x = upload("U0X");
    ASSERT_EQ(x.size(), 1);
    auto day = wire::parseReport(x[0]);
    ASSERT_TRUE(day);
    EXPECT_EQ(day->lastInvoice, 1);
    EXPECT_EQ(day->invoices.exempt, 450);
    EXPECT_EQ(day->invoices.base[0], 2000);
    EXPECT_EQ(day->invoices.tax[0], 320);

    const QString t = ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(t.contains("MARIA PEREZ"));
    EXPECT_TRUE(t.contains("CAMISA AZUL"));
    EXPECT_TRUE(t.contains("CAMBIO 2,30")) << t.toStdString();
}

TEST_F(EmulatedPrinterTest, RefusesWhatAFiscalPrinterRefuses) {
    // Programming is allowed on a fresh printer (no fiscal document since its last Z) ...
    EXPECT_EQ(send("PH01TIENDA ORVO"), kAck);
    EXPECT_EQ(send("!000000116000001000MEDIAS"), kAck);
    EXPECT_EQ(send("101"), kAck);
    // ... and refused after an invoice, until a Z.
    EXPECT_EQ(send("PH02OTRA LINEA"), kNak);
    EXPECT_EQ(status().second, 0x60);
    EXPECT_EQ(send("PT1120010800"), kNak);

    // Items while a non-fiscal document is open.
    EXPECT_EQ(send("800COPIA CLIENTE"), kAck);
    EXPECT_EQ(send("!000000116000001000MEDIAS"), kNak);
    EXPECT_EQ(status(), std::make_pair(0x62, 0x60));
    EXPECT_EQ(send("810FIN"), kAck);
    EXPECT_TRUE(ticket("NOFISCAL_00000001.txt").contains("COPIA CLIENTE"));

    // A credit note needs the affected invoice, its date and its printer's serial.
    EXPECT_EQ(send("iF*00000001"), kAck);
    EXPECT_EQ(send("d1000000116000001000MEDIAS"), kNak);
    EXPECT_EQ(send("iD*21/11/2026"), kAck);
    EXPECT_EQ(send("iI*Z1B0000001"), kAck);
    EXPECT_EQ(send("d1000000116000001000MEDIAS"), kAck);
    EXPECT_EQ(send("!000000116000001000MEDIAS"), kNak); // no invoice item in a credit note
    EXPECT_EQ(send("101"), kAck);
    EXPECT_EQ(s1().lastCreditNote, 1);
    EXPECT_EQ(s1().lastInvoice, 1);
    EXPECT_TRUE(ticket("NOTACREDITO_00000001.txt").contains("FACTURA AFECTADA: 00000001"));

    // Bad values and unknown commands.
    EXPECT_EQ(send("!00000011600000000MEDIAS"), kNak); // quantity zero
    EXPECT_EQ(status().second, 0x50);
    EXPECT_EQ(send("XYZ"), kNak);
    EXPECT_EQ(status().second, 0x5C);
    EXPECT_EQ(send("cU123456789012345678901"), kNak);                    // 21 characters
    EXPECT_EQ(printer->receive(QByteArray("\x02I0X\x03\x23", 6)), kNak); // wrong check byte
}

TEST_F(EmulatedPrinterTest, ZClosesTheDayStoresARecordAndStaysBusy) {
    EXPECT_EQ(send("!000000116000001000MEDIAS"), kAck);
    EXPECT_EQ(send("I0Z"), kNak); // not with a document open
    EXPECT_EQ(send("101"), kAck);
    EXPECT_EQ(send("I0X"), kAck);
    EXPECT_FALSE(ticket("REPORTEX_00000001.txt").isEmpty());
    EXPECT_EQ(send("I0Z"), kAck);
    // Busy after a Z: nothing is answered, not even ENQ.
    EXPECT_EQ(printer->receive(QByteArray("\x05", 1)), QByteArray());
    waitUntilItAnswers();
    EXPECT_EQ(status(), std::make_pair(0x60, 0x40));
    const wire::S1Status s = s1();
    EXPECT_EQ(s.zCounter, 1);
    EXPECT_EQ(s.invoicesToday, 0);
    EXPECT_EQ(s.dailySubtotal, 0);
    EXPECT_EQ(s.lastInvoice, 1);
    EXPECT_TRUE(ticket("REPORTEZ_00000001.txt").contains("TOTAL FACTURAS 11,60"));

    const QList<QByteArray> last = upload("U0Z");
    ASSERT_EQ(last.size(), 1);
    auto z = wire::parseReport(last[0]);
    ASSERT_TRUE(z);
    EXPECT_EQ(z->zNumber, 1);
    EXPECT_EQ(z->invoices.total(), 1160);
    // Programming is allowed again, and a second Z gives a range of two records.
    EXPECT_EQ(send("PH91GRACIAS POR SU COMPRA"), kAck);
    EXPECT_EQ(send("I0Z"), kAck);
    waitUntilItAnswers();
    EXPECT_EQ(upload("U3A000001000002").size(), 2);
    EXPECT_EQ(upload("U3A000002000009").size(), 1);
    EXPECT_EQ(upload("U3A000005000009").size(), 0);
    EXPECT_EQ(send("I3A000001000002"), kAck);
    EXPECT_FALSE(ticket("REPORTEMF_00000001.txt").isEmpty());
}

TEST_F(EmulatedPrinterTest, FaultsFromTheControlFile) {
    // Paper runs out at the next item: refused, and the invoice stays open and unnumbered.
    control("paper-out\n");
    EXPECT_EQ(send("SV"), wire::frame("SV\nZ1B\nVE"));
    EXPECT_EQ(send("!000000116000001000MEDIAS"), kNak);
    EXPECT_EQ(status().second, 0x41);
    EXPECT_EQ(send("7"), kAck);
    control("paper-ok\n");
    EXPECT_EQ(status().second, 0x40);

    // A dropped ACK: the command was done all the same.
    control("drop-ack\n");
    EXPECT_EQ(send("!000000116000001000MEDIAS"), QByteArray());
    EXPECT_EQ(send("101"), kAck);
    EXPECT_EQ(s1().lastInvoice, 1);

    // NAK on the next frame only.
    control("nak-next\n");
    EXPECT_EQ(send("I0X"), kNak);
    EXPECT_EQ(send("I0X"), kAck);

    control("silence\n");
    EXPECT_EQ(printer->receive(QByteArray("\x05", 1)), QByteArray());
    control("speak\n");
    EXPECT_EQ(status().first, 0x60);
    EXPECT_FALSE(QFile::exists(controlPath()));
}

TEST_F(EmulatedPrinterTest, FiscalMemorySurvivesARestart) {
    EXPECT_EQ(send("PG150326"), kAck); // the printer's own date
    EXPECT_EQ(send("PH01TIENDA ORVO"), kAck);
    EXPECT_EQ(send("PT1160010800"), kAck);
    EXPECT_EQ(send("Pt"), kAck);
    EXPECT_EQ(send("\"000000108000001000PAN"), kAck);
    EXPECT_EQ(send("101"), kAck);
    EXPECT_EQ(send("I0Z"), kAck);
    printer.reset();
    start();
    const wire::S1Status s = s1();
    EXPECT_EQ(s.lastInvoice, 1);
    EXPECT_EQ(s.zCounter, 1);
    EXPECT_EQ(s.date, QDate(2026, 3, 15));
    EXPECT_EQ(printer->memory().lines.value(1), QStringLiteral("TIENDA ORVO"));
    EXPECT_EQ(printer->memory().rates[1].hundredths, 800);
    ASSERT_EQ(printer->memory().zHistory.size(), 1);
    EXPECT_EQ(printer->memory().zHistory[0].invoices.base[1], 1000);
    EXPECT_EQ(printer->memory().zHistory[0].invoices.tax[1], 80);
}
