#include "shell/session/session_context.h"

#include "common/db/sql.h"
#include "shell/startup/app_home.h"

#include <QFile>
#include <QTextStream>

namespace orvo::shell {

namespace {

using db::Sql;

// Text columns that may hold null read as empty text.
QString textOf(const Sql& q, const char* column) {
    return q.text(QLatin1String(column));
}

int intOf(const Sql& q, const char* column) {
    return q.integer(QLatin1String(column));
}

} // namespace

bool loadCompany(const QSqlDatabase& db, SessionContext& ctx) {
    Sql q(db, QStringLiteral(
                  "SELECT Nombre, Codigo, NombreIdFiscal, IDEmpresa, Telefono, Fax, Direccion, "
                  "Tipo, SimboloMoneda, CorreoElectronico, Nota1, Nota2, RutaReporte, "
                  "ControlFactura, CongelarFacturas, MostrarBalanceDiario, "
                  "DiscriminarImpuestoPrecios, ManejarClientesAfiliadosEspeciales, "
                  "CtaVentaGravada, CtaVentaExenta, CtaImpuestoVenta, "
                  "CtaPorCobrarDiferenciaCierre, CtaCostoVenta, CtaInventarioGravado, "
                  "CtaInventarioExento, CtaPorPagarProveedorNac, CtaPorPagarProveedorInt, "
                  "CtaAcreedores, CtaImpuestoCompraNac, CtaImpuestoCompraInt, "
                  "CtaDevolucionVenta, CtaImpuestoDevVenta, CtaPorCobrar, TerceroVentaTienda, "
                  "TerceroTributario, TerceroAgenteAduana, MargenAuxFact, "
                  "MargenFacturacionOrdenDespacho, DiasFacturarOrdenDespacho, "
                  "UsaImpresoraFiscal, ServidorContable, BaseDatosContable, ItemsPorFactura, "
                  "ActualizarPreciosArchivosExternos, ExportaInformacionCasaMatriz, "
                  "NombreEquipo, ManejarCantidadesDecimales, ServidorTelmar, NumeroConteos, "
                  "IdPais FROM PARAMETROS"));
    q.exec();
    const bool found = q.next();
    if (found) {
        ctx.nombre = textOf(q, "Nombre");
        ctx.codigo = textOf(q, "Codigo");
        ctx.nombreIdFiscal = textOf(q, "NombreIdFiscal");
        ctx.idEmpresa = textOf(q, "IDEmpresa");
        ctx.telefono = textOf(q, "Telefono");
        ctx.fax = textOf(q, "Fax");
        ctx.direccion = textOf(q, "Direccion");
        ctx.tipo = intOf(q, "Tipo");
        ctx.simboloMoneda = textOf(q, "SimboloMoneda");
        ctx.correoElectronico = textOf(q, "CorreoElectronico");
        ctx.nota1 = textOf(q, "Nota1");
        ctx.nota2 = textOf(q, "Nota2");
        ctx.rutaReporte = textOf(q, "RutaReporte");
        ctx.controlFactura = intOf(q, "ControlFactura");
        ctx.congelarFacturas = intOf(q, "CongelarFacturas");
        ctx.mostrarBalanceDiario = intOf(q, "MostrarBalanceDiario");
        ctx.discriminarImpuestoPrecios = intOf(q, "DiscriminarImpuestoPrecios");
        ctx.manejarClientesAfiliadosEspeciales = intOf(q, "ManejarClientesAfiliadosEspeciales");
        ctx.ctaVentaGravada = textOf(q, "CtaVentaGravada");
        ctx.ctaVentaExenta = textOf(q, "CtaVentaExenta");
        ctx.ctaImpuestoVenta = textOf(q, "CtaImpuestoVenta");
        ctx.ctaPorCobrarDiferenciaCierre = textOf(q, "CtaPorCobrarDiferenciaCierre");
        ctx.ctaCostoVenta = textOf(q, "CtaCostoVenta");
        ctx.ctaInventarioGravado = textOf(q, "CtaInventarioGravado");
        ctx.ctaInventarioExento = textOf(q, "CtaInventarioExento");
        ctx.ctaPorPagarProveedorNac = textOf(q, "CtaPorPagarProveedorNac");
        ctx.ctaPorPagarProveedorInt = textOf(q, "CtaPorPagarProveedorInt");
        ctx.ctaAcreedores = textOf(q, "CtaAcreedores");
        ctx.ctaImpuestoCompraNac = textOf(q, "CtaImpuestoCompraNac");
        ctx.ctaImpuestoCompraInt = textOf(q, "CtaImpuestoCompraInt");
        ctx.ctaDevolucionVenta = textOf(q, "CtaDevolucionVenta");
        ctx.ctaImpuestoDevVenta = textOf(q, "CtaImpuestoDevVenta");
        ctx.ctaPorCobrar = textOf(q, "CtaPorCobrar");
        ctx.terceroVentaTienda = textOf(q, "TerceroVentaTienda");
        ctx.terceroTributario = textOf(q, "TerceroTributario");
        ctx.terceroAgenteAduana = textOf(q, "TerceroAgenteAduana");
        ctx.margenAuxFact = q.decimal(QStringLiteral("MargenAuxFact"));
        ctx.margenFacturacionOrdenDespacho = intOf(q, "MargenFacturacionOrdenDespacho");
        ctx.diasFacturarOrdenDespacho = intOf(q, "DiasFacturarOrdenDespacho");
        ctx.usaImpresoraFiscal = intOf(q, "UsaImpresoraFiscal");
        ctx.servidorContable = textOf(q, "ServidorContable");
        ctx.baseDatosContable = textOf(q, "BaseDatosContable");
        ctx.itemsPorFactura = intOf(q, "ItemsPorFactura");
        ctx.actualizarPreciosArchivosExternos = intOf(q, "ActualizarPreciosArchivosExternos");
        ctx.exportaInformacionCasaMatriz = intOf(q, "ExportaInformacionCasaMatriz");
        ctx.nombreEquipo = textOf(q, "NombreEquipo");
        ctx.manejarCantidadesDecimales = intOf(q, "ManejarCantidadesDecimales");
        ctx.servidorTelmar = textOf(q, "ServidorTelmar");
        ctx.numeroConteos = intOf(q, "NumeroConteos");
        ctx.idPais = textOf(q, "IdPais");
    }
    ctx.reportFolder = resolveReportFolder(ctx);
    return found;
}

bool loadRegister(const QSqlDatabase& db, const QString& serial, SessionContext& ctx) {
    ctx.serial = serial;
    ctx.registerConfigured = false;
    if (serial.isEmpty())
        return false;
    Sql q(db, QStringLiteral(
                  "SELECT C.Numero, C.FondoCaja, C.TipoListaPrecio, C.TipoReporte, C.TipoVenta, "
                  "C.PermiteDescuento, C.PermiteFacturarOrdenDespacho, C.PermiteFacturasExentas, "
                  "C.PermiteAlternarListas, C.IdImpresoraFiscal, I.IdProcesoImpresion, "
                  "C.UltimaFactura, C.UltimaDevolucion, C.CambiarPrecios, "
                  "C.RequerirAutorizacion, I.NombreImpresora "
                  "FROM CAJAS C INNER JOIN IMPRESORAFISCAL I ON C.IdImpresoraFiscal = I.ID "
                  "WHERE C.Serie = ?"));
    q.bind(serial).exec();
    if (!q.next())
        return false;
    ctx.numero = intOf(q, "Numero");
    ctx.fondoCaja = q.decimal(QStringLiteral("FondoCaja"));
    ctx.tipoListaPrecio = intOf(q, "TipoListaPrecio");
    ctx.tipoReporte = intOf(q, "TipoReporte");
    ctx.tipoVenta = intOf(q, "TipoVenta");
    ctx.permiteDescuento = intOf(q, "PermiteDescuento");
    ctx.permiteFacturarOrdenDespacho = intOf(q, "PermiteFacturarOrdenDespacho");
    ctx.permiteFacturasExentas = intOf(q, "PermiteFacturasExentas");
    ctx.permiteAlternarListas = intOf(q, "PermiteAlternarListas");
    ctx.idImpresoraFiscal = intOf(q, "IdImpresoraFiscal");
    ctx.idProcesoImpresion = intOf(q, "IdProcesoImpresion");
    ctx.registerConfigured = true;
    return true;
}

void loadStandardTaxRate(const QSqlDatabase& db, SessionContext& ctx) {
    const QVariant rate = db::scalar(
        db, QStringLiteral("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo = ?"), {1});
    ctx.standardTaxRate = Decimal::fromVariant(rate);
}

void loadSession(const QSqlDatabase& db, SessionContext& ctx) {
    loadCompany(db, ctx);
    loadRegister(db, ctx.serial, ctx);
    loadStandardTaxRate(db, ctx);
}

QString resolveReportFolder(const QString& appFolder, const QString& rutaReporteColumn) {
    QFile file(appFolder + QStringLiteral("/data/rutareporte.txt"));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        const QString first = in.readLine();
        if (!first.isEmpty())
            return first;
    }
    if (!rutaReporteColumn.isEmpty())
        return rutaReporteColumn;
    return appFolder + QStringLiteral("/REPORTES");
}

QString resolveReportFolder(const SessionContext& ctx) {
    return resolveReportFolder(ctx.appFolder.isEmpty() ? appHome() : ctx.appFolder,
                               ctx.rutaReporte);
}

QString captionText(const SessionContext& ctx, const QString& version) {
    return ctx.systemCode + QStringLiteral("  Empresa : ") + ctx.nombre +
           QStringLiteral("            ") + ctx.nombreIdFiscal + QLatin1Char(' ') + ctx.idEmpresa +
           QStringLiteral("    -    (Ver.-") + version + QLatin1Char(')');
}

QString registerPanelText(const SessionContext& ctx) {
    if (!ctx.registerConfigured)
        return QStringLiteral("(Estación sin configurar)");
    return QStringLiteral("(Caja Nº ") + QString::number(ctx.numero) + QLatin1Char(')');
}

QString userPanelText(const SessionContext& ctx) {
    return QStringLiteral("USUARIO: ") + ctx.userName;
}

} // namespace orvo::shell
