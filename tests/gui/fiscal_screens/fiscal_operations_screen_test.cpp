#include "pos/fiscal_screens/fiscal_operations_screen.h"

#include "fiscal_screen_fixture.h"
#include "support/scripted_dialogs.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
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
