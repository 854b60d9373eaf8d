#include "common/errors/errors.h"
#include "inventory/dispatch/conversions.h"
#include "inventory/dispatch/invoice_conversion.h"
#include "pos/sale/till_fixture.h"

#include <QFile>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::inventory::dispatch;
using test::d;

namespace {

class InvoiceConversionTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.trousers = true});
        qputenv("ORVO_HOME", home.path().toUtf8());
        // Transfer 7 received from store 99: T0001 in two boxes, and one T0002.
        exec("INSERT INTO ITRANSFERENCIAS (Numero, CodigoEnvia, CodigoRecibe, Fecha, TotalValor, "
             "Status) VALUES (7, '99', '01', ?, 60, 1)",
             {QDateTime::currentDateTime()});
        exec("INSERT INTO IMOVTRANSFERENCIAS (Numero, CodigoEnvia, Item, CodigoBarra, Cantidad, "
             "Valor, NumeroCaja) VALUES (7, '99', 1, 'T0001', 2, 10, 1), (7, '99', 2, 'T0002', "
             "1, 5, 1), (7, '99', 3, 'T0001', 1, 10, 2)");
    }
    void TearDown() override {
        qunsetenv("ORVO_HOME");
        TillTest::TearDown();
    }
    pos::sale::SaleDraft draftFor(const InvoiceSourceDocument& document) {
        return invoiceDraft(db(), ctx, document, *pos::sale::findClient(db(), "J301234567"),
                            pos::sale::findSeller(db(), "003"));
    }
    static QString refusal(auto&& action) {
        try {
            action();
        } catch (const UserError& e) {
            return e.text();
        }
        return {};
    }
    QString listed() const {
        QFile f(home.path() + "/FacturasAutomaticas.txt");
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    QTemporaryDir home;
};

} // namespace

TEST_F(InvoiceConversionTest, AReceivedTransferIsInvoicedOnceByTheRegistersCounter) {
    const auto documents = documentsToInvoice(db(), InvoiceSource::Transfer);
    ASSERT_EQ(documents.size(), 1);
    EXPECT_EQ(documents[0].number, "7");
    const pos::sale::SaleDraft draft = draftFor(documents[0]);
    ASSERT_EQ(draft.lines().size(), 2); // the boxes summed by barcode
    EXPECT_EQ(draft.lines().at(0).cantidad, d("3"));
    const long long expected = pos::sale::nextInvoiceNumberPreview(db(), ctx);

    // Refused by the database after the invoice was written: no invoice, counter, stock or log.
    if (isPostgres()) {
        exec("CREATE OR REPLACE FUNCTION orvo_refuse_log() RETURNS trigger AS $$ BEGIN RAISE "
             "EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_log BEFORE INSERT ON BITACORAMOVIMIENTO FOR EACH ROW "
             "EXECUTE FUNCTION orvo_refuse_log()");
    } else {
        exec("CREATE TRIGGER tr_refuse_log BEFORE INSERT ON BITACORAMOVIMIENTO BEGIN SELECT "
             "RAISE(ABORT, 'rechazado'); END");
    }
    EXPECT_THROW(convertToInvoice(db(), ctx, documents[0], draft, nullptr), DbError);
    EXPECT_EQ(count("VENTAS") + count("MOVVENTAS"), 0);
    EXPECT_EQ(pos::sale::nextInvoiceNumberPreview(db(), ctx), expected);
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA").toLongLong(), 0);
    EXPECT_EQ(stock("T0001"), d("10"));
    EXPECT_TRUE(listed().isEmpty());
    exec(isPostgres() ? "DROP TRIGGER tr_refuse_log ON BITACORAMOVIMIENTO"
                      : "DROP TRIGGER tr_refuse_log");

    const long long number = convertToInvoice(db(), ctx, documents[0], draft, nullptr);
    EXPECT_EQ(number, expected);
    EXPECT_EQ(count("VENTAS", "NumeroFactura = ? AND Cliente = 'J301234567'", {number}), 1);
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA").toLongLong(), number);
    EXPECT_EQ(pos::sale::nextInvoiceNumberPreview(db(), ctx), number + 1);
    EXPECT_EQ(stock("T0001"), d("7"));
    EXPECT_EQ(count("BITACORAMOVIMIENTO", "TipodocumentoOrigen = 'TE' AND DocumentoOrigen = '7' "
                                          "AND Origen = '99' AND tipoDocumentoDestino = 'FA'"),
              1);
    EXPECT_TRUE(listed().contains("Factura generada aut. por la transferencia Nº 7"));
    EXPECT_TRUE(documentsToInvoice(db(), InvoiceSource::Transfer).isEmpty());
    EXPECT_EQ(refusal([&] { convertToInvoice(db(), ctx, documents[0], draft, nullptr); }),
              "La transferencia Nº 7 de 99 ya fue facturada...!");
    EXPECT_EQ(count("VENTAS"), 1);
}

TEST_F(InvoiceConversionTest, APurchaseIsInvoicedOrConvertedNotBoth) {
    exec("INSERT INTO COMPRAS (Documento, Proveedor, Fecha, Status) VALUES ('F-9', 'PX', ?, 1)",
         {QDateTime::currentDateTime()});
    exec("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, Cantidad, PrecioFactura, "
         "Item) VALUES ('F-9', 'PX', 'T0002', 2, 50, 1)");
    const auto documents = documentsToInvoice(db(), InvoiceSource::Purchase);
    ASSERT_EQ(documents.size(), 1);
    const long long number =
        convertToInvoice(db(), ctx, documents[0], draftFor(documents[0]), nullptr);
    EXPECT_EQ(dec("SELECT SUM(Cantidad) FROM MOVVENTAS WHERE NumeroFactura = ?", {number}), d("2"));
    EXPECT_EQ(stock("T0002"), d("3"));
    EXPECT_TRUE(listed().contains("Factura generada aut. por la compra Nº F-9"));
    pos::sale::SaleDraft order = newOrderDraft(db(), ctx);
    setOrderClient(ctx, order, *pos::sale::findClient(db(), "J301234567"));
    EXPECT_EQ(refusal([&] { orderFromPurchase(db(), "F-9", "PX", order); }),
              "La compra Nº F-9 del proveedor PX ya fue convertida...!");
}
