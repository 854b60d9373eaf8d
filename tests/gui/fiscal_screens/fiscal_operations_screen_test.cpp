#include "pos/fiscal_screens/fiscal_operations_screen.h"

#include "fiscal_screen_fixture.h"
#include "support/scripted_dialogs.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::fiscal_screens;

namespace {

class FiscalOperationsScreenTest : public test::FiscalScreenTest {
protected:
    std::unique_ptr<FiscalOperationsScreen> open() {
        auto s = std::make_unique<FiscalOperationsScreen>(db(), m_session, *m_printer);
        s->show();
        return s;
    }
    static bool press(FiscalOperationsScreen& s, const char* button) {
        auto* b = s.findChild<QPushButton*>(QString::fromLatin1(button));
        EXPECT_NE(b, nullptr) << button;
        QTest::mouseClick(b, Qt::LeftButton);
        return QTest::qWaitFor([&] { return !s.isBusy(); }, 15000);
    }
};

TEST_F(FiscalOperationsScreenTest, PrintsXAndZReportsOnThePrinter) {
    test::ScriptedDialogs dialogs;
    exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, Status, Acumulado) VALUES "
         "('Z1B0000001', ?, 1, 1, 1500)",
         {QDateTime(QDate::currentDate(), QTime(0, 5))});
    auto s = open();
    EXPECT_EQ(s->objectName(), "frmOperacionesFiscales");

    ASSERT_TRUE(press(*s, "cmdReporteX"));
    EXPECT_EQ(tickets("REPORTEX_*").size(), 1);
    EXPECT_TRUE(tickets("REPORTEZ_*").isEmpty());

    // The Z closes the fiscal day: it is asked first, and "No" prints nothing.
    dialogs.expectQuestion("Desea realizar el reporte Z...?", false);
    ASSERT_TRUE(press(*s, "cmdReporteZ"));
    EXPECT_TRUE(tickets("REPORTEZ_*").isEmpty());
    dialogs.expectQuestion("Desea realizar el reporte Z...?", true);
    ASSERT_TRUE(press(*s, "cmdReporteZ"));
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(tickets("REPORTEZ_*").size(), 1);
    EXPECT_EQ(m_emulator.memory().zCounter, 1);
    EXPECT_TRUE(Decimal::fromVariant(scalar("SELECT Acumulado FROM DIARIOCAJA")).isZero());
    EXPECT_EQ(dialogs.messages().size(), 2); // only the two questions

    // Counters, read back on the screen.
    ASSERT_TRUE(press(*s, "cmdLeerContadores"));
    EXPECT_TRUE(s->findChild<QPlainTextEdit*>("txtContadores")
                    ->toPlainText()
                    .contains("Último reporte Z: 1"));

    // A summary by Z numbers.
    s->findChild<QRadioButton*>("optPorNumero")->setChecked(true);
    s->findChild<QRadioButton*>("optResumido")->setChecked(true);
    QTest::keyClicks(s->findChild<QLineEdit*>("txtDesde"), "1");
    QTest::keyClicks(s->findChild<QLineEdit*>("txtHasta"), "1");
    ASSERT_TRUE(press(*s, "cmdReportePorRango"));
    EXPECT_EQ(m_emulator.memory().fiscalReportCounter, 1);
    EXPECT_EQ(dialogs.messages().size(), 2);
}

TEST_F(FiscalOperationsScreenTest, RefusalsShowThePrintersMessage) {
    test::ScriptedDialogs dialogs;
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES "
         "('ENCFISCAL', '01', 'TIENDAS ORVO')");
    auto s = open();
    m_emulator.fault("cover-open");
    ASSERT_TRUE(press(*s, "cmdReporteX"));
    EXPECT_EQ(dialogs.lastText(), "La impresora fiscal tiene un error mecánico o la tapa abierta.");
    EXPECT_TRUE(tickets("REPORTEX_*").isEmpty());
    m_emulator.fault("cover-closed");

    ASSERT_TRUE(press(*s, "cmdProgramarEncabezado"));
    EXPECT_EQ(m_emulator.memory().lines.value(1), "TIENDAS ORVO");

    s->findChild<QLineEdit*>("txtVisor1")->setText("BIENVENIDO");
    ASSERT_TRUE(press(*s, "cmdProbarVisor"));
    EXPECT_TRUE(m_emulator.ticket("VISOR.txt").contains("BIENVENIDO"));
}

} // namespace

TEST_F(FiscalOperationsScreenTest, IgtfAndThePaymentMeansGoToThePrinterAndTheRegister) {
    test::ScriptedDialogs dialogs;
    exec("INSERT INTO FORMAPAGO (Codigo, Nombre, Status) VALUES (1, 'EFECTIVO', 1), "
         "(11, 'EFECTIVO DOLAR', 1)");
    auto s = open();
    auto* means = s->findChild<QTableWidget*>("SpreadMediosPago");
    ASSERT_EQ(means->rowCount(), 2);
    EXPECT_EQ(means->item(1, 0)->text(), "EFECTIVO DOLAR");
    EXPECT_EQ(means->item(1, 1)->text(), "20");
    means->item(1, 2)->setText("dolares");
    ASSERT_TRUE(press(*s, "cmdGuardarMedios"));
    EXPECT_EQ(m_emulator.memory().paymentNames.value(20), "DOLARES");
    EXPECT_EQ(scalar("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = 'MEDIOFISCAL' AND "
                     "Codigo = '11'")
                  .toString(),
              "20 DOLARES");

    // After a sale the printer takes the IGTF rate only after a Z: refused, the register stays
    // as it was.
    ASSERT_TRUE(m_printer->callAndWait([](pos::fiscal::FiscalPrinter& p) {
        return p.sendCommands({"!000000116000001000MEDIAS", "101"});
    }));
    s->findChild<QCheckBox*>("chkIGTF")->setChecked(true);
    ASSERT_TRUE(press(*s, "cmdAplicarIGTF"));
    EXPECT_EQ(dialogs.lastText(),
              "La impresora fiscal acepta el IGTF solo después de un reporte Z...!");
    EXPECT_EQ(scalar("SELECT IGTF FROM CAJAS").toInt(), 0);
    EXPECT_EQ(m_emulator.memory().flags[50], 0);

    dialogs.expectQuestion("Desea realizar el reporte Z...?", true);
    ASSERT_TRUE(press(*s, "cmdReporteZ"));
    ASSERT_TRUE(press(*s, "cmdAplicarIGTF"));
    EXPECT_EQ(s->findChild<QLabel*>("lblEstado")->text(), "IGTF activado.");
    EXPECT_EQ(scalar("SELECT IGTF FROM CAJAS").toInt(), 1);
    EXPECT_EQ(m_emulator.memory().flags[50], 1);
    EXPECT_EQ(m_emulator.memory().igtfRate, 300);
    ASSERT_TRUE(press(*s, "cmdLeerContadores"));
    EXPECT_TRUE(
        s->findChild<QPlainTextEdit*>("txtContadores")->toPlainText().contains("IGTF: activado"));

    // Off again: the flag goes off at once.
    s->findChild<QCheckBox*>("chkIGTF")->setChecked(false);
    ASSERT_TRUE(press(*s, "cmdAplicarIGTF"));
    EXPECT_EQ(scalar("SELECT IGTF FROM CAJAS").toInt(), 0);
    EXPECT_EQ(m_emulator.memory().flags[50], 0);
}
