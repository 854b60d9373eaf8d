// The register's printer as the program builds it, across restarts of the program: the printer
// stays on its port and every fiscal action opens it again on its own.
#include "../sale/till_fixture.h"
#include "printer_on_emulator.h"
#include "support/app_home_guard.h"

#include "pos/cash/cash_closing.h"
#include "pos/cash/cash_day.h"
#include "pos/returns/returns.h"
#include "pos/sale/sale.h"

#include <QTemporaryDir>

using namespace orvo;
namespace sale = orvo::pos::sale;
namespace cash = orvo::pos::cash;
namespace returns = orvo::pos::returns;

namespace {

using test::d;
using test::refusal;

class RegisterPrinterTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        m_home = std::make_unique<test::AppHomeGuard>();
        setUpTill({.fiscal = true});
        // The register takes the software printer's serial; its day is opened by the program.
        exec("UPDATE CAJAS SET Serie = 'Z1B0000001'");
        exec("DELETE FROM DIARIOCAJA");
        serie = QStringLiteral("Z1B0000001");
        loadContext();
        start();
    }
    void TearDown() override {
        m_printer.reset();
        m_home.reset();
        TillTest::TearDown();
    }

    // The program starts (again): a new printer object, nothing open, the printer where it was.
    void start() {
        m_thread.reset();
        m_printer.reset();
        m_printer = test::printerThreadOn(*m_emulator);
        m_thread = std::make_unique<sale::ThreadSalePrinter>(*m_printer);
    }

    void openDay() {
        cash::OpeningRequest r;
        r.serial = serie;
        r.day = r.today = QDate::currentDate();
        r.now = QDateTime::currentDateTime();
        cash::openDayWith(db(), *m_printer, r);
    }
    long long sellPrinted(std::initializer_list<const char*> codes) {
        sale::SaleDraft draft = draftOf(codes);
        payCash(draft, draft.totals().total);
        const auto r = sale::acceptSale(db(), ctx, draft, m_thread.get());
        EXPECT_EQ(r.status, sale::AcceptResult::Status::Saved);
        const auto p = sale::printSale(db(), ctx, r.number, false, m_thread.get(), {}, r.change);
        EXPECT_TRUE(p.ok() && p.fiscalPrinted) << p.error.toStdString();
        return r.number;
    }

    std::unique_ptr<test::AppHomeGuard> m_home;
    QTemporaryDir m_printerDir;
    std::unique_ptr<test::RunningEmulator> m_emulator =
        std::make_unique<test::RunningEmulator>(m_printerDir.path(), 50);
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> m_printer;
    std::unique_ptr<sale::ThreadSalePrinter> m_thread;
};

} // namespace

TEST_F(RegisterPrinterTest, ADayAcrossRestartsWithThePrinterLeftOnItsPort) {
    openDay();
    EXPECT_EQ(sellPrinted({"T0001"}), 1);

    // Closed and started again: the sale checks and prints on a printer nobody opened yet.
    start();
    EXPECT_EQ(sellPrinted({"T0002", "T0009"}), 2);

    start();
    returns::ReturnDraft back(returns::loadInvoice(db(), ctx, 2));
    back.addArticle("T0009", d("1"));
    const auto saved = returns::saveReturn(db(), ctx, back, m_thread.get());
    const auto note = returns::printReturn(db(), ctx, saved.number, false, m_thread.get(), {});
    ASSERT_TRUE(note.ok() && note.fiscalPrinted) << note.error.toStdString();

    start();
    cash::ClosingRequest close;
    close.serial = serie;
    close.today = QDate::currentDate();
    close.counted.cash = Decimal::fromVariant(scalar("SELECT FondoCaja FROM CAJAS"));
    close.differenceApproved = close.confirmed = true;
    close.now = QDateTime::currentDateTime();
    close.backup = false;
    const cash::ClosingOutcome closed = cash::closeDayWith(db(), *m_printer, close);
    ASSERT_TRUE(closed.closed);

    // The printer's own counters and tickets agree with the store's books.
    const auto& memory = m_emulator->memory();
    EXPECT_EQ(memory.lastInvoice, 2);
    EXPECT_EQ(memory.lastCreditNote, 1);
    EXPECT_EQ(memory.zCounter, 1);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS").toInt(), 2);
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS").toInt(), 1);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 2);
    EXPECT_EQ(count("VENTAS", "Impresa = 1"), 2);
    EXPECT_EQ(count("DEVVENTAS", "Impresa = 1"), 1);
    for (const char* ticket : {"FACTURA_00000001.txt", "FACTURA_00000002.txt",
                               "NOTACREDITO_00000001.txt", "REPORTEZ_00000001.txt"})
        EXPECT_TRUE(m_emulator->hasTicket(ticket)) << ticket;
    const auto total = [this](const char* table) {
        return dec(QStringLiteral("SELECT SUM(TotalMercancia - TotalDescuento + TotalImpuesto) "
                                  "FROM %1")
                       .arg(QLatin1String(table)));
    };
    const auto z = m_printer->callAndWait([](pos::fiscal::FiscalPrinter& p) { return p.lastZ(); });
    ASSERT_TRUE(z);
    EXPECT_EQ(Decimal::fromScaled(z->invoices.total(), 2), total("VENTAS"));
    EXPECT_EQ(Decimal::fromScaled(z->creditNotes.total(), 2), total("DEVVENTAS"));
}

TEST_F(RegisterPrinterTest, APrinterOffAtStartIsFoundOnceItAnswers) {
    openDay();
    start();
    m_emulator->fault("silence");
    // Switched off: the sale says so before anything is written.
    sale::SaleDraft draft = draftOf({"T0001"});
    payCash(draft, draft.totals().total);
    EXPECT_EQ(refusal([&] { sale::acceptSale(db(), ctx, draft, m_thread.get()); }),
              "No existe comunicación con la impresora fiscal...!");
    EXPECT_EQ(count("VENTAS"), 0);
    // Switched on: the next sale finds it without a restart.
    m_emulator->fault("speak");
    EXPECT_EQ(sellPrinted({"T0001"}), 1);
    EXPECT_TRUE(m_emulator->hasTicket("FACTURA_00000001.txt"));
}

TEST_F(RegisterPrinterTest, APrinterPulledOutAndPluggedBackIsOpenedAgain) {
    openDay();
    EXPECT_EQ(sellPrinted({"T0001"}), 1);
    // The cable is pulled and plugged back: the same printer on the port the workstation names.
    m_emulator.reset();
    m_emulator = std::make_unique<test::RunningEmulator>(m_printerDir.path(), 50);
    test::bindFiscalPort(*m_emulator);
    EXPECT_EQ(sellPrinted({"T0002"}), 2);
    EXPECT_EQ(m_emulator->memory().lastInvoice, 2);
}

TEST_F(RegisterPrinterTest, ATaxIncludedPriceSellsAndPrintsToTheCent) {
    // 9,97 at 16 % is 8,5948 before tax: two decimals would sell and print 9,96.
    exec("UPDATE INVENTARIO SET PrecioDetal = 8.5948 WHERE CodigoBarra = 'T0009'");
    openDay();
    EXPECT_EQ(sellPrinted({"T0009"}), 1);
    EXPECT_EQ(dec("SELECT TotalMercancia + TotalImpuesto FROM VENTAS"), d("9.97"));
    EXPECT_EQ(dec("SELECT Precio FROM MOVVENTAS"), d("8.5948"));
    const QString ticket = m_emulator->ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(ticket.contains("TOTAL 9,97")) << ticket.toStdString();
    // Returned, the credit note gives back the same 9,97.
    returns::ReturnDraft back(returns::loadInvoice(db(), ctx, 1));
    back.addArticle("T0009", d("1"));
    const auto saved = returns::saveReturn(db(), ctx, back, m_thread.get());
    ASSERT_TRUE(
        returns::printReturn(db(), ctx, saved.number, false, m_thread.get(), {}).fiscalPrinted);
    EXPECT_EQ(dec("SELECT TotalMercancia + TotalImpuesto FROM DEVVENTAS"), d("9.97"));
    EXPECT_TRUE(m_emulator->ticket("NOTACREDITO_00000001.txt").contains("TOTAL 9,97"));
}
