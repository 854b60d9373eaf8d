// Dollars and IGTF on the fiscal document, from the store's tables to the printer's X and Z:
// the payment way → means table, foreign currency converted at the sale's rate, the tax capped
// at the amount due, a row the change emptied never sent.
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/igtf.h"
#include "pos/fiscal/payment_means.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/register_printer.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "printer_on_emulator.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "support/test_db.h"

#include <QThread>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::fiscal;

namespace {

const QString kSerie = QStringLiteral("Z1B0000001");

class DollarsTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        test::bindFiscalPort(emulator);
        openConfiguredPrinter(printer);
        exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
             "VALUES (?, 1, 0, 0)",
             {kSerie});
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'G', '16')");
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre) VALUES ('001', 'CAMISA')");
        exec("INSERT INTO CLIENTES (Codigo, Nombre) VALUES ('V00000000', 'CONTADO')");
        for (const auto& [code, name] : {std::pair{1, "EFECTIVO"},
                                         {3, "TARJETA DE DEBITO"},
                                         {7, "MULTIPLE"},
                                         {11, "EFECTIVO DOLAR"}})
            exec("INSERT INTO FORMAPAGO (Codigo, Nombre, Status) VALUES (?, ?, 1)", {code, name});
    }

    // A 116.00 invoice (100.00 + 16 %) at 36.50 Bs/$, paid as listed: way code and amount in
    // that way's currency.
    void sell(int number, int way, QList<std::pair<int, const char*>> payments,
              const char* baseIgtf = "0") {
        exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, FormaPago, TotalMercancia, "
             "TotalDescuento, TotalImpuesto, TasaCambio, BaseIGTF) "
             "VALUES (?, ?, ?, 'V00000000', ?, '100', '0', '16', '36.5', ?)",
             {number, kSerie, QDateTime::currentDateTime(), QString::number(way), baseIgtf});
        exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Precio, "
             "PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
             "VALUES (?, ?, '001', '100', '16', '1', 1, '0')",
             {number, kSerie});
        int item = 0;
        for (const auto& [w, amount] : payments)
            exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Monto) "
                 "VALUES (?, ?, ?, ?, ?)",
                 {number, kSerie, ++item, QString::number(w), amount});
    }
    bool print(int number) {
        const bool ok =
            printer.printDocument(saleDocument(db(), number, kSerie, loadRateTable(db())));
        EXPECT_TRUE(ok) << number << ": " << printer.errorText().toStdString();
        return ok;
    }
    QString ticket(int number) const {
        return emulator.ticket(
            QStringLiteral("FACTURA_%1.txt").arg(number, 8, 10, QLatin1Char('0')));
    }

    test::RunningEmulator emulator;
    SerialFiscalPrinter printer{test::fastTiming()};
};

} // namespace

TEST_F(DollarsTest, TheMeansTableHasTheDefaultsAndTakesItsConfiguration) {
    PaymentMeansTable t = loadPaymentMeans(db());
    EXPECT_EQ(t.means(1), 1);
    EXPECT_EQ(t.means(3), 9);
    EXPECT_EQ(t.means(11), 20);
    EXPECT_TRUE(t.isForeign(11));
    EXPECT_FALSE(t.isForeign(1));
    EXPECT_TRUE(t.isSeveralWays(7));
    EXPECT_EQ(t.names(), (QList<std::pair<int, QString>>{
                             {1, "EFECTIVO"}, {9, "TARJ. DEBITO"}, {20, "EFECTIVO DOLAR"}}));

    QList<WayMeans> rows = t.rows();
    rows[3].means = 21;
    rows[3].name = QStringLiteral("Dolares");
    {
        db::Transaction tx(db());
        savePaymentMeans(db(), rows);
        tx.commit();
    }
    t = loadPaymentMeans(db());
    EXPECT_EQ(t.means(11), 21);
    EXPECT_EQ(t.rows()[3].name, QStringLiteral("DOLARES"));
    rows[3].name = QStringLiteral("DOLARES AMERICANOS");
    db::Transaction tx(db());
    EXPECT_THROW(savePaymentMeans(db(), rows), UserError);
}

TEST_F(DollarsTest, IgtfSettingsOfTheRegisterAndTheCompany) {
    EXPECT_FALSE(igtf::settings(db(), kSerie).enabled);
    EXPECT_EQ(igtf::settings(db(), kSerie).percent, Decimal(3));
    {
        db::Transaction tx(db());
        igtf::setRegisterIgtf(db(), kSerie, true);
        tx.commit();
    }
    EXPECT_TRUE(igtf::settings(db(), kSerie).enabled);
    exec("UPDATE CAJAS SET IGTF = 0");
    exec("INSERT INTO PARAMETROS (IGTF, PorcentajeIGTF) VALUES (1, '2.5')");
    EXPECT_TRUE(igtf::settings(db(), kSerie).enabled);
    EXPECT_EQ(igtf::settings(db(), kSerie).percent, Decimal::fromString(u"2.5"));

    // The printer's rule, to the cent: pay 130 on 116 -> 3.48; pay 110 of 116 -> 3.30.
    EXPECT_EQ(igtf::tax(igtf::base(Decimal(130), Decimal(116)), Decimal(3)),
              Decimal::fromString(u"3.48"));
    EXPECT_EQ(igtf::tax(igtf::base(Decimal(110), Decimal(116)), Decimal(3)),
              Decimal::fromString(u"3.30"));
    EXPECT_EQ(igtf::base(Decimal(), Decimal(116)), Decimal());
    // What is owed, and what more in foreign currency settles it with its own tax.
    const igtf::Settings on{true, Decimal(3)};
    EXPECT_EQ(igtf::owed(Decimal(116), Decimal(146), on).total, Decimal::fromString(u"119.48"));
    EXPECT_EQ(igtf::owed(Decimal(116), Decimal(146), {}).total, Decimal(116));
    EXPECT_EQ(igtf::foreignToSettle(Decimal(116), Decimal(), Decimal(), on),
              Decimal::fromString(u"119.48"));
    // 73.00 paid in dollars (2.19 of tax) and 20.00 in cash leave 25.19; paid in dollars it
    // raises the tax by 0.76, which raises it by 0.02: 116 + 2.97 owed, 73 + 20 + 25.97 paid.
    const Decimal more = igtf::foreignToSettle(Decimal(116), Decimal(73), Decimal(93), on);
    EXPECT_EQ(more, Decimal::fromString(u"25.97"));
    EXPECT_EQ(igtf::owed(Decimal(116), Decimal(73) + more, on).total, Decimal(93) + more);
    EXPECT_EQ(igtf::foreignToSettle(Decimal(116), Decimal(), Decimal(116), {}), Decimal());
    // Half of a 116.00 invoice of which 73.00 bore the tax goes back 36.50 in foreign currency.
    EXPECT_EQ(igtf::foreignRefund(Decimal(58), Decimal(73), Decimal(116)),
              Decimal::fromString(u"36.50"));
}

TEST_F(DollarsTest, DollarsAndMixedPaymentsWithIgtfOffAndOn) {
    // IGTF off: 4 dollars go under means 20 as 146.00 bolívars, the change is the printer's.
    sell(1, 11, {{11, "4"}});
    // Two dollars and the rest in cash; a cash row the change emptied is not sent.
    sell(2, 7, {{11, "2"}, {1, "43"}, {1, "0"}});
    ASSERT_TRUE(print(1));
    ASSERT_TRUE(print(2));
    EXPECT_TRUE(ticket(1).contains("MEDIO 20 146,00")) << ticket(1).toStdString();
    EXPECT_TRUE(ticket(1).contains("CAMBIO 30,00"));
    EXPECT_FALSE(ticket(1).contains("IGTF"));
    EXPECT_TRUE(ticket(2).contains("MEDIO 20 73,00")) << ticket(2).toStdString();
    EXPECT_TRUE(ticket(2).contains("MEDIO 01 43,00"));
    auto day = printer.openDay();
    ASSERT_TRUE(day);
    EXPECT_FALSE(day->withIgtf);
    EXPECT_EQ(day->invoices.total(), 2 * 11600);

    // IGTF on, as the register programs it after its Z: the rates with 3 %, flag 50, the names.
    ASSERT_TRUE(printer.printZReport());
    ASSERT_TRUE(printer.waitUntilReady(3000, 50));
    ASSERT_TRUE(printer.setIgtf(true, 300)) << printer.errorText().toStdString();
    ASSERT_TRUE(printer.nameMeans(loadPaymentMeans(db()).names()));
    exec("UPDATE CAJAS SET UltimaFactura = 2");

    sell(3, 11, {{11, "4"}}, "116");
    sell(4, 7, {{11, "2"}, {1, "45.19"}}, "73");
    // Change taken from the cash row leaves it at 0: only the dollars go, the printer gives
    // the change.
    sell(5, 7, {{1, "0"}, {11, "4"}}, "116");
    ASSERT_TRUE(print(3));
    ASSERT_TRUE(print(4));
    ASSERT_TRUE(print(5));
    EXPECT_TRUE(ticket(3).contains("IGTF (3,00%) 3,48")) << ticket(3).toStdString();
    EXPECT_TRUE(ticket(3).contains("EFECTIVO DOLAR 146,00"));
    EXPECT_TRUE(ticket(3).contains("CAMBIO 26,52"));
    EXPECT_TRUE(ticket(4).contains("IGTF (3,00%) 2,19")) << ticket(4).toStdString();
    EXPECT_FALSE(ticket(4).contains("CAMBIO"));
    EXPECT_FALSE(ticket(5).contains("EFECTIVO 0,00")) << ticket(5).toStdString();
    EXPECT_TRUE(ticket(5).contains("CAMBIO 26,52"));

    // A credit note returns what bore the tax in foreign currency and carries its tax.
    exec("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, Fecha, Cliente, "
         "TotalMercancia, TotalDescuento, TotalImpuesto, SerieFactura) "
         "VALUES (1, ?, 4, ?, 'V00000000', '100', '0', '16', ?)",
         {kSerie, QDateTime::currentDateTime(), kSerie});
    exec("INSERT INTO MOVDEVVENTAS (NumeroDevolucion, Serie, CodigoBarra, Precio, "
         "PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
         "VALUES (1, ?, '001', '100', '16', '1', 1, '0')",
         {kSerie});
    const FiscalDocument credit = returnDocument(db(), 1, kSerie, loadRateTable(db()));
    ASSERT_EQ(credit.payments.size(), 2);
    EXPECT_EQ(credit.payments[0].means, 20);
    EXPECT_EQ(credit.payments[0].amount, Decimal(73));
    EXPECT_EQ(credit.payments[1].amount, Decimal(43));
    ASSERT_TRUE(printer.printDocument(credit)) << printer.errorText().toStdString();

    day = printer.openDay();
    ASSERT_TRUE(day);
    EXPECT_TRUE(day->withIgtf);
    EXPECT_EQ(day->invoiceIgtf.base, 11600 + 7300 + 11600);
    EXPECT_EQ(day->invoiceIgtf.igtf, 348 + 219 + 348);
    EXPECT_EQ(day->creditNoteIgtf.igtf, 219);
    ASSERT_TRUE(printer.printZReport());
    ASSERT_TRUE(printer.waitUntilReady(3000, 50));
    const auto z = printer.lastZ();
    ASSERT_TRUE(z);
    EXPECT_EQ(z->invoiceIgtf.igtf, 915);
    EXPECT_EQ(z->invoices.total(), 3 * 11600);
    EXPECT_TRUE(zReportText(*z).contains("IGTF facturas: base 305.00  IGTF: 9.15"))
        << zReportText(*z).toStdString();
}
