// A transfer written as a package by one store's database and loaded into another's, as the two
// stores of the chain do it.
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/zip_archive.h"
#include "inventory/articles/article_types.h"
#include "inventory/transfers/transfer_import.h"
#include "inventory/transfers/transfer_package.h"
#include "inventory/transfers/transfer_support.h"
#include "inventory/transfers/transfers.h"

#include <QFileInfo>

using namespace orvo;
using namespace orvo::inventory;
using namespace orvo::inventory::transfers;
using test::d;
using test::refusal;

namespace {

class TransferPackageTest : public test::TransferTest {
protected:
    static ArticleWriter writer() { return ArticleWriter::here("ANA", "prueba"); }

    // Store 01 approves a transfer (or a return) to `receiver` and writes its package.
    SentPackage send(const Transfer& t) {
        const long long n = saveTransfer(db(), t, true);
        return writePackage(db(), t.kind, t.receiver, {n}, folder("Envia"));
    }
    std::optional<ImportResult> load(const QString& recibe, Kind kind = Kind::Transfer) {
        return loadFromFolder(other(), recibe, kind, writer());
    }
};

} // namespace

TEST_F(TransferPackageTest, StoreTwoAveragesTheCostStoreOneSentItBoxByBox) {
    // Store 01: a shirt model in two sizes, and a polo of a brand, size and colour store 02 lacks.
    article("A1", "CAMISA-A", "20", "10");
    article("A2", "CAMISA-A", "10", "17");
    run(db(), "INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('N2', 'NAUTICA', 1)");
    run(db(), "INSERT INTO TALLAS (Codigo, Talla, Status) VALUES ('L', 'L', 1)");
    run(db(), "INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('02', 'AZUL', 1)");
    article(db(), "N1", "POLO-N", "5", "8", "99", "N2");
    run(db(), "UPDATE INVENTARIO SET Talla = 'L', CodigoColor = '02' WHERE CodigoBarra = 'N1'");
    run(db(), "INSERT INTO LOTES (Lote, Descripcion, Estado) VALUES ('L-NAV', 'NAVIDAD', 1)");
    const long long lot = db::scalar(db(), "SELECT ID FROM LOTES").toLongLong();
    // Store 02: the shirts at another cost and price, one size short of stock, one not sent.
    article(other(), "A1", "CAMISA-A", "10", "14", "40");
    article(other(), "A2", "CAMISA-A", "-2", "5", "40");
    article(other(), "A3", "CAMISA-A", "0", "0", "40");

    Transfer t = transfer(
        "02", {line("A1", "6", 1), line("N1", "2", 1), line("A1", "4", 2), line("A2", "4", 2)});
    t.lotId = lot;
    t.dispatchId = 2;
    const SentPackage sent = send(t);
    EXPECT_EQ(QFileInfo(sent.path).fileName(), "Transfer.zip");
    EXPECT_EQ(QFileInfo(sent.path).dir().dirName(), "02");
    EXPECT_EQ(scalar("SELECT Status FROM TRANSFERENCIAS").toInt(), 2); // EXPORTADA
    const QStringList entries = exchange::package::zipEntries(sent.path);
    for (const char* table : {"RESUTRAN.DBF", "MOVITRAN.DBF", "INVENTAR.DBF", "MARCAS.DBF",
                              "TALLAS.DBF", "COLORES.DBF", "LOTE.DBF", "TIDESPAC.DBF"})
        EXPECT_TRUE(entries.contains(QString::fromLatin1(table))) << table;

    const QString recibe = folder("Recibe02");
    test::deliver(QFileInfo(sent.path).absolutePath(), recibe);
    test::deliver(recibe, folder("copia"));
    const auto loaded = load(recibe);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->imported, 1);
    EXPECT_EQ(endMessage(Kind::Transfer, *loaded), "Transferencia importada con exito...!");

    const QSqlDatabase b = other();
    // A1: (10 × 14 + 10 × 10) / 20 = 12. A2 was short: it takes the sent 17 (stock 2).
    // The model over its stock: (20 × 12 + 2 × 17) / 22 = 12.454545…, on every size.
    EXPECT_EQ(stock(b, "A1"), d("20"));
    EXPECT_EQ(stock(b, "A2"), d("2"));
    EXPECT_EQ(stock(b, "A3"), d("0"));
    for (const char* code : {"A1", "A2", "A3"})
        EXPECT_EQ(averageCost(b, code), d("12.45455")) << code;
    EXPECT_EQ(value(b, "SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = 'A1'"), d("12"));
    EXPECT_EQ(value(b, "SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = 'A2'"), d("17"));
    // The package's prices go to every size of the model, the one not sent too.
    EXPECT_EQ(value(b, "SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'A3'"), d("50"));
    // The unknown polo is created at zero cost and takes the sent one through the average.
    EXPECT_EQ(stock(b, "N1"), d("2"));
    EXPECT_EQ(averageCost(b, "N1"), d("8"));
    EXPECT_EQ(value(b, "SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'N1'"), d("99"));
    EXPECT_EQ(
        db::scalar(b, "SELECT CodigoBarraAnt FROM INVENTARIO WHERE CodigoBarra = 'N1'").toString(),
        "N1");
    EXPECT_EQ(rows(b, "MARCAS", "Codigo = 'N2' AND Status = 1"), 1);
    EXPECT_EQ(rows(b, "TALLAS", "Codigo = 'L'"), 1);
    EXPECT_EQ(rows(b, "COLORES", "Codigo = '02'"), 1);
    EXPECT_GE(rows(b, "LOG_ARTICULOS", "CodigoBarra = 'N1'"), 1);
    // The received copy: its boxes, the sender's number, the value at the sender's cost.
    EXPECT_EQ(rows(b, "ITRANSFERENCIAS",
                   "Numero = ? AND CodigoEnvia = '01' AND Status = 1 AND Usuario = 'SISTEMAS' AND "
                   "IDDespacho = 2",
                   {sent.numbers.first()}),
              1);
    EXPECT_EQ(value(b, "SELECT TotalValor FROM ITRANSFERENCIAS"), d("184"));
    EXPECT_EQ(rows(b, "IMOVTRANSFERENCIAS"), 4);
    EXPECT_EQ(
        rows(b, "IMOVTRANSFERENCIAS", "CodigoBarra = 'A1' AND NumeroCaja = 2 AND Cantidad = 4"), 1);
    EXPECT_EQ(db::scalar(b, "SELECT L.Lote FROM ITRANSFERENCIAS T INNER JOIN LOTES L ON L.ID = "
                            "T.IDLote")
                  .toString(),
              "L-NAV");
    // Loaded: the package goes aside and is no longer pending.
    EXPECT_FALSE(QFileInfo::exists(recibe + "/Transfer.zip"));
    EXPECT_EQ(QDir(recibe + "/Cargados").entryList(QDir::Files).size(), 1);

    // The same package again creates nothing.
    test::deliver(folder("copia"), recibe);
    const auto again = load(recibe);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->imported, 0);
    EXPECT_EQ(endMessage(Kind::Transfer, *again), "Se importaron 0 de 1...");
    EXPECT_EQ(
        again->notes.join(""),
        QString("La transferencia %1 de la sucursal 01 ya fue cargada.").arg(sent.numbers.first()));
    EXPECT_EQ(stock(b, "A1"), d("20"));
    EXPECT_EQ(rows(b, "ITRANSFERENCIAS"), 1);
    EXPECT_EQ(rows(b, "IMOVTRANSFERENCIAS"), 4);

    // Two come back: store 01 takes them in at its cost, store 02 loads the return and gives them
    // up, valued at its own cost.
    send(transfer("02", {line("A1", "2", 1)}, Kind::Return));
    EXPECT_EQ(stock("A1"), d("12"));
    test::deliver(folder("Envia") + "/02", recibe);
    const auto back = load(recibe, Kind::Return);
    ASSERT_TRUE(back);
    EXPECT_EQ(endMessage(Kind::Return, *back),
              "Devolución de transferencia importada con exito...!");
    EXPECT_EQ(stock(b, "A1"), d("18"));
    EXPECT_EQ(averageCost(b, "A1"), d("12.45455"));
    EXPECT_EQ(value(b, "SELECT Valor FROM IMOVDEVTRANSFERENCIAS"), d("12.45455"));
    EXPECT_EQ(value(b, "SELECT TotalValor FROM IDEVTRANSFERENCIAS"), d("24.91"));
    // Transfer.zip was loaded before: only the return was pending.
    EXPECT_FALSE(load(recibe, Kind::Return));
}

TEST_F(TransferPackageTest, APackageWaitingAtTheDestinationTravelsAgainWithTheNextOne) {
    article("A1", "CAMISA-A", "20", "10");
    const SentPackage first = send(transfer("02", {line("A1", "1", 1)}));
    const SentPackage second = send(transfer("02", {line("A1", "2", 1)}));
    EXPECT_EQ(first.path, second.path);
    EXPECT_EQ(second.numbers.size(), 2); // the first one was not fetched yet
    // Open documents do not travel.
    const long long open = saveTransfer(db(), transfer("02", {line("A1", "1", 1)}), false);
    EXPECT_EQ(refusal([&] { writePackage(db(), Kind::Transfer, "02", {open}, folder("Envia")); }),
              "Solo puede enviar la transferencia APROBADA...!");
}

TEST_F(TransferPackageTest, DamagedOrForeignPackagesChangeNothing) {
    article("A1", "CAMISA-A", "20", "10");
    article("ZZ9", "CAMISA-Z", "3", "4");
    article(other(), "A1", "CAMISA-A", "10", "14");
    const QString recibe = folder("Recibe02");
    const auto nothingChanged = [&] {
        EXPECT_EQ(rows(other(), "ITRANSFERENCIAS"), 0);
        EXPECT_EQ(rows(other(), "IDEVTRANSFERENCIAS"), 0);
        EXPECT_EQ(stock(other(), "A1"), d("10"));
        EXPECT_EQ(averageCost(other(), "A1"), d("14"));
    };

    // A truncated archive.
    const SentPackage sent = send(transfer("02", {line("A1", "5", 1)}));
    QFile zip(sent.path);
    ASSERT_TRUE(zip.open(QIODevice::ReadOnly));
    const QByteArray bytes = zip.readAll();
    zip.close();
    QFile cut(recibe + "/Transfer.zip");
    ASSERT_TRUE(cut.open(QIODevice::WriteOnly));
    cut.write(bytes.left(bytes.size() / 2));
    cut.close();
    EXPECT_FALSE(refusal([&] { load(recibe); }).isEmpty());
    nothingChanged();
    QFile::remove(recibe + "/Transfer.zip");

    // Loose tables whose lines lack a column the load needs.
    exchange::package::installTemplates(folder("Estructura2"));
    exchange::package::DbfWriter head = exchange::package::DbfWriter::fromTemplate(
        exchange::package::findTemplate("RESUTRAN", folder("Estructura2")),
        recibe + "/RESUTRAN.DBF");
    head.append({{"NumTra", 40}, {"CodEnvia", "01"}, {"CodRecib", "02"}});
    head.close();
    exchange::package::DbfWriter lines(recibe + "/MOVITRAN.DBF",
                                       {exchange::package::numericField("NumTra", 11),
                                        exchange::package::textField("CodBarra", 15),
                                        exchange::package::numericField("Valor", 19, 5)});
    lines.append({{"NumTra", 40}, {"CodBarra", "A1"}, {"Valor", 9}});
    lines.close();
    const QString missing = refusal([&] { load(recibe); });
    EXPECT_TRUE(missing.contains("MOVITRAN.DBF")) << missing.toStdString();
    EXPECT_TRUE(missing.contains("Cantidad")) << missing.toStdString();
    nothingChanged();

    // Without lines the transfer is reported and nothing else happens.
    exchange::package::DbfWriter::fromTemplate(
        exchange::package::findTemplate("MOVITRAN", folder("Estructura2")),
        recibe + "/MOVITRAN.DBF")
        .close();
    const auto empty = load(recibe);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->notes,
              QStringList{"La transferencia 40 no contiene registros en su movimiento...!"});
    EXPECT_EQ(endMessage(Kind::Transfer, *empty), "Se importaron 0 de 1...");
    nothingChanged();

    // A transfer for another branch is not this store's to load.
    const SentPackage elsewhere = send(transfer("00", {line("A1", "1", 1)}));
    test::deliver(QFileInfo(elsewhere.path).absolutePath(), recibe);
    EXPECT_EQ(refusal([&] { load(recibe); }),
              QString("La transferencia %1 de la sucursal 01 es para la sucursal 00, no para esta "
                      "tienda (02)...!")
                  .arg(elsewhere.numbers.first()));
    nothingChanged();
    QFile::remove(recibe + "/Transfer.zip");

    // A return of an article store 02 never had stops before anything is loaded.
    const SentPackage unknown =
        send(transfer("02", {line("A1", "1", 1), line("ZZ9", "1", 1)}, Kind::Return));
    test::deliver(QFileInfo(unknown.path).absolutePath(), recibe);
    EXPECT_EQ(refusal([&] { load(recibe, Kind::Return); }),
              QString("La Devolución %1 contiene el Articulo 'ZZ9' que no esta en el "
                      "inventario... Presione enter para salir")
                  .arg(unknown.numbers.first()));
    nothingChanged();

    // While a rate from head office waits, nothing else is loaded.
    run(other(), "INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('ImpTasa', "
                 "'01', 'TRUE')");
    QFile rate(recibe + "/TasaCambio.txt");
    ASSERT_TRUE(rate.open(QIODevice::WriteOnly));
    rate.write("36.5\n");
    rate.close();
    article(other(), "ZZ9", "CAMISA-Z", "3", "4");
    EXPECT_EQ(refusal([&] { load(recibe, Kind::Return); }),
              "Debe cargar la tasa de cambio pendiente...!");
    nothingChanged();
}
