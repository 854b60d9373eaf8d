// The exchange rate: typed values, registering with and without repricing, the rate of a day,
// the rate file for the stores and the one received from head office.
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/rate/exchange_rate.h"
#include "exchange/package/zip_archive.h"
#include "pos/sale/sale_store.h"
#include "support/orvo_process.h"
#include "support/scoped_app_home.h"
#include "support/test_db.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::common::rate;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

class RateTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        // Three variants of two models; one without a promotion price.
        exec("INSERT INTO INVENTARIO (CodigoBarra, Referencia, CodigoMarca, PrecioDetal, "
             "PrecioMayor, PrecioAfiliado, PrecioPromocion, CostoPromedio, Existencia) VALUES "
             "('A1', 'R1', 'M1', 100, 80, 95, 90, 50, 3), ('A2', 'R1', 'M1', 100, 80, 95, 90, "
             "50, 4), ('B1', 'R2', 'M1', 12.5, 10, 11, NULL, 6, 0)");
    }

    void setSwitch(const char* key, const char* value) const {
        exec("DELETE FROM TABLA_VALORES WHERE IdTabla = ?", {key});
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {key, value});
    }
    void rateAt(const char* value, const QDateTime& when) const {
        exec("INSERT INTO TASA_CAMBIO (Fecha, Valor) VALUES (?, ?)", {when, value});
    }
    Decimal price(const char* column, const char* barcode) const {
        return Decimal::fromVariant(
            scalar(QStringLiteral("SELECT %1 FROM INVENTARIO WHERE CodigoBarra = ?").arg(column),
                   {barcode}));
    }
    QString receivedFile(const QByteArray& content) const {
        QDir().mkpath(m_home.filePath("Recibe"));
        const QString path = m_home.filePath("Recibe/tasacambio.TXT");
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
        return path;
    }

    test::ScopedAppHome m_home;
};

} // namespace

TEST(TypedRate, ThousandsAndDecimalSeparatorsEitherWay) {
    EXPECT_EQ(parseTypedRate("36,50"), d("36.5"));
    EXPECT_EQ(parseTypedRate(" 36.5 "), d("36.5"));
    EXPECT_EQ(parseTypedRate("1.234,5678"), d("1234.5678"));
    EXPECT_EQ(parseTypedRate("1,234.5678"), d("1234.5678"));
    EXPECT_EQ(parseTypedRate("4.567.890"), d("4567890"));
    EXPECT_EQ(parseTypedRate("4 567 890,12345678"), d("4567890.12345678"));
    for (const char* bad : {"", "0", "0,00", "-36,5", "abc", "36,5x", "1,123456789"})
        EXPECT_FALSE(parseTypedRate(bad)) << bad;
}

TEST_F(RateTest, ActTasaRepricesTheFourPricesOfEveryArticleByNewOverOld) {
    setSwitch("ActTasa", "TRUE");
    // The first rate has nothing to reprice from.
    RegisterResult first = registerRate(db(), {d("36.5"), {}, true});
    EXPECT_FALSE(first.repriced);
    EXPECT_EQ(price("PrecioDetal", "A1"), Decimal(100));

    const RegisterResult r = registerRate(db(), {d("40"), {}, true});
    EXPECT_TRUE(r.repriced);
    EXPECT_EQ(r.previous, d("36.5"));
    EXPECT_EQ(r.articlesRepriced, 3);
    // ROUND(price / 36.5, 10) * 40, to the price columns' four decimals.
    for (const char* code : {"A1", "A2"}) {
        EXPECT_EQ(price("PrecioDetal", code), d("109.5890")) << code;
        EXPECT_EQ(price("PrecioMayor", code), d("87.6712")) << code;
        EXPECT_EQ(price("PrecioAfiliado", code), d("104.1096")) << code;
        EXPECT_EQ(price("PrecioPromocion", code), d("98.6301")) << code;
    }
    EXPECT_EQ(price("PrecioDetal", "B1"), d("13.6986"));
    EXPECT_TRUE(scalar("SELECT PrecioPromocion FROM INVENTARIO WHERE CodigoBarra = 'B1'").isNull());
    // Costs and stock are not prices.
    EXPECT_EQ(price("CostoPromedio", "A1"), Decimal(50));
    EXPECT_EQ(price("Existencia", "A2"), Decimal(4));
    EXPECT_EQ(currentRate(db()), Decimal(40));
    EXPECT_EQ(count("TASA_CAMBIO"), 2);
    EXPECT_TRUE(r.rateFile.isEmpty()); // ExpTasa is off
}

TEST_F(RateTest, WithActTasaOffOrALateEntryTheCatalogueKeepsItsPrices) {
    rateAt("36.5", QDateTime::currentDateTime().addDays(-1));
    setSwitch("ActTasa", "FALSE");
    RegisterResult r = registerRate(db(), {d("40"), {}, true});
    EXPECT_FALSE(r.repriced);
    EXPECT_EQ(currentRate(db()), Decimal(40));
    EXPECT_EQ(price("PrecioDetal", "A1"), Decimal(100));

    // With ActTasa on, a rate for an earlier day only completes the history.
    setSwitch("ActTasa", "TRUE");
    const QDate lastWeek = QDate::currentDate().addDays(-7);
    r = registerRate(db(), {d("30"), lastWeek, true});
    EXPECT_FALSE(r.repriced);
    EXPECT_EQ(price("PrecioDetal", "A1"), Decimal(100));
    EXPECT_EQ(currentRate(db()), Decimal(40));
    EXPECT_EQ(rateForDay(db(), lastWeek), Decimal(30));

    try {
        registerRate(db(), {d("41"), QDate::currentDate().addDays(1), true});
        ADD_FAILURE() << "a rate for tomorrow was accepted";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(),
                  "La fecha de la tasa de cambio no puede ser posterior al dia de hoy...!");
    }
    EXPECT_EQ(count("TASA_CAMBIO"), 3);
}

TEST_F(RateTest, TheDaysRateCarriesOverWeekendsAndTheReminderWantsWorkingDays) {
    const QDate thursday(2026, 5, 7), friday(2026, 5, 8), saturday(2026, 5, 9), monday(2026, 5, 11);
    EXPECT_EQ(rateForDay(db(), friday), Decimal());
    EXPECT_TRUE(rateReminderDue(db(), saturday)); // no rate at all
    rateAt("39", QDateTime(thursday, QTime(9, 0)));
    rateAt("40", QDateTime(friday, QTime(9, 0)));
    rateAt("40.5", QDateTime(friday, QTime(15, 30))); // corrected in the afternoon
    EXPECT_EQ(rateForDay(db(), thursday), Decimal(39));
    EXPECT_EQ(rateForDay(db(), friday), d("40.5"));
    EXPECT_EQ(rateForDay(db(), saturday), d("40.5"));
    EXPECT_EQ(rateForDay(db(), monday), d("40.5"));
    EXPECT_FALSE(rateReminderDue(db(), friday));
    EXPECT_FALSE(rateReminderDue(db(), saturday));
    EXPECT_FALSE(rateReminderDue(db(), saturday.addDays(1)));
    EXPECT_TRUE(rateReminderDue(db(), monday));
    EXPECT_EQ(rateForDay(db(), thursday.addDays(-1)), Decimal());
}

TEST_F(RateTest, TheSaleTakesTheRateOfItsDayNotOneEnteredAhead) {
    rateAt("36.5", QDateTime::currentDateTime().addSecs(-60));
    // Head office typed tomorrow's rate straight into the table.
    rateAt("50", QDateTime(QDate::currentDate().addDays(1), QTime(0, 0)));
    EXPECT_EQ(pos::sale::store::latestExchangeRate(db()), d("36.5"));
}

TEST_F(RateTest, TheRateFileOfHeadOfficeTravelsZippedAndIsLoadedByTheStore) {
    setSwitch("ExpTasa", "TRUE");
    const RegisterResult r = registerRate(db(), {d("40.25"), {}, true});
    ASSERT_EQ(r.rateFile, m_home.filePath("Envia/TasaCambio.zip")); // travels with the packages
    EXPECT_EQ(exchange::package::zipEntries(r.rateFile), QStringList{"TasaCambio.txt"});
    QFile f(m_home.filePath("ZipTemp/TasaCambio.txt"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), "40.25\r\n");

    // At the store: the archive lies in Recibe; ImpTasa loads it once.
    test::TestDatabase store;
    db::execute(store.db(),
                "INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('ImpTasa', "
                "'01', 'TRUE')");
    const QString recibe = m_home.filePath("Recibe");
    QDir().mkpath(recibe);
    ASSERT_TRUE(QFile::copy(r.rateFile, recibe + "/TASACAMBIO.ZIP"));
    EXPECT_EQ(pendingRateFile(recibe), recibe + "/TASACAMBIO.ZIP");
    const auto loaded = loadReceivedRate(store.db(), recibe);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->value, d("40.25"));
    EXPECT_EQ(currentRate(store.db()), d("40.25"));
    EXPECT_TRUE(QDir(recibe).entryList(QDir::Files).isEmpty());
    EXPECT_FALSE(loadReceivedRate(store.db(), recibe));
}

TEST_F(RateTest, TheReceivedRateIsLoadedOnceWithImpTasaAndNeverSentOn) {
    rateAt("36.5", QDateTime::currentDateTime().addDays(-1));
    setSwitch("ActTasa", "TRUE");
    setSwitch("ExpTasa", "TRUE");
    const QString file = receivedFile("40,00\r\nsegunda linea\r\n");
    const QString recibe = m_home.filePath("Recibe");
    EXPECT_EQ(pendingRateFile(recibe), file);

    setSwitch("ImpTasa", "FALSE");
    EXPECT_FALSE(loadReceivedRate(db(), recibe));
    EXPECT_TRUE(QFile::exists(file));

    setSwitch("ImpTasa", "TRUE");
    const auto r = loadReceivedRate(db(), recibe);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->value, Decimal(40));
    EXPECT_TRUE(r->repriced);
    EXPECT_TRUE(r->rateFile.isEmpty());
    EXPECT_FALSE(QFile::exists(m_home.filePath("Envia/TasaCambio.zip")));
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_FALSE(loadReceivedRate(db(), recibe));
    EXPECT_EQ(count("TASA_CAMBIO"), 2);

    // A file without a rate is refused and stays for someone to look at.
    const QString bad = receivedFile("sin tasa\r\n");
    EXPECT_THROW(loadReceivedRate(db(), recibe), UserError);
    EXPECT_TRUE(QFile::exists(bad));
    EXPECT_EQ(count("TASA_CAMBIO"), 2);
}

#ifdef ORVO_BINARY
TEST(RateCommand, RegistersTheTypedRateOnTheStore) {
    if (test::testEngine() != db::Engine::Sqlite)
        GTEST_SKIP() << "the command runs on the embedded store";
    QTemporaryDir home;
    const auto orvo = [&](const QStringList& args) {
        return test::runOrvo(QStringLiteral(ORVO_BINARY), home.path(), args);
    };
    ASSERT_EQ(orvo({"db", "init"}).exitCode, 0);
    const test::CommandRun run = orvo({"rate", "41,75"});
    EXPECT_EQ(run.exitCode, 0) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("Tasa de cambio 41.75 registrada."))
        << run.output.toStdString();
    EXPECT_EQ(orvo({"rate", "cuarenta"}).exitCode, 2);
    {
        QSqlDatabase store = QSqlDatabase::addDatabase("QSQLITE", "rate_command");
        store.setDatabaseName(home.filePath("data/ORVO.sqlite"));
        ASSERT_TRUE(store.open());
        EXPECT_EQ(rateForDay(store, QDate::currentDate()), d("41.75"));
        store.close();
    }
    QSqlDatabase::removeDatabase("rate_command");
}
#endif
