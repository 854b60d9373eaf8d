#include "shell/startup/server_config_screen.h"

#include "common/db/sql.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/main_connection.h"
#include "shell/startup/startup_fixture.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

template <class T> T* child(QWidget* parent, const char* name) {
    T* w = parent->findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
}

} // namespace

class ServerConfigScreenTest : public DbTest {
protected:
    void TearDown() override {
        closeMainConnection();
        DbTest::TearDown();
    }
    void fill(ServerConfigScreen& s, const ServerConfig& c) {
        child<QLineEdit>(&s, "txtServidor")->setText(c.server());
        child<QLineEdit>(&s, "txtBaseDatos")->setText(c.database());
        child<QRadioButton>(&s, c.passwordAuth() ? "optAutenticacion_1" : "optAutenticacion_0")
            ->setChecked(true);
        child<QLineEdit>(&s, "txtUsuario")->setText(c.user());
        child<QLineEdit>(&s, "txtPassword")->setText(c.clearPassword());
    }
    void accept(ServerConfigScreen& s) { child<QPushButton>(&s, "cmdAceptar")->click(); }
    QString status(ServerConfigScreen& s) { return child<QLabel>(&s, "lblStatusConexion")->text(); }

    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
};

TEST_F(ServerConfigScreenTest, StartupModeRefusesIncompleteFieldsAndBadServers) {
    ServerConfigScreen s(ServerConfigScreen::Mode::Startup, ServerConfig{}, nullptr,
                         m_home.configPath(), m_home.dataDir());
    s.show();
    accept(s);
    ASSERT_EQ(m_dialogs.messages().size(), 1);
    EXPECT_EQ(m_dialogs.messages()[0].text,
              QStringLiteral("Debe escribir un nombre de servidor y de base de datos!"));
    EXPECT_EQ(m_dialogs.messages()[0].title, QStringLiteral("Información"));

    child<QLineEdit>(&s, "txtServidor")->setText(QStringLiteral("127.0.0.1:1"));
    child<QLineEdit>(&s, "txtBaseDatos")->setText(QStringLiteral("ORVO"));
    child<QRadioButton>(&s, "optAutenticacion_1")->setChecked(true);
    accept(s);
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Ingrese el usuario de SQL Server...!"));

    // A server that does not answer: no message, the screen stays, nothing is written.
    child<QLineEdit>(&s, "txtUsuario")->setText(QStringLiteral("orvo"));
    m_dialogs.clear();
    accept(s);
    EXPECT_TRUE(m_dialogs.messages().isEmpty());
    EXPECT_TRUE(s.isVisible());
    EXPECT_FALSE(QFile::exists(m_home.configPath()));
    EXPECT_FALSE(mainConnectionOpen());
}

TEST_F(ServerConfigScreenTest, StartupModeConnectsAndWritesTheFile) {
    const ServerConfig good = test::configFor(testDb().settings());
    ServerConfigScreen s(ServerConfigScreen::Mode::Startup, ServerConfig{}, nullptr,
                         m_home.configPath(), m_home.dataDir());
    s.show();
    fill(s, good);
    accept(s);
    EXPECT_TRUE(m_dialogs.messages().isEmpty());
    EXPECT_EQ(s.result(), QDialog::Accepted);
    EXPECT_TRUE(mainConnectionOpen());
    const ServerConfig written = readServerConfig(m_home.configPath());
    EXPECT_EQ(written.lines, good.lines);
    EXPECT_EQ(currentServerConfig().lines, good.lines);
}

TEST_F(ServerConfigScreenTest, ChangeModeTestsAsksAndReplacesTheConnection) {
    const ServerConfig good = test::configFor(testDb().settings());
    ServerConfigScreen s(ServerConfigScreen::Mode::Change, good, nullptr, m_home.configPath(),
                         m_home.dataDir());
    QSignalSpy changed(&s, &ServerConfigScreen::connectionChanged);
    s.show();
    // The fields come from the configuration, password decoded.
    EXPECT_EQ(child<QLineEdit>(&s, "txtBaseDatos")->text(), good.database());
    EXPECT_EQ(child<QLineEdit>(&s, "txtPassword")->text(), good.clearPassword());

    m_dialogs.expectQuestion(QStringLiteral("Desea cambiar la conexión de la base de datos...?"),
                             false);
    accept(s);
    EXPECT_TRUE(m_dialogs.allAnswered());
    EXPECT_EQ(m_dialogs.messages().last().title, QStringLiteral("Información"));
    EXPECT_FALSE(QFile::exists(m_home.configPath()));
    EXPECT_EQ(changed.count(), 0);

    m_dialogs.expectQuestion(QStringLiteral("Desea cambiar la conexión de la base de datos...?"),
                             true);
    accept(s);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(mainConnectionOpen());
    EXPECT_EQ(readServerConfig(m_home.configPath()).lines, good.lines);
    EXPECT_EQ(s.result(), QDialog::Accepted);

    // A server that does not answer leaves the connection as it was.
    ServerConfigScreen again(ServerConfigScreen::Mode::Change, good, nullptr, m_home.configPath(),
                             m_home.dataDir());
    again.show();
    child<QLineEdit>(&again, "txtServidor")->setText(QStringLiteral("127.0.0.1:1"));
    child<QRadioButton>(&again, "optAutenticacion_1")->setChecked(true);
    child<QLineEdit>(&again, "txtUsuario")->setText(QStringLiteral("orvo"));
    accept(again);
    EXPECT_TRUE(again.isVisible());
    EXPECT_FALSE(status(again).isEmpty());
    EXPECT_TRUE(mainConnectionOpen());
    EXPECT_EQ(readServerConfig(m_home.configPath()).lines, good.lines);
}

TEST_F(ServerConfigScreenTest, StartWithoutFileShowsTheScreenAndCancelEndsTheProgram) {
    QString seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        seen = modal->objectName();
        if (auto* cancel = modal->findChild<QPushButton*>(QStringLiteral("cmdCancelar")))
            cancel->click();
    });
    poll.start(10);
    EXPECT_FALSE(connectAtStartup());
    EXPECT_EQ(seen, QStringLiteral("frmConfServidor"));
    EXPECT_FALSE(mainConnectionOpen());

    // With a good file there is no screen at all.
    seen.clear();
    writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
    EXPECT_TRUE(connectAtStartup());
    EXPECT_TRUE(seen.isEmpty());
    EXPECT_TRUE(mainConnectionOpen());
}
