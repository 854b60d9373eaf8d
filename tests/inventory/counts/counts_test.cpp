#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "inventory/counts/counts.h"
#include "inventory/counts/physical_adjustment.h"
#include "inventory/stock/stock_rebuild.h"
#include "support/app_home_guard.h"
#include "support/test_db.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>

using namespace orvo;
using namespace orvo::inventory::counts;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

template <class F> QString refusal(F&& action) {
    try {
        action();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

// A store with shoes A, B, C, D at cost 10, a zero-cost E, a service SRV and an article X kept
// out of counts (Status 3).
class CountTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO PARAMETROS (Nombre, NumeroConteos) VALUES ('TIENDA', 1)");
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
             "16)");
        article("A", "10");
        article("B", "5");
        article("C", "4");
        article("D", "7");
        article("E", "0", "0");
        article("SRV", "0", "10", 1);
        article("X", "9", "10", 0, 3);
    }
    void article(const QString& barcode, const QString& stock, const QString& cost = "10",
                 int type = 0, int status = 1) {
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Existencia, "
             "ExistenciaInicial, CostoPromedio, PrecioDetal, TipoImpuesto, Tipo, Status, "
             "FechaPrimerMovimiento) VALUES (?, ?, ?, 'N1', ?, ?, ?, 20, 1, ?, ?, ?)",
             {barcode, "ART " + barcode, "R" + barcode, stock, stock, cost, type, status,
              QDateTime(QDate(2020, 1, 1), QTime(8, 0))});
    }
    Decimal stock(const QString& barcode) const {
        return Decimal::fromVariant(
            scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {barcode}));
    }
    int articleStatus(const QString& barcode) const {
        return scalar("SELECT Status FROM INVENTARIO WHERE CodigoBarra = ?", {barcode}).toInt();
    }
    void page(Pass pass, int number, std::initializer_list<std::pair<const char*, int>> scans) {
        CountPage p;
        p.number = number;
        p.user = "ANA";
        createPage(db(), pass, p);
        for (const auto& [code, units] : scans)
            scan(db(), pass, number, QString::fromLatin1(code), Decimal(units));
    }
    FinalLine finalLine(int page, const QString& barcode) const {
        const auto final = loadFinal(db(), page);
        for (const FinalLine& l : final->lines)
            if (l.barcode == barcode)
                return l;
        ADD_FAILURE() << "no count-3 line for " << barcode.toStdString();
        return {};
    }
    // Pages 1 and 2 counted twice: they agree on A (12) and C, differ on B, and only the second
    // team found D on page 2.
    void twoTeams() {
        setCountPasses(db(), 2);
        page(Pass::First, 1, {{"A", 10}, {"B", 3}, {"A", 2}});
        page(Pass::First, 2, {{"C", 4}});
        page(Pass::Second, 1, {{"A", 12}, {"B", 4}});
        page(Pass::Second, 2, {{"C", 4}, {"D", 2}});
        for (Pass pass : {Pass::First, Pass::Second})
            for (int n : {1, 2})
                approvePage(db(), pass, n);
        prepareFinal(db(), 1);
        prepareFinal(db(), 2);
    }

    test::AppHomeGuard home;
};

} // namespace

TEST_F(CountTest, ScanningKeepsOneLinePerBarcodeAndRefusesWhatCannotBeCounted) {
    page(Pass::First, 7, {{"A", 1}, {"B", 1}, {"A", 1}});
    EXPECT_EQ(scan(db(), Pass::First, 7, "A", d("2.5")).line.quantity, d("4.5"));
    EXPECT_TRUE(scan(db(), Pass::First, 7, "E", 1).zeroCost);
    EXPECT_FALSE(scan(db(), Pass::First, 7, "B", 1).zeroCost);
    const auto p = loadPage(db(), Pass::First, 7);
    ASSERT_TRUE(p);
    ASSERT_EQ(p->lines.size(), 3);
    EXPECT_EQ(p->lines[0].barcode, "A");
    EXPECT_EQ(p->lines[0].quantity, d("4.5"));
    EXPECT_EQ(p->lines[1].quantity, d("2"));
    EXPECT_EQ(count("MOVTOMAFISICA1", "NumeroPagina = 7"), 3);

    EXPECT_EQ(refusal([&] { scan(db(), Pass::First, 7, "NOPE", 1); }),
              "El código NOPE no existe en el inventario...!");
    EXPECT_EQ(refusal([&] { scan(db(), Pass::First, 7, "SRV", 1); }),
              "El artículo SRV es un servicio y no lleva existencia...!");
    EXPECT_FALSE(refusal([&] { scan(db(), Pass::First, 7, "X", 1); }).isEmpty());
    EXPECT_FALSE(refusal([&] { createPage(db(), Pass::Second, {8}); }).isEmpty());

    approvePage(db(), Pass::First, 7);
    EXPECT_FALSE(refusal([&] { scan(db(), Pass::First, 7, "A", 1); }).isEmpty());
    EXPECT_EQ(loadPage(db(), Pass::First, 7)->lines[0].quantity, d("4.5"));
}

TEST_F(CountTest, OneCountingPassMakesTheApprovedPageFinalAndBatchesAreRefusedWithTwo) {
    page(Pass::First, 1, {{"A", 3}});
    page(Pass::First, 2, {{"B", 2}, {"B", 1}});
    page(Pass::First, 3, {{"C", 1}});
    std::vector<QString> labels;
    EXPECT_EQ(approveInBatch(db(), {1, 2},
                             [&](int, int, const QString& label) { labels.push_back(label); }),
              2);
    ASSERT_FALSE(labels.empty());
    EXPECT_EQ(labels.front(), "Aprobando Toma Nº : 1 de 2");
    EXPECT_EQ(pagesToApprove(db()).size(), 1);
    for (int n : {1, 2}) {
        EXPECT_EQ(scalar("SELECT Status FROM TOMAFISICA1 WHERE NumeroPagina = ?", {n}).toInt(), 2);
        EXPECT_EQ(scalar("SELECT Status FROM TOMAFISICA3 WHERE NumeroPagina = ?", {n}).toInt(), 1);
    }
    const FinalLine b = finalLine(2, "B");
    EXPECT_EQ(b.first, d("3"));
    EXPECT_EQ(b.second, d("3"));
    EXPECT_EQ(b.final, d("3"));
    EXPECT_EQ(count("MOVTOMAFISICA2", "NumeroPagina = 2"), 1);

    // The number of passes is settled while pages exist.
    EXPECT_FALSE(refusal([&] { setCountPasses(db(), 2); }).isEmpty());
    exec("UPDATE PARAMETROS SET NumeroConteos = 2");
    EXPECT_EQ(refusal([&] { checkBatchApproval(db()); }),
              "El sistema esta parametrizado para 2 conteos físicos. Este módulo no esta "
              "disponible...");
    EXPECT_THROW(approveInBatch(db(), {3}), UserError);
    EXPECT_EQ(scalar("SELECT Status FROM TOMAFISICA1 WHERE NumeroPagina = 3").toInt(), 0);
}

TEST_F(CountTest, CountThreeSettlesWhereTheTeamsAgreeAndWaitsForTheRest) {
    twoTeams();
    const FinalLine a = finalLine(1, "A");
    EXPECT_EQ(a.first, d("12"));
    EXPECT_EQ(a.final, d("12"));
    const FinalLine b = finalLine(1, "B");
    EXPECT_EQ(b.first, d("3"));
    EXPECT_EQ(b.second, d("4"));
    EXPECT_EQ(b.final, d("0"));
    const FinalLine onlySecond = finalLine(2, "D");
    EXPECT_EQ(onlySecond.first, d("0"));
    EXPECT_EQ(onlySecond.second, d("2"));
    EXPECT_EQ(onlySecond.final, d("0"));
    EXPECT_EQ(statusText(listPages(db(), Pass::First).front()), "PREPARADA POR CONTEO 3");
    EXPECT_FALSE(refusal([&] { prepareFinal(db(), 1); }).isEmpty());

    keyFinal(db(), 1, "B", 4);
    EXPECT_EQ(finalLine(1, "B").final, d("4"));
    approveFinal(db(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM TOMAFISICA1 WHERE NumeroPagina = 1").toInt(), 2);
    EXPECT_EQ(scalar("SELECT Status FROM TOMAFISICA2 WHERE NumeroPagina = 1").toInt(), 2);
    EXPECT_THROW(keyFinal(db(), 1, "B", 5), UserError);

    const auto sheet = countSheet(db(), Pass::Second, 1);
    EXPECT_EQ(sheet.title, "Conteo 2");
    EXPECT_EQ(finalSheet(db(), 2).title, "Conteo 3");
}

TEST_F(CountTest, PhysicalAdjustmentRefusesInOrderThenReplacesTheStockByTheCount) {
    setCountPasses(db(), 2);
    page(Pass::First, 1, {{"A", 12}});
    EXPECT_EQ(refusal([&] { checkPhysicalAdjustment(db()); }),
              "Existen paginas de conteo 1 abiertas o no han sido procesada en el conteo 3...!");
    approvePage(db(), Pass::First, 1);
    page(Pass::Second, 1, {{"A", 12}, {"B", 3}});
    EXPECT_EQ(refusal([&] { checkPhysicalAdjustment(db()); }),
              "Existen paginas de conteo 1 abiertas o no han sido procesada en el conteo 3...!");
    approvePage(db(), Pass::Second, 1);
    prepareFinal(db(), 1);
    EXPECT_EQ(refusal([&] { checkPhysicalAdjustment(db()); }),
              "Existen paginas de conteo 1 abiertas o no han sido procesada en el conteo 3...!");
    approveFinal(db(), 1); // B differed and was never keyed: it ends at 0
    const int before = count("FISICOLOGICO");
    EXPECT_EQ(before, 0);

    std::vector<QString> labels;
    const PhysicalAdjustmentResult r =
        adjustNow(db(), {"ANA", {}, {}}, [&](int, const QString& l) { labels.push_back(l); });
    EXPECT_TRUE(QFileInfo(r.backupFile).fileName().startsWith("TF_"));
    EXPECT_TRUE(r.backupFile.endsWith(".BAK"));
    EXPECT_EQ(QFileInfo(r.backupFile).dir().dirName(), "Respaldos");
    EXPECT_GT(QFileInfo(r.backupFile).size(), 0);
    for (const char* label : {"Cargando Inventario...", "Cargando Toma Física...",
                              "Ajustando Diferencias...", "Actualizando Inventario..."})
        EXPECT_NE(std::find(labels.begin(), labels.end(), QString::fromUtf8(label)), labels.end())
            << label;

    EXPECT_EQ(stock("A"), d("12"));
    EXPECT_EQ(stock("B"), d("0"));
    EXPECT_EQ(stock("D"), d("0")); // not counted
    EXPECT_EQ(stock("X"), d("9")); // kept out of counts
    EXPECT_EQ(articleStatus("X"), 3);
    EXPECT_EQ(articleStatus("A"), 1);
    EXPECT_EQ(articleStatus("D"), 0);   // only articles with stock stay active
    EXPECT_EQ(articleStatus("SRV"), 1); // a service still sells
    EXPECT_EQ(count("FISICOLOGICO", "CodigoBarra = 'X'"), 0);
    EXPECT_EQ(
        Decimal::fromVariant(scalar("SELECT Ajuste FROM FISICOLOGICO WHERE CodigoBarra = 'D'")),
        d("-7"));
    EXPECT_EQ(
        Decimal::fromVariant(scalar("SELECT Impuesto FROM FISICOLOGICO WHERE CodigoBarra = 'A'")),
        d("3.2"));
    for (const char* table : {"TOMAFISICA1", "TOMAFISICA2", "TOMAFISICA3", "MOVTOMAFISICA3"})
        EXPECT_EQ(count(QString::fromLatin1(table)), 0) << table;

    // Nothing counted since, and once a day.
    EXPECT_EQ(refusal([&] { checkPhysicalAdjustment(db()); }),
              "el Ajuste Físico Lógico ya se Realizo... , Si tiene algun problema notifique al "
              "Departamento de Sistema...!");
    // The rebuild starts from the count: it agrees.
    EXPECT_EQ(inventory::stock::rebuildNow(db()).changed, 0);
    EXPECT_EQ(stock("X"), d("9"));
}

TEST_F(CountTest, NoCountMeansNoAdjustment) {
    EXPECT_EQ(refusal([&] { checkPhysicalAdjustment(db()); }),
              "Asegurese de haber realizado la Toma Física y que todas las páginas esten "
              "cerradas...!");
}

TEST_F(CountTest, MovedAsideTransfersComeBackAfterTheCountAndAFailureThereLosesNothing) {
    exec("INSERT INTO ITRANSFERENCIAS (Numero, CodigoEnvia, CodigoRecibe, Fecha, Status) VALUES "
         "(40, 'T02', 'T01', ?, 2)",
         {QDateTime(QDate(2026, 1, 5), QTime(9, 0))});
    exec("INSERT INTO IMOVTRANSFERENCIAS (Numero, CodigoEnvia, Item, CodigoBarra, Cantidad) "
         "VALUES (40, 'T02', 1, 'C', 6)");
    page(Pass::First, 1, {{"A", 12}, {"C", 1}});
    approvePage(db(), Pass::First, 1);

    // The movement log refuses its row: the adjustment stops after the backup, half-way.
    if (isPostgres()) {
        exec("CREATE OR REPLACE FUNCTION orvo_refuse_log() RETURNS trigger AS $$ BEGIN RAISE "
             "EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_log BEFORE INSERT ON BITACORAMOVIMIENTO FOR EACH ROW "
             "EXECUTE FUNCTION orvo_refuse_log()");
    } else {
        exec("CREATE TRIGGER TR_REFUSE_LOG BEFORE INSERT ON BITACORAMOVIMIENTO BEGIN SELECT "
             "RAISE(ABORT, 'rechazado'); END");
    }
    const QString folder = home.filePath("Respaldos");
    EXPECT_THROW(adjustNow(db(), {"ANA", {}, {}}), UserError);
    EXPECT_EQ(stock("A"), d("10"));
    EXPECT_EQ(stock("D"), d("7"));
    EXPECT_EQ(count("FISICOLOGICO"), 0);
    EXPECT_EQ(count("TOMAFISICA3"), 1);
    EXPECT_EQ(scalar("SELECT Status FROM ITRANSFERENCIAS").toInt(), 2);
    const QStringList backups = QDir(folder).entryList({"TF_*.BAK"}, QDir::Files);
    ASSERT_EQ(backups.size(), 1);
    if (!isPostgres()) {
        // The backup is the store as the count found it.
        {
            QSqlDatabase copy = QSqlDatabase::addDatabase("QSQLITE", "counts_backup");
            copy.setDatabaseName(QDir(folder).filePath(backups.front()));
            ASSERT_TRUE(copy.open());
            EXPECT_EQ(Decimal::fromVariant(db::scalar(
                          copy, "SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'A'")),
                      d("10"));
            EXPECT_EQ(db::scalar(copy, "SELECT COUNT(*) FROM TOMAFISICA3").toInt(), 1);
            copy.close();
        }
        QSqlDatabase::removeDatabase("counts_backup");
    }

    exec(isPostgres() ? "DROP TRIGGER tr_refuse_log ON BITACORAMOVIMIENTO"
                      : "DROP TRIGGER TR_REFUSE_LOG");
    const PhysicalAdjustmentResult r = adjustNow(db(), {"ANA", {}, {}});
    EXPECT_EQ(r.movedTransfers, 1);
    // Counted 1 on the shelf, then the 6 still boxed come in dated now.
    EXPECT_EQ(stock("C"), d("7"));
    EXPECT_EQ(scalar("SELECT Status FROM ITRANSFERENCIAS").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Observacion FROM BITACORAMOVIMIENTO").toString(),
              "TRANSFERENCIA DESPLAZADA DE FECHA ORIGINAL : 05/01/2026");
    EXPECT_EQ(scalar("SELECT TipodocumentoOrigen FROM BITACORAMOVIMIENTO").toString(), "TE");
    EXPECT_EQ(inventory::stock::rebuildNow(db()).changed, 0);
    EXPECT_EQ(stock("C"), d("7"));
}

TEST_F(CountTest, PartialCountCorrectsOnlyWhatWasCountedThroughTwoAdjustments) {
    exec("UPDATE INVENTARIO SET Status = 0 WHERE CodigoBarra = 'A'");
    page(Pass::First, 1, {{"A", 13}, {"B", 2}}); // A above its 10, B below its 5
    page(Pass::First, 2, {{"C", 4}, {"B", 1}});  // C as booked
    EXPECT_EQ(refusal([&] { checkPartialAdjustment(db()); }),
              "Existen paginas de conteo 1 abiertas...!");
    approvePage(db(), Pass::First, 1, true);
    approvePage(db(), Pass::First, 2, true);
    EXPECT_EQ(statusText(listPages(db(), Pass::First).front(), true),
              "PREPARADA POR AJUSTE PARCIAL");
    EXPECT_EQ(count("TOMAFISICA3"), 0);

    const PartialResult r = runPartialAdjustment(db(), "ANA");
    ASSERT_GT(r.plusNumber, 0);
    ASSERT_GT(r.minusNumber, 0);
    EXPECT_EQ(stock("A"), d("13"));
    EXPECT_EQ(stock("B"), d("3"));
    EXPECT_EQ(stock("C"), d("4"));
    EXPECT_EQ(stock("D"), d("7"));
    EXPECT_EQ(articleStatus("A"), 1);
    EXPECT_EQ(count("MOVAJUSTES"), 2); // nothing for C
    EXPECT_EQ(scalar("SELECT TipoAjuste FROM AJUSTES WHERE Numero = ?", {r.plusNumber}).toInt(),
              999);
    EXPECT_EQ(scalar("SELECT Signo FROM AJUSTES WHERE Numero = ?", {r.minusNumber}).toInt(), -1);
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT Cantidad FROM MOVAJUSTES WHERE Numero = ?", {r.minusNumber})),
              d("2"));
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT TotalValor FROM AJUSTES WHERE Numero = ?", {r.plusNumber})),
              d("30"));
    EXPECT_EQ(scalar("SELECT Observacion FROM AJUSTES WHERE Numero = ?", {r.plusNumber}).toString(),
              "AJUSTE GENERADO POR INVENTARIO PARCIAL");
    EXPECT_EQ(count("TOMAFISICA1"), 0);
    EXPECT_EQ(count("MOVTOMAFISICA1"), 0);
    // The stock moved once: the documents agree with it.
    EXPECT_EQ(inventory::stock::rebuildNow(db()).changed, 0);
    EXPECT_THROW(runPartialAdjustment(db(), "ANA"), UserError);
}
