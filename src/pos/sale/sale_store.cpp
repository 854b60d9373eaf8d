#include "pos/sale/sale_store.h"

#include "common/db/bulk_insert.h"
#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/numbering/numbering.h"

namespace orvo::pos::sale::store {

namespace {

const QString kArticleColumns = QStringLiteral(
    "SELECT I.CodigoBarra, I.Nombre, I.Referencia, I.CodigoMarca, I.PrecioDetal, I.PrecioMayor, "
    "I.PrecioAfiliado, I.Promocion, I.PrecioPromocion, I.FechaInicial, I.FechaFinal, "
    "I.CostoPromedio, I.Tipo, I.Existencia, I.Fraccionable, T.PorcentajeImpuesto "
    "FROM INVENTARIO I LEFT JOIN IMPUESTOS T ON T.Codigo = I.TipoImpuesto ");
// Articles whose stock is not kept (services) sell without stock.
const QString kSellable = QStringLiteral("I.Status = 1 AND (I.Existencia > 0 OR I.Tipo <> 0)");

ArticlePrices readArticle(const db::Sql& q) {
    ArticlePrices a;
    a.codigoBarra = q.text(QStringLiteral("CodigoBarra")).trimmed();
    a.nombre = q.text(QStringLiteral("Nombre")).trimmed();
    a.referencia = q.text(QStringLiteral("Referencia")).trimmed();
    a.codigoMarca = q.text(QStringLiteral("CodigoMarca")).trimmed();
    a.precioDetal = q.decimal(QStringLiteral("PrecioDetal"));
    a.precioMayor = q.decimal(QStringLiteral("PrecioMayor"));
    a.precioAfiliado = q.decimal(QStringLiteral("PrecioAfiliado"));
    a.promocion = q.integer(QStringLiteral("Promocion")) == 1;
    a.precioPromocion = q.decimal(QStringLiteral("PrecioPromocion"));
    a.fechaInicial = q.dateTime(QStringLiteral("FechaInicial")).date();
    a.fechaFinal = q.dateTime(QStringLiteral("FechaFinal")).date();
    a.costoPromedio = q.decimal(QStringLiteral("CostoPromedio"));
    a.tipo = q.integer(QStringLiteral("Tipo"));
    a.existencia = q.decimal(QStringLiteral("Existencia"));
    a.fraccionable = q.integer(QStringLiteral("Fraccionable")) == 1;
    a.porcentajeImpuesto = q.decimal(QStringLiteral("PorcentajeImpuesto"));
    return a;
}

} // namespace

QList<ArticlePrices> findArticles(const QSqlDatabase& db, const QString& text, int limit) {
    QList<ArticlePrices> out;
    const QString typed = text.trimmed();
    if (typed.isEmpty())
        return out;
    if (auto a = articleByBarcode(db, typed)) {
        out << *a;
        return out;
    }
    db::Sql q(db, kArticleColumns + QStringLiteral("WHERE ") + kSellable +
                      QStringLiteral(" AND COALESCE(I.Referencia, '') || COALESCE(I.CodigoMarca, "
                                     "'') || COALESCE(I.Talla, '') || COALESCE(I.CodigoColor, '') "
                                     "LIKE ? ORDER BY I.CodigoBarra LIMIT ?"));
    q.bind(typed + QLatin1Char('%')).bind(limit).exec();
    while (q.next())
        out << readArticle(q);
    return out;
}

std::optional<ArticlePrices> articleByBarcode(const QSqlDatabase& db, const QString& barcode) {
    db::Sql q(db, kArticleColumns + QStringLiteral("WHERE I.CodigoBarra = ? AND ") + kSellable);
    q.bind(barcode.trimmed()).exec();
    if (!q.next())
        return std::nullopt;
    return readArticle(q);
}

QList<ModelPrices> modelPrices(const QSqlDatabase& db, const ArticlePrices& article) {
    QList<ModelPrices> out;
    if (article.referencia.isEmpty())
        return out;
    db::Sql q(db, QStringLiteral(
                      "SELECT MAX(PrecioDetal) AS PrecioDetal, MAX(PrecioMayor) AS PrecioMayor, "
                      "MAX(PrecioAfiliado) AS PrecioAfiliado, Promocion, "
                      "MAX(PrecioPromocion) AS PrecioPromocion, MIN(FechaInicial) AS FechaInicial, "
                      "MAX(FechaFinal) AS FechaFinal FROM INVENTARIO WHERE Referencia = ? AND "
                      "CodigoMarca = ? AND CodigoBarra <> ? GROUP BY Referencia, CodigoMarca, "
                      "Promocion"));
    q.bind(article.referencia).bind(article.codigoMarca).bind(article.codigoBarra).exec();
    while (q.next()) {
        ModelPrices m;
        m.precioDetal = q.decimal(QStringLiteral("PrecioDetal"));
        m.precioMayor = q.decimal(QStringLiteral("PrecioMayor"));
        m.precioAfiliado = q.decimal(QStringLiteral("PrecioAfiliado"));
        m.promocion = q.integer(QStringLiteral("Promocion")) == 1;
        m.precioPromocion = q.decimal(QStringLiteral("PrecioPromocion"));
        m.fechaInicial = q.dateTime(QStringLiteral("FechaInicial")).date();
        m.fechaFinal = q.dateTime(QStringLiteral("FechaFinal")).date();
        out << m;
    }
    return out;
}

std::optional<SaleClient> clientByCode(const QSqlDatabase& db, const QString& code) {
    db::Sql q(db, QStringLiteral("SELECT C.Codigo, C.Nombre, C.Tipo, C.TipoContribuyente, "
                                 "C.PorcentajeUtilidad, T.Descripcion FROM CLIENTES C LEFT JOIN "
                                 "TIPOSCLIENTE T ON T.Codigo = C.Tipo "
                                 "WHERE C.Codigo LIKE ? AND C.Status = 1 ORDER BY C.Codigo"));
    q.bind(code.trimmed()).exec();
    if (!q.next())
        return std::nullopt;
    SaleClient c;
    c.codigo = q.text(QStringLiteral("Codigo")).trimmed();
    c.nombre = q.text(QStringLiteral("Nombre")).trimmed();
    c.tipo = q.text(QStringLiteral("Tipo")).trimmed();
    c.tipoDescripcion = q.text(QStringLiteral("Descripcion")).trimmed();
    c.tipoContribuyente = q.text(QStringLiteral("TipoContribuyente")).trimmed();
    c.porcentajeUtilidad = q.decimal(QStringLiteral("PorcentajeUtilidad"));
    return c;
}

namespace {
const QString kSellerQuery =
    QStringLiteral("SELECT Cedula, Codigo, Nombre FROM TRABAJADORES WHERE Cargo = '003' AND "
                   "Status = 1");
SaleSeller readSeller(const db::Sql& q) {
    return {q.text(QStringLiteral("Cedula")).trimmed(), q.text(QStringLiteral("Codigo")).trimmed(),
            q.text(QStringLiteral("Nombre")).trimmed()};
}
} // namespace

std::optional<SaleSeller> sellerByCode(const QSqlDatabase& db, const QString& code) {
    db::Sql q(db, kSellerQuery + QStringLiteral(" AND (Codigo = ? OR Cedula = ?)"));
    q.bind(code.trimmed()).bind(code.trimmed()).exec();
    if (!q.next())
        return std::nullopt;
    return readSeller(q);
}

QList<SaleSeller> sellers(const QSqlDatabase& db) {
    db::Sql q(db, kSellerQuery + QStringLiteral(" ORDER BY Nombre"));
    q.exec();
    QList<SaleSeller> out;
    while (q.next())
        out << readSeller(q);
    return out;
}

QString clientCatalogSql() {
    return QStringLiteral("SELECT Codigo, Nombre FROM CLIENTES WHERE Status = 1 ORDER BY Nombre");
}

QString sellerCatalogSql() {
    return kSellerQuery + QStringLiteral(" ORDER BY Nombre");
}

QString articleCatalogSql() {
    return QStringLiteral("SELECT I.CodigoBarra, I.Nombre, I.Existencia FROM INVENTARIO I WHERE ") +
           kSellable +
           QStringLiteral(" AND COALESCE(I.Referencia, '') || COALESCE(I.CodigoMarca, '') || "
                          "COALESCE(I.Talla, '') || COALESCE(I.CodigoColor, '') LIKE ? ORDER BY "
                          "I.CodigoBarra");
}

QString parkedCatalogSql() {
    return QStringLiteral("SELECT H.Numero, H.Fecha, H.Cliente, C.Nombre AS NombreCliente, "
                          "T.Nombre AS NombreVendedor, H.TotalMercancia - H.TotalDescuento + "
                          "H.TotalImpuesto AS TotalVenta FROM HISTVENTAS H "
                          "LEFT JOIN CLIENTES C ON C.Codigo = H.Cliente "
                          "LEFT JOIN TRABAJADORES T ON T.Cedula = H.Vendedor "
                          "WHERE H.Serie = ? ORDER BY H.Numero");
}

QString dispatchCatalogSql() {
    return QStringLiteral("SELECT O.Numero, O.Cliente, C.Nombre AS NombreCliente, O.Fecha, "
                          "O.TotalMercancia, O.TotalMercancia - O.TotalDescuento + "
                          "O.TotalImpuesto AS TotalOrden, O.Observacion, O.Exenta "
                          "FROM ORDENDESPACHO O LEFT JOIN CLIENTES C ON C.Codigo = O.Cliente "
                          "WHERE O.Status = 1 AND O.Fecha >= ? ORDER BY O.Numero");
}

Decimal latestExchangeRate(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Valor FROM TASA_CAMBIO ORDER BY Fecha DESC, ID DESC "
                                 "LIMIT 1"));
    q.exec();
    return q.next() ? q.decimal(QStringLiteral("Valor")) : Decimal();
}

QString paymentWayCode(const QSqlDatabase& db, const QString& name) {
    const QVariant v =
        db::scalar(db, QStringLiteral("SELECT Codigo FROM FORMAPAGO WHERE Nombre = ?"), {name});
    return v.isValid() ? v.toString().trimmed() : QString();
}

bool isPrinted(const QSqlDatabase& db, const QString& serie, long long number) {
    return db::numericFlag(db::scalar(
        db, QStringLiteral("SELECT Impresa FROM VENTAS WHERE NumeroFactura = ? AND Serie = ?"),
        {number, serie}));
}

Decimal invoiceTotal(const QSqlDatabase& db, const QString& serie, long long number) {
    db::Sql q(db, QStringLiteral("SELECT TotalMercancia, TotalDescuento, TotalImpuesto FROM VENTAS "
                                 "WHERE NumeroFactura = ? AND Serie = ?"));
    q.bind(number).bind(serie).exec();
    if (!q.next())
        return Decimal();
    return q.decimal(QStringLiteral("TotalMercancia")) -
           q.decimal(QStringLiteral("TotalDescuento")) + q.decimal(QStringLiteral("TotalImpuesto"));
}

void insertSale(const QSqlDatabase& db, const SaleHeader& h) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Hora, Vendedor, "
                               "Cliente, TipoVenta, FormaPago, DiasCredito, TotalMercancia, "
                               "TotalDescuento, TotalImpuesto, TotalCosto, InterContable, Usuario, "
                               "Status, NumeroOrden, TotalPago, TotalDolares, TasaCambio, Impresa) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, 0, ?, 1, ?, ?, 0, "
                               "0, 0)"))
        .bind(h.number)
        .bind(h.serie)
        .bind(h.fecha)
        .bind(h.fecha)
        .bind(h.vendedor)
        .bind(h.cliente)
        .bind(h.tipoVenta)
        .bind(h.formaPago)
        .bind(h.diasCredito)
        .bind(h.usuario)
        .bind(h.numeroOrden)
        .bind(h.totalPago, 2)
        .exec();
}

LineWriter::LineWriter(const QSqlDatabase& db, long long number, const QString& serie,
                       const QDateTime& hora)
    : m_db(db), m_number(number), m_serie(serie), m_hora(hora) {
    db::requireTransaction(db);
}

int LineWriter::add(const SaleLine& l) {
    const QString letter(QLatin1Char(l.tipoLista));
    const QString key = QStringList{l.codigoBarra, letter, l.precio.toString(4),
                                    l.precioLista.toString(4), l.porcentajeDescuento.toString(4)}
                            .join(QLatin1Char('\x1f'));
    if (const auto it = m_written.constFind(key); it != m_written.constEnd()) {
        m_lines[*it - 1].cantidad += l.cantidad;
        return *it;
    }
    m_lines.append(lineFigures(l, letter, l.cantidad));
    const int item = int(m_lines.size());
    m_written.insert(key, item);
    return item;
}

void LineWriter::decreaseStock(const QString& barcode, const Decimal& quantity) {
    m_stock[barcode] += quantity;
}

void LineWriter::finish() {
    db::BulkInsert insert(m_db, QStringLiteral("MOVVENTAS"),
                          lineColumns(QStringLiteral("NumeroFactura")));
    for (int i = 0; i < m_lines.size(); ++i)
        insert.add(lineValues(m_number, m_serie, m_hora, m_lines.at(i), i + 1));
    insert.flush();
    m_lines.clear();
    m_written.clear();
    if (m_stock.isEmpty())
        return;
    // One UPDATE for every article: Existencia - CASE CodigoBarra WHEN ? THEN ? ... END.
    QString cases;
    QString in;
    QVariantList values;
    QVariantList keys;
    for (auto it = m_stock.constBegin(); it != m_stock.constEnd(); ++it) {
        cases += QStringLiteral(" WHEN ? THEN CAST(? AS NUMERIC(18,3))");
        values << it.key() << it.value().toVariant(3);
        in += in.isEmpty() ? QStringLiteral("?") : QStringLiteral(", ?");
        keys << it.key();
    }
    // Registers selling the same articles take their rows in barcode order.
    db::lockRows(m_db,
                 QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE CodigoBarra IN (%1) "
                                "ORDER BY CodigoBarra")
                     .arg(in),
                 keys);
    db::Sql q(m_db, QStringLiteral("UPDATE INVENTARIO SET Existencia = Existencia - CASE "
                                   "CodigoBarra%1 END WHERE Tipo = 0 AND CodigoBarra IN (%2)")
                        .arg(cases, in));
    for (const QVariant& v : values + keys)
        q.bind(v);
    q.exec();
    m_stock.clear();
}

void ensurePlaceholderBank(const QSqlDatabase& db) {
    db::requireTransaction(db);
    for (const char* table : {"BANCOS", "CTABANCOS"}) {
        const QString t = QString::fromLatin1(table);
        if (db::execute(db, QStringLiteral("UPDATE %1 SET Status = 0 WHERE Codigo = '0'").arg(t)) >
            0)
            continue;
        if (t == QLatin1String("BANCOS"))
            db::execute(db, QStringLiteral("INSERT INTO BANCOS (Codigo, Nombre, Status) VALUES "
                                           "('0', 'NINGUNO', 0)"));
        else
            db::execute(db, QStringLiteral("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, "
                                           "Status) VALUES ('0', 'NINGUNO', 0, 0)"));
    }
}

void insertPayment(const QSqlDatabase& db, long long number, const QString& serie,
                   const QDateTime& fecha, const PaymentRecord& p) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, "
                                 "Fecha, Documento, Aprobacion, Banco, PuntoVenta, Monto, Status, "
                                 "JSON_Merchant) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 1, ?)"));
    q.bind(number)
        .bind(serie)
        .bind(p.item)
        .bind(p.formaPago)
        .bind(fecha)
        .bind(p.documento)
        .bind(p.aprobacion)
        .bind(p.banco)
        .bind(p.puntoVenta)
        .bind(p.monto, 2);
    if (p.merchantJson.isEmpty())
        q.bindNull();
    else
        q.bind(p.merchantJson);
    q.exec();
}

void insertReceivable(const QSqlDatabase& db, long long number, const QString& serie,
                      const QString& client, const Decimal& amount, int days,
                      const QDateTime& fecha) {
    db::requireTransaction(db);
    common::insertNumbered(
        db, {QStringLiteral("CUENTASXCOBRAR"), QStringLiteral("Numero")}, [&](long long next) {
            // FechaAprobacion 2000-01-01 means not yet approved.
            db::Sql(db, QStringLiteral("INSERT INTO CUENTASXCOBRAR (Numero, Cliente, Factura, "
                                       "Serie, Monto, DiasCredito, FechaFactura, "
                                       "FechaAprobacion, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?, "
                                       "0)"))
                .bind(next)
                .bind(client)
                .bind(number)
                .bind(serie)
                .bind(amount, 2)
                .bind(days)
                .bind(fecha)
                .bind(QDate(2000, 1, 1))
                .exec();
        });
}

SaleTotals writeTotals(const QSqlDatabase& db, long long number, const QString& serie,
                       const Decimal& rate) {
    db::requireTransaction(db);
    // Summed here as exact decimals: SQLite would sum the products in binary floating point.
    db::Sql q(db, QStringLiteral("SELECT Precio, PrecioLista, Costo, Impuesto, Cantidad FROM "
                                 "MOVVENTAS WHERE NumeroFactura = ? AND Serie = ?"));
    q.bind(number).bind(serie).exec();
    QList<SaleLine> lines;
    while (q.next()) {
        SaleLine l;
        l.precio = q.decimal(QStringLiteral("Precio"));
        l.precioLista = q.decimal(QStringLiteral("PrecioLista"));
        l.costo = q.decimal(QStringLiteral("Costo"));
        l.impuesto = q.decimal(QStringLiteral("Impuesto"));
        l.cantidad = q.decimal(QStringLiteral("Cantidad"));
        lines << l;
    }
    SaleTotals t;
    for (const SaleLine& l : lines) {
        t.merchandise += l.precio * l.cantidad;
        t.discount += (l.precio - l.precioLista) * l.cantidad;
        t.tax += l.impuesto * l.cantidad;
        t.cost += l.costo * l.cantidad;
    }
    t.merchandise = t.merchandise.rounded(2);
    t.discount = t.discount.rounded(2);
    t.tax = t.tax.rounded(2);
    t.cost = t.cost.rounded(2);
    t.taxBase = t.merchandise - t.discount;
    t.total = t.taxBase + t.tax;
    const Decimal dollars = rate > Decimal() ? (t.total / rate).rounded(2) : Decimal();
    db::Sql(db, QStringLiteral("UPDATE VENTAS SET TotalMercancia = ?, TotalDescuento = ?, "
                               "TotalImpuesto = ?, TotalCosto = ?, TotalDolares = ?, "
                               "TasaCambio = ? WHERE NumeroFactura = ? AND Serie = ?"))
        .bind(t.merchandise, 2)
        .bind(t.discount, 2)
        .bind(t.tax, 2)
        .bind(t.cost, 2)
        .bind(dollars, 2)
        .bind(rate, 8)
        .bind(number)
        .bind(serie)
        .exec();
    return t;
}

void closeDispatchOrder(const QSqlDatabase& db, long long order) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE ORDENDESPACHO SET Status = 2 WHERE Numero = ?"),
                {order});
}

void markPrinted(const QSqlDatabase& db, const QString& serie, long long number) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE VENTAS SET Impresa = 1 WHERE NumeroFactura = ? AND "
                               "Serie = ?"),
                {number, serie});
}

void insertDeletedLine(const QSqlDatabase& db, const DeletedLineContext& c, int item,
                       const SaleLine& l) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO MOVVENTASBORRADAS (NumeroFactura, Serie, Hora, "
                               "TipoLista, CodigoBarra, Precio, PrecioLista, Costo, Impuesto, "
                               "PorcentajeImpuesto, Cantidad, CantidadDevuelta, Item, "
                               "PorcentajeDescuento, TpoBorrado, Vendedor, Cliente, Cajero, "
                               "UsuarioAutoriza) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, ?, "
                               "?, 'S', ?, ?, ?, ?)"))
        .bind(c.number)
        .bind(c.serie)
        .bind(db::serverNow(db))
        .bind(QString(QLatin1Char(l.tipoLista)))
        .bind(l.codigoBarra)
        .bind(l.precio, 4)
        .bind(l.precioLista, 4)
        .bind(l.costo, 5)
        .bind(l.impuesto, 2)
        .bind(l.porcentajeImpuesto, 4)
        .bind(l.cantidad, 3)
        .bind(item)
        .bind(l.porcentajeDescuento, 4)
        .bind(c.vendedor)
        .bind(c.cliente)
        .bind(c.cajero)
        .bind(c.autoriza)
        .exec();
}

} // namespace orvo::pos::sale::store

namespace orvo::pos::sale::store {

namespace {

// A saved line (parked, dispatch order) read back, with its article for later re-pricing.
SaleLine readSavedLine(const db::Sql& q, bool hasPercent) {
    SaleLine l;
    const QString letter = q.text(QStringLiteral("TipoLista")).trimmed();
    l.tipoLista = letter.isEmpty() ? kRetail : letter.at(0).toLatin1();
    l.codigoBarra = q.text(QStringLiteral("CodigoBarra")).trimmed();
    l.precio = q.decimal(QStringLiteral("Precio"));
    l.precioLista = q.decimal(QStringLiteral("PrecioLista"));
    l.costo = q.decimal(QStringLiteral("Costo"));
    l.impuesto = q.decimal(QStringLiteral("Impuesto"));
    l.porcentajeImpuesto = q.decimal(QStringLiteral("PorcentajeImpuesto"));
    l.cantidad = q.decimal(QStringLiteral("Cantidad"));
    if (hasPercent)
        l.porcentajeDescuento = q.decimal(QStringLiteral("PorcentajeDescuento"));
    else if (!l.precio.isZero() && l.precio != l.precioLista)
        l.porcentajeDescuento = ((l.precio - l.precioLista) * 100 / l.precio).rounded(4);
    l.article.codigoBarra = l.codigoBarra;
    return l;
}

// Done after the rows are read: one open result per connection on PostgreSQL.
void attachArticles(const QSqlDatabase& db, QList<SaleLine>& lines) {
    for (SaleLine& l : lines) {
        if (auto a = articleAnyState(db, l.codigoBarra)) {
            l.article = *a;
            l.nombre = a->nombre;
            l.tipo = a->tipo;
        }
    }
}

} // namespace

std::optional<ArticlePrices> articleAnyState(const QSqlDatabase& db, const QString& barcode) {
    db::Sql q(db, kArticleColumns + QStringLiteral("WHERE I.CodigoBarra = ?"));
    q.bind(barcode.trimmed()).exec();
    if (!q.next())
        return std::nullopt;
    return readArticle(q);
}

void insertParked(const QSqlDatabase& db, const ParkedHeader& h) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO HISTVENTAS (Numero, Serie, Fecha, Vendedor, Cliente, "
                               "TipoVenta, FormaPago, DiasCredito, Usuario, Status, NumeroOrden, "
                               "Exenta) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1, ?, ?)"))
        .bind(h.numero)
        .bind(h.serie)
        .bind(h.fecha)
        .bind(h.vendedor)
        .bind(h.cliente)
        .bind(h.tipoVenta)
        .bind(h.formaPago)
        .bind(h.diasCredito)
        .bind(h.usuario)
        .bind(h.numeroOrden)
        .bind(h.exenta ? 1 : 0)
        .exec();
}

void writeParkedTotals(const QSqlDatabase& db, long long numero, const QString& serie,
                       const SaleTotals& t) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE HISTVENTAS SET TotalMercancia = ?, TotalDescuento = ?, "
                               "TotalImpuesto = ?, TotalCosto = ? WHERE Numero = ? AND Serie = ?"))
        .bind(t.merchandise, 2)
        .bind(t.discount, 2)
        .bind(t.tax, 2)
        .bind(t.cost, 2)
        .bind(numero)
        .bind(serie)
        .exec();
}

void insertParkedLine(const QSqlDatabase& db, long long numero, const QString& serie, int item,
                      const QDateTime& hora, const SaleLine& l) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO HISTMOVVENTAS (Numero, Serie, Hora, TipoLista, "
                               "CodigoBarra, Precio, PrecioLista, Costo, Impuesto, "
                               "PorcentajeImpuesto, Cantidad, Descuento, Item, "
                               "PorcentajeDescuento) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                               "?, ?)"))
        .bind(numero)
        .bind(serie)
        .bind(hora)
        .bind(QString(QLatin1Char(l.tipoLista)))
        .bind(l.codigoBarra)
        .bind(l.precio, 4)
        .bind(l.precioLista, 4)
        .bind(l.costo, 5)
        .bind(l.impuesto, 2)
        .bind(l.porcentajeImpuesto, 4)
        .bind(l.cantidad, 3)
        .bind(l.precio - l.precioLista, 2)
        .bind(item)
        .bind(l.porcentajeDescuento, 4)
        .exec();
}

std::optional<ParkedHeader> parkedHeader(const QSqlDatabase& db, long long numero,
                                         const QString& serie) {
    db::Sql q(db, QStringLiteral("SELECT Numero, Serie, Fecha, Vendedor, Cliente, TipoVenta, "
                                 "FormaPago, DiasCredito, Usuario, NumeroOrden, Exenta FROM "
                                 "HISTVENTAS WHERE Numero = ? AND Serie = ?"));
    q.bind(numero).bind(serie).exec();
    if (!q.next())
        return std::nullopt;
    ParkedHeader h;
    h.numero = q.bigint(QStringLiteral("Numero"));
    h.serie = q.text(QStringLiteral("Serie"));
    h.fecha = q.dateTime(QStringLiteral("Fecha"));
    h.vendedor = q.text(QStringLiteral("Vendedor")).trimmed();
    h.cliente = q.text(QStringLiteral("Cliente")).trimmed();
    h.tipoVenta = q.integer(QStringLiteral("TipoVenta"));
    h.formaPago = q.text(QStringLiteral("FormaPago")).trimmed();
    h.diasCredito = q.integer(QStringLiteral("DiasCredito"));
    h.usuario = q.text(QStringLiteral("Usuario")).trimmed();
    h.numeroOrden = q.bigint(QStringLiteral("NumeroOrden"));
    h.exenta = q.integer(QStringLiteral("Exenta")) == 1;
    return h;
}

QList<SaleLine> parkedLines(const QSqlDatabase& db, long long numero, const QString& serie) {
    db::Sql q(db,
              QStringLiteral("SELECT TipoLista, CodigoBarra, Precio, PrecioLista, Costo, "
                             "Impuesto, PorcentajeImpuesto, Cantidad, PorcentajeDescuento "
                             "FROM HISTMOVVENTAS WHERE Numero = ? AND Serie = ? ORDER BY Item"));
    q.bind(numero).bind(serie).exec();
    QList<SaleLine> out;
    while (q.next())
        out << readSavedLine(q, true);
    attachArticles(db, out);
    return out;
}

void deleteParked(const QSqlDatabase& db, long long numero, const QString& serie) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM HISTMOVVENTAS WHERE Numero = ? AND Serie = ?"),
                {numero, serie});
    db::execute(db, QStringLiteral("DELETE FROM HISTVENTAS WHERE Numero = ? AND Serie = ?"),
                {numero, serie});
}

namespace {
DispatchOrderHeader readOrder(const db::Sql& q) {
    DispatchOrderHeader o;
    o.numero = q.bigint(QStringLiteral("Numero"));
    o.cliente = q.text(QStringLiteral("Cliente")).trimmed();
    o.fecha = q.dateTime(QStringLiteral("Fecha"));
    o.totalMercancia = q.decimal(QStringLiteral("TotalMercancia"));
    o.observacion = q.text(QStringLiteral("Observacion")).trimmed();
    o.exenta = q.integer(QStringLiteral("Exenta")) == 1;
    return o;
}
const QString kOrderColumns = QStringLiteral(
    "SELECT Numero, Cliente, Fecha, TotalMercancia, Observacion, Exenta FROM ORDENDESPACHO ");
} // namespace

QList<DispatchOrderHeader> openDispatchOrders(const QSqlDatabase& db, const QDate& since) {
    db::Sql q(db,
              kOrderColumns + QStringLiteral("WHERE Status = 1 AND Fecha >= ? ORDER BY Numero"));
    q.bind(since.isValid() ? db::dayStart(since) : db::dayStart(QDate(1900, 1, 1))).exec();
    QList<DispatchOrderHeader> out;
    while (q.next())
        out << readOrder(q);
    return out;
}

std::optional<DispatchOrderHeader> dispatchOrder(const QSqlDatabase& db, long long numero) {
    db::Sql q(db, kOrderColumns + QStringLiteral("WHERE Numero = ? AND Status = 1"));
    q.bind(numero).exec();
    if (!q.next())
        return std::nullopt;
    return readOrder(q);
}

QList<SaleLine> dispatchOrderLines(const QSqlDatabase& db, long long numero) {
    db::Sql q(db, QStringLiteral("SELECT TipoLista, CodigoBarra, Precio, PrecioLista, Costo, "
                                 "Impuesto, PorcentajeImpuesto, Cantidad FROM MOVORDENDESPACHO "
                                 "WHERE Numero = ? ORDER BY Item"));
    q.bind(numero).exec();
    QList<SaleLine> out;
    while (q.next())
        out << readSavedLine(q, false);
    attachArticles(db, out);
    return out;
}

} // namespace orvo::pos::sale::store
