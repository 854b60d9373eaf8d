// Saving a sale against a real database, and printing it on the software printer.
#include "../fiscal/printer_on_emulator.h"
#include "till_fixture.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_store.h"
#include "shell/demo/demo_store.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::pos::sale;
using orvo::pos::payments::PaymentRow;

namespace {

using test::d;
using test::refusal;

class SaleTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({});
    }

    // Paper invoices are kept as their document text (PDF needs the GUI application; the GUI
    // test prints one).
    PaperPrinter paper() {
        return [this](const QString& html, bool, long long number) {
            QFile f(pdfDir.filePath(QStringLiteral("factura_%1.html").arg(number)));
            return f.open(QIODevice::WriteOnly) && f.write(html.toUtf8()) > 0;
        };
    }
    QString paperText(long long number) const {
        QFile f(pdfDir.filePath(QStringLiteral("factura_%1.html").arg(number)));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    QTemporaryDir pdfDir;
};

} // namespace

TEST_F(SaleTest, CashSaleMergesEqualLinesKeepsServicesOutOfStockAndPrintsAfterCommit) {
    SaleDraft draft = draftOf({"T0001", "T0009", "T0001", "T0002"});
    // The model sells at its highest retail price, 120.
    EXPECT_EQ(draft.lines().at(0).precio, d("120.00"));
    // 4 lines: 120 + 60 + 120 + 120 = 420, tax 16 % = 67.20, total 487.20
    EXPECT_EQ(draft.totals().total, d("487.20"));
    payCash(draft, d("500"));
    const AcceptResult r = acceptSale(db(), ctx, draft, nullptr);
    ASSERT_EQ(r.status, AcceptResult::Status::Saved);
    EXPECT_EQ(r.number, 1);
    EXPECT_EQ(r.change, d("12.80"));

    EXPECT_EQ(count("MOVVENTAS"), 3); // the two T0001 lines became one
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVVENTAS WHERE CodigoBarra = 'T0001'"), Decimal(2));
    EXPECT_EQ(scalar("SELECT Item FROM MOVVENTAS WHERE CodigoBarra = 'T0002'").toInt(), 3);
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0001'"), Decimal(8));
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0002'"), Decimal(4));
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0009'"), Decimal(0));

    const QString v = QStringLiteral("FROM VENTAS WHERE NumeroFactura = 1 AND Serie = ?");
    EXPECT_EQ(dec("SELECT TotalMercancia " + v, {serie}), d("420.00"));
    EXPECT_EQ(dec("SELECT TotalDescuento " + v, {serie}), d("0"));
    EXPECT_EQ(dec("SELECT TotalImpuesto " + v, {serie}), d("67.20"));
    EXPECT_EQ(dec("SELECT TotalCosto " + v, {serie}), d("161.50"));
    EXPECT_EQ(dec("SELECT TotalPago " + v, {serie}), d("500.00"));
    EXPECT_EQ(dec("SELECT TotalDolares " + v, {serie}), d("13.35")); // 487.20 / 36.5
    EXPECT_EQ(dec("SELECT TasaCambio " + v, {serie}), d("36.5"));
    EXPECT_EQ(scalar("SELECT FormaPago " + v, {serie}).toString().trimmed(), "1");
    EXPECT_EQ(scalar("SELECT Impresa " + v, {serie}).toInt(), 0);

    // The change leaves the drawer: the cash row keeps the invoice's amount.
    EXPECT_EQ(count("PAGOSVENTA"), 1);
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA"), d("487.20"));
    EXPECT_EQ(scalar("SELECT Status FROM PAGOSVENTA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM BANCOS WHERE Codigo = '0'").toInt(), 0);
    EXPECT_EQ(count("CTABANCOS", "Codigo = '0'"), 1);

    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), d("487.20"));
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS WHERE Serie = ?", {serie}).toInt(), 1);
    EXPECT_EQ(pendingPrints(db(), serie), QList<long long>{1});

    // This register prints on paper: the invoice goes out and is marked printed.
    const PrintResult p = printSale(db(), ctx, r.number, false, nullptr, paper(), r.change);
    EXPECT_TRUE(p.ok()) << p.error.toStdString();
    EXPECT_TRUE(p.paperPrinted);
    EXPECT_TRUE(paperText(1).contains("CAMISA PRUEBA T:S"));
    EXPECT_TRUE(paperText(1).contains("487,20"));
    EXPECT_FALSE(paperText(1).contains("CONTINGENCIA"));
    EXPECT_TRUE(pendingPrints(db(), serie).isEmpty());
    EXPECT_EQ(nextInvoiceNumberPreview(db(), ctx), 2);
}

TEST_F(SaleTest, CreditSaleWritesTheReceivableInsteadOfPayments) {
    SaleDraft draft = draftOf({"T0009"});
    draft.setMode(PaymentMode::Credit);
    draft.setCreditDays(30);
    ASSERT_EQ(acceptSale(db(), ctx, draft, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(count("PAGOSVENTA"), 0);
    EXPECT_EQ(count("CUENTASXCOBRAR"), 1);
    EXPECT_EQ(dec("SELECT Monto FROM CUENTASXCOBRAR"), d("69.60"));
    EXPECT_EQ(scalar("SELECT DiasCredito FROM CUENTASXCOBRAR").toInt(), 30);
    EXPECT_EQ(scalar("SELECT Status FROM CUENTASXCOBRAR").toInt(), 0);
    EXPECT_EQ(scalar("SELECT Cliente FROM CUENTASXCOBRAR").toString(), "V12345678");
    db::Sql q(db(), "SELECT FechaAprobacion, Factura, Serie FROM CUENTASXCOBRAR");
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.dateTime("FechaAprobacion").date(), QDate(2000, 1, 1));
    EXPECT_EQ(q.integer("Factura"), 1);
    EXPECT_EQ(scalar("SELECT FormaPago FROM VENTAS").toString().trimmed(), "5");
    EXPECT_EQ(scalar("SELECT TipoVenta FROM VENTAS").toInt(), 2);
}

TEST_F(SaleTest, RefusalsComeInOrderAndWriteNothing) {
    SaleDraft empty = newDraft(db(), ctx);
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, empty, nullptr); }),
              "Especifique el cliente al que se le realizó la venta...!");
    empty.setClient(*findClient(db(), "V12345678"));
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, empty, nullptr); }),
              "Debe especificar al menos un artículo...!");
    SaleDraft draft = draftOf({"T0001"});
    draft.setSeller({});
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "Debe Especificar el pago del cliente...!");
    payCash(draft, d("116.00"));
    draft.setPayments(draft.payments(), d("139.19"), d("36.5")); // one cent short of 139.20
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "El monto cancelado no puede ser menor al valor de la factura");
    payCash(draft, d("139.20"));
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "Debe especificar el vendedor que realizó la venta...!");
    draft.setSeller(findSeller(db(), "21444555")); // by identity number
    EXPECT_EQ(refusal([&] { findSeller(db(), "006"); }),
              "El vendedor esta inactivo o no existe el código...");

    exec("UPDATE DIARIOCAJA SET Status = 2");
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "Caja con cierre realizado...!");
    exec("DELETE FROM DIARIOCAJA");
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "No existe apertura de fecha " + today.toString("dd/MM/yyyy") + "...!");
    EXPECT_EQ(count("VENTAS"), 0);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 0);
}

TEST_F(SaleTest, EachRegisterListRefusesTheClientTypesItMayNotInvoice) {
    // Demo clients by type: 1 DETAL, 2 AFILIADO, 3 ESPECIAL, 4 MAYORISTA.
    const QList<std::pair<const char*, const char*>> clients = {{"V12345678", "DETAL"},
                                                                {"V8765432", "AFILIADO"},
                                                                {"V15678901", "ESPECIAL"},
                                                                {"J301234567", "MAYORISTA"}};
    // Per register list: the client types it refuses.
    const QList<std::pair<int, QStringList>> refusedBy = {
        {1, {"ESPECIAL", "MAYORISTA"}}, {2, {"AFILIADO"}}, {3, {}}, {4, {}}};
    for (const auto& [list, refused] : refusedBy) {
        exec("UPDATE CAJAS SET TipoListaPrecio = ?", {list});
        loadContext();
        for (const auto& [code, type] : clients) {
            SaleDraft draft = newDraft(db(), ctx);
            const QString expected =
                refused.contains(type)
                    ? "La caja no esta configurada para facturar a " + QString(type) + "...!"
                    : "(no refusal)";
            EXPECT_EQ(refusal([&] { draft.setClient(*findClient(db(), code)); }), expected)
                << "register " << list << ", client " << code;
            EXPECT_EQ(draft.client().isSet(), !refused.contains(type));
        }
    }
}

TEST_F(SaleTest, ARegisterChangedUnderTheSaleRefusesItsClientAndWritesNothing) {
    // A special client's sale keyed and parked on a mixed register...
    SaleDraft draft = newDraft(db(), ctx);
    draft.setClient(*findClient(db(), "V15678901"));
    draft.setSeller(findSeller(db(), "003"));
    addArticle(draft, lookupArticles(db(), "T0001").at(0));
    payCash(draft, d("500"));
    SaleDraft parked = draft;
    const long long number = parkSale(db(), ctx, parked);

    // ...and the register is then made retail only.
    exec("UPDATE CAJAS SET TipoListaPrecio = 1");
    loadContext();
    const QString refused = "La caja no esta configurada para facturar a ESPECIAL...!";
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }), refused);
    for (const char* table : {"VENTAS", "MOVVENTAS", "PAGOSVENTA", "CUENTASXCOBRAR"})
        EXPECT_EQ(count(table), 0) << table;
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 0);
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0001'"), Decimal(10));
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), Decimal(0));

    // The parked sale is not taken back onto this register: it stays parked, the draft untouched.
    SaleDraft back = newDraft(db(), ctx);
    EXPECT_EQ(refusal([&] { takeBackParked(db(), ctx, number, back); }), refused);
    EXPECT_EQ(count("HISTVENTAS"), 1);
    EXPECT_EQ(count("HISTMOVVENTAS"), 1);
    EXPECT_TRUE(back.isEmpty());
    EXPECT_FALSE(back.client().isSet());

    // Nor is a dispatch order for a wholesale client on a retail register.
    exec("INSERT INTO ORDENDESPACHO (Numero, Serie, Fecha, Cliente, TotalMercancia, Status, "
         "Exenta) VALUES (8, ?, ?, 'J301234567', 85, 1, 0)",
         {serie, db::serverNow(db())});
    exec("INSERT INTO MOVORDENDESPACHO (Numero, TipoLista, CodigoBarra, Precio, PrecioLista, "
         "Costo, Impuesto, PorcentajeImpuesto, Cantidad, Descuento, Item) VALUES "
         "(8, 'M', 'T0002', 85, 85, 50.5, 13.6, 16, 1, 0, 1)");
    EXPECT_EQ(refusal([&] { loadDispatchOrder(db(), ctx, 8, back); }),
              "La caja no esta configurada para facturar a MAYORISTA...!");
    EXPECT_TRUE(back.isEmpty());
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = 8").toInt(), 1);
}

TEST_F(SaleTest, AFailureInsideTheTransactionLeavesNoRowAndNoCounterMoved) {
    if (isPostgres()) {
        exec("CREATE FUNCTION orvo_refuse_pago() RETURNS trigger AS $$ BEGIN RAISE EXCEPTION "
             "'pago rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_pago BEFORE INSERT ON PAGOSVENTA FOR EACH ROW EXECUTE "
             "FUNCTION orvo_refuse_pago()");
    } else {
        exec("CREATE TRIGGER TR_REFUSE_PAGO BEFORE INSERT ON PAGOSVENTA BEGIN SELECT "
             "RAISE(ABORT, 'pago rechazado'); END");
    }
    SaleDraft draft = draftOf({"T0001", "T0002"});
    payCash(draft, d("278.40"));
    EXPECT_THROW(acceptSale(db(), ctx, draft, nullptr), DbError);
    for (const char* table : {"VENTAS", "MOVVENTAS", "PAGOSVENTA", "CUENTASXCOBRAR"})
        EXPECT_EQ(count(table), 0) << table;
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 0);
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0001'"), Decimal(10));
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), Decimal(0));
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA").toInt(), 0);
    // The connection is usable again right away.
    EXPECT_EQ(nextInvoiceNumberPreview(db(), ctx), 1);
}

TEST_F(SaleTest, ExemptInvoiceStoresNoTax) {
    SaleDraft draft = draftOf({"T0001", "T0009"});
    draft.setExempt(true);
    payCash(draft, d("180"));
    ASSERT_EQ(acceptSale(db(), ctx, draft, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(count("MOVVENTAS", "Impuesto <> 0 OR PorcentajeImpuesto <> 0"), 0);
    EXPECT_EQ(dec("SELECT TotalImpuesto FROM VENTAS"), Decimal(0));
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), d("180.00"));
}

TEST_F(SaleTest, DeletedLinesAndCancelledSalesAreLoggedWithWhoAuthorised) {
    SaleDraft draft = draftOf({"T0001", "T0009", "T0002"});
    deleteLine(db(), ctx, draft, 1, QStringLiteral("ADMIN"));
    EXPECT_EQ(draft.lines().size(), 2);
    EXPECT_EQ(draft.lines().at(1).codigoBarra, "T0002");
    db::Sql q(db(), "SELECT NumeroFactura, CodigoBarra, TpoBorrado, Vendedor, Cliente, Cajero, "
                    "UsuarioAutoriza FROM MOVVENTASBORRADAS");
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.integer("NumeroFactura"), 1); // the invoice being keyed
    EXPECT_EQ(q.text("CodigoBarra"), "T0009");
    EXPECT_EQ(q.text("TpoBorrado"), "S");
    EXPECT_EQ(q.text("Vendedor"), "20333444");
    EXPECT_EQ(q.text("Cliente"), "V12345678");
    EXPECT_EQ(q.text("Cajero"), "CAJERO1");
    EXPECT_EQ(q.text("UsuarioAutoriza"), "ADMIN");
    cancelSale(db(), ctx, draft, QStringLiteral("ADMIN"));
    EXPECT_TRUE(draft.isEmpty());
    EXPECT_FALSE(draft.client().isSet());
    EXPECT_EQ(count("MOVVENTASBORRADAS"), 3);
    EXPECT_EQ(count("VENTAS"), 0);
}

TEST_F(SaleTest, PriceChangeNeedsTheRegisterAndAnAdministratorAndKeepsTheTotalsRight) {
    const QString refused = QStringLiteral("Caja ó Usuario no autorizado para cambiar precios...!");
    const Supervisor admin{QStringLiteral("ADMIN"), QStringLiteral("1234")};
    SaleDraft draft = draftOf({"T0001", "T0009"});

    exec("UPDATE CAJAS SET CambiarPrecios = 0, RequerirAutorizacion = 0");
    EXPECT_EQ(refusal([&] { changeLinePrice(db(), ctx, draft, 0, d("100"), admin); }), refused);
    EXPECT_EQ(draft.lines().at(0).precio, d("120.00"));

    // The cashier is no administrator: a supervisor must authorise, and only an administrator can.
    exec("UPDATE CAJAS SET CambiarPrecios = 1");
    EXPECT_TRUE(priceChangeNeedsAuthorisation(db(), ctx));
    EXPECT_EQ(refusal([&] { changeLinePrice(db(), ctx, draft, 0, d("100"), std::nullopt); }),
              refused);
    EXPECT_EQ(refusal([&] {
                  changeLinePrice(db(), ctx, draft, 0, d("100"),
                                  Supervisor{QStringLiteral("CAJERO1"), QStringLiteral("1234")});
              }),
              refused);
    const QString badPassword = refusal([&] {
        changeLinePrice(db(), ctx, draft, 0, d("100"),
                        Supervisor{QStringLiteral("ADMIN"), QStringLiteral("9999")});
    });
    EXPECT_NE(badPassword, "(no refusal)");
    EXPECT_NE(badPassword, refused);
    EXPECT_EQ(draft.lines().at(0).precio, d("120.00"));
    EXPECT_EQ(refusal([&] { changeLinePrice(db(), ctx, draft, 0, d("0"), admin); }),
              "No se puede vender el artículo con precio cero...!");
    EXPECT_EQ(refusal([&] { changeLinePrice(db(), ctx, draft, 5, d("10"), admin); }),
              "Seleccione la fila con datos para cambiar el precio...!");
    changeLinePrice(db(), ctx, draft, 0, d("100"), admin);
    EXPECT_EQ(draft.lines().at(0).precio, d("100.00"));
    EXPECT_EQ(draft.lines().at(0).impuesto, d("16.00"));

    // An administrator at the register changes prices himself, unless the register asks anyway.
    ctx.userCode = QStringLiteral("ADMIN");
    EXPECT_FALSE(priceChangeNeedsAuthorisation(db(), ctx));
    changeLinePrice(db(), ctx, draft, 1, d("50"), std::nullopt);
    EXPECT_EQ(draft.totals().total, d("174.00")); // 150 + 16 %
    exec("UPDATE CAJAS SET RequerirAutorizacion = 1");
    EXPECT_EQ(refusal([&] { changeLinePrice(db(), ctx, draft, 1, d("40"), std::nullopt); }),
              refused);

    // After the global discount a new price is still discounted.
    draft.applyGlobalDiscount(d("10"));
    changeLinePrice(db(), ctx, draft, 0, d("80"), admin);
    EXPECT_EQ(draft.lines().at(0).precioLista, d("72.00"));
    const SaleTotals t = draft.totals(); // 80 + 50 less 10 %, tax 16 % on 72 and 45
    EXPECT_EQ(t.merchandise, d("130.00"));
    EXPECT_EQ(t.discount, d("13.00"));
    EXPECT_EQ(t.tax, d("18.72"));
    EXPECT_EQ(t.total, d("135.72"));
    payCash(draft, d("135.72"));
    ASSERT_EQ(acceptSale(db(), ctx, draft, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(dec("SELECT TotalMercancia FROM VENTAS"), d("130.00"));
    EXPECT_EQ(dec("SELECT TotalDescuento FROM VENTAS"), d("13.00"));
    EXPECT_EQ(dec("SELECT TotalImpuesto FROM VENTAS"), d("18.72"));
    EXPECT_EQ(dec("SELECT PrecioLista FROM MOVVENTAS WHERE CodigoBarra = 'T0001'"), d("72.00"));
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), d("135.72"));
}

TEST_F(SaleTest, ParkedSaleComesBackWholeAndLeavesNoCopy) {
    SaleDraft draft = draftOf({"T0001", "T0009"});
    draft.setExempt(true);
    const long long parked = parkSale(db(), ctx, draft);
    EXPECT_TRUE(draft.isEmpty());
    EXPECT_EQ(count("HISTMOVVENTAS"), 2);
    const auto list = parkedSales(db(), serie);
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list.at(0).numero, parked);
    EXPECT_EQ(list.at(0).clienteNombre, "MARIA ALEJANDRA PEREZ");
    EXPECT_EQ(list.at(0).totalVenta, d("180.00"));
    // The parked header keeps the totals its list shows.
    EXPECT_EQ(dec("SELECT TotalMercancia - TotalDescuento + TotalImpuesto FROM HISTVENTAS"),
              d("180.00"));

    SaleDraft back = newDraft(db(), ctx);
    takeBackParked(db(), ctx, parked, back);
    EXPECT_EQ(count("HISTVENTAS"), 0);
    EXPECT_EQ(count("HISTMOVVENTAS"), 0);
    ASSERT_EQ(back.lines().size(), 2);
    EXPECT_EQ(back.lines().at(0).codigoBarra, "T0001");
    EXPECT_EQ(back.lines().at(0).precio, d("120.00"));
    EXPECT_TRUE(back.isExempt());
    EXPECT_EQ(back.client().codigo, "V12345678");
    EXPECT_EQ(back.seller().cedula, "20333444");
    // A parked line keeps its article, so its list can still be switched.
    back.switchList(0, true);
    EXPECT_EQ(back.lines().at(0).tipoLista, 'M');
    EXPECT_EQ(back.lines().at(0).precio, d("85.00"));
}

TEST_F(SaleTest, ReferenceLimitCountsModelsNotSizes) {
    ctx.itemsPorFactura = 1;
    SaleDraft draft = draftOf({"T0001", "T0002"}); // one model
    EXPECT_EQ(refusal([&] { addArticle(draft, lookupArticles(db(), "T0009").at(0)); }),
              "Alcanzo el tope permitido de referencias por factura...!");
    EXPECT_EQ(draft.lines().size(), 2);
    // Looked up by the start of reference, brand, size and colour: both sizes, by barcode.
    const auto found = lookupArticles(db(), "TST-1001");
    ASSERT_EQ(found.size(), 2);
    EXPECT_EQ(found.at(1).codigoBarra, "T0002");
    // Out of stock and inactive articles are not offered.
    exec("UPDATE INVENTARIO SET Existencia = 0 WHERE CodigoBarra = 'T0001'");
    exec("UPDATE INVENTARIO SET Status = 0 WHERE CodigoBarra = 'T0002'");
    EXPECT_TRUE(lookupArticles(db(), "TST-1").isEmpty());
}

TEST_F(SaleTest, DispatchOrderIsInvoicedAndClosed) {
    exec("INSERT INTO ORDENDESPACHO (Numero, Serie, Fecha, Cliente, TotalMercancia, Status, "
         "Exenta) VALUES (7, ?, ?, 'J301234567', 170, 1, 0)",
         {serie, db::serverNow(db())});
    exec("INSERT INTO MOVORDENDESPACHO (Numero, TipoLista, CodigoBarra, Precio, PrecioLista, "
         "Costo, Impuesto, PorcentajeImpuesto, Cantidad, Descuento, Item) VALUES "
         "(7, 'M', 'T0002', 85, 76.5, 50.5, 12.24, 16, 2, 8.5, 1)");
    // An order older than the days it may be invoiced in is out of the current period.
    exec("INSERT INTO ORDENDESPACHO (Numero, Serie, Fecha, Cliente, TotalMercancia, Status, "
         "Exenta) VALUES (6, ?, ?, 'V12345678', 50, 1, 0)",
         {serie, db::serverNow(db()).addDays(-40)});
    ctx.diasFacturarOrdenDespacho = 30;
    ASSERT_EQ(openDispatchOrders(db(), ctx).size(), 1);
    {
        db::Sql list(db(), store::dispatchCatalogSql());
        list.bind(db::dayStart(dispatchOrdersSince(db(), ctx))).exec();
        ASSERT_TRUE(list.next());
        EXPECT_EQ(list.bigint("Numero"), 7);
        EXPECT_FALSE(list.text("NombreCliente").trimmed().isEmpty());
        EXPECT_FALSE(list.next());
    }
    SaleDraft draft = newDraft(db(), ctx);
    loadDispatchOrder(db(), ctx, 7, draft);
    ASSERT_EQ(draft.lines().size(), 1);
    EXPECT_EQ(draft.lines().at(0).porcentajeDescuento, d("10"));
    EXPECT_EQ(draft.client().codigo, "J301234567");
    draft.setSeller(findSeller(db(), "003"));
    draft.setMode(PaymentMode::Credit);
    ASSERT_EQ(acceptSale(db(), ctx, draft, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO WHERE Numero = 7").toInt(), 2);
    EXPECT_EQ(scalar("SELECT NumeroOrden FROM VENTAS").toInt(), 7);
    EXPECT_EQ(dec("SELECT TotalDescuento FROM VENTAS"), d("17.00"));
    EXPECT_TRUE(openDispatchOrders(db(), ctx).isEmpty());
}

TEST_F(SaleTest, QuantitiesAreHeldToTheWayTheArticleSellsAndToItsStock) {
    EXPECT_EQ(splitQuantity("6*T0001", d("1")), std::make_pair(d("6"), QString("T0001")));
    EXPECT_EQ(splitQuantity(" T0001 ", d("2")), std::make_pair(d("2"), QString("T0001")));
    EXPECT_EQ(splitQuantity("1,25 * T0002", d("1")), std::make_pair(d("1.25"), QString("T0002")));
    EXPECT_EQ(refusal([] { splitQuantity("seis*T0001", d("1")); }),
              "La cantidad debe ser un número: seis*código...!");

    SaleDraft draft = draftOf({});
    const auto shirt = lookupArticles(db(), "T0001").at(0); // 10 in stock
    addArticle(draft, shirt, d("6"));
    EXPECT_EQ(refusal([&] { addArticle(draft, shirt, d("5")); }),
              "Existencia insuficiente de CAMISA PRUEBA T:S: quedan 10...!");
    addArticle(draft, shirt, d("4"));
    EXPECT_EQ(refusal([&] { draft.setQuantity(0, d("7")); }),
              "Existencia insuficiente de CAMISA PRUEBA T:S: quedan 10...!");
    draft.setQuantity(0, d("5"));
    EXPECT_EQ(refusal([&] { addArticle(draft, shirt, d("0.5")); }),
              "El artículo CAMISA PRUEBA T:S se vende por unidades: la cantidad no puede llevar "
              "decimales...!");
    EXPECT_EQ(refusal([&] { draft.setQuantity(1, d("0")); }),
              "La cantidad debe ser mayor que cero...!");
    // A service keeps no stock to run out of.
    addArticle(draft, lookupArticles(db(), "T0009").at(0), d("40"));

    // Goods sold by measure take decimals, to the thousandth and within what the printer prints.
    exec("UPDATE INVENTARIO SET Fraccionable = 1 WHERE CodigoBarra = 'T0002'");
    const auto cloth = lookupArticles(db(), "T0002").at(0); // 5 in stock
    EXPECT_EQ(refusal([&] { addArticle(draft, cloth, d("1.2505")); }),
              "La cantidad admite hasta tres decimales...!");
    EXPECT_EQ(refusal([&] { addArticle(draft, cloth, d("100000")); }),
              "La cantidad no puede ser mayor a 99.999,999...!");
    addArticle(draft, cloth, d("1.25"));
    ASSERT_EQ(draft.lines().size(), 4);

    payCash(draft, draft.totals().total);
    ASSERT_EQ(acceptSale(db(), ctx, draft, nullptr).status, AcceptResult::Status::Saved);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVVENTAS WHERE CodigoBarra = 'T0002'"), d("1.25"));
    EXPECT_EQ(stock("T0001"), d("1"));
    EXPECT_EQ(stock("T0002"), d("3.75"));
    // 120 × 1.25 at 16 %, exact to the cent.
    EXPECT_EQ(dec("SELECT TotalMercancia FROM VENTAS"), d("120") * 9 + d("60") * 40 + d("150"));
}

TEST_F(SaleTest, ACardChargedAtTheTerminalStaysWithTheSaleUntilUsedOrVoided) {
    SaleDraft draft = draftOf({"T0001"});
    PaymentRow card;
    card.way = QStringLiteral("TARJETA DE DEBITO");
    card.amount = d("50");
    card.terminal = pos::payments::TerminalState::Approved;
    card.idPayment = QStringLiteral("Z-1");
    PaymentRow cash;
    cash.way = QStringLiteral("EFECTIVO");
    cash.amount = draft.totals().total - d("50");
    draft.setPayments({card, cash}, draft.totals().total, d("36.5"));
    EXPECT_TRUE(draft.paymentsAccepted());

    // The sale changes: the cash no longer stands, the card does.
    addArticle(draft, lookupArticles(db(), "T0002").at(0));
    draft.clearPayments();
    ASSERT_EQ(draft.payments().size(), 1);
    EXPECT_EQ(draft.amountPaid(), d("50"));
    EXPECT_FALSE(draft.paymentsAccepted());
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }),
              "Debe Especificar el pago del cliente...!");

    // Nothing lets the sale go with it.
    const QString held = "La venta tiene pagos aprobados en el punto de venta VPOS: debe anularlos "
                         "o usarlos en la factura...!";
    EXPECT_EQ(refusal([&] { parkSale(db(), ctx, draft); }), held);
    EXPECT_EQ(refusal([&] { cancelSale(db(), ctx, draft, "CAJERO1"); }), held);
    EXPECT_EQ(refusal([&] { takeBackParked(db(), ctx, 1, draft); }), held);
    draft.setMode(PaymentMode::Credit);
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, draft, nullptr); }), held);
    draft.setMode(PaymentMode::Cash);
    EXPECT_EQ(count("HISTVENTAS") + count("MOVVENTASBORRADAS") + count("VENTAS"), 0);

    // Voided at the terminal, it leaves the sale, which can then be parked.
    draft.forgetTerminalPayment("Z-1");
    EXPECT_TRUE(draft.terminalPayments().isEmpty());
    EXPECT_GT(parkSale(db(), ctx, draft), 0);
}

// --- on the fiscal printer ---

class FiscalSaleTest : public SaleTest {
protected:
    void SetUp() override {
        SaleTest::SetUp();
        // The register takes the serial of the software printer.
        exec("UPDATE CAJAS SET Serie = 'Z1B0000001'");
        exec("UPDATE DIARIOCAJA SET Serie = 'Z1B0000001'");
        exec("UPDATE PARAMETROS SET UsaImpresoraFiscal = 1");
        serie = QStringLiteral("Z1B0000001");
        loadContext();
        thread = test::printerThreadOn(emulator);
        printer = std::make_unique<ThreadSalePrinter>(*thread);
    }
    void TearDown() override {
        printer.reset();
        thread.reset();
        SaleTest::TearDown();
    }

    test::RunningEmulator emulator{50};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> thread;
    std::unique_ptr<ThreadSalePrinter> printer;
};

TEST_F(FiscalSaleTest, DailyMaximumForcesAZBeforeTheInvoice) {
    exec("UPDATE IMPRESORAFISCAL SET MontoMaximoDiario = 500");
    exec("UPDATE DIARIOCAJA SET Acumulado = 400");
    SaleDraft draft = draftOf({"T0001"});
    payCash(draft, d("139.20"));
    AcceptResult r = acceptSale(db(), ctx, draft, printer.get());
    ASSERT_EQ(r.status, AcceptResult::Status::NeedsForcedZ);
    EXPECT_EQ(count("VENTAS"), 0);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 0);

    ASSERT_TRUE(forcedZ(*printer)) << printer->errorText().toStdString();
    EXPECT_EQ(emulator.memory().zCounter, 1);
    r = acceptSale(db(), ctx, draft, printer.get(), true);
    ASSERT_EQ(r.status, AcceptResult::Status::Saved);
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), d("139.20"));

    const PrintResult p = printSale(db(), ctx, r.number, false, printer.get(), {}, r.change);
    ASSERT_TRUE(p.ok()) << p.error.toStdString();
    EXPECT_TRUE(p.fiscalPrinted);
    const QString ticket = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(ticket.contains("CAMISA PRUEBA T:S")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains("139,20")) << ticket.toStdString();
    EXPECT_TRUE(pendingPrints(db(), serie).isEmpty());
    EXPECT_TRUE(emulator.ticket("VISOR.txt").contains("Total: Bs.139,20"));
}

TEST_F(FiscalSaleTest, ContingencySaleGoesOnPaperWithoutAskingThePrinter) {
    emulator.fault("silence");
    SaleDraft draft = draftOf({"T0009"});
    draft.setContingency(true);
    payCash(draft, d("69.60"));
    const AcceptResult r = acceptSale(db(), ctx, draft, printer.get());
    ASSERT_EQ(r.status, AcceptResult::Status::Saved);
    const PrintResult p = printSale(db(), ctx, r.number, true, printer.get(), paper());
    ASSERT_TRUE(p.ok()) << p.error.toStdString();
    EXPECT_FALSE(p.fiscalPrinted);
    EXPECT_TRUE(paperText(1).contains("CONTINGENCIA"));
    EXPECT_TRUE(pendingPrints(db(), serie).isEmpty());
}

TEST_F(FiscalSaleTest, PaperOutAfterTheCommitLeavesOneReprintableInvoice) {
    SaleDraft draft = draftOf({"T0001", "T0009"});
    payCash(draft, d("208.80"));
    emulator.fault("paper-out");
    const AcceptResult r = acceptSale(db(), ctx, draft, printer.get());
    ASSERT_EQ(r.status, AcceptResult::Status::Saved);
    const PrintResult failed = printSale(db(), ctx, r.number, false, printer.get(), {});
    EXPECT_FALSE(failed.ok());
    EXPECT_TRUE(failed.error.startsWith("La factura 1 fue guardada pero no se pudo imprimir"))
        << failed.error.toStdString();
    EXPECT_EQ(pendingPrints(db(), serie), QList<long long>{1});
    EXPECT_FALSE(emulator.hasTicket("FACTURA_00000001.txt"));

    // The next sale is held back by the printer check until the invoice is out.
    SaleDraft next = draftOf({"T0002"});
    payCash(next, d("139.20"));
    EXPECT_EQ(refusal([&] { acceptSale(db(), ctx, next, printer.get()); }),
              "El numero de factura no concuerda con el numero de factura de la impresora...!");

    emulator.fault("paper-ok");
    const PrintResult again = printSale(db(), ctx, r.number, false, printer.get(), {});
    ASSERT_TRUE(again.ok()) << again.error.toStdString();
    EXPECT_TRUE(emulator.hasTicket("FACTURA_00000001.txt"));
    EXPECT_EQ(count("VENTAS"), 1);
    EXPECT_TRUE(pendingPrints(db(), serie).isEmpty());
    EXPECT_EQ(acceptSale(db(), ctx, next, printer.get()).number, 2);
}

// The program stopped after the printer gave the ticket and before the invoice was marked: the
// next accept must not print it a second time, and the counters stay together.
TEST_F(FiscalSaleTest, AnInvoiceOnThePrinterButNotMarkedIsMarkedNotPrintedAgain) {
    SaleDraft draft = draftOf({"T0001"});
    payCash(draft, d("139.20"));
    const AcceptResult r = acceptSale(db(), ctx, draft, printer.get());
    ASSERT_EQ(r.status, AcceptResult::Status::Saved);
    ASSERT_TRUE(printer->print(
        pos::fiscal::saleDocument(db(), int(r.number), serie, pos::fiscal::loadRateTable(db()))));
    ASSERT_EQ(pendingPrints(db(), serie), QList<long long>{1});

    const PrintResult pending = printPendingSales(db(), ctx, printer.get(), {});
    ASSERT_TRUE(pending.ok()) << pending.error.toStdString();
    EXPECT_TRUE(pendingPrints(db(), serie).isEmpty());
    EXPECT_EQ(emulator.memory().lastInvoice, 1);
    EXPECT_FALSE(emulator.hasTicket("FACTURA_00000002.txt"));

    SaleDraft next = draftOf({"T0002"});
    payCash(next, d("139.20"));
    const AcceptResult second = acceptSale(db(), ctx, next, printer.get());
    EXPECT_EQ(second.number, 2);
    ASSERT_TRUE(printSale(db(), ctx, second.number, false, printer.get(), {}).ok());
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
}
