#include "shell/session/settings_readers.h"

#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

class SettingsReaders : public DbTest {
protected:
    void setValue(const QString& key, const QVariant& value, const QString& code = "01") {
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, ?, ?)",
             {key, code, value});
    }
    void insertRegister(const QString& serial, int cambiarPrecios, int requerirAutorizacion,
                        int contingencia) {
        exec("INSERT INTO CAJAS (Serie, Numero, CambiarPrecios, RequerirAutorizacion, "
             "PermitirFacturaContingencia) VALUES (?, ?, ?, ?, ?)",
             {serial, 1, cambiarPrecios, requerirAutorizacion, contingencia});
    }
};

TEST_F(SettingsReaders, MissingRowsGiveDefaults) {
    EXPECT_EQ(installationKind(db()), 0);
    EXPECT_EQ(exportBehaviour(db()), QString());
    EXPECT_FALSE(authoriseDeletingInvoiceLine(db()));
    EXPECT_FALSE(showPromotions(db()));
    EXPECT_FALSE(companyAllowsContingencyInvoices(db()));
    EXPECT_EQ(transferConnectionType(db()), 0);
    EXPECT_FALSE(registerExists(db(), "CAJA01"));
    EXPECT_FALSE(registerMayChangePrices(db(), "CAJA01"));
    EXPECT_EQ(serialChangeCount(db(), "CAJA01"), 0);
    EXPECT_EQ(latestSerialChange(db(), "CAJA01"), QString());
    EXPECT_EQ(taxRateByCode(db(), 1), Decimal());
    EXPECT_EQ(maxTaxAmountA(db()), std::optional<Decimal>(Decimal()));
    EXPECT_EQ(reconversionDate(db()), QDate(2099, 12, 31));
    EXPECT_FALSE(reconversionDone(db()));
    EXPECT_EQ(reconversionValue(db()), Decimal());
    EXPECT_FALSE(exchangeRateUpdateEnabled(db()));
    EXPECT_EQ(fiscalHeader(db()), QString());
    EXPECT_FALSE(specialTaxPeriodActive(db(), QDate(2024, 6, 1)));
}

TEST_F(SettingsReaders, NumericFlagsAreTrueOnlyAtOne) {
    exec("INSERT INTO PARAMETROS (Nombre, Tipo, AutorizarEliminarItemFactura, VisualizarPromocion, "
         "VerificarCasaMatriz, PermitirFacturaContingencia) VALUES (?, ?, ?, ?, ?, ?)",
         {"TIENDA", 2, 2, 1, 0, 2});
    EXPECT_EQ(installationKind(db()), 2);
    EXPECT_FALSE(authoriseDeletingInvoiceLine(db()));
    EXPECT_TRUE(showPromotions(db()));
    EXPECT_FALSE(verifyAgainstHeadOffice(db()));
    EXPECT_FALSE(companyAllowsContingencyInvoices(db()));

    insertRegister("CAJA01", 1, 1, 1);
    insertRegister("CAJA02", 2, 2, 2);
    EXPECT_TRUE(registerExists(db(), "CAJA02"));
    EXPECT_TRUE(registerMayChangePrices(db(), "CAJA01"));
    EXPECT_TRUE(registerRequiresAuthorisation(db(), "CAJA01"));
    EXPECT_TRUE(registerAllowsContingencyInvoices(db(), "CAJA01"));
    EXPECT_FALSE(registerMayChangePrices(db(), "CAJA02"));
    EXPECT_FALSE(registerRequiresAuthorisation(db(), "CAJA02"));
    EXPECT_FALSE(registerAllowsContingencyInvoices(db(), "CAJA02"));
    // A serial with a quote is just a serial.
    EXPECT_FALSE(registerExists(db(), "CAJA01' OR '1'='1"));

    setValue("ReRea", "1");
    setValue("ReTra", "2");
    EXPECT_TRUE(reconversionDone(db()));
    EXPECT_FALSE(reconversionRunning(db()));
}

TEST_F(SettingsReaders, TextFlagsAreTrueOnlyAtUpperCaseTrue) {
    setValue("ActTasa", "true");
    setValue("ExpTasa", "TRUE");
    setValue("ImpTasa", "1");
    EXPECT_FALSE(exchangeRateUpdateEnabled(db()));
    EXPECT_TRUE(exchangeRateExportEnabled(db()));
    EXPECT_FALSE(exchangeRateImportEnabled(db()));
}

TEST_F(SettingsReaders, SpecialTaxPeriodIncludesBothEnds) {
    setValue("Fecha_IVAI", "20240301");
    // Start set, end missing: not active.
    EXPECT_FALSE(specialTaxPeriodActive(db(), QDate(2024, 3, 15)));
    setValue("Fecha_IVAF", "20240331");
    EXPECT_FALSE(specialTaxPeriodActive(db(), QDate(2024, 2, 29)));
    EXPECT_TRUE(specialTaxPeriodActive(db(), QDate(2024, 3, 1)));
    EXPECT_TRUE(specialTaxPeriodActive(db(), QDate(2024, 3, 31)));
    EXPECT_FALSE(specialTaxPeriodActive(db(), QDate(2024, 4, 1)));

    // "20000101" is the value that means not set.
    exec("UPDATE TABLA_VALORES SET Descripcion = ? WHERE IdTabla = ?", {"20000101", "Fecha_IVAF"});
    EXPECT_FALSE(specialTaxPeriod(db()).isSet());
    EXPECT_FALSE(specialTaxPeriodActive(db(), QDate(2024, 3, 15)));
}

TEST_F(SettingsReaders, AmountLimitsAndReconversionValues) {
    setValue("ValMaxIvaA", "1500.50");
    setValue("ValMaxIvaB", "mil");
    EXPECT_EQ(maxTaxAmountA(db()), std::optional<Decimal>(Decimal::fromString(u"1500.50")));
    EXPECT_EQ(maxTaxAmountB(db()), std::nullopt);

    setValue("ReCon", "01/10/2021");
    setValue("ReVal", "1000000");
    EXPECT_EQ(reconversionDate(db()), QDate(2021, 10, 1));
    EXPECT_EQ(reconversionValue(db()), Decimal(1000000));
}

TEST_F(SettingsReaders, FiscalHeaderJoinsLinesInCodeOrder) {
    setValue("ENCFISCAL", "RIF J-12345678-9", "03");
    setValue("ENCFISCAL", "ZAPATERIA EL PASO C.A.", "01");
    setValue("ENCFISCAL", "AV. BOLIVAR, LOCAL 4", "02");
    setValue("ENCFISCAL", "no es encabezado", "09");
    setValue("PIEFISCAL", "GRACIAS POR SU COMPRA", "01");
    EXPECT_EQ(fiscalHeader(db()),
              QStringLiteral("ZAPATERIA EL PASO C.A.\r\nAV. BOLIVAR, LOCAL 4\r\nRIF J-12345678-9"));
}

TEST_F(SettingsReaders, SerialChangesAndTaxCodesOfADocument) {
    exec("INSERT INTO CAJASCAMBIOS (Serie, Numero, SerieCambio, FechaCambio) VALUES (?, ?, ?, ?)",
         {"CAJA01", 1, "Z1A", QDateTime(QDate(2023, 1, 5), QTime(9, 0))});
    exec("INSERT INTO CAJASCAMBIOS (Serie, Numero, SerieCambio, FechaCambio) VALUES (?, ?, ?, ?)",
         {"CAJA01", 1, "Z1C", QDateTime(QDate(2024, 7, 1), QTime(9, 0))});
    exec("INSERT INTO CAJASCAMBIOS (Serie, Numero, SerieCambio, FechaCambio) VALUES (?, ?, ?, ?)",
         {"CAJA01", 1, "Z1B", QDateTime(QDate(2023, 8, 1), QTime(9, 0))});
    EXPECT_EQ(serialChangeCount(db(), "CAJA01"), 3);
    EXPECT_EQ(latestSerialChange(db(), "CAJA01"), QStringLiteral("Z1C"));

    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
         {1, "GENERAL", "16"});
    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
         {2, "REDUCIDO", "8"});
    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
         {3, "EXENTO", "0"});
    EXPECT_EQ(taxRateByCode(db(), 2), Decimal(8));
    const char* line = "INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Precio, "
                       "PorcentajeImpuesto, Cantidad, Item) VALUES (?, ?, ?, ?, ?, ?, ?)";
    exec(line, {10, "CAJA01", "A1", "10", "16", "1", 1});
    exec(line, {10, "CAJA01", "A2", "10", "0", "1", 2});
    exec(line, {10, "CAJA01", "A3", "10", "16", "2", 3});
    exec(line, {10, "CAJA02", "A4", "10", "8", "1", 1}); // another register's invoice 10
    EXPECT_EQ(invoiceTaxCodes(db(), "CAJA01", 10), (QList<int>{1, 3}));
    exec("INSERT INTO MOVDEVVENTAS (NumeroDevolucion, Serie, CodigoBarra, Precio, "
         "PorcentajeImpuesto, Cantidad, Item) VALUES (?, ?, ?, ?, ?, ?, ?)",
         {10, "CAJA01", "A1", "10", "8", "1", 1});
    EXPECT_EQ(returnTaxCodes(db(), "CAJA01", 10), (QList<int>{2}));
}
