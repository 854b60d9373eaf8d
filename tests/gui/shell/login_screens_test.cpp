#include "shell/login/attendance_screen.h"
#include "shell/login/change_password_screen.h"
#include "shell/main_window/calculator_screen.h"

#include "common/security/scrambler.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/startup_fixture.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

class LoginScreensTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        session() = SessionContext{};
        exec(QStringLiteral("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) "
                            "VALUES ('ADMIN', 'Administrador', ?, 1)"),
             {security::scramble(QStringLiteral("1234"))});
        writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(connectAtStartup());
        session().userCode = QStringLiteral("ADMIN");
    }
    void TearDown() override {
        closeMainConnection();
        DbTest::TearDown();
    }
    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
};

TEST_F(LoginScreensTest, ChangePasswordScreen) {
    ChangePasswordScreen s;
    s.show();
    const auto type = [&](const char* current, const char* next, const char* confirm) {
        s.findChild<QLineEdit*>(QStringLiteral("txtClave"))->setText(QString::fromUtf8(current));
        s.findChild<QLineEdit*>(QStringLiteral("TxtClaveNueva"))->setText(QString::fromUtf8(next));
        s.findChild<QLineEdit*>(QStringLiteral("TxtConfirmarClave"))
            ->setText(QString::fromUtf8(confirm));
        s.findChild<QPushButton*>(QStringLiteral("cmdAceptar"))->click();
    };
    type("0000", "abcd", "abcd");
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Clave invalida.... !"));
    type("1234", "abcd", "abc");
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Confirmación de clave invalida... !"));
    EXPECT_TRUE(s.isVisible());
    type("1234", "abcd", "abcd");
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("Cambio de clave realizada con exito.. !"));
    EXPECT_FALSE(s.isVisible());
    EXPECT_EQ(scalar(QStringLiteral("SELECT Pasword FROM USUARIOS WHERE CodUsuario = 'ADMIN'"))
                  .toString(),
              security::scramble(QStringLiteral("abcd")));
}

TEST_F(LoginScreensTest, AttendanceClockShowsTheResultAndClearsItself) {
    exec(QStringLiteral("INSERT INTO PARAMETROS (Nombre, DejarEditar) VALUES ('T', 1)"));
    exec(QStringLiteral("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre) VALUES "
                        "('V555', '001', 'Rosa Díaz')"));
    AttendanceScreen s;
    s.show();
    auto* card = s.findChild<QLineEdit*>(QStringLiteral("TxtCedula"));
    auto* condition = s.findChild<QLabel*>(QStringLiteral("lblCondicion"));
    QTest::keyClicks(card, QStringLiteral("V555"));
    QTest::keyClick(card, Qt::Key_Return);
    EXPECT_EQ(condition->text(), QStringLiteral("SU ENTRADA FUE REGISTRADA"));
    EXPECT_EQ(s.findChild<QLabel*>(QStringLiteral("lblNombre"))->text(),
              QStringLiteral("Rosa Díaz"));
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 1);
    EXPECT_FALSE(s.findChild<QLabel*>(QStringLiteral("lblHora"))->text().isEmpty());

    QTest::keyClicks(card, QStringLiteral("V999"));
    QTest::keyClick(card, Qt::Key_Return);
    EXPECT_EQ(condition->text(), QStringLiteral("TRABAJADOR NO REGISTRADO"));
    EXPECT_TRUE(s.findChild<QLabel*>(QStringLiteral("lblNombre"))->text().isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(condition->text().isEmpty(), 8000);
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 1);
}

TEST(CalculatorScreen, ChainsOperationsExactly) {
    CalculatorScreen c;
    for (const char* k : {"0", ".", "1", "+", "0", ".", "2", "="})
        c.press(QString::fromLatin1(k));
    EXPECT_EQ(c.display(), QStringLiteral("0.3"));
    for (const char* k : {"*", "3", "-", "1", "=", "/", "4", "="})
        c.press(QString::fromLatin1(k));
    EXPECT_EQ(c.display(), QStringLiteral("-0.025"));
    c.press(QStringLiteral("C"));
    EXPECT_EQ(c.display(), QStringLiteral("0"));
}
