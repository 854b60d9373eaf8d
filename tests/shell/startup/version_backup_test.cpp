#include "shell/startup/external_backup.h"
#include "shell/startup/version_registry.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "shell/startup/startup_fixture.h"
#include "support/test_db.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

void touchFile(const QString& path, const QDateTime& modified) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("bin");
    f.close(); // closing after a write would stamp the file again
    ASSERT_TRUE(f.open(QIODevice::ReadWrite));
    ASSERT_TRUE(f.setFileTime(modified, QFileDevice::FileModificationTime));
}

} // namespace

class VersionRegistryTest : public DbTest {
protected:
    int rows(const char* program) const {
        return count(QStringLiteral("VERSIONEJECUTABLE"),
                     QStringLiteral("NombrePrograma = ? AND Serie = ?"),
                     {QString::fromLatin1(program), QStringLiteral("CAJA01")});
    }
    int register_() const {
        return registerExecutableVersions(db(), QStringLiteral("CAJA01"), m_bin.path(),
                                          QStringLiteral("orvo"), QStringLiteral("1.2.3"));
    }
    QTemporaryDir m_bin;
};

TEST_F(VersionRegistryTest, TwoStartsAddTheServiceTwiceAndTheOthersOnce) {
    const QDateTime built(QDate(2026, 3, 14), QTime(9, 26, 53, 589));
    touchFile(m_bin.filePath(QStringLiteral("orvo")), built);
    touchFile(m_bin.filePath(QStringLiteral("ControlAcceso")), built.addDays(-1));
    touchFile(m_bin.filePath(QStringLiteral("ServiciosOrvo.exe")), built.addDays(-2));

    EXPECT_EQ(register_(), 3);
    EXPECT_EQ(register_(), 1);
    EXPECT_EQ(rows("orvo"), 1);
    EXPECT_EQ(rows("ControlAcceso"), 1);
    EXPECT_EQ(rows("ServiciosOrvo"), 2);
    EXPECT_EQ(rows("ServicioOrvo"), 0);

    db::Sql q(db(), QStringLiteral("SELECT FechaVersion, Version, Fecha FROM VERSIONEJECUTABLE "
                                   "WHERE NombrePrograma = 'orvo'"));
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.dateTime(QStringLiteral("FechaVersion")),
              QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53)));
    EXPECT_EQ(q.text(QStringLiteral("Version")), QStringLiteral("1.2.3"));
    EXPECT_LT(qAbs(q.dateTime(QStringLiteral("Fecha")).secsTo(QDateTime::currentDateTime())), 120);

    // A new build of the program is a new row.
    touchFile(m_bin.filePath(QStringLiteral("orvo")), built.addDays(1));
    EXPECT_EQ(register_(), 2);
    EXPECT_EQ(rows("orvo"), 2);
    EXPECT_EQ(rows("ControlAcceso"), 1);
}

TEST_F(VersionRegistryTest, MissingExecutablesAreSkipped) {
    touchFile(m_bin.filePath(QStringLiteral("orvo")), QDateTime::currentDateTime());
    EXPECT_EQ(register_(), 1);
    EXPECT_EQ(count(QStringLiteral("VERSIONEJECUTABLE")), 1);
}

TEST(ExternalBackupReminder, OnlyOnTheDatabaseHostOfAKindTwoInstallationWhileOwed) {
    EXPECT_TRUE(externalBackupDue(2, QStringLiteral("CAJA1"), QStringLiteral("caja1"), {}));
    EXPECT_TRUE(externalBackupDue(2, QStringLiteral("CAJA1"), QStringLiteral("caja1"),
                                  QStringLiteral("0")));
    EXPECT_FALSE(externalBackupDue(2, QStringLiteral("CAJA1"), QStringLiteral("caja1"),
                                   QStringLiteral("1")));
    EXPECT_FALSE(externalBackupDue(2, QStringLiteral("CAJA1"), QStringLiteral("caja2"), {}));
    EXPECT_FALSE(externalBackupDue(1, QStringLiteral("CAJA1"), QStringLiteral("caja1"), {}));
}

class BackupTest : public DbTest {};

TEST_F(BackupTest, CopiesTheWholeDatabaseToTheBackupFile) {
    exec(QStringLiteral("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) "
                        "VALUES (?, ?, ?, 1)"),
         {QStringLiteral("ADMIN"), QStringLiteral("Administrador"), QStringLiteral("x")});
    QTemporaryDir usb;
    const QString file = backupFileName(usb.path(), db(), QDate(2026, 5, 1));
    EXPECT_TRUE(file.endsWith(QStringLiteral("_20260501_RESP.BAK")));
    // An old copy with that name is replaced.
    touchFile(file, QDateTime::currentDateTime());
    backupDatabase(db(), file);
    ASSERT_TRUE(QFile::exists(file));

    if (isPostgres()) {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        EXPECT_EQ(f.read(5), QByteArray("PGDMP")); // pg_dump's custom format
        EXPECT_GT(f.size(), 1000);
        return;
    }
    db::ConnectionSettings s;
    s.engine = db::Engine::Sqlite;
    s.sqliteFile = file;
    {
        QSqlDatabase copy = db::openConnection(s, QStringLiteral("backup_check"));
        EXPECT_EQ(db::scalar(copy,
                             QStringLiteral("SELECT NombreUsuario FROM USUARIOS WHERE "
                                            "CodUsuario = ?"),
                             {QStringLiteral("ADMIN")})
                      .toString(),
                  QStringLiteral("Administrador"));
    }
    db::closeConnection(QStringLiteral("backup_check"));
}

TEST_F(BackupTest, UnwritableTargetIsReportedAndNothingIsLeft) {
    EXPECT_THROW(backupDatabase(db(), QStringLiteral("/proc/no/such/place_RESP.BAK")),
                 std::exception);
}
