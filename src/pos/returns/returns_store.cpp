#include "pos/returns/returns_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/numbering/numbering.h"

#include "pos/returns/return_draft.h"
#include "pos/sale/line_insert.h"

namespace orvo::pos::returns::store {

std::optional<ReturnableInvoice> loadInvoice(const QSqlDatabase& db, long long number,
                                             const QString& serie) {
    // Left joins: an invoice whose client was deleted still loads, and accept asks for it.
    db::Sql h(db, QStringLiteral("SELECT V.NumeroFactura, V.Serie, V.Vendedor, V.Cliente, "
                                 "C.Nombre, C.Tipo, V.TipoVenta, T.Descripcion AS TipoCliente "
                                 "FROM VENTAS V LEFT JOIN CLIENTES C ON V.Cliente = C.Codigo "
                                 "LEFT JOIN TIPOSCLIENTE T ON C.Tipo = T.Codigo "
                                 "WHERE V.NumeroFactura = ? AND V.Serie = ?"));
    h.bind(number).bind(serie).exec();
    if (!h.next())
        return std::nullopt;
    ReturnableInvoice inv;
    inv.number = h.bigint(QStringLiteral("NumeroFactura"));
    inv.serie = h.text(QStringLiteral("Serie")).trimmed();
    inv.vendedor = h.text(QStringLiteral("Vendedor")).trimmed();
    inv.cliente = h.text(QStringLiteral("Cliente")).trimmed();
    inv.clienteNombre = h.text(QStringLiteral("Nombre")).trimmed();
    inv.tipoCliente = h.text(QStringLiteral("TipoCliente")).trimmed();
    inv.tipoVenta = h.integer(QStringLiteral("TipoVenta"));

    db::Sql l(db, QStringLiteral(
                      "SELECT M.Item, M.CodigoBarra, I.Nombre, I.Referencia, "
                      "I.CodigoMarca, I.Talla, I.CodigoColor, M.TipoLista, M.Precio, "
                      "M.PrecioLista, M.Costo, M.Impuesto, M.PorcentajeImpuesto, "
                      "M.PorcentajeDescuento, M.Cantidad, M.CantidadDevuelta, "
                      "I.Fraccionable FROM MOVVENTAS M LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                      "M.CodigoBarra WHERE M.NumeroFactura = ? AND M.Serie = ? "
                      "ORDER BY M.Item"));
    l.bind(number).bind(serie).exec();
    while (l.next()) {
        InvoiceLine x;
        x.item = l.integer(QStringLiteral("Item"));
        x.codigoBarra = l.text(QStringLiteral("CodigoBarra")).trimmed();
        x.nombre = l.text(QStringLiteral("Nombre")).trimmed();
        x.modelKey = l.text(QStringLiteral("Referencia")).trimmed() +
                     l.text(QStringLiteral("CodigoMarca")).trimmed() +
                     l.text(QStringLiteral("Talla")).trimmed() +
                     l.text(QStringLiteral("CodigoColor")).trimmed();
        x.tipoLista = l.text(QStringLiteral("TipoLista")).trimmed();
        x.precio = l.decimal(QStringLiteral("Precio"));
        x.precioLista = l.decimal(QStringLiteral("PrecioLista"));
        x.costo = l.decimal(QStringLiteral("Costo"));
        x.impuesto = l.decimal(QStringLiteral("Impuesto"));
        x.porcentajeImpuesto = l.decimal(QStringLiteral("PorcentajeImpuesto"));
        x.porcentajeDescuento = l.decimal(QStringLiteral("PorcentajeDescuento"));
        x.cantidad = l.decimal(QStringLiteral("Cantidad"));
        x.cantidadDevuelta = l.decimal(QStringLiteral("CantidadDevuelta"));
        x.fraccionable = l.integer(QStringLiteral("Fraccionable")) == 1;
        inv.lines << x;
    }
    return inv;
}

void insertHeader(const QSqlDatabase& db, const ReturnHeader& h, const ReturnableInvoice& invoice) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, "
                               "Fecha, Vendedor, Cliente, TotalMercancia, TotalDescuento, "
                               "TotalImpuesto, TotalCosto, TipoVenta, InterContable, Usuario, "
                               "Status, SerieFactura, Impresa) VALUES (?, ?, ?, ?, ?, ?, 0, 0, 0, "
                               "0, ?, 0, ?, 1, ?, 0)"))
        .bind(h.number)
        .bind(h.serie)
        .bind(invoice.number)
        .bind(h.fecha)
        .bind(invoice.vendedor)
        .bind(invoice.cliente)
        .bind(invoice.tipoVenta)
        .bind(h.usuario)
        .bind(invoice.serie)
        .exec();
}

void addLine(const QSqlDatabase& db, long long number, const QString& serie, const QDateTime& hora,
             const ReturnLine& line) {
    db::requireTransaction(db);
    const InvoiceLine& s = line.source;
    db::Sql merge(db, QStringLiteral("UPDATE MOVDEVVENTAS SET Cantidad = ROUND(Cantidad + ?, 3) "
                                     "WHERE NumeroDevolucion = ? AND Serie = ? AND CodigoBarra = ? "
                                     "AND TipoLista = ? AND Precio = ? AND PrecioLista = ? AND "
                                     "PorcentajeDescuento = ?"));
    merge.bind(line.cantidad, 3)
        .bind(number)
        .bind(serie)
        .bind(s.codigoBarra)
        .bind(s.tipoLista)
        .bind(s.precio, 4)
        .bind(s.precioLista, 4)
        .bind(s.porcentajeDescuento, 4)
        .exec();
    if (merge.rowsAffected() > 0)
        return;
    const int item =
        db::scalar(db,
                   QStringLiteral("SELECT COALESCE(MAX(Item), 0) + 1 FROM MOVDEVVENTAS "
                                  "WHERE NumeroDevolucion = ? AND Serie = ?"),
                   {number, serie})
            .toInt();
    sale::LineInsert(db, QStringLiteral("MOVDEVVENTAS"), QStringLiteral("NumeroDevolucion"))
        .insert(number, serie, hora, sale::lineFigures(s, s.tipoLista, line.cantidad), item);
}

bool markReturned(const QSqlDatabase& db, const ReturnableInvoice& invoice, int item,
                  const Decimal& quantity) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE MOVVENTAS SET CantidadDevuelta = "
                                 "ROUND(CantidadDevuelta + ?, 3) WHERE NumeroFactura = ? AND "
                                 "Serie = ? AND Item = ? AND "
                                 "ROUND(Cantidad - CantidadDevuelta - ?, 3) >= 0"));
    q.bind(quantity, 3).bind(invoice.number).bind(invoice.serie).bind(item).bind(quantity, 3);
    q.exec();
    return q.rowsAffected() > 0;
}

namespace {
// The return's lines of one article (correlated with the INVENTARIO row being updated).
const QString kLinesOfArticle =
    QStringLiteral(" FROM MOVDEVVENTAS M WHERE M.NumeroDevolucion = ? AND M.Serie = ? AND "
                   "M.CodigoBarra = INVENTARIO.CodigoBarra)");
// Goods only: a sale never took stock from a service, so a return gives none back.
const QString kArticlesOfReturn =
    QStringLiteral(" AND Tipo = 0 AND CodigoBarra IN (SELECT CodigoBarra FROM MOVDEVVENTAS WHERE "
                   "NumeroDevolucion = ? AND "
                   "Serie = ?)");
} // namespace

void restock(const QSqlDatabase& db, long long number, const QString& serie,
             NegativeStockLastCost negative) {
    db::requireTransaction(db);
    // Every variant of the models coming back changes (stock, then the model's average cost):
    // taken in barcode order, as the sales take theirs, so two registers never deadlock.
    db::lockRows(db,
                 QStringLiteral("SELECT I.CodigoBarra FROM INVENTARIO I WHERE EXISTS (SELECT 1 "
                                "FROM MOVDEVVENTAS M INNER JOIN INVENTARIO B ON B.CodigoBarra = "
                                "M.CodigoBarra WHERE M.NumeroDevolucion = ? AND M.Serie = ? AND "
                                "B.Referencia = I.Referencia AND B.CodigoMarca = I.CodigoMarca) "
                                "ORDER BY I.CodigoBarra"),
                 {number, serie});
    const QString qty = QStringLiteral("(SELECT SUM(M.Cantidad)") + kLinesOfArticle;
    // Variants with stock: the cost is weighted with what comes back. The "* 1.0" keeps SQLite
    // from dividing whole costs and quantities as integers.
    db::Sql up(db, QStringLiteral("UPDATE INVENTARIO SET CostoPromedio = ROUND((CostoPromedio * "
                                  "Existencia + (SELECT SUM(M.Costo * M.Cantidad)") +
                       kLinesOfArticle + QStringLiteral(") * 1.0 / (Existencia + ") + qty +
                       QStringLiteral("), 5), Existencia = ROUND(Existencia + ") + qty +
                       QStringLiteral(", 3), UltimoCosto = (SELECT MAX(M.PrecioLista)") +
                       kLinesOfArticle + QStringLiteral(" WHERE Existencia >= 0") +
                       kArticlesOfReturn);
    for (int i = 0; i < 5; ++i)
        up.bind(number).bind(serie);
    up.exec();
    // Variants still short of stock: nothing to weigh, the line's cost stands.
    const QString lastCost = negative == NegativeStockLastCost::LineCost
                                 ? QStringLiteral("(SELECT MAX(M.Costo)")
                                 : QStringLiteral("(SELECT MAX(M.PrecioLista)");
    db::Sql down(db, QStringLiteral("UPDATE INVENTARIO SET CostoPromedio = (SELECT MAX(M.Costo)") +
                         kLinesOfArticle + QStringLiteral(", Existencia = ROUND(Existencia + ") +
                         qty + QStringLiteral(", 3), UltimoCosto = ") + lastCost + kLinesOfArticle +
                         QStringLiteral(" WHERE Existencia < 0") + kArticlesOfReturn);
    for (int i = 0; i < 4; ++i)
        down.bind(number).bind(serie);
    down.exec();
}

ReturnTotals writeTotals(const QSqlDatabase& db, long long number, const QString& serie) {
    db::requireTransaction(db);
    // Summed here as exact decimals: SQLite would sum the products in binary floating point.
    db::Sql q(db, QStringLiteral("SELECT Precio, PrecioLista, Costo, Impuesto, Cantidad FROM "
                                 "MOVDEVVENTAS WHERE NumeroDevolucion = ? AND Serie = ?"));
    q.bind(number).bind(serie).exec();
    QList<ReturnLine> lines;
    while (q.next()) {
        ReturnLine r;
        r.source.precio = q.decimal(QStringLiteral("Precio"));
        r.source.precioLista = q.decimal(QStringLiteral("PrecioLista"));
        r.source.costo = q.decimal(QStringLiteral("Costo"));
        r.source.impuesto = q.decimal(QStringLiteral("Impuesto"));
        r.cantidad = q.decimal(QStringLiteral("Cantidad"));
        lines << r;
    }
    const ReturnTotals t = totalsOf(lines);
    db::Sql(db, QStringLiteral("UPDATE DEVVENTAS SET TotalMercancia = ?, TotalDescuento = ?, "
                               "TotalImpuesto = ?, TotalCosto = ? WHERE NumeroDevolucion = ? AND "
                               "Serie = ?"))
        .bind(t.merchandise, 2)
        .bind(t.discount, 2)
        .bind(t.tax, 2)
        .bind(t.cost, 2)
        .bind(number)
        .bind(serie)
        .exec();
    return t;
}

QString refundsAccount(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo FROM CTACONTABLE WHERE CuentaDevolucion = 1 "
                                 "ORDER BY Codigo LIMIT 1"));
    q.exec();
    return q.next() ? q.text(QStringLiteral("Codigo")).trimmed() : QString();
}

long long insertCashRefund(const QSqlDatabase& db, const CashRefund& r) {
    db::requireTransaction(db);
    return common::insertNumbered(
        db,
        {QStringLiteral("SALIDASCAJA"), QStringLiteral("Numero"), QStringLiteral("Serie"), r.serie},
        [&](long long number) {
            db::Sql(db, QStringLiteral("INSERT INTO SALIDASCAJA (Numero, Serie, Fecha, "
                                       "CodigoContable, Acreedor, Documento, Descripcion, Monto, "
                                       "Usuario, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1)"))
                .bind(number)
                .bind(r.serie)
                .bind(r.fecha)
                .bind(r.account)
                .bind(r.creditor.left(100))
                .bind(r.document.left(30))
                .bind(QStringLiteral("SALIDA DE CAJA GENERADA POR DEVOLUCION DE VENTA"))
                .bind(r.amount, 2)
                .bind(r.usuario)
                .exec();
        });
}

void markPrinted(const QSqlDatabase& db, long long number, const QString& serie) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE DEVVENTAS SET Impresa = 1 WHERE NumeroDevolucion = ? AND "
                               "Serie = ?"))
        .bind(number)
        .bind(serie)
        .exec();
}

QList<long long> pendingReturnPrints(const QSqlDatabase& db, const QString& serie) {
    db::Sql q(db, QStringLiteral("SELECT NumeroDevolucion FROM DEVVENTAS WHERE Serie = ? AND "
                                 "Impresa = 0 ORDER BY NumeroDevolucion"));
    q.bind(serie).exec();
    QList<long long> out;
    while (q.next())
        out << q.bigint(QStringLiteral("NumeroDevolucion"));
    return out;
}

} // namespace orvo::pos::returns::store
