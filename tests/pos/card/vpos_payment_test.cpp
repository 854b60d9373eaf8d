#include "pos/card/vpos_payment.h"

#include "common/errors/errors.h"
#include "exchange/json/json_reader.h"
#include "tools/card_emulator/emulator_thread.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::card;
using orvo::test::EmulatorThread;

namespace {

QString readFile(const QString& path) {
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(f.readAll());
}

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

class VPosPaymentTest : public ::testing::Test {
protected:
    tools::card::CardEmulatorOptions emulatorOptions() const {
        tools::card::CardEmulatorOptions o;
        o.stateFile = m_dir.filePath("terminal-state.json");
        o.voucherDir = m_dir.filePath("terminal-vouchers");
        o.rules.rejectAmountOverCents = 100000; // 1000.00
        o.rules.rejectCedulas = {"V999"};
        return o;
    }
    TerminalSettings settingsFor(const QUrl& url) const {
        TerminalSettings s;
        s.url = url;
        s.timeoutSeconds = 10;
        s.voucherFolder = printedDir();
        return s;
    }
    QString printedDir() const { return m_dir.filePath("printed"); }
    QStringList printed() const {
        QStringList texts;
        for (const QString& name : filesIn(printedDir()))
            texts << readFile(QDir(printedDir()).filePath(name));
        return texts;
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(VPosPaymentTest, ApprovedPaymentKeepsTheAnswerAndPrintsBothCopies) {
    EmulatorThread terminal(emulatorOptions());
    VPosPayment vpos(settingsFor(terminal.url()));
    vpos.setIdPayment("F-1");
    vpos.setCedula(" V12345678 ");
    vpos.setCardKind(CardKind::Credit);
    vpos.setAmount(Decimal::fromString(u"1234.5") / Decimal(2)); // 617.25

    EXPECT_TRUE(vpos.pay());
    EXPECT_EQ(vpos.status(), QStringLiteral("APROBADO"));
    EXPECT_EQ(vpos.authorisationNumber(), QStringLiteral("000001"));
    EXPECT_EQ(vpos.sequenceNumber(), QStringLiteral("000001"));
    EXPECT_EQ(vpos.lot(), QStringLiteral("1"));
    EXPECT_EQ(vpos.bankCode(), QStringLiteral("0105"));
    EXPECT_EQ(vpos.cardNumber(), QStringLiteral("454012******1234"));
    EXPECT_EQ(vpos.printError(), QString());

    // The raw answer is what gets stored with the payment, and it reads back.
    QString errors;
    const auto stored = exchange::json::parseJson(vpos.merchantJson(), &errors);
    EXPECT_EQ(errors, QString());
    EXPECT_EQ(stored.toObject().value("monto").toText(), QStringLiteral("617.25"));
    EXPECT_EQ(stored.toObject().value("numeroAutorizacion").toText(), QStringLiteral("000001"));

    // The terminal wrote the voucher it named; the register printed it twice, the client's copy
    // second and headed as such.
    const QString named = QDir(m_dir.filePath("terminal-vouchers")).filePath(vpos.voucherName());
    ASSERT_TRUE(QFile::exists(named));
    const QStringList copies = printed();
    ASSERT_EQ(copies.size(), 2);
    EXPECT_TRUE(copies.at(0).contains("COMPRA CREDITO"));
    EXPECT_TRUE(copies.at(0).contains("C.I.: V12345678"));
    EXPECT_TRUE(copies.at(0).contains("MONTO: 617.25"));
    EXPECT_FALSE(copies.at(0).contains("COPIA CLIENTE"));
    EXPECT_TRUE(copies.at(1).startsWith("COPIA CLIENTE\r\n"));
    EXPECT_EQ(copies.at(1).mid(QStringLiteral("COPIA CLIENTE\r\n").size()), copies.at(0));
    EXPECT_EQ(copies.at(0), readFile(named));
}

TEST_F(VPosPaymentTest, RejectionsLeaveNothingApprovedAndPrintTheRejection) {
    EmulatorThread terminal(emulatorOptions());
    TerminalSettings settings = settingsFor(terminal.url());
    settings.oneCopy = true;
    VPosPayment vpos(settings);
    vpos.setCedula("V1");
    vpos.setAmount(Decimal(150));
    ASSERT_TRUE(vpos.pay());
    ASSERT_EQ(vpos.authorisationNumber(), QStringLiteral("000001"));

    vpos.setAmount(Decimal::fromString(u"1000.01"));
    EXPECT_FALSE(vpos.pay());
    EXPECT_EQ(vpos.status(), QStringLiteral("RECHAZADO"));
    EXPECT_EQ(vpos.authorisationNumber(), QString());
    EXPECT_EQ(vpos.responseMessage(), QStringLiteral("FONDOS INSUFICIENTES"));
    EXPECT_TRUE(vpos.merchantJson().contains("\"codRespuesta\":\"51\""));

    vpos.setAmount(Decimal(1000)); // the limit itself passes the amount rule...
    vpos.setCedula("V999");        // ...but this card holder is refused
    EXPECT_FALSE(vpos.advance());

    const QStringList copies = printed(); // one copy each: the approval and two rejections
    ASSERT_EQ(copies.size(), 3);
    EXPECT_TRUE(copies.at(1).contains("RECHAZADA: FONDOS INSUFICIENTES"));
    EXPECT_TRUE(copies.at(2).contains("ADELANTO DE EFECTIVO"));
    EXPECT_TRUE(copies.at(2).contains("RECHAZADA: NO APROBADA"));
    for (const QString& c : copies)
        EXPECT_FALSE(c.contains("COPIA CLIENTE"));
}

TEST_F(VPosPaymentTest, UnreachableOrSilentTerminalGivesAClearMessage) {
    EmulatorThread terminal(emulatorOptions());
    VPosPayment vpos(settingsFor(terminal.url()));
    vpos.setCedula("V1");
    vpos.setAmount(Decimal(10));
    ASSERT_TRUE(vpos.pay());

    // A terminal that answers after the register gave up: the payment may have gone through at
    // the terminal, so the cashier is told to look before paying again.
    terminal.setDelayMs(2500);
    TerminalSettings impatient = settingsFor(terminal.url());
    impatient.timeoutSeconds = 1;
    VPosPayment slow(impatient);
    slow.setCedula("V1");
    slow.setAmount(Decimal(10));
    try {
        slow.pay();
        ADD_FAILURE() << "a late answer was accepted";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(),
                  QStringLiteral("El punto de venta VPOS (%1) no respondió en 1 segundos. "
                                 "Verifique en el terminal si la operación se realizó "
                                 "antes de repetirla...!")
                      .arg(terminal.url().toString()));
    }
    EXPECT_FALSE(slow.approved());

    // A port nobody listens on.
    QTcpServer probe;
    ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
    const QUrl closed(QStringLiteral("http://127.0.0.1:%1").arg(probe.serverPort()));
    probe.close();
    VPosPayment down(settingsFor(closed));
    down.setCedula("V1");
    down.setAmount(Decimal(10));
    try {
        down.pay();
        ADD_FAILURE() << "no error without a terminal";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("No hay comunicación con el punto de venta VPOS (%1). "
                                           "Verifique que el servicio del terminal esté "
                                           "encendido...!")
                                .arg(closed.toString()));
    }
    EXPECT_EQ(down.status(), QStringLiteral("RECHAZADO"));

    // An instance that had approved forgets it when the next call fails.
    terminal.setDelayMs(0);
    VPosPayment reused(impatient);
    reused.setCedula("V1");
    reused.setAmount(Decimal(10));
    ASSERT_TRUE(reused.pay());
    terminal.setDelayMs(2500);
    EXPECT_THROW(reused.pay(), UserError);
    EXPECT_FALSE(reused.approved());
    EXPECT_EQ(reused.authorisationNumber(), QString());
    EXPECT_EQ(reused.merchantJson(), QString());
}

TEST_F(VPosPaymentTest, VoidsByAuthorisationAndBySequence) {
    EmulatorThread terminal(emulatorOptions());
    VPosPayment vpos(settingsFor(terminal.url()));
    vpos.setCedula("V1");
    vpos.setAmount(Decimal(100));
    ASSERT_TRUE(vpos.pay()); // sequence 1
    const QString firstAuthorisation = vpos.authorisationNumber();
    vpos.setAmount(Decimal(200));
    ASSERT_TRUE(vpos.pay()); // sequence 2
    ASSERT_EQ(vpos.authorisationNumber(), QStringLiteral("000002"));

    EXPECT_TRUE(vpos.voidPayment()); // the last approval, sequence 3
    EXPECT_EQ(vpos.status(), QStringLiteral("APROBADO"));
    EXPECT_EQ(vpos.sequenceNumber(), QStringLiteral("000003"));
    EXPECT_FALSE(vpos.voidPayment()); // already voided
    EXPECT_EQ(vpos.responseMessage(), QStringLiteral("TRANSACCION NO ENCONTRADA"));
    EXPECT_EQ(vpos.authorisationNumber(), QStringLiteral("000002")); // kept for another try

    EXPECT_FALSE(vpos.voidBySequence("99"));
    EXPECT_FALSE(vpos.voidBySequence("abc"));
    EXPECT_TRUE(vpos.voidBySequence(" 1 "));
    EXPECT_EQ(vpos.authorisationNumber(), firstAuthorisation);
    EXPECT_FALSE(vpos.voidBySequence("1"));

    const QString last = printed().last();
    EXPECT_TRUE(last.contains("ANULACION APROBADA"));
    EXPECT_TRUE(last.contains("SECUENCIA ANULADA: 000001"));
    EXPECT_TRUE(last.contains("MONTO: -100.00"));

    // Both voided: the pre-closing counts nothing approved.
    EXPECT_TRUE(vpos.preClosingReport());
    EXPECT_TRUE(printed().last().contains("TOTAL: 0.00"));
    EXPECT_TRUE(printed().last().contains("TRANSACCIONES ANULADAS: 2"));
}

TEST_F(VPosPaymentTest, LotAndSequenceSurviveATerminalRestart) {
    QString authorisationBeforeRestart;
    {
        EmulatorThread terminal(emulatorOptions());
        VPosPayment vpos(settingsFor(terminal.url()));
        vpos.setCedula("V1");
        EXPECT_FALSE(vpos.reprintLastClosing()); // no closing yet
        vpos.setAmount(Decimal(300));
        ASSERT_TRUE(vpos.pay());
        EXPECT_TRUE(vpos.closingReport());
        EXPECT_EQ(vpos.lot(), QStringLiteral("1"));
        EXPECT_TRUE(printed().last().contains("CIERRE DE LOTE"));
        EXPECT_TRUE(printed().last().contains("TOTAL: 300.00"));
        vpos.setAmount(Decimal(40));
        ASSERT_TRUE(vpos.pay());
        EXPECT_EQ(vpos.lot(), QStringLiteral("2"));
        EXPECT_EQ(vpos.sequenceNumber(), QStringLiteral("000002"));
        authorisationBeforeRestart = vpos.authorisationNumber();
    }
    EmulatorThread restarted(emulatorOptions());
    VPosPayment vpos(settingsFor(restarted.url()));
    vpos.setCedula("V1");
    vpos.setAmount(Decimal(5));
    ASSERT_TRUE(vpos.pay());
    EXPECT_EQ(vpos.lot(), QStringLiteral("2"));
    EXPECT_EQ(vpos.sequenceNumber(), QStringLiteral("000003"));
    EXPECT_EQ(vpos.authorisationNumber(), QStringLiteral("000003"));

    vpos.setAuthorisationNumber(authorisationBeforeRestart);
    EXPECT_TRUE(vpos.voidPayment());

    const int before = int(printed().size());
    EXPECT_TRUE(vpos.reprintLastClosing());
    ASSERT_EQ(printed().size(), before + 1);
    EXPECT_TRUE(printed().last().contains("TOTAL: 300.00"));
    EXPECT_TRUE(vpos.reprintLastVoucher()); // the terminal's last voucher: the void
    EXPECT_TRUE(printed().last().contains("ANULACION APROBADA"));
    EXPECT_TRUE(printed().last().contains("MONTO: -40.00"));
}

TEST_F(VPosPaymentTest, AVoucherThatCannotBePrintedDoesNotUndoTheApproval) {
    EmulatorThread terminal(emulatorOptions());
    TerminalSettings settings = settingsFor(terminal.url());
    settings.voucherFolder.clear();
    VPosPayment vpos(settings, nullptr); // no fiscal printer at hand
    vpos.setCedula("V1");
    vpos.setAmount(Decimal(25));
    EXPECT_TRUE(vpos.pay());
    EXPECT_EQ(vpos.status(), QStringLiteral("APROBADO"));
    EXPECT_EQ(vpos.printError(), QStringLiteral("No hay impresora para el voucher...!"));
    EXPECT_FALSE(vpos.reprintLastVoucher());
}

TEST(TerminalAmount, TwoDecimalsWithoutGrouping) {
    EXPECT_EQ(formatTerminalAmount(Decimal::fromString(u"1234567.899")),
              QStringLiteral("1234567.90"));
    EXPECT_EQ(formatTerminalAmount(Decimal::fromString(u"0.5")), QStringLiteral("0.50"));
    EXPECT_EQ(formatTerminalAmount(Decimal::fromString(u"0.005")), QStringLiteral("0.01"));
}
