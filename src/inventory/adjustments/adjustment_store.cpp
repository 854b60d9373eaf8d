#include "inventory/adjustments/adjustment_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::adjustments::store {

namespace {

// Column scales: amounts (18,2), quantities (18,3), costs (18,5).
constexpr int kMoney = 2;
constexpr int kQuantity = 3;
constexpr int kCost = 5;

QList<QPair<QString, Decimal>> summedLines(const QSqlDatabase& db, const QString& table,
                                           long long number) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra, SUM(Cantidad) AS Cantidad, MIN(Item) AS "
                                 "Primero FROM ") +
                      table +
                      QStringLiteral(" WHERE Numero = ? GROUP BY CodigoBarra ORDER BY "
                                     "MIN(Item), CodigoBarra"));
    q.bind(number).exec();
    QList<QPair<QString, Decimal>> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")), q.decimal(QStringLiteral("Cantidad"))});
    return out;
}

} // namespace

QList<AdjustmentType> activeTypes(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, Signo FROM TIPOAJUSTES WHERE Status = 1 "
                                 "ORDER BY Codigo"));
    q.exec();
    QList<AdjustmentType> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")),
                    q.integer(QStringLiteral("Signo"))});
    return out;
}

std::optional<AdjustmentType> type(const QSqlDatabase& db, int code) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, Signo FROM TIPOAJUSTES WHERE Codigo = ?"));
    q.bind(code).exec();
    if (!q.next())
        return std::nullopt;
    return AdjustmentType{q.integer(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")),
                          q.integer(QStringLiteral("Signo"))};
}

void insertAdjustment(const QSqlDatabase& db, const Adjustment& a) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("INSERT INTO AJUSTES (Numero, Fecha, TipoAjuste, Signo, "
                                 "TotalValor, Observacion, Usuario, InterContable, Status, IDLote) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, 0, 0, ?)"));
    q.bind(a.number)
        .bind(a.date)
        .bind(a.type)
        .bind(a.sign)
        .bind(a.totalValue, kMoney)
        .bind(a.note)
        .bind(a.user);
    if (a.lotId > 0)
        q.bind(a.lotId);
    else
        q.bindNull();
    q.exec();
}

bool updateAdjustment(const QSqlDatabase& db, const Adjustment& a) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE AJUSTES SET Fecha = ?, Observacion = ?, TipoAjuste = ?, "
                                 "Signo = ?, TotalValor = ?, IDLote = ? WHERE Numero = ? AND "
                                 "Status = 0"));
    q.bind(a.date).bind(a.note).bind(a.type).bind(a.sign).bind(a.totalValue, kMoney);
    if (a.lotId > 0)
        q.bind(a.lotId);
    else
        q.bindNull();
    q.bind(a.number).exec();
    return q.rowsAffected() > 0;
}

void deleteLines(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM MOVAJUSTES WHERE Numero = ?"), {number});
}

void upsertLine(const QSqlDatabase& db, long long number, const AdjustmentLine& line, int item) {
    db::requireTransaction(db);
    db::Sql up(db, QStringLiteral("UPDATE MOVAJUSTES SET Cantidad = ROUND(Cantidad + ?, 3) WHERE "
                                  "Numero = ? AND CodigoBarra = ?"));
    up.bind(line.quantity, kQuantity).bind(number).bind(line.barcode).exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO MOVAJUSTES (Numero, Item, CodigoBarra, Cantidad, "
                               "Costo) VALUES (?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(item)
        .bind(line.barcode)
        .bind(line.quantity, kQuantity)
        .bind(line.price, kCost)
        .exec();
}

bool markApproved(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE AJUSTES SET Status = 1, TotalValor = (SELECT "
                                      "ROUND(COALESCE(SUM(Cantidad * Costo), 0), 2) FROM "
                                      "MOVAJUSTES WHERE Numero = ?) WHERE Numero = ? AND Status "
                                      "= 0"),
                       {number, number}) > 0;
}

void setTotalValue(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE AJUSTES SET TotalValor = (SELECT "
                               "ROUND(COALESCE(SUM(Cantidad * Costo), 0), 2) FROM MOVAJUSTES "
                               "WHERE Numero = ?) WHERE Numero = ?"),
                {number, number});
}

void moveStock(const QSqlDatabase& db, long long number, int sign, bool activate) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(COALESCE("
                               "INVENTARIO.Existencia, 0) + S.Cantidad, 3)") +
                    (activate ? QStringLiteral(", Status = 1") : QString()) +
                    QStringLiteral(" FROM (SELECT CodigoBarra, SUM(Cantidad) * %1 AS Cantidad "
                                   "FROM MOVAJUSTES WHERE Numero = ? GROUP BY CodigoBarra) S "
                                   "WHERE S.CodigoBarra = INVENTARIO.CodigoBarra")
                        .arg(sign < 0 ? -1 : 1),
                {number});
}

bool deleteOpen(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    if (!db::exists(db,
                    QStringLiteral("SELECT Numero FROM AJUSTES WHERE Numero = ? AND Status = 0"),
                    {number}))
        return false;
    deleteLines(db, number);
    db::execute(db, QStringLiteral("DELETE FROM AJUSTES WHERE Numero = ? AND Status = 0"),
                {number});
    return true;
}

std::optional<Adjustment> load(const QSqlDatabase& db, long long number) {
    db::Sql h(db, QStringLiteral("SELECT Numero, Fecha, TipoAjuste, Signo, TotalValor, "
                                 "Observacion, Usuario, Status, IDLote FROM AJUSTES WHERE Numero "
                                 "= ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    Adjustment a;
    a.number = h.bigint(QStringLiteral("Numero"));
    a.date = h.dateTime(QStringLiteral("Fecha"));
    a.type = h.integer(QStringLiteral("TipoAjuste"));
    a.sign = h.integer(QStringLiteral("Signo"));
    a.totalValue = h.decimal(QStringLiteral("TotalValor"));
    a.note = h.text(QStringLiteral("Observacion"));
    a.user = h.text(QStringLiteral("Usuario"));
    a.status = h.integer(QStringLiteral("Status"));
    a.lotId = h.bigint(QStringLiteral("IDLote"));
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.Costo FROM "
                                 "MOVAJUSTES M LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                                 "M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item"));
    l.bind(number).exec();
    while (l.next()) {
        AdjustmentLine line;
        line.barcode = l.text(QStringLiteral("CodigoBarra"));
        line.name = l.text(QStringLiteral("Nombre"));
        line.quantity = l.decimal(QStringLiteral("Cantidad"));
        line.price = l.decimal(QStringLiteral("Costo"));
        a.lines << line;
    }
    return a;
}

QList<purchases::DocumentSummary> list(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT A.Numero, A.TipoAjuste, T.Nombre, A.Fecha, A.TotalValor, "
                                 "A.Status FROM AJUSTES A LEFT JOIN TIPOAJUSTES T ON T.Codigo = "
                                 "A.TipoAjuste ORDER BY A.Numero DESC"));
    q.exec();
    QList<purchases::DocumentSummary> out;
    while (q.next()) {
        purchases::DocumentSummary s;
        s.number = QString::number(q.bigint(QStringLiteral("Numero")));
        s.supplier = QString::number(q.integer(QStringLiteral("TipoAjuste")));
        s.supplierName = q.text(QStringLiteral("Nombre"));
        s.date = q.dateTime(QStringLiteral("Fecha"));
        s.total = q.decimal(QStringLiteral("TotalValor"));
        s.status = q.integer(QStringLiteral("Status"));
        out << s;
    }
    return out;
}

QList<QPair<QString, Decimal>> transferQuantities(const QSqlDatabase& db, long long number) {
    return summedLines(db, QStringLiteral("MOVTRANSFERENCIAS"), number);
}

QList<QPair<QString, Decimal>> transferReturnQuantities(const QSqlDatabase& db, long long number) {
    return summedLines(db, QStringLiteral("MOVDEVTRANSFERENCIAS"), number);
}

bool transferExists(const QSqlDatabase& db, long long number) {
    return db::exists(db, QStringLiteral("SELECT Numero FROM TRANSFERENCIAS WHERE Numero = ?"),
                      {number});
}

bool transferReturnExists(const QSqlDatabase& db, long long number) {
    return db::exists(db, QStringLiteral("SELECT Numero FROM DEVTRANSFERENCIAS WHERE Numero = ?"),
                      {number});
}

QString transfersCatalogSql() {
    return QStringLiteral("SELECT T.Numero, T.Fecha, T.CodigoRecibe AS Destino, S.Nombre, "
                          "T.TotalValor, T.Status FROM TRANSFERENCIAS T LEFT JOIN SUCURSALES S "
                          "ON S.Codigo = T.CodigoRecibe ORDER BY T.Numero DESC");
}

QString transferReturnsCatalogSql() {
    return QStringLiteral("SELECT D.Numero, D.Fecha, D.CodigoRecibe AS Destino, S.Nombre, "
                          "D.TotalValor, D.Status FROM DEVTRANSFERENCIAS D LEFT JOIN SUCURSALES S "
                          "ON S.Codigo = D.CodigoRecibe ORDER BY D.Numero DESC");
}

} // namespace orvo::inventory::adjustments::store
