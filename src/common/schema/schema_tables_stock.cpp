// Transfers between branches, their received copies, adjustments, physical counts, serials and
// price lists.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

namespace {

// A count page header (TOMAFISICA1, TOMAFISICA2 list Usuario before Fecha).
Table countPage(const QString& name) {
    return table(name,
                 {integer("NumeroPagina"), text("Usuario", 20), dateTime("Fecha"),
                  text("Observacion", 255), smallint("Status")},
                 {"NumeroPagina"});
}

} // namespace

QList<Table> stockTables() {
    return {
        table("TRANSFERENCIAS",
              {integer("Numero"), dateTime("Fecha"), dateTime("FechaEmision"),
               text("CodigoRecibe", 10), text("CodigoEnvia", 10), money("TotalValor"),
               text("Observacion", 255), text("Usuario", 20), smallint("InterContable"),
               smallint("Status"), integer("IDLote"), integer("IDDespacho"),
               text("DocumentoOrigen", 20)},
              {"Numero"}, {{"Fecha"}, {"CodigoRecibe"}}),
        // Lines are merged by (Numero, CodigoBarra, NumeroCaja); Valor is the sender's unit cost.
        table("MOVTRANSFERENCIAS",
              {integer("Numero"), dateTime("Fecha"), text("CodigoBarra", 15), quantity("Cantidad"),
               cost("Valor"), integer("NumeroCaja"), integer("Item")},
              {}, {{"Numero", "CodigoBarra", "NumeroCaja"}, {"CodigoBarra"}}),
        table("DEVTRANSFERENCIAS",
              {integer("Numero"), dateTime("Fecha"), dateTime("FechaEmision"),
               text("CodigoEnvia", 10), text("CodigoRecibe", 10), text("DocumentoOrigen", 20),
               money("TotalValor"), text("Observacion", 255), text("Usuario", 20),
               smallint("Status"), smallint("InterContable"), integer("IDLote")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVDEVTRANSFERENCIAS",
              {integer("Numero"), text("CodigoBarra", 15), cost("Valor"), quantity("Cantidad"),
               integer("NumeroCaja"), integer("Item"), dateTime("Fecha")},
              {}, {{"Numero", "CodigoBarra", "NumeroCaja"}, {"CodigoBarra"}}),
        // Received copies, keyed by number and sending store; loaded as the packages come.
        table("ITRANSFERENCIAS",
              {integer("Numero"), text("CodigoEnvia", 10), text("CodigoRecibe", 10),
               dateTime("Fecha"), dateTime("FechaEmision"), money("TotalValor"),
               text("Observacion", 255), smallint("InterContable"), smallint("Status"),
               text("Usuario", 20), integer("IDLote"), integer("IDDespacho")},
              {}, {{"Numero", "CodigoEnvia"}, {"Fecha"}}),
        table("IMOVTRANSFERENCIAS",
              {integer("Numero"), text("CodigoEnvia", 10), integer("Item"), dateTime("Fecha"),
               text("CodigoBarra", 15), quantity("Cantidad"), cost("Valor"), integer("NumeroCaja")},
              {}, {{"Numero", "CodigoEnvia"}, {"CodigoBarra"}}),
        table("IDEVTRANSFERENCIAS",
              {integer("Numero"), text("CodigoEnvia", 10), text("CodigoRecibe", 10),
               dateTime("Fecha"), dateTime("FechaEmision"), text("Observacion", 255),
               smallint("Status"), text("Usuario", 20), integer("IDLote"), money("TotalValor"),
               smallint("InterContable")},
              {}, {{"Numero", "CodigoEnvia"}, {"Fecha"}}),
        table("IMOVDEVTRANSFERENCIAS",
              {integer("Numero"), text("CodigoEnvia", 10), integer("Item"), dateTime("Fecha"),
               text("CodigoBarra", 15), quantity("Cantidad"), integer("NumeroCaja"), cost("Valor")},
              {}, {{"Numero", "CodigoEnvia"}, {"CodigoBarra"}}),
        // Which supplier documents were already turned into transfers or dispatch orders.
        table("TRANSFERENCIASAUTOMATICA",
              {text("Proveedor", 15), text("NumeroDocumento", 20), integer("NumeroCajaDocumento"),
               text("Sucursal", 10), integer("NumeroTransferencia"),
               integer("NumeroCajaTransferencia"), text("Usuario", 20), dateTime("FechaRegistro"),
               text("TipoDocumentoOrigen", 2)},
              {}, {{"Proveedor", "NumeroDocumento"}}),
        table("ORDENDESPACHOAUTOMATICA",
              {text("Proveedor", 15), text("NumeroDocumento", 20), text("Cliente", 15),
               integer("NumeroOrden"), text("Usuario", 20), dateTime("FechaRegistro"),
               text("TipoDocumentoOrigen", 2)},
              {}, {{"Proveedor", "NumeroDocumento"}}),
        // Which document was converted into which.
        table("BITACORAMOVIMIENTO",
              {integer("Numero"), text("TipodocumentoOrigen", 10), text("DocumentoOrigen", 20),
               text("Origen", 15), text("tipoDocumentoDestino", 10), text("DocumentoDestino", 20),
               text("Destino", 15), dateTime("fecha"), text("Usuario", 20),
               text("Observacion", 255)},
              {}, {{"TipodocumentoOrigen", "DocumentoOrigen"}, {"fecha"}}),
        // Transfer-return drafts prepared by the other store.
        table("DEVBORRADOR",
              {integer("Numero"), dateTime("Fecha"), text("Observacion", 255), text("Usuario", 20),
               smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVDEVBORRADOR",
              {integer("Numero"), text("CodigoBarra", 15), quantity("Cantidad"),
               integer("NumeroCaja"), integer("Item"), cost("Costo")},
              {}, {{"Numero"}}),
        table("AJUSTES",
              {integer("Numero"), dateTime("Fecha"), integer("TipoAjuste"), smallint("Signo"),
               money("TotalValor"), text("Observacion", 255), text("Usuario", 20),
               smallint("InterContable"), smallint("Status"), integer("IDLote")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVAJUSTES",
              {integer("Numero"), integer("Item"), text("CodigoBarra", 15), quantity("Cantidad"),
               cost("Costo")},
              {"Numero", "Item"}, {{"CodigoBarra"}}),
        countPage(QStringLiteral("TOMAFISICA1")),
        countPage(QStringLiteral("TOMAFISICA2")),
        table("TOMAFISICA3",
              {integer("NumeroPagina"), dateTime("Fecha"), text("Observacion", 255),
               text("Usuario", 20), smallint("Status")},
              {"NumeroPagina"}),
        // Count lines: preparing count 3 merges lines by barcode, so Item is not a key.
        table("MOVTOMAFISICA1",
              {integer("NumeroPagina"), integer("Item"), text("CodigoBarra", 15),
               quantity("Cantidad"), dateTime("Hora")},
              {}, {{"NumeroPagina", "CodigoBarra"}}),
        table("MOVTOMAFISICA2",
              {integer("NumeroPagina"), text("CodigoBarra", 15), quantity("Cantidad"),
               integer("Item"), dateTime("Hora")},
              {}, {{"NumeroPagina", "CodigoBarra"}}),
        table("MOVTOMAFISICA3",
              {integer("NumeroPagina"), integer("Item"), text("CodigoBarra", 15),
               quantity("Cantidad1"), quantity("Cantidad2"), quantity("Cantidad3"),
               dateTime("Hora")},
              {}, {{"NumeroPagina", "CodigoBarra"}, {"CodigoBarra"}}),
        // One row per article per physical-logical adjustment (filled by INSERT ... SELECT).
        table("FISICOLOGICO",
              {dateTime("FechaAjuste"), text("CodigoBarra", 15), money("Precio"), money("Impuesto"),
               cost("Costo"), quantity("ExistenciaLogica"), quantity("ExistenciaFisica"),
               quantity("Ajuste")},
              {}, {{"FechaAjuste", "CodigoBarra"}, {"CodigoBarra"}}),
        // Daily stock balance per article, rebuilt from the movements.
        table("SALDODIARIO",
              {dateTime("Fecha"), text("CodigoBarra", 15), quantity("Existencia"), cost("Costo"),
               defaultNow(dateTime("FechaRegistro"))},
              {}, {{"Fecha", "CodigoBarra"}, {"CodigoBarra"}}),
        table("SERIALES",
              {integer("Numero"), dateTime("Fecha"), text("TipoMovimiento", 2),
               text("Documento", 20), text("Tercero", 15), text("Observacion", 255),
               text("Usuario", 20), smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVSERIALES",
              {integer("Numero"), text("CodigoBarra", 15), text("Serial", 40), integer("Item")},
              {"Numero", "Item"}, {{"Serial"}}),
        table("LISTAPRECIO",
              {integer("Numero"), dateTime("Fecha"), rate("FactorDetal"), rate("FactorMayor"),
               rate("FactorAfiliado"), text("Observacion", 255), text("Usuario", 20),
               smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
        // One line per model; price lists arrive from head office as files.
        table("MOVLISTAPRECIO",
              {integer("Numero"), text("Referencia", 20), text("CodigoMarca", 10), cost("Costo"),
               percent("Descuento"), price("PrecioDetalSugerido"), price("PrecioDetal"),
               price("PrecioMayorSugerido"), price("PrecioMayor"), price("PrecioAfiliadoSugerido"),
               price("PrecioAfiliado"), price("PrecioPromocion"), smallint("Promocion"),
               dateTime("FechaInicial"), dateTime("FechaFinal")},
              {}, {{"Numero", "Referencia", "CodigoMarca"}, {"Referencia", "CodigoMarca"}}),
        // Barcode label print queues.
        table("CODE128A", {text("CodigoBarra", 15), text("Nombre", 100), money("PrecioDetal"),
                           money("Impuesto"), money("Total")}),
        table("CODE128C", {text("CodigoBarra", 15), text("Nombre", 100), money("PrecioDetal"),
                           money("Impuesto"), money("Total")}),
        table("EAN13", {text("CodigoBarra", 15), text("Nombre", 100), money("PrecioDetal"),
                        money("Impuesto"), money("Total")}),
    };
}

} // namespace orvo::schema::tables
