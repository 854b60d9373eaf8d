// Purchase orders, purchases and their returns, store orders, receptions and remissions.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

namespace {

// Suppliers' unit prices and the costs prorated from them keep six decimals.
Column unitPrice(const QString& name) {
    return numeric(name, 18, 6);
}

// Goods counted in numbered boxes; the same article may stand in several boxes, and a box is
// rewritten whole when it is saved, so the lines carry no key.
QList<Column> boxLine() {
    return {integer("Numero"),       integer("NumeroCaja"), integer("Item"),
            text("CodigoBarra", 15), quantity("Cantidad"),  text("Usuario", 20),
            dateTime("Fecha"),       money("Precio"),       cost("Costo")};
}

// The purchases a reception or remission covers; rewritten whole on every save.
Table coveredPurchases(const QString& name) {
    return table(name, {integer("Numero"), text("Documento", 12), text("Proveedor", 15)}, {},
                 {{"Numero"}, {"Documento", "Proveedor"}});
}

} // namespace

QList<Table> purchaseTables() {
    QList<Column> receptionLine = boxLine();
    receptionLine << smallint("Status");
    QList<Column> remissionLine = boxLine();
    remissionLine << dateTime("FechaCierre") << text("DireccionIP", 45) << smallint("Chequeado")
                  << smallint("Status");

    return {
        table("ORDENCOMPRAS",
              {integer("Numero"), text("Proveedor", 15), dateTime("Fecha"),
               text("Observacion", 255), money("TotalMercancia"), money("TotalImpuesto"),
               text("Usuario", 20), smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVORDENCOMPRAS",
              {integer("Numero"), text("CodigoBarra", 15), quantity("Cantidad"),
               percent("PorcentajeImpuesto"), unitPrice("Precio"), money("Impuesto"),
               integer("Item")},
              {"Numero", "Item"}),
        // Keyed by the supplier's invoice number and the supplier.
        table("COMPRAS",
              {text("Documento", 12),
               text("Proveedor", 15),
               dateTime("Fecha"),
               dateTime("FechaFactura"),
               smallint("TipoPago"),
               integer("DiasCredito"),
               text("Expediente", 30),
               text("Observacion", 255),
               money("TotalMercancia"),
               money("TotalImpuesto"),
               money("TotalImpuestoContable"),
               percent("PorcentajeDescuento"),
               money("TotalDescuento"),
               rate("TasaCambio"),
               money("Recargos"),
               money("TasaServicio"),
               money("OtrosImpuestos"),
               money("Flete"),
               money("Seguro"),
               percent("PorcImpuestoGeneral"),
               text("Usuario", 20),
               smallint("MetodoValorizacion"),
               smallint("InterContable"),
               smallint("Status"),
               integer("IDLote")},
              {"Documento", "Proveedor"}, {{"Fecha"}}),
        table("MOVCOMPRAS",
              {text("Documento", 12), text("Proveedor", 15), text("CodigoBarra", 15),
               quantity("Cantidad"), defaultTo(quantity("CantidadDevuelta"), "0"),
               percent("PorcentajeImpuesto"), unitPrice("PrecioFactura"),
               unitPrice("PrecioProrrateado"), money("Impuesto"), integer("Item")},
              {"Documento", "Proveedor", "Item"}, {{"CodigoBarra"}}),
        table("DEVCOMPRAS",
              {integer("Numero"), dateTime("Fecha"), text("Documento", 12), text("Proveedor", 15),
               money("TotalMercancia"), money("TotalImpuesto"), percent("PorcentajeDescuento"),
               money("TotalDescuento"), text("Observacion", 255), text("Usuario", 20),
               smallint("InterContable"), smallint("Status")},
              {"Numero"}, {{"Documento", "Proveedor"}, {"Fecha"}}),
        table("MOVDEVCOMPRAS",
              {integer("Numero"), integer("Item"), text("CodigoBarra", 15), quantity("Cantidad"),
               unitPrice("Precio"), percent("PorcentajeImpuesto"), money("Impuesto")},
              {"Numero", "Item"}, {{"CodigoBarra"}}),
        table("PEDIDOS",
              {integer("Numero"), dateTime("Fecha"), text("Proveedor", 15),
               text("Observacion", 255), text("Usuario", 20), smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVPEDIDOS",
              {integer("Numero"), text("CodigoBarra", 15), quantity("Existencia"),
               quantity("CantidadSugerida"), quantity("CantidadPedida"), integer("Item")},
              {"Numero", "Item"}),
        table("RECEPCION",
              {integer("Numero"), text("Sucursal", 10), dateTime("Fecha"),
               dateTime("FechaAprobacion"), text("DocumentoOrigen", 20), text("Observacion", 255),
               smallint("Status"), smallint("InterContable"), smallint("IdTipoDocumento")},
              {"Numero"}, {{"Fecha"}}),
        table("MOVRECEPCION", receptionLine, {},
              {{"Numero", "NumeroCaja"}, {"Numero", "CodigoBarra"}}),
        coveredPurchases(QStringLiteral("RECEPCION_COMPRAS")),
        table("REMISION",
              {integer("Numero"), text("Sucursal", 10), dateTime("Fecha"),
               dateTime("FechaAprobacion"), text("DocumentoOrigen", 20), text("Observacion", 255),
               smallint("Status"), smallint("InterContable"), integer("GuiaDespacho"),
               smallint("IdTipoDocumento"), text("UsuarioAprobacion", 20), text("DireccionIP", 45),
               integer("IDLote")},
              {"Numero"}, {{"Fecha"}, {"GuiaDespacho"}}),
        table("MOVREMISION", remissionLine, {},
              {{"Numero", "NumeroCaja"}, {"Numero", "CodigoBarra"}}),
        coveredPurchases(QStringLiteral("REMISION_COMPRAS")),
        table("GUIADESPACHO",
              {integer("Numero"), dateTime("Fecha"), text("Conductor", 15), text("Vehiculo", 10),
               text("Observacion", 255), smallint("Status")},
              {"Numero"}, {{"Fecha"}}),
    };
}

} // namespace orvo::schema::tables
