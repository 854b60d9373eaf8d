#include "shell/demo/demo_store.h"
#include "shell/login/login_screen.h"
#include "shell/main_window/main_window.h"
#include "shell/main_window/shell_screens.h"
#include "shell/record_form/master_data.h"

#include "common/db/sql.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/startup_fixture.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

QStringList leafForms(const QList<MenuNode>& nodes) {
    QStringList out;
    for (const MenuNode& n : nodes)
        out << (n.children.isEmpty() ? QStringList{n.form} : leafForms(n.children));
    return out;
}

} // namespace

// The shell on the demo store, as a newcomer meets it.
class DemoMenuTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        session() = SessionContext{};
        setLoggedIn(false);
        registerShellScreens();
        demo::seedDemoStore(db());
        demo::bindWorkstationToDemoRegister();
        writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(connectAtStartup());
    }
    void TearDown() override {
        m_window.reset();
        closeMainConnection();
        DbTest::TearDown();
    }
    void login(const char* user) {
        m_window->showLogin();
        LoginScreen* dlg = m_window->loginScreen();
        ASSERT_NE(dlg, nullptr);
        dlg->findChild<QLineEdit*>(QStringLiteral("txtUsuario"))
            ->setText(QString::fromLatin1(user));
        dlg->findChild<QLineEdit*>(QStringLiteral("txtClaveUsuario"))
            ->setText(QString::fromLatin1(demo::kDemoPassword));
        dlg->findChild<QPushButton*>(QStringLiteral("cmdAceptar"))->click();
        QTRY_VERIFY(isLoggedIn());
    }
    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
    std::unique_ptr<MainWindow> m_window;
};

TEST_F(DemoMenuTest, AdministratorAndCashierGetTheirMenus) {
    m_window = std::make_unique<MainWindow>();
    m_window->load();
    m_window->show();
    EXPECT_TRUE(m_window->findChild<QLabel*>(QStringLiteral("pnlCaja"))
                    ->text()
                    .startsWith(QStringLiteral("       (Caja Nº ")));
    login(demo::kAdminUser);
    const QStringList adminForms =
        leafForms(loadUserMenu(mainDb(), QString::fromLatin1(demo::kAdminUser), true));
    EXPECT_TRUE(adminForms.contains(QStringLiteral("frmControlAcceso")));
    EXPECT_GT(m_window->menuBar()->actions().size(), 3);

    // A shell screen from the demo menu opens inside the main window.
    const QString node =
        db::scalar(mainDb(), QStringLiteral("SELECT CodNodo FROM SEG WHERE Forma = ?"),
                   {QStringLiteral("frmCambiarClave")})
            .toString();
    m_window->openNode(node);
    ASSERT_EQ(m_window->mdiArea()->subWindowList().size(), 1);
    EXPECT_EQ(m_window->mdiArea()->subWindowList()[0]->widget()->objectName(),
              QStringLiteral("frmCambiarClave"));

    const QStringList cashierForms =
        leafForms(loadUserMenu(mainDb(), QString::fromLatin1(demo::kCashierUser), true));
    EXPECT_FALSE(cashierForms.isEmpty());
    EXPECT_LT(cashierForms.size(), adminForms.size());
    EXPECT_TRUE(m_dialogs.messages().isEmpty()) << m_dialogs.lastText().toStdString();
}

TEST_F(DemoMenuTest, EveryMasterDataScreenIsInTheAdministratorsMenu) {
    const QStringList adminForms =
        leafForms(loadUserMenu(mainDb(), QString::fromLatin1(demo::kAdminUser), true));
    for (const RecordTable& t : masterTables())
        EXPECT_TRUE(adminForms.contains(t.formName)) << t.formName.toStdString();
}

TEST_F(DemoMenuTest, ACashierReachesOnlyTheScreensHisGroupsGrantWhateverTheWay) {
    m_window = std::make_unique<MainWindow>();
    m_window->load();
    m_window->show();
    login(demo::kCashierUser);
    // The client form is not the cashier's: neither from the menu nor by a shortcut (the sale
    // screen opens it for an unknown client).
    EXPECT_EQ(m_window->openForm(QStringLiteral("frmClientes")), nullptr);
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Usuario no autorizado para esta opción...!"));
    EXPECT_TRUE(m_window->mdiArea()->subWindowList().isEmpty());
    EXPECT_FALSE(formGranted(mainDb(), QString::fromLatin1(demo::kCashierUser),
                             QStringLiteral("FRMCLIENTES")));
    EXPECT_TRUE(formGranted(mainDb(), QString::fromLatin1(demo::kCashierUser),
                            QStringLiteral("frmFacturacion")));
    EXPECT_TRUE(formGranted(mainDb(), QString::fromLatin1(demo::kAdminUser),
                            QStringLiteral("frmClientes")));
    // Nobody logged in reaches no screen of the menu.
    EXPECT_FALSE(formGranted(mainDb(), QString(), QStringLiteral("frmFacturacion")));
    // A screen that is only a part of others (the payments of a sale) is not in the menu.
    EXPECT_TRUE(formGranted(mainDb(), QString::fromLatin1(demo::kCashierUser),
                            QStringLiteral("frmPagosVenta")));

    // What he is granted opens.
    const QString node =
        db::scalar(mainDb(), QStringLiteral("SELECT CodNodo FROM SEG WHERE Forma = ?"),
                   {QStringLiteral("frmCambiarClave")})
            .toString();
    m_window->openNode(node);
    EXPECT_EQ(m_window->mdiArea()->subWindowList().size(), 1);
}
