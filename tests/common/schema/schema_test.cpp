#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/schema/migrate.h"
#include "common/schema/schema.h"
#include "support/test_db.h"

#include <QMap>
#include <gtest/gtest.h>

using namespace orvo;
using orvo::test::DbTest;

namespace {

struct Documented {
    const char* table;
    QStringList columns; // in insert order
};

// The table list of the store database as documented, column by column in insert order.
const QList<Documented>& documentedTables() {
    static const QList<Documented> list = {
        {"PARAMETROS",
         {"Nombre",
          "Codigo",
          "NombreIdFiscal",
          "IDEmpresa",
          "Telefono",
          "Fax",
          "Direccion",
          "Tipo",
          "SimboloMoneda",
          "CorreoElectronico",
          "Nota1",
          "Nota2",
          "CongelarFacturas",
          "MostrarBalanceDiario",
          "DiscriminarImpuestoPrecio",
          "ManejarClientesAfiliadosEspeciales",
          "MargenAuxFact",
          "ControlFactura",
          "MargenFacturacionOrdenDespacho",
          "DiasFacturarOrdenDespacho",
          "UsaImpresoraFiscal",
          "UltimaFactura",
          "ActualizarPreciosArchivosExternos",
          "NumeroConteos",
          "DejarEditar",
          "ServidorTelmar",
          "CtaDevolucionVentaExenta",
          "AutorizarEliminarItemFactura",
          "ComportamientoExportar",
          "VisualizarPromocion",
          "VerificarCasaMatriz",
          "FacturasCongeladasEnAjustes",
          "AgruparFacturasCongeladasEnAjustes",
          "PermitirFacturaContingencia"}},
        {"TABLA_VALORES", {"IdTabla", "Codigo", "Descripcion"}},
        {"SUCURSALES",
         {"Codigo", "Nombre", "Direccion", "Telefono", "Status", "ExentaDeImpuesto",
          "PorcentajeDeRedondeo"}},
        {"VERSIONEJECUTABLE", {"Serie", "NombrePrograma", "Fecha", "FechaVersion", "Version"}},
        {"CONFIGURACIONSERVICIOS",
         {"NombreEquipo", "ServidorFTP", "UsuarioFTP", "ClaveFTP", "TipoTransferencia"}},
        {"PARAMETROSTRANSFER", {"TipoConexion", "Intentos", "SegIntentos"}},
        {"USUARIOS", {"CodUsuario", "NombreUsuario", "Pasword", "Status"}},
        {"GRUPOS", {"CodGrupo", "NombreGrupo"}},
        {"USUARIOGRUPO", {"CodUsuario", "CodGrupo"}},
        {"SEG",
         {"Nivel", "NumNodo", "NodoPadre", "CodNodo", "NomNodo", "Imagen", "Forma", "Orden",
          "EsPadre"}},
        {"GRUPOSEG", {"CodGrupo", "CodNodo", "Ver"}},
        {"OPCIONESMENU", {"CodNodo", "Opcion"}},
        {"OPCIONESGRUPO", {"CodGrupo", "CodNodo", "Opcion"}},
        {"TRABAJADORES",
         {"Cedula", "Codigo", "Nombre", "Cargo", "FechaIngreso", "FechaNacimiento", "Direccion",
          "Telefono", "Celular", "Status"}},
        {"CARGOS", {"Codigo", "Nombre", "Status"}},
        {"CONTROLACCESO", {"Numero", "Cedula", "Fecha", "HoraEntrada", "HoraSalida"}},
        {"LOG_ARTICULOS",
         {"CodigoBarra", "Referencia", "CodMarca", "SQL", "Fecha", "Equipo", "IP", "Usuario",
          "Formulario"}},
        {"INVENTARIO",
         {"CodigoBarra",
          "Nombre",
          "Referencia",
          "CodigoMarca",
          "Talla",
          "CodigoColor",
          "Fabricante",
          "TipoImpuesto",
          "UltimaActualizacion",
          "FechaPrimerMovimiento",
          "PuntoReorden",
          "Nota",
          "PrecioDetal",
          "PrecioMayor",
          "PrecioAfiliado",
          "Promocion",
          "PrecioPromocion",
          "FechaInicial",
          "FechaFinal",
          "Categoria",
          "ExistenciaInicial",
          "Existencia",
          "CostoInicial",
          "CostoPromedio",
          "UltimoCosto",
          "CostoDolar",
          "Tipo",
          "Status",
          "Serializado",
          "CodigoBarraAnt"}},
        {"MARCAS", {"Codigo", "Nombre", "Status"}},
        {"COLORES", {"Codigo", "Nombre", "Status"}},
        {"CATEGORIAS", {"Codigo", "Nombre", "Status"}},
        {"FABRICANTES", {"Codigo", "Nombre", "Status"}},
        {"BANCOS", {"Codigo", "Nombre", "Status"}},
        {"TALLAS", {"Codigo", "Talla"}},
        {"IMPUESTOS", {"Codigo", "Nombre", "PorcentajeImpuesto"}},
        {"CLIENTES",
         {"Codigo", "Nombre", "FechaIngreso", "FechaNacimiento", "Telefono", "Fax", "Celular",
          "Direccion", "Transporte", "Catalogo", "Status", "Tipo", "TipoContribuyente",
          "PorcentajeUtilidad", "EMail"}},
        {"TIPOSCLIENTE", {"Codigo", "Descripcion", "Status"}},
        {"TIPOSCONTRIBUYENTE", {"Codigo", "Descripcion", "Status"}},
        {"TIPOSPROVEEDOR", {"Codigo", "Descripcion", "Status"}},
        {"PROVEEDORES",
         {"Codigo", "Nombre", "Tipo", "FechaIngreso", "Telefono", "Fax", "CodigoPostal",
          "Direccion", "Contacto", "Pais", "Estado", "Ciudad", "Status"}},
        {"VENDEDOR",
         {"Codigo", "Cedula", "Nombre", "FecNac", "FecIng", "Direccion", "Telefono", "Status"}},
        {"VEHICULOS", {"Placa", "Marca", "Modelo", "Status"}},
        {"CTABANCOS", {"Codigo", "Nombre", "PuntoVenta", "Status"}},
        {"CTACONTABLE",
         {"Codigo", "Nombre", "ManejaDocumentos", "TieneAcreedor", "CuentaDevolucion", "Status"}},
        {"TIPOAJUSTES", {"Codigo", "Nombre", "Signo", "Status"}},
        {"TIPO_DESPACHO", {"ID", "Descripcion", "Estado"}},
        {"LOTES", {"ID", "Lote", "Descripcion", "FechaRegistro", "Estado", "UsuarioCreacion"}},
        {"CODIGOSERIAL", {"CodigoBarra", "Serial", "Status"}},
        {"TASA_CAMBIO", {"ID", "Fecha", "Valor"}},
        {"CAJAS",
         {"Serie", "Numero", "FondoCaja", "TipoListaPrecio", "TipoVenta", "TipoReporte",
          "PermiteDescuento", "PermiteFacturarOrdenDespacho", "UltimaFactura",
          "PermiteFacturasExentas", "PermiteAlternarListas", "CambiarPrecios",
          "RequerirAutorizacion", "IdImpresoraFiscal", "PermitirFacturaContingencia",
          "MaximoZDiario", "UltimaDevolucion"}},
        {"IMPRESORAFISCAL",
         {"ID", "NombreImpresora", "IdProcesoImpresion", "MontoMaximoDiario", "Status"}},
        {"CAJASCAMBIOS",
         {"Serie", "Numero", "SerieCambio", "NumeroCambio", "FechaCambio", "UltimaFactura",
          "UltimaDevolucion"}},
        {"DIARIOCAJA",
         {"Serie", "Fecha", "Numero", "FacturaInicial", "FacturaFinal", "PorcentajeImpuesto",
          "HoraApertura", "Status", "ReporteZTexto", "HoraCierre", "NumeroReporteZ", "Acumulado"}},
        {"PORCENTAJECAJA", {"Serie", "IndEstatus", "DiasEjecucion", "MontoMinimo"}},
        {"SALIDASCAJA",
         {"Numero", "Serie", "Fecha", "CodigoContable", "Acreedor", "Documento", "Descripcion",
          "Monto", "Usuario", "Status"}},
        {"DEPOSITOS",
         {"NumeroDeposito", "CuentaBanco", "Serie", "Fecha", "TotalEfectivo", "TotalCheques",
          "Observacion", "Usuario", "Status"}},
        {"MOVDEPOSITOS",
         {"NumeroDeposito", "CuentaBanco", "Serie", "Item", "Factura", "Cheque", "Banco", "Monto"}},
        {"CONFIRMACION_DEPOSITO",
         {"ID", "FechaRegistro", "FechaDeposito", "FechaVenta", "NumeroDeposito", "CodigoBanco",
          "Monto", "Nota", "Status"}},
        {"VENTAS",
         {"NumeroFactura", "Serie", "Fecha", "Vendedor", "Cliente", "TipoVenta", "FormaPago",
          "DiasCredito", "TotalMercancia", "TotalDescuento", "TotalImpuesto", "TotalCosto",
          "InterContable", "Usuario", "Status", "NumeroOrden", "TotalPago"}},
        {"MOVVENTAS",
         {"NumeroFactura", "Serie", "Hora", "TipoLista", "CodigoBarra", "Precio", "PrecioLista",
          "Costo", "Impuesto", "PorcentajeImpuesto", "Cantidad", "CantidadDevuelta", "Item",
          "PorcentajeDescuento"}},
        {"PAGOSVENTA",
         {"NumeroFactura", "Serie", "Item", "FormaPago", "Fecha", "Documento", "Aprobacion",
          "Banco", "PuntoVenta", "Monto", "Status", "JSON_Merchant"}},
        {"DEVVENTAS",
         {"NumeroDevolucion", "Serie", "NumeroFactura", "Fecha", "Vendedor", "Cliente",
          "TotalMercancia", "TotalDescuento", "TotalImpuesto", "TotalCosto", "TipoVenta",
          "InterContable", "Usuario", "Status", "SerieFactura"}},
        {"MOVDEVVENTAS",
         {"NumeroDevolucion", "Serie", "Hora", "TipoLista", "CodigoBarra", "Precio", "PrecioLista",
          "Costo", "Impuesto", "PorcentajeImpuesto", "Cantidad", "Item", "PorcentajeDescuento"}},
        {"HISTVENTAS",
         {"Numero", "Serie", "Fecha", "Vendedor", "Cliente", "TipoVenta", "FormaPago",
          "DiasCredito", "Usuario", "Status", "NumeroOrden", "Exenta"}},
        {"HISTMOVVENTAS",
         {"Numero", "Serie", "Hora", "TipoLista", "CodigoBarra", "Precio", "PrecioLista", "Costo",
          "Impuesto", "PorcentajeImpuesto", "Cantidad", "Descuento", "Item",
          "PorcentajeDescuento"}},
        {"CUENTASXCOBRAR",
         {"Numero", "Cliente", "Factura", "Serie", "Monto", "DiasCredito", "FechaFactura",
          "FechaAprobacion", "Status"}},
        {"MOVCUENTASXCOBRAR",
         {"Numero", "Item", "TipoPago", "NumeroDocumento", "NumeroAprobacion", "PuntoVenta",
          "BancoOrigen", "MontoCancelado", "Fecha", "Status", "Serie", "InterContable"}},
        {"ORDENDESPACHO",
         {"Numero", "Serie", "Fecha", "Cliente", "TotalMercancia", "TotalDescuento",
          "TotalImpuesto", "TotalCosto", "Observacion", "Usuario", "InterContable", "Status",
          "Exenta"}},
        {"MOVORDENDESPACHO",
         {"Numero", "Hora", "TipoLista", "CodigoBarra", "Precio", "PrecioLista", "Costo",
          "Impuesto", "PorcentajeImpuesto", "Cantidad", "Descuento", "Item"}},
        {"ORDENCOMPRAS",
         {"Numero", "Proveedor", "Fecha", "Observacion", "TotalMercancia", "TotalImpuesto",
          "Usuario", "Status"}},
        {"MOVORDENCOMPRAS",
         {"Numero", "CodigoBarra", "Cantidad", "PorcentajeImpuesto", "Precio", "Impuesto", "Item"}},
        {"COMPRAS",
         {"Documento",
          "Proveedor",
          "Fecha",
          "FechaFactura",
          "TipoPago",
          "DiasCredito",
          "Expediente",
          "Observacion",
          "TotalMercancia",
          "TotalImpuesto",
          "TotalImpuestoContable",
          "PorcentajeDescuento",
          "TotalDescuento",
          "TasaCambio",
          "Recargos",
          "TasaServicio",
          "OtrosImpuestos",
          "Flete",
          "Seguro",
          "PorcImpuestoGeneral",
          "Usuario",
          "MetodoValorizacion",
          "InterContable",
          "Status",
          "IDLote"}},
        {"MOVCOMPRAS",
         {"Documento", "Proveedor", "CodigoBarra", "Cantidad", "CantidadDevuelta",
          "PorcentajeImpuesto", "PrecioFactura", "PrecioProrrateado", "Impuesto", "Item"}},
        {"DEVCOMPRAS",
         {"Numero", "Fecha", "Documento", "Proveedor", "TotalMercancia", "TotalImpuesto",
          "PorcentajeDescuento", "TotalDescuento", "Observacion", "Usuario", "InterContable",
          "Status"}},
        {"MOVDEVCOMPRAS",
         {"Numero", "Item", "CodigoBarra", "Cantidad", "Precio", "PorcentajeImpuesto", "Impuesto"}},
        {"PEDIDOS", {"Numero", "Fecha", "Proveedor", "Observacion", "Usuario", "Status"}},
        {"MOVPEDIDOS",
         {"Numero", "CodigoBarra", "Existencia", "CantidadSugerida", "CantidadPedida", "Item"}},
        {"RECEPCION",
         {"Numero", "Sucursal", "Fecha", "FechaAprobacion", "DocumentoOrigen", "Observacion",
          "Status", "InterContable", "IdTipoDocumento"}},
        {"MOVRECEPCION",
         {"Numero", "NumeroCaja", "Item", "CodigoBarra", "Cantidad", "Usuario", "Fecha", "Precio",
          "Costo"}},
        {"REMISION",
         {"Numero", "Sucursal", "Fecha", "FechaAprobacion", "DocumentoOrigen", "Observacion",
          "Status", "InterContable", "GuiaDespacho", "IdTipoDocumento", "UsuarioAprobacion",
          "DireccionIP", "IDLote"}},
        {"MOVREMISION",
         {"Numero", "NumeroCaja", "Item", "CodigoBarra", "Cantidad", "Usuario", "Fecha", "Precio",
          "Costo", "FechaCierre", "DireccionIP", "Chequeado"}},
        {"GUIADESPACHO", {"Numero", "Fecha", "Conductor", "Vehiculo", "Observacion", "Status"}},
        {"TRANSFERENCIAS",
         {"Numero", "Fecha", "FechaEmision", "CodigoRecibe", "CodigoEnvia", "TotalValor",
          "Observacion", "Usuario", "InterContable", "Status", "IDLote", "IDDespacho",
          "DocumentoOrigen"}},
        {"MOVTRANSFERENCIAS",
         {"Numero", "Fecha", "CodigoBarra", "Cantidad", "Valor", "NumeroCaja", "Item"}},
        {"DEVTRANSFERENCIAS",
         {"Numero", "Fecha", "FechaEmision", "CodigoEnvia", "CodigoRecibe", "DocumentoOrigen",
          "TotalValor", "Observacion", "Usuario", "Status", "InterContable", "IDLote"}},
        {"MOVDEVTRANSFERENCIAS",
         {"Numero", "CodigoBarra", "Valor", "Cantidad", "NumeroCaja", "Item", "Fecha"}},
        {"ITRANSFERENCIAS",
         {"Numero", "CodigoEnvia", "CodigoRecibe", "Fecha", "FechaEmision", "TotalValor",
          "Observacion", "InterContable", "Status", "Usuario", "IDLote", "IDDespacho"}},
        {"IMOVTRANSFERENCIAS",
         {"Numero", "CodigoEnvia", "Item", "Fecha", "CodigoBarra", "Cantidad", "Valor",
          "NumeroCaja"}},
        {"IDEVTRANSFERENCIAS",
         {"Numero", "CodigoEnvia", "CodigoRecibe", "Fecha", "FechaEmision", "Observacion", "Status",
          "Usuario", "IDLote", "TotalValor", "InterContable"}},
        {"IMOVDEVTRANSFERENCIAS",
         {"Numero", "CodigoEnvia", "Item", "Fecha", "CodigoBarra", "Cantidad", "NumeroCaja",
          "Valor"}},
        {"TRANSFERENCIASAUTOMATICA",
         {"Proveedor", "NumeroDocumento", "NumeroCajaDocumento", "Sucursal", "NumeroTransferencia",
          "NumeroCajaTransferencia", "Usuario", "FechaRegistro", "TipoDocumentoOrigen"}},
        {"ORDENDESPACHOAUTOMATICA",
         {"Proveedor", "NumeroDocumento", "Cliente", "NumeroOrden", "Usuario", "FechaRegistro",
          "TipoDocumentoOrigen"}},
        {"BITACORAMOVIMIENTO",
         {"Numero", "TipodocumentoOrigen", "DocumentoOrigen", "Origen", "tipoDocumentoDestino",
          "DocumentoDestino", "Destino", "fecha", "Usuario", "Observacion"}},
        {"DEVBORRADOR", {"Numero", "Fecha", "Observacion", "Usuario", "Status"}},
        {"MOVDEVBORRADOR", {"Numero", "CodigoBarra", "Cantidad", "NumeroCaja", "Item", "Costo"}},
        {"AJUSTES",
         {"Numero", "Fecha", "TipoAjuste", "Signo", "TotalValor", "Observacion", "Usuario",
          "InterContable", "Status", "IDLote"}},
        {"MOVAJUSTES", {"Numero", "Item", "CodigoBarra", "Cantidad", "Costo"}},
        {"TOMAFISICA1", {"NumeroPagina", "Usuario", "Fecha", "Observacion", "Status"}},
        {"TOMAFISICA2", {"NumeroPagina", "Usuario", "Fecha", "Observacion", "Status"}},
        {"TOMAFISICA3", {"NumeroPagina", "Fecha", "Observacion", "Usuario", "Status"}},
        {"MOVTOMAFISICA2", {"NumeroPagina", "CodigoBarra", "Cantidad", "Item", "Hora"}},
        {"MOVTOMAFISICA3",
         {"NumeroPagina", "Item", "CodigoBarra", "Cantidad1", "Cantidad2", "Cantidad3", "Hora"}},
        {"FISICOLOGICO",
         {"FechaAjuste", "CodigoBarra", "Precio", "Impuesto", "Costo", "ExistenciaLogica",
          "ExistenciaFisica", "Ajuste"}},
        {"SERIALES",
         {"Numero", "Fecha", "TipoMovimiento", "Documento", "Tercero", "Observacion", "Usuario",
          "Status"}},
        {"MOVSERIALES", {"Numero", "CodigoBarra", "Serial", "Item"}},
        {"LISTAPRECIO",
         {"Numero", "Fecha", "FactorDetal", "FactorMayor", "FactorAfiliado", "Observacion",
          "Usuario", "Status"}},
        {"MOVLISTAPRECIO",
         {"Numero", "Referencia", "CodigoMarca", "Costo", "Descuento", "PrecioDetalSugerido",
          "PrecioDetal", "PrecioMayorSugerido", "PrecioMayor", "PrecioAfiliadoSugerido",
          "PrecioAfiliado", "PrecioPromocion", "Promocion", "FechaInicial", "FechaFinal"}},
        {"FTPLOG",
         {"IdFtpLog", "IdTipoDocumento", "FechaRegistro", "Usuario", "Equipo", "DireccionIP",
          "IdEstatus", "Sucursal", "Observacion", "Archivo", "IdFTPLogPadre", "Documentos",
          "IndEliminarRemoto", "IdFtpLogEliminado"}},
        {"FTPLOGDOCUMENTOS", {"IdFTPLog", "IdTipoDocumento", "NumeroDocumento"}},
        {"CONFIRMACION_DEPOSITO_AUD",
         {"ID", "FechaRegistro", "FechaDeposito", "FechaVenta", "NumeroDeposito", "CodigoBanco",
          "Monto", "Nota", "Status", "Usuario"}},
        {"MOVVENTASBORRADAS",
         {"NumeroFactura", "Serie", "Hora", "TipoLista", "CodigoBarra", "Precio", "PrecioLista",
          "Costo", "Impuesto", "PorcentajeImpuesto", "Cantidad", "CantidadDevuelta", "Item",
          "PorcentajeDescuento", "TpoBorrado", "Vendedor", "Cliente", "Cajero", "UsuarioAutoriza"}},
        {"DIARIOREPORTEZ",
         {"FechaApertura", "SerieImpresora", "NumeroReporteZ", "ReporteZTexto", "FechaReporteZ"}},
        {"PORCENTAJECAJA", {"Serie", "Porcentaje", "IndEstatus", "DiasEjecucion", "MontoMinimo"}},
        {"CUENTAS_NET", {"EntryName", "NumeroTelf", "Usuario", "PassWord", "Prioridad"}},
        {"CUENTAS_MAIL",
         {"Nombre", "SrvSalida", "PuertoSaliente", "SrvEntrada", "UsrMail", "SrvDominio", "PswMail",
          "EMailDest"}},
        {"MENSAJES", {"Asunto", "Anexo"}},
        {"EXPORTACION", {"Nombre", "NombreTabla", "Consulta", "Exportar", "mensaje"}},
    };
    return list;
}

// Tables and columns that the screens read or write beyond the documented lists.
const QList<Documented>& usedElsewhere() {
    static const QList<Documented> list = {
        {"PARAMETROS",
         {"RutaReporte",
          "DiscriminarImpuestoPrecios",
          "CtaVentaGravada",
          "CtaVentaExenta",
          "CtaImpuestoVenta",
          "CtaPorCobrarDiferenciaCierre",
          "CtaCostoVenta",
          "CtaInventarioGravado",
          "CtaInventarioExento",
          "CtaPorPagarProveedorNac",
          "CtaPorPagarProveedorInt",
          "CtaAcreedores",
          "CtaImpuestoCompraNac",
          "CtaImpuestoCompraInt",
          "CtaDevolucionVenta",
          "CtaImpuestoDevVenta",
          "CtaPorCobrar",
          "TerceroVentaTienda",
          "TerceroTributario",
          "TerceroAgenteAduana",
          "ServidorContable",
          "BaseDatosContable",
          "ItemsPorFactura",
          "ExportaInformacionCasaMatriz",
          "NombreEquipo",
          "ManejarCantidadesDecimales",
          "IdPais",
          "UltExportacion",
          "ValorImpuesto",
          "UltimaDevolucion"}},
        // Renumbering copies an invoice with INSERT ... SELECT in this order.
        {"VENTAS",
         {"NumeroFactura", "Serie", "Fecha", "Hora", "Vendedor", "TotalPago", "TotalDolares",
          "TasaCambio"}},
        {"MOVVENTAS", {"CantidadDevuelta", "Item", "Medida", "PorcentajeDescuento"}},
        {"FORMAPAGO", {"Codigo", "Nombre", "Status", "Orden"}},
        {"TALLAS", {"Codigo", "Talla", "Status"}},
        {"CATEGORIAS", {"Codigo", "Nombre", "Raiz", "Detalle", "Maestra"}},
        {"USUARIOBARRATAREA", {"CodUsuario", "CodNodo"}},
        {"MOVTOMAFISICA1", {"NumeroPagina", "Item", "CodigoBarra", "Cantidad", "Hora"}},
        {"MOVRECEPCION", {"Costo", "Status"}},
        {"MOVREMISION", {"Chequeado", "Status"}},
        {"RECEPCION_COMPRAS", {"Numero", "Documento", "Proveedor"}},
        {"REMISION_COMPRAS", {"Numero", "Documento", "Proveedor"}},
        {"CONFIGURACIONSERVICIOS", {"TipoTransferencia", "ServidorSQL", "BaseDatos"}},
        {"PARAMETROSTRANSFER", {"Ruta"}},
        {"EMPRESAS", {"BaseDatos"}},
        {"DIARIOREPORTEZ", {"FechaSistema"}},
        {"SALDODIARIO", {"Fecha", "CodigoBarra", "FechaRegistro"}},
        {"CODE128A", {"PrecioDetal", "Impuesto", "Total"}},
        {"CODE128C", {"PrecioDetal", "Impuesto", "Total"}},
        {"EAN13", {"PrecioDetal", "Impuesto", "Total"}},
    };
    return list;
}

class StoreSchema : public DbTest {
protected:
    // Every column must exist, and the listed ones must keep their relative order.
    void expectColumnsInOrder(const Documented& d) {
        const QStringList actual = db::columnsOf(db(), QString::fromLatin1(d.table));
        ASSERT_FALSE(actual.isEmpty()) << "missing table " << d.table;
        qsizetype previous = -1;
        for (const QString& c : d.columns) {
            const qsizetype at = actual.indexOf(c.toUpper());
            EXPECT_GE(at, 0) << d.table << "." << c.toStdString() << " is missing";
            if (at < 0)
                continue;
            EXPECT_GT(at, previous) << d.table << "." << c.toStdString() << " is out of order";
            previous = at;
        }
    }

    QMap<QString, QStringList> allColumns() {
        QMap<QString, QStringList> out;
        for (const schema::Table& t : schema::storeTables())
            out.insert(t.name, db::columnsOf(db(), t.name));
        return out;
    }
};

TEST_F(StoreSchema, EveryDocumentedTableHasItsColumnsInInsertOrder) {
    for (const Documented& d : documentedTables())
        expectColumnsInOrder(d);
}

TEST_F(StoreSchema, ColumnsUsedByTheScreensExistToo) {
    for (const Documented& d : usedElsewhere())
        expectColumnsInOrder(d);
}

TEST_F(StoreSchema, SecondMigrationAppliesNothing) {
    const QMap<QString, QStringList> before = allColumns();
    const int versions = count("VERSIONESQUEMA");

    const schema::MigrationResult again = schema::migrate(db());

    EXPECT_TRUE(again.steps.isEmpty());
    EXPECT_EQ(again.fromVersion, schema::currentVersion());
    EXPECT_EQ(again.toVersion, schema::currentVersion());
    EXPECT_EQ(count("VERSIONESQUEMA"), versions);
    EXPECT_EQ(allColumns(), before);
}

// Amounts are updated in place by the engine (stock moves, the day's accumulated sales, the
// reconversion): every column must come back with its own decimals.
TEST_F(StoreSchema, AmountsKeepTheirDecimalsThroughArithmeticUpdates) {
    exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Acumulado) VALUES (?, ?, ?)",
         {"Z1A", QDateTime(QDate(2026, 3, 2), QTime(8, 0)), "123456789.12"});
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, PrecioDetal, Existencia, CostoPromedio) "
         "VALUES (?, ?, ?, ?, ?)",
         {"7591", "CAMISA", "8.6552", "0", "10.12345"});
    for (int i = 0; i < 10; ++i) {
        db::Sql(db(), "UPDATE DIARIOCAJA SET Acumulado = Acumulado + ? WHERE Serie = ?")
            .bind(Decimal::fromString(u"0.01"), 2)
            .bind("Z1A")
            .exec();
        db::Sql(db(), "UPDATE INVENTARIO SET Existencia = Existencia + ? WHERE CodigoBarra = ?")
            .bind(Decimal::fromString(u"0.1"), 3)
            .bind("7591")
            .exec();
    }
    const auto read = [&](const char* sql, int decimals) {
        return Decimal::fromVariant(scalar(QString::fromLatin1(sql)))
            .rounded(decimals)
            .toString(decimals);
    };
    EXPECT_EQ(read("SELECT Acumulado FROM DIARIOCAJA", 2), QStringLiteral("123456789.22"));
    EXPECT_EQ(read("SELECT Existencia FROM INVENTARIO", 3), QStringLiteral("1.000"));
    EXPECT_EQ(read("SELECT CostoPromedio FROM INVENTARIO", 5), QStringLiteral("10.12345"));
    // A price typed as 10.04 with 16 % tax: four decimals bring the 10.04 back (two would
    // give 10.05).
    const Decimal price = Decimal::fromVariant(scalar("SELECT PrecioDetal FROM INVENTARIO"));
    EXPECT_EQ(price.rounded(4).toString(4), QStringLiteral("8.6552"));
    EXPECT_EQ((price * Decimal::fromString(u"1.16")).rounded(2).toString(2),
              QStringLiteral("10.04"));

    // The reconversion divides every amount by a factor.
    exec("UPDATE DIARIOCAJA SET Acumulado = Acumulado / ?", {"100000"});
    EXPECT_EQ(read("SELECT Acumulado FROM DIARIOCAJA", 2), QStringLiteral("1234.57"));
}

// Documents and masters refuse a second row with their key; logs and copies take it.
TEST_F(StoreSchema, KeysRefuseDuplicatesOnlyWhereTheDataHasOne) {
    const auto twice = [&](const QString& insert, std::initializer_list<QVariant> values) {
        db::execute(db(), insert, values);
        try {
            db::execute(db(), insert, values);
        } catch (const DbError&) {
            return false;
        }
        return true;
    };
    EXPECT_FALSE(
        twice("INSERT INTO INVENTARIO (CodigoBarra, Nombre) VALUES (?, ?)", {"7591", "CAMISA"}));
    EXPECT_FALSE(twice("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha) VALUES (?, ?, ?)",
                       {1, "Z1A", QDateTime(QDate(2026, 3, 2), QTime(10, 0))}));
    EXPECT_FALSE(twice("INSERT INTO MOVVENTAS (NumeroFactura, Serie, Item, CodigoBarra) "
                       "VALUES (?, ?, ?, ?)",
                       {1, "Z1A", 1, "7591"}));
    EXPECT_FALSE(
        twice("INSERT INTO COMPRAS (Documento, Proveedor) VALUES (?, ?)", {"F-001", "J123"}));
    EXPECT_FALSE(twice("INSERT INTO COLORES (Codigo, Nombre) VALUES (?, ?)", {"01", "ROJO"}));
    // Numbers taken as the highest plus one, shared by the registers.
    EXPECT_FALSE(twice("INSERT INTO CUENTASXCOBRAR (Numero, Factura, Serie) VALUES (?, ?, ?)",
                       {7, 1, "Z1A"}));
    EXPECT_FALSE(twice("INSERT INTO CONTROLACCESO (Numero, Cedula) VALUES (?, ?)", {3, "V1"}));
    // A parked sale's number is unique across the registers, not only within one.
    db::execute(db(), "INSERT INTO HISTVENTAS (Numero, Serie) VALUES (?, ?)", {2, "Z1A"});
    EXPECT_THROW(
        db::execute(db(), "INSERT INTO HISTVENTAS (Numero, Serie) VALUES (?, ?)", {2, "Z1B"}),
        DbError);

    // The same sale may be keyed on another register.
    EXPECT_NO_THROW(
        db::execute(db(), "INSERT INTO VENTAS (NumeroFactura, Serie) VALUES (?, ?)", {1, "Z1B"}));
    EXPECT_TRUE(twice("INSERT INTO MOVVENTASBORRADAS (NumeroFactura, Serie, Item, TpoBorrado) "
                      "VALUES (?, ?, ?, ?)",
                      {1, "Z1A", 1, "S"}));
    EXPECT_TRUE(twice("INSERT INTO VERSIONEJECUTABLE (Serie, NombrePrograma) VALUES (?, ?)",
                      {"Z1A", "Orvo"}));
    EXPECT_TRUE(
        twice("INSERT INTO ITRANSFERENCIAS (Numero, CodigoEnvia) VALUES (?, ?)", {4, "002"}));
}

TEST_F(StoreSchema, EngineAssignsIdentitiesAndTheRateDate) {
    const long long first = db::insertReturningId(
        db(), "INSERT INTO LOTES (Lote, Estado) VALUES (?, ?)", "ID", {"L-1", 1});
    const long long second = db::insertReturningId(
        db(), "INSERT INTO LOTES (Lote, Estado) VALUES (?, ?)", "ID", {"L-2", 1});
    EXPECT_GT(second, first);
    EXPECT_GT(db::insertReturningId(db(), "INSERT INTO FTPLOG (IdTipoDocumento) VALUES (?)",
                                    "IdFtpLog", {1}),
              0);

    const QDateTime before = db::serverNow(db()).addSecs(-1);
    db::Sql(db(), "INSERT INTO TASA_CAMBIO (Valor) VALUES (?)")
        .bind(Decimal::fromString(u"36.5"), 8)
        .exec();
    db::Sql q(db(), "SELECT Fecha, Valor FROM TASA_CAMBIO");
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_GE(q.dateTime("Fecha"), before);
    EXPECT_LE(q.dateTime("Fecha"), db::serverNow(db()).addSecs(1));
    EXPECT_EQ(q.decimal("Valor"), Decimal::fromString(u"36.5"));
}

// The reconversion drops the daily balances; the stock rebuild makes the table again.
TEST_F(StoreSchema, DroppedTableIsCreatedAgainFromTheDescription) {
    const QStringList columns = db::columnsOf(db(), "SALDODIARIO");
    exec("DROP TABLE SALDODIARIO");

    EXPECT_TRUE(schema::createTableIfMissing(db(), "SALDODIARIO"));
    EXPECT_EQ(db::columnsOf(db(), "SALDODIARIO"), columns);
    exec("INSERT INTO SALDODIARIO (Fecha, CodigoBarra, Existencia) VALUES (?, ?, ?)",
         {QDateTime(QDate(2026, 3, 2), QTime(0, 0)), "7591", "4"});
    EXPECT_FALSE(schema::createTableIfMissing(db(), "SALDODIARIO"));
    EXPECT_EQ(count("SALDODIARIO"), 1);
}

// A small description of two versions stands for a later release of the store schema.
class SchemaUpgrade : public DbTest {
protected:
    static schema::Table versionOneTable() {
        schema::Table t;
        t.name = QStringLiteral("PRUEBA_VERSION");
        t.columns = {schema::col::text("Codigo", 10), schema::col::money("Monto")};
        t.primaryKey = {QStringLiteral("Codigo")};
        return t;
    }

    // The store's version and the next one.
    static int current() { return schema::currentVersion(); }
    static int next() { return schema::currentVersion() + 1; }

    // The next version adds a column and an index to the old table and one new table.
    static QList<schema::Table> versionTwo() {
        schema::Table old = versionOneTable();
        old.columns << schema::col::since(schema::col::smallint("Status", "1"), next());
        old.indexes << schema::Index{"IX_PRUEBA_VERSION_Status", {"Status"}, false, next()};
        schema::Table added;
        added.name = QStringLiteral("PRUEBA_NUEVA");
        added.columns = {schema::col::integer("Numero")};
        added.since = next();
        return {old, added};
    }

    // The store database is at its current version; the old table is created as that one made it.
    void SetUp() override {
        DbTest::SetUp();
        ASSERT_EQ(schema::appliedVersion(db()), current());
        for (const QString& s : schema::createStatements(versionOneTable(), testDb().engine()))
            exec(s);
        exec("INSERT INTO PRUEBA_VERSION (Codigo, Monto) VALUES (?, ?)", {"A", "10.50"});
    }
};

TEST_F(SchemaUpgrade, NewColumnsAreAddedToTheRowsAlreadyThere) {
    const schema::MigrationResult result = schema::migrate(db(), versionTwo());

    EXPECT_EQ(result.fromVersion, current());
    EXPECT_EQ(result.toVersion, next());
    EXPECT_EQ(result.steps, QStringList{QStringLiteral("Versión %1: 3 sentencias").arg(next())});
    EXPECT_EQ(schema::appliedVersion(db()), next());
    EXPECT_EQ(db::columnsOf(db(), "PRUEBA_VERSION"), (QStringList{"CODIGO", "MONTO", "STATUS"}));
    EXPECT_TRUE(db::tableExists(db(), "PRUEBA_NUEVA"));
    EXPECT_EQ(scalar("SELECT Status FROM PRUEBA_VERSION WHERE Codigo = ?", {"A"}).toInt(), 1);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Monto FROM PRUEBA_VERSION")),
              Decimal::fromString(u"10.50"));

    EXPECT_TRUE(schema::migrate(db(), versionTwo()).steps.isEmpty());
}

TEST_F(SchemaUpgrade, ALongerTextTypeReachesTheRowsAlreadyThere) {
    exec("UPDATE PRUEBA_VERSION SET Codigo = ?", {"B"});
    QList<schema::Table> tables = {versionOneTable()};
    tables[0].columns << schema::col::since(schema::col::text("Clave", 10), next());
    ASSERT_EQ(schema::migrate(db(), tables).toVersion, next());
    const QString longText(600, u'x');
    // Before: PostgreSQL refuses the long text (SQLite never did).
    if (isPostgres()) {
        EXPECT_THROW(db::execute(db(), "UPDATE PRUEBA_VERSION SET Clave = ?", {longText}), DbError);
    }
    tables[0].columns.last() =
        schema::col::since(schema::col::retyped(schema::col::memo("Clave"), next() + 1), next());
    EXPECT_EQ(schema::migrate(db(), tables).toVersion, next() + 1);
    db::execute(db(), "UPDATE PRUEBA_VERSION SET Clave = ?", {longText});
    EXPECT_EQ(scalar("SELECT Clave FROM PRUEBA_VERSION WHERE Codigo = 'B'").toString(), longText);
    // A new database gets the new type at once.
    EXPECT_TRUE(
        schema::columnDefinition(tables[0].columns.last(), testDb().engine()).contains("TEXT"));
}

// A version is applied whole or not at all, so a failed upgrade can be run again.
TEST_F(SchemaUpgrade, FailingVersionLeavesTheDatabaseAsItWas) {
    QList<schema::Table> broken = versionTwo();
    broken[0].columns << schema::col::since(schema::col::integer("Status"), next()); // twice

    EXPECT_THROW(schema::migrate(db(), broken), DbError);

    EXPECT_EQ(schema::appliedVersion(db()), current());
    EXPECT_EQ(db::columnsOf(db(), "PRUEBA_VERSION"), (QStringList{"CODIGO", "MONTO"}));
    EXPECT_FALSE(db::tableExists(db(), "PRUEBA_NUEVA"));

    EXPECT_EQ(schema::migrate(db(), versionTwo()).toVersion, next());
}

} // namespace

namespace {

// A column given four decimals where it had two keeps its rows and takes the four on both engines.
TEST_F(SchemaUpgrade, AWiderScaleKeepsTheRowsAndTakesItsDecimals) {
    schema::Table widened = versionOneTable();
    widened.columns[1] = schema::col::retyped(schema::col::price("Monto"), next());
    ASSERT_EQ(schema::currentVersion({widened}), next());
    EXPECT_EQ(schema::migrate(db(), {widened}).toVersion, next());

    exec("INSERT INTO PRUEBA_VERSION (Codigo, Monto) VALUES (?, ?)", {"B", "8.5948"});
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Monto FROM PRUEBA_VERSION WHERE Codigo = 'A'")),
              Decimal::fromString(u"10.50"));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Monto FROM PRUEBA_VERSION WHERE Codigo = 'B'")),
              Decimal::fromString(u"8.5948"));
}

} // namespace
