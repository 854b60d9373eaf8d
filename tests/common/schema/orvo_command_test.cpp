// `orvo db init` run as the user runs it: the real program, a fresh application folder.
#include "support/test_db.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct CommandRun {
    int exitCode = -1;
    QString output;
};

CommandRun orvo(const QString& home, const QStringList& args) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ORVO_HOME"), home);
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(QStringLiteral(ORVO_BINARY), args);
    if (!p.waitForFinished(120000))
        return {};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAll())};
}

TEST(DbInitCommand, CreatesTheEmbeddedStoreOnceAndThenAppliesNothing) {
    if (orvo::test::testEngine() != orvo::db::Engine::Sqlite)
        GTEST_SKIP() << "the command's default store is the embedded one";
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QStringList args{QStringLiteral("db"), QStringLiteral("init")};

    const CommandRun first = orvo(home.path(), args);
    ASSERT_EQ(first.exitCode, 0) << first.output.toStdString();
    EXPECT_TRUE(QFile::exists(home.filePath("data/srvsql.txt")));
    EXPECT_TRUE(QFile::exists(home.filePath("data/ORVO.sqlite")));
    EXPECT_TRUE(first.output.contains(QStringLiteral("Versión 1: "))) << first.output.toStdString();

    const CommandRun second = orvo(home.path(), args);
    ASSERT_EQ(second.exitCode, 0) << second.output.toStdString();
    EXPECT_TRUE(second.output.contains(QStringLiteral("El esquema ya está en la versión ")))
        << second.output.toStdString();
    EXPECT_FALSE(second.output.contains(QStringLiteral("sentencias")))
        << second.output.toStdString();
}

} // namespace
