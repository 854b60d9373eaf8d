// The monetary reconversion on the demo store: every column of the plan divided once, the rest
// untouched, refused a second time, and a failure half-way that leaves the database as it was.
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/rate/reconversion.h"
#include "common/schema/schema.h"
#include "shell/demo/demo_store.h"
#include "support/scoped_app_home.h"
#include "support/test_db.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::common::rate;

namespace {

using Snapshot = QMap<QString, QList<Decimal>>; // "TABLE.Column" -> its values, ascending

class ReconversionTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::demo::seedDemoStore(db());
        // The demo has no documents yet: one row in every table of the plan that is empty.
        int n = 0;
        for (const ReconversionGroup& g : reconversionPlan())
            for (const ReconversionTable& t : g.tables)
                if (count(t.table) == 0)
                    fillOneRow(t.table, ++n);
        exec("INSERT INTO SALDODIARIO (Fecha, CodigoBarra, Existencia, Costo) VALUES (?, 'X', "
             "1, 2)",
             {QDateTime::currentDateTime()});
    }

    // Every column of the table with a value of its type; amounts differ from row to row.
    void fillOneRow(const QString& tableName, int n) const {
        const schema::Table* table = schema::findTable(tableName);
        ASSERT_NE(table, nullptr) << tableName.toStdString();
        QStringList names, marks;
        QVariantList values;
        for (const schema::Column& c : table->columns) {
            QVariant v;
            switch (c.type) {
            case schema::Type::Identity:
                continue;
            case schema::Type::Text:
            case schema::Type::Memo:
                v = QStringLiteral("T%1").arg(n).left(c.size > 0 ? c.size : 10);
                break;
            case schema::Type::DateTime:
                v = QDateTime(QDate::currentDate(), QTime(10, 0));
                break;
            case schema::Type::Numeric:
                v = QStringLiteral("%1.75").arg(100 * n + int(names.size()));
                break;
            default:
                v = n;
            }
            names << c.name;
            marks << QStringLiteral("?");
            values << v;
        }
        db::Sql q(db(), QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                            .arg(tableName, names.join(u','), marks.join(u',')));
        for (const QVariant& v : values)
            q.bind(v);
        q.exec();
    }

    Snapshot snapshot(bool planColumns = true) const {
        Snapshot s;
        const auto take = [&](const QString& table, const QString& column) {
            db::Sql q(db(), QStringLiteral("SELECT %1 FROM %2 WHERE %1 IS NOT NULL ORDER BY %1")
                                .arg(column, table));
            q.exec();
            QList<Decimal>& values = s[table + u'.' + column];
            while (q.next())
                values << Decimal::fromVariant(q.value(0));
        };
        if (planColumns) {
            for (const ReconversionGroup& g : reconversionPlan())
                for (const ReconversionTable& t : g.tables)
                    for (const QString& c : t.columns)
                        take(t.table, c);
        } else {
            // Amounts and quantities outside the plan.
            take("VENTAS", "TasaCambio");
            take("INVENTARIO", "Existencia");
            take("TASA_CAMBIO", "Valor");
            take("MOVVENTAS", "Cantidad");
            take("IMPUESTOS", "PorcentajeImpuesto");
        }
        return s;
    }

    void setValue(const char* key, const QString& value) const {
        exec("DELETE FROM TABLA_VALORES WHERE IdTabla = ?", {key});
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {key, value});
    }
    QString value(const char* key) const {
        return scalar("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = ?", {key}).toString();
    }
    void dueToday(const char* factor = "1000") const {
        setValue("ReCon", QDate::currentDate().toString("dd/MM/yyyy"));
        setValue("ReVal", factor);
    }

    // The database refuses any update of INVENTARIO: the failure comes after the first eight
    // groups were divided.
    void failOnInventory() const {
        if (isPostgres()) {
            exec("CREATE OR REPLACE FUNCTION orvo_refuse() RETURNS trigger AS $$ BEGIN RAISE "
                 "EXCEPTION 'corte de luz'; END $$ LANGUAGE plpgsql");
            exec("CREATE TRIGGER tr_refuse BEFORE UPDATE ON INVENTARIO FOR EACH ROW EXECUTE "
                 "FUNCTION orvo_refuse()");
        } else {
            exec("CREATE TRIGGER TR_REFUSE BEFORE UPDATE ON INVENTARIO BEGIN SELECT "
                 "RAISE(ABORT, 'corte de luz'); END");
        }
    }
    void repairInventory() const {
        exec(isPostgres() ? "DROP TRIGGER tr_refuse ON INVENTARIO" : "DROP TRIGGER TR_REFUSE");
    }

    int numericScale(const char* table, const char* column) const {
        return scalar("SELECT numeric_scale FROM information_schema.columns WHERE table_name = "
                      "lower(?) AND column_name = lower(?) AND table_schema = current_schema()",
                      {table, column})
            .toInt();
    }

    test::ScopedAppHome m_home;
};

} // namespace

TEST_F(ReconversionTest, DueOnlyFromItsDayAndNeverTwice) {
    const QDate today = QDate::currentDate();
    EXPECT_FALSE(reconversionDue(db(), today)); // no ReCon: 31/12/2099
    setValue("ReCon", today.addDays(1).toString("dd/MM/yyyy"));
    EXPECT_FALSE(reconversionDue(db(), today));
    dueToday();
    EXPECT_TRUE(reconversionDue(db(), today));
    setValue("ReTra", "1"); // left by an interrupted run of the previous system
    EXPECT_FALSE(reconversionDue(db(), today));
    setValue("ReTra", "0");
    setValue("ReRea", "1");
    EXPECT_FALSE(reconversionDue(db(), today));
    EXPECT_FALSE(runReconversion(db(), today));
}

TEST_F(ReconversionTest, EveryColumnOfThePlanIsDividedOnceAndNothingElse) {
    dueToday("1000");
    const Snapshot before = snapshot();
    const Snapshot untouched = snapshot(false);
    const QDateTime start = QDateTime::currentDateTime().addSecs(-2);

    ASSERT_TRUE(runReconversion(db(), QDate::currentDate()));

    const Snapshot after = snapshot();
    for (const ReconversionGroup& g : reconversionPlan()) {
        for (const ReconversionTable& t : g.tables) {
            const Decimal factor = t.fixedFactor ? Decimal(100000) : Decimal(1000);
            for (const QString& c : t.columns) {
                const QString key = t.table + u'.' + c;
                const QList<Decimal>& was = before[key];
                const QList<Decimal>& now = after[key];
                ASSERT_FALSE(was.isEmpty()) << key.toStdString();
                ASSERT_EQ(now.size(), was.size()) << key.toStdString();
                for (int i = 0; i < was.size(); ++i)
                    EXPECT_EQ(now[i], (was[i] / factor).rounded(8))
                        << key.toStdString() << " " << was[i].toString().toStdString() << " -> "
                        << now[i].toString().toStdString();
            }
        }
    }
    EXPECT_EQ(snapshot(false), untouched);
    // An amount keeps the decimals the division gave it.
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT SUM(TotalMercancia) FROM VENTAS")),
              (before["VENTAS.TotalMercancia"].first() / Decimal(1000)).rounded(8));
    if (isPostgres()) {
        EXPECT_EQ(numericScale("VENTAS", "TotalMercancia"), 8);
        EXPECT_EQ(numericScale("SALIDASCAJA", "Monto"), 8);
        EXPECT_EQ(numericScale("MOVVENTAS", "Cantidad"), 3);
    }
    // Every article travels with the next export.
    EXPECT_EQ(count("INVENTARIO", "UltimaActualizacion < ?", {start}), 0);
    EXPECT_FALSE(db::tableExists(db(), "SALDODIARIO"));
    EXPECT_EQ(value("ReRea"), "1");
    EXPECT_EQ(value("ReTra"), "0");
    QDir backups(m_home.filePath("Respaldos"));
    const QStringList files = backups.entryList({"*_RECONVERSION.BAK"}, QDir::Files);
    ASSERT_EQ(files.size(), 1);
    EXPECT_GT(QFileInfo(backups.filePath(files.first())).size(), 0);

    // Refused a second time: nothing is divided again.
    EXPECT_FALSE(reconversionDue(db(), QDate::currentDate()));
    setValue("ReRea", "1");
    EXPECT_FALSE(runReconversion(db(), QDate::currentDate()));
    EXPECT_EQ(snapshot(), after);
}

TEST_F(ReconversionTest, AFailureHalfWayLeavesTheDatabaseWholeAndTheNextOpeningFinishesIt) {
    dueToday("100000");
    const Snapshot before = snapshot();
    failOnInventory();
    try {
        runReconversion(db(), QDate::currentDate());
        ADD_FAILURE() << "the reconversion went through a refused update";
    } catch (const UserError& e) {
        EXPECT_TRUE(e.text().contains("corte de luz")) << e.text().toStdString();
    }
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(db::tableExists(db(), "SALDODIARIO"));
    EXPECT_EQ(value("ReTra"), "");
    EXPECT_EQ(value("ReRea"), "");
    if (isPostgres()) {
        EXPECT_EQ(numericScale("VENTAS", "TotalMercancia"), 2);
    }
    EXPECT_TRUE(reconversionDue(db(), QDate::currentDate()));

    repairInventory();
    ASSERT_TRUE(runReconversion(db(), QDate::currentDate()));
    const Snapshot after = snapshot();
    for (const char* key : {"AJUSTES.TotalValor", "VENTAS.TotalMercancia", "INVENTARIO.PrecioDetal",
                            "MOVORDENCOMPRAS.Precio"})
        for (int i = 0; i < before[key].size(); ++i)
            EXPECT_EQ(after[key][i], (before[key][i] / Decimal(100000)).rounded(8)) << key;
    EXPECT_EQ(value("ReRea"), "1");
}

TEST_F(ReconversionTest, AFactorThatIsNotANumberStopsBeforeAnythingChanges) {
    dueToday("mil");
    const Snapshot before = snapshot();
    EXPECT_THROW(runReconversion(db(), QDate::currentDate()), UserError);
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(value("ReRea"), "");
}
