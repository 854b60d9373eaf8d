#include "exchange/package/dbf_names.h"

#include <QHash>

namespace orvo::exchange::package {

namespace {

const QHash<QString, QString>& names() {
    static const QHash<QString, QString> map = [] {
        // Column → dBase name. The first group is the historic mapping of the exchange files;
        // the rest follows its style: the words' first syllables, ten characters at most.
        const std::initializer_list<std::pair<const char*, const char*>> pairs = {
            {"NumeroFactura", "NumFac"},
            {"CodigoBarra", "CodBar"},
            {"Descripcion", "Descripcio"},
            {"CodigoRecibe", "CodRecib"},
            {"CodigoEnvia", "CodEnvia"},
            {"FechaAjuste", "FecAju"},
            {"TipoAjuste", "TipoAjus"},
            {"NumeroDeposito", "NumDep"},
            {"ManejaDocumentos", "ManejaDoc"},
            {"TieneAcreedor", "Acreedor"},
            {"NombreEquipo", "Equipo"},
            {"ServidorSQL", "Servidor"},
            {"BaseDatos", "BaseDato"},
            {"SegIntentos", "SegIntento"},
            {"Documento", "Document"},
            {"Proveedor", "Proveedo"},
            {"NombreImpresora", "NombImpr"},
            {"IdProcesoImpresion", "IDProImp"},

            // Company settings (PARAMETROS)
            {"NombreIdFiscal", "NomIdFisc"},
            {"SimboloMoneda", "SimbMoneda"},
            {"CorreoElectronico", "Correo"},
            {"CongelarFacturas", "CongFactur"},
            {"MostrarBalanceDiario", "MostBalanc"},
            {"DiscriminarImpuestoPrecio", "DiscImpPre"},
            {"DiscriminarImpuestoPrecios", "DiscImpPrs"},
            {"ManejarClientesAfiliadosEspeciales", "CliAfilEsp"},
            {"MargenAuxFact", "MargAuxFac"},
            {"ControlFactura", "ControlFac"},
            {"MargenFacturacionOrdenDespacho", "MargFacOD"},
            {"DiasFacturarOrdenDespacho", "DiasFacOD"},
            {"UsaImpresoraFiscal", "UsaImpFisc"},
            {"ActualizarPreciosArchivosExternos", "ActPreArch"},
            {"NumeroConteos", "NumConteos"},
            {"DejarEditar", "DejaEditar"},
            {"ServidorTelmar", "SrvTelmar"},
            {"CtaDevolucionVentaExenta", "CtaDevVExe"},
            {"AutorizarEliminarItemFactura", "AutElimIt"},
            {"ComportamientoExportar", "CompExport"},
            {"VisualizarPromocion", "VerPromo"},
            {"VerificarCasaMatriz", "VerifCasaM"},
            {"FacturasCongeladasEnAjustes", "FacCongAju"},
            {"AgruparFacturasCongeladasEnAjustes", "AgrFacCong"},
            {"PermitirFacturaContingencia", "FacContin"},
            {"RutaReporte", "RutaRepor"},
            {"CtaVentaGravada", "CtaVtaGrav"},
            {"CtaVentaExenta", "CtaVtaExen"},
            {"CtaImpuestoVenta", "CtaImpVta"},
            {"CtaPorCobrarDiferenciaCierre", "CtaCxCDif"},
            {"CtaCostoVenta", "CtaCostVta"},
            {"CtaInventarioGravado", "CtaInvGrav"},
            {"CtaInventarioExento", "CtaInvExen"},
            {"CtaPorPagarProveedorNac", "CtaCxPNac"},
            {"CtaPorPagarProveedorInt", "CtaCxPInt"},
            {"CtaAcreedores", "CtaAcreed"},
            {"CtaImpuestoCompraNac", "CtaImpCNac"},
            {"CtaImpuestoCompraInt", "CtaImpCInt"},
            {"CtaDevolucionVenta", "CtaDevVta"},
            {"CtaImpuestoDevVenta", "CtaImpDevV"},
            {"CtaPorCobrar", "CtaCxC"},
            {"TerceroVentaTienda", "TercVtaTda"},
            {"TerceroTributario", "TercTribut"},
            {"TerceroAgenteAduana", "TercAgAdua"},
            {"ServidorContable", "SrvContab"},
            {"BaseDatosContable", "BDContab"},
            {"ItemsPorFactura", "ItemsFact"},
            {"ExportaInformacionCasaMatriz", "ExpInfCasM"},
            {"ManejarCantidadesDecimales", "CantDecim"},
            {"UltExportacion", "UltExport"},
            {"ValorImpuesto", "ValorImp"},
            {"UltimaFactura", "UltFactura"},
            {"UltimaDevolucion", "UltDevoluc"},

            // Registers and fiscal printers
            {"TipoListaPrecio", "TipListPre"},
            {"TipoReporte", "TipoRepor"},
            {"PermiteDescuento", "PermDescto"},
            {"PermiteFacturarOrdenDespacho", "PermFacOD"},
            {"PermiteFacturasExentas", "PermFacExe"},
            {"PermiteAlternarListas", "PermAltLis"},
            {"CambiarPrecios", "CambPrecio"},
            {"RequerirAutorizacion", "ReqAutoriz"},
            {"IdImpresoraFiscal", "IdImpFisc"},
            {"MaximoZDiario", "MaxZDiario"},
            {"MontoMaximoDiario", "MontoMaxD"},
            {"FacturaInicial", "FactInicia"},
            {"FacturaFinal", "FactFinal"},
            {"HoraApertura", "HoraAper"},
            {"ReporteZTexto", "ReporteZ"},
            {"NumeroReporteZ", "NumRepZ"},
            {"FechaApertura", "FecApertur"},
            {"SerieImpresora", "SerieImpre"},
            {"FechaReporteZ", "FecRepZ"},
            {"FechaSistema", "FecSistema"},

            // Articles and master data
            {"CodigoMarca", "CodMarca"},
            {"CodigoColor", "CodColor"},
            {"TipoImpuesto", "TipoImpues"},
            {"UltimaActualizacion", "UltActual"},
            {"FechaPrimerMovimiento", "FecPrimMov"},
            {"PuntoReorden", "PtoReorden"},
            {"PrecioDetal", "PreDetal"},
            {"PrecioMayor", "PreMayor"},
            {"PrecioAfiliado", "PreAfiliad"},
            {"PrecioPromocion", "PrePromo"},
            {"FechaInicial", "FecInicial"},
            {"ExistenciaInicial", "ExistIni"},
            {"CostoInicial", "CostoIni"},
            {"CostoPromedio", "CostoProm"},
            {"UltimoCosto", "UltCosto"},
            {"Serializado", "Serializad"},
            {"CodigoBarraAnt", "CodBarAnt"},
            {"FechaIngreso", "FecIngreso"},
            {"FechaNacimiento", "FecNacim"},
            {"TipoContribuyente", "TipoContri"},
            {"PorcentajeUtilidad", "PorcUtil"},
            {"CodigoPostal", "CodPostal"},
            {"HoraEntrada", "HoraEntra"},
            {"ExentaDeImpuesto", "ExentaImp"},
            {"PorcentajeDeRedondeo", "PorcRedond"},
            {"CuentaDevolucion", "CtaDevoluc"},
            {"FechaRegistro", "FecRegist"},
            {"UsuarioCreacion", "UsuCreacio"},

            // Documents
            {"TotalMercancia", "TotMercan"},
            {"TotalDescuento", "TotDescto"},
            {"TotalImpuesto", "TotImpues"},
            {"TotalImpuestoContable", "TotImpCont"},
            {"TotalDolares", "TotDolares"},
            {"TotalEfectivo", "TotEfecti"},
            {"TotalCheques", "TotCheques"},
            {"InterContable", "InterCont"},
            {"NumeroOrden", "NumOrden"},
            {"DiasCredito", "DiasCred"},
            {"PrecioLista", "PreLista"},
            {"PorcentajeImpuesto", "PorcImpues"},
            {"PorcentajeDescuento", "PorcDescto"},
            {"CantidadDevuelta", "CantDevuel"},
            {"JSON_Merchant", "JSONMercha"},
            {"NumeroDevolucion", "NumDev"},
            {"SerieFactura", "SerieFact"},
            {"CuentaBanco", "CtaBanco"},
            {"Observacion", "Observac"},
            {"CodigoContable", "CodContab"},
            {"FechaEmision", "FecEmision"},
            {"DocumentoOrigen", "DocOrigen"},
            {"DocumentoDestino", "DocDestino"},
            {"TipodocumentoOrigen", "TipoDocOri"},
            {"TipoDocumentoDestino", "TipoDocDes"},
            {"ExistenciaLogica", "ExistLogic"},
            {"ExistenciaFisica", "ExistFisic"},
            {"CantidadSugerida", "CantSuger"},
            {"CantidadPedida", "CantPedida"},
            {"FechaFactura", "FecFactura"},
            {"TasaServicio", "TasaServic"},
            {"OtrosImpuestos", "OtrosImp"},
            {"PorcImpuestoGeneral", "PorcImpGen"},
            {"MetodoValorizacion", "MetValoriz"},
            {"PrecioFactura", "PreFactura"},
            {"PrecioProrrateado", "PreProrrat"},
            {"FechaAprobacion", "FecAprob"},
            {"NumeroDocumento", "NumDocumen"},
            {"NumeroAprobacion", "NumAprob"},
            {"BancoOrigen", "BcoOrigen"},
            {"MontoCancelado", "MontoCanc"},
            {"FactorDetal", "FactDetal"},
            {"FactorMayor", "FactMayor"},
            {"FactorAfiliado", "FactAfilia"},
            {"PrecioDetalSugerido", "PreDetSug"},
            {"PrecioMayorSugerido", "PreMaySug"},
            {"PrecioAfiliadoSugerido", "PreAfiSug"},
            {"UsuarioAutoriza", "UsuAutoriz"},
            {"NumeroCajaDocumento", "NumCajaDoc"},
            {"NumeroTransferencia", "NumTransf"},
            {"NumeroCajaTransferencia", "NumCajaTra"},
            {"TipoDocumentoOrigen", "TipoDocOri"},

            // Exchange settings
            {"ServidorFTP", "ServidFTP"},
            {"TipoTransferencia", "TipoTransf"},
            {"TipoConexion", "TipoConex"},
            {"PuertoSaliente", "PuertoSal"},

            // IGTF and contingency documents
            {"PorcentajeIGTF", "PorcIGTF"},
            {"Contingencia", "Contingen"},
        };
        QHash<QString, QString> m;
        for (const auto& [column, short_] : pairs)
            m.insert(QString::fromLatin1(column).toUpper(), QString::fromLatin1(short_));
        return m;
    }();
    return map;
}

} // namespace

QString dbfName(const QString& column) {
    const auto it = names().constFind(column.toUpper());
    if (it != names().cend())
        return *it;
    return column.left(10);
}

bool hasFixedDbfName(const QString& column) {
    return names().contains(column.toUpper());
}

} // namespace orvo::exchange::package
