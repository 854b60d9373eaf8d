// `orvo import` as an operator runs it: two demo stores of one company, each in its own
// application folder, the package carried from one's Envia to the other's Recibe by hand.
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/decimal/decimal.h"
#include "exchange/orvo_command.h"
#include "inventory/transfers/transfer_package.h"
#include "inventory/transfers/transfers.h"
#include "support/test_db.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::inventory::transfers;

namespace {

using test::CommandRun;
using test::runOrvo;

// Two shirts of the demo catalogue, at 580 in both stores.
const QString kPink = QStringLiteral("7591234000858");
const QString kWhite = QStringLiteral("7591234000865");

class ImportCommand : public ::testing::Test {
protected:
    void SetUp() override {
        if (test::testEngine() != db::Engine::Sqlite)
            GTEST_SKIP() << "the commands' default store is the embedded one";
        for (auto [home, branch] : {std::pair{&m_one, "01"}, std::pair{&m_two, "02"}}) {
            const CommandRun init = runOrvo(
                home->path(), {"db", "init", "--demo", "--tienda", QString::fromLatin1(branch)});
            ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
        }
    }
    void TearDown() override {
        db::closeConnection(QStringLiteral("store01"));
        db::closeConnection(QStringLiteral("store02"));
    }

    static QSqlDatabase store(const QTemporaryDir& home, const QString& name) {
        db::ConnectionSettings s;
        s.sqliteFile = home.filePath(QStringLiteral("data/ORVO.sqlite"));
        return db::openConnection(s, name);
    }
    static Decimal stock(const QSqlDatabase& db, const QString& barcode) {
        return Decimal::fromVariant(db::scalar(
            db, QStringLiteral("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?"),
            {barcode}));
    }
    static DocumentLine line(const QString& barcode, int quantity, long long box) {
        DocumentLine l;
        l.barcode = barcode;
        l.quantity = Decimal(quantity);
        l.box = box;
        return l;
    }
    // What the FTP will do: the package written for 02 lands in its Recibe.
    void carry(const QString& path) {
        QDir().mkpath(m_two.filePath(QStringLiteral("Recibe")));
        const QString to = m_two.filePath(QStringLiteral("Recibe/")) + QFileInfo(path).fileName();
        QFile::remove(to);
        ASSERT_TRUE(QFile::copy(path, to));
    }

    QTemporaryDir m_one;
    QTemporaryDir m_two;
};

} // namespace

TEST_F(ImportCommand, StoreTwoLoadsWhatStoreOneSentOnceAndLoadsItsReturn) {
    // This process plays store 01: its templates write the packages.
    const QByteArray ownHome = qgetenv("ORVO_HOME");
    qputenv("ORVO_HOME", m_one.path().toUtf8());
    const auto restore = qScopeGuard([&] {
        if (ownHome.isNull())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", ownHome);
    });
    const QSqlDatabase one = store(m_one, QStringLiteral("store01"));
    const QSqlDatabase two = store(m_two, QStringLiteral("store02"));
    const Decimal pinkBefore = stock(two, kPink);
    const Decimal whiteBefore = stock(two, kWhite);

    Transfer t;
    t.receiver = QStringLiteral("02");
    t.user = QStringLiteral("ADMIN");
    t.lines = {line(kPink, 6, 1), line(kPink, 4, 2), line(kWhite, 2, 2)};
    const long long number = saveTransfer(one, t, true);
    const SentPackage sent = writePackage(one, Kind::Transfer, QStringLiteral("02"), {number},
                                          m_one.filePath(QStringLiteral("Envia")));
    carry(sent.path);

    const CommandRun loaded = runOrvo(m_two.path(), {"import"});
    ASSERT_EQ(loaded.exitCode, 0) << loaded.err.toStdString();
    EXPECT_TRUE(loaded.out.contains(QStringLiteral("Transferencia importada con exito...!")))
        << loaded.out.toStdString();
    EXPECT_EQ(stock(two, kPink), pinkBefore + Decimal(10));
    EXPECT_EQ(stock(two, kWhite), whiteBefore + Decimal(2));
    EXPECT_EQ(db::scalar(two, QStringLiteral("SELECT COUNT(*) FROM IMOVTRANSFERENCIAS")).toInt(),
              3);

    // Nothing left; the same package brought again is passed over.
    const CommandRun idle = runOrvo(m_two.path(), {"import"});
    EXPECT_EQ(idle.exitCode, 0);
    EXPECT_TRUE(idle.out.contains(QStringLiteral("No hay archivos pendientes por cargar")));
    carry(sent.path);
    const CommandRun twice = runOrvo(m_two.path(), {"import"});
    EXPECT_EQ(twice.exitCode, 0) << twice.err.toStdString();
    EXPECT_EQ(stock(two, kPink), pinkBefore + Decimal(10));
    EXPECT_EQ(db::scalar(two, QStringLiteral("SELECT COUNT(*) FROM ITRANSFERENCIAS")).toInt(), 1);

    // Store 01 takes two back: its return, loaded at 02, takes them out of 02's stock.
    Transfer back;
    back.kind = Kind::Return;
    back.receiver = QStringLiteral("02");
    back.user = QStringLiteral("ADMIN");
    back.lines = {line(kWhite, 2, 1)};
    const long long returned = saveTransfer(one, back, true);
    carry(writePackage(one, Kind::Return, QStringLiteral("02"), {returned},
                       m_one.filePath(QStringLiteral("Envia")))
              .path);
    const CommandRun loadedBack = runOrvo(m_two.path(), {"import", m_two.filePath("Recibe")});
    ASSERT_EQ(loadedBack.exitCode, 0) << loadedBack.err.toStdString();
    EXPECT_TRUE(loadedBack.out.contains(
        QStringLiteral("Devolución de transferencia importada con exito...!")))
        << loadedBack.out.toStdString();
    EXPECT_EQ(stock(two, kWhite), whiteBefore);
    EXPECT_EQ(runOrvo(m_two.path(), {"import", "a", "b"}).exitCode, 2);
}
