#include "article_support.h"

#include "common/errors/errors.h"
#include "inventory/articles/lots.h"
#include "inventory/articles/serials.h"

using namespace orvo;
using namespace orvo::inventory;
using namespace orvo::inventory::serials;

namespace {

class Serials : public test::DbTest {
protected:
    SerialDocument document(const QString& type, QList<SerialLine> lines) {
        SerialDocument d;
        d.type = type;
        d.document = "C-1";
        d.party = "P1";
        d.user = "ANA";
        d.lines = std::move(lines);
        return d;
    }
    int status(const QString& serial) {
        return scalar("SELECT Status FROM CODIGOSERIAL WHERE Serial = ?", {serial}).toInt();
    }
    QString refusalOf(const SerialDocument& d) {
        try {
            saveSerialDocument(db(), d, true);
        } catch (const UserError& e) {
            return e.text();
        }
        return "<no refusal>";
    }
};

} // namespace

TEST_F(Serials, TypesAreOfferedInTheirOrder) {
    QStringList names;
    for (const MovementType& t : movementTypes())
        names << t.code + ":" + t.name;
    EXPECT_EQ(names, QStringList({"CO:COMPRAS", "DC:DEVOLUCIONES DE COMPRAS", "VT:VENTAS",
                                  "DV:DEVOLUCIONES DE VENTAS", "AP:AJUSTES POSITIVOS",
                                  "AN:AJUSTES NEGATIVOS", "TR:TRANSFERENCIAS",
                                  "DT:DEVOLUCIONES DE TRANSFERENCIAS"}));
}

TEST_F(Serials, ScanningAndEmptyDocumentsAreRefused) {
    QList<SerialLine> lines;
    addScannedSerial(lines, "100", "S1");
    addScannedSerial(lines, "100", " S2 ");
    try {
        addScannedSerial(lines, "200", "S1");
        FAIL();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "Ya el serial esta incluido...!");
    }
    EXPECT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[1].serial, "S2");
    EXPECT_EQ(refusalOf(document("CO", {})), "La información debe contener al menos un item...!");
    EXPECT_EQ(count("SERIALES"), 0);
}

TEST_F(Serials, SavedWithoutApprovalThenApproved) {
    const int n = saveSerialDocument(db(), document("CO", {{"100", "S1"}, {"100", "S2"}}), false);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(count("SERIALES", "Numero = 1 AND Status = 0 AND TipoMovimiento = 'CO'"), 1);
    EXPECT_EQ(count("MOVSERIALES", "Numero = 1"), 2);
    EXPECT_EQ(count("CODIGOSERIAL"), 0);

    auto loaded = loadSerialDocument(db(), n);
    ASSERT_TRUE(loaded);
    loaded->note = "recibido";
    loaded->lines.append(SerialLine{"100", "S3"});
    EXPECT_EQ(saveSerialDocument(db(), *loaded, true), 1);
    EXPECT_EQ(count("SERIALES"), 1);
    EXPECT_EQ(count("SERIALES", "Status = 1 AND Observacion = 'recibido'"), 1);
    EXPECT_EQ(count("MOVSERIALES", "Numero = 1"), 3);
    EXPECT_EQ(count("CODIGOSERIAL", "Status = 1"), 3);
    EXPECT_EQ(saveSerialDocument(db(), document("VT", {{"100", "S2"}}), true), 2);
    EXPECT_EQ(status("S2"), 0);
    EXPECT_EQ(saveSerialDocument(db(), document("DV", {{"100", "S2"}}), true), 3);
    EXPECT_EQ(status("S2"), 1);
    // An approved document stays as it is.
    auto approved = loadSerialDocument(db(), 1);
    approved->note = "otra";
    EXPECT_THROW(saveSerialDocument(db(), *approved, false), UserError);
    EXPECT_EQ(count("SERIALES", "Observacion = 'recibido'"), 1);
}

TEST_F(Serials, AFailingLineStopsAndRollsEverythingBack) {
    saveSerialDocument(db(), document("CO", {{"100", "S1"}, {"100", "S2"}}), true);
    exec("UPDATE CODIGOSERIAL SET Status = 0 WHERE Serial = 'S2'");

    // S1 would be deactivated first; S2 is already out, so nothing at all changes.
    EXPECT_EQ(refusalOf(document("TR", {{"100", "S1"}, {"100", "S2"}})),
              "El serial S2 no existe en el inventario o su estatus es inactivo...!");
    EXPECT_EQ(status("S1"), 1);
    EXPECT_EQ(count("SERIALES"), 1);
    EXPECT_EQ(count("MOVSERIALES"), 2);

    EXPECT_EQ(refusalOf(document("CO", {{"100", "S9"}, {"100", "S1"}})),
              "El serial S1 ya existe en el inventario...!");
    EXPECT_EQ(count("CODIGOSERIAL"), 2);
    EXPECT_EQ(refusalOf(document("DT", {{"100", "S1"}})),
              "El serial S1 no existe en el inventario o su estatus es activo...!");
    EXPECT_EQ(refusalOf(document("DC", {{"100", "S2"}})),
              "El serial S2 no existe en el inventario o su estatus es activo...!");
    EXPECT_EQ(refusalOf(document("AP", {{"100", "S1"}})),
              "El serial S1 existe en el inventario y su estatus es activo...!");
    EXPECT_EQ(refusalOf(document("AN", {{"100", "NADA"}})),
              "El serial NADA no existe en el inventario o su estatus es inactivo...!");
    EXPECT_EQ(count("SERIALES"), 1);

    // A kept document that fails its approval stays not approved, with its old lines.
    const int n = saveSerialDocument(db(), document("AN", {{"100", "S1"}}), false);
    auto kept = loadSerialDocument(db(), n);
    kept->lines = {{"100", "S1"}, {"100", "S2"}};
    EXPECT_THROW(saveSerialDocument(db(), *kept, true), UserError);
    EXPECT_EQ(count("SERIALES", "Numero = ? AND Status = 0", {n}), 1);
    EXPECT_EQ(count("MOVSERIALES", "Numero = ?", {n}), 1);
    EXPECT_EQ(status("S1"), 1);

    // A positive adjustment reactivates a known serial and adds an unknown one.
    saveSerialDocument(db(), document("AP", {{"100", "S2"}, {"200", "S7"}}), true);
    EXPECT_EQ(status("S2"), 1);
    EXPECT_EQ(status("S7"), 1);
}

TEST_F(Serials, SourceDocumentsAndTheirLines) {
    exec("INSERT INTO PROVEEDORES (Codigo, Nombre, Status) VALUES ('P1', 'PROVEEDOR UNO', 1)");
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Status) VALUES ('100', 'TELEFONO', 1)");
    exec("INSERT INTO COMPRAS (Documento, Proveedor, Fecha, Status) VALUES ('F-9', 'P1', ?, 1)",
         {QDateTime(QDate(2026, 3, 1), QTime(9, 0))});
    exec("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, Cantidad, Item) VALUES "
         "('F-9', 'P1', '100', 2, 1)");
    exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, Status) VALUES (7, 'A', ?, "
         "'C1', 1), (7, 'B', ?, 'C1', 1)",
         {QDateTime(QDate(2026, 3, 1), QTime(9, 0)), QDateTime(QDate(2026, 3, 2), QTime(9, 0))});
    exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Cantidad, Item) VALUES "
         "(7, 'A', '100', 1, 1), (7, 'B', '100', 3, 1)");

    const auto purchases = sourceDocuments(db(), "CO");
    ASSERT_EQ(purchases.size(), 1);
    EXPECT_EQ(purchases[0].number, "F-9");
    EXPECT_EQ(purchases[0].partyName, "PROVEEDOR UNO");
    const auto lines = sourceLines(db(), "CO", purchases[0]);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].name, "TELEFONO");
    EXPECT_EQ(lines[0].quantity, Decimal(2));

    const auto sales = sourceDocuments(db(), "VT");
    ASSERT_EQ(sales.size(), 2);
    EXPECT_EQ(sales[0].serie, "B");
    EXPECT_EQ(sourceLines(db(), "VT", sales[0])[0].quantity, Decimal(3));
    for (const MovementType& t : movementTypes())
        EXPECT_NO_THROW(sourceDocuments(db(), t.code)) << t.code.toStdString();
}

TEST_F(Serials, LotsAreKeptAndOnlyOpenOnesAssigned) {
    lots::saveLot(db(), {0, "L-B", "segundo", 1, {}, {}}, true, "ANA");
    lots::saveLot(db(), {0, "L-A", "primero", 1, {}, {}}, true, "ANA");
    lots::saveLot(db(), {0, "L-C", "cerrado", 0, {}, {}}, true, "ANA");
    try {
        lots::saveLot(db(), {0, "L-A", "otra vez", 1, {}, {}}, true, "ANA");
        FAIL();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "Registro duplicado!");
    }
    const auto all = lots::listLots(db());
    ASSERT_EQ(all.size(), 3);
    EXPECT_EQ(all[0].code, "L-A");
    EXPECT_EQ(all[0].createdBy, "ANA");
    EXPECT_TRUE(all[0].registered.isValid());
    const auto open = lots::openLots(db());
    ASSERT_EQ(open.size(), 2);
    EXPECT_EQ(open[1].code, "L-B");
    EXPECT_EQ(lots::lotIdOf(db(), "L-B"), open[1].id);
    EXPECT_FALSE(lots::lotIdOf(db(), "L-Z"));

    lots::saveLot(db(), {0, "L-B", "segundo", 0, {}, {}}, false, "LUIS");
    EXPECT_EQ(lots::openLots(db()).size(), 1);
    EXPECT_EQ(lots::listLots(db())[1].createdBy, "ANA");
    EXPECT_TRUE(lots::deleteLot(db(), "L-B"));
    EXPECT_FALSE(lots::deleteLot(db(), "L-B"));
    EXPECT_EQ(count("LOTES"), 2);
}
