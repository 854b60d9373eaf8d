// Registers, their fiscal printers, the register day and the cash of the day.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

QList<Table> registerTables() {
    return {
        table("CAJAS",
              {text("Serie", 10), smallint("Numero"), money("FondoCaja"),
               smallint("TipoListaPrecio"), smallint("TipoVenta"), smallint("TipoReporte"),
               smallint("PermiteDescuento"), smallint("PermiteFacturarOrdenDespacho"),
               defaultTo(integer("UltimaFactura"), "0"), smallint("PermiteFacturasExentas"),
               smallint("PermiteAlternarListas"), smallint("CambiarPrecios"),
               smallint("RequerirAutorizacion"), integer("IdImpresoraFiscal"),
               smallint("PermitirFacturaContingencia"), defaultTo(integer("MaximoZDiario"), "0"),
               defaultTo(integer("UltimaDevolucion"), "0"),
               // The register charges IGTF on foreign currency (its printer has flag 50 on).
               since(smallint("IGTF"), 4)},
              {"Serie"}),
        table("IMPRESORAFISCAL",
              {integer("ID"), text("NombreImpresora", 60), smallint("IdProcesoImpresion"),
               money("MontoMaximoDiario"), smallint("Status", "1")},
              {"ID"}),
        // History of serie changes of a register.
        table("CAJASCAMBIOS",
              {text("Serie", 10), smallint("Numero"), text("SerieCambio", 10),
               smallint("NumeroCambio"), dateTime("FechaCambio"), integer("UltimaFactura"),
               integer("UltimaDevolucion")},
              {}, {{"Serie", "FechaCambio"}}),
        // One row per register and day.
        table("DIARIOCAJA",
              {text("Serie", 10), dateTime("Fecha"), smallint("Numero"), integer("FacturaInicial"),
               integer("FacturaFinal"), percent("PorcentajeImpuesto"), dateTime("HoraApertura"),
               smallint("Status"), memo("ReporteZTexto"), dateTime("HoraCierre"),
               integer("NumeroReporteZ"), defaultTo(money("Acumulado"), "0")},
              {}, {{"Serie", "Fecha"}, {"Fecha"}}),
        // One row per Z report issued at a closing.
        table("DIARIOREPORTEZ",
              {dateTime("FechaApertura"), text("SerieImpresora", 20), integer("NumeroReporteZ"),
               memo("ReporteZTexto"), dateTime("FechaReporteZ"), text("Serie", 10),
               defaultNow(dateTime("FechaSistema"))},
              {}, {{"Serie", "FechaApertura"}, {"FechaSistema"}}),
        table("PORCENTAJECAJA",
              {text("Serie", 10), percent("Porcentaje"), smallint("IndEstatus"),
               integer("DiasEjecucion"), money("MontoMinimo")},
              {"Serie"}),
        // Cash withdrawals and refunds.
        table("SALIDASCAJA",
              {integer("Numero"), text("Serie", 10), dateTime("Fecha"), text("CodigoContable", 20),
               text("Acreedor", 100), text("Documento", 30), text("Descripcion", 255),
               money("Monto"), text("Usuario", 20), smallint("Status")},
              {"Numero", "Serie"}, {{"Serie", "Fecha"}}),
        table("DEPOSITOS",
              {text("NumeroDeposito", 30), text("CuentaBanco", 20), text("Serie", 10),
               dateTime("Fecha"), money("TotalEfectivo"), money("TotalCheques"),
               text("Observacion", 255), text("Usuario", 20), smallint("Status")},
              {"NumeroDeposito", "CuentaBanco", "Serie"}, {{"Serie", "Fecha"}}),
        table("MOVDEPOSITOS",
              {text("NumeroDeposito", 30), text("CuentaBanco", 20), text("Serie", 10),
               integer("Item"), integer("Factura"), text("Cheque", 30), text("Banco", 60),
               money("Monto")},
              {"NumeroDeposito", "CuentaBanco", "Serie", "Item"}),
        table("CONFIRMACION_DEPOSITO",
              {identity("ID"), dateTime("FechaRegistro"), dateTime("FechaDeposito"),
               dateTime("FechaVenta"), text("NumeroDeposito", 30), text("CodigoBanco", 20),
               money("Monto"), text("Nota", 255), smallint("Status")},
              {}, {{"FechaDeposito"}, {"NumeroDeposito"}}),
        // Audit copy written on every change: the same row many times, no key.
        table("CONFIRMACION_DEPOSITO_AUD",
              {integer("ID"), dateTime("FechaRegistro"), dateTime("FechaDeposito"),
               dateTime("FechaVenta"), text("NumeroDeposito", 30), text("CodigoBanco", 20),
               money("Monto"), text("Nota", 255), smallint("Status"), text("Usuario", 20)},
              {}, {{"ID"}}),
    };
}

} // namespace orvo::schema::tables
