// The cash screens inside the main window: "Salir" closes the whole screen, frame included, and
// so do Escape and Ctrl+F4.
#include "pos/cash/cash_screens.h"

#include "shell/main_window/main_window.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/startup_fixture.h"
#include "shell/startup/user_settings.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTest>

using namespace orvo;

namespace {

class CashInMainWindowTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::session() = shell::SessionContext{};
        exec("INSERT INTO PARAMETROS (Nombre, NombreIdFiscal, IDEmpresa, ControlFactura) "
             "VALUES ('Tienda Demo', 'RIF', 'J-1234', 1)");
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, Status) VALUES (1, 'HKA', 1)");
        exec("INSERT INTO CAJAS (Serie, Numero, IdImpresoraFiscal, UltimaFactura, "
             "UltimaDevolucion) VALUES ('Z1B0000001', 1, 1, 0, 0)");
        shell::writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(shell::connectAtStartup());
        pos::cash::registerCashScreens();
        shell::settings::write("Serie", "Z1B0000001"); // this machine is the register
        m_window = std::make_unique<shell::MainWindow>();
        m_window->load();
        m_window->show();
    }
    void TearDown() override {
        m_window.reset();
        shell::closeMainConnection();
        DbTest::TearDown();
    }
    int screens() const { return int(m_window->mdiArea()->subWindowList().size()); }

    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
    std::unique_ptr<shell::MainWindow> m_window;
};

TEST_F(CashInMainWindowTest, SalirEscapeAndCtrlF4LeaveNoEmptyFrame) {
    EXPECT_TRUE(m_window->windowState() & Qt::WindowMaximized);
    for (const char* form : {"frmAperturaCaja", "frmSalidasCaja", "frmDepositos"}) {
        QWidget* screen = m_window->openForm(form);
        ASSERT_NE(screen, nullptr) << form;
        ASSERT_EQ(screens(), 1) << form;
        QTest::mouseClick(screen->findChild<QPushButton*>("cmdSalir"), Qt::LeftButton);
        QTRY_COMPARE(screens(), 0);
    }

    // Escape in a field that does not use it, then Ctrl+F4.
    QWidget* withdrawals = m_window->openForm("frmSalidasCaja");
    ASSERT_NE(withdrawals, nullptr);
    QTest::keyClick(withdrawals->findChild<QLineEdit*>("txtDescripcion"), Qt::Key_Escape);
    QTRY_COMPARE(screens(), 0);
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    withdrawals = m_window->openForm("frmSalidasCaja");
    ASSERT_NE(withdrawals, nullptr);
    withdrawals->findChild<QLineEdit*>("txtDescripcion")->setFocus();
    // Through the window, as the keyboard delivers it, so that shortcuts apply.
    QTest::keySequence(m_window->windowHandle(), QKeySequence(Qt::CTRL | Qt::Key_F4));
    QTRY_COMPARE(screens(), 0);
    EXPECT_TRUE(m_dialogs.messages().isEmpty()) << m_dialogs.texts().join('|').toStdString();
}

} // namespace
