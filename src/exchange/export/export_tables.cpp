#include "exchange/export/export_tables.h"

#include "common/db/sql.h"
#include "common/decimal/decimal.h"

#include <QMap>
#include <tuple>

namespace orvo::exchange::exporting {

namespace {

const QString kRange = QStringLiteral(" >= ? AND %1 <= ?");

// "<column> >= ? AND <column> <= ?"
QString inRange(const QString& column) {
    return column + kRange.arg(column);
}

ExportTable whole(const char* file, const char* message, const QString& select) {
    return {QString::fromLatin1(file), QString::fromUtf8(message), select, 0, {}, {}};
}

ExportTable whole(const char* file, const char* message, const char* table,
                  const char* columns = "*") {
    return whole(file, message,
                 QStringLiteral("SELECT %1 FROM %2")
                     .arg(QString::fromLatin1(columns), QString::fromLatin1(table)));
}

// Headers dated in the range; `valid` keeps only Status <> 0.
ExportTable dated(const char* file, const char* message, const char* table,
                  const char* dateColumn = "Fecha", bool valid = false) {
    QString sql = QStringLiteral("SELECT * FROM %1 WHERE %2")
                      .arg(QString::fromLatin1(table), inRange(QString::fromLatin1(dateColumn)));
    if (valid)
        sql += QStringLiteral(" AND Status <> 0");
    return {QString::fromLatin1(file), QString::fromUtf8(message), sql, 1, {}, {}};
}

ExportTable valid(const char* file, const char* message, const char* table) {
    return dated(file, message, table, "Fecha", true);
}

// The lines of the headers chosen by `dated`/`valid`: the line table joined to its header on
// `keys`.
ExportTable lines(const char* file, const char* message, const char* lineTable,
                  const char* headerTable, const QStringList& keys, bool valid,
                  const char* dateColumn = "Fecha") {
    QStringList on;
    for (const QString& k : keys)
        on << QStringLiteral("h.%1 = m.%1").arg(k);
    QString sql = QStringLiteral("SELECT m.* FROM %1 m JOIN %2 h ON %3 WHERE %4")
                      .arg(QString::fromLatin1(lineTable), QString::fromLatin1(headerTable),
                           on.join(QStringLiteral(" AND ")),
                           inRange(QStringLiteral("h.") + QString::fromLatin1(dateColumn)));
    if (valid)
        sql += QStringLiteral(" AND h.Status <> 0");
    return {QString::fromLatin1(file), QString::fromUtf8(message), sql, 1, {}, {}};
}

// Banks and accounts used in the range. Payments keep the bank's and the terminal account's
// names; deposits the account's code.
ExportTable banks() {
    return {QStringLiteral("BANCOS"),
            QStringLiteral("Exportando BANCOS"),
            QStringLiteral("SELECT * FROM BANCOS WHERE Nombre IN (SELECT Banco FROM PAGOSVENTA "
                           "WHERE %1) OR Codigo IN (SELECT Banco FROM PAGOSVENTA WHERE %1) OR "
                           "Nombre IN (SELECT m.Banco FROM MOVDEPOSITOS m JOIN DEPOSITOS h ON "
                           "h.NumeroDeposito = m.NumeroDeposito AND h.CuentaBanco = "
                           "m.CuentaBanco AND h.Serie = m.Serie WHERE %2)")
                .arg(inRange(QStringLiteral("Fecha")), inRange(QStringLiteral("h.Fecha"))),
            3,
            {},
            {}};
}

ExportTable bankAccounts() {
    return {QStringLiteral("CTABANCO"),
            QStringLiteral("Exportando CUENTA BANCOS"),
            QStringLiteral("SELECT * FROM CTABANCOS WHERE Nombre IN (SELECT PuntoVenta FROM "
                           "PAGOSVENTA WHERE %1) OR Codigo IN (SELECT CuentaBanco FROM DEPOSITOS "
                           "WHERE %1)")
                .arg(inRange(QStringLiteral("Fecha"))),
            2,
            {},
            {}};
}

ExportTable clients() {
    return {QStringLiteral("CLIENTES"),
            {},
            QStringLiteral("SELECT * FROM CLIENTES WHERE Codigo IN (SELECT Cliente FROM VENTAS "
                           "WHERE %1 UNION SELECT Cliente FROM DEVVENTAS WHERE %1 UNION SELECT "
                           "Acreedor FROM SALIDASCAJA WHERE %1)")
                .arg(inRange(QStringLiteral("Fecha"))),
            3,
            {},
            {}};
}

// Register number beside each document of a register (head-office set).
ExportTable withRegister(const char* file, const char* message, const char* table) {
    return {QString::fromLatin1(file),
            QString::fromUtf8(message),
            QStringLiteral("SELECT h.*, c.Numero AS NumCaja FROM %1 h LEFT JOIN CAJAS c ON "
                           "c.Serie = h.Serie WHERE %2")
                .arg(QString::fromLatin1(table), inRange(QStringLiteral("h.Fecha"))),
            1,
            {},
            {}};
}

// Monthly sales per register, over the months the range touches.
QList<QVariantHash> monthlySales(const QSqlDatabase& db, const ExportRange& r) {
    const QDateTime monthStart(QDate(r.from.date().year(), r.from.date().month(), 1), QTime(0, 0));
    db::Sql q(db, QStringLiteral("SELECT c.Numero AS NumCaja, v.Fecha, v.TotalMercancia, "
                                 "v.TotalDescuento, v.TotalImpuesto, v.TotalCosto FROM VENTAS v "
                                 "LEFT JOIN CAJAS c ON c.Serie = v.Serie WHERE v.Fecha >= ? AND "
                                 "v.Fecha <= ?"));
    q.bind(monthStart).bind(r.to).exec();
    struct Totals {
        int invoices = 0;
        Decimal mercancia, descuento, impuesto, costo;
    };
    QMap<std::tuple<int, int, int>, Totals> months;
    while (q.next()) {
        const QDate day = q.dateTime(QStringLiteral("Fecha")).date();
        Totals& t = months[{q.integer(QStringLiteral("NumCaja")), day.year(), day.month()}];
        ++t.invoices;
        t.mercancia += q.decimal(QStringLiteral("TotalMercancia"));
        t.descuento += q.decimal(QStringLiteral("TotalDescuento"));
        t.impuesto += q.decimal(QStringLiteral("TotalImpuesto"));
        t.costo += q.decimal(QStringLiteral("TotalCosto"));
    }
    QList<QVariantHash> rows;
    for (auto it = months.cbegin(); it != months.cend(); ++it) {
        const auto& [caja, year, month] = it.key();
        rows << QVariantHash{{QStringLiteral("NumCaja"), caja},
                             {QStringLiteral("Anio"), year},
                             {QStringLiteral("Mes"), month},
                             {QStringLiteral("Facturas"), it->invoices},
                             {QStringLiteral("TotMercan"), QVariant::fromValue(it->mercancia)},
                             {QStringLiteral("TotDescto"), QVariant::fromValue(it->descuento)},
                             {QStringLiteral("TotImpues"), QVariant::fromValue(it->impuesto)},
                             {QStringLiteral("TotalCosto"), QVariant::fromValue(it->costo)}};
    }
    return rows;
}

} // namespace

ExportRange exportRange(ExportFormat format, const QDate& from, const QDate& to) {
    const QTime end = format == ExportFormat::Orvo ? QTime(23, 59, 0) : QTime(23, 59, 59);
    return {QDateTime(from, QTime(0, 0, 1)), QDateTime(to, end)};
}

QList<ExportTable> storeTables() {
    const QStringList number = {"Numero"};
    const QStringList sale = {"NumeroFactura", "Serie"};
    ExportTable orderLines = lines("MOVORDEC", "Exportando MOV  DE ORDEN DE COMPRAS",
                                   "MOVORDENCOMPRAS", "ORDENCOMPRAS", number, true);
    // The purchase-order lines are kept beside the package, never in it (it takes *.dbf only):
    // the receiving side has always worked without them.
    orderLines.outputName = QStringLiteral("MOVORDEC.EST");
    return {
        whole("USUARIO", "Exportando USUARIOS", "USUARIOS",
              "CodUsuario AS Codigo, NombreUsuario AS Nombre, Pasword, Status"),
        whole("PARAMETR", "Exportando PARAMETROS", "PARAMETROS"),
        whole("CAJAS", "Exportando CAJA", "CAJAS"),
        whole("MARCAS", "Exportando MARCAS", "MARCAS", "Codigo, Nombre, Status"),
        whole("TALLAS", "Exportando TALLAS", "TALLAS", "Codigo AS Talla"),
        whole("COLORES", "Exportando COLORES", "COLORES", "Codigo, Nombre, Status"),
        whole("CATEGORI", "Exportando CATEGORIAS", "CATEGORIAS", "Codigo, Nombre, Status"),
        whole("FABRICA", "Exportando FABRICANTE", "FABRICANTES", "Codigo, Nombre, Status"),
        whole("IMPUESTO", "Exportando IMPUESTOS", "IMPUESTOS"),
        dated("INVENTAR", "Exportando INVENTARIO", "INVENTARIO", "UltimaActualizacion"),
        whole("TIPCLIEN", "Exportando TIPO DE CLIENTE", "TIPOSCLIENTE",
              "Codigo, Descripcion, Status"),
        whole("TIPOCONT", "Exportando TIPO DE CONTRIBUYENTE", "TIPOSCONTRIBUYENTE",
              "Codigo, Descripcion, Status"),
        clients(),
        whole("TIPPROVE", "Exportando TIPO DE PROVEEDOR", "TIPOSPROVEEDOR",
              "Codigo, Descripcion, Status"),
        whole("PROVEEDO", "Exportando PROVEEDOR", "PROVEEDORES"),
        whole("CARGOS", "Exportando CARGOS", "CARGOS", "Codigo, Nombre, Status"),
        whole("TRABAJAD", "Exportando TRABAJADOR", "TRABAJADORES"),
        dated("CONACCES", "Exportando CONTROL ACCESO", "CONTROLACCESO"),
        whole("FORMPAGO", "Exportando FORMA DE PAGO", "FORMAPAGO", "Codigo, Nombre, Status"),
        dated("DIARIOCA", "Exportando DIARIO CAJA", "DIARIOCAJA"),
        dated("VENTAS", "Exportando VENTAS", "VENTAS"),
        lines("MOVVENTA", "Exportando MOVIMIENTOS DE VENTAS", "MOVVENTAS", "VENTAS", sale, false),
        banks(),
        bankAccounts(),
        dated("PAGOSVEN", "Exportando PAGOS VENTAS", "PAGOSVENTA"),
        dated("DEVVENTA", "Exportando DEV VENTAS", "DEVVENTAS"),
        lines("MOVDEVVE", "Exportando MOVIMIENTO DE DEV. VENTAS", "MOVDEVVENTAS", "DEVVENTAS",
              {"NumeroDevolucion", "Serie"}, false),
        dated("DEPOSITO", "Exportando DEPOSITO", "DEPOSITOS"),
        lines("MOVDEPOS", "Exportando MOVIMIENTOS DE DEPOSITO", "MOVDEPOSITOS", "DEPOSITOS",
              {"NumeroDeposito", "CuentaBanco", "Serie"}, false),
        whole("CTACONTA", "Exportando CTACONTABLE", "CTACONTABLE"),
        dated("SALICAJA", "Exportando SALIDA DE CAJA", "SALIDASCAJA"),
        whole("SUCURSAL", "Exportando SUCURSALES", "SUCURSALES"),
        valid("TRANSFER", "Exportando TRANSFERENCIAS", "TRANSFERENCIAS"),
        lines("MOVTRANS", "Exportando MOVIMIENTOS DE TRANSFERENCIAS", "MOVTRANSFERENCIAS",
              "TRANSFERENCIAS", number, true),
        valid("ITRANSF", "Exportando IMP. TRANSFERENCIAS", "ITRANSFERENCIAS"),
        lines("IMOVTRAN", "Exportando MOVIMIENTOS DE TRANSFERENCIAS", "IMOVTRANSFERENCIAS",
              "ITRANSFERENCIAS", {"Numero", "CodigoEnvia"}, true),
        valid("DEVTRANS", "Exportando DEVOLUCION DE TRANSFERENCIAS", "DEVTRANSFERENCIAS"),
        lines("MOVDEVTR", "Exportando MOV DEVOL. DE TRANSFERENCIAS", "MOVDEVTRANSFERENCIAS",
              "DEVTRANSFERENCIAS", number, true),
        valid("IDEVTRAN", "Exportando IMP. DEV. DE TRANSFERENCIAS", "IDEVTRANSFERENCIAS"),
        lines("IMOVDEVT", "Exportando  IMP. MOV DEVOL. DE TRANSFERENCIAS", "IMOVDEVTRANSFERENCIAS",
              "IDEVTRANSFERENCIAS", {"Numero", "CodigoEnvia"}, true),
        whole("TIPOAJUS", "Exportando TIPO AJUSTE", "TIPOAJUSTES"),
        valid("AJUSTES", "Exportando AJUSTES", "AJUSTES"),
        lines("MOVAJUST", "Exportando MOVIMIENTO AJUSTES", "MOVAJUSTES", "AJUSTES", number, true),
        dated("AJUSTEFL", "Exportando FISICOLOGICO", "FISICOLOGICO", "FechaAjuste"),
        valid("PEDIDOS", "Exportando PEDIDOS", "PEDIDOS"),
        lines("MOVPEDI", "Exportando MOVIMIENTO PEDIDOS", "MOVPEDIDOS", "PEDIDOS", number, true),
        dated("HISVENTA", "Exportando HISTVENTAS", "HISTVENTAS"),
        lines("HISMVTA", "Exportando MOVIMIENTOS DE VENTAS", "HISTMOVVENTAS", "HISTVENTAS",
              {"Numero", "Serie"}, false),
        valid("COMPRAS", "Exportando COMPRAS", "COMPRAS"),
        lines("MOVCOMP", "Exportando MOVIMIENTOS DE COMPRAS", "MOVCOMPRAS", "COMPRAS",
              {"Documento", "Proveedor"}, true),
        valid("DEVBORTR", "Exportando DEV BORRADOR", "DEVBORRADOR"),
        lines("MDEVBORT", "Exportando MOV DEVBORRADOR", "MOVDEVBORRADOR", "DEVBORRADOR", number,
              true),
        valid("DEVCOMPR", "Exportando DEV BORRADOR", "DEVCOMPRAS"),
        lines("MOVDCOMP", "Exportando MOV DEV. COMPRAS", "MOVDEVCOMPRAS", "DEVCOMPRAS", number,
              true),
        dated("CXCOBRAR", "Exportando DEV CUENTAS X COBRAR", "CUENTASXCOBRAR", "FechaAprobacion",
              true),
        lines("MOVCXC", "Exportando MOV CUENTAS X COBRAR", "MOVCUENTASXCOBRAR", "CUENTASXCOBRAR",
              number, true, "FechaAprobacion"),
        valid("LISTAS", "Exportando LISTA DE PRECIOS", "LISTAPRECIO"),
        lines("MOVLISTA", "Exportando MOV LISTA DE PRECIO", "MOVLISTAPRECIO", "LISTAPRECIO", number,
              true),
        valid("ORDENCOM", "Exportando ORDEN DE COMPRAS", "ORDENCOMPRAS"),
        orderLines,
        valid("ORDENDES", "Exportando ORDEN DE DESPACHO", "ORDENDESPACHO"),
        lines("MOVORDEN", "Exportando MOV ORDEN DESPACHO", "MOVORDENDESPACHO", "ORDENDESPACHO",
              number, true),
        dated("BITACORA", "Exportando BITACORA", "BITACORAMOVIMIENTO", "fecha"),
        whole("SERVICIO", "Exportando SERVICIO", "CONFIGURACIONSERVICIOS"),
        whole("CTASMAIL", "Exportando CUENTAS MAIL", "CUENTAS_MAIL"),
        whole("CTASNET", "Exportando CUENTAS NET", "CUENTAS_NET"),
        whole("ORDENAUT", "Exportando ORDEN DESPACHO AUTOMATICA", "ORDENDESPACHOAUTOMATICA"),
        whole("PTRANSF", "Exportando PARAMETROS TRANSFER", "PARAMETROSTRANSFER"),
    };
}

QList<ExportTable> headOfficeTables() {
    QList<ExportTable> out;
    for (const ExportTable& t : storeTables()) {
        const QString& f = t.file;
        if (f == QLatin1String("PROVEEDO")) {
            out << dated("PROVEEDO", "Exportando PROVEEDOR", "PROVEEDORES", "FechaIngreso");
        } else if (f == QLatin1String("TRABAJAD")) {
            out << ExportTable{f,
                               t.message,
                               QStringLiteral("SELECT * FROM TRABAJADORES WHERE Cedula IN "
                                              "(SELECT Cedula FROM CONTROLACCESO WHERE %1)")
                                   .arg(inRange(QStringLiteral("Fecha"))),
                               1,
                               {},
                               {}};
        } else if (f == QLatin1String("CONACCES")) {
            out << dated("CONACCES", "Exportando MARCAJE", "CONTROLACCESO");
        } else if (f == QLatin1String("VENTAS")) {
            out << withRegister("VENTAS", "Exportando VENTAS", "VENTAS");
        } else if (f == QLatin1String("DEVVENTA")) {
            out << withRegister("DEVOLUCI", "Exportando DEVOLUCION", "DEVVENTAS");
        } else if (f == QLatin1String("DEPOSITO")) {
            out << withRegister("DEPOSITO", "Exportando DEPOSITO", "DEPOSITOS");
        } else if (f == QLatin1String("MOVDEPOS")) {
            out << ExportTable{f,
                               t.message,
                               QStringLiteral("SELECT m.*, c.Numero AS NumCaja FROM MOVDEPOSITOS "
                                              "m JOIN DEPOSITOS h ON h.NumeroDeposito = "
                                              "m.NumeroDeposito AND h.CuentaBanco = m.CuentaBanco "
                                              "AND h.Serie = m.Serie LEFT JOIN CAJAS c ON "
                                              "c.Serie = m.Serie WHERE %1")
                                   .arg(inRange(QStringLiteral("h.Fecha"))),
                               1,
                               {},
                               {}};
        } else if (f == QLatin1String("SALICAJA")) {
            out << ExportTable{QStringLiteral("GASTOS"),
                               QStringLiteral("Exportando GASTOS"),
                               QStringLiteral("SELECT h.*, c.Numero AS NumCaja, a.Nombre AS "
                                              "NomCuenta FROM SALIDASCAJA h LEFT JOIN CAJAS c ON "
                                              "c.Serie = h.Serie LEFT JOIN CTACONTABLE a ON "
                                              "a.Codigo = h.CodigoContable WHERE %1")
                                   .arg(inRange(QStringLiteral("h.Fecha"))),
                               1,
                               {},
                               {}};
            out << ExportTable{QStringLiteral("TIPGASTO"),
                               QStringLiteral("Exportando TIPOS SALIDAS CAJA"),
                               QStringLiteral("SELECT Codigo, Nombre, Status FROM CTACONTABLE "
                                              "WHERE Codigo IN (SELECT CodigoContable FROM "
                                              "SALIDASCAJA WHERE %1)")
                                   .arg(inRange(QStringLiteral("Fecha"))),
                               1,
                               {},
                               {}};
        } else if (f == QLatin1String("TRANSFER")) {
            // Received transfers go to head office as the store's transfers.
            out << valid("TRANSFER", "Exportando TRANSFERENCIAS", "ITRANSFERENCIAS");
        } else if (f == QLatin1String("MOVTRANS")) {
            out << lines("MOVTRANS", "Exportando MOVIMIENTOS DE TRANSFERENCIAS",
                         "IMOVTRANSFERENCIAS", "ITRANSFERENCIAS", {"Numero", "CodigoEnvia"}, true);
        } else if (f == QLatin1String("DEVTRANS")) {
            out << valid("DEVTRANS", "Exportando DEVOLUCION DE TRANSFERENCIAS",
                         "IDEVTRANSFERENCIAS");
        } else if (f == QLatin1String("MOVDEVTR")) {
            out << lines("MOVDEVTR", "Exportando MOV DEVOL. DE TRANSFERENCIAS",
                         "IMOVDEVTRANSFERENCIAS", "IDEVTRANSFERENCIAS", {"Numero", "CodigoEnvia"},
                         true);
        } else if (f == QLatin1String("ITRANSF") || f == QLatin1String("IMOVTRAN") ||
                   f == QLatin1String("IDEVTRAN") || f == QLatin1String("IMOVDEVT")) {
            continue; // already sent above under the store's own names
        } else {
            out << t;
        }
    }
    out << dated("TASACAMB", "Exportando Tasas de Cambio", "TASA_CAMBIO");
    out << dated("movborr", "Exportando MOVIMIENTOS DE VENTAS BORRADAS", "MOVVENTASBORRADAS",
                 "hora");
    out << dated("REPORTEZ", "Exportando REPORTES Z ELECTRONICOS", "DIARIOREPORTEZ",
                 "FechaSistema");
    ExportTable monthly{QStringLiteral("VTASMES"),
                        QStringLiteral("Exportando VENTAS MENSUALES"),
                        {},
                        0,
                        {},
                        monthlySales};
    out << monthly;
    out << ExportTable{
        QStringLiteral("SaldDiar"),
        QStringLiteral("Exportando Saldo Diario de Inventario"),
        QStringLiteral("SELECT * FROM SALDODIARIO WHERE (%1) OR (%2)")
            .arg(inRange(QStringLiteral("FechaRegistro")), inRange(QStringLiteral("Fecha"))),
        2,
        QStringLiteral("SaldDiar.dbf"),
        {}};
    out << whole("LOTE", "Exportando LOTES", "LOTES");
    out << whole("TIDESPAC", "Exportando TIPOS DE DESPACHO", "TIPO_DESPACHO");
    out << whole("TABVAL", "Exportando Tabla de Configuraciones", "TABLA_VALORES",
                 "IdTabla, Codigo, Descripcion AS Descrip");
    out << whole("IMPFISC", "Exportando Inf. Impresora Fiscal", "IMPRESORAFISCAL",
                 "ID, NombreImpresora, Status, IdProcesoImpresion");
    return out;
}

} // namespace orvo::exchange::exporting
