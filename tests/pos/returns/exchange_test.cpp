// The exchange of goods: the return and the new invoice together, on the software printer.
#include "../fiscal/printer_on_emulator.h"
#include "../sale/till_fixture.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/cash/cash_closing.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/returns/exchange.h"
#include "shell/demo/demo_store.h"

using namespace orvo;
using namespace orvo::pos::returns;
namespace sale = orvo::pos::sale;

namespace {

using test::d;
using test::refusal;

class ExchangeTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.fiscal = true, .trousers = true});
        thread = test::printerThreadOn(emulator);
        printer = std::make_unique<sale::ThreadSalePrinter>(*thread);
    }
    void TearDown() override {
        printer.reset();
        thread.reset();
        DbTest::TearDown();
    }

    long long sellPrinted(std::initializer_list<const char*> codes, bool credit = false) {
        sale::SaleDraft draft = draftOf(codes, credit);
        if (!credit)
            payCash(draft, draft.totals().total);
        const auto r = sale::acceptSale(db(), ctx, draft, printer.get());
        EXPECT_TRUE(sale::printSale(db(), ctx, r.number, false, printer.get(), {}).ok());
        return r.number;
    }
    // The credit note first, then the invoice, as the screen does.
    void printBoth(const ExchangeResult& r) {
        const auto note =
            printReturn(db(), ctx, r.returnNumber, false, printer.get(), sale::PaperPrinter());
        ASSERT_TRUE(note.ok()) << note.error.toStdString();
        const auto inv =
            sale::printSale(db(), ctx, r.invoiceNumber, false, printer.get(), {}, r.change);
        ASSERT_TRUE(inv.ok()) << inv.error.toStdString();
    }

    test::RunningEmulator emulator{50};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> thread;
    std::unique_ptr<sale::ThreadSalePrinter> printer;
};

} // namespace

TEST_F(ExchangeTest, TheValueBroughtBackPaysTheNewInvoiceAndTheCashierTakesTheDifference) {
    const long long invoice = sellPrinted({"T0009"});
    ReturnDraft back(loadExchangeInvoice(db(), ctx, invoice));
    back.addEverything();
    sale::SaleDraft taken = draftOf({"T0001"});
    const ExchangeAmounts amounts = exchangeAmounts(back, taken);
    EXPECT_EQ(amounts.back, d("69.60"));
    EXPECT_EQ(amounts.taken, d("116.00"));
    EXPECT_EQ(amounts.toPay(), d("46.40"));
    EXPECT_EQ(amounts.toHandBack(), d("0"));
    EXPECT_EQ(refusal([&] { acceptExchange(db(), ctx, back, taken, printer.get()); }),
              "Debe Especificar el pago del cliente...!");
    EXPECT_EQ(count("DEVVENTAS"), 0);
    payCash(taken, d("50"));

    const ExchangeResult r = acceptExchange(db(), ctx, back, taken, printer.get());
    ASSERT_EQ(r.status, ExchangeResult::Status::Saved);
    EXPECT_EQ(r.returnNumber, 1);
    EXPECT_EQ(r.invoiceNumber, 2);
    EXPECT_EQ(r.change, d("3.60"));
    EXPECT_EQ(r.handedBack(), d("3.60"));
    EXPECT_EQ(scalar("SELECT NumeroFactura FROM DEVVENTAS").toLongLong(), invoice);
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVVENTAS WHERE NumeroFactura = ?", {invoice}),
              d("1"));
    // Both documents are whole: the credit note refunds the service on the refunds account, and
    // that refund pays the new invoice with the cash of the difference.
    ASSERT_EQ(count("SALIDASCAJA"), 1);
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA WHERE CodigoContable = '4.1.10'"), d("69.60"));
    EXPECT_EQ(scalar("SELECT Numero FROM SALIDASCAJA").toLongLong(), r.cashRefund);
    EXPECT_EQ(count("PAGOSVENTA", "NumeroFactura = 2 AND FormaPago = '1'"), 2);
    EXPECT_EQ(dec("SELECT SUM(Monto) FROM PAGOSVENTA WHERE NumeroFactura = 2"), d("116.00"));
    EXPECT_EQ(dec("SELECT TotalPago FROM VENTAS WHERE NumeroFactura = 2"), d("119.60"));
    // The drawer holds the first sale and the difference, as the closing counts it.
    const auto figures = pos::cash::closingFigures(db(), serie);
    ASSERT_TRUE(figures.has_value());
    EXPECT_EQ(figures->expectedCash() - figures->fondoCaja, d("69.60") + d("46.40"));
    EXPECT_TRUE(r.reminder.isEmpty());
    EXPECT_EQ(stock("T0009"), d("0"));
    EXPECT_EQ(stock("T0001"), d("9"));

    printBoth(r);
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
    EXPECT_TRUE(emulator.ticket("NOTACREDITO_00000001.txt").contains("ENVOLTURA"));
    EXPECT_TRUE(emulator.ticket("FACTURA_00000002.txt").contains("CAMISA PRUEBA T:S"));
    EXPECT_TRUE(pendingReturnPrints(db(), serie).isEmpty());
    EXPECT_TRUE(sale::pendingPrints(db(), serie).isEmpty());

    EXPECT_EQ(refusal([&] { loadExchangeInvoice(db(), ctx, invoice); }),
              "La factura fue devuelta en su totalidad...!");
}

TEST_F(ExchangeTest, GoodsWorthMoreThanTheNewOnesLeaveTheDifferenceToHandBack) {
    const long long invoice = sellPrinted({"T0001"});
    ReturnDraft back(loadExchangeInvoice(db(), ctx, invoice));
    back.addEverything();
    sale::SaleDraft taken = draftOf({"T0009"});
    // Nothing to collect, so nothing to pay.
    const ExchangeResult r = acceptExchange(db(), ctx, back, taken, printer.get());
    ASSERT_EQ(r.status, ExchangeResult::Status::Saved);
    EXPECT_EQ(r.amounts.toHandBack(), d("46.40"));
    EXPECT_EQ(r.handedBack(), d("46.40"));
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE NumeroFactura = 2"), d("69.60"));
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA"), d("116.00"));
    const auto figures = pos::cash::closingFigures(db(), serie);
    ASSERT_TRUE(figures.has_value());
    EXPECT_EQ(figures->expectedCash() - figures->fondoCaja, d("116.00") - d("46.40"));
    printBoth(r);
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
}

TEST_F(ExchangeTest, CreditInvoicesAreRefusedAndReturnedGoodsOnNegativeStockTakeTheLinesCost) {
    const long long credit = sellPrinted({"T0002"}, true);
    EXPECT_EQ(refusal([&] { loadExchangeInvoice(db(), ctx, credit); }),
              "No puede cambiar una factura a credito...!");

    const long long invoice = sellPrinted({"T0002", "T0002"});
    exec("UPDATE INVENTARIO SET Existencia = -4, CostoPromedio = 80 WHERE CodigoBarra = 'T0002'");
    ReturnDraft back(loadExchangeInvoice(db(), ctx, invoice));
    back.addArticle("T0002", d("1"));
    sale::SaleDraft taken = draftOf({"T0001"});
    const ExchangeResult r = acceptExchange(db(), ctx, back, taken, printer.get());
    ASSERT_EQ(r.status, ExchangeResult::Status::Saved);
    EXPECT_EQ(stock("T0002"), d("-3"));
    EXPECT_EQ(dec("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = 'T0002'"), d("50.5"));
    // Here the last cost takes the line's list price.
    EXPECT_EQ(dec("SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = 'T0002'"), d("120"));
    printBoth(r);
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(emulator.memory().lastInvoice, 3);
}

TEST_F(ExchangeTest, CrossingTheDailyMaximumForcesAZFirstAndWritesNothingBefore) {
    const long long invoice = sellPrinted({"T0009"});
    exec("UPDATE IMPRESORAFISCAL SET MontoMaximoDiario = 500");
    exec("UPDATE DIARIOCAJA SET Acumulado = 400");
    ReturnDraft back(loadExchangeInvoice(db(), ctx, invoice));
    back.addEverything();
    sale::SaleDraft taken = draftOf({"T0002"});
    payCash(taken, d("69.60"));
    ExchangeResult r = acceptExchange(db(), ctx, back, taken, printer.get());
    ASSERT_EQ(r.status, ExchangeResult::Status::NeedsForcedZ);
    EXPECT_EQ(count("DEVVENTAS"), 0);
    EXPECT_EQ(count("VENTAS"), 1);

    ASSERT_TRUE(sale::forcedZ(*printer)) << printer->errorText().toStdString();
    EXPECT_EQ(emulator.memory().zCounter, 1);
    r = acceptExchange(db(), ctx, back, taken, printer.get(), true);
    ASSERT_EQ(r.status, ExchangeResult::Status::Saved);
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), d("139.20"));
    printBoth(r);
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
}

TEST_F(ExchangeTest, AFailureInTheInvoiceLeavesNoReturnEither) {
    const long long invoice = sellPrinted({"T0001"});
    if (isPostgres()) {
        exec("CREATE FUNCTION orvo_refuse_pago() RETURNS trigger AS $$ BEGIN RAISE EXCEPTION "
             "'pago rechazado'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_pago BEFORE INSERT ON PAGOSVENTA FOR EACH ROW EXECUTE "
             "FUNCTION orvo_refuse_pago()");
    } else {
        exec("CREATE TRIGGER TR_REFUSE_PAGO BEFORE INSERT ON PAGOSVENTA BEGIN SELECT "
             "RAISE(ABORT, 'pago rechazado'); END");
    }
    ReturnDraft back(loadExchangeInvoice(db(), ctx, invoice));
    back.addEverything();
    sale::SaleDraft taken = draftOf({"T0002"});
    payCash(taken, d("69.60"));
    EXPECT_THROW(acceptExchange(db(), ctx, back, taken, printer.get()), DbError);
    EXPECT_EQ(count("DEVVENTAS"), 0);
    EXPECT_EQ(count("MOVDEVVENTAS"), 0);
    EXPECT_EQ(count("VENTAS"), 1);
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVVENTAS"), d("0"));
    EXPECT_EQ(stock("T0001"), d("9"));
    EXPECT_EQ(stock("T0002"), d("5"));
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS").toInt(), 0);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 1);
    EXPECT_EQ(emulator.memory().lastCreditNote, 0);
}

TEST_F(ExchangeTest, WithIgtfTheDollarsOfTheDifferencePayTheirTaxAndTheReturnGivesItsBack) {
    exec("UPDATE CAJAS SET IGTF = 1 WHERE Serie = ?", {serie});
    thread->callAndWait([](pos::fiscal::FiscalPrinter& p) { ASSERT_TRUE(p.setIgtf(true, 300)); });
    const Decimal rate = d("36.5");
    const auto dollarsAndCash = [&](const char* cash) {
        pos::payments::PaymentRow dollar;
        dollar.way = QStringLiteral("EFECTIVO DOLAR");
        dollar.amount = d("1");
        pos::payments::PaymentRow bolivars;
        bolivars.way = QStringLiteral("EFECTIVO");
        bolivars.amount = d(cash);
        return QList<pos::payments::PaymentRow>{dollar, bolivars};
    };
    // 69.60: one dollar (36.50, 1.10 of tax) and 34.20 in cash.
    sale::SaleDraft first = draftOf({"T0009"});
    const auto firstRows = dollarsAndCash("34.20");
    first.setPayments(firstRows, d("70.70"), rate,
                      pos::payments::amountOwed(firstRows, rate, first.totals().total,
                                                pos::fiscal::igtf::settings(db(), serie)));
    const auto sold = sale::acceptSale(db(), ctx, first, printer.get());
    ASSERT_TRUE(sale::printSale(db(), ctx, sold.number, false, printer.get(), {}).ok());
    EXPECT_EQ(dec("SELECT MontoIGTF FROM VENTAS WHERE NumeroFactura = ?", {sold.number}),
              d("1.10"));

    // The service for the shirt: 46.40 to pay, with one dollar (1.10 of tax) and 11.00.
    ReturnDraft back(loadExchangeInvoice(db(), ctx, sold.number));
    back.addEverything();
    sale::SaleDraft taken = draftOf({"T0001"});
    taken.setPayments(dollarsAndCash("11"), d("47.50"), rate);
    const ExchangeResult r = acceptExchange(db(), ctx, back, taken, printer.get());
    ASSERT_EQ(r.status, ExchangeResult::Status::Saved);
    EXPECT_EQ(r.igtf, d("1.10"));
    EXPECT_EQ(r.change, d("0"));
    // The whole invoice was paid partly in dollars: its return gives back their share's tax.
    EXPECT_EQ(dec("SELECT BaseIGTF FROM DEVVENTAS"), d("36.50"));
    EXPECT_EQ(r.igtfBack, d("1.10"));
    EXPECT_EQ(r.handedBack(), d("1.10"));
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA"), d("70.70"));
    EXPECT_EQ(dec("SELECT BaseIGTF FROM VENTAS WHERE NumeroFactura = ?", {r.invoiceNumber}),
              d("36.50"));
    EXPECT_EQ(dec("SELECT MontoIGTF FROM VENTAS WHERE NumeroFactura = ?", {r.invoiceNumber}),
              d("1.10"));

    printBoth(r);
    const auto memory = emulator.memory();
    EXPECT_EQ(memory.lastCreditNote, 1);
    EXPECT_EQ(memory.lastInvoice, 2);
    EXPECT_EQ(memory.invoiceIgtf.igtf, 220);
    EXPECT_EQ(memory.creditNoteIgtf.igtf, 110);
    EXPECT_FALSE(emulator.ticket("FACTURA_00000002.txt").contains("CAMBIO"))
        << emulator.ticket("FACTURA_00000002.txt").toStdString();
}
