#include "pos/register/day_state.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "support/test_db.h"

using namespace orvo;
using namespace orvo::pos::registers;

namespace {

const QDate kDay(2026, 3, 5);

class DayStateTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, MontoMaximoDiario, Status) "
             "VALUES (1, 'HKA', 1000, 1), (2, 'SIN MAXIMO', 0, 1)");
        exec("INSERT INTO CAJAS (Serie, Numero, IdImpresoraFiscal, PermitirFacturaContingencia) "
             "VALUES ('C1', 1, 1, 0), ('C2', 2, 2, 1)");
    }
    void openDay(const QString& serie, const QDateTime& when, int status,
                 const char* accumulated = "0") {
        exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, Status, Acumulado) "
             "VALUES (?, ?, 1, ?, ?)",
             {serie, when, status, QString::fromLatin1(accumulated)});
    }
    QString refusal(const QString& serie, const QDate& day) {
        try {
            checkDayOpen(db(), serie, day);
            return {};
        } catch (const UserError& e) {
            return e.text();
        }
    }
};

TEST_F(DayStateTest, OpenDayCheckRefusesAMissingOrClosedDay) {
    EXPECT_EQ(refusal("C1", kDay), "No existe apertura de fecha 05/03/2026...!");
    // Yesterday late, tomorrow at midnight and another register do not open today.
    openDay("C1", QDateTime(kDay.addDays(-1), QTime(23, 59, 59)), kDayOpened);
    openDay("C1", QDateTime(kDay.addDays(1), QTime(0, 0)), kDayOpened);
    openDay("C2", QDateTime(kDay, QTime(8, 0)), kDayOpened);
    EXPECT_EQ(refusal("C1", kDay), "No existe apertura de fecha 05/03/2026...!");

    openDay("C1", QDateTime(kDay, QTime(7, 30)), kDayOpened);
    EXPECT_EQ(refusal("C1", kDay), "");
    ASSERT_TRUE(registerDay(db(), "C1", kDay));
    EXPECT_EQ(registerDay(db(), "C1", kDay)->fecha, QDateTime(kDay, QTime(7, 30)));
    exec("UPDATE DIARIOCAJA SET Status = 1 WHERE Serie = 'C1'");
    EXPECT_EQ(refusal("C1", kDay), "");
    exec("UPDATE DIARIOCAJA SET Status = 2 WHERE Serie = 'C1' AND Fecha >= ? AND Fecha < ?",
         {QDateTime(kDay, QTime(0, 0)), QDateTime(kDay.addDays(1), QTime(0, 0))});
    EXPECT_EQ(refusal("C1", kDay), "Caja con cierre realizado...!");
    EXPECT_EQ(refusal("C1", kDay.addDays(1)), "");
}

TEST_F(DayStateTest, AccumulatedAmountIsExactAndForcesAZOverThePrinterMaximum) {
    openDay("C1", QDateTime(kDay, QTime(7, 0)), kDaySelling, "899.90");
    openDay("C1", QDateTime(kDay.addDays(-1), QTime(7, 0)), kDayClosed, "999.99");
    EXPECT_EQ(accumulatedAmount(db(), "C1", kDay), Decimal::fromString(u"899.90"));
    EXPECT_EQ(*printerDailyMaximum(db(), "C1"), Decimal(1000));
    EXPECT_FALSE(printerDailyMaximum(db(), "NOEXISTE"));

    EXPECT_EQ(projectedAmount(db(), "C1", kDay, Decimal::fromString(u"100.10")), Decimal(1000));
    EXPECT_FALSE(exceedsDailyMaximum(db(), "C1", kDay, Decimal::fromString(u"100.10")));
    EXPECT_TRUE(exceedsDailyMaximum(db(), "C1", kDay, Decimal::fromString(u"100.11")));

    {
        db::Transaction tx(db());
        addToAccumulated(db(), "C1", kDay, Decimal::fromString(u"0.1"));
        addToAccumulated(db(), "C1", kDay, Decimal::fromString(u"0.2"));
        tx.commit();
    }
    EXPECT_EQ(accumulatedAmount(db(), "C1", kDay), Decimal::fromString(u"900.20"));
    {
        db::Transaction tx(db());
        resetAccumulated(db(), "C1", kDay);
        tx.commit();
    }
    EXPECT_TRUE(accumulatedAmount(db(), "C1", kDay).isZero());
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Acumulado FROM DIARIOCAJA WHERE Status = 2")),
              Decimal::fromString(u"999.99"));
    // The day's amount is only written inside an action's transaction.
    EXPECT_ANY_THROW(resetAccumulated(db(), "C1", kDay));

    // A printer without a maximum never forces a Z.
    openDay("C2", QDateTime(kDay, QTime(7, 0)), kDaySelling, "5000000");
    EXPECT_FALSE(exceedsDailyMaximum(db(), "C2", kDay, Decimal(1000000)));
}

TEST_F(DayStateTest, ContingencyByRegisterOrCompanyAndLatestClosedDay) {
    EXPECT_FALSE(contingencyAllowed(db(), "C1"));
    EXPECT_TRUE(contingencyAllowed(db(), "C2"));
    exec("INSERT INTO PARAMETROS (Nombre, PermitirFacturaContingencia) VALUES ('TIENDA', 1)");
    EXPECT_TRUE(contingencyAllowed(db(), "C1"));

    EXPECT_FALSE(lastClosedDay(db()));
    openDay("C1", QDateTime(kDay.addDays(-3), QTime(7, 0)), kDayClosed);
    openDay("C2", QDateTime(kDay.addDays(-2), QTime(7, 0)), kDayClosed);
    openDay("C1", QDateTime(kDay, QTime(7, 0)), kDaySelling);
    EXPECT_EQ(*lastClosedDay(db()), QDateTime(kDay.addDays(-2), QTime(7, 0)));
}

} // namespace
