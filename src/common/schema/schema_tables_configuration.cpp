// Company, settings, users and menu security.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

QList<Table> configurationTables() {
    return {
        // One row: the company and its settings. The columns after PermitirFacturaContingencia are
        // read by the session context, the accounting interfaces, numbering and the export.
        table("PARAMETROS",
              {text("Nombre", 100), text("Codigo", 10), text("NombreIdFiscal", 20),
               text("IDEmpresa", 20), text("Telefono", 30), text("Fax", 30), text("Direccion", 255),
               smallint("Tipo"), text("SimboloMoneda", 10), text("CorreoElectronico", 100),
               text("Nota1", 255), text("Nota2", 255), smallint("CongelarFacturas"),
               smallint("MostrarBalanceDiario"), smallint("DiscriminarImpuestoPrecio"),
               smallint("ManejarClientesAfiliadosEspeciales"), percent("MargenAuxFact"),
               smallint("ControlFactura"), integer("MargenFacturacionOrdenDespacho"),
               integer("DiasFacturarOrdenDespacho"), smallint("UsaImpresoraFiscal"),
               defaultTo(integer("UltimaFactura"), "0"),
               smallint("ActualizarPreciosArchivosExternos"), smallint("NumeroConteos"),
               smallint("DejarEditar"), text("ServidorTelmar", 100),
               text("CtaDevolucionVentaExenta", 20), smallint("AutorizarEliminarItemFactura"),
               text("ComportamientoExportar", 20), smallint("VisualizarPromocion"),
               smallint("VerificarCasaMatriz"), smallint("FacturasCongeladasEnAjustes"),
               smallint("AgruparFacturasCongeladasEnAjustes"),
               smallint("PermitirFacturaContingencia"), text("RutaReporte", 255),
               // Both spellings are in use: the session context reads the plural one.
               smallint("DiscriminarImpuestoPrecios"), text("CtaVentaGravada", 20),
               text("CtaVentaExenta", 20), text("CtaImpuestoVenta", 20),
               text("CtaPorCobrarDiferenciaCierre", 20), text("CtaCostoVenta", 20),
               text("CtaInventarioGravado", 20), text("CtaInventarioExento", 20),
               text("CtaPorPagarProveedorNac", 20), text("CtaPorPagarProveedorInt", 20),
               text("CtaAcreedores", 20), text("CtaImpuestoCompraNac", 20),
               text("CtaImpuestoCompraInt", 20), text("CtaDevolucionVenta", 20),
               text("CtaImpuestoDevVenta", 20), text("CtaPorCobrar", 20),
               text("TerceroVentaTienda", 20), text("TerceroTributario", 20),
               text("TerceroAgenteAduana", 20), text("ServidorContable", 100),
               text("BaseDatosContable", 100), integer("ItemsPorFactura"),
               smallint("ExportaInformacionCasaMatriz"), text("NombreEquipo", 60),
               smallint("ManejarCantidadesDecimales"), text("IdPais", 10),
               dateTime("UltExportacion"), percent("ValorImpuesto"),
               defaultTo(integer("UltimaDevolucion"), "0")}),
        // Keyed settings: one row per key (IdTabla), several for multi-line keys (Codigo).
        table("TABLA_VALORES", {text("IdTabla", 20), text("Codigo", 20), text("Descripcion", 255)},
              {}, {{"IdTabla", "Codigo"}}),
        table("SUCURSALES",
              {text("Codigo", 10), text("Nombre", 100), text("Direccion", 255),
               text("Telefono", 30), smallint("Status", "1"), smallint("ExentaDeImpuesto"),
               percent("PorcentajeDeRedondeo")},
              {"Codigo"}),
        // Sister companies whose databases live on the same server.
        table("EMPRESAS",
              {text("Codigo", 10), text("Nombre", 100), text("ServidorSQL", 100),
               text("BaseDatos", 100), smallint("Status", "1")},
              {"Codigo"}),
        // Every start adds a row: no key.
        table("VERSIONEJECUTABLE",
              {text("Serie", 10), text("NombrePrograma", 60), dateTime("Fecha"),
               dateTime("FechaVersion"), text("Version", 30)},
              {}, {{"Serie", "NombrePrograma", "FechaVersion"}}),
        table("CONFIGURACIONSERVICIOS",
              {text("NombreEquipo", 60), text("ServidorFTP", 100), text("UsuarioFTP", 60),
               text("ClaveFTP", 60), smallint("TipoTransferencia"), text("ServidorSQL", 100),
               text("BaseDatos", 100)},
              {"NombreEquipo"}),
        table("PARAMETROSTRANSFER", {smallint("TipoConexion"), smallint("Intentos", "1"),
                                     smallint("SegIntentos", "1"), text("Ruta", 255)}),
        table("USUARIOS",
              {text("CodUsuario", 20), text("NombreUsuario", 60),
               // Scrambled: up to six characters for each one typed.
               retyped(memo("Pasword"), kLongPasswordsVersion), smallint("Status", "1")},
              {"CodUsuario"}),
        table("GRUPOS", {text("CodGrupo", 20), text("NombreGrupo", 60)}, {"CodGrupo"}),
        table("USUARIOGRUPO", {text("CodUsuario", 20), text("CodGrupo", 20)},
              {"CodUsuario", "CodGrupo"}, {{"CodGrupo"}}),
        // Per-user shortcuts to menu nodes.
        table("USUARIOBARRATAREA", {text("CodUsuario", 20), text("CodNodo", 30)},
              {"CodUsuario", "CodNodo"}),
        // The menu tree.
        table("SEG",
              {smallint("Nivel"), integer("NumNodo"), text("NodoPadre", 30), text("CodNodo", 30),
               text("NomNodo", 100), text("Imagen", 60), text("Forma", 60), integer("Orden"),
               smallint("EsPadre")},
              {"CodNodo"}),
        table("GRUPOSEG", {text("CodGrupo", 20), text("CodNodo", 30), text("Ver", 1)},
              {"CodGrupo", "CodNodo"}, {{"CodNodo"}}),
        table("OPCIONESMENU", {text("CodNodo", 30), text("Opcion", 60)}, {"CodNodo", "Opcion"}),
        table("OPCIONESGRUPO", {text("CodGrupo", 20), text("CodNodo", 30), text("Opcion", 60)},
              {"CodGrupo", "CodNodo", "Opcion"}),
        table("TRABAJADORES",
              {text("Cedula", 15), text("Codigo", 10), text("Nombre", 100), text("Cargo", 10),
               dateTime("FechaIngreso"), dateTime("FechaNacimiento"), text("Direccion", 255),
               text("Telefono", 30), text("Celular", 30), smallint("Status", "1")},
              {"Cedula"}, {{"Codigo"}}),
        table("CARGOS", {text("Codigo", 10), text("Nombre", 60), smallint("Status", "1")},
              {"Codigo"}),
        withUniqueNumber(table("CONTROLACCESO",
                               {integer("Numero"), text("Cedula", 15), dateTime("Fecha"),
                                dateTime("HoraEntrada"), dateTime("HoraSalida")},
                               {}, {{"Cedula", "Fecha"}, {"Fecha"}}),
                         {"Numero"}, kUniqueNumbersVersion),
        // Every write of an article, with the statement it ran.
        table("LOG_ARTICULOS",
              {text("CodigoBarra", 15), text("Referencia", 20), text("CodMarca", 10), memo("SQL"),
               dateTime("Fecha"), text("Equipo", 60), text("IP", 45), text("Usuario", 20),
               text("Formulario", 60)},
              {}, {{"CodigoBarra"}, {"Fecha"}}),
    };
}

} // namespace orvo::schema::tables
