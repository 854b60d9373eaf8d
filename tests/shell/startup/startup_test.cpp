#include "shell/startup/main_connection.h"
#include "shell/startup/single_instance.h"
#include "shell/startup/user_settings.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "shell/startup/startup_fixture.h"
#include "support/test_db.h"

#include <QCoreApplication>
#include <QFile>
#include <QSysInfo>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;
using orvo::test::HomeGuard;

namespace {

void writeLines(const QString& path, const QByteArray& content) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(content);
}

} // namespace

TEST(ServerConfigFile, RoundTripKeepsFiveLinesAndScramblesThePassword) {
    HomeGuard home;
    const ServerConfig written =
        ServerConfig::fromFields(QStringLiteral("  tienda01:5433 "), QStringLiteral(" ORVO "), true,
                                 QStringLiteral(" cajero "), QStringLiteral("s3cr'eto"));
    writeServerConfig(home.configPath(), written);

    QFile f(home.configPath());
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = f.readAll().split('\n');
    ASSERT_EQ(lines.size(), 6); // five lines and the final line break
    EXPECT_EQ(lines[0], "ORVO");
    EXPECT_EQ(lines[1], "tienda01:5433");
    EXPECT_EQ(lines[2], "1");
    EXPECT_EQ(lines[3], "cajero");
    EXPECT_FALSE(lines[4].contains("s3cr"));
    EXPECT_TRUE(lines[4].endsWith('?'));
    EXPECT_EQ(f.permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup), 0);

    const ServerConfig read = readServerConfig(home.configPath());
    EXPECT_EQ(read.clearPassword(), QStringLiteral("s3cr'eto"));
    const db::ConnectionSettings s = read.connectionSettings(home.dataDir());
    EXPECT_EQ(s.engine, db::Engine::Postgres);
    EXPECT_EQ(s.host, QStringLiteral("tienda01"));
    EXPECT_EQ(s.port, 5433);
    EXPECT_EQ(s.database, QStringLiteral("orvo")) << "read as the server reads an unquoted name";
    EXPECT_EQ(s.user, QStringLiteral("cajero"));
}

TEST(ServerConfigFile, OddFilesReadAsTheyAlwaysHave) {
    HomeGuard home;
    // Four lines: no password; mode 0 ignores user and password altogether.
    writeLines(home.configPath(), "ORVO\n servidor \n0\nusuario\n");
    ServerConfig c = readServerConfig(home.configPath());
    EXPECT_TRUE(c.clearPassword().isEmpty());
    db::ConnectionSettings s = c.connectionSettings(home.dataDir());
    EXPECT_EQ(s.host, QStringLiteral("servidor"));
    EXPECT_FALSE(s.passwordAuth);
    EXPECT_TRUE(s.user.isEmpty());

    // Any non-zero mode is user and password.
    writeLines(home.configPath(), "ORVO\nservidor\n2\nusuario\n");
    c = readServerConfig(home.configPath());
    EXPECT_TRUE(c.passwordAuth());
    EXPECT_EQ(c.connectionSettings(home.dataDir()).user, QStringLiteral("usuario"));

    // A blank or "(local)" server is the embedded file under data/.
    writeLines(home.configPath(), " TIENDA \n (local) \n0\n\n\n");
    c = readServerConfig(home.configPath());
    s = c.connectionSettings(home.dataDir());
    EXPECT_EQ(s.engine, db::Engine::Sqlite);
    EXPECT_EQ(s.sqliteFile, home.dataDir() + QStringLiteral("/TIENDA.sqlite"));
    writeLines(home.configPath(), "TIENDA\n\n\n\n\n");
    EXPECT_TRUE(readServerConfig(home.configPath()).isEmbedded());
}

TEST(ServerConfigFile, SixthLineEndsTheStartWithItsError) {
    HomeGuard home;
    writeLines(home.configPath(), "ORVO\n(local)\n0\n\n\nsobra\n");
    ServerConfig c;
    try {
        connectFromConfigFile(home.configPath(), home.dataDir(), c);
        FAIL() << "a sixth line must stop the start";
    } catch (const StartupError& e) {
        EXPECT_EQ(e.number(), 9);
        EXPECT_TRUE(e.message().startsWith(QStringLiteral("9\n")));
    }
    EXPECT_FALSE(mainConnectionOpen());
}

class MainConnectionTest : public DbTest {
protected:
    void TearDown() override {
        closeMainConnection();
        DbTest::TearDown();
    }
    HomeGuard m_home;
};

TEST_F(MainConnectionTest, GoodFileOpensTheSharedConnection) {
    writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
    exec(QStringLiteral("INSERT INTO PARAMETROS (Nombre) VALUES (?)"), {QStringLiteral("Tienda")});
    ServerConfig read;
    ASSERT_EQ(connectFromConfigFile(m_home.configPath(), m_home.dataDir(), read),
              StartupConnection::Connected);
    ASSERT_TRUE(mainConnectionOpen());
    EXPECT_EQ(mainDb().connectionName(), QStringLiteral("orvo_main"));
    EXPECT_EQ(db::scalar(mainDb(), QStringLiteral("SELECT Nombre FROM PARAMETROS")).toString(),
              QStringLiteral("Tienda"));
    EXPECT_TRUE(serverPanelText(mainDb()).startsWith(QStringLiteral("Servidor SQL:")));
    EXPECT_TRUE(serverPanelText(mainDb()).contains(u'\\'));
}

TEST_F(MainConnectionTest, MissingOrBadConfigurationGoesToTheConfigurationScreen) {
    ServerConfig read;
    // No file at all.
    EXPECT_EQ(connectFromConfigFile(m_home.configPath(), m_home.dataDir(), read),
              StartupConnection::NeedsConfig);
    EXPECT_TRUE(read.database().isEmpty());

    // An embedded database that does not exist is not created behind the user's back.
    writeServerConfig(m_home.configPath(),
                      ServerConfig::fromFields(QStringLiteral("(local)"), QStringLiteral("NOHAY"),
                                               false, {}, {}));
    EXPECT_EQ(connectFromConfigFile(m_home.configPath(), m_home.dataDir(), read),
              StartupConnection::NeedsConfig);
    EXPECT_EQ(read.database(), QStringLiteral("NOHAY"));
    EXPECT_FALSE(QFile::exists(m_home.dataDir() + QStringLiteral("/NOHAY.sqlite")));
    EXPECT_FALSE(mainConnectionOpen());

    // A PostgreSQL server nobody listens on fails quietly (no exception, no message).
    writeServerConfig(m_home.configPath(),
                      ServerConfig::fromFields(QStringLiteral("127.0.0.1:1"),
                                               QStringLiteral("ORVO"), true, QStringLiteral("orvo"),
                                               QStringLiteral("x")));
    EXPECT_EQ(connectFromConfigFile(m_home.configPath(), m_home.dataDir(), read),
              StartupConnection::NeedsConfig);
    EXPECT_FALSE(mainConnectionOpen());
    EXPECT_FALSE(testConnection(read, m_home.dataDir()));
}

TEST_F(MainConnectionTest, NewEmbeddedDatabaseGetsTheSchemaWhenAsked) {
    const ServerConfig config =
        ServerConfig::fromFields(QStringLiteral("(local)"), QStringLiteral("NUEVA"), false, {}, {});
    EXPECT_FALSE(openMainConnection(config, m_home.dataDir()));
    ASSERT_TRUE(openMainConnection(config, m_home.dataDir(), true));
    EXPECT_TRUE(db::tableExists(mainDb(), QStringLiteral("USUARIOS")));
    EXPECT_TRUE(QFile::exists(m_home.dataDir() + QStringLiteral("/NUEVA.sqlite")));
}

TEST(WorkstationSettings, DefaultsAndStoredValues) {
    HomeGuard home;
    WorkstationSettings w = WorkstationSettings::load();
    EXPECT_TRUE(w.serie.isEmpty());
    EXPECT_EQ(w.fontSize, 8);
    EXPECT_EQ(w.fontName, QStringLiteral("MS Sans Serif"));
    EXPECT_FALSE(w.fontBold);
    EXPECT_FALSE(w.fontItalic);
    EXPECT_EQ(w.barcodeReader, QStringLiteral("SI"));
    EXPECT_EQ(w.menuOption, kMenuBar);

    settings::write(QStringLiteral("Serie"), QStringLiteral("Z1A0001"));
    saveMenuFont(QStringLiteral("DejaVu Sans"), 11, true, false);
    settings::write(QStringLiteral("OpcionMenu"), QString::number(kMenuTree));
    settings::write(QStringLiteral("Login"), QStringLiteral("ADMIN"));
    w = WorkstationSettings::load();
    EXPECT_EQ(w.serie, QStringLiteral("Z1A0001"));
    EXPECT_EQ(w.fontSize, 11);
    EXPECT_EQ(w.fontName, QStringLiteral("DejaVu Sans"));
    EXPECT_TRUE(w.fontBold);
    EXPECT_EQ(w.menuOption, kMenuTree);
    EXPECT_EQ(w.lastLogin, QStringLiteral("ADMIN"));

    // Kept under application ServidorOrvo, section Orvo, with the key names as they are.
    QSettings raw(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("ServidorOrvo"));
    EXPECT_EQ(raw.value(QStringLiteral("Orvo/TamañoFuente")).toString(), QStringLiteral("11"));
    EXPECT_EQ(raw.value(QStringLiteral("Orvo/Serie")).toString(), QStringLiteral("Z1A0001"));
}

TEST(SingleInstanceLock, SecondCopyIsRefusedUntilTheFirstEnds) {
    HomeGuard home;
    const QString lock = home.path() + QStringLiteral("/orvo.lock");
    {
        SingleInstance first(lock);
        ASSERT_TRUE(first.acquire());
        EXPECT_TRUE(first.acquire()); // asking again keeps it
        SingleInstance second(lock);
        EXPECT_FALSE(second.acquire());
    }
    SingleInstance third(lock);
    EXPECT_TRUE(third.acquire());
}

TEST(SingleInstanceLock, LockOfACrashedCopyIsTakenOver) {
    HomeGuard home;
    const QString lock = home.path() + QStringLiteral("/orvo.lock");
    // What a copy that died without cleaning up leaves behind: a process id nobody has.
    writeLines(lock, "2147480000\norvo\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    SingleInstance instance(lock);
    EXPECT_TRUE(instance.acquire());
}

TEST_F(MainConnectionTest, OutdatedSchemaUpgradesEmbeddedAndStopsOnAServer) {
    // This test's database is current: nothing to do.
    EXPECT_NO_THROW(ensureCurrentSchema(db()));
    if (!isPostgres()) {
        db::ConnectionSettings s;
        s.engine = db::Engine::Sqlite;
        s.sqliteFile = m_home.dataDir() + QStringLiteral("/VACIA.sqlite");
        {
            QSqlDatabase empty = db::openConnection(s, QStringLiteral("schema_check"));
            ensureCurrentSchema(empty);
            EXPECT_TRUE(db::tableExists(empty, QStringLiteral("VERSIONEJECUTABLE")));
        }
        db::closeConnection(QStringLiteral("schema_check"));
        return;
    }
    const QString name = QStringLiteral("orvo_vacia_%1").arg(QCoreApplication::applicationPid());
    {
        QSqlDatabase admin = db::openConnection(test::postgresServer(QStringLiteral("postgres")),
                                                QStringLiteral("schema_admin"));
        db::execute(admin, QStringLiteral("DROP DATABASE IF EXISTS ") + name);
        db::execute(admin, QStringLiteral("CREATE DATABASE ") + name);
    }
    {
        QSqlDatabase empty =
            db::openConnection(test::postgresServer(name), QStringLiteral("schema_check"));
        try {
            ensureCurrentSchema(empty);
            ADD_FAILURE() << "an empty server database must not be upgraded at start";
        } catch (const UserError& e) {
            EXPECT_TRUE(e.text().contains(QStringLiteral("orvo db init")));
        }
        EXPECT_FALSE(db::tableExists(empty, QStringLiteral("USUARIOS")));
    }
    db::closeConnection(QStringLiteral("schema_check"));
    {
        QSqlDatabase admin = QSqlDatabase::database(QStringLiteral("schema_admin"));
        db::execute(admin, QStringLiteral("DROP DATABASE ") + name);
    }
    db::closeConnection(QStringLiteral("schema_admin"));
}
