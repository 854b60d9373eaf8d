// Price lists sent by head office as lista.zip (ResuList.dbf, MoviList.dbf) or as loose tables,
// loaded once into the store; and `orvo import` loading the rate and the lists.
#include "inventory/prices/price_support.h"

#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"
#include "inventory/prices/price_lists.h"
#include "inventory/prices/received_lists.h"
#include "support/orvo_process.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::inventory;
using namespace orvo::inventory::prices;
using exchange::package::dbfName;
using exchange::package::DbfWriter;
using test::money;
using test::refusal;

namespace {

class ReceivedListsTest : public test::PriceTest {
protected:
    void SetUp() override {
        PriceTest::SetUp();
        ASSERT_TRUE(m_home.isValid());
        m_templates = m_home.filePath("Estructura");
        exchange::package::installTemplates(m_templates);
        m_recibe = m_home.filePath("Recibe");
        m_work = m_home.filePath("casa-matriz");
        QDir().mkpath(m_recibe);
        QDir().mkpath(m_work);
    }

    QStringList writeLists(const QString& folder, const char* summary, const char* lines,
                           const char* summaryTemplate, const char* linesTemplate) const {
        return test::writeHeadOfficeLists(m_templates, folder, summary, lines, summaryTemplate,
                                          linesTemplate);
    }
    QString listaZip() const {
        const QStringList tables =
            writeLists(m_work, "Resulist", "Movilist", "RESULIST", "MOVILIST");
        const QString zip = m_work + "/lista.zip";
        exchange::package::writeZip(zip, tables);
        return zip;
    }
    static ArticleWriter writer() { return ArticleWriter::here("ANA", "frmImpListaPrecios"); }
    void touch(const QString& name) const {
        QFile f(m_recibe + "/" + name);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("x");
    }

    QTemporaryDir m_home;
    QString m_templates, m_recibe, m_work;
    QPair<QString, QString> m_demoModel;
};

} // namespace

TEST_F(ReceivedListsTest, ListaZipIsLoadedOnceIntoTheCatalogue) {
    EXPECT_FALSE(readReceivedLists(m_recibe));
    const QString zip = listaZip();
    ASSERT_TRUE(QFile::copy(zip, m_recibe + "/LISTA.ZIP"));
    auto received = readReceivedLists(m_recibe);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->source, "LISTA.ZIP");
    ASSERT_EQ(received->lists.size(), 2);
    EXPECT_EQ(received->lists[0].sourceNumber, 12);
    EXPECT_EQ(received->lists[0].list.lines.size(), 2);
    EXPECT_EQ(received->lists[0].list.lines[1].promotionPrice, d("36"));

    const ReceivedLoad r = loadReceivedLists(db(), *received, {true, true}, writer());
    EXPECT_EQ(r.numbers, QList<int>({1, 2}));
    EXPECT_EQ(r.articlesUpdated, 6);
    EXPECT_FALSE(QFile::exists(m_recibe + "/LISTA.ZIP"));
    EXPECT_EQ(scalar("SELECT Observacion FROM LISTAPRECIO WHERE Numero = 1").toString(),
              "CASA MATRIZ Nº 12 DEL 04/05/2026: PRECIOS DE MAYO");
    EXPECT_EQ(count("LISTAPRECIO", "Status = 1"), 2);
    for (const char* code : {"R1-36", "R1-38", "R1-40"})
        EXPECT_EQ(inventory("PrecioDetal", code), d("150")) << code;
    EXPECT_EQ(inventory("PrecioPromocion", "R2-M"), d("36"));
    EXPECT_EQ(inventory("Promocion", "R2-M"), Decimal(1));
    EXPECT_EQ(inventory("PrecioDetal", "R3-U"), d("66.5"));

    // The same package arriving again changes nothing.
    ASSERT_TRUE(QFile::copy(zip, m_recibe + "/lista.zip"));
    exec("UPDATE INVENTARIO SET PrecioDetal = 151 WHERE Referencia = 'R1'");
    const ReceivedLoad again =
        loadReceivedLists(db(), *readReceivedLists(m_recibe), {true, true}, writer());
    EXPECT_TRUE(again.numbers.isEmpty());
    EXPECT_EQ(again.alreadyLoaded, 2);
    EXPECT_EQ(count("LISTAPRECIO"), 2);
    EXPECT_EQ(inventory("PrecioDetal", "R1-38"), d("151"));
}

TEST_F(ReceivedListsTest, ListsWaitForThePendingRateAndTransfersAndLoadOpenWhenAsked) {
    writeLists(m_recibe, "ResLista", "MovLista", "LISTAS", "MOVLISTA");
    touch("TasaCambio.txt");
    EXPECT_NO_THROW(checkNothingPendingBeforeLists(db(), m_recibe)); // ImpTasa is off
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('ImpTasa', '01', "
         "'TRUE')");
    EXPECT_EQ(refusal([&] { checkNothingPendingBeforeLists(db(), m_recibe); }),
              "Debe cargar la tasa de cambio pendiente...!");
    QFile::remove(m_recibe + "/TasaCambio.txt");
    touch("RESUTRAN.DBF");
    touch("MoviTran.dbf");
    EXPECT_EQ(refusal([&] { checkNothingPendingBeforeLists(db(), m_recibe); }),
              "Debe cargar las transferencias...!");
    QFile::remove(m_recibe + "/RESUTRAN.DBF");
    EXPECT_NO_THROW(checkNothingPendingBeforeLists(db(), m_recibe));

    // The loose tables of the other system; loaded open, the catalogue waits for the approval.
    const auto received = readReceivedLists(m_recibe);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->source, "ResLista.dbf / MovLista.dbf");
    // The price list screen can take the lines of the file into a list of its own.
    const QList<PriceLine> lines = linesFromReceivedFile(m_recibe);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[2].retail, d("66.5"));
    EXPECT_EQ(lines[2].wholesale, d("61.5"));

    const ReceivedLoad r = loadReceivedLists(db(), *received, {}, writer());
    EXPECT_EQ(r.numbers.size(), 2);
    EXPECT_EQ(count("LISTAPRECIO", "Status = 0"), 2);
    EXPECT_EQ(inventory("PrecioDetal", "R1-38"), d("100"));
    EXPECT_FALSE(QFile::exists(m_recibe + "/ResLista.dbf"));
    EXPECT_FALSE(readReceivedLists(m_recibe));
    EXPECT_EQ(refusal([&] { linesFromReceivedFile(m_recibe); }),
              "No existe el archivo MoviList.dbf ni MovLista.dbf en la carpeta RECIBE...!");
}

TEST_F(ReceivedListsTest, ABrokenPackageIsRefusedAndNothingIsLoaded) {
    QFile f(m_recibe + "/lista.zip");
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("no es un zip");
    f.close();
    EXPECT_THROW(readReceivedLists(m_recibe), UserError);
    EXPECT_EQ(count("LISTAPRECIO"), 0);
    EXPECT_TRUE(QFile::exists(m_recibe + "/lista.zip"));
}

#ifdef ORVO_BINARY
TEST_F(ReceivedListsTest, OrvoImportLoadsTheRateThenTheLists) {
    if (test::testEngine() != db::Engine::Sqlite)
        GTEST_SKIP() << "the command runs on the embedded store";
    QTemporaryDir home;
    const auto orvo = [&](const QStringList& args) {
        return test::runOrvo(QStringLiteral(ORVO_BINARY), home.path(), args);
    };
    test::CommandRun run = orvo({"db", "init", "--demo"});
    ASSERT_EQ(run.exitCode, 0) << run.output.toStdString();
    {
        QSqlDatabase store = QSqlDatabase::addDatabase("QSQLITE", "import_command");
        store.setDatabaseName(home.filePath("data/ORVO.sqlite"));
        ASSERT_TRUE(store.open());
        db::execute(store, "UPDATE TABLA_VALORES SET Descripcion = 'TRUE' WHERE IdTabla IN "
                           "('ImpTasa', 'ActTasa')");
        // Head office prices one of the demo's models.
        db::Sql q(store, "SELECT Referencia, CodigoMarca FROM INVENTARIO WHERE Status = 1 AND "
                         "Tipo = 0 ORDER BY Referencia LIMIT 1");
        q.exec();
        ASSERT_TRUE(q.next());
        m_demoModel = {q.text("Referencia"), q.text("CodigoMarca")};
        store.close();
    }
    QSqlDatabase::removeDatabase("import_command");
    const QString recibe = home.filePath("Recibe");
    QFile rate(recibe + "/TasaCambio.txt");
    ASSERT_TRUE(rate.open(QIODevice::WriteOnly));
    rate.write("40,00\r\n");
    rate.close();
    {
        DbfWriter head = DbfWriter::fromTemplate(
            exchange::package::findTemplate("RESULIST", m_templates), m_work + "/RESULIST.DBF");
        head.append({{dbfName("Numero"), 7}, {dbfName("Fecha"), QDate(2026, 5, 6)}});
        head.close();
        DbfWriter body = DbfWriter::fromTemplate(
            exchange::package::findTemplate("MOVILIST", m_templates), m_work + "/MOVILIST.DBF");
        body.append({{dbfName("Numero"), 7},
                     {dbfName("Referencia"), m_demoModel.first},
                     {dbfName("CodigoMarca"), m_demoModel.second},
                     {dbfName("PrecioDetal"), money(d("777"))},
                     {dbfName("PrecioMayor"), money(d("700"))},
                     {dbfName("PrecioAfiliado"), money(d("750"))}});
        body.close();
        exchange::package::writeZip(recibe + "/lista.zip",
                                    {m_work + "/RESULIST.DBF", m_work + "/MOVILIST.DBF"});
    }
    run = orvo({"import"});
    EXPECT_EQ(run.exitCode, 0) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("Tasa de cambio: tasa de cambio 40 registrada"))
        << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("Listas de precios: lista de precio Nº 1 cargada y aprobada "
                                    "(lista.zip)"))
        << run.output.toStdString();
    run = orvo({"import"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.output.contains("No hay archivos pendientes por cargar"))
        << run.output.toStdString();
    {
        QSqlDatabase store = QSqlDatabase::addDatabase("QSQLITE", "import_command");
        store.setDatabaseName(home.filePath("data/ORVO.sqlite"));
        ASSERT_TRUE(store.open());
        EXPECT_EQ(Decimal::fromVariant(
                      db::scalar(store,
                                 "SELECT MIN(PrecioDetal) FROM INVENTARIO WHERE Referencia = ? AND "
                                 "CodigoMarca = ?",
                                 {m_demoModel.first, m_demoModel.second})),
                  d("777"));
        store.close();
    }
    QSqlDatabase::removeDatabase("import_command");
}
#endif
