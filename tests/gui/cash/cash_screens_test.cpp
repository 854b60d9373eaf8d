// A register's whole day on the real screens: opening, a withdrawal, a deposit, the closing with
// its Z on the software printer and the printed reports; and the screens' refusals.
#include "pos/cash/cash_fixture.h"
#include "pos/cash/closing_screen.h"
#include "pos/cash/deposits_screen.h"
#include "pos/cash/foreign_closing_screen.h"
#include "pos/cash/opening_screen.h"
#include "pos/cash/withdrawals_screen.h"

#include "shell/session/session_context.h"
#include "shell/startup/app_state.h"
#include "support/scripted_dialogs.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::cash;

namespace {

class CashScreensTest : public test::CashTest {
protected:
    void SetUp() override {
        CashTest::SetUp();
        m_session.serial = kSerial;
        m_session.registerConfigured = true;
        m_session.controlFactura = 1;
        m_session.userCode = "ANA";
        m_session.nombre = "TIENDA DEMO";
    }
    template <class T> static T* find(QWidget& screen, const char* name) {
        T* w = screen.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    static void type(QWidget& screen, const char* name, const QString& text) {
        auto* e = find<QLineEdit>(screen, name);
        e->clear();
        QTest::keyClicks(e, text);
    }
    static void click(QWidget& screen, const char* name) {
        QTest::mouseClick(find<QPushButton>(screen, name), Qt::LeftButton);
    }

    shell::SessionContext m_session;
};

TEST_F(CashScreensTest, AWholeDayFromOpeningToClosingWithItsReports) {
    test::ScriptedDialogs dialogs;
    {
        OpeningScreen opening(db(), m_session, *m_printer);
        opening.show();
        EXPECT_EQ(opening.objectName(), "frmAperturaCaja");
        QSignalSpy done(&opening, &OpeningScreen::openingFinished);
        click(opening, "cmdAperturar");
        QTRY_COMPARE(done.count(), 1);
        EXPECT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
        EXPECT_EQ(find<QLineEdit>(opening, "txtStatus")->text(), "Abierta");
        EXPECT_EQ(find<QLineEdit>(opening, "txtFecha")->text(), dayText(today()));
    }
    sell(1, "100.00");
    sell(2, "40.00", "2");
    {
        WithdrawalsScreen withdrawals(db(), m_session);
        withdrawals.show();
        // Keyboard only: Enter in the last field adds the withdrawal.
        type(withdrawals, "txtDescripcion", "Pago de taxi");
        type(withdrawals, "txtMonto", "16,00");
        QTest::keyClick(find<QLineEdit>(withdrawals, "txtMonto"), Qt::Key_Return);
        EXPECT_EQ(find<QTableWidget>(withdrawals, "grdSalidas")->rowCount(), 1);
        EXPECT_EQ(scalar("SELECT Usuario FROM SALIDASCAJA").toString(), "ANA");
    }
    exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES "
         "('0134-01', 'BANESCO CORRIENTE', 0, 1)");
    {
        DepositsScreen deposits(db(), m_session);
        deposits.show();
        auto* cheques = find<QTableWidget>(deposits, "grdCheques");
        ASSERT_EQ(cheques->rowCount(), 1);
        cheques->item(0, 0)->setCheckState(Qt::Checked);
        type(deposits, "txtNumeroDeposito", "445566");
        type(deposits, "txtEfectivo", "50,00");
        click(deposits, "cmdGuardar");
        EXPECT_EQ(cheques->rowCount(), 0) << dialogs.texts().join('|').toStdString();
        EXPECT_EQ(find<QTableWidget>(deposits, "grdDepositos")->rowCount(), 1);
    }

    ClosingScreen closing(db(), m_session, *m_printer);
    closing.show();
    // The float, the cash sale, less the withdrawal and the cash deposited: 100+116-16-50.
    EXPECT_EQ(find<QLineEdit>(closing, "txtEfectivoEsperado")->text(), "150,00");
    type(closing, "txtEfectivoContado", "150,00");
    // The reports go where the store keeps its reports, named after the closing and its day,
    // when the cashier takes what is offered.
    shell::loadSession(db(), shell::session());
    const QString pdf =
        m_home->filePath("REPORTES/Cierre de Caja " + today().toString("yyyy-MM-dd") + ".pdf");
    dialogs.expectQuestion("Confirma el cierre de caja...?", true);
    dialogs.expectQuestion("Desea Imprimir los Reportes del Cierre ?", true);
    dialogs.expectPrinter({});
    QSignalSpy done(&closing, &ClosingScreen::closingFinished);
    click(closing, "cmdAceptar");
    // The Z runs on the printer's thread: the screen is busy, not frozen.
    EXPECT_TRUE(closing.busy());
    EXPECT_FALSE(find<QPushButton>(closing, "cmdAceptar")->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, 20000);
    EXPECT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_TRUE(dialogs.texts().contains("El proceso de cierre de caja finalizo con exito...!"));
    EXPECT_TRUE(m_emulator.hasTicket("REPORTEZ_00000001.txt"));
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 2);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM DEPOSITOS").toInt(), 1);
    EXPECT_EQ(count("DIARIOREPORTEZ"), 1);
    EXPECT_TRUE(QFile::exists(pdf));
    // The local backup was made on its own thread before the screen finished.
    EXPECT_EQ(QDir(m_home->filePath("Respaldos")).entryList({"*_RESP.BAK"}).size(), 1);
    EXPECT_FALSE(closing.busy());
    EXPECT_EQ(find<QLineEdit>(closing, "txtStatus")->text(), "Cerrada");
}

TEST_F(CashScreensTest, RefusalsAreShownAndNothingIsPrinted) {
    test::ScriptedDialogs dialogs;
    {
        shell::SessionContext unconfigured;
        OpeningScreen opening(db(), unconfigured, *m_printer);
        EXPECT_EQ(dialogs.lastText(), "Debe configurar la caja...!");
        EXPECT_FALSE(find<QPushButton>(opening, "cmdAperturar")->isEnabled());
    }
    addDay(kSerial, today(), 1);
    exec("INSERT INTO HISTVENTAS (Numero, Serie, Fecha, Status) VALUES (1, ?, ?, 1)",
         {kSerial, QDateTime(today(), QTime(9, 0))});
    ClosingScreen closing(db(), m_session, *m_printer);
    closing.show();
    QSignalSpy done(&closing, &ClosingScreen::closingFinished);
    click(closing, "cmdAceptar");
    QTRY_COMPARE(done.count(), 1);
    EXPECT_FALSE(done.first().first().toBool());
    ASSERT_FALSE(dialogs.messages().isEmpty());
    EXPECT_EQ(dialogs.messages().last().title, "Facturas Congeladas");
    EXPECT_EQ(m_emulator.memory().zCounter, 0);

    // An opening over a day with sales not closed.
    OpeningScreen opening(db(), m_session, *m_printer);
    QSignalSpy opened(&opening, &OpeningScreen::openingFinished);
    click(opening, "cmdAperturar");
    QTRY_COMPARE(opened.count(), 1);
    EXPECT_EQ(dialogs.lastText(), "La apertura de Fecha " + dayText(today()) +
                                      " tiene su cierre pendiente...! No procede una nueva "
                                      "apertura...!");
}

} // namespace

namespace {

TEST_F(CashScreensTest, AnotherMachinesRegisterIsClosedFromHereWithAnAdministratorsKey) {
    test::ScriptedDialogs dialogs;
    // This machine is CAJA02; the register with the printer connected here is still selling.
    m_session.serial = "CAJA02";
    addDay(kSerial, today(), 0);
    sell(1, "100.00");
    addAdministratorAndCashier();

    ForeignClosingScreen screen(db(), m_session, *m_printer);
    screen.show();
    EXPECT_EQ(screen.objectName(), "frmCierreCajaForanea");
    auto* registers = find<QTableWidget>(screen, "grdCajas");
    ASSERT_EQ(registers->rowCount(), 1);
    EXPECT_EQ(registers->item(0, 0)->text(), kSerial);

    dialogs.expectAuthorisation("CAJ1", "1234");
    click(screen, "cmdSeleccionar");
    EXPECT_EQ(dialogs.lastText(), "Usuario no autorizado para cerrar la caja de otro equipo...!");
    EXPECT_EQ(screen.closing(), nullptr);
    const auto asked = std::find_if(dialogs.messages().begin(), dialogs.messages().end(),
                                    [](const auto& m) { return m.kind == "authorisation"; });
    ASSERT_NE(asked, dialogs.messages().end());
    EXPECT_EQ(asked->title, "frmClaveCierreForaneo");

    dialogs.expectAuthorisation("JEFE", "1234");
    click(screen, "cmdSeleccionar");
    ClosingScreen* closing = screen.closing();
    ASSERT_NE(closing, nullptr) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(closing->serial(), kSerial);
    EXPECT_EQ(find<QLineEdit>(*closing, "txtEfectivoEsperado")->text(), "216,00");
    type(*closing, "txtEfectivoContado", "216,00");
    dialogs.expectQuestion("Confirma el cierre de caja...?", true);
    dialogs.expectQuestion("Desea Imprimir los Reportes del Cierre ?", false);
    QSignalSpy done(closing, &ClosingScreen::closingFinished);
    // Enter in the last count closes, as "Aceptar" does.
    QTest::keyClick(find<QLineEdit>(*closing, "txtChequesContados"), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, 20000);
    EXPECT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    EXPECT_TRUE(m_emulator.hasTicket("REPORTEZ_00000001.txt"));
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA WHERE Serie = ?", {kSerial}).toInt(), 2);
    EXPECT_EQ(scalar("SELECT SerieImpresora FROM DIARIOREPORTEZ").toString(), kSerial);
    EXPECT_EQ(registers->rowCount(), 0);
}

} // namespace
