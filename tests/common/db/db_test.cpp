#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using orvo::test::DbTest;

class SqlLayer : public DbTest {};

TEST_F(SqlLayer, MoneyKeepsItsCentsOnBothEngines) {
    exec("CREATE TABLE T_MONTOS (Id INTEGER, Monto NUMERIC(18,2))");
    {
        db::Transaction tx(db());
        for (int i = 0; i < 10; ++i)
            db::Sql(db(), "INSERT INTO T_MONTOS (Id, Monto) VALUES (?, ?)")
                .bind(i)
                .bind(Decimal::fromString(u"0.1"), 2)
                .exec();
        tx.commit();
    }
    // Summed by the engine: binary floating point on SQLite, exact on PostgreSQL.
    const Decimal total =
        Decimal::fromVariant(scalar("SELECT SUM(Monto) FROM T_MONTOS")).rounded(2);
    EXPECT_EQ(total.toString(2), QStringLiteral("1.00"));
    db::Sql q(db(), "SELECT Monto FROM T_MONTOS WHERE Id = ?");
    q.bind(3).exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.decimal("monto"), Decimal::fromString(u"0.1")); // names match in any case
}

TEST_F(SqlLayer, TransactionRollsBackWhenNotCommitted) {
    exec("CREATE TABLE T_LINEAS (Id INTEGER)");
    {
        db::Transaction tx(db());
        exec("INSERT INTO T_LINEAS (Id) VALUES (1)");
        EXPECT_TRUE(db::Transaction::isOpen(db()));
        EXPECT_THROW(db::Transaction second(db()), std::logic_error);
    }
    EXPECT_FALSE(db::Transaction::isOpen(db()));
    EXPECT_EQ(count("T_LINEAS"), 0);
    EXPECT_THROW(db::requireTransaction(db()), std::logic_error);
}

TEST_F(SqlLayer, FailedStatementReportsNumberAndText) {
    try {
        db::execute(db(), "INSERT INTO NO_EXISTE (Id) VALUES (?)", {1});
        FAIL() << "expected DbError";
    } catch (const DbError& e) {
        EXPECT_FALSE(e.number().isEmpty());
        EXPECT_FALSE(e.text().isEmpty());
        EXPECT_TRUE(e.statement().contains("NO_EXISTE"));
    }
}

TEST_F(SqlLayer, QuotesInValuesAreJustText) {
    exec("CREATE TABLE T_NOMBRES (Nombre VARCHAR(60))");
    db::execute(db(), "INSERT INTO T_NOMBRES (Nombre) VALUES (?)",
                {QStringLiteral("O'Brien'); DROP TABLE T_NOMBRES; --")});
    EXPECT_EQ(scalar("SELECT Nombre FROM T_NOMBRES").toString(),
              QStringLiteral("O'Brien'); DROP TABLE T_NOMBRES; --"));
}

TEST_F(SqlLayer, DayRangesFindRowsOfThatDayOnly) {
    exec("CREATE TABLE T_FECHAS (Id INTEGER, Fecha TIMESTAMP)");
    const QDate day(2026, 3, 15);
    db::execute(db(), "INSERT INTO T_FECHAS VALUES (?, ?)", {1, QDateTime(day, QTime(0, 0))});
    db::execute(db(), "INSERT INTO T_FECHAS VALUES (?, ?)", {2, QDateTime(day, QTime(23, 59, 59))});
    db::execute(db(), "INSERT INTO T_FECHAS VALUES (?, ?)",
                {3, QDateTime(day.addDays(1), QTime(0, 0))});
    db::execute(db(), "INSERT INTO T_FECHAS VALUES (?, ?)",
                {4, QDateTime(day.addDays(-1), QTime(23, 59))});
    EXPECT_EQ(
        count("T_FECHAS", "Fecha >= ? AND Fecha < ?", {db::dayStart(day), db::nextDayStart(day)}),
        2);
    const QDateTime now = db::serverNow(db());
    EXPECT_LT(qAbs(now.secsTo(QDateTime::currentDateTime())), 120);
}

TEST(Flags, OnlyOneAndTrueCount) {
    EXPECT_TRUE(db::numericFlag(QVariant(1)));
    EXPECT_TRUE(db::numericFlag(QVariant(QStringLiteral("1.000"))));
    EXPECT_FALSE(db::numericFlag(QVariant(2)));
    EXPECT_FALSE(db::numericFlag(QVariant(-1)));
    EXPECT_FALSE(db::numericFlag(QVariant()));
    EXPECT_TRUE(db::textFlag(QVariant(QStringLiteral("TRUE"))));
    EXPECT_FALSE(db::textFlag(QVariant(QStringLiteral("true"))));
    EXPECT_FALSE(db::textFlag(QVariant(QStringLiteral("1"))));
}
