#include "pos/fiscal_screens/counter_correction_screen.h"

#include "fiscal_screen_fixture.h"
#include "support/scripted_dialogs.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::fiscal_screens;

namespace {

class CounterCorrectionTest : public test::FiscalScreenTest {
protected:
    std::unique_ptr<CounterCorrectionScreen> open() {
        auto s = std::make_unique<CounterCorrectionScreen>(db(), m_session, *m_printer);
        s->show();
        return s;
    }
    static QLineEdit* edit(QWidget& s, const char* name) {
        return s.findChild<QLineEdit*>(QString::fromLatin1(name));
    }
    static void retype(QWidget& s, const char* name, const QString& text) {
        auto* e = edit(s, name);
        e->selectAll();
        QTest::keyClick(e, Qt::Key_Backspace);
        QTest::keyClicks(e, text);
    }
    // Accepts with a yes and waits for the printer's answer; the last message shown.
    QString acceptWith(test::ScriptedDialogs& dialogs, CounterCorrectionScreen& s) {
        dialogs.clear();
        dialogs.expectQuestion("Desea cambiar los consecutivos...?", true);
        QTest::mouseClick(s.findChild<QPushButton*>("cmdAceptar"), Qt::LeftButton);
        EXPECT_TRUE(dialogs.allAnswered());
        EXPECT_TRUE(s.isBusy());
        EXPECT_TRUE(QTest::qWaitFor([&] { return !s.isBusy(); }, 10000));
        return dialogs.lastText();
    }
    QPair<int, int> stored() {
        return {scalar("SELECT UltimaFactura FROM CAJAS").toInt(),
                scalar("SELECT UltimaDevolucion FROM CAJAS").toInt()};
    }
};

TEST_F(CounterCorrectionTest, InvoiceMustMatchThePrinterAndReturnsMayNotGoBack) {
    test::ScriptedDialogs dialogs;
    auto s = open();
    EXPECT_EQ(s->objectName(), "frmCorregirConsecutivos");
    EXPECT_EQ(edit(*s, "txtFacturaActual")->text(), "5");
    EXPECT_EQ(edit(*s, "txtDevolucionActual")->text(), "3");

    // Digits only.
    retype(*s, "txtFactura", "1a2-");
    EXPECT_EQ(edit(*s, "txtFactura")->text(), "12");

    // "No" asks nothing of the printer and changes nothing.
    dialogs.expectQuestion("Desea cambiar los consecutivos...?", false);
    QTest::mouseClick(s->findChild<QPushButton*>("cmdAceptar"), Qt::LeftButton);
    EXPECT_FALSE(s->isBusy());
    EXPECT_EQ(dialogs.messages().last().title, "Información");

    // The register says 5, the printer's last invoice is 0.
    retype(*s, "txtFactura", "5");
    EXPECT_EQ(acceptWith(dialogs, *s),
              "El numero de factura no concuerda con el numero de factura de la impresora...!");
    EXPECT_EQ(stored(), qMakePair(5, 3));

    retype(*s, "txtFactura", "0");
    retype(*s, "txtDevolucion", "2");
    EXPECT_EQ(acceptWith(dialogs, *s),
              "El numero de devolución nuevo debe ser mayor o igual al numero actual...!");
    EXPECT_EQ(stored(), qMakePair(5, 3));

    // An equal return number is accepted.
    retype(*s, "txtDevolucion", "3");
    EXPECT_EQ(acceptWith(dialogs, *s), "Los consecutivos han sido actualizados...!");
    EXPECT_EQ(stored(), qMakePair(0, 3));
    EXPECT_EQ(edit(*s, "txtFacturaActual")->text(), "0");
}

TEST_F(CounterCorrectionTest, ASilentPrinterLeavesTheScreenUsableWithTheDriversMessage) {
    test::ScriptedDialogs dialogs;
    auto s = open();
    m_emulator.fault("silence");
    retype(*s, "txtFactura", "0");
    dialogs.expectQuestion("Desea cambiar los consecutivos...?", true);
    QTest::mouseClick(s->findChild<QPushButton*>("cmdAceptar"), Qt::LeftButton);
    // The screen keeps running its event loop while the printer thread waits.
    EXPECT_TRUE(s->isBusy());
    EXPECT_FALSE(s->findChild<QPushButton*>("cmdAceptar")->isEnabled());
    EXPECT_FALSE(s->findChild<QLabel*>("lblEstado")->text().isEmpty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !s->isBusy(); }, 15000));
    EXPECT_TRUE(dialogs.lastText().startsWith("El puerto NO responde") ||
                dialogs.lastText() == "La impresora fiscal no responde.")
        << dialogs.lastText().toStdString();
    EXPECT_TRUE(s->findChild<QPushButton*>("cmdAceptar")->isEnabled());
    EXPECT_EQ(stored(), qMakePair(5, 3));
}

} // namespace
