// `orvo db init` installs the exchange templates, as the user runs it.
#include "exchange/package/templates.h"
#include "support/test_db.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(InstallCommand, DbInitInstallsTheTemplates) {
    if (orvo::test::testEngine() != orvo::db::Engine::Sqlite)
        GTEST_SKIP() << "the command's default store is the embedded one";
    QTemporaryDir home;
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ORVO_HOME"), home.path());
    env.insert(QStringLiteral("HOME"), home.path());
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(QStringLiteral(ORVO_BINARY), {QStringLiteral("db"), QStringLiteral("init")});
    ASSERT_TRUE(p.waitForFinished(120000));
    const QString output = QString::fromUtf8(p.readAll());
    ASSERT_EQ(p.exitCode(), 0) << output.toStdString();
    const QStringList installed = QDir(home.filePath("Estructura")).entryList(QDir::Files);
    EXPECT_EQ(installed.size(), orvo::exchange::package::shippedTemplates().size());
    EXPECT_TRUE(installed.contains(QStringLiteral("MOVVENTA.est")));
    EXPECT_TRUE(output.contains(QStringLiteral("Estructuras de intercambio instaladas en ")))
        << output.toStdString();
}
