#pragma once

#include "common/decimal/decimal.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

// What every screen reads about this store, this workstation and who is logged in. Loaded once
// after the connection opens and again after the server configuration changes; screens read it,
// only the loaders below (and the login, for the user fields) write it.
struct SessionContext {
    // Company and parameters (PARAMETROS)
    QString nombre;
    QString codigo;
    QString nombreIdFiscal;
    QString idEmpresa;
    QString telefono;
    QString fax;
    QString direccion;
    int tipo = 0; // 2 enables the external-backup reminder at start
    QString simboloMoneda;
    QString correoElectronico;
    QString nota1;
    QString nota2;
    QString rutaReporte;    // the column as stored; the resolved folder is reportFolder
    int controlFactura = 0; // 1 counters per register (CAJAS), 2 company-wide (PARAMETROS)
    int congelarFacturas = 0;
    int mostrarBalanceDiario = 0;
    int discriminarImpuestoPrecios = 0;
    int manejarClientesAfiliadosEspeciales = 0;
    QString ctaVentaGravada;
    QString ctaVentaExenta;
    QString ctaImpuestoVenta;
    QString ctaPorCobrarDiferenciaCierre;
    QString ctaCostoVenta;
    QString ctaInventarioGravado;
    QString ctaInventarioExento;
    QString ctaPorPagarProveedorNac;
    QString ctaPorPagarProveedorInt;
    QString ctaAcreedores;
    QString ctaImpuestoCompraNac;
    QString ctaImpuestoCompraInt;
    QString ctaDevolucionVenta;
    QString ctaImpuestoDevVenta;
    QString ctaPorCobrar;
    QString terceroVentaTienda;
    QString terceroTributario;
    QString terceroAgenteAduana;
    Decimal margenAuxFact;
    int margenFacturacionOrdenDespacho = 0;
    int diasFacturarOrdenDespacho = 0;
    int usaImpresoraFiscal = 0;
    QString servidorContable;
    QString baseDatosContable;
    int itemsPorFactura = 0;
    int actualizarPreciosArchivosExternos = 0;
    int exportaInformacionCasaMatriz = 0;
    QString nombreEquipo; // host of the database, compared ignoring case
    int manejarCantidadesDecimales = 0;
    QString servidorTelmar;
    int numeroConteos = 0;
    QString idPais;

    // This workstation's register (CAJAS joined with IMPRESORAFISCAL)
    int numero = 0;
    Decimal fondoCaja;
    int tipoListaPrecio = 0;
    int tipoReporte = 0;
    int tipoVenta = 0;
    int permiteDescuento = 0;
    int permiteFacturarOrdenDespacho = 0;
    int permiteFacturasExentas = 0;
    int permiteAlternarListas = 0;
    int idImpresoraFiscal = 0;
    int idProcesoImpresion = 0;
    bool registerConfigured = false; // a CAJAS row exists for the serial

    // Standard tax rate: IMPUESTOS code 1
    Decimal standardTaxRate;

    // Workstation settings (ServidorOrvo / Orvo)
    QString serial;
    QString menuFontName = QStringLiteral("MS Sans Serif");
    int menuFontSize = 8;
    bool menuFontBold = false;
    bool menuFontItalic = false;
    QString barcodeReader = QStringLiteral("SI"); // UsaLectorDeCodigos
    QString systemCode = QStringLiteral("Vandu");

    // Logged-in user (written by the login)
    QString userCode;
    QString userName;

    QString appFolder;    // the application folder
    QString reportFolder; // resolved report folder
};

// Company and parameters from the single PARAMETROS row; then resolves the report folder.
// Without a row the fields stay as they are. Returns whether a row was found.
bool loadCompany(const QSqlDatabase& db, SessionContext& ctx);

// The register whose Serie is `serial`. Without a row (or with an empty serial) the register
// fields keep their values and registerConfigured becomes false. Returns registerConfigured.
bool loadRegister(const QSqlDatabase& db, const QString& serial, SessionContext& ctx);

// PorcentajeImpuesto of IMPUESTOS code 1 (0 when absent).
void loadStandardTaxRate(const QSqlDatabase& db, SessionContext& ctx);

// The three loads in their order, as done at start and after the server configuration changes.
void loadSession(const QSqlDatabase& db, SessionContext& ctx);

// The report folder: first line of data/rutareporte.txt when not empty, else
// PARAMETROS.RutaReporte when not null/empty, else appFolder + "/REPORTES".
QString resolveReportFolder(const QString& appFolder, const QString& rutaReporteColumn);
// Same, with ctx.appFolder (appHome() when empty) and ctx.rutaReporte.
QString resolveReportFolder(const SessionContext& ctx);

// Main window caption.
QString captionText(const SessionContext& ctx, const QString& version);
// Status bar register panel: "(Caja Nº n)" or "(Estación sin configurar)".
QString registerPanelText(const SessionContext& ctx);
// Status bar user panel: "USUARIO: " + name.
QString userPanelText(const SessionContext& ctx);

} // namespace orvo::shell
