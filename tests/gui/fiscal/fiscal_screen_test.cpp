// frmImpresoraFiscal against the software printer: state, reports, programming, a silent printer.
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/fiscal_screen.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"
#include "tools/fiscal_emulator/emulator_thread.h"

#include <QDateEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::fiscal;

namespace {

class FiscalScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        ASSERT_TRUE(emulator.started());
        const QString device = emulator.device();
        ASSERT_TRUE(printer.callAndWait([device](FiscalPrinter& p) { return p.open(device); }));
        screen = std::make_unique<FiscalScreen>(db(), printer);
        screen->show();
    }
    void TearDown() override {
        screen.reset();
        DbTest::TearDown();
    }
    // Clicks and waits for the printer's answer; returns the state text.
    QString click(const char* button) {
        QSignalSpy done(screen.get(), &FiscalScreen::finished);
        screen->findChild<QPushButton*>(QString::fromLatin1(button))->click();
        EXPECT_TRUE(done.count() > 0 || done.wait(10000)) << button;
        return screen->findChild<QPlainTextEdit*>(QStringLiteral("txtEstado"))->toPlainText();
    }

    tools::fiscal::EmulatorOptions options() {
        tools::fiscal::EmulatorOptions o;
        o.zBusyMs = 200;
        return o;
    }
    tools::fiscal::EmulatorThread emulator{options()};
    FiscalPrinterThread printer{[] {
        LinkTiming fast;
        fast.ackTimeoutMs = fast.replyTimeoutMs = fast.blockTimeoutMs = 300;
        fast.probeTimeoutMs = 150;
        return std::make_unique<SerialFiscalPrinter>(fast);
    }};
    test::ScriptedDialogs dialogs;
    std::unique_ptr<FiscalScreen> screen;
};

} // namespace

TEST_F(FiscalScreenTest, StateReportsAndProgramming) {
    QString text = click("cmdEstado");
    EXPECT_TRUE(text.contains("Serial: Z1B0000001")) << text.toStdString();
    EXPECT_TRUE(text.contains("Última factura: 0"));

    click("cmdReporteX");
    EXPECT_TRUE(emulator.hasTicket("REPORTEX_00000001.txt"));

    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, ?, ?)",
         {"ENCFISCAL", "01", "TIENDAS ORVO DEMO"});
    text = click("cmdEncabezado");
    EXPECT_TRUE(text.contains("PH01 TIENDAS ORVO DEMO"));
    EXPECT_EQ(emulator.memory().lines.value(1), QStringLiteral("TIENDAS ORVO DEMO"));

    for (auto [code, rate] : {std::pair{1, "15"}, {2, "8"}, {3, "22"}})
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
             {code, "IVA", rate});
    screen->findChild<QDateEdit*>(QStringLiteral("dtpVigencia"))
        ->setDate(QDate::currentDate().addDays(1));
    click("cmdTasas");
    EXPECT_EQ(dialogs.lastText(),
              QStringLiteral("Las tasas no están vigentes en la fecha de la impresora...!"));
    screen->findChild<QDateEdit*>(QStringLiteral("dtpVigencia"))->setDate(QDate::currentDate());
    text = click("cmdTasas");
    EXPECT_TRUE(text.contains("Tasa 1: 15.00%")) << text.toStdString();
    EXPECT_EQ(emulator.memory().rates[2].hundredths, 2200);

    dialogs.expectQuestion(QStringLiteral("Desea imprimir el reporte Z?"), true);
    text = click("cmdReporteZ");
    EXPECT_TRUE(text.startsWith("REPORTE Z 0001")) << text.toStdString();
    EXPECT_TRUE(emulator.hasTicket("REPORTEZ_00000001.txt"));

    text = click("cmdMemoriaFiscal");
    EXPECT_TRUE(text.startsWith("REPORTE Z 0001")) << text.toStdString();
    EXPECT_TRUE(emulator.hasTicket("REPORTEMF_00000001.txt"));
    EXPECT_TRUE(dialogs.allAnswered());
}

TEST_F(FiscalScreenTest, ASilentPrinterIsReportedAndTheScreenStaysUsable) {
    emulator.fault(QStringLiteral("silence"));
    screen->findChild<QPushButton*>(QStringLiteral("cmdEstado"))->click();
    // The call runs on the printer thread: the screen answers meanwhile.
    EXPECT_TRUE(screen->busy());
    EXPECT_FALSE(screen->findChild<QPushButton*>(QStringLiteral("cmdReporteX"))->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(dialogs.lastText(),
                              QStringLiteral("No existe comunicación con la impresora fiscal...!"),
                              10000);
    QTRY_VERIFY(!screen->busy());
    emulator.fault(QStringLiteral("speak"));
    EXPECT_TRUE(click("cmdEstado").contains("Serial: Z1B0000001"));
}
