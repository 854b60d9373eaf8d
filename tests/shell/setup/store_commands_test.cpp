// `orvo db init` and `orvo server-config` run as an operator runs them: the real program, an
// application folder and a settings folder per workstation, answers typed on standard input.
#include "common/db/sql.h"
#include "common/security/scrambler.h"
#include "shell/login/login.h"
#include "shell/startup/server_config.h"
#include "shell/startup/startup_fixture.h"
#include "support/test_db.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using orvo::test::DbTest;

namespace {

struct CommandRun {
    int exitCode = -1;
    QString output;
};

// A workstation: its own per-user settings, sharing the store's application folder or not.
struct Station {
    QTemporaryDir config;

    QString serie() const {
        return QSettings(config.filePath("ServidorOrvo.ini"), QSettings::IniFormat)
            .value("Orvo/Serie")
            .toString();
    }
    void setSerie(const QString& serie) const {
        QSettings s(config.filePath("ServidorOrvo.ini"), QSettings::IniFormat);
        s.setValue("Orvo/Serie", serie);
    }
};

class StoreCommands : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        ASSERT_TRUE(m_home.isValid());
        QDir(m_home.path()).mkpath("data");
    }

    // data/srvsql.txt of the application folder names this test's database.
    void pointAtTestDatabase() const {
        shell::writeServerConfig(m_home.filePath("data/srvsql.txt"),
                                 test::configFor(testDb().settings()));
    }

    CommandRun orvo(const QStringList& args, const Station& station,
                    const QByteArray& input = {}) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("ORVO_HOME", m_home.path());
        env.insert("XDG_CONFIG_HOME", station.config.path());
        p.setProcessEnvironment(env);
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.start(QStringLiteral(ORVO_BINARY), args);
        p.write(input);
        p.closeWriteChannel();
        if (!p.waitForFinished(120000))
            return {};
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAll())};
    }

    QTemporaryDir m_home;
};

} // namespace

TEST_F(StoreCommands, DbInitWithoutTheDemoGivesAStoreItsAdministrator) {
    pointAtTestDatabase();
    Station station;
    const CommandRun bare = orvo({"db", "init"}, station);
    ASSERT_EQ(bare.exitCode, 0) << bare.output.toStdString();
    EXPECT_TRUE(bare.output.contains("La tienda no tiene usuarios: cree el administrador con "
                                     "'orvo db init --admin CODIGO'"))
        << bare.output.toStdString();

    // A mistyped company RIF stops everything before a password is asked or a row is written.
    const CommandRun badRif =
        orvo({"db", "init", "--admin", "JEFE", "--rif", "123"}, station, "s3creta\n");
    EXPECT_EQ(badRif.exitCode, 1);
    EXPECT_EQ(count("USUARIOS"), 0);

    // Scripts pipe the password in.
    const CommandRun admin = orvo({"db", "init", "--admin", "JEFE", "--nombre", "ANA JEFE",
                                   "--empresa", "LA ESQUINA, C.A.", "--rif", "J-29876543-1"},
                                  station, "s3creta\n");
    ASSERT_EQ(admin.exitCode, 0) << admin.output.toStdString();
    EXPECT_TRUE(admin.output.contains("Administrador JEFE creado")) << admin.output.toStdString();
    EXPECT_FALSE(admin.output.contains("s3creta")) << "the password is never echoed";
    EXPECT_EQ(shell::checkLogin(db(), "JEFE", "s3creta").name, "ANA JEFE");
    EXPECT_EQ(scalar("SELECT IDEmpresa FROM PARAMETROS").toString(), "J-29876543-1");
    EXPECT_FALSE(orvo({"db", "init"}, station).output.contains("no tiene usuarios"));

    const CommandRun noPassword = orvo({"db", "init", "--admin", "OTRO"}, station, "");
    EXPECT_EQ(noPassword.exitCode, 1);
    EXPECT_TRUE(noPassword.output.contains(QString::fromUtf8("No se recibió la clave")))
        << noPassword.output.toStdString();
    EXPECT_EQ(count("USUARIOS"), 1);
}

TEST_F(StoreCommands, DemoRunFromAnotherStationNeverTakesOverARegister) {
    pointAtTestDatabase();
    Station first, second, third;
    const CommandRun created = orvo({"db", "init", "--demo"}, first);
    ASSERT_EQ(created.exitCode, 0) << created.output.toStdString();
    EXPECT_EQ(first.serie(), "Z1B0000001");

    // The store is there: a second station is told to configure its own register.
    const CommandRun again = orvo({"db", "init", "--demo"}, second);
    ASSERT_EQ(again.exitCode, 0) << again.output.toStdString();
    EXPECT_TRUE(again.output.contains(QString::fromUtf8("ya está creada")))
        << again.output.toStdString();
    EXPECT_TRUE(again.output.contains("configure la caja de este equipo"))
        << again.output.toStdString();
    EXPECT_TRUE(second.serie().isEmpty());

    // A station that already is a register stays that register.
    exec("INSERT INTO CAJAS (Serie, Numero, IdImpresoraFiscal, UltimaFactura, UltimaDevolucion) "
         "VALUES ('Z1B0000002', 2, 1, 0, 0)");
    third.setSerie("Z1B0000002");
    const CommandRun kept = orvo({"db", "init", "--demo"}, third);
    ASSERT_EQ(kept.exitCode, 0) << kept.output.toStdString();
    EXPECT_TRUE(kept.output.contains("Este equipo es la caja Z1B0000002."))
        << kept.output.toStdString();
    EXPECT_EQ(third.serie(), "Z1B0000002");
    EXPECT_EQ(first.serie(), "Z1B0000001");
    EXPECT_EQ(count("USUARIOS"), 2) << "the demo was written once";
}

TEST_F(StoreCommands, ServerConfigWritesTheScrambledPasswordOnlyForAServerThatAnswers) {
    if (testDb().engine() != db::Engine::Postgres)
        GTEST_SKIP() << "a store server is PostgreSQL";
    const db::ConnectionSettings pg = testDb().settings();
    const QString server = pg.host + u':' + QString::number(pg.port);
    Station station;
    const QString file = m_home.filePath("data/srvsql.txt");

    const CommandRun missing =
        orvo({"server-config", server, "NO_EXISTE", "--usuario", pg.user}, station, "clave\n");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.output.contains("\"no_existe\" does not exist"))
        << missing.output.toStdString();
    EXPECT_FALSE(QFile::exists(file));

    // Typed in capitals, as "CREATE DATABASE ..." took it: the server folded it.
    const QString upper = pg.database.toUpper();
    const CommandRun written =
        orvo({"server-config", server, upper, "--usuario", pg.user}, station, "la clave\n");
    ASSERT_EQ(written.exitCode, 0) << written.output.toStdString();
    const shell::ServerConfig config = shell::readServerConfig(file);
    EXPECT_EQ(config.database(), upper);
    EXPECT_EQ(config.user(), pg.user);
    EXPECT_NE(config.lines[4], "la clave");
    EXPECT_EQ(config.clearPassword(), "la clave");
    EXPECT_TRUE(config.passwordLineProblem().isEmpty());

    const CommandRun init = orvo({"db", "init"}, station);
    ASSERT_EQ(init.exitCode, 0) << init.output.toStdString();
    EXPECT_TRUE(init.output.contains(pg.database)) << init.output.toStdString();

    // A password typed by hand into line 5 is named, not silently sent empty.
    QStringList lines;
    for (const QString& l : config.lines)
        lines << l;
    lines[4] = "plana";
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write((lines.join('\n') + '\n').toUtf8());
    f.close();
    const CommandRun plain = orvo({"db", "init"}, station);
    EXPECT_EQ(plain.exitCode, 1);
    EXPECT_TRUE(plain.output.contains(QString::fromUtf8("no es una clave cifrada")))
        << plain.output.toStdString();
}
