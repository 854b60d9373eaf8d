// The exchange commands as an operator runs them: the real program, a fresh application folder.
#include "exchange/orvo_command.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"
#include "support/test_db.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using orvo::test::CommandRun;
using orvo::test::runOrvo;

class ExchangeCommands : public ::testing::Test {
protected:
    void SetUp() override {
        if (orvo::test::testEngine() != orvo::db::Engine::Sqlite)
            GTEST_SKIP() << "the commands' default store is the embedded one";
    }
    QTemporaryDir m_home;
};

TEST_F(ExchangeCommands, DbInitInstallsTheTemplatesAndExportPrintsThePackage) {
    const CommandRun init = runOrvo(m_home.path(), {"db", "init", "--demo"});
    ASSERT_EQ(init.exitCode, 0) << init.out.toStdString() << init.err.toStdString();
    const QStringList installed = QDir(m_home.filePath("Estructura")).entryList(QDir::Files);
    EXPECT_EQ(installed.size(), orvo::exchange::package::shippedTemplates().size());
    EXPECT_TRUE(installed.contains(QStringLiteral("MOVVENTA.est")));
    EXPECT_TRUE(init.out.contains(QStringLiteral("Estructuras de intercambio instaladas en ")));

    const CommandRun exported = runOrvo(m_home.path(), {"export", "--formato", "vandu"});
    ASSERT_EQ(exported.exitCode, 0) << exported.err.toStdString();
    const QString zip = exported.out.trimmed();
    EXPECT_EQ(zip, QDir(m_home.filePath("Envia")).filePath("01.zip")) << "only the path on stdout";
    EXPECT_TRUE(orvo::exchange::package::zipEntries(zip).contains("PARAMETR.DBF"));
    EXPECT_TRUE(exported.err.contains(QStringLiteral("Exportando PARAMETROS")));

    const CommandRun badDate = runOrvo(m_home.path(), {"export", "--desde", "31/02/2024"});
    EXPECT_EQ(badDate.exitCode, 1);
    EXPECT_TRUE(badDate.err.contains(QStringLiteral("La fecha 31/02/2024 no es válida")));
    EXPECT_EQ(runOrvo(m_home.path(), {"export", "--formato", "dbase"}).exitCode, 2);

    // The demo account points at a mail server that is not there: the mail fails, the package
    // stays and the exit code says so.
    const CommandRun account = runOrvo(m_home.path(), {"mail-account", "127.0.0.1:1"});
    ASSERT_EQ(account.exitCode, 0) << account.err.toStdString();
    EXPECT_EQ(runOrvo(m_home.path(), {"mail-account"}).out.trimmed(),
              QStringLiteral("127.0.0.1:1"));
    const CommandRun mail = runOrvo(m_home.path(), {"mail"});
    EXPECT_EQ(mail.exitCode, 1);
    EXPECT_TRUE(mail.out.startsWith(QStringLiteral("Conectando a 127.0.0.1...\n")))
        << mail.out.toStdString();
    EXPECT_TRUE(mail.out.contains(QStringLiteral("No existen mensajes para enviar.")));
    EXPECT_TRUE(QFileInfo::exists(zip));
}

} // namespace
