#include "shell/record_form/master_data.h"

#include "shell/record_form/table_record_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/users/user_screens.h"

namespace orvo::shell {

namespace {

using Kind = RecordField::Kind;

RecordField code(int size, const QString& column = QStringLiteral("Codigo"),
                 const QString& label = QStringLiteral("Código")) {
    return {column, QStringLiteral("txt") + column, label, Kind::Text, size, 0, true};
}
RecordField numberCode(const QString& column = QStringLiteral("Codigo")) {
    return {column, QStringLiteral("txt") + column, QStringLiteral("Código"), Kind::Integer, 0, 0,
            true};
}
RecordField text(const QString& column, const QString& label, int size, bool required = false) {
    return {column, QStringLiteral("txt") + column, label, Kind::Text, size, 0, required};
}
RecordField name(int size = 60) {
    return text(QStringLiteral("Nombre"), QStringLiteral("Nombre"), size, true);
}
RecordField description() {
    return text(QStringLiteral("Descripcion"), QStringLiteral("Descripción"), 60, true);
}
RecordField status(const QString& column = QStringLiteral("Status")) {
    return {column, QStringLiteral("Opt") + column, QStringLiteral("Status"), Kind::Status};
}
RecordField flag(const QString& column, const QString& label) {
    return {column, QStringLiteral("chk") + column, label, Kind::Flag};
}
RecordField date(const QString& column, const QString& label) {
    return {column, QStringLiteral("dtp") + column, label, Kind::Date};
}
RecordField decimal(const QString& column, const QString& label, int scale) {
    return {column, QStringLiteral("txt") + column, label, Kind::Decimal, 0, scale};
}
RecordField integer(const QString& column, const QString& label) {
    return {column, QStringLiteral("txt") + column, label, Kind::Integer};
}
RecordField choice(const QString& column, const QString& label, const QString& query,
                   bool required = false) {
    RecordField f{column, QStringLiteral("cbo") + column, label, Kind::Choice, 0, 0, required};
    f.choices = query;
    return f;
}

RecordTable table(const QString& form, const QString& caption, const QString& tableName,
                  QList<RecordField> fields, int codeWidth = 0,
                  const QString& key = QStringLiteral("Codigo")) {
    RecordTable t;
    t.formName = form;
    t.caption = caption;
    t.table = tableName;
    t.key = key;
    t.fields = std::move(fields);
    t.codeWidth = codeWidth;
    t.reportTitle = caption;
    t.numericKey = t.keyField() && t.keyField()->kind == Kind::Integer;
    return t;
}

// Code, name and status with numbered codes: most catalogues.
RecordTable catalogue(const QString& form, const QString& caption, const QString& tableName,
                      int width = 3) {
    return table(form, caption, tableName, {code(10), name(), status()}, width);
}

RecordTable typeCatalogue(const QString& form, const QString& caption, const QString& tableName) {
    return table(form, caption, tableName, {code(10), description(), status()}, 2);
}

} // namespace

const QList<RecordTable>& masterTables() {
    static const QList<RecordTable> tables = {
        catalogue("frmColores", "Colores", "COLORES"),
        catalogue("frmMarcas", "Marcas", "MARCAS"),
        catalogue("frmFabricantes", "Fabricantes", "FABRICANTES"),
        catalogue("frmCategorias", "Categorías", "CATEGORIAS"),
        catalogue("frmBancos", "Bancos", "BANCOS"),
        catalogue("frmCargos", "Cargos", "CARGOS"),
        table("frmTallas", "Tallas", "TALLAS", {code(10), text("Talla", "Talla", 10, true)}, 3),
        table("frmImpuestos", "Impuestos", "IMPUESTOS",
              {numberCode(), name(), decimal("PorcentajeImpuesto", "Porcentaje de impuesto", 2)}),
        table("frmSucursales", "Sucursales", "SUCURSALES",
              {code(10), name(100), text("Direccion", "Dirección", 255),
               text("Telefono", "Teléfono", 30), status(),
               flag("ExentaDeImpuesto", "Exenta de impuesto"),
               decimal("PorcentajeDeRedondeo", "Porcentaje de redondeo", 2)},
              3),
        table("frmTrabajadores", "Trabajadores", "TRABAJADORES",
              {code(15, "Cedula", "Cédula"), text("Codigo", "Código", 10), name(100),
               choice("Cargo", "Cargo",
                      "SELECT Codigo, Nombre FROM CARGOS WHERE Status = 1 ORDER BY Nombre"),
               date("FechaIngreso", "Fecha de ingreso"),
               date("FechaNacimiento", "Fecha de nacimiento"), text("Direccion", "Dirección", 255),
               text("Telefono", "Teléfono", 30), text("Celular", "Celular", 30), status()},
              0, "Cedula"),
        table("frmVehiculos", "Vehículos", "VEHICULOS",
              {code(10, "Placa", "Placa"), text("Marca", "Marca", 30, true),
               text("Modelo", "Modelo", 30), status()},
              0, "Placa"),
        typeCatalogue("frmTiposContribuyente", "Tipos de contribuyente", "TIPOSCONTRIBUYENTE"),
        typeCatalogue("frmTiposCliente", "Tipos de cliente", "TIPOSCLIENTE"),
        typeCatalogue("frmTiposProveedor", "Tipos de proveedor", "TIPOSPROVEEDOR"),
        table("frmCuentasBancarias", "Cuentas bancarias", "CTABANCOS",
              {code(20), name(), flag("PuntoVenta", "Punto de venta"), status()}),
        table("frmCuentasContables", "Cuentas contables", "CTACONTABLE",
              {code(20), name(100), flag("ManejaDocumentos", "Maneja documentos"),
               flag("TieneAcreedor", "Tiene acreedor"),
               flag("CuentaDevolucion", "Cuenta de devolución"), status()}),
        table("frmTipoAjustes", "Tipos de ajuste", "TIPOAJUSTES",
              {numberCode(), name(), integer("Signo", "Signo (1 / -1)"), status()}),
        // The fiscal printers a register can name, with what each accepts per day.
        table("frmImpresorasFiscales", "Impresoras fiscales", "IMPRESORAFISCAL",
              {numberCode("ID"), text("NombreImpresora", "Nombre", 60, true),
               decimal("MontoMaximoDiario", "Monto máximo diario", 2), status()},
              0, "ID"),
        table("frmTiposDespacho", "Tipos de despacho", "TIPO_DESPACHO",
              {numberCode("ID"), description(), status("Estado")}, 0, "ID"),
        table("frmClientes", "Clientes", "CLIENTES",
              {code(15, "Codigo", "Código (RIF / cédula)"), name(100),
               date("FechaIngreso", "Fecha de ingreso"),
               date("FechaNacimiento", "Fecha de nacimiento"), text("Telefono", "Teléfono", 30),
               text("Fax", "Fax", 30), text("Celular", "Celular", 30),
               text("Direccion", "Dirección", 255), text("Transporte", "Transporte", 60),
               flag("Catalogo", "Catálogo"), status(),
               choice("Tipo", "Tipo de cliente",
                      "SELECT Codigo, Descripcion FROM TIPOSCLIENTE WHERE Status = 1 ORDER BY "
                      "Descripcion"),
               choice("TipoContribuyente", "Tipo de contribuyente",
                      "SELECT Codigo, Descripcion FROM TIPOSCONTRIBUYENTE WHERE Status = 1 "
                      "ORDER BY Descripcion"),
               decimal("PorcentajeUtilidad", "Porcentaje de utilidad", 2),
               text("EMail", "Correo electrónico", 100)}),
        table("frmProveedores", "Proveedores", "PROVEEDORES",
              {code(15, "Codigo", "Código (RIF)"), name(100),
               choice("Tipo", "Tipo de proveedor",
                      "SELECT Codigo, Descripcion FROM TIPOSPROVEEDOR WHERE Status = 1 ORDER BY "
                      "Descripcion"),
               date("FechaIngreso", "Fecha de ingreso"), text("Telefono", "Teléfono", 30),
               text("Fax", "Fax", 30), text("CodigoPostal", "Código postal", 10),
               text("Direccion", "Dirección", 255), text("Contacto", "Contacto", 60),
               text("Pais", "País", 40), text("Estado", "Estado", 40), text("Ciudad", "Ciudad", 40),
               status()}),
        table("frmVendedores", "Vendedores", "VENDEDOR",
              {code(10), text("Cedula", "Cédula", 15, true), name(100),
               date("FecNac", "Fecha de nacimiento"), date("FecIng", "Fecha de ingreso"),
               text("Direccion", "Dirección", 255), text("Telefono", "Teléfono", 30), status()},
              3),
    };
    return tables;
}

const RecordTable* masterTable(const QString& formName) {
    for (const RecordTable& t : masterTables())
        if (t.formName.compare(formName, Qt::CaseInsensitive) == 0)
            return &t;
    return nullptr;
}

void registerRecordScreens(const ScreenServices& services) {
    auto& registry = ScreenRegistry::instance();
    for (const RecordTable& t : masterTables()) {
        registry.add(t.formName, [t, services](QWidget* parent) -> QWidget* {
            return new TableRecordScreen(t, services.database(), services.userCode(), parent);
        });
    }
    users::registerUserScreens(services);
}

} // namespace orvo::shell
