#include "shell/session/session_context.h"

#include "support/test_db.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using orvo::shell::SessionContext;
using orvo::test::DbTest;

namespace {

// ORVO_HOME points at a fresh folder for the test and is restored afterwards.
class AppHomeGuard {
public:
    AppHomeGuard() : m_old(qgetenv("ORVO_HOME")) {
        qputenv("ORVO_HOME", m_dir.path().toUtf8());
        QDir(m_dir.path()).mkpath(QStringLiteral("data"));
    }
    ~AppHomeGuard() {
        if (m_old.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_old);
    }
    QString path() const { return m_dir.path(); }
    void writeReportFile(const QByteArray& content) const {
        QFile f(m_dir.path() + QStringLiteral("/data/rutareporte.txt"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }

private:
    QTemporaryDir m_dir;
    QByteArray m_old;
};

} // namespace

class SessionContextTest : public DbTest {
protected:
    void insertCompany(const QVariant& rutaReporte) {
        exec("INSERT INTO PARAMETROS (Nombre, Codigo, NombreIdFiscal, IDEmpresa, Telefono, Tipo, "
             "SimboloMoneda, CorreoElectronico, ControlFactura, MargenAuxFact, ItemsPorFactura, "
             "NombreEquipo, RutaReporte, IdPais) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
             {"Zapatería El Paso", "001", "RIF", "J-12345678-9", "0212-5551234", 2, "Bs.",
              QVariant(), 1, "12.5", 40, "SERVIDOR1", rutaReporte, QVariant()});
    }
    void insertRegister(const QString& serial, int number, int permiteDescuento) {
        exec(
            "INSERT INTO CAJAS (Serie, Numero, FondoCaja, TipoListaPrecio, TipoVenta, TipoReporte, "
            "PermiteDescuento, UltimaFactura, IdImpresoraFiscal, UltimaDevolucion) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            {serial, number, "150.75", 2, 1, 3, permiteDescuento, 0, 7, 0});
    }
};

TEST_F(SessionContextTest, CompanyFieldsCaptionAndReportFolderFromTheColumn) {
    AppHomeGuard home;
    insertCompany("/srv/reportes");
    SessionContext ctx;
    ctx.appFolder = home.path();
    ASSERT_TRUE(shell::loadCompany(db(), ctx));
    EXPECT_EQ(ctx.nombre, QStringLiteral("Zapatería El Paso"));
    EXPECT_EQ(ctx.idEmpresa, QStringLiteral("J-12345678-9"));
    EXPECT_EQ(ctx.tipo, 2);
    EXPECT_EQ(ctx.controlFactura, 1);
    EXPECT_EQ(ctx.itemsPorFactura, 40);
    EXPECT_EQ(ctx.margenAuxFact, Decimal::fromString(u"12.5"));
    EXPECT_EQ(ctx.correoElectronico, QString()); // null reads as empty text
    EXPECT_EQ(ctx.reportFolder, QStringLiteral("/srv/reportes"));
    EXPECT_EQ(shell::captionText(ctx, "1.4.2"),
              QStringLiteral("Vandu  Empresa : Zapatería El Paso            RIF J-12345678-9    -"
                             "    (Ver.-1.4.2)"));
    ctx.userName = "MARIA PEREZ";
    EXPECT_EQ(shell::userPanelText(ctx), QStringLiteral("USUARIO: MARIA PEREZ"));
}

TEST_F(SessionContextTest, ReportFolderResolutionOrder) {
    AppHomeGuard home;
    insertCompany("/srv/reportes");
    SessionContext ctx; // appFolder empty: the application folder is ORVO_HOME

    // A file whose first line is empty does not count.
    home.writeReportFile("\n/otra/ruta\n");
    shell::loadCompany(db(), ctx);
    EXPECT_EQ(ctx.reportFolder, QStringLiteral("/srv/reportes"));

    home.writeReportFile("/mnt/reportes\r\nsegunda\r\n");
    shell::loadCompany(db(), ctx);
    EXPECT_EQ(ctx.reportFolder, QStringLiteral("/mnt/reportes"));

    // Neither file nor column: the application's own REPORTES folder.
    QFile::remove(home.path() + "/data/rutareporte.txt");
    exec("UPDATE PARAMETROS SET RutaReporte = NULL");
    shell::loadCompany(db(), ctx);
    EXPECT_EQ(ctx.reportFolder, QDir(home.path()).absolutePath() + QStringLiteral("/REPORTES"));
}

TEST_F(SessionContextTest, NoCompanyRowLeavesFieldsEmpty) {
    AppHomeGuard home;
    SessionContext ctx;
    EXPECT_FALSE(shell::loadCompany(db(), ctx));
    EXPECT_TRUE(ctx.nombre.isEmpty());
    EXPECT_EQ(ctx.controlFactura, 0);
}

TEST_F(SessionContextTest, RegisterRowAndUnknownSerialKeepsPreviousValues) {
    exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, IdProcesoImpresion) VALUES (?, ?, ?)",
         {7, "HKA80", 3});
    insertRegister("CAJA01", 4, 1);
    SessionContext ctx;
    EXPECT_EQ(shell::registerPanelText(ctx), QStringLiteral("(Estación sin configurar)"));

    ASSERT_TRUE(shell::loadRegister(db(), "CAJA01", ctx));
    EXPECT_EQ(ctx.numero, 4);
    EXPECT_EQ(ctx.fondoCaja, Decimal::fromString(u"150.75"));
    EXPECT_EQ(ctx.tipoListaPrecio, 2);
    EXPECT_EQ(ctx.tipoReporte, 3);
    EXPECT_EQ(ctx.permiteDescuento, 1);
    EXPECT_EQ(ctx.idImpresoraFiscal, 7);
    EXPECT_EQ(ctx.idProcesoImpresion, 3);
    EXPECT_EQ(shell::registerPanelText(ctx), QStringLiteral("(Caja Nº 4)"));

    EXPECT_FALSE(shell::loadRegister(db(), "NO-EXISTE", ctx));
    EXPECT_EQ(ctx.numero, 4);
    EXPECT_EQ(ctx.idProcesoImpresion, 3);
    EXPECT_EQ(shell::registerPanelText(ctx), QStringLiteral("(Estación sin configurar)"));
}

TEST_F(SessionContextTest, StandardTaxRateIsCodeOne) {
    SessionContext ctx;
    shell::loadStandardTaxRate(db(), ctx);
    EXPECT_EQ(ctx.standardTaxRate, Decimal());
    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
         {2, "REDUCIDO", "8"});
    exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (?, ?, ?)",
         {1, "GENERAL", "16"});
    shell::loadStandardTaxRate(db(), ctx);
    EXPECT_EQ(ctx.standardTaxRate, Decimal(16));
}
