#include "common/schema/references.h"

#include "common/db/sql.h"
#include "common/schema/schema.h"

#include <stdexcept>

namespace orvo::schema {

namespace {

using Uses = QList<std::pair<const char*, const char*>>;

void add(QList<Reference>& out, const char* master, const char* key, const Uses& uses) {
    for (const auto& [table, column] : uses)
        out.append({QString::fromLatin1(master), QString::fromLatin1(key),
                    QString::fromLatin1(table), QString::fromLatin1(column)});
}

} // namespace

const QList<Reference>& references() {
    static const QList<Reference> all = [] {
        QList<Reference> r;
        add(r, "COLORES", "Codigo", {{"INVENTARIO", "CodigoColor"}});
        add(r, "MARCAS", "Codigo",
            {{"INVENTARIO", "CodigoMarca"}, {"MOVLISTAPRECIO", "CodigoMarca"}});
        add(r, "TALLAS", "Codigo", {{"INVENTARIO", "Talla"}});
        add(r, "FABRICANTES", "Codigo", {{"INVENTARIO", "Fabricante"}});
        add(r, "CATEGORIAS", "Codigo", {{"INVENTARIO", "Categoria"}, {"CATEGORIAS", "Raiz"}});
        add(r, "IMPUESTOS", "Codigo", {{"INVENTARIO", "TipoImpuesto"}});
        add(r, "CLIENTES", "Codigo",
            {{"VENTAS", "Cliente"},
             {"DEVVENTAS", "Cliente"},
             {"HISTVENTAS", "Cliente"},
             {"CUENTASXCOBRAR", "Cliente"},
             {"ORDENDESPACHO", "Cliente"}});
        add(r, "PROVEEDORES", "Codigo",
            {{"COMPRAS", "Proveedor"},
             {"DEVCOMPRAS", "Proveedor"},
             {"ORDENCOMPRAS", "Proveedor"},
             {"PEDIDOS", "Proveedor"}});
        // Sellers are workers; VENTAS.Vendedor holds the worker's identity card.
        add(r, "TRABAJADORES", "Cedula",
            {{"VENTAS", "Vendedor"},
             {"DEVVENTAS", "Vendedor"},
             {"HISTVENTAS", "Vendedor"},
             {"CONTROLACCESO", "Cedula"}});
        add(r, "CARGOS", "Codigo", {{"TRABAJADORES", "Cargo"}});
        add(r, "CTABANCOS", "Codigo", {{"DEPOSITOS", "CuentaBanco"}});
        add(r, "CTACONTABLE", "Codigo", {{"SALIDASCAJA", "CodigoContable"}});
        add(r, "TIPOSCLIENTE", "Codigo", {{"CLIENTES", "Tipo"}});
        add(r, "TIPOSCONTRIBUYENTE", "Codigo", {{"CLIENTES", "TipoContribuyente"}});
        add(r, "TIPOSPROVEEDOR", "Codigo", {{"PROVEEDORES", "Tipo"}});
        add(r, "SUCURSALES", "Codigo",
            {{"TRANSFERENCIAS", "CodigoRecibe"},
             {"TRANSFERENCIAS", "CodigoEnvia"},
             {"DEVTRANSFERENCIAS", "CodigoRecibe"},
             {"DEVTRANSFERENCIAS", "CodigoEnvia"},
             {"REMISION", "Sucursal"},
             {"RECEPCION", "Sucursal"}});
        add(r, "VEHICULOS", "Placa", {{"GUIADESPACHO", "Vehiculo"}});
        add(r, "TIPOAJUSTES", "Codigo", {{"AJUSTES", "TipoAjuste"}});
        add(r, "IMPRESORAFISCAL", "ID", {{"CAJAS", "IdImpresoraFiscal"}});
        add(r, "FORMAPAGO", "Codigo", {{"PAGOSVENTA", "FormaPago"}});
        add(r, "INVENTARIO", "CodigoBarra",
            {{"MOVVENTAS", "CodigoBarra"},
             {"MOVDEVVENTAS", "CodigoBarra"},
             {"HISTMOVVENTAS", "CodigoBarra"},
             {"MOVCOMPRAS", "CodigoBarra"},
             {"MOVDEVCOMPRAS", "CodigoBarra"},
             {"MOVTRANSFERENCIAS", "CodigoBarra"},
             {"MOVDEVTRANSFERENCIAS", "CodigoBarra"},
             {"MOVAJUSTES", "CodigoBarra"},
             {"MOVSERIALES", "CodigoBarra"}});
        return r;
    }();
    return all;
}

QList<Reference> referencesTo(const QString& masterTable) {
    QList<Reference> out;
    for (const Reference& r : references())
        if (r.master.compare(masterTable, Qt::CaseInsensitive) == 0)
            out << r;
    return out;
}

QString usedBy(const QSqlDatabase& db, const QString& masterTable, const QVariant& key) {
    for (const Reference& r : referencesTo(masterTable)) {
        const Table* t = findTable(r.table);
        const Column* c = t ? t->column(r.column) : nullptr;
        if (!c)
            throw std::logic_error("reference to an undescribed column " + r.table.toStdString() +
                                   "." + r.column.toStdString());
        // The key as the naming column stores it (a numeric code may be named as text).
        const bool text = c->type == Type::Text || c->type == Type::Memo;
        const QVariant value = text ? QVariant(key.toString().trimmed())
                                    : QVariant(key.toString().trimmed().toLongLong());
        if (db::exists(
                db, QStringLiteral("SELECT 1 FROM %1 WHERE %2 = ? LIMIT 1").arg(t->name, c->name),
                {value}))
            return t->name;
    }
    return {};
}

} // namespace orvo::schema
