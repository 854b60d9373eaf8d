// `orvo db init --demo` run as a newcomer runs it: the real program, a fresh application folder
// and a settings folder of its own.
#include "support/test_db.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct CommandRun {
    int exitCode = -1;
    QString output;
};

class DemoCommand : public ::testing::Test {
protected:
    void SetUp() override {
        if (orvo::test::testEngine() != orvo::db::Engine::Sqlite)
            GTEST_SKIP() << "the command's default store is the embedded one";
        ASSERT_TRUE(m_home.isValid() && m_config.isValid());
    }

    CommandRun orvo(const QStringList& args) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("ORVO_HOME", m_home.path());
        env.insert("XDG_CONFIG_HOME", m_config.path());
        p.setProcessEnvironment(env);
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.start(QStringLiteral(ORVO_BINARY), args);
        if (!p.waitForFinished(120000))
            return {};
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAll())};
    }

    QString boundSerial() const {
        QSettings settings(m_config.filePath("ServidorOrvo.ini"), QSettings::IniFormat);
        return settings.value("Orvo/Serie").toString();
    }

    // A statement on the store the command created.
    QVariant storeScalar(const QString& statement) const {
        QVariant result;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "demo_command_check");
            db.setDatabaseName(m_home.filePath("data/ORVO.sqlite"));
            EXPECT_TRUE(db.open());
            QSqlQuery q(db);
            if (q.exec(statement) && q.next())
                result = q.value(0);
        }
        QSqlDatabase::removeDatabase("demo_command_check");
        return result;
    }

    void storeExec(const QString& statement) const {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "demo_command_check");
            db.setDatabaseName(m_home.filePath("data/ORVO.sqlite"));
            EXPECT_TRUE(db.open());
            QSqlQuery q(db);
            EXPECT_TRUE(q.exec(statement));
        }
        QSqlDatabase::removeDatabase("demo_command_check");
    }

    QTemporaryDir m_home;
    QTemporaryDir m_config;
};

TEST_F(DemoCommand, CreatesTheDemoOnceBindsThisMachineAndAcceptsASecondRun) {
    const QStringList args{"db", "init", "--demo"};
    const CommandRun first = orvo(args);
    ASSERT_EQ(first.exitCode, 0) << first.output.toStdString();
    EXPECT_TRUE(first.output.contains(QString::fromUtf8("Tienda de demostración creada")))
        << first.output.toStdString();
    EXPECT_EQ(boundSerial(), "Z1B0000001");
    EXPECT_EQ(QSettings(m_config.filePath("ServidorOrvo.ini"), QSettings::IniFormat)
                  .value("Orvo/ImpresoraFactura")
                  .toString(),
              m_home.filePath("Facturas/factura.pdf"));
    const int articles = storeScalar("SELECT COUNT(*) FROM INVENTARIO").toInt();
    EXPECT_GE(articles, 300);

    const CommandRun second = orvo(args);
    ASSERT_EQ(second.exitCode, 0) << second.output.toStdString();
    EXPECT_TRUE(second.output.contains(QString::fromUtf8("ya está creada")))
        << second.output.toStdString();
    EXPECT_EQ(storeScalar("SELECT COUNT(*) FROM INVENTARIO").toInt(), articles);
    EXPECT_EQ(storeScalar("SELECT COUNT(*) FROM USUARIOS").toInt(), 2);
}

TEST_F(DemoCommand, RefusesAStoreThatAlreadyHasItsOwnData) {
    ASSERT_EQ(orvo({"db", "init"}).exitCode, 0);
    storeExec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) "
              "VALUES ('PEDRO', 'PEDRO PEREZ', 'x', 1)");
    const CommandRun run = orvo({"db", "init", "--demo"});
    EXPECT_EQ(run.exitCode, 1) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains(QString::fromUtf8(
        "La base de datos ya tiene datos; la tienda de demostración necesita una base vacía.")))
        << run.output.toStdString();
    EXPECT_EQ(storeScalar("SELECT COUNT(*) FROM INVENTARIO").toInt(), 0);
    EXPECT_TRUE(boundSerial().isEmpty()) << "a refused store binds nothing";
}

} // namespace
