// Articles and the catalogues they and the documents refer to.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

namespace {

// Code, name and status: the shape of most catalogues.
Table catalogue(const QString& name, int codeSize = 10) {
    return table(name, {text("Codigo", codeSize), text("Nombre", 60), smallint("Status", "1")},
                 {"Codigo"});
}

Table typeCatalogue(const QString& name) {
    return table(name, {text("Codigo", 10), text("Descripcion", 60), smallint("Status", "1")},
                 {"Codigo"});
}

} // namespace

QList<Table> masterTables() {
    return {
        // One row per article variant; a model is (Referencia, CodigoMarca).
        table("INVENTARIO",
              {text("CodigoBarra", 15), text("Nombre", 100), text("Referencia", 20),
               text("CodigoMarca", 10), text("Talla", 10), text("CodigoColor", 10),
               text("Fabricante", 10), integer("TipoImpuesto"), dateTime("UltimaActualizacion"),
               dateTime("FechaPrimerMovimiento"), quantity("PuntoReorden"), text("Nota", 255),
               price("PrecioDetal"), price("PrecioMayor"), price("PrecioAfiliado"),
               smallint("Promocion"), price("PrecioPromocion"), dateTime("FechaInicial"),
               dateTime("FechaFinal"), text("Categoria", 20), quantity("ExistenciaInicial"),
               quantity("Existencia"), cost("CostoInicial"), cost("CostoPromedio"),
               cost("UltimoCosto"), cost("CostoDolar"), smallint("Tipo"), smallint("Status", "1"),
               smallint("Serializado"), text("CodigoBarraAnt", 15),
               // 1: sold by weight or measure, in quantities with decimals.
               since(smallint("Fraccionable", "0"), 4)},
              {"CodigoBarra"}, {{"Referencia", "CodigoMarca"}, {"UltimaActualizacion"}}),
        catalogue("MARCAS"),
        catalogue("COLORES"),
        // The category tree: Raiz is the parent's code; only detail categories take articles.
        table("CATEGORIAS",
              {text("Codigo", 20), text("Nombre", 60), smallint("Status", "1"), text("Raiz", 20),
               smallint("Detalle"), smallint("Maestra")},
              {"Codigo"}, {{"Raiz"}}),
        catalogue("FABRICANTES"),
        catalogue("BANCOS"),
        // Status: sizes arriving with a transfer are reactivated like the other catalogues.
        table("TALLAS", {text("Codigo", 10), text("Talla", 10), smallint("Status", "1")},
              {"Codigo"}),
        // Code 1 is the general rate; sale lines find their code back by the rate.
        table("IMPUESTOS", {integer("Codigo"), text("Nombre", 60), percent("PorcentajeImpuesto")},
              {"Codigo"}),
        table("CLIENTES",
              {text("Codigo", 15), text("Nombre", 100), dateTime("FechaIngreso"),
               dateTime("FechaNacimiento"), text("Telefono", 30), text("Fax", 30),
               text("Celular", 30), text("Direccion", 255), text("Transporte", 60),
               smallint("Catalogo"), smallint("Status", "1"), text("Tipo", 10),
               text("TipoContribuyente", 10), percent("PorcentajeUtilidad"), text("EMail", 100)},
              {"Codigo"}, {{"Nombre"}}),
        typeCatalogue("TIPOSCLIENTE"),
        typeCatalogue("TIPOSCONTRIBUYENTE"),
        typeCatalogue("TIPOSPROVEEDOR"),
        table("PROVEEDORES",
              {text("Codigo", 15), text("Nombre", 100), text("Tipo", 10), dateTime("FechaIngreso"),
               text("Telefono", 30), text("Fax", 30), text("CodigoPostal", 10),
               text("Direccion", 255), text("Contacto", 60), text("Pais", 40), text("Estado", 40),
               text("Ciudad", 40), smallint("Status", "1")},
              {"Codigo"}),
        table("VENDEDOR",
              {text("Codigo", 10), text("Cedula", 15), text("Nombre", 100), dateTime("FecNac"),
               dateTime("FecIng"), text("Direccion", 255), text("Telefono", 30),
               smallint("Status", "1")},
              {"Codigo"}, {{"Cedula"}}),
        table("VEHICULOS",
              {text("Placa", 10), text("Marca", 30), text("Modelo", 30), smallint("Status", "1")},
              {"Placa"}),
        table("CTABANCOS",
              {text("Codigo", 20), text("Nombre", 60), smallint("PuntoVenta"),
               smallint("Status", "1")},
              {"Codigo"}),
        table("CTACONTABLE",
              {text("Codigo", 20), text("Nombre", 100), smallint("ManejaDocumentos"),
               smallint("TieneAcreedor"), smallint("CuentaDevolucion"), smallint("Status", "1")},
              {"Codigo"}),
        // Signo is +1 or -1; codes 998 and 999 belong to the partial adjustment.
        table("TIPOAJUSTES",
              {integer("Codigo"), text("Nombre", 60), smallint("Signo"), smallint("Status", "1")},
              {"Codigo"}),
        // IDs travel with the transfers from head office, so they are not engine-assigned.
        table("TIPO_DESPACHO", {integer("ID"), text("Descripcion", 60), smallint("Estado", "1")},
              {"ID"}),
        table("LOTES",
              {identity("ID"), text("Lote", 30), text("Descripcion", 100),
               dateTime("FechaRegistro"), smallint("Estado", "1"), text("UsuarioCreacion", 20)},
              {}, {{"Lote"}}),
        table("CODIGOSERIAL",
              {text("CodigoBarra", 15), text("Serial", 40), smallint("Status", "1")}, {},
              {{"CodigoBarra", "Serial"}, {"Serial"}}),
        // Payment ways; the logic knows them by Nombre.
        table("FORMAPAGO",
              {integer("Codigo"), text("Nombre", 30), smallint("Status", "1"), integer("Orden")},
              {"Codigo"}),
        table("TASA_CAMBIO", {identity("ID"), defaultNow(dateTime("Fecha")), rate("Valor")}, {},
              {{"Fecha"}}),
    };
}

} // namespace orvo::schema::tables
