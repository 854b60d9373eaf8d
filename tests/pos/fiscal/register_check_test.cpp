// The printer checked against the register, and sales and returns read from the store database
// and printed on the software printer.
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/register_check.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "printer_on_emulator.h"

#include "common/errors/errors.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::fiscal;

namespace {

QString refusal(const PrinterFacts& p, const RegisterCounters& r, const QDate& today) {
    try {
        checkPrinterAgainstRegister(p, r, today);
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

class FiscalStoreTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        test::bindFiscalPort(emulator);
        openConfiguredPrinter(printer);
        exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
             "VALUES (?, ?, ?, ?)",
             {"Z1B0000001", 1, 0, 0});
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
             {1, "GENERAL", "16"});
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
             {2, "REDUCIDA", "8"});
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre) VALUES (?, ?)",
             {"001", "CAMISA MANGA LARGA ALGODON PEINADO CUELLO ITALIANO"});
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre) VALUES (?, ?)", {"002", "PAN"});
        exec("INSERT INTO CLIENTES (Codigo, Nombre, Direccion) VALUES (?, ?, ?)",
             {"V12345678", "MARIA PEREZ", "AV. BOLIVAR 12, VALENCIA"});
    }
    void addSale(int number, const QString& way) {
        exec(
            "INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, FormaPago) "
            "VALUES (?, ?, ?, ?, ?)",
            {number, "Z1B0000001", QDateTime(QDate(2026, 11, 20), QTime(10, 0)), "V12345678", way});
        exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Precio, "
             "PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
             "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
             {number, "Z1B0000001", "001", "10.03", "8", "2", 1, "10"});
        exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Precio, "
             "PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
             "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
             {number, "Z1B0000001", "002", "5", "0", "1.5", 2, "0"});
    }
    RegisterCounters counters() {
        return readRegisterCounters(db(), QStringLiteral("Z1B0000001"), 1);
    }

    test::RunningEmulator emulator;
    SerialFiscalPrinter printer{test::fastTiming()};
};

} // namespace

TEST(FiscalRegisterCheck, EachMismatchHasItsMessageInOrder) {
    const QDate today(2026, 11, 21);
    PrinterFacts p{true, 12, 3, today, QStringLiteral("Z1B0000001")};
    RegisterCounters r{QStringLiteral("Z1B0000001"), 12, 3};
    EXPECT_EQ(refusal(p, r, today), QString());
    EXPECT_EQ(refusal(PrinterFacts{}, r, today),
              QStringLiteral("No existe comunicación con la impresora fiscal...!"));
    r.lastInvoice = 11;
    r.lastReturn = 2;
    EXPECT_EQ(
        refusal(p, r, today),
        QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    r.lastInvoice = 12;
    EXPECT_EQ(refusal(p, r, today), QStringLiteral("El numero de devolución no concuerda con el "
                                                   "numero de devolución de la impresora...!"));
    r.lastReturn = 3;
    EXPECT_EQ(refusal(p, r, today.addDays(1)),
              QStringLiteral(
                  "La fecha actual de la impresora no corresponde con la fecha del sistema...!"));
    r.serial = QStringLiteral("Z1B0000002");
    EXPECT_EQ(refusal(p, r, today),
              QStringLiteral("La serie de la impresora no conicide con la serie de la caja...!"));
}

TEST_F(FiscalStoreTest, AFullFiscalMemoryAndAnIgtfSettingThePrinterDoesNotShare) {
    const QDate today = QDate::currentDate();
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today), QString());
    emulator.fault("memory-nearly-full");
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today), QString());
    emulator.fault("memory-full");
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today),
              QStringLiteral("La memoria fiscal de la impresora está llena...!"));
    emulator.fault("memory-ok");

    exec("UPDATE CAJAS SET IGTF = 1");
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today),
              QStringLiteral("La caja cobra IGTF y la impresora fiscal no lo tiene activado...!"));
    ASSERT_TRUE(printer.setIgtf(true, 300));
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today), QString());
    exec("UPDATE CAJAS SET IGTF = 0");
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), today),
              QStringLiteral("La impresora fiscal tiene el IGTF activado y la caja no lo "
                             "cobra...!"));
}

TEST_F(FiscalStoreTest, RegisterCountersFollowThePrinter) {
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), QDate::currentDate()), QString());
    addSale(1, "1");
    ASSERT_TRUE(printer.printDocument(
        saleDocument(db(), 1, QStringLiteral("Z1B0000001"), loadRateTable(db()))));
    EXPECT_EQ(
        refusal(readPrinterFacts(printer), counters(), QDate::currentDate()),
        QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    exec("UPDATE CAJAS SET UltimaFactura = 1 WHERE Serie = ?", {"Z1B0000001"});
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), QDate::currentDate()), QString());
    // Company-wide counters.
    exec("INSERT INTO PARAMETROS (UltimaFactura, UltimaDevolucion) VALUES (?, ?)", {1, 0});
    EXPECT_EQ(readRegisterCounters(db(), QStringLiteral("Z1B0000001"), 2).lastInvoice, 1);

    emulator.fault("silence");
    EXPECT_EQ(refusal(readPrinterFacts(printer), counters(), QDate::currentDate()),
              QStringLiteral("No existe comunicación con la impresora fiscal...!"));
}

TEST_F(FiscalStoreTest, SaleAndReturnFromTheirTables) {
    addSale(1, "7");
    exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Monto) "
         "VALUES (?, ?, ?, ?, ?)",
         {1, "Z1B0000001", 1, "1", "10.00"});
    exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Monto) "
         "VALUES (?, ?, ?, ?, ?)",
         {1, "Z1B0000001", 2, "4", "16.89"});
    const FiscalDocument sale =
        saleDocument(db(), 1, QStringLiteral("Z1B0000001"), loadRateTable(db()));
    ASSERT_EQ(sale.lines.size(), 2);
    EXPECT_EQ(sale.lines[0].rate, 2);
    EXPECT_EQ(sale.lines[1].rate, 0);
    EXPECT_EQ(sale.clientName, QStringLiteral("MARIA PEREZ"));
    ASSERT_EQ(sale.payments.size(), 2);
    EXPECT_EQ(sale.payments[1].means, 10);
    ASSERT_TRUE(printer.printDocument(sale)) << printer.errorText().toStdString();
    // 2 x 10.83 less 10 % = 19.49; 1.5 x 5.00 = 7.50.
    const QString t = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(t.contains("CAMISA MANGA LARGA ALGODON PEINADO CUELL ")) << t.toStdString();
    EXPECT_TRUE(t.contains("TOTAL 26,99")) << t.toStdString();
    EXPECT_TRUE(t.contains("MEDIO 10 16,89")) << t.toStdString();

    exec("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, Fecha, Cliente, "
         "TotalMercancia, TotalDescuento, TotalImpuesto, SerieFactura) "
         "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
         {1, "Z1B0000001", 1, QDateTime::currentDateTime(), "V12345678", "5", "0", "0",
          "Z1B0000001"});
    exec("INSERT INTO MOVDEVVENTAS (NumeroDevolucion, Serie, CodigoBarra, Precio, "
         "PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
         "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
         {1, "Z1B0000001", "002", "5", "0", "1", 1, "0"});
    const FiscalDocument ret =
        returnDocument(db(), 1, QStringLiteral("Z1B0000001"), loadRateTable(db()));
    EXPECT_EQ(ret.type, DocumentType::CreditNote);
    EXPECT_EQ(ret.affectedInvoice, 1);
    EXPECT_EQ(ret.affectedInvoiceDate, QDate(2026, 11, 20));
    ASSERT_TRUE(printer.printDocument(ret)) << printer.errorText().toStdString();
    const QString c = emulator.ticket("NOTACREDITO_00000001.txt");
    EXPECT_TRUE(c.contains("FACTURA AFECTADA: 00000001"));
    EXPECT_TRUE(c.contains("FECHA FACTURA: 20/11/2026"));
    EXPECT_TRUE(c.contains("TOTAL 5,00"));

    // A rate the printer does not know stops the document before anything is printed.
    exec("UPDATE MOVVENTAS SET PorcentajeImpuesto = ? WHERE NumeroFactura = ?", {"12", 1});
    EXPECT_THROW(saleDocument(db(), 1, QStringLiteral("Z1B0000001"), loadRateTable(db())),
                 UserError);
}

TEST_F(FiscalStoreTest, HeaderAndFooterLinesFromTheValueTable) {
    const auto value = [this](const char* table, const char* code, const char* text) {
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, ?, ?)",
             {table, code, text});
    };
    value("ENCFISCAL", "01", "TIENDA ORVO");
    value("ENCFISCAL", "03", "RIF J-12345678-9");
    value("PIEFISCAL", "91", "GRACIAS POR SU COMPRA");
    QList<ProgrammedLine> lines = headerFooterLines(db(), QDate(2026, 11, 21));
    ASSERT_EQ(lines.size(), 16);
    EXPECT_EQ(lines[0].number, 1);
    EXPECT_EQ(lines[0].text, QStringLiteral("TIENDA ORVO"));
    EXPECT_EQ(lines[1].text, QString());
    EXPECT_EQ(lines[2].text, QStringLiteral("RIF J-12345678-9"));
    // No dates: the footer window is 01/01/2000, long gone.
    EXPECT_EQ(lines[8].number, 91);
    EXPECT_EQ(lines[8].text, QString());
    value("FECPIEFIS", "01", "01/11/2026");
    value("FECPIEFIS", "02", "30/11/2026");
    lines = headerFooterLines(db(), QDate(2026, 11, 21));
    EXPECT_EQ(lines[8].text, QStringLiteral("GRACIAS POR SU COMPRA"));
    EXPECT_EQ(headerFooterLines(db(), QDate(2026, 12, 1))[8].text, QString());

    ASSERT_TRUE(printer.programLines(lines));
    EXPECT_EQ(emulator.memory().lines.value(91), QStringLiteral("GRACIAS POR SU COMPRA"));
}
