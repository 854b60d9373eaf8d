// frmConfigurarCaja opened from the main window: saving binds this machine and the status bar
// names the register at once.
#include "pos/register/register_screens.h"

#include "shell/main_window/main_window.h"
#include "shell/record_form/record_screen.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/startup_fixture.h"
#include "shell/startup/user_settings.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using namespace orvo;
using Action = shell::RecordScreen::Action;

namespace {

class RegisterInMainWindowTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::session() = shell::SessionContext{};
        exec("INSERT INTO PARAMETROS (Nombre, NombreIdFiscal, IDEmpresa, ControlFactura) "
             "VALUES ('Tienda Demo', 'RIF', 'J-1234', 1)");
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, Status) VALUES (1, 'HKA', 1)");
        shell::writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(shell::connectAtStartup());
        pos::registers::registerScreens();
    }
    void TearDown() override {
        m_window.reset();
        shell::closeMainConnection();
        DbTest::TearDown();
    }

    test::HomeGuard m_home;
    std::unique_ptr<shell::MainWindow> m_window;
};

TEST_F(RegisterInMainWindowTest, SavingTheRegisterRefreshesTheStatusBar) {
    test::ScriptedDialogs dialogs;
    m_window = std::make_unique<shell::MainWindow>();
    m_window->load();
    m_window->show();
    auto* panel = m_window->findChild<QLabel*>("pnlCaja");
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->text().trimmed(), "(Estación sin configurar)");

    auto* screen = qobject_cast<shell::RecordScreen*>(m_window->openForm("frmConfigurarCaja"));
    ASSERT_NE(screen, nullptr);
    ASSERT_TRUE(screen->perform(Action::New));
    screen->findChild<QLineEdit*>("txtSerie")->setText("CAJA04");
    screen->findChild<QLineEdit*>("txtNumero")->setText("4");
    screen->findChild<QComboBox*>("cboImpresoraFiscal")->setCurrentText("HKA");
    ASSERT_TRUE(screen->perform(Action::Save)) << dialogs.texts().join('|').toStdString();

    EXPECT_EQ(panel->text().trimmed(), "(Caja Nº 4)");
    EXPECT_EQ(shell::session().serial, "CAJA04");
    EXPECT_EQ(shell::settings::read("Serie"), "CAJA04");
    EXPECT_EQ(count("CAJAS", "Serie = 'CAJA04' AND Numero = 4"), 1);
}

} // namespace
