#include "inventory/purchases/reception_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

#include <QMap>

namespace orvo::inventory::purchases::store {

void insertReception(const QSqlDatabase& db, const Reception& r, const BoxKind& k) {
    db::requireTransaction(db);
    db::Sql(db, onKind(k, QStringLiteral(
                              "INSERT INTO RECEPCION (Numero, Sucursal, Fecha, FechaAprobacion, "
                              "DocumentoOrigen, Observacion, Status, InterContable, "
                              "IdTipoDocumento) VALUES (?, ?, ?, NULL, ?, ?, 0, 0, ?)")))
        .bind(r.number)
        .bind(r.branch)
        .bind(r.date)
        .bind(r.origin)
        .bind(r.note)
        .bind(int(r.originType))
        .exec();
}

bool updateReception(const QSqlDatabase& db, const Reception& r, const BoxKind& k) {
    db::requireTransaction(db);
    db::Sql q(db, onKind(k, QStringLiteral(
                                "UPDATE RECEPCION SET Sucursal = ?, Fecha = ?, DocumentoOrigen = "
                                "?, Observacion = ?, IdTipoDocumento = ? WHERE Numero = ? AND "
                                "Status = 0")));
    q.bind(r.branch)
        .bind(r.date)
        .bind(r.origin)
        .bind(r.note)
        .bind(int(r.originType))
        .bind(r.number);
    q.exec();
    return q.rowsAffected() > 0;
}

void replaceCoveredPurchases(const QSqlDatabase& db, long long number,
                             const QList<CoveredPurchase>& purchases, const BoxKind& k) {
    db::requireTransaction(db);
    db::execute(db, onKind(k, QStringLiteral("DELETE FROM RECEPCION_COMPRAS WHERE Numero = ?")),
                {number});
    db::Sql in(
        db, onKind(k, QStringLiteral("INSERT INTO RECEPCION_COMPRAS (Numero, Documento, Proveedor) "
                                     "VALUES (?, ?, ?)")));
    for (const CoveredPurchase& p : purchases)
        in.bind(number).bind(p.document).bind(p.supplier).exec();
}

bool holdOpenReception(const QSqlDatabase& db, long long number, const BoxKind& k) {
    db::requireTransaction(db);
    return db::execute(
               db,
               onKind(k, QStringLiteral("UPDATE RECEPCION SET Status = Status WHERE Numero = ? AND "
                                        "Status = 0")),
               {number}) > 0;
}

bool approveReception(const QSqlDatabase& db, long long number, const QDateTime& when,
                      const Approver& who, const BoxKind& k) {
    db::requireTransaction(db);
    if (k.recordsApprover)
        return db::execute(db,
                           onKind(k, QStringLiteral("UPDATE RECEPCION SET FechaAprobacion = ?, "
                                                    "Status = 1, UsuarioAprobacion = ?, "
                                                    "DireccionIP = ? WHERE Numero = ? AND "
                                                    "Status = 0")),
                           {when, who.user, who.address, number}) > 0;
    return db::execute(db,
                       onKind(k, QStringLiteral("UPDATE RECEPCION SET FechaAprobacion = ?, Status "
                                                "= 1 WHERE Numero = ? AND Status = 0")),
                       {when, number}) > 0;
}

int status(const QSqlDatabase& db, long long number, const BoxKind& k) {
    const QVariant v = db::scalar(
        db, onKind(k, QStringLiteral("SELECT Status FROM RECEPCION WHERE Numero = ?")), {number});
    return v.isValid() && !v.isNull() ? v.toInt() : -1;
}

bool deleteReception(const QSqlDatabase& db, long long number, const BoxKind& k) {
    db::requireTransaction(db);
    if (!holdOpenReception(db, number, k))
        return false;
    db::execute(db, onKind(k, QStringLiteral("DELETE FROM MOVRECEPCION WHERE Numero = ?")),
                {number});
    db::execute(db, onKind(k, QStringLiteral("DELETE FROM RECEPCION_COMPRAS WHERE Numero = ?")),
                {number});
    return db::execute(db, onKind(k, QStringLiteral("DELETE FROM RECEPCION WHERE Numero = ?")),
                       {number}) > 0;
}

std::optional<Reception> loadReception(const QSqlDatabase& db, long long number, const BoxKind& k) {
    db::Sql h(db,
              onKind(k, QStringLiteral("SELECT Numero, Sucursal, Fecha, FechaAprobacion, "
                                       "DocumentoOrigen, Observacion, Status, IdTipoDocumento FROM "
                                       "RECEPCION WHERE Numero = ?")));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    Reception r;
    r.number = h.bigint(QStringLiteral("Numero"));
    r.branch = h.text(QStringLiteral("Sucursal"));
    r.date = h.dateTime(QStringLiteral("Fecha"));
    r.approvedAt = h.dateTime(QStringLiteral("FechaAprobacion"));
    r.origin = h.text(QStringLiteral("DocumentoOrigen"));
    r.note = h.text(QStringLiteral("Observacion"));
    r.status = h.integer(QStringLiteral("Status"));
    r.originType =
        h.integer(QStringLiteral("IdTipoDocumento")) == int(ReceptionOrigin::OtherDocuments)
            ? ReceptionOrigin::OtherDocuments
            : ReceptionOrigin::Purchases;
    db::Sql p(db,
              onKind(k, QStringLiteral("SELECT R.Documento, R.Proveedor, P.Nombre FROM "
                                       "RECEPCION_COMPRAS R LEFT JOIN PROVEEDORES P ON P.Codigo = "
                                       "R.Proveedor WHERE R.Numero = ? ORDER BY R.Documento, "
                                       "R.Proveedor")));
    p.bind(number).exec();
    while (p.next())
        r.purchases.append({p.text(QStringLiteral("Documento")),
                            p.text(QStringLiteral("Proveedor")), p.text(QStringLiteral("Nombre"))});
    return r;
}

QList<DocumentSummary> listReceptions(const QSqlDatabase& db, const BoxKind& k) {
    db::Sql q(
        db, onKind(k, QStringLiteral("SELECT R.Numero, R.Sucursal AS Proveedor, S.Nombre AS "
                                     "NombreProveedor, R.Fecha, (SELECT SUM(M.Cantidad) FROM "
                                     "MOVRECEPCION M WHERE M.Numero = R.Numero) AS Total, R.Status "
                                     "FROM RECEPCION R LEFT JOIN SUCURSALES S ON S.Codigo = "
                                     "R.Sucursal ORDER BY R.Numero DESC")));
    q.exec();
    QList<DocumentSummary> out;
    while (q.next())
        out.append({q.value(0).toString(), q.text(QStringLiteral("Proveedor")),
                    q.text(QStringLiteral("NombreProveedor")), q.dateTime(QStringLiteral("Fecha")),
                    q.decimal(QStringLiteral("Total")), q.integer(QStringLiteral("Status"))});
    return out;
}

long long userLastBox(const QSqlDatabase& db, long long number, const QString& user,
                      const BoxKind& k) {
    db::Sql q(db,
              onKind(k, QStringLiteral("SELECT NumeroCaja FROM MOVRECEPCION WHERE Numero = ? AND "
                                       "Usuario = ? ORDER BY NumeroCaja DESC LIMIT 1")));
    q.bind(number).bind(user).exec();
    return q.next() ? q.bigint(QStringLiteral("NumeroCaja")) : 0;
}

std::optional<Box> loadBox(const QSqlDatabase& db, long long number, long long box,
                           const BoxKind& k) {
    db::Sql q(db, onKind(k, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.Usuario, "
                                           "M.Status FROM MOVRECEPCION M LEFT JOIN INVENTARIO I ON "
                                           "I.CodigoBarra = M.CodigoBarra WHERE M.Numero = ? AND "
                                           "M.NumeroCaja = ? ORDER BY M.Item")));
    q.bind(number).bind(box).exec();
    Box b;
    b.number = box;
    bool any = false;
    while (q.next()) {
        any = true;
        b.user = q.text(QStringLiteral("Usuario"));
        b.closed = b.closed || q.integer(QStringLiteral("Status")) == 1;
        b.lines.append({q.text(QStringLiteral("CodigoBarra")), q.text(QStringLiteral("Nombre")),
                        q.decimal(QStringLiteral("Cantidad"))});
    }
    if (!any)
        return std::nullopt;
    return b;
}

QList<BoxSummary> boxes(const QSqlDatabase& db, long long number, const BoxKind& k) {
    db::Sql q(db, onKind(k, QStringLiteral(
                                "SELECT NumeroCaja, MAX(Usuario) AS Usuario, SUM(Cantidad) AS "
                                "Cantidad, MAX(Status) AS Status FROM MOVRECEPCION WHERE Numero "
                                "= ? GROUP BY NumeroCaja ORDER BY NumeroCaja")));
    q.bind(number).exec();
    QList<BoxSummary> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("NumeroCaja")), q.text(QStringLiteral("Usuario")),
                    q.decimal(QStringLiteral("Cantidad")).rounded(3),
                    q.integer(QStringLiteral("Status")) == 1});
    return out;
}

bool boxIsClosed(const QSqlDatabase& db, long long number, long long box, const BoxKind& k) {
    return db::exists(
        db,
        onKind(k, QStringLiteral("SELECT 1 FROM MOVRECEPCION WHERE Numero = ? AND NumeroCaja "
                                 "= ? AND Status = 1")),
        {number, box});
}

bool hasOpenBox(const QSqlDatabase& db, long long number, const BoxKind& k) {
    db::requireTransaction(db);
    return db::execute(
               db,
               onKind(k, QStringLiteral("UPDATE MOVRECEPCION SET Status = Status WHERE Numero = ? "
                                        "AND Status = 0")),
               {number}) > 0;
}

void deleteBoxLines(const QSqlDatabase& db, long long number, long long box, const BoxKind& k) {
    db::requireTransaction(db);
    db::execute(
        db,
        onKind(k, QStringLiteral("DELETE FROM MOVRECEPCION WHERE Numero = ? AND NumeroCaja = ?")),
        {number, box});
}

void upsertBoxLine(const QSqlDatabase& db, long long number, long long box, int item,
                   const BoxLineWrite& w, const QString& user, const QDateTime& when,
                   const BoxKind& k) {
    db::requireTransaction(db);
    db::Sql up(db, onKind(k, QStringLiteral(
                                 "UPDATE MOVRECEPCION SET Cantidad = ROUND(Cantidad + ?, 3), "
                                 "Precio = ?, Costo = ? WHERE Numero = ? AND CodigoBarra = ? AND "
                                 "NumeroCaja = ?")));
    up.bind(w.line.quantity, 3)
        .bind(w.price, 2)
        .bind(w.cost, 5)
        .bind(number)
        .bind(w.line.barcode)
        .bind(box)
        .exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, onKind(k, QStringLiteral(
                              "INSERT INTO MOVRECEPCION (Numero, NumeroCaja, Item, CodigoBarra, "
                              "Cantidad, Usuario, Fecha, Precio, Costo, Status) VALUES (?, ?, ?, "
                              "?, ?, ?, ?, ?, ?, 0)")))
        .bind(number)
        .bind(box)
        .bind(item)
        .bind(w.line.barcode)
        .bind(w.line.quantity, 3)
        .bind(user)
        .bind(when)
        .bind(w.price, 2)
        .bind(w.cost, 5)
        .exec();
}

void closeBox(const QSqlDatabase& db, long long number, long long box, const BoxKind& k) {
    db::requireTransaction(db);
    if (k.recordsApprover) {
        db::execute(db,
                    onKind(k, QStringLiteral("UPDATE MOVRECEPCION SET Status = 1, FechaCierre = "
                                             "? WHERE Numero = ? AND NumeroCaja = ?")),
                    {db::serverNow(db), number, box});
        return;
    }
    db::execute(db,
                onKind(k, QStringLiteral("UPDATE MOVRECEPCION SET Status = 1 WHERE Numero = ? AND "
                                         "NumeroCaja = ?")),
                {number, box});
}

QList<ComparisonLine> comparison(const QSqlDatabase& db, long long number, const BoxKind& k) {
    QMap<QString, ComparisonLine> lines;
    db::Sql counted(
        db, onKind(k, QStringLiteral("SELECT M.CodigoBarra, MAX(I.Nombre) AS Nombre, "
                                     "SUM(M.Cantidad) AS Cantidad FROM MOVRECEPCION M LEFT JOIN "
                                     "INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                                     "M.Numero = ? GROUP BY M.CodigoBarra")));
    counted.bind(number).exec();
    while (counted.next()) {
        ComparisonLine& l = lines[counted.text(QStringLiteral("CodigoBarra"))];
        l.barcode = counted.text(QStringLiteral("CodigoBarra"));
        l.name = counted.text(QStringLiteral("Nombre"));
        l.counted = counted.decimal(QStringLiteral("Cantidad")).rounded(3);
    }
    db::Sql invoiced(
        db, onKind(k, QStringLiteral("SELECT M.CodigoBarra, MAX(I.Nombre) AS Nombre, "
                                     "SUM(M.Cantidad) AS Cantidad FROM RECEPCION_COMPRAS R "
                                     "INNER JOIN MOVCOMPRAS M ON M.Documento = R.Documento AND "
                                     "M.Proveedor = R.Proveedor LEFT JOIN INVENTARIO I ON "
                                     "I.CodigoBarra = M.CodigoBarra WHERE R.Numero = ? GROUP "
                                     "BY M.CodigoBarra")));
    invoiced.bind(number).exec();
    while (invoiced.next()) {
        ComparisonLine& l = lines[invoiced.text(QStringLiteral("CodigoBarra"))];
        l.barcode = invoiced.text(QStringLiteral("CodigoBarra"));
        l.name = invoiced.text(QStringLiteral("Nombre"));
        l.invoiced = invoiced.decimal(QStringLiteral("Cantidad")).rounded(3);
    }
    return lines.values();
}

QList<Branch> activeBranches(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM SUCURSALES WHERE Status = 1 ORDER BY "
                                 "Codigo"));
    q.exec();
    QList<Branch> out;
    while (q.next())
        out.append({q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre"))});
    return out;
}

} // namespace orvo::inventory::purchases::store
