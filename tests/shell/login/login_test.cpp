#include "shell/login/login.h"

#include "common/security/scrambler.h"
#include "support/test_db.h"

#include <QRegularExpression>
#include <QVariant>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

class LoginTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        addUser(QStringLiteral("ADMIN"), QStringLiteral("  Administrador "), QStringLiteral("1234"),
                1);
        addUser(QStringLiteral("VIEJO"), QStringLiteral("Usuario retirado"), QStringLiteral("1234"),
                0);
    }
    void addUser(const QString& code, const QString& name, const QString& password, int status) {
        exec(QStringLiteral("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) "
                            "VALUES (?, ?, ?, ?)"),
             {code, name, security::scramble(password), status});
    }
    QString refusal(const QString& user, const QString& password) const {
        try {
            checkLogin(db(), user, password);
        } catch (const LoginRefused& e) {
            EXPECT_EQ(e.title(), QStringLiteral("Información"));
            return e.text();
        }
        return {};
    }
    QString changeRefusal(const QString& current, const QString& next, const QString& confirm) {
        try {
            changePassword(db(), QStringLiteral("ADMIN"), current, next, confirm);
        } catch (const LoginRefused& e) {
            return e.text();
        }
        return {};
    }
    QString storedPassword() const {
        return scalar(QStringLiteral("SELECT Pasword FROM USUARIOS WHERE CodUsuario = 'ADMIN'"))
            .toString();
    }
};

TEST_F(LoginTest, AcceptsTheTrimmedUserWithTheRightPassword) {
    const LoggedUser u = checkLogin(db(), QStringLiteral("  ADMIN "), QStringLiteral(" 1234 "));
    EXPECT_EQ(u.code, QStringLiteral("ADMIN"));
    EXPECT_EQ(u.name, QStringLiteral("Administrador"));
}

TEST_F(LoginTest, RefusesWithTheSystemsMessages) {
    EXPECT_EQ(refusal(QStringLiteral("   "), QStringLiteral("1234")),
              QStringLiteral("Introduzca el usuario y su clave de acceso...!"));
    EXPECT_EQ(refusal(QStringLiteral("ADMIN"), QStringLiteral("  ")),
              QStringLiteral("Introduzca el usuario y su clave de acceso...!"));
    EXPECT_EQ(refusal(QStringLiteral("ADMIN"), QStringLiteral("4321")),
              QStringLiteral("Usuario ó clave inválida...!"));
    EXPECT_EQ(refusal(QStringLiteral("NADIE"), QStringLiteral("1234")),
              QStringLiteral("Usuario ó clave inválida...!"));
    // A quote in what is typed is just a character.
    EXPECT_EQ(refusal(QStringLiteral("ADMIN' OR '1'='1"), QStringLiteral("x' OR '1'='1")),
              QStringLiteral("Usuario ó clave inválida...!"));
    EXPECT_EQ(refusal(QStringLiteral("VIEJO"), QStringLiteral("1234")),
              QStringLiteral("Usuario inactivo...!"));
}

TEST_F(LoginTest, PasswordChangeChecksTheCurrentOneAndTheConfirmation) {
    const QString before = storedPassword();
    EXPECT_EQ(changeRefusal(QStringLiteral("9999"), QStringLiteral("abcd"), QStringLiteral("abcd")),
              QStringLiteral("Clave invalida.... !"));
    EXPECT_EQ(changeRefusal(QStringLiteral("1234"), QStringLiteral("abcd"), QStringLiteral("abce")),
              QStringLiteral("Confirmación de clave invalida... !"));
    EXPECT_EQ(storedPassword(), before);

    // The same password again is a valid change.
    EXPECT_TRUE(
        changeRefusal(QStringLiteral("1234"), QStringLiteral("1234"), QStringLiteral("1234"))
            .isEmpty());
    EXPECT_EQ(storedPassword(), before);

    EXPECT_TRUE(
        changeRefusal(QStringLiteral("1234"), QStringLiteral("n'ueva"), QStringLiteral("n'ueva"))
            .isEmpty());
    EXPECT_EQ(storedPassword(), security::scramble(QStringLiteral("n'ueva")));
    EXPECT_NO_THROW(checkLogin(db(), QStringLiteral("ADMIN"), QStringLiteral("n'ueva")));
    EXPECT_THROW(checkLogin(db(), QStringLiteral("ADMIN"), QStringLiteral("1234")), LoginRefused);
    // Other users are untouched.
    EXPECT_EQ(scalar(QStringLiteral("SELECT Pasword FROM USUARIOS WHERE CodUsuario = 'VIEJO'"))
                  .toString(),
              security::scramble(QStringLiteral("1234")));
}

TEST_F(LoginTest, AnEmptyNewPasswordIsRefusedAndBlanksAroundOneAreNotKept) {
    const QString before = storedPassword();
    EXPECT_EQ(changeRefusal(QStringLiteral("1234"), QString(), QString()),
              QStringLiteral("¡Debe introducir la clave nueva!"));
    EXPECT_EQ(changeRefusal(QStringLiteral("1234"), QStringLiteral("   "), QStringLiteral("   ")),
              QStringLiteral("¡Debe introducir la clave nueva!"));
    EXPECT_EQ(storedPassword(), before);
    // The login trims what is typed: a new password typed with blanks still logs in.
    EXPECT_TRUE(
        changeRefusal(QStringLiteral(" 1234"), QStringLiteral(" clave "), QStringLiteral("clave"))
            .isEmpty());
    EXPECT_NO_THROW(checkLogin(db(), QStringLiteral("ADMIN"), QStringLiteral("clave")));
}

TEST_F(LoginTest, AnyPasswordThatCanBeTypedIsStoredWholeAndOnlyItLogsIn) {
    // Spanish letters, the euro sign, a character outside the single-byte set, and the longest
    // password the scrambling takes, made of characters whose codes have three digits.
    const QStringList passwords = {QStringLiteral("Año€ñÑ¿¡"), QStringLiteral("clave→ω"),
                                   QString(255, QChar(u'ñ'))};
    for (const QString& password : passwords) {
        SCOPED_TRACE(password.left(20).toStdString());
        ASSERT_TRUE(changeRefusal(QStringLiteral("1234"), password, password).isEmpty());
        EXPECT_EQ(security::unscramble(storedPassword()), password);
        EXPECT_NO_THROW(checkLogin(db(), QStringLiteral("ADMIN"), password));
        // Characters outside the single-byte set no longer all stand for "?".
        const QString folded = QString(password).replace(QRegularExpression("[→ω]"), "?");
        if (folded != password) {
            EXPECT_THROW(checkLogin(db(), QStringLiteral("ADMIN"), folded), LoginRefused);
        }
        changePassword(db(), QStringLiteral("ADMIN"), password, QStringLiteral("1234"),
                       QStringLiteral("1234"));
    }
    // The euro sign keeps the single-byte code (128) the stores' files have always held for it.
    EXPECT_EQ(security::scramble(QStringLiteral("€")), QStringLiteral("$TR?"));
}
