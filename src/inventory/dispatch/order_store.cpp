#include "inventory/dispatch/order_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::dispatch::store {

void insertOrder(const QSqlDatabase& db, const OrderHeader& h) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO ORDENDESPACHO (Numero, Serie, Fecha, Cliente, "
                               "TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, "
                               "Observacion, Usuario, InterContable, Status, Exenta) VALUES (?, "
                               "?, ?, ?, ?, ?, ?, ?, ?, ?, 0, ?, ?)"))
        .bind(h.number)
        .bind(h.serie)
        .bind(h.date)
        .bind(h.client)
        .bind(h.totals.merchandise, 2)
        .bind(h.totals.discount, 2)
        .bind(h.totals.tax, 2)
        .bind(h.totals.cost, 2)
        .bind(h.note)
        .bind(h.user)
        .bind(h.status)
        .bind(h.exempt ? 1 : 0)
        .exec();
}

bool updateOpenOrder(const QSqlDatabase& db, const OrderHeader& h) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE ORDENDESPACHO SET Cliente = ?, TotalMercancia = ?, "
                                 "TotalDescuento = ?, TotalImpuesto = ?, TotalCosto = ?, "
                                 "Observacion = ?, Usuario = ?, Status = ?, Exenta = ? WHERE "
                                 "Numero = ? AND Status = 0"));
    q.bind(h.client)
        .bind(h.totals.merchandise, 2)
        .bind(h.totals.discount, 2)
        .bind(h.totals.tax, 2)
        .bind(h.totals.cost, 2)
        .bind(h.note)
        .bind(h.user)
        .bind(h.status)
        .bind(h.exempt ? 1 : 0)
        .bind(h.number)
        .exec();
    return q.rowsAffected() > 0;
}

void deleteOrderLines(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM MOVORDENDESPACHO WHERE Numero = ?"), {number});
}

void upsertOrderLine(const QSqlDatabase& db, long long number, int item,
                     const pos::sale::SaleLine& l, const QDateTime& when) {
    db::requireTransaction(db);
    const QString letter = QString(QLatin1Char(l.tipoLista));
    const Decimal discount = ((l.precio - l.precioLista) * l.cantidad).rounded(2);
    db::Sql up(db, QStringLiteral("UPDATE MOVORDENDESPACHO SET Cantidad = ROUND(Cantidad + ?, 3), "
                                  "Descuento = ROUND(Descuento + ?, 2) WHERE CodigoBarra = ? AND "
                                  "Numero = ? AND TipoLista = ?"));
    up.bind(l.cantidad, 3).bind(discount, 2).bind(l.codigoBarra).bind(number).bind(letter).exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO MOVORDENDESPACHO (Numero, Hora, TipoLista, "
                               "CodigoBarra, Precio, PrecioLista, Costo, Impuesto, "
                               "PorcentajeImpuesto, Cantidad, Descuento, Item) VALUES (?, ?, ?, "
                               "?, ?, ?, ?, ?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(when)
        .bind(letter)
        .bind(l.codigoBarra)
        .bind(l.precio, 4)
        .bind(l.precioLista, 4)
        .bind(l.costo, 5)
        .bind(l.impuesto, 2)
        .bind(l.porcentajeImpuesto, 4)
        .bind(l.cantidad, 3)
        .bind(discount, 2)
        .bind(item)
        .exec();
}

Decimal committed(const QSqlDatabase& db, const QString& barcode, long long except) {
    return Decimal::fromVariant(db::scalar(
        db,
        QStringLiteral("SELECT SUM(M.Cantidad) FROM MOVORDENDESPACHO M INNER JOIN ORDENDESPACHO "
                       "O ON O.Numero = M.Numero WHERE M.CodigoBarra = ? AND O.Status IN (0, 1) "
                       "AND O.Numero <> ?"),
        {barcode, except}));
}

namespace {
const QString kOrderRow = QStringLiteral(
    "SELECT O.Numero, O.Fecha, O.Cliente, C.Nombre, O.TotalMercancia - O.TotalDescuento + "
    "O.TotalImpuesto AS Total, O.Status, O.Observacion, O.Exenta FROM ORDENDESPACHO O LEFT JOIN "
    "CLIENTES C "
    "ON C.Codigo = O.Cliente ");

OrderSummary readOrder(const db::Sql& q) {
    return {q.bigint(QStringLiteral("Numero")),
            q.dateTime(QStringLiteral("Fecha")),
            q.text(QStringLiteral("Cliente")),
            q.text(QStringLiteral("Nombre")),
            q.decimal(QStringLiteral("Total")).rounded(2),
            q.integer(QStringLiteral("Status")),
            q.integer(QStringLiteral("Exenta")) == 1};
}
} // namespace

QList<OrderSummary> orders(const QSqlDatabase& db) {
    db::Sql q(db, kOrderRow + QStringLiteral("ORDER BY O.Numero DESC"));
    q.exec();
    QList<OrderSummary> out;
    while (q.next())
        out.append(readOrder(q));
    return out;
}

std::optional<OrderSummary> order(const QSqlDatabase& db, long long number, QString* note) {
    db::Sql q(db, kOrderRow + QStringLiteral("WHERE O.Numero = ?"));
    q.bind(number).exec();
    if (!q.next())
        return std::nullopt;
    if (note)
        *note = q.text(QStringLiteral("Observacion"));
    return readOrder(q);
}

} // namespace orvo::inventory::dispatch::store
