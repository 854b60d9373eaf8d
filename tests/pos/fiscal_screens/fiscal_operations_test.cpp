// Managers' operations on the software printer through a real pseudo-terminal.
#include "pos/fiscal_screens/fiscal_operations.h"

#include "../fiscal/printer_on_emulator.h"
#include "common/errors/errors.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "support/test_db.h"

#include <QDir>

using namespace orvo;
using namespace orvo::pos;
using namespace orvo::pos::fiscal_screens;

namespace {

class FiscalOperationsTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        test::bindFiscalPort(emulator);
        fiscal::openConfiguredPrinter(printer);
    }
    QStringList tickets(const QString& pattern) const {
        return QDir(emulator.tools::fiscal::EmulatorThread::options().ticketsFolder)
            .entryList({pattern}, QDir::Files, QDir::Name);
    }
    template <class F> QString refusal(F&& f) {
        try {
            f();
        } catch (const UserError& e) {
            return e.text();
        }
        return {};
    }

    test::RunningEmulator emulator{200};
    fiscal::SerialFiscalPrinter printer{test::fastTiming()};
};

TEST_F(FiscalOperationsTest, XAndZReportsPrintAndTheZOpensProgramming) {
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES "
         "('ENCFISCAL', '01', 'TIENDAS ORVO DEMO'), ('ENCFISCAL', '02', 'AV. BOLIVAR'), "
         "('PIEFISCAL', '91', 'GRACIAS POR SU COMPRA'), ('FECPIEFIS', '01', '01/01/2020'), "
         "('FECPIEFIS', '02', '31/12/2099')");
    const auto lines = storeHeaderFooter(db(), QDate::currentDate());

    // After a sale the printer takes header lines only once a Z was made; it says why it
    // refuses.
    fiscal::FiscalDocument sale;
    sale.clientId = "V12345678";
    sale.clientName = "MARIA PEREZ";
    sale.lines.append({Decimal(10), Decimal(0), Decimal(1), Decimal(0), "PAN", 0});
    ASSERT_TRUE(printer.printDocument(sale)) << printer.errorText().toStdString();
    EXPECT_EQ(refusal([&] { programHeaderFooter(printer, lines); }),
              "La impresora fiscal no acepta el comando en su estado actual.");

    printXReport(printer);
    EXPECT_EQ(tickets("REPORTEX_*").size(), 1);
    EXPECT_EQ(emulator.memory().zCounter, 0);

    printZReport(printer, 5000);
    EXPECT_EQ(tickets("REPORTEZ_*").size(), 1);
    EXPECT_EQ(emulator.memory().zCounter, 1);

    programHeaderFooter(printer, lines);
    const auto memory = emulator.memory();
    EXPECT_EQ(memory.lines.value(1), "TIENDAS ORVO DEMO");
    EXPECT_EQ(memory.lines.value(2), "AV. BOLIVAR");
    EXPECT_EQ(memory.lines.value(91), "GRACIAS POR SU COMPRA");

    const PrinterCounters c = readCounters(printer);
    EXPECT_EQ(c.lastZ, 1);
    EXPECT_EQ(c.serial, memory.serial);
    EXPECT_EQ(c.date, QDate::currentDate());
    EXPECT_EQ(c.lastInvoice, 1);
    EXPECT_TRUE(countersText(c).contains("Último reporte Z: 1"));
    EXPECT_EQ(printerLastInvoice(printer), 1);
}

TEST_F(FiscalOperationsTest, RangeReportsCheckTheirRangeFirst) {
    printZReport(printer, 5000);
    printZReport(printer, 5000);
    RangeReport r;
    r.byDates = false;
    r.fromNumber = 2;
    r.toNumber = 1;
    EXPECT_EQ(refusal([&] { printRangeReport(printer, r); }),
              "El número inicial debe ser menor o igual al número final...!");
    r.fromNumber = 1;
    r.toNumber = 2;
    r.detailed = false;
    printRangeReport(printer, r);
    r.byDates = true;
    r.detailed = true;
    r.fromDate = QDate::currentDate();
    r.toDate = r.fromDate.addDays(-1);
    EXPECT_EQ(refusal([&] { printRangeReport(printer, r); }),
              "La fecha inicial debe ser menor o igual a la fecha final...!");
    r.toDate = r.fromDate;
    printRangeReport(printer, r);
    EXPECT_EQ(emulator.memory().fiscalReportCounter, 2);
}

TEST_F(FiscalOperationsTest, TaxRatesComeFromTheStoreAndWaitForTheirDate) {
    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES "
         "(1, 'GENERAL', 16), (2, 'REDUCIDA', 8), (3, 'LUJO', 31)");
    const QList<int> rates = storeTaxRates(db());
    EXPECT_EQ(rates, (QList<int>{1600, 800, 3100}));
    printZReport(printer, 5000);
    EXPECT_FALSE(refusal([&] {
                     updateTaxRates(printer, rates, QDate::currentDate().addDays(1));
                 }).isEmpty());
    updateTaxRates(printer, rates, QDate::currentDate());
    const auto memory = emulator.memory();
    EXPECT_EQ(memory.rates[0].hundredths, 1600);
    EXPECT_EQ(memory.rates[2].hundredths, 3100);
}

TEST_F(FiscalOperationsTest, DisplayAndASilentPrinter) {
    testDisplay(printer, "ORVO", "TOTAL 12,50");
    EXPECT_TRUE(emulator.ticket("VISOR.txt").contains("TOTAL 12,50"));

    emulator.fault("silence");
    EXPECT_EQ(refusal([&] { printXReport(printer); }), "La impresora fiscal no responde.");
    EXPECT_TRUE(tickets("REPORTEX_*").isEmpty());
}

TEST_F(FiscalOperationsTest, AZByHandStartsTheDayAmountAgain) {
    const QDate today = QDate::currentDate();
    exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, Status, Acumulado) VALUES "
         "('C1', ?, 1, 1, 950.5), ('C1', ?, 1, 2, 70)",
         {QDateTime(today, QTime(8, 0)), QDateTime(today.addDays(-1), QTime(8, 0))});
    recordZOnRegisterDay(db(), "C1", today);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Acumulado FROM DIARIOCAJA WHERE Status = 1")),
              Decimal(0));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Acumulado FROM DIARIOCAJA WHERE Status = 2")),
              Decimal(70));
}

} // namespace
