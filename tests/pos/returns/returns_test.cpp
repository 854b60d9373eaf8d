// Returns at the till against a real database, and the credit note on the software printer.
#include "../fiscal/printer_on_emulator.h"
#include "../sale/till_fixture.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/returns/returns.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"

#include <QFile>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::pos::returns;
namespace sale = orvo::pos::sale;

namespace {

using test::d;
using test::refusal;

class ReturnsTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({});
        exec("INSERT INTO CTACONTABLE (Codigo, Nombre, ManejaDocumentos, TieneAcreedor, "
             "CuentaDevolucion, Status) VALUES ('4.1.09', 'DEVOLUCIONES EN VENTAS', 1, 1, 1, 1)");
    }

    // An invoice made by the sale itself: T0001 × 2 and T0002 at 120 each, tax 16 %.
    long long sell(std::initializer_list<const char*> codes, bool credit = false,
                   sale::SalePrinter* printer = nullptr) {
        sale::SaleDraft draft = draftOf(codes, credit);
        if (!credit)
            payCash(draft, draft.totals().total);
        const auto r = sale::acceptSale(db(), ctx, draft, printer);
        EXPECT_EQ(r.status, sale::AcceptResult::Status::Saved);
        if (printer) {
            const auto p = sale::printSale(db(), ctx, r.number, false, printer, {});
            EXPECT_TRUE(p.ok()) << p.error.toStdString();
        }
        return r.number;
    }

    Decimal averageCost(const char* code) const {
        return dec("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = ?", {code});
    }
    Decimal lastCost(const char* code) const {
        return dec("SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = ?", {code});
    }
    Decimal returned(long long invoice, const char* code) const {
        return dec("SELECT CantidadDevuelta FROM MOVVENTAS WHERE NumeroFactura = ? AND "
                   "CodigoBarra = ?",
                   {invoice, code});
    }
};

} // namespace

TEST_F(ReturnsTest, ReturningEverythingRefundsTheCashAndClosesTheInvoice) {
    const long long invoice = sell({"T0001", "T0002", "T0001"});
    EXPECT_EQ(stock("T0001"), d("8"));
    EXPECT_EQ(nextReturnNumberPreview(db(), ctx), 1);

    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    ASSERT_EQ(draft.lines().size(), 2);
    EXPECT_EQ(draft.lines().at(0).source.codigoBarra, "T0001");
    EXPECT_EQ(draft.lines().at(0).cantidad, d("2"));
    // 3 × 120 = 360, tax 57.60
    EXPECT_EQ(draft.totals().total(), d("417.60"));

    const SavedReturn saved = saveReturn(db(), ctx, draft, nullptr);
    EXPECT_EQ(saved.number, 1);
    EXPECT_TRUE(saved.reminder.isEmpty());
    const QString dv = QStringLiteral("FROM DEVVENTAS WHERE NumeroDevolucion = 1 AND Serie = ?");
    EXPECT_EQ(dec("SELECT TotalMercancia " + dv, {serie}), d("360.00"));
    EXPECT_EQ(dec("SELECT TotalImpuesto " + dv, {serie}), d("57.60"));
    EXPECT_EQ(dec("SELECT TotalCosto " + dv, {serie}), d("151.50"));
    EXPECT_EQ(scalar("SELECT NumeroFactura " + dv, {serie}).toLongLong(), invoice);
    EXPECT_EQ(scalar("SELECT SerieFactura " + dv, {serie}).toString().trimmed(), serie);
    EXPECT_EQ(scalar("SELECT Usuario " + dv, {serie}).toString().trimmed(), "CAJERO1");
    EXPECT_EQ(scalar("SELECT TipoVenta " + dv, {serie}).toInt(), 1);
    EXPECT_EQ(count("MOVDEVVENTAS"), 2);
    EXPECT_EQ(returned(invoice, "T0001"), d("2"));
    EXPECT_EQ(returned(invoice, "T0002"), d("1"));
    EXPECT_EQ(stock("T0001"), d("10"));
    EXPECT_EQ(stock("T0002"), d("5"));
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS WHERE Serie = ?", {serie}).toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 1);

    // The cash refund leaves the drawer on the refunds account.
    ASSERT_EQ(count("SALIDASCAJA"), 1);
    db::Sql s(db(), "SELECT Numero, CodigoContable, Descripcion, Monto, Status, Documento FROM "
                    "SALIDASCAJA");
    s.exec();
    ASSERT_TRUE(s.next());
    EXPECT_EQ(s.integer("Numero"), 1);
    EXPECT_EQ(s.text("CodigoContable").trimmed(), "4.1.09");
    EXPECT_EQ(s.text("Descripcion"), "SALIDA DE CAJA GENERADA POR DEVOLUCION DE VENTA");
    EXPECT_EQ(s.decimal("Monto"), d("417.60"));
    EXPECT_EQ(s.integer("Status"), 1);
    EXPECT_EQ(s.text("Documento").trimmed(), "1");

    // Nothing is left: both screens refuse the invoice now.
    EXPECT_EQ(refusal([&] { loadInvoice(db(), ctx, invoice); }),
              "La factura fue devuelta en su totalidad...");
    EXPECT_EQ(refusal([&] { loadInvoice(db(), ctx, invoice, Purpose::Exchange); }),
              "La factura fue devuelta en su totalidad...!");
    // A draft loaded before the first return cannot return the same goods again.
    EXPECT_EQ(refusal([&] { saveReturn(db(), ctx, draft, nullptr); }),
              "La cantidad a devolver de T0001 supera lo que queda por devolver de la factura...!");
    EXPECT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(stock("T0001"), d("10"));
    EXPECT_EQ(nextReturnNumberPreview(db(), ctx), 2);
}

TEST_F(ReturnsTest, PartialReturnsByBarcodeOrModelKeepWhatIsLeft) {
    const long long invoice = sell({"T0001", "T0001", "T0001", "T0002"});
    ReturnDraft first(loadInvoice(db(), ctx, invoice));
    first.addArticle("t0001", d("2"));
    EXPECT_EQ(refusal([&] { first.addArticle("TST-1001S001", d("1")); }),
              "El articulo ya esta cargado en la devolución...!");
    EXPECT_EQ(refusal([&] { first.addArticle("T0009", d("1")); }),
              "El articulo no se encuentra en la factura...!");
    EXPECT_EQ(refusal([&] { first.addArticle("T0002", d("2")); }),
              "La cantidad a devolver no puede ser mayor a 1...!");
    EXPECT_EQ(refusal([&] { first.setQuantity(0, d("4")); }),
              "La cantidad a devolver no puede ser mayor a 3...!");
    saveReturn(db(), ctx, first, nullptr);
    EXPECT_EQ(returned(invoice, "T0001"), d("2"));
    EXPECT_EQ(returned(invoice, "T0002"), d("0"));

    // The next return sees one T0001 left, found by reference+brand+size+colour.
    ReturnDraft second(loadInvoice(db(), ctx, invoice));
    EXPECT_EQ(refusal([&] { second.addArticle("TST-1001S001", d("2")); }),
              "La cantidad a devolver no puede ser mayor a 1...!");
    second.addArticle("TST-1001S001", d("1"));
    const SavedReturn saved = saveReturn(db(), ctx, second, nullptr);
    EXPECT_EQ(saved.number, 2);
    EXPECT_EQ(saved.totals.total(), d("139.20"));
    EXPECT_EQ(returned(invoice, "T0001"), d("3"));
    EXPECT_EQ(stock("T0001"), d("10"));
    EXPECT_EQ(scalar("SELECT MAX(Numero) FROM SALIDASCAJA WHERE Serie = ?", {serie}).toInt(), 2);

    ReturnDraft total(loadInvoice(db(), ctx, invoice));
    total.addEverything();
    ASSERT_EQ(total.lines().size(), 1);
    EXPECT_EQ(total.lines().at(0).source.codigoBarra, "T0002");
}

TEST_F(ReturnsTest, NegativeStockTakesTheLinesCostAndLeavesTheModelAlone) {
    const long long invoice = sell({"T0001", "T0001"});
    exec("UPDATE INVENTARIO SET Existencia = -5, CostoPromedio = 70 WHERE CodigoBarra = 'T0001'");
    exec("UPDATE INVENTARIO SET CostoPromedio = 40, UltimoCosto = 41 WHERE CodigoBarra = 'T0002'");
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    saveReturn(db(), ctx, draft, nullptr);
    EXPECT_EQ(stock("T0001"), d("-3"));
    EXPECT_EQ(averageCost("T0001"), d("50.5"));
    EXPECT_EQ(lastCost("T0001"), d("50.5"));
    // Still short of stock: no variant of the model was averaged.
    EXPECT_EQ(averageCost("T0002"), d("40"));
    EXPECT_EQ(lastCost("T0002"), d("41"));
}

TEST_F(ReturnsTest, PositiveStockWeighsTheCostThenTheModelIsAveraged) {
    const long long invoice = sell({"T0001", "T0001"});
    exec("UPDATE INVENTARIO SET CostoPromedio = 60.5 WHERE CodigoBarra = 'T0001'");
    exec("UPDATE INVENTARIO SET CostoPromedio = 40 WHERE CodigoBarra = 'T0002'");
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    saveReturn(db(), ctx, draft, nullptr);
    EXPECT_EQ(stock("T0001"), d("10"));
    // T0001: (60.5 × 8 + 50.5 × 2) / 10 = 58.5; the model: (58.5 × 10 + 40 × 5) / 15
    EXPECT_EQ(averageCost("T0001"), d("52.33333"));
    EXPECT_EQ(averageCost("T0002"), d("52.33333"));
    // Each variant's last cost is its own cost from before the model average, which replaces
    // the list price the restock had put there.
    EXPECT_EQ(lastCost("T0001"), d("58.5"));
    EXPECT_EQ(lastCost("T0002"), d("40"));
}

TEST_F(ReturnsTest, WholeCostsAndQuantitiesAreWeighedWithTheirDecimals) {
    // SQLite keeps 51.0 as the integer 51: the weighted cost must not become an integer division.
    exec("UPDATE INVENTARIO SET CostoPromedio = 51 WHERE CodigoBarra = 'T0001'");
    const long long invoice = sell({"T0001", "T0001"});
    exec("UPDATE INVENTARIO SET CostoPromedio = 60 WHERE CodigoBarra = 'T0001'");
    exec("UPDATE INVENTARIO SET Existencia = 0 WHERE CodigoBarra = 'T0002'");
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    saveReturn(db(), ctx, draft, nullptr);
    // (60 × 8 + 51 × 2) / 10, the model's only variant with stock
    EXPECT_EQ(averageCost("T0001"), d("58.2"));
    EXPECT_EQ(averageCost("T0002"), d("58.2"));
}

TEST_F(ReturnsTest, OnlyThisRegistersInvoicesAndCreditSalesAreRemindedNotRefunded) {
    const long long invoice = sell({"T0009"}, true);
    EXPECT_EQ(refusal([&] { loadInvoice(db(), ctx, invoice + 1); }),
              "La factura no se encuentra registrada en esta caja...");
    shell::SessionContext other = ctx;
    other.serial = QStringLiteral("OTRA01");
    EXPECT_EQ(refusal([&] { loadInvoice(db(), other, invoice); }),
              "La factura no se encuentra registrada en esta caja...");
    EXPECT_EQ(refusal([&] { loadInvoice(db(), other, invoice, Purpose::Exchange); }),
              "La factura no se encuentra registrada en esta caja...!");
    EXPECT_EQ(refusal([&] { loadInvoice(db(), ctx, invoice, Purpose::Exchange); }),
              "No puede cambiar una factura a credito...!");

    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    EXPECT_EQ(draft.invoice().tipoCliente.isEmpty(), false);
    EXPECT_EQ(refusal([&] { saveReturn(db(), ctx, draft, nullptr); }),
              "Debe especificar al menos un artículo");
    draft.addArticle("T0009", d("1"));
    const SavedReturn saved = saveReturn(db(), ctx, draft, nullptr);
    EXPECT_EQ(saved.reminder, "Debe registrar un abono por devolución a la cuenta por cobrar...!");
    EXPECT_EQ(count("SALIDASCAJA"), 0);
    // The sale took no stock from the service and the return gives none back.
    EXPECT_EQ(stock("T0009"), d("0"));
}

TEST_F(ReturnsTest, WithoutARefundsAccountTheCashierIsReminded) {
    exec("DELETE FROM CTACONTABLE WHERE CuentaDevolucion = 1");
    const long long invoice = sell({"T0002"});
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    EXPECT_EQ(saveReturn(db(), ctx, draft, nullptr).reminder,
              "Debe registrar la salida de caja...!");
    EXPECT_EQ(count("SALIDASCAJA"), 0);
}

TEST_F(ReturnsTest, AFailureInsideTheTransactionWritesNothing) {
    const long long invoice = sell({"T0001", "T0002"});
    if (isPostgres()) {
        exec("CREATE FUNCTION orvo_refuse_salida() RETURNS trigger AS $$ BEGIN RAISE EXCEPTION "
             "'salida rechazada'; END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER tr_refuse_salida BEFORE INSERT ON SALIDASCAJA FOR EACH ROW EXECUTE "
             "FUNCTION orvo_refuse_salida()");
    } else {
        exec("CREATE TRIGGER TR_REFUSE_SALIDA BEFORE INSERT ON SALIDASCAJA BEGIN SELECT "
             "RAISE(ABORT, 'salida rechazada'); END");
    }
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    EXPECT_THROW(saveReturn(db(), ctx, draft, nullptr), DbError);
    EXPECT_EQ(count("DEVVENTAS"), 0);
    EXPECT_EQ(count("MOVDEVVENTAS"), 0);
    EXPECT_EQ(returned(invoice, "T0001"), d("0"));
    EXPECT_EQ(stock("T0001"), d("9"));
    EXPECT_EQ(averageCost("T0001"), d("50.5"));
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS WHERE Serie = ?", {serie}).toInt(), 0);
    EXPECT_EQ(nextReturnNumberPreview(db(), ctx), 1);
}

namespace {

class FiscalReturnsTest : public ReturnsTest {
protected:
    void SetUp() override {
        ReturnsTest::SetUp();
        exec("UPDATE CAJAS SET Serie = 'Z1B0000001'");
        exec("UPDATE DIARIOCAJA SET Serie = 'Z1B0000001'");
        exec("UPDATE PARAMETROS SET UsaImpresoraFiscal = 1");
        serie = QStringLiteral("Z1B0000001");
        loadContext();
        thread = test::printerThreadOn(emulator);
        printer = std::make_unique<sale::ThreadSalePrinter>(*thread);
    }
    void TearDown() override {
        printer.reset();
        thread.reset();
        ReturnsTest::TearDown();
    }
    sale::PaperPrinter paper() {
        return [this](const QString& html, bool, long long number) {
            QFile f(paperDir.filePath(QStringLiteral("devolucion_%1.html").arg(number)));
            return f.open(QIODevice::WriteOnly) && f.write(html.toUtf8()) > 0;
        };
    }
    QString paperText(long long number) const {
        QFile f(paperDir.filePath(QStringLiteral("devolucion_%1.html").arg(number)));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    test::RunningEmulator emulator{50};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> thread;
    std::unique_ptr<sale::ThreadSalePrinter> printer;
    QTemporaryDir paperDir;
};

} // namespace

TEST_F(FiscalReturnsTest, TheCreditNoteIsPrintedOnTheInvoiceItReturns) {
    const long long invoice = sell({"T0001", "T0002"}, false, printer.get());
    EXPECT_EQ(emulator.memory().lastInvoice, 1);
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addArticle("T0002", d("1"));
    const SavedReturn saved = saveReturn(db(), ctx, draft, printer.get());
    EXPECT_EQ(pendingReturnPrints(db(), serie), QList<long long>{saved.number});
    const auto p = printReturn(db(), ctx, saved.number, false, printer.get(), paper());
    ASSERT_TRUE(p.ok()) << p.error.toStdString();
    EXPECT_TRUE(p.fiscalPrinted);
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(emulator.memory().lastInvoice, 1);
    const QString ticket = emulator.ticket("NOTACREDITO_00000001.txt");
    EXPECT_TRUE(ticket.contains("FACTURA AFECTADA: 00000001")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains("CAMISA PRUEBA T:M")) << ticket.toStdString();
    EXPECT_FALSE(ticket.contains("CAMISA PRUEBA T:S")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains("TOTAL 139,20")) << ticket.toStdString();
    EXPECT_TRUE(pendingReturnPrints(db(), serie).isEmpty());
}

TEST_F(FiscalReturnsTest, APrintFailureKeepsOneReturnToPrintAgain) {
    const long long invoice = sell({"T0001"}, false, printer.get());
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    const SavedReturn saved = saveReturn(db(), ctx, draft, printer.get());
    emulator.fault("paper-out");
    const auto failed = printReturn(db(), ctx, saved.number, false, printer.get(), {});
    EXPECT_FALSE(failed.ok());
    EXPECT_TRUE(failed.error.startsWith("La devolución 1 fue guardada pero no se pudo imprimir"))
        << failed.error.toStdString();
    EXPECT_EQ(emulator.memory().lastCreditNote, 0);
    EXPECT_EQ(pendingReturnPrints(db(), serie), QList<long long>{1});

    const auto impresa = [&] {
        return scalar("SELECT Impresa FROM DEVVENTAS WHERE NumeroDevolucion = 1 AND Serie = ?",
                      {serie})
            .toInt();
    };
    EXPECT_EQ(impresa(), 0);
    // Still without paper: the retry fails the same way and leaves it waiting.
    const auto again = printPendingReturns(db(), ctx, printer.get(), {});
    EXPECT_TRUE(again.error.startsWith("La devolución 1 fue guardada pero no se pudo imprimir"))
        << again.error.toStdString();
    EXPECT_EQ(pendingReturnPrints(db(), serie), QList<long long>{1});

    emulator.fault("paper-ok");
    const auto reprinted = printPendingReturns(db(), ctx, printer.get(), {});
    ASSERT_TRUE(reprinted.ok()) << reprinted.error.toStdString();
    EXPECT_TRUE(reprinted.fiscalPrinted);
    EXPECT_EQ(impresa(), 1);
    EXPECT_TRUE(pendingReturnPrints(db(), serie).isEmpty());
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_TRUE(emulator.ticket("NOTACREDITO_00000001.txt").contains("FACTURA AFECTADA: 00000001"));
    // Nothing left: a second pass prints nothing more.
    EXPECT_TRUE(printPendingReturns(db(), ctx, printer.get(), {}).ok());
    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(count("SALIDASCAJA"), 1);
    EXPECT_EQ(stock("T0001"), d("10"));
}

TEST_F(FiscalReturnsTest, AContingencyReturnGoesOnPaperWithoutThePrinter) {
    const long long invoice = sell({"T0009"}, false, printer.get());
    emulator.fault("silence");
    ReturnDraft draft(loadInvoice(db(), ctx, invoice));
    draft.addEverything();
    draft.setContingency(true);
    const SavedReturn saved = saveReturn(db(), ctx, draft, printer.get());
    const auto p = printReturn(db(), ctx, saved.number, true, printer.get(), paper());
    ASSERT_TRUE(p.ok()) << p.error.toStdString();
    EXPECT_TRUE(p.paperPrinted);
    EXPECT_TRUE(paperText(1).contains("CONTINGENCIA"));
    EXPECT_TRUE(paperText(1).contains("ENVOLTURA"));
    EXPECT_TRUE(pendingReturnPrints(db(), serie).isEmpty());
    EXPECT_EQ(emulator.memory().lastCreditNote, 0);
}
