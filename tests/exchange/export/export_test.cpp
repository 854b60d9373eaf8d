#include "export_fixture.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/export/export_job.h"
#include "exchange/export/export_store.h"
#include "exchange/package/dbf.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/zip_archive.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QSqlRecord>
#include <QXmlStreamReader>

namespace orvo::test {
namespace {

using exchange::exporting::ExportFormat;
using exchange::exporting::ExportJob;
using exchange::exporting::exportNow;
using exchange::package::DbfTable;
using exchange::package::PackageReader;

inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

const QDate kDay(2024, 6, 14);

QDateTime at(const QDate& day, int h, int m, int s = 0) {
    return QDateTime(day, QTime(h, m, s));
}

// The invoice numbers of a VENTAS file, in file order.
QList<long long> invoices(const DbfTable& t) {
    QList<long long> out;
    for (int i = 0; i < t.recordCount(); ++i)
        out << t.integer(i, "NumFac");
    return out;
}

class ExportJobTest : public ExportTest {
protected:
    // Sales around the day's bounds: only 2 lies inside the store package's range.
    void sellAroundTheDay() {
        sell(1, at(kDay.addDays(-1), 12, 0), "7591234000018", "1", "100");
        sell(2, at(kDay, 10, 15, 30), "7591234000018", "2.5", "1234.56");
        sell(3, at(kDay, 23, 59, 30), "7591234000025", "1", "50");
        sell(4, at(kDay, 0, 0, 0), "7591234000025", "1", "60");
    }
    QString run(ExportFormat format, const QDate& from = kDay, const QDate& to = kDay) {
        return exportNow(db(), {format, from, to});
    }
};

// The day's package: only what lies in the range, no file for a table without rows, the lines,
// payments and stamped articles of the day's sale, all readable as dBase tables.
TEST_F(ExportJobTest, StorePackageCarriesTheDayInItsBounds) {
    sellAroundTheDay();
    exec("INSERT INTO ORDENCOMPRAS (Numero, Proveedor, Fecha, Status) VALUES (1, 'P1', ?, 1)",
         {at(kDay, 9, 0)});
    exec("INSERT INTO MOVORDENCOMPRAS (Numero, CodigoBarra, Cantidad, Precio, Item) VALUES "
         "(1, '7591234000032', 5, 40, 1)");

    const QString zip = run(ExportFormat::Orvo);
    EXPECT_EQ(zip, envia() + "/01.zip");
    EXPECT_EQ(enviaFiles(), (QStringList{"01.zip", "MOVORDEC.EST"}))
        << "the DBF files are gone once zipped; the order lines stay beside the package";
    const QStringList entries = exchange::package::zipEntries(zip);
    for (const char* expected :
         {"USUARIO.DBF", "PARAMETR.DBF", "CAJAS.DBF", "MARCAS.DBF", "INVENTAR.DBF", "CLIENTES.DBF",
          "VENTAS.DBF", "MOVVENTA.DBF", "PAGOSVEN.DBF", "ORDENCOM.DBF"})
        EXPECT_TRUE(entries.contains(expected)) << expected;
    for (const char* absent : {"COMPRAS.DBF", "TRANSFER.DBF", "DEVVENTA.DBF", "TALLAS.DBF",
                               "DIARIOCA.DBF", "MOVORDEC.DBF", "MOVORDEC.EST"})
        EXPECT_FALSE(entries.contains(absent)) << absent << ": no rows, no file";

    const PackageReader p(zip, {{"VENTAS", {"NumFac", "Serie", "Fecha", "Hora", "TotMercan"}},
                                {"MOVVENTA", {"NumFac", "CodBar", "Cantidad", "Precio", "Costo"}},
                                {"PAGOSVEN", {"NumFac", "Monto"}},
                                {"INVENTAR", {"CodBar", "UltActual", "PreDetal"}},
                                {"CLIENTES", {"Codigo", "Nombre"}},
                                {"PARAMETR", {"Codigo", "Nombre", "CompExport"}}});
    const DbfTable& ventas = p.table("VENTAS");
    EXPECT_EQ(invoices(ventas), QList<long long>{2})
        << "23:59:30 and 00:00:00 of the day, and the day before, stay out";
    EXPECT_EQ(ventas.date(0, "Fecha"), kDay);
    EXPECT_EQ(ventas.text(0, "Hora"), QStringLiteral("2024-06-14 10:15:30"));
    EXPECT_EQ(ventas.decimal(0, "TotMercan"), Decimal::fromString(u"1234.56"));
    const DbfTable& lines = p.table("MOVVENTA");
    ASSERT_EQ(lines.recordCount(), 1);
    EXPECT_EQ(lines.text(0, "CodBar"), QStringLiteral("7591234000018"));
    EXPECT_EQ(lines.decimal(0, "Cantidad"), Decimal::fromString(u"2.5"));
    EXPECT_EQ(lines.decimal(0, "Costo"), Decimal::fromString(u"40.12345"));
    EXPECT_EQ(invoices(p.table("PAGOSVEN")), QList<long long>{2});
    const DbfTable& articles = p.table("INVENTAR");
    ASSERT_EQ(articles.recordCount(), 1) << "the article sold that day only";
    EXPECT_EQ(articles.text(0, "CodBar"), QStringLiteral("7591234000018"));
    EXPECT_EQ(articles.date(0, "UltActual"), kDay);
    const DbfTable& clients = p.table("CLIENTES");
    ASSERT_EQ(clients.recordCount(), 1);
    EXPECT_EQ(clients.text(0, "Nombre"), QStringLiteral("MARÍA PEÑA"));
    EXPECT_EQ(p.table("PARAMETR").text(0, "Nombre"), QStringLiteral("TIENDA ÑAÑA, C.A."));

    const DbfTable orderLines(envia() + "/MOVORDEC.EST", {"Numero", "CodBar"});
    EXPECT_EQ(orderLines.recordCount(), 1);
}

// An ordinary dBase reader (Debian's dbview) opens the package's files and reads the day's sale,
// its payment and the article that moved, accents included.
TEST_F(ExportJobTest, AnOrdinaryDBaseReaderOpensThePackage) {
    sell(2, at(kDay, 10, 15, 30), "7591234000018", "2.5", "1234.56");
    const QString zip = run(ExportFormat::Orvo);
    QTemporaryDir unpacked;
    exchange::package::extractZip(zip, unpacked.path());
    const auto dbview = [&](const QStringList& args) {
        QProcess p;
        p.setWorkingDirectory(unpacked.path());
        p.start(QStringLiteral("dbview"), args);
        EXPECT_TRUE(p.waitForFinished(30000)) << "dbview (scripts/setup.sh installs it)";
        EXPECT_EQ(p.exitCode(), 0);
        return QString::fromLatin1(p.readAllStandardOutput());
    };
    const QString info = dbview({"-i", "-e", "-r", "VENTAS.DBF"});
    EXPECT_TRUE(info.contains(QRegularExpression("Number of recs: *1\\b"))) << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression("NumFac\\s+N"))) << info.toStdString();
    const auto rows = [&](const char* file) {
        return dbview({"-b", "-t", "-d", "|", QString::fromLatin1(file)})
            .split('\n', Qt::SkipEmptyParts);
    };
    const QStringList ventas = rows("VENTAS.DBF");
    ASSERT_EQ(ventas.size(), 1);
    EXPECT_TRUE(ventas[0].startsWith("2|Z1B0000001|20240614|2024-06-14 10:15:30|"))
        << ventas[0].toStdString();
    EXPECT_TRUE(ventas[0].contains("|1234.56|")) << ventas[0].toStdString();
    const QStringList lines = rows("MOVVENTA.DBF");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("|7591234000018|")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains("|2.500|")) << lines[0].toStdString();
    EXPECT_EQ(rows("PAGOSVEN.DBF").size(), 1);
    const QStringList articles = rows("INVENTAR.DBF");
    ASSERT_EQ(articles.size(), 1);
    EXPECT_TRUE(articles[0].startsWith(QStringLiteral("7591234000018|CAMISA NIÑO 7591234000018|")))
        << articles[0].toStdString();
    EXPECT_TRUE(rows("CLIENTES.DBF").value(0).startsWith(QStringLiteral("V123|MARÍA PEÑA|")));
}

// The head-office set ends at 23:59:59, carries the register number and sends withdrawals as
// expenses with their account's name.
TEST_F(ExportJobTest, HeadOfficeSetHasItsDifferences) {
    sellAroundTheDay();
    exec("INSERT INTO CTACONTABLE (Codigo, Nombre, Status) VALUES ('4.1.10', 'DEVOLUCIONES', 1)");
    exec("INSERT INTO SALIDASCAJA (Numero, Serie, Fecha, CodigoContable, Descripcion, Monto, "
         "Status) VALUES (1, 'Z1B0000001', ?, '4.1.10', 'REINTEGRO', 60, 0)",
         {at(kDay, 11, 0)});
    exec("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, Fecha, Cliente, "
         "TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, Status) VALUES (1, "
         "'Z1B0000001', 2, ?, 'V123', 10, 0, 0, 0, 1)",
         {at(kDay, 12, 0)});
    exec("INSERT INTO TASA_CAMBIO (Fecha, Valor) VALUES (?, 36.5)", {at(kDay, 8, 5, 9)});

    const QString zip = run(ExportFormat::Vandu);
    EXPECT_EQ(zip, envia() + "/01.zip");
    const PackageReader p(zip, {{"VENTAS", {"NumFac", "NumCaja"}},
                                {"DEVOLUCI", {"NumDev", "NumCaja"}},
                                {"GASTOS", {"Numero", "NumCaja", "NomCuenta", "Monto"}},
                                {"TIPGASTO", {"Codigo", "Nombre"}},
                                {"TASACAMB", {"ID", "Fecha", "Valor"}},
                                {"VTASMES", {"NumCaja", "Anio", "Mes", "Facturas", "TotMercan"}}});
    const DbfTable& ventas = p.table("VENTAS");
    EXPECT_EQ(invoices(ventas), (QList<long long>{2, 3})) << "23:59:30 is inside";
    EXPECT_EQ(ventas.integer(0, "NumCaja"), 3);
    EXPECT_EQ(p.table("DEVOLUCI").integer(0, "NumCaja"), 3);
    const DbfTable& gastos = p.table("GASTOS");
    ASSERT_EQ(gastos.recordCount(), 1);
    EXPECT_EQ(gastos.text(0, "NomCuenta"), QStringLiteral("DEVOLUCIONES"));
    EXPECT_EQ(gastos.decimal(0, "Monto"), Decimal(60));
    EXPECT_EQ(p.table("TIPGASTO").text(0, "Codigo"), QStringLiteral("4.1.10"));
    EXPECT_EQ(p.table("TASACAMB").text(0, "Fecha"), QStringLiteral("2024-06-14 08:05:09"));
    EXPECT_EQ(p.table("TASACAMB").decimal(0, "Valor"), Decimal::fromString(u"36.5"));
    const DbfTable& monthly = p.table("VTASMES");
    ASSERT_EQ(monthly.recordCount(), 1);
    EXPECT_EQ(monthly.integer(0, "Mes"), 6);
    EXPECT_EQ(monthly.integer(0, "Facturas"), 4) << "the whole month up to the range's end";
    EXPECT_EQ(monthly.decimal(0, "TotMercan"), Decimal::fromString(u"1444.56"));
    EXPECT_FALSE(exchange::package::zipEntries(zip).contains("SALICAJA.DBF"));
    EXPECT_FALSE(exchange::package::zipEntries(zip).contains("DEVVENTA.DBF"));
}

// Only the last package lies in the folder: archives and DBF files of any case go first, other
// files stay, and the second package of a day replaces the first.
TEST_F(ExportJobTest, EachRunEmptiesTheFolderOfPackages) {
    QDir().mkpath(envia());
    for (const char* name : {"viejo.ZIP", "suelto.dbf", "OTRO.DBF", "nota.txt"}) {
        QFile f(envia() + "/" + name);
        f.open(QIODevice::WriteOnly);
        f.write("x");
    }
    sell(2, at(kDay, 10, 0), "7591234000018", "1", "10");
    run(ExportFormat::Orvo);
    EXPECT_EQ(enviaFiles(), (QStringList{"01.zip", "nota.txt"}));
    sell(5, at(kDay, 11, 0), "7591234000025", "1", "20");
    const QString zip = run(ExportFormat::Orvo);
    const PackageReader p(zip, {{"VENTAS", {"NumFac"}}});
    EXPECT_EQ(invoices(p.table("VENTAS")), (QList<long long>{2, 5}));
}

// Cancelled between tables: the files of the run go and no package is made.
TEST_F(ExportJobTest, CancelStopsBetweenTablesAndLeavesNoPackage) {
    sell(2, at(kDay, 10, 0), "7591234000018", "1", "10");
    ExportJob job(db(), {ExportFormat::Orvo, kDay, kDay});
    int tablesSeen = 0;
    QObject::connect(
        &job, &ExportJob::tablesProgress, &job,
        [&](int done, int) {
            tablesSeen = done;
            if (done == 5)
                job.cancel();
        },
        Qt::DirectConnection);
    job.start();
    ASSERT_TRUE(job.wait(60000));
    EXPECT_FALSE(job.succeeded());
    EXPECT_EQ(job.error(), QStringLiteral("Exportación cancelada por el usuario...!"));
    EXPECT_EQ(tablesSeen, 5);
    EXPECT_EQ(enviaFiles(), QStringList()) << "no DBF left, no zip";
}

// A bad template stops the run before anything changes: the previous package stays.
TEST_F(ExportJobTest, MissingOrBrokenTemplatesChangeNothing) {
    sell(2, at(kDay, 10, 0), "7591234000018", "1", "10");
    const QString zip = run(ExportFormat::Orvo);
    const QByteArray before = [&] {
        QFile f(zip);
        f.open(QIODevice::ReadOnly);
        return f.readAll();
    }();
    const QString templates = exchange::package::templateFolder();
    const auto refusal = [&] {
        try {
            run(ExportFormat::Orvo);
        } catch (const UserError& e) {
            return e.text();
        }
        return QString();
    };

    QFile broken(templates + "/PAGOSVEN.est");
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("no es una tabla");
    broken.close();
    EXPECT_EQ(refusal(),
              QStringLiteral("El archivo PAGOSVEN.est no es una tabla dBase válida...!"));
    QFile::remove(templates + "/PAGOSVEN.est");
    EXPECT_EQ(refusal(), QStringLiteral("No se encuentra la estructura PAGOSVEN.est en %1...!")
                             .arg(QDir::toNativeSeparators(templates)));
    QDir(templates).removeRecursively();
    EXPECT_EQ(refusal(), QStringLiteral("No se puede encontrar el directorio de estructuras en la "
                                        "ruta específicada."));
    EXPECT_EQ(enviaFiles(), QStringList{"01.zip"});
    QFile after(zip);
    after.open(QIODevice::ReadOnly);
    EXPECT_EQ(after.readAll(), before);
}

// Head office's own layout: the export fills whatever fields a template has, by name.
TEST_F(ExportJobTest, TemplatesOfHeadOfficeAreFilledByFieldName) {
    using namespace exchange::package;
    DbfWriter(templateFolder() + "/MARCAS.est",
              {textField("Nombre", 10), textField("Extra", 5), textField("CODIGO", 3)})
        .close();
    const QString zip = run(ExportFormat::Orvo);
    const PackageReader p(zip, {{"MARCAS", {"Nombre", "Extra", "CODIGO"}}});
    const DbfTable& marcas = p.table("MARCAS");
    ASSERT_EQ(marcas.recordCount(), 1);
    EXPECT_EQ(marcas.text(0, "Codigo"), QStringLiteral("001"));
    EXPECT_EQ(marcas.text(0, "Nombre"), QStringLiteral("ORVO"));
    EXPECT_TRUE(marcas.isNull(0, "Extra"));
}

// Every field of every shipped template is fed by its table's selection, and every selection
// runs on this engine: a misspelt column or dBase name fails here, not at a store.
TEST_F(ExportJobTest, EveryTemplateFieldIsFedByItsSelection) {
    using namespace exchange::exporting;
    const ExportRange range = exportRange(ExportFormat::Vandu, kDay, kDay);
    // Filled by the head-office set only.
    const QSet<QString> headOfficeOnly = {"VENTAS.NUMCAJA", "DEPOSITO.NUMCAJA", "MOVDEPOS.NUMCAJA"};
    // Received transfers have no origin document of their own.
    const QSet<QString> storeOnly = {"TRANSFER.DOCORIGEN", "DEVTRANS.DOCORIGEN"};
    for (const bool store : {true, false}) {
        for (const ExportTable& t : store ? storeTables() : headOfficeTables()) {
            SCOPED_TRACE(t.file.toStdString());
            const DbfTable layout(exchange::package::findTemplate(t.file));
            QSet<QString> fed;
            if (t.rows) {
                for (const exchange::package::DbfField& f : layout.fields())
                    fed << f.name.toUpper();
            } else {
                db::Sql q(db(), t.sql);
                for (int i = 0; i < t.rangePairs; ++i)
                    q.bind(range.from).bind(range.to);
                q.exec();
                const QSqlRecord r = q.raw().record();
                for (int c = 0; c < r.count(); ++c)
                    fed << exchange::package::dbfName(r.fieldName(c)).toUpper();
            }
            for (const exchange::package::DbfField& f : layout.fields()) {
                const QString key = t.file.toUpper() + "." + f.name.toUpper();
                if ((store && headOfficeOnly.contains(key)) || (!store && storeOnly.contains(key)))
                    continue;
                EXPECT_TRUE(fed.contains(f.name.toUpper())) << key.toStdString();
            }
        }
    }
}

// The XML package: each EXPORTACION query with Exportar = 1, its range bound to :desde and
// :hasta, as a rowset file, zipped under the store code and the moment.
TEST_F(ExportJobTest, XmlPackageSavesEachDefinedQuery) {
    sellAroundTheDay();
    exec("INSERT INTO EXPORTACION (Nombre, NombreTabla, Consulta, Exportar, mensaje) VALUES "
         "('1 VENTAS', 'VENTAS', 'SELECT NumeroFactura, Serie, Fecha, TotalMercancia FROM VENTAS "
         "WHERE 1 = 1 AND Fecha >= :desde AND Fecha <= :hasta ORDER BY NumeroFactura', 1, "
         "'Exportando VENTAS'), ('2 CLIENTES', 'CLIENTES', 'SELECT * FROM CLIENTES', 0, 'No')");
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    const QString zip = run(ExportFormat::Xml);
    const QString name = QFileInfo(zip).fileName();
    ASSERT_TRUE(name.startsWith("01_XML_") && name.endsWith(".zip")) << name.toStdString();
    const QDateTime stamp = QDateTime::fromString(name.mid(7, 15), "yyyyMMdd_hhmmss");
    EXPECT_TRUE(stamp >= before.addSecs(-1) && stamp <= QDateTime::currentDateTime());
    EXPECT_EQ(exchange::package::zipEntries(zip), QStringList{"VENTAS.xml"});

    QFile xmlFile(envia() + "/VENTAS.xml");
    ASSERT_TRUE(xmlFile.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&xmlFile);
    QStringList columns;
    QList<QXmlStreamAttributes> rows;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.qualifiedName() == QLatin1String("s:AttributeType"))
            columns << xml.attributes().value("name").toString();
        if (xml.qualifiedName() == QLatin1String("z:row"))
            rows << xml.attributes();
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_EQ(columns.size(), 4);
    ASSERT_EQ(rows.size(), 2) << "10:15:30 and 23:59:30 of the day";
    EXPECT_EQ(rows[0].value("", columns[0]).toString(), QStringLiteral("2"));
    EXPECT_EQ(rows[0].value("", columns[2]).toString(), QStringLiteral("2024-06-14T10:15:30"));
    EXPECT_EQ(Decimal::fromString(rows[0].value("", columns[3]).toString()),
              Decimal::fromString(u"1234.56"));
    EXPECT_EQ(rows[1].value("", columns[0]).toString(), QStringLiteral("3"));
}

// Stamping marks the articles of every kind of movement in the range, and nothing else.
TEST_F(ExportJobTest, StampMarksArticlesThatMovedInTheRange) {
    exec("INSERT INTO AJUSTES (Numero, Fecha, TipoAjuste, Signo, Status) VALUES (1, ?, 1, 1, 1)",
         {at(kDay, 9, 0)});
    exec("INSERT INTO MOVAJUSTES (Numero, Item, CodigoBarra, Cantidad, Costo) VALUES "
         "(1, 1, '7591234000025', 1, 1)");
    exec("INSERT INTO LISTAPRECIO (Numero, Fecha, Status) VALUES (1, ?, 1)", {at(kDay, 9, 0)});
    exec("INSERT INTO MOVLISTAPRECIO (Numero, Referencia, CodigoMarca) VALUES (1, 'OTRA', '001')");
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Tipo, Status) "
         "VALUES ('7591234000049', 'OTRA', 'OTRA', '001', 0, 1)");
    exec("INSERT INTO TRANSFERENCIAS (Numero, Fecha, Status) VALUES (1, ?, 1)",
         {at(kDay.addDays(-3), 9, 0)});
    exec("INSERT INTO MOVTRANSFERENCIAS (Numero, CodigoBarra, Cantidad, Item) VALUES "
         "(1, '7591234000032', 1, 1)");
    const auto range = exchange::exporting::exportRange(ExportFormat::Orvo, kDay, kDay);
    {
        db::Transaction tx(db());
        exchange::exporting::stampMovedArticles(db(), range);
        tx.commit();
    }
    QSet<QString> stamped;
    db::Sql q(db(), "SELECT CodigoBarra, UltimaActualizacion FROM INVENTARIO");
    q.exec();
    while (q.next())
        if (!q.isNull("UltimaActualizacion")) {
            stamped << q.text("CodigoBarra");
            EXPECT_EQ(q.dateTime("UltimaActualizacion"), range.to);
        }
    EXPECT_EQ(stamped, (QSet<QString>{"7591234000025", "7591234000049"}))
        << "the adjusted one and the repriced model; not the transfer of three days before";
}

} // namespace
} // namespace orvo::test
