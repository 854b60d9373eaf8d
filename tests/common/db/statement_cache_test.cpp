#include "common/db/bulk_insert.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using orvo::test::DbTest;

namespace {

class StatementReuse : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("CREATE TABLE T_ARTICULOS (Codigo VARCHAR(15) PRIMARY KEY, Nombre VARCHAR(60), "
             "Precio NUMERIC(18,2))");
        for (int i = 1; i <= 5; ++i)
            db::execute(db(), "INSERT INTO T_ARTICULOS (Codigo, Nombre, Precio) VALUES (?, ?, ?)",
                        {QString::number(i), QStringLiteral("ARTICULO %1").arg(i),
                         QStringLiteral("%1.50").arg(i)});
    }

    // Statements the server holds prepared for this connection (PostgreSQL only).
    int preparedOnServer() const {
        return scalar("SELECT COUNT(*) FROM pg_prepared_statements").toInt();
    }

    QString nameOf(const QString& code) const {
        db::Sql q(db(), "SELECT * FROM T_ARTICULOS WHERE Codigo = ?");
        q.bind(code).exec();
        return q.next() ? q.text("Nombre") : QString();
    }
};

TEST_F(StatementReuse, ARepeatedStatementIsPreparedOnceAndNestedRunsStayApart) {
    const int before = isPostgres() ? preparedOnServer() : 0;
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(nameOf(QString::number(i % 5 + 1)), QStringLiteral("ARTICULO %1").arg(i % 5 + 1));
    }
    if (isPostgres()) {
        EXPECT_EQ(preparedOnServer(), before + 1);
    }

    // The same text run while its first run is still being read gets a statement of its own.
    db::Sql outer(db(), "SELECT Codigo FROM T_ARTICULOS WHERE Codigo >= ? ORDER BY Codigo");
    outer.bind(QStringLiteral("4")).exec();
    ASSERT_TRUE(outer.next());
    {
        db::Sql inner(db(), "SELECT Codigo FROM T_ARTICULOS WHERE Codigo >= ? ORDER BY Codigo");
        inner.bind(QStringLiteral("1")).exec();
        ASSERT_TRUE(inner.next());
        EXPECT_EQ(inner.text("Codigo"), QStringLiteral("1"));
    }
    // PostgreSQL reads one result at a time per connection; SQLite keeps both cursors.
    if (!isPostgres()) {
        EXPECT_EQ(outer.text("Codigo"), QStringLiteral("4"));
        ASSERT_TRUE(outer.next());
        EXPECT_EQ(outer.text("Codigo"), QStringLiteral("5"));
    }
}

TEST_F(StatementReuse, SchemaChangesAndReconnectionsDoNotLeaveStaleStatements) {
    EXPECT_EQ(nameOf("2"), QStringLiteral("ARTICULO 2"));
    // A cached SELECT * must see a column added afterwards.
    exec("ALTER TABLE T_ARTICULOS ADD COLUMN Talla VARCHAR(10)");
    db::execute(db(), "UPDATE T_ARTICULOS SET Talla = ? WHERE Codigo = ?",
                {QStringLiteral("XL"), QStringLiteral("2")});
    {
        // Inside a transaction, where a failed statement could not simply be prepared again.
        db::Transaction tx(db());
        db::Sql q(db(), "SELECT * FROM T_ARTICULOS WHERE Codigo = ?");
        q.bind(QStringLiteral("2")).exec();
        ASSERT_TRUE(q.next());
        EXPECT_EQ(q.text("Talla"), QStringLiteral("XL"));
    }
    // Reopening the connection under its name starts a new server session.
    EXPECT_EQ(nameOf("3"), QStringLiteral("ARTICULO 3"));
    db::openConnection(testDb().settings(), testDb().connectionName());
    EXPECT_EQ(nameOf("3"), QStringLiteral("ARTICULO 3"));
    EXPECT_EQ(db::statement_cache::idleCount(testDb().connectionName()), 1);
}

TEST_F(StatementReuse, AFailedRunInsideATransactionLeavesTheStatementUsable) {
    const QString insert = "INSERT INTO T_ARTICULOS (Codigo, Nombre, Precio) VALUES (?, ?, ?)";
    {
        db::Transaction tx(db());
        EXPECT_THROW(db::execute(db(), insert, {QStringLiteral("1"), QStringLiteral("X"), 1}),
                     DbError);
    }
    {
        db::Transaction tx(db());
        db::execute(db(), insert, {QStringLiteral("6"), QStringLiteral("ARTICULO 6"), 6});
        tx.commit();
    }
    EXPECT_EQ(nameOf("6"), QStringLiteral("ARTICULO 6"));
}

TEST_F(StatementReuse, BulkInsertWritesEveryRowExactlyInFewStatements) {
    exec("CREATE TABLE T_LINEAS (Numero INTEGER, Item INTEGER, Monto NUMERIC(18,2), "
         "Nota VARCHAR(20), Fecha TIMESTAMP)");
    const QDateTime when(QDate(2026, 3, 15), QTime(10, 30));
    {
        db::Transaction tx(db());
        db::BulkInsert lines(db(), "T_LINEAS", {"Numero", "Item", "Monto", "Nota", "Fecha"}, 64);
        for (int i = 1; i <= 1000; ++i)
            lines.add({7, i, QVariant::fromValue(Decimal::fromString(u"0.10")),
                       i % 100 == 0 ? QVariant() : QVariant(QStringLiteral("L'%1").arg(i)), when});
        EXPECT_LT(lines.pending(), 64);
        lines.flush();
        EXPECT_EQ(lines.written(), 1000);
        EXPECT_THROW(lines.add({1, 2}), std::invalid_argument);
        tx.commit();
    }
    EXPECT_EQ(count("T_LINEAS"), 1000);
    EXPECT_EQ(count("T_LINEAS", "Nota IS NULL"), 10);
    EXPECT_EQ(count("T_LINEAS", "Fecha = ?", {when}), 1000);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT SUM(Monto) FROM T_LINEAS")).rounded(2),
              Decimal(100));
    EXPECT_EQ(scalar("SELECT Nota FROM T_LINEAS WHERE Item = 999").toString(),
              QStringLiteral("L'999"));
}

TEST_F(StatementReuse, ServerTimeKeepsStepWithTheServer) {
    const QDateTime first = db::serverNow(db());
    const QDateTime second = db::serverNow(db());
    EXPECT_LE(first, second);
    db::Sql q(db(), "SELECT " + db::nowExpression(db()) + " AS Ahora");
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_LT(qAbs(q.dateTime("Ahora").msecsTo(db::serverNow(db()))), 1000);
}

} // namespace
