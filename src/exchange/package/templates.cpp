#include "exchange/package/templates.h"

#include "common/errors/errors.h"
#include "common/schema/schema.h"
#include "exchange/package/dbf_names.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSaveFile>
#include <stdexcept>

namespace orvo::exchange::package {

namespace {

constexpr const char* kShippedPrefix = ":/Estructura";

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files);
}

// A store column as a dBase field: text up to 254, numbers with room for sign and point,
// date-times as dates except the time-of-day columns ("Hora..."), which travel as
// "yyyy-mm-dd hh:mm:ss" text so the time is not lost.
DbfField fieldFor(const schema::Column& c, const QString& name) {
    switch (c.type) {
    case schema::Type::Text:
        return textField(name, qBound(1, c.size, 254));
    case schema::Type::Memo:
        return textField(name, 254);
    case schema::Type::SmallInt:
        return numericField(name, 6);
    case schema::Type::Int:
    case schema::Type::Identity:
        return numericField(name, 11);
    case schema::Type::BigInt:
        return numericField(name, 19);
    case schema::Type::Numeric:
        return numericField(name, qMin(c.size + 1, 19), c.scale);
    case schema::Type::DateTime:
        if (name.startsWith(QLatin1String("Hora"), Qt::CaseInsensitive))
            return textField(name, 19);
        return dateField(name);
    }
    return textField(name, 254);
}

struct TemplateSource {
    const char* name;
    const char* table;                                // source table; null: `extra` only
    QStringList only;                                 // its columns to keep; empty: all
    QList<std::pair<const char*, const char*>> alias; // column → field, beyond dbfName()
    QList<DbfField> extra;                            // fields after the table's own
};

TemplateLayout build(const TemplateSource& s) {
    TemplateLayout layout{QString::fromLatin1(s.name), {}};
    const schema::Table* t = s.table ? schema::findTable(QString::fromLatin1(s.table)) : nullptr;
    if (s.table && !t)
        throw std::logic_error(std::string("tabla sin esquema: ") + s.table);
    QList<schema::Column> columns;
    if (t && s.only.isEmpty())
        columns = t->columns;
    for (const QString& name : s.only) {
        const schema::Column* c = t ? t->column(name) : nullptr;
        if (!c)
            throw std::logic_error("columna sin esquema: " + name.toStdString());
        columns << *c;
    }
    for (const schema::Column& c : columns) {
        QString name = dbfName(c.name);
        for (const auto& [column, field] : s.alias)
            if (c.name.compare(QLatin1String(column), Qt::CaseInsensitive) == 0)
                name = QString::fromLatin1(field);
        layout.fields << fieldFor(c, name);
    }
    layout.fields << s.extra;
    return layout;
}

QList<TemplateSource> sources() {
    const QStringList codeNameStatus = {"Codigo", "Nombre", "Status"};
    const DbfField registerNumber = numericField(QStringLiteral("NumCaja"), 6);
    return {
        // The store package, in export order.
        {"USUARIO", "USUARIOS", {}, {{"CodUsuario", "Codigo"}, {"NombreUsuario", "Nombre"}}, {}},
        {"PARAMETR", "PARAMETROS", {}, {}, {}},
        {"CAJAS", "CAJAS", {}, {}, {}},
        {"MARCAS", "MARCAS", codeNameStatus, {}, {}},
        {"TALLAS", "TALLAS", {"Codigo"}, {{"Codigo", "Talla"}}, {}},
        {"COLORES", "COLORES", codeNameStatus, {}, {}},
        {"CATEGORI", "CATEGORIAS", codeNameStatus, {}, {}},
        {"FABRICA", "FABRICANTES", codeNameStatus, {}, {}},
        {"IMPUESTO", "IMPUESTOS", {}, {}, {}},
        {"INVENTAR", "INVENTARIO", {}, {}, {}},
        {"TIPCLIEN", "TIPOSCLIENTE", {}, {}, {}},
        {"TIPOCONT", "TIPOSCONTRIBUYENTE", {}, {}, {}},
        {"CLIENTES", "CLIENTES", {}, {}, {}},
        {"TIPPROVE", "TIPOSPROVEEDOR", {}, {}, {}},
        {"PROVEEDO", "PROVEEDORES", {}, {}, {}},
        {"CARGOS", "CARGOS", codeNameStatus, {}, {}},
        {"TRABAJAD", "TRABAJADORES", {}, {}, {}},
        {"CONACCES", "CONTROLACCESO", {}, {}, {}},
        {"FORMPAGO", "FORMAPAGO", codeNameStatus, {}, {}},
        {"DIARIOCA", "DIARIOCAJA", {}, {}, {}},
        // The register number is filled by the head-office set only.
        {"VENTAS", "VENTAS", {}, {}, {registerNumber}},
        {"MOVVENTA", "MOVVENTAS", {}, {}, {}},
        {"BANCOS", "BANCOS", {}, {}, {}},
        {"CTABANCO", "CTABANCOS", {}, {}, {}},
        {"PAGOSVEN", "PAGOSVENTA", {}, {}, {}},
        {"DEVVENTA", "DEVVENTAS", {}, {}, {}},
        {"MOVDEVVE", "MOVDEVVENTAS", {}, {}, {}},
        {"DEPOSITO", "DEPOSITOS", {}, {}, {registerNumber}},
        {"MOVDEPOS", "MOVDEPOSITOS", {}, {}, {registerNumber}},
        {"CTACONTA", "CTACONTABLE", {}, {}, {}},
        {"SALICAJA", "SALIDASCAJA", {}, {}, {}},
        {"SUCURSAL", "SUCURSALES", {}, {}, {}},
        {"TRANSFER", "TRANSFERENCIAS", {}, {}, {}},
        {"MOVTRANS", "MOVTRANSFERENCIAS", {}, {}, {}},
        {"ITRANSF", "ITRANSFERENCIAS", {}, {}, {}},
        {"IMOVTRAN", "IMOVTRANSFERENCIAS", {}, {}, {}},
        {"DEVTRANS", "DEVTRANSFERENCIAS", {}, {}, {}},
        {"MOVDEVTR", "MOVDEVTRANSFERENCIAS", {}, {}, {}},
        {"IDEVTRAN", "IDEVTRANSFERENCIAS", {}, {}, {}},
        {"IMOVDEVT", "IMOVDEVTRANSFERENCIAS", {}, {}, {}},
        {"TIPOAJUS", "TIPOAJUSTES", {}, {}, {}},
        {"AJUSTES", "AJUSTES", {}, {}, {}},
        {"MOVAJUST", "MOVAJUSTES", {}, {}, {}},
        {"AJUSTEFL", "FISICOLOGICO", {}, {}, {}},
        {"PEDIDOS", "PEDIDOS", {}, {}, {}},
        {"MOVPEDI", "MOVPEDIDOS", {}, {}, {}},
        {"HISVENTA", "HISTVENTAS", {}, {}, {}},
        {"HISMVTA", "HISTMOVVENTAS", {}, {}, {}},
        {"COMPRAS", "COMPRAS", {}, {}, {}},
        {"MOVCOMP", "MOVCOMPRAS", {}, {}, {}},
        {"DEVBORTR", "DEVBORRADOR", {}, {}, {}},
        {"MDEVBORT", "MOVDEVBORRADOR", {}, {}, {}},
        {"DEVCOMPR", "DEVCOMPRAS", {}, {}, {}},
        {"MOVDCOMP", "MOVDEVCOMPRAS", {}, {}, {}},
        {"CXCOBRAR", "CUENTASXCOBRAR", {}, {}, {}},
        {"MOVCXC", "MOVCUENTASXCOBRAR", {}, {}, {}},
        {"LISTAS", "LISTAPRECIO", {}, {}, {}},
        {"MOVLISTA", "MOVLISTAPRECIO", {}, {}, {}},
        {"ORDENCOM", "ORDENCOMPRAS", {}, {}, {}},
        {"MOVORDEC", "MOVORDENCOMPRAS", {}, {}, {}},
        {"ORDENDES", "ORDENDESPACHO", {}, {}, {}},
        {"MOVORDEN", "MOVORDENDESPACHO", {}, {}, {}},
        {"BITACORA", "BITACORAMOVIMIENTO", {}, {}, {}},
        {"SERVICIO", "CONFIGURACIONSERVICIOS", {}, {}, {}},
        {"CTASMAIL", "CUENTAS_MAIL", {}, {}, {}},
        {"CTASNET", "CUENTAS_NET", {}, {}, {}},
        {"ORDENAUT", "ORDENDESPACHOAUTOMATICA", {}, {}, {}},
        {"PTRANSF", "PARAMETROSTRANSFER", {}, {}, {}},
        {"SaldDiar", "SALDODIARIO", {}, {}, {}},

        // What the head-office set adds.
        {"DEVOLUCI", "DEVVENTAS", {}, {}, {registerNumber}},
        {"GASTOS",
         "SALIDASCAJA",
         {},
         {},
         {registerNumber, textField(QStringLiteral("NomCuenta"), 100)}},
        {"TIPGASTO", "CTACONTABLE", codeNameStatus, {}, {}},
        {"TASACAMB",
         "TASA_CAMBIO",
         {"ID"},
         {},
         {textField(QStringLiteral("Fecha"), 19), numericField(QStringLiteral("Valor"), 19, 8)}},
        {"movborr", "MOVVENTASBORRADAS", {}, {}, {}},
        {"REPORTEZ", "DIARIOREPORTEZ", {}, {}, {}},
        // Monthly sales per register.
        {"VTASMES",
         nullptr,
         {},
         {},
         {registerNumber, numericField(QStringLiteral("Anio"), 4),
          numericField(QStringLiteral("Mes"), 2), numericField(QStringLiteral("Facturas"), 11),
          numericField(QStringLiteral("TotMercan"), 19, 2),
          numericField(QStringLiteral("TotDescto"), 19, 2),
          numericField(QStringLiteral("TotImpues"), 19, 2),
          numericField(QStringLiteral("TotalCosto"), 19, 2)}},
        {"LOTE", "LOTES", {}, {}, {}},
        {"TIDESPAC", "TIPO_DESPACHO", {}, {}, {}},
        {"TABVAL", "TABLA_VALORES", {}, {{"Descripcion", "Descrip"}}, {}},
        {"IMPFISC",
         "IMPRESORAFISCAL",
         {"ID", "NombreImpresora", "Status", "IdProcesoImpresion"},
         {},
         {}},

        // Documents sent between head office and stores (transfers, their returns, price
        // lists): a summary file and a lines file each.
        {"RESUTRAN", "TRANSFERENCIAS", {}, {{"Numero", "NumTra"}}, {}},
        {"MOVITRAN",
         "MOVTRANSFERENCIAS",
         {"Numero", "NumeroCaja", "Item", "CodigoBarra", "Cantidad", "Valor", "Fecha"},
         {{"Numero", "NumTra"}, {"NumeroCaja", "CajaNum"}, {"CodigoBarra", "CodBarra"}},
         {textField(QStringLiteral("Nombre"), 100)}},
        {"RESUDVTR", "DEVTRANSFERENCIAS", {}, {{"Numero", "NumDvTr"}}, {}},
        {"MOVIDVTR",
         "MOVDEVTRANSFERENCIAS",
         {},
         {{"Numero", "NumDvTr"}, {"NumeroCaja", "CajaNum"}, {"CodigoBarra", "CodBarra"}},
         {textField(QStringLiteral("Nombre"), 100)}},
        {"RESULIST", "LISTAPRECIO", {}, {}, {}},
        {"MOVILIST", "MOVLISTAPRECIO", {}, {}, {}},
    };
}

} // namespace

QString templateFolder() {
    return shell::appHome() + QStringLiteral("/Estructura");
}

void requireTemplateFolder(const QString& folder) {
    if (!QDir(folder).exists())
        throw UserError(QStringLiteral(
            "No se puede encontrar el directorio de estructuras en la ruta específicada."));
}

QString findTemplate(const QString& name, const QString& folder) {
    const QString wanted = name + QStringLiteral(".est");
    for (const QString& file : filesIn(folder))
        if (file.compare(wanted, Qt::CaseInsensitive) == 0)
            return QDir(folder).filePath(file);
    throw UserError(QStringLiteral("No se encuentra la estructura %1 en %2...!")
                        .arg(wanted, QDir::toNativeSeparators(folder)));
}

QStringList shippedTemplates() {
    QStringList names = QDir(QString::fromLatin1(kShippedPrefix)).entryList(QDir::Files);
    names.sort(Qt::CaseInsensitive);
    return names;
}

QStringList installTemplates(const QString& folder) {
    QDir().mkpath(folder);
    const QStringList existing = filesIn(folder);
    QStringList written;
    for (const QString& name : shippedTemplates()) {
        for (const QString& file : existing)
            if (file.compare(name, Qt::CaseInsensitive) == 0 && file != name)
                QFile::remove(QDir(folder).filePath(file));
        QFile source(QString::fromLatin1(kShippedPrefix) + QLatin1Char('/') + name);
        const QString target = QDir(folder).filePath(name);
        QSaveFile out(target);
        if (!source.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly) ||
            out.write(source.readAll()) < 0 || !out.commit())
            throw UserError(
                QStringLiteral("No se pudo escribir el archivo %1...!").arg(shownName(target)));
        written << target;
    }
    return written;
}

QList<TemplateLayout> templateLayouts() {
    QList<TemplateLayout> out;
    for (const TemplateSource& s : sources())
        out << build(s);
    return out;
}

QStringList writeTemplateLayouts(const QString& folder) {
    QDir().mkpath(folder);
    QStringList written;
    for (const TemplateLayout& layout : templateLayouts()) {
        const QString path = QDir(folder).filePath(layout.name + QStringLiteral(".est"));
        DbfWriter(path, layout.fields).close();
        written << path;
    }
    return written;
}

} // namespace orvo::exchange::package
