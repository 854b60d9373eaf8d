#include "inventory/dispatch/conversions.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/orders.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/purchases/receptions.h"
#include "pos/sale/till_fixture.h"

using namespace orvo;
using namespace orvo::inventory::dispatch;
using namespace orvo::pos::sale;
using test::d;
using test::refusal;

namespace {

class OrdersTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.trousers = true});
    }
    SaleDraft orderFor(const char* client) {
        SaleDraft draft = newOrderDraft(db(), ctx);
        setOrderClient(ctx, draft, *findClient(db(), QString::fromLatin1(client)));
        return draft;
    }
};

} // namespace

TEST_F(OrdersTest, AWholesaleOrderMovesNoStockAndIsInvoicedAtTheTill) {
    SaleDraft draft = orderFor("J301234567");
    addToOrder(db(), draft, 0, "T0002", d("2"));
    addToOrder(db(), draft, 0, "T0002", d("1"));
    addToOrder(db(), draft, 0, "T0001", d("1"));
    ASSERT_EQ(draft.lines().at(0).tipoLista, 'M');
    const long long number = saveOrder(db(), ctx, draft, {0, "PARA EL LUNES", true});
    EXPECT_EQ(number, 1);
    // Lines of one barcode and list are one row.
    EXPECT_EQ(count("MOVORDENDESPACHO", "Numero = 1"), 2);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVORDENDESPACHO WHERE CodigoBarra = 'T0002'"), d("3"));
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = 1").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Serie FROM ORDENDESPACHO WHERE Numero = 1").toString(), serie);
    EXPECT_EQ(dec("SELECT TotalMercancia FROM ORDENDESPACHO WHERE Numero = 1"),
              draft.totals().merchandise.rounded(2));
    EXPECT_EQ(stock("T0002"), d("5"));
    EXPECT_TRUE(orderDocument(db(), number).html.contains("PARA EL LUNES"));

    // Its stock is held: another order cannot take what this one keeps.
    SaleDraft other = orderFor("V12345678");
    EXPECT_EQ(refusal([&] { addToOrder(db(), other, 0, "T0002", d("3")); }),
              "Artículo con existencia comprometida...!");
    addToOrder(db(), other, 0, "T0002", d("2"));

    // The till's F8 takes it and invoices it.
    SaleDraft sale = newDraft(db(), ctx);
    loadDispatchOrder(db(), ctx, number, sale);
    ASSERT_EQ(sale.lines().size(), 2);
    sale.setSeller(findSeller(db(), "003"));
    sale.setMode(PaymentMode::Credit);
    ASSERT_EQ(acceptSale(db(), ctx, sale, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = 1").toInt(), 2);
    EXPECT_EQ(stock("T0002"), d("2"));
    EXPECT_EQ(dec("SELECT TotalMercancia FROM VENTAS"),
              dec("SELECT TotalMercancia FROM ORDENDESPACHO WHERE Numero = 1"));
    // Invoiced, it no longer holds stock.
    EXPECT_EQ(committedStock(db(), "T0002", 0), d("0"));
}

TEST_F(OrdersTest, TheRegisterTheClientAndEachLineAreChecked) {
    shell::SessionContext bare = ctx;
    bare.registerConfigured = false;
    EXPECT_EQ(refusal([&] { newOrderDraft(db(), bare); }), "Debe configurar la caja...!");

    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
         "CodigoColor, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
         "PrecioPromocion, Existencia, CostoPromedio, UltimoCosto, Tipo, Status) VALUES "
         "('Z0', 'SIN EXISTENCIA', 'Z-0', '001', 'U', '001', 1, 10, 10, 10, 0, 0, 0, 5, 0, 0, 1), "
         "('Z1', 'SIN PRECIO', 'Z-1', '001', 'U', '001', 1, 0, 0, 0, 0, 0, 4, 5, 0, 0, 1), "
         "('Z2', 'SIN COSTO', 'Z-2', '001', 'U', '001', 1, 10, 10, 10, 0, 0, 4, 0, 0, 0, 1)");
    SaleDraft draft = orderFor("V12345678");
    EXPECT_EQ(refusal([&] { addToOrder(db(), draft, 0, "Z0", d("1")); }),
              "Artículo con existencia en cero...!");
    EXPECT_EQ(refusal([&] { addToOrder(db(), draft, 0, "Z1", d("1")); }),
              "No se puede vender el artículo con precio cero...!");
    EXPECT_EQ(refusal([&] { addToOrder(db(), draft, 0, "Z2", d("1")); }),
              "No se puede vender el artículo con costo cero...!");
    EXPECT_TRUE(draft.isEmpty());
    EXPECT_EQ(refusal([&] { saveOrder(db(), ctx, draft, {}); }),
              "La orden de despacho debe contener al menos un items...!");

    // An open order is modified whole; its own lines are not committed against it.
    addToOrder(db(), draft, 0, "T0002", d("4"));
    const long long number = saveOrder(db(), ctx, draft, {0, {}, false});
    SaleDraft again = newOrderDraft(db(), ctx);
    loadOrder(db(), number, again);
    addToOrder(db(), again, number, "T0002", d("1"));
    saveOrder(db(), ctx, again, {number, {}, true});
    EXPECT_EQ(dec("SELECT SUM(Cantidad) FROM MOVORDENDESPACHO WHERE Numero = ?", {number}), d("5"));
    EXPECT_EQ(refusal([&] {
                  saveOrder(db(), ctx, again, {number, {}, true});
              }),
              "La orden de despacho no existe o ya fue aprobada...!");

    // Lines alternate between retail and wholesale only where the register may.
    ctx.permiteAlternarListas = 0;
    EXPECT_EQ(refusal([&] { switchOrderList(ctx, again, 0); }),
              "Caja ó Usuario no autorizado para cambiar listas de precio...!");
    ctx.permiteAlternarListas = 1;
    switchOrderList(ctx, again, 0);
    EXPECT_EQ(again.lines().at(0).tipoLista, 'M');

    // A register selling retail only does not take orders for wholesale clients.
    ctx.tipoListaPrecio = 1;
    SaleDraft retail = newOrderDraft(db(), ctx);
    EXPECT_TRUE(refusal([&] {
                    setOrderClient(ctx, retail, *findClient(db(), "J301234567"));
                }).startsWith("La caja no esta configurada para facturar a CLIENTE TIPO : "));
}

TEST_F(OrdersTest, AnApprovedRemissionBecomesAnOrderOnceAndAFailureLeavesItApproved) {
    namespace purchases = orvo::inventory::purchases;
    const auto& k = remissionKind();
    purchases::Reception r;
    r.branch = "02";
    r.originType = purchases::ReceptionOrigin::OtherDocuments;
    const long long remission = purchases::saveReception(db(), r, k);
    purchases::saveBox(db(), remission, {0, "ANA", false, {{"T0002", {}, d("2")}}}, true, k);
    purchases::saveBox(db(), remission,
                       {0, "ANA", false, {{"T0002", {}, d("1")}, {"T0001", {}, d("1")}}}, true, k);
    SaleDraft draft = orderFor("J301234567");
    EXPECT_EQ(refusal([&] { orderFromRemission(db(), remission, draft); }),
              "La remisión Nº 1 no está aprobada...!");
    purchases::approveReception(db(), remission, "ANA", k);
    orderFromRemission(db(), remission, draft);
    ASSERT_EQ(draft.lines().size(), 2);

    // The order's lines are refused by the database half-way: nothing of either changes.
    if (isPostgres()) {
        exec("CREATE OR REPLACE FUNCTION orvo_refuse_order() RETURNS trigger AS $$ BEGIN RAISE "
             "EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_order BEFORE INSERT ON MOVORDENDESPACHO FOR EACH ROW "
             "EXECUTE FUNCTION orvo_refuse_order()");
    } else {
        exec("CREATE TRIGGER tr_refuse_order BEFORE INSERT ON MOVORDENDESPACHO BEGIN SELECT "
             "RAISE(ABORT, 'rechazado'); END");
    }
    EXPECT_THROW(convertRemissionToOrder(db(), ctx, remission, draft), DbError);
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 1);
    EXPECT_EQ(count("ORDENDESPACHO"), 0);
    EXPECT_EQ(count("BITACORAMOVIMIENTO"), 0);
    exec(isPostgres() ? "DROP TRIGGER tr_refuse_order ON MOVORDENDESPACHO"
                      : "DROP TRIGGER tr_refuse_order");

    const long long order = convertRemissionToOrder(db(), ctx, remission, draft);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = ?", {order}).toInt(), 1);
    EXPECT_EQ(dec("SELECT SUM(Cantidad) FROM MOVORDENDESPACHO WHERE Numero = ?", {order}), d("4"));
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 2);
    EXPECT_EQ(count("BITACORAMOVIMIENTO",
                    "TipodocumentoOrigen = 'RM' AND tipoDocumentoDestino = 'OD' AND "
                    "Destino = 'J301234567'"),
              1);
    EXPECT_EQ(refusal([&] { convertRemissionToOrder(db(), ctx, remission, draft); }),
              "La remisión Nº 1 ya fue convertida...!");
    EXPECT_EQ(count("ORDENDESPACHO"), 1);
    EXPECT_EQ(stock("T0002"), d("5")); // the order moves no stock
}

TEST_F(OrdersTest, AnApprovedPurchaseOrATypedListBecomesAnOrder) {
    exec("INSERT INTO COMPRAS (Documento, Proveedor, Fecha, Status) VALUES ('F-9', 'PX', ?, 0)",
         {QDateTime::currentDateTime()});
    exec("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, Cantidad, PrecioFactura, "
         "Item) VALUES ('F-9', 'PX', 'T0002', 2, 50, 1), ('F-9', 'PX', 'T0001', 1, 10, 2)");
    SaleDraft draft = orderFor("J301234567");
    EXPECT_EQ(refusal([&] { orderFromPurchase(db(), "F-9", "PX", draft); }),
              "La compra Nº F-9 del proveedor PX no está aprobada...!");
    exec("UPDATE COMPRAS SET Status = 1");
    orderFromPurchase(db(), "F-9", "PX", draft);
    ASSERT_EQ(draft.lines().size(), 2);
    EXPECT_EQ(draft.lines().at(0).tipoLista, 'M');

    // Refused by the database half-way: no order, and the purchase can still be converted.
    if (isPostgres()) {
        exec("CREATE OR REPLACE FUNCTION orvo_refuse_order() RETURNS trigger AS $$ BEGIN RAISE "
             "EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_order BEFORE INSERT ON BITACORAMOVIMIENTO FOR EACH ROW "
             "EXECUTE FUNCTION orvo_refuse_order()");
    } else {
        exec("CREATE TRIGGER tr_refuse_order BEFORE INSERT ON BITACORAMOVIMIENTO BEGIN SELECT "
             "RAISE(ABORT, 'rechazado'); END");
    }
    EXPECT_THROW(convertPurchaseToOrder(db(), ctx, "F-9", "PX", draft), DbError);
    EXPECT_EQ(count("ORDENDESPACHO") + count("MOVORDENDESPACHO"), 0);
    exec(isPostgres() ? "DROP TRIGGER tr_refuse_order ON BITACORAMOVIMIENTO"
                      : "DROP TRIGGER tr_refuse_order");

    const long long order = convertPurchaseToOrder(db(), ctx, "F-9", "PX", draft);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = ?", {order}).toInt(), 1);
    EXPECT_EQ(scalar("SELECT Observacion FROM ORDENDESPACHO WHERE Numero = ?", {order}).toString(),
              "Orden generada aut. por la compra Nº F-9 del proveedor PX");
    EXPECT_EQ(dec("SELECT SUM(Cantidad) FROM MOVORDENDESPACHO WHERE Numero = ?", {order}), d("3"));
    EXPECT_EQ(count("BITACORAMOVIMIENTO", "TipodocumentoOrigen = 'CO' AND DocumentoOrigen = "
                                          "'F-9' AND tipoDocumentoDestino = 'OD'"),
              1);
    EXPECT_EQ(refusal([&] { convertPurchaseToOrder(db(), ctx, "F-9", "PX", draft); }),
              "La compra Nº F-9 del proveedor PX ya fue convertida...!");
    EXPECT_EQ(count("ORDENDESPACHO"), 1);

    // A typed list: the keyed order's checks, no source to mark.
    SaleDraft typed = orderFor("J301234567");
    EXPECT_EQ(refusal([&] { convertListToOrder(db(), ctx, typed); }),
              "La orden de despacho debe contener al menos un items...!");
    EXPECT_EQ(refusal([&] { addToOrder(db(), typed, 0, "T0002", d("4")); }),
              "Artículo con existencia comprometida...!");
    addToOrder(db(), typed, 0, "T0001", d("4"));
    const long long manual = convertListToOrder(db(), ctx, typed);
    EXPECT_EQ(manual, order + 1);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = ?", {manual}).toInt(), 1);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVORDENDESPACHO WHERE Numero = ?", {manual}), d("4"));
    EXPECT_EQ(stock("T0001"), d("10"));
}
