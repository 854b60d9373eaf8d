#include "shell/main_window/main_window.h"

#include "common/db/sql.h"
#include "common/security/scrambler.h"
#include "shell/login/login_screen.h"
#include "shell/main_window/menu_fixture.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/startup_fixture.h"
#include "shell/startup/user_settings.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSysInfo>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

// Screens the test menu opens: plain widgets that can claim to be editing.
void registerTestScreens() {
    for (const char* name : {"frmPruebaFacturacion", "frmPruebaDevolucion"}) {
        const QString form = QString::fromLatin1(name);
        ScreenRegistry::instance().add(form, [form](QWidget* parent) {
            auto* w = new QWidget(parent);
            w->setObjectName(form);
            w->setWindowTitle(form.mid(9));
            return w;
        });
    }
}

QString panelText(MainWindow& w, const char* name) {
    auto* l = w.findChild<QLabel*>(QString::fromLatin1(name));
    return l ? l->text() : QStringLiteral("<no panel>");
}

QStringList menuTitles(MainWindow& w) {
    QStringList out;
    for (QAction* a : w.menuBar()->actions())
        out << a->text();
    return out;
}

QStringList actionTexts(QMenu* m) {
    QStringList out;
    for (QAction* a : m->actions())
        out << (a->isSeparator() ? QStringLiteral("_") : a->text().remove(u'&'));
    return out;
}

QMenu* menuNamed(MainWindow& w, QString title) {
    title.remove(u'&');
    for (QAction* a : w.menuBar()->actions())
        if (a->text().remove(u'&') == title)
            return a->menu();
    return nullptr;
}

} // namespace

class MainWindowTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        session() = SessionContext{};
        setLoggedIn(false);
        registerTestScreens();
        exec(QStringLiteral("INSERT INTO PARAMETROS (Nombre, NombreIdFiscal, IDEmpresa, Tipo) "
                            "VALUES (?, ?, ?, 1)"),
             {QStringLiteral("Tienda Demo"), QStringLiteral("RIF"), QStringLiteral("J-1234")});
        const QString user = QStringLiteral(
            "INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES (?,?,?,?)");
        exec(user, {QStringLiteral("CAJERO1"), QStringLiteral("Cajero Uno"),
                    security::scramble(QStringLiteral("1234")), 1});
        exec(user, {QStringLiteral("OTRO"), QStringLiteral("Otro Cajero"),
                    security::scramble(QStringLiteral("1234")), 1});
        test::insertMenuData(
            [this](const QString& sql, std::initializer_list<QVariant> v) { exec(sql, v); });
        writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(connectAtStartup());
    }
    void TearDown() override {
        m_window.reset();
        closeMainConnection();
        DbTest::TearDown();
    }
    MainWindow& window() {
        if (!m_window) {
            m_window = std::make_unique<MainWindow>();
            m_window->load();
            m_window->show();
        }
        return *m_window;
    }
    void login(const QString& user, const QString& password, bool remember = false) {
        window().showLogin();
        LoginScreen* dlg = window().loginScreen();
        ASSERT_NE(dlg, nullptr);
        dlg->findChild<QLineEdit*>(QStringLiteral("txtUsuario"))->setText(user);
        dlg->findChild<QLineEdit*>(QStringLiteral("txtClaveUsuario"))->setText(password);
        dlg->findChild<QCheckBox*>(QStringLiteral("Check1"))->setChecked(remember);
        dlg->findChild<QPushButton*>(QStringLiteral("cmdAceptar"))->click();
    }
    int openScreens() { return int(window().mdiArea()->subWindowList().size()); }
    // Logged in, with a screen modifying a record.
    QWidget* modifyingScreen() {
        login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
        if (!QTest::qWaitFor([] { return isLoggedIn(); }))
            return nullptr;
        QWidget* screen = window().openForm(QStringLiteral("frmPruebaFacturacion"));
        if (screen) {
            screen->setProperty("orvoEditing", true);
            screen->setProperty("orvoMode", QStringLiteral("modifying"));
        }
        return screen;
    }

    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
    std::unique_ptr<MainWindow> m_window;
};

TEST_F(MainWindowTest, LoadShowsCaptionPanelsAndOnlyTheFixedMenus) {
    MainWindow& w = window();
    EXPECT_EQ(w.objectName(), QStringLiteral("frmPrincipal"));
    EXPECT_TRUE(w.windowTitle().startsWith(
        QStringLiteral("Vandu  Empresa : Tienda Demo            RIF J-1234    -    (Ver.-")));
    EXPECT_EQ(panelText(w, "pnlUsuario"), QStringLiteral("USUARIO: "));
    EXPECT_EQ(w.findChild<QLabel*>(QStringLiteral("pnlUsuario"))->toolTip(),
              QStringLiteral("Nombre del usuario"));
    EXPECT_EQ(panelText(w, "pnlEquipo"), QSysInfo::machineHostName());
    EXPECT_EQ(w.findChild<QLabel*>(QStringLiteral("pnlEquipo"))->toolTip(),
              QStringLiteral("Nombre del equipo"));
    EXPECT_EQ(panelText(w, "pnlCaja"), QStringLiteral("       (Estación sin configurar)"));
    EXPECT_EQ(panelText(w, "pnlMensaje"), QStringLiteral("Linea de Mensajes"));
    EXPECT_TRUE(panelText(w, "pnlServidor").startsWith(QStringLiteral("Servidor SQL:")));
    EXPECT_EQ(menuTitles(w), (QStringList{QStringLiteral("&Sistema"), QStringLiteral("A&yuda")}));
    EXPECT_NE(w.findChild<QToolBar*>(QStringLiteral("tlbregistro")), nullptr);
    // The version of this executable was recorded.
    EXPECT_EQ(count(QStringLiteral("VERSIONEJECUTABLE")), 1);
    EXPECT_TRUE(m_dialogs.messages().isEmpty());
}

TEST_F(MainWindowTest, LoginRefusalsThenTheUsersMenu) {
    login(QStringLiteral("CAJERO1"), QStringLiteral("9999"));
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Usuario ó clave inválida...!"));
    ASSERT_NE(window().loginScreen(), nullptr);
    EXPECT_TRUE(window().loginScreen()->isVisible());
    EXPECT_EQ(window().loginScreen()->windowTitle(), QStringLiteral("Iniciar sesión en Vandu"));
    EXPECT_FALSE(isLoggedIn());

    login(QStringLiteral(" CAJERO1 "), QStringLiteral("1234"), true);
    QTRY_VERIFY(window().loginScreen() == nullptr);
    EXPECT_TRUE(isLoggedIn());
    EXPECT_EQ(session().userCode, QStringLiteral("CAJERO1"));
    EXPECT_EQ(panelText(window(), "pnlUsuario"), QStringLiteral("USUARIO: Cajero Uno"));
    EXPECT_EQ(settings::read(QStringLiteral("Login")), QStringLiteral("CAJERO1"));

    EXPECT_EQ(menuTitles(window()),
              (QStringList{QStringLiteral("&Ventas"), QStringLiteral("&Clave"),
                           QStringLiteral("&Sistema"), QStringLiteral("A&yuda")}));
    // Alt and the title's letter open a menu from the keyboard.
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    QTest::keyClick(window().windowHandle(), Qt::Key_V, Qt::AltModifier);
    QTRY_VERIFY(menuNamed(window(), QStringLiteral("Ventas"))->isVisible());
    menuNamed(window(), QStringLiteral("Ventas"))->close();
    EXPECT_EQ(actionTexts(menuNamed(window(), QStringLiteral("Ventas"))),
              (QStringList{QStringLiteral("Devoluciones"), QStringLiteral("Facturación"),
                           QStringLiteral("_")}));
    // And inside the menu each entry answers its own letter.
    QStringList letters;
    for (QAction* a : menuNamed(window(), QStringLiteral("Ventas"))->actions())
        if (!a->isSeparator())
            letters << QKeySequence::mnemonic(a->text()).toString();
    EXPECT_EQ(letters, (QStringList{QStringLiteral("Alt+D"), QStringLiteral("Alt+F")}));
    QStringList keys;
    for (QMenu* m : {menuNamed(window(), QStringLiteral("&Sistema")),
                     menuNamed(window(), QStringLiteral("A&yuda"))})
        for (QAction* a : m->actions())
            if (!a->isSeparator())
                keys << a->objectName() + u'=' + a->text();
    EXPECT_EQ(keys,
              (QStringList{QStringLiteral("A1=Actualizar opciones de menú"),
                           QStringLiteral("A2=Estructura del menú"),
                           QStringLiteral("A3=Cambiar a menú explorador"),
                           QStringLiteral("A4=Fuente del menú principal..."),
                           QStringLiteral("A5=Calculadora..."), QStringLiteral("A6=Nueva sesión"),
                           QStringLiteral("A7=Salir del sistema"), QStringLiteral("B1=Ayuda..."),
                           QStringLiteral("B2=Acerca de...")}));

    // The next time the user code is offered and the password has the focus.
    LoginScreen next;
    EXPECT_EQ(next.findChild<QLineEdit*>(QStringLiteral("txtUsuario"))->text(),
              QStringLiteral("CAJERO1"));
    EXPECT_TRUE(next.findChild<QCheckBox*>(QStringLiteral("Check1"))->isChecked());
}

TEST_F(MainWindowTest, InactiveUserIsRefused) {
    exec(QStringLiteral("UPDATE USUARIOS SET Status = 0 WHERE CodUsuario = 'OTRO'"));
    login(QStringLiteral("OTRO"), QStringLiteral("1234"));
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Usuario inactivo...!"));
    EXPECT_FALSE(isLoggedIn());
    login(QStringLiteral(""), QStringLiteral(""));
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Introduzca el usuario y su clave de acceso...!"));
}

TEST_F(MainWindowTest, ScreensOpenOnceAndAMissingScreenKeepsTheMenuUsable) {
    login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    QMenu* ventas = menuNamed(window(), QStringLiteral("Ventas"));
    ASSERT_NE(ventas, nullptr);
    for (QAction* a : ventas->actions())
        if (a->objectName() == QLatin1String("VEN01"))
            a->trigger();
    ASSERT_EQ(openScreens(), 1);
    QWidget* first = window().mdiArea()->subWindowList()[0]->widget();
    EXPECT_EQ(first->objectName(), QStringLiteral("frmPruebaFacturacion"));

    window().openNode(QStringLiteral("VEN02"));
    EXPECT_EQ(openScreens(), 2);
    window().openNode(QStringLiteral("VEN01"));
    EXPECT_EQ(openScreens(), 2);
    EXPECT_EQ(window().mdiArea()->activeSubWindow()->widget(), first);

    // Not granted ('N' from every group) or a folder: nothing opens, nothing is said.
    window().openNode(QStringLiteral("VEN03"));
    window().openNode(QStringLiteral("VEN"));
    EXPECT_EQ(openScreens(), 2);
    EXPECT_TRUE(m_dialogs.messages().isEmpty());

    window().openNode(QStringLiteral("CFG"));
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("La pantalla 'frmNoExiste' no existe en el sistema...!"));
    EXPECT_EQ(openScreens(), 2);
    window().mdiArea()->closeAllSubWindows();
    QTRY_COMPARE(openScreens(), 0);
    window().openNode(QStringLiteral("VEN02"));
    EXPECT_EQ(openScreens(), 1);
}

TEST_F(MainWindowTest, MenuPresentationSwitchesAndIsRemembered) {
    login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    QAction* toTree = window().findChild<QAction*>(QStringLiteral("A3"));
    ASSERT_NE(toTree, nullptr);
    toTree->trigger();
    EXPECT_EQ(settings::read(QStringLiteral("OpcionMenu")), QStringLiteral("1"));
    auto* tree = window().findChild<QTreeWidget*>(QStringLiteral("tvArbol"));
    ASSERT_NE(tree, nullptr);
    EXPECT_TRUE(tree->isVisible());
    QStringList top;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        top << tree->topLevelItem(i)->text(0);
    EXPECT_EQ(top, (QStringList{QStringLiteral("Ventas"), QStringLiteral("Clave"),
                                QStringLiteral("Cambiar a menú XP")}));
    // No separators in the tree.
    EXPECT_EQ(tree->topLevelItem(0)->childCount(), 2);
    EXPECT_EQ(menuTitles(window()),
              (QStringList{QStringLiteral("&Sistema"), QStringLiteral("A&yuda")}));

    // A leaf of the tree opens its screen.
    emit tree->itemActivated(tree->topLevelItem(0)->child(1), 0);
    EXPECT_EQ(openScreens(), 1);

    // The choice survives a restart.
    m_window.reset();
    window();
    login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    EXPECT_EQ(window().menuPresentation(), kMenuTree);
    tree = window().findChild<QTreeWidget*>(QStringLiteral("tvArbol"));
    emit tree->itemActivated(tree->topLevelItem(tree->topLevelItemCount() - 1), 0);
    EXPECT_EQ(settings::read(QStringLiteral("OpcionMenu")), QStringLiteral("0"));
    EXPECT_FALSE(tree->isVisible());
    EXPECT_TRUE(menuTitles(window()).contains(QStringLiteral("&Ventas")));
}

TEST_F(MainWindowTest, SessionButtonEndsTheSessionOnlyWhenConfirmed) {
    login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    QAction* sesion = window().findChild<QAction*>(QStringLiteral("Sesion"));
    ASSERT_NE(sesion, nullptr);

    m_dialogs.expectQuestion(QStringLiteral("Desea cerrar la sesión del usuario 'Cajero Uno'...?"),
                             false);
    sesion->trigger();
    EXPECT_TRUE(isLoggedIn());
    EXPECT_EQ(m_dialogs.messages().last().title, QStringLiteral("Nueva sesión"));

    m_dialogs.expectQuestion(QStringLiteral("Desea cerrar la sesión"), true);
    sesion->trigger();
    EXPECT_FALSE(isLoggedIn());
    EXPECT_TRUE(session().userCode.isEmpty());
    EXPECT_EQ(panelText(window(), "pnlMensaje"), QStringLiteral("Linea de Mensajes"));
    EXPECT_EQ(menuTitles(window()),
              (QStringList{QStringLiteral("&Sistema"), QStringLiteral("A&yuda")}));
    ASSERT_NE(window().loginScreen(), nullptr);

    // Another user gets his own menu.
    window().loginScreen()->close();
    login(QStringLiteral("OTRO"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    EXPECT_EQ(actionTexts(menuNamed(window(), QStringLiteral("Ventas"))),
              (QStringList{QStringLiteral("Facturación"), QStringLiteral("_")}));
}

TEST_F(MainWindowTest, LeavingAsksAboutEditingScreensThenAboutLeaving) {
    QWidget* screen = modifyingScreen();
    ASSERT_NE(screen, nullptr);

    m_dialogs.expectQuestion(QStringLiteral("Esta modificando un registro en Facturacion ¿Desea "
                                            "cancelar la operación?"),
                             false);
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(window().isVisible());

    screen->setProperty("orvoMode", QStringLiteral("adding"));
    m_dialogs.expectQuestion(QStringLiteral("Esta incluyendo un nuevo registro en Facturacion "
                                            "¿Desea cancelar la operación?"),
                             true);
    m_dialogs.expectQuestion(QStringLiteral("¿Desea abandonar el sistema?"), false);
    EXPECT_FALSE(window().close());
    EXPECT_EQ(m_dialogs.messages().last().title, QStringLiteral("Salir Vandu"));
    EXPECT_EQ(openScreens(), 1);

    m_dialogs.expectQuestion(QStringLiteral("Esta incluyendo"), true);
    m_dialogs.expectQuestion(QStringLiteral("¿Desea abandonar el sistema?"), true);
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(m_dialogs.allAnswered());
}

TEST_F(MainWindowTest, ClosingOneEditingScreenAsksFirst) {
    EXPECT_TRUE(window().windowState() & Qt::WindowMaximized);
    QWidget* screen = modifyingScreen();
    ASSERT_NE(screen, nullptr);

    // Escape that the screen does not use, then Ctrl+F4: each asks; "No" keeps the screen.
    m_dialogs.expectQuestion(QStringLiteral("Esta modificando un registro en Facturacion ¿Desea "
                                            "cancelar la operación?"),
                             false);
    QTest::keyClick(screen, Qt::Key_Escape);
    EXPECT_EQ(openScreens(), 1);
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    screen->setFocus();
    m_dialogs.expectQuestion(QStringLiteral("Esta modificando"), true);
    QTest::keySequence(window().windowHandle(), QKeySequence(Qt::CTRL | Qt::Key_F4));
    QTRY_COMPARE(openScreens(), 0);
    EXPECT_TRUE(m_dialogs.allAnswered());
}

TEST_F(MainWindowTest, PendingFilesLightTheirButtons) {
    MainWindow& w = window();
    login(QStringLiteral("CAJERO1"), QStringLiteral("1234"));
    QTRY_VERIFY(isLoggedIn());
    EXPECT_TRUE(w.pendingNotice().isEmpty());
    EXPECT_FALSE(w.findChild<QAction*>(QStringLiteral("Transferencias"))->isEnabled());
    QDir(m_home.path()).mkpath(QStringLiteral("Recibe"));
    for (const char* f : {"Recibe/ResuTran.DBF", "Recibe/MoviTran.DBF"}) {
        QFile file(m_home.path() + u'/' + QString::fromLatin1(f));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    w.checkPendingFiles();
    EXPECT_EQ(w.pendingNotice(), QStringLiteral("Archivos pendientes en Tienda Demo\n"
                                                "- Existen transferencias pendientes por cargar."));
    EXPECT_TRUE(w.findChild<QAction*>(QStringLiteral("Transferencias"))->isEnabled());
    EXPECT_FALSE(w.findChild<QAction*>(QStringLiteral("Compras"))->isEnabled());
    EXPECT_TRUE(panelText(w, "pnlMensaje").startsWith(QStringLiteral("Archivos pendientes en")));
}

TEST_F(MainWindowTest, ExternalBackupReminderOnTheDatabaseHost) {
    exec(QStringLiteral("UPDATE PARAMETROS SET Tipo = 2, NombreEquipo = ?"),
         {QSysInfo::machineHostName().toUpper()});
    const QString target = m_home.path() + QStringLiteral("/usb/copia");
    m_dialogs.expectFileName(target);
    window();
    ASSERT_GE(m_dialogs.messages().size(), 1);
    EXPECT_EQ(m_dialogs.messages()[0].text,
              QStringLiteral("Debe realizar respaldo en un dispositivo externo USB...!"));
    EXPECT_EQ(m_dialogs.messages()[0].title, QStringLiteral("Repaldo externo"));
    EXPECT_TRUE(QFile::exists(target + QStringLiteral("_RESP.BAK")));
    EXPECT_GT(QFile(target + QStringLiteral("_RESP.BAK")).size(), 0);
    EXPECT_EQ(settings::read(QStringLiteral("RespaldoExternoUltimoCierre")), QStringLiteral("1"));

    // Made once: the next start does not ask again.
    m_window.reset();
    m_dialogs.clear();
    window();
    EXPECT_TRUE(m_dialogs.messages().isEmpty());
}
