// Invoices, returns, parked sales, receivables and dispatch orders.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

namespace {

// A line's unit prices keep the article's four decimals, so that the tax-included price the
// article was given is the one sold and printed (they had two until version 4).
Column linePrice(const QString& name) {
    return retyped(price(name), 4);
}

// The priced line shared by invoice, return and deleted-line tables, after the document key.
QList<Column> pricedLine(const QString& numberColumn, bool returnedQuantity) {
    QList<Column> c = {integer(numberColumn),         text("Serie", 10),       dateTime("Hora"),
                       text("TipoLista", 1),          text("CodigoBarra", 15), linePrice("Precio"),
                       linePrice("PrecioLista"),      cost("Costo"),           money("Impuesto"),
                       percent("PorcentajeImpuesto"), quantity("Cantidad")};
    if (returnedQuantity)
        c << defaultTo(quantity("CantidadDevuelta"), "0");
    c << integer("Item");
    if (returnedQuantity)
        c << text("Medida", 10); // copied along when an invoice is renumbered
    c << percent("PorcentajeDescuento");
    return c;
}

} // namespace

QList<Table> salesTables() {
    QList<Column> deletedLine = pricedLine(QStringLiteral("NumeroFactura"), true);
    deletedLine << text("TpoBorrado", 1) << text("Vendedor", 15) << text("Cliente", 15)
                << text("Cajero", 20) << text("UsuarioAutoriza", 20);

    return {
        table("VENTAS",
              {integer("NumeroFactura"), text("Serie", 10), dateTime("Fecha"),
               dateTime("Hora"), // kept and copied when an invoice is renumbered
               text("Vendedor", 15), text("Cliente", 15), smallint("TipoVenta"),
               text("FormaPago", 30), integer("DiasCredito"), money("TotalMercancia"),
               money("TotalDescuento"), money("TotalImpuesto"), money("TotalCosto"),
               smallint("InterContable"), text("Usuario", 20), smallint("Status"),
               integer("NumeroOrden"), money("TotalPago"), money("TotalDolares"),
               rate("TasaCambio"),
               // 0 from the save until the invoice is printed: a failed print can be
               // repeated and never makes a second sale. Older invoices count printed.
               since(smallint("Impresa", "1"), 2)},
              {"NumeroFactura", "Serie"}, {{"Serie", "Fecha"}, {"Fecha"}, {"Cliente"}}),
        table("MOVVENTAS", pricedLine(QStringLiteral("NumeroFactura"), true),
              {"NumeroFactura", "Serie", "Item"}, {{"CodigoBarra"}}),
        // Lines deleted from a sale or a cancelled sale: the same line may be deleted twice.
        table("MOVVENTASBORRADAS", deletedLine, {}, {{"NumeroFactura", "Serie"}, {"Hora"}}),
        table("PAGOSVENTA",
              {integer("NumeroFactura"), text("Serie", 10), integer("Item"), text("FormaPago", 30),
               dateTime("Fecha"), text("Documento", 30), text("Aprobacion", 30), text("Banco", 60),
               text("PuntoVenta", 60), money("Monto"), smallint("Status"), memo("JSON_Merchant")},
              {"NumeroFactura", "Serie", "Item"}, {{"Serie", "Fecha"}}),
        table("DEVVENTAS",
              {integer("NumeroDevolucion"), text("Serie", 10), integer("NumeroFactura"),
               dateTime("Fecha"), text("Vendedor", 15), text("Cliente", 15),
               money("TotalMercancia"), money("TotalDescuento"), money("TotalImpuesto"),
               money("TotalCosto"), smallint("TipoVenta"), smallint("InterContable"),
               text("Usuario", 20), smallint("Status"), text("SerieFactura", 10),
               // As VENTAS.Impresa: a credit note whose print failed is printed again, never
               // refunded twice.
               since(smallint("Impresa", "1"), 3)},
              {"NumeroDevolucion", "Serie"},
              {{"Serie", "Fecha"}, {"Fecha"}, {"NumeroFactura", "SerieFactura"}}),
        table("MOVDEVVENTAS", pricedLine(QStringLiteral("NumeroDevolucion"), false),
              {"NumeroDevolucion", "Serie", "Item"}, {{"CodigoBarra"}}),
        // Parked sales, numbered across the registers.
        withUniqueNumber(
            table("HISTVENTAS",
                  {integer("Numero"), text("Serie", 10), dateTime("Fecha"), text("Vendedor", 15),
                   text("Cliente", 15), smallint("TipoVenta"), text("FormaPago", 30),
                   integer("DiasCredito"), text("Usuario", 20), smallint("Status"),
                   integer("NumeroOrden"), smallint("Exenta"), money("TotalMercancia"),
                   money("TotalDescuento"), money("TotalImpuesto"), money("TotalCosto")},
                  {"Numero", "Serie"}, {{"Serie", "Fecha"}}),
            {"Numero"}, kUniqueNumbersVersion),
        table("HISTMOVVENTAS",
              {integer("Numero"), text("Serie", 10), dateTime("Hora"), text("TipoLista", 1),
               text("CodigoBarra", 15), linePrice("Precio"), linePrice("PrecioLista"),
               cost("Costo"), money("Impuesto"), percent("PorcentajeImpuesto"),
               quantity("Cantidad"), money("Descuento"), integer("Item"),
               percent("PorcentajeDescuento")},
              {"Numero", "Serie", "Item"}),
        // A renumbered invoice copies its receivable under a number of its own.
        withUniqueNumber(
            table("CUENTASXCOBRAR",
                  {integer("Numero"), text("Cliente", 15), integer("Factura"), text("Serie", 10),
                   money("Monto"), integer("DiasCredito"), dateTime("FechaFactura"),
                   dateTime("FechaAprobacion"), smallint("Status")},
                  {}, {{"Numero"}, {"Factura", "Serie"}, {"Cliente"}, {"FechaAprobacion"}}),
            {"Numero"}, kUniqueNumbersVersion),
        table("MOVCUENTASXCOBRAR",
              {integer("Numero"), integer("Item"), smallint("TipoPago"),
               text("NumeroDocumento", 30), text("NumeroAprobacion", 30), text("PuntoVenta", 60),
               text("BancoOrigen", 60), money("MontoCancelado"), dateTime("Fecha"),
               smallint("Status"), text("Serie", 10), smallint("InterContable")},
              {}, {{"Numero", "Item"}, {"Serie", "Fecha"}}),
        table("ORDENDESPACHO",
              {integer("Numero"), text("Serie", 10), dateTime("Fecha"), text("Cliente", 15),
               money("TotalMercancia"), money("TotalDescuento"), money("TotalImpuesto"),
               money("TotalCosto"), text("Observacion", 255), text("Usuario", 20),
               smallint("InterContable"), smallint("Status"), smallint("Exenta")},
              {"Numero"}, {{"Fecha"}, {"Cliente"}}),
        table("MOVORDENDESPACHO",
              {integer("Numero"), dateTime("Hora"), text("TipoLista", 1), text("CodigoBarra", 15),
               linePrice("Precio"), linePrice("PrecioLista"), cost("Costo"), money("Impuesto"),
               percent("PorcentajeImpuesto"), quantity("Cantidad"), money("Descuento"),
               integer("Item")},
              {"Numero", "Item"}, {{"CodigoBarra"}}),
    };
}

} // namespace orvo::schema::tables
