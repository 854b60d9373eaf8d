// frmCorregirConsecutivos against the software printer: the invoice counter must be the
// printer's, the return counter may only grow.
#include "../../pos/fiscal/printer_on_emulator.h"
#include "pos/fiscal/counter_correction_screen.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::fiscal;

namespace {

class CounterCorrectionScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        ASSERT_TRUE(emulator.started()) << emulator.error().toStdString();
        exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
             "VALUES (?, ?, ?, ?)",
             {"Z1B0000001", 1, 5, 2});
        printer = test::printerThreadOn(emulator);
    }
    QLineEdit* field(QWidget& s, const char* name) {
        return s.findChild<QLineEdit*>(QString::fromLatin1(name));
    }
    void accept(QWidget& s, bool yes) {
        dialogs.expectQuestion(QStringLiteral("Desea cambiar los consecutivos...?"), yes);
        s.findChild<QPushButton*>(QStringLiteral("cmdAceptar"))->click();
    }
    int counter(const char* column) {
        return scalar(QStringLiteral("SELECT %1 FROM CAJAS WHERE Serie = 'Z1B0000001'")
                          .arg(QString::fromLatin1(column)))
            .toInt();
    }

    test::RunningEmulator emulator;
    std::unique_ptr<FiscalPrinterThread> printer;
    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(CounterCorrectionScreenTest, InvoiceFollowsThePrinterReturnOnlyGrows) {
    CounterCorrectionScreen screen(db(), QStringLiteral("Z1B0000001"), 1, *printer);
    screen.show();
    EXPECT_EQ(screen.objectName(), QStringLiteral("frmCorregirConsecutivos"));
    QLineEdit* invoice = field(screen, "txtFactura");
    QLineEdit* returned = field(screen, "txtDevolucion");
    ASSERT_TRUE(invoice && returned);
    EXPECT_EQ(invoice->text(), QStringLiteral("5"));
    EXPECT_EQ(returned->text(), QStringLiteral("2"));

    // Digits only.
    invoice->clear();
    QTest::keyClicks(invoice, QStringLiteral("1a2"));
    EXPECT_EQ(invoice->text(), QStringLiteral("12"));

    // The printer has printed nothing: 12 is not its last invoice.
    accept(screen, true);
    QTRY_COMPARE(
        dialogs.lastText(),
        QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    EXPECT_EQ(counter("UltimaFactura"), 5);

    // One invoice on the printer; a return counter below the current one is refused.
    FiscalDocument d;
    FiscalLine l;
    l.price = Decimal(10);
    l.quantity = Decimal(1);
    l.name = QStringLiteral("CAMISA");
    d.lines = {l};
    ASSERT_TRUE(printer->callAndWait([d](FiscalPrinter& p) { return p.printDocument(d); }));
    invoice->setText(QStringLiteral("1"));
    returned->setText(QStringLiteral("1"));
    dialogs.clear();
    accept(screen, true);
    QTRY_COMPARE(dialogs.lastText(),
                 QStringLiteral(
                     "El numero de devolución nuevo debe ser mayor o igual al numero actual...!"));

    // "No" leaves everything as it was: the printer is not even asked (the button would wait).
    returned->setText(QStringLiteral("2"));
    dialogs.clear();
    accept(screen, false);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_TRUE(screen.findChild<QPushButton*>(QStringLiteral("cmdAceptar"))->isEnabled());
    EXPECT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(counter("UltimaFactura"), 5);

    // An equal return counter is accepted.
    bool changed = false;
    QObject::connect(&screen, &CounterCorrectionScreen::countersChanged, [&] { changed = true; });
    dialogs.clear();
    accept(screen, true);
    QTRY_VERIFY(changed);
    // Only the question: nothing was refused.
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages().first().kind, QStringLiteral("question"));
    EXPECT_EQ(counter("UltimaFactura"), 1);
    EXPECT_EQ(counter("UltimaDevolucion"), 2);
    EXPECT_TRUE(dialogs.allAnswered());
}

TEST_F(CounterCorrectionScreenTest, CompanyWideCountersAndASilentPrinter) {
    exec("INSERT INTO PARAMETROS (UltimaFactura, UltimaDevolucion) VALUES (?, ?)", {0, 0});
    CounterCorrectionScreen screen(db(), QStringLiteral("Z1B0000001"), 2, *printer);
    screen.show();
    EXPECT_EQ(field(screen, "txtFactura")->text(), QStringLiteral("0"));
    field(screen, "txtDevolucion")->setText(QStringLiteral("4"));
    bool changed = false;
    QObject::connect(&screen, &CounterCorrectionScreen::countersChanged, [&] { changed = true; });
    accept(screen, true);
    QTRY_VERIFY(changed);
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM PARAMETROS").toInt(), 4);
    EXPECT_EQ(counter("UltimaDevolucion"), 2);

    emulator.fault(QStringLiteral("silence"));
    dialogs.clear();
    accept(screen, true);
    QTRY_COMPARE_WITH_TIMEOUT(dialogs.lastText(),
                              QStringLiteral("No existe comunicación con la impresora fiscal...!"),
                              20000);
}
