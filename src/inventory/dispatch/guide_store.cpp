#include "inventory/dispatch/guide_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::dispatch::store {

namespace {

// A remission's row as the guide lists it.
const QString kRemissionRow = QStringLiteral(
    "SELECT R.Numero, R.Sucursal, S.Nombre, R.Status, R.GuiaDespacho, (SELECT "
    "COUNT(DISTINCT M.NumeroCaja) FROM MOVREMISION M WHERE M.Numero = R.Numero) AS Cajas, "
    "(SELECT SUM(M.Cantidad) FROM MOVREMISION M WHERE M.Numero = R.Numero) AS Unidades FROM "
    "REMISION R LEFT JOIN SUCURSALES S ON S.Codigo = R.Sucursal ");

GuideRemission remissionRow(const db::Sql& q) {
    return {q.bigint(QStringLiteral("Numero")), q.text(QStringLiteral("Sucursal")),
            q.text(QStringLiteral("Nombre")), q.integer(QStringLiteral("Cajas")),
            q.decimal(QStringLiteral("Unidades")).rounded(3)};
}

QList<Choice> choices(const QSqlDatabase& db, const QString& statement) {
    db::Sql q(db, statement);
    q.exec();
    QList<Choice> out;
    while (q.next())
        out.append({q.value(0).toString(), q.value(1).toString()});
    return out;
}

} // namespace

void insertGuide(const QSqlDatabase& db, const Guide& g) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO GUIADESPACHO (Numero, Fecha, Conductor, Vehiculo, "
                               "Observacion, Status) VALUES (?, ?, ?, ?, ?, 0)"))
        .bind(g.number)
        .bind(g.date)
        .bind(g.driver)
        .bind(g.vehicle)
        .bind(g.note)
        .exec();
}

bool updateGuide(const QSqlDatabase& db, const Guide& g) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE GUIADESPACHO SET Fecha = ?, Conductor = ?, Vehiculo "
                                      "= ?, Observacion = ? WHERE Numero = ? AND Status = 0"),
                       {g.date, g.driver, g.vehicle, g.note, g.number}) > 0;
}

bool approveGuide(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE GUIADESPACHO SET Status = 1 WHERE Numero = ? AND "
                                      "Status = 0"),
                       {number}) > 0;
}

bool deleteOpenGuide(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("DELETE FROM GUIADESPACHO WHERE Numero = ? AND Status = 0"),
                       {number}) > 0;
}

void releaseRemissions(const QSqlDatabase& db, long long guide) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE REMISION SET GuiaDespacho = 0 WHERE GuiaDespacho = ?"),
                {guide});
}

bool assignRemission(const QSqlDatabase& db, long long remission, long long guide) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE REMISION SET GuiaDespacho = ? WHERE Numero = ? AND "
                                      "Status >= 1 AND COALESCE(GuiaDespacho, 0) = 0"),
                       {guide, remission}) > 0;
}

std::optional<Guide> loadGuide(const QSqlDatabase& db, long long number) {
    db::Sql h(db, QStringLiteral("SELECT Numero, Fecha, Conductor, Vehiculo, Observacion, Status "
                                 "FROM GUIADESPACHO WHERE Numero = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    Guide g;
    g.number = h.bigint(QStringLiteral("Numero"));
    g.date = h.dateTime(QStringLiteral("Fecha"));
    g.driver = h.text(QStringLiteral("Conductor"));
    g.vehicle = h.text(QStringLiteral("Vehiculo"));
    g.note = h.text(QStringLiteral("Observacion"));
    g.status = h.integer(QStringLiteral("Status"));
    db::Sql r(db, kRemissionRow + QStringLiteral("WHERE R.GuiaDespacho = ? ORDER BY R.Numero"));
    r.bind(number).exec();
    while (r.next())
        g.remissions.append(remissionRow(r));
    return g;
}

QList<GuideSummary> listGuides(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT G.Numero, G.Fecha, T.Nombre, G.Vehiculo, G.Status FROM "
                                 "GUIADESPACHO G LEFT JOIN TRABAJADORES T ON T.Cedula = "
                                 "G.Conductor ORDER BY G.Numero DESC"));
    q.exec();
    QList<GuideSummary> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("Numero")), q.dateTime(QStringLiteral("Fecha")),
                    q.text(QStringLiteral("Nombre")), q.text(QStringLiteral("Vehiculo")),
                    q.integer(QStringLiteral("Status"))});
    return out;
}

RemissionState remissionState(const QSqlDatabase& db, long long remission) {
    db::Sql q(db, kRemissionRow + QStringLiteral("WHERE R.Numero = ?"));
    q.bind(remission).exec();
    RemissionState s;
    if (!q.next())
        return s;
    s.status = q.integer(QStringLiteral("Status"));
    s.guide = q.bigint(QStringLiteral("GuiaDespacho"));
    s.row = remissionRow(q);
    return s;
}

QList<Choice> activeWorkers(const QSqlDatabase& db) {
    return choices(db, QStringLiteral("SELECT Cedula, Nombre FROM TRABAJADORES WHERE Status = 1 "
                                      "ORDER BY Nombre"));
}

QList<Choice> activeVehicles(const QSqlDatabase& db) {
    return choices(db, QStringLiteral("SELECT Placa, Marca || ' ' || Modelo FROM VEHICULOS WHERE "
                                      "Status = 1 ORDER BY Placa"));
}

} // namespace orvo::inventory::dispatch::store
