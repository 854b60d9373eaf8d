#include "inventory/counts/count_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::counts::store {

namespace {

constexpr int kQuantity = 3;

QString pages(Pass pass) {
    return pass == Pass::First ? QStringLiteral("TOMAFISICA1") : QStringLiteral("TOMAFISICA2");
}

QString lines(Pass pass) {
    return pass == Pass::First ? QStringLiteral("MOVTOMAFISICA1")
                               : QStringLiteral("MOVTOMAFISICA2");
}

int statusOf(const QSqlDatabase& db, const QString& table, int number) {
    const QVariant v = db::scalar(db,
                                  QStringLiteral("SELECT Status FROM ") + table +
                                      QStringLiteral(" WHERE NumeroPagina = ?"),
                                  {number});
    return v.isValid() && !v.isNull() ? Decimal::fromVariant(v).toLongLong() : -1;
}

// Whole counted quantities per page and barcode, as SQLite would otherwise sum them in binary.
QString summed(const QString& column) {
    return QStringLiteral("ROUND(SUM(") + column + QStringLiteral("), 3)");
}

} // namespace

int countPasses(const QSqlDatabase& db) {
    const QVariant v = db::scalar(db, QStringLiteral("SELECT NumeroConteos FROM PARAMETROS"));
    return Decimal::fromVariant(v) == Decimal(2) ? 2 : 1;
}

void setCountPasses(const QSqlDatabase& db, int passes) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET NumeroConteos = ?"), {passes});
}

bool anyPage(const QSqlDatabase& db) {
    return anyPage(db, Pass::First) || anyPage(db, Pass::Second) || anyFinalPage(db);
}

int pageStatus(const QSqlDatabase& db, Pass pass, int number) {
    return statusOf(db, pages(pass), number);
}

void insertPage(const QSqlDatabase& db, Pass pass, const CountPage& p) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO ") + pages(pass) +
                    QStringLiteral(" (NumeroPagina, Usuario, Fecha, Observacion, Status) VALUES "
                                   "(?, ?, ?, ?, 0)"))
        .bind(p.number)
        .bind(p.user)
        .bind(p.date)
        .bind(p.note)
        .exec();
}

bool updateNote(const QSqlDatabase& db, Pass pass, int number, const QString& note) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + pages(pass) +
                           QStringLiteral(" SET Observacion = ? WHERE NumeroPagina = ? AND "
                                          "Status = 0"),
                       {note, number}) > 0;
}

bool holdOpenPage(const QSqlDatabase& db, Pass pass, int number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + pages(pass) +
                           QStringLiteral(" SET Status = Status WHERE NumeroPagina = ? AND "
                                          "Status = 0"),
                       {number}) > 0;
}

Decimal addToLine(const QSqlDatabase& db, Pass pass, int number, const QString& barcode,
                  const Decimal& quantity, const QDateTime& at) {
    db::requireTransaction(db);
    db::Sql up(db, QStringLiteral("UPDATE ") + lines(pass) +
                       QStringLiteral(" SET Cantidad = ROUND(Cantidad + ?, 3) WHERE NumeroPagina "
                                      "= ? AND CodigoBarra = ?"));
    up.bind(quantity, kQuantity).bind(number).bind(barcode).exec();
    if (up.rowsAffected() == 0) {
        const int item =
            db::scalar(db,
                       QStringLiteral("SELECT COALESCE(MAX(Item), 0) + 1 AS Item FROM ") +
                           lines(pass) + QStringLiteral(" WHERE NumeroPagina = ?"),
                       {number})
                .toInt();
        db::Sql(db, QStringLiteral("INSERT INTO ") + lines(pass) +
                        QStringLiteral(" (NumeroPagina, Item, CodigoBarra, Cantidad, Hora) "
                                       "VALUES (?, ?, ?, ?, ?)"))
            .bind(number)
            .bind(item)
            .bind(barcode)
            .bind(quantity, kQuantity)
            .bind(at)
            .exec();
    }
    return Decimal::fromVariant(db::scalar(db,
                                           QStringLiteral("SELECT Cantidad FROM ") + lines(pass) +
                                               QStringLiteral(" WHERE NumeroPagina = ? AND "
                                                              "CodigoBarra = ?"),
                                           {number, barcode}));
}

bool removeLine(const QSqlDatabase& db, Pass pass, int number, const QString& barcode) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("DELETE FROM ") + lines(pass) +
                           QStringLiteral(" WHERE NumeroPagina = ? AND CodigoBarra = ?"),
                       {number, barcode}) > 0;
}

bool deleteOpenPage(const QSqlDatabase& db, Pass pass, int number) {
    db::requireTransaction(db);
    if (!holdOpenPage(db, pass, number))
        return false;
    db::execute(db,
                QStringLiteral("DELETE FROM ") + lines(pass) +
                    QStringLiteral(" WHERE NumeroPagina = ?"),
                {number});
    db::execute(db,
                QStringLiteral("DELETE FROM ") + pages(pass) +
                    QStringLiteral(" WHERE NumeroPagina = ?"),
                {number});
    return true;
}

bool approvePage(const QSqlDatabase& db, Pass pass, int number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + pages(pass) +
                           QStringLiteral(" SET Status = 1 WHERE NumeroPagina = ? AND Status = 0"),
                       {number}) > 0;
}

void copySingleCount(const QSqlDatabase& db, int n) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE TOMAFISICA1 SET Status = 2 WHERE NumeroPagina = ?"),
                {n});
    for (const char* table : {"MOVTOMAFISICA2", "TOMAFISICA2", "MOVTOMAFISICA3", "TOMAFISICA3"})
        db::execute(db,
                    QStringLiteral("DELETE FROM ") + QString::fromLatin1(table) +
                        QStringLiteral(" WHERE NumeroPagina = ?"),
                    {n});
    db::execute(db,
                QStringLiteral("INSERT INTO TOMAFISICA2 (NumeroPagina, Usuario, Fecha, "
                               "Observacion, Status) SELECT NumeroPagina, Usuario, Fecha, "
                               "Observacion, Status FROM TOMAFISICA1 WHERE NumeroPagina = ?"),
                {n});
    db::execute(db,
                QStringLiteral("INSERT INTO MOVTOMAFISICA2 (NumeroPagina, CodigoBarra, Cantidad, "
                               "Item, Hora) SELECT NumeroPagina, CodigoBarra, Cantidad, Item, "
                               "Hora FROM MOVTOMAFISICA1 WHERE NumeroPagina = ?"),
                {n});
    db::execute(db,
                QStringLiteral("INSERT INTO TOMAFISICA3 (NumeroPagina, Fecha, Observacion, "
                               "Usuario, Status) SELECT NumeroPagina, Fecha, Observacion, "
                               "Usuario, 1 FROM TOMAFISICA1 WHERE NumeroPagina = ?"),
                {n});
    db::execute(db,
                QStringLiteral("INSERT INTO MOVTOMAFISICA3 (NumeroPagina, Item, CodigoBarra, "
                               "Cantidad1, Cantidad2, Cantidad3, Hora) SELECT NumeroPagina, "
                               "Item, CodigoBarra, Cantidad, Cantidad, Cantidad, Hora FROM "
                               "MOVTOMAFISICA1 WHERE NumeroPagina = ?"),
                {n});
}

std::optional<CountPage> loadPage(const QSqlDatabase& db, Pass pass, int number) {
    db::Sql h(db, QStringLiteral("SELECT NumeroPagina, Usuario, Fecha, Observacion, Status FROM ") +
                      pages(pass) + QStringLiteral(" WHERE NumeroPagina = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    CountPage p;
    p.number = h.integer(QStringLiteral("NumeroPagina"));
    p.user = h.text(QStringLiteral("Usuario"));
    p.date = h.dateTime(QStringLiteral("Fecha"));
    p.note = h.text(QStringLiteral("Observacion"));
    p.status = h.integer(QStringLiteral("Status"));
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM ") + lines(pass) +
                      QStringLiteral(" M LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra "
                                     "WHERE M.NumeroPagina = ? ORDER BY M.Item, M.CodigoBarra"));
    l.bind(number).exec();
    while (l.next())
        p.lines.append({l.text(QStringLiteral("CodigoBarra")), l.text(QStringLiteral("Nombre")),
                        l.decimal(QStringLiteral("Cantidad"))});
    return p;
}

QList<PageSummary> listPages(const QSqlDatabase& db, Pass pass) {
    db::Sql q(db, QStringLiteral("SELECT P.NumeroPagina, P.Usuario, P.Fecha, P.Observacion, "
                                 "P.Status, (SELECT COUNT(*) FROM %1 M WHERE M.NumeroPagina = "
                                 "P.NumeroPagina) AS Articulos, (SELECT SUM(M.Cantidad) FROM %1 M "
                                 "WHERE M.NumeroPagina = P.NumeroPagina) AS Unidades, (SELECT "
                                 "T.Status FROM TOMAFISICA3 T WHERE T.NumeroPagina = "
                                 "P.NumeroPagina) AS Final FROM %2 P ORDER BY P.NumeroPagina")
                      .arg(lines(pass), pages(pass)));
    q.exec();
    QList<PageSummary> out;
    while (q.next()) {
        PageSummary s;
        s.number = q.integer(QStringLiteral("NumeroPagina"));
        s.user = q.text(QStringLiteral("Usuario"));
        s.date = q.dateTime(QStringLiteral("Fecha"));
        s.note = q.text(QStringLiteral("Observacion"));
        s.status = q.integer(QStringLiteral("Status"));
        s.items = q.integer(QStringLiteral("Articulos"));
        s.units = q.decimal(QStringLiteral("Unidades"));
        s.final = q.isNull(QStringLiteral("Final")) ? -1 : q.integer(QStringLiteral("Final"));
        out << s;
    }
    return out;
}

int finalStatus(const QSqlDatabase& db, int number) {
    return statusOf(db, QStringLiteral("TOMAFISICA3"), number);
}

void prepareFinal(const QSqlDatabase& db, int n) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("INSERT INTO TOMAFISICA3 (NumeroPagina, Fecha, Observacion, "
                               "Usuario, Status) SELECT NumeroPagina, Fecha, Observacion, "
                               "Usuario, 0 FROM TOMAFISICA1 WHERE NumeroPagina = ?"),
                {n});
    db::execute(db,
                QStringLiteral("INSERT INTO MOVTOMAFISICA3 (NumeroPagina, Item, CodigoBarra, "
                               "Cantidad1, Cantidad2, Cantidad3, Hora) SELECT NumeroPagina, "
                               "MAX(Item), CodigoBarra, ") +
                    summed(QStringLiteral("Cantidad")) +
                    QStringLiteral(", 0, 0, MAX(Hora) FROM MOVTOMAFISICA1 WHERE NumeroPagina = ? "
                                   "GROUP BY NumeroPagina, CodigoBarra"),
                {n});
    db::execute(db,
                QStringLiteral("UPDATE MOVTOMAFISICA3 SET Cantidad2 = (SELECT ") +
                    summed(QStringLiteral("M.Cantidad")) +
                    QStringLiteral(" FROM MOVTOMAFISICA2 M WHERE M.NumeroPagina = ? AND "
                                   "M.CodigoBarra = MOVTOMAFISICA3.CodigoBarra) WHERE "
                                   "NumeroPagina = ? AND CodigoBarra IN (SELECT CodigoBarra FROM "
                                   "MOVTOMAFISICA2 WHERE NumeroPagina = ?)"),
                {n, n, n});
    // Found only by the second team: it enters the page with nothing from the first.
    db::execute(db,
                QStringLiteral("INSERT INTO MOVTOMAFISICA3 (NumeroPagina, Item, CodigoBarra, "
                               "Cantidad1, Cantidad2, Cantidad3, Hora) SELECT NumeroPagina, "
                               "MAX(Item), CodigoBarra, 0, ") +
                    summed(QStringLiteral("Cantidad")) +
                    QStringLiteral(", 0, MAX(Hora) FROM MOVTOMAFISICA2 WHERE NumeroPagina = ? AND "
                                   "CodigoBarra NOT IN (SELECT CodigoBarra FROM MOVTOMAFISICA3 "
                                   "WHERE NumeroPagina = ?) GROUP BY NumeroPagina, CodigoBarra"),
                {n, n});
    db::execute(db,
                QStringLiteral("UPDATE MOVTOMAFISICA3 SET Cantidad3 = Cantidad2 WHERE Cantidad1 = "
                               "Cantidad2 AND NumeroPagina = ?"),
                {n});
}

bool holdOpenFinal(const QSqlDatabase& db, int number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE TOMAFISICA3 SET Status = Status WHERE NumeroPagina "
                                      "= ? AND Status = 0"),
                       {number}) > 0;
}

void setFinal(const QSqlDatabase& db, int number, const QString& barcode, const Decimal& quantity,
              const QDateTime& at) {
    db::requireTransaction(db);
    db::Sql up(db, QStringLiteral("UPDATE MOVTOMAFISICA3 SET Cantidad3 = ? WHERE NumeroPagina = ? "
                                  "AND CodigoBarra = ?"));
    up.bind(quantity, kQuantity).bind(number).bind(barcode).exec();
    if (up.rowsAffected() > 0)
        return;
    const int item =
        db::scalar(db,
                   QStringLiteral("SELECT COALESCE(MAX(Item), 0) + 1 AS Item FROM MOVTOMAFISICA3 "
                                  "WHERE NumeroPagina = ?"),
                   {number})
            .toInt();
    db::Sql(db, QStringLiteral("INSERT INTO MOVTOMAFISICA3 (NumeroPagina, Item, CodigoBarra, "
                               "Cantidad1, Cantidad2, Cantidad3, Hora) VALUES (?, ?, ?, 0, 0, ?, "
                               "?)"))
        .bind(number)
        .bind(item)
        .bind(barcode)
        .bind(quantity, kQuantity)
        .bind(at)
        .exec();
}

bool approveFinal(const QSqlDatabase& db, int number) {
    db::requireTransaction(db);
    if (db::execute(db,
                    QStringLiteral("UPDATE TOMAFISICA3 SET Status = 1 WHERE NumeroPagina = ? AND "
                                   "Status = 0"),
                    {number}) == 0)
        return false;
    for (const char* table : {"TOMAFISICA1", "TOMAFISICA2"})
        db::execute(db,
                    QStringLiteral("UPDATE ") + QString::fromLatin1(table) +
                        QStringLiteral(" SET Status = 2 WHERE NumeroPagina = ? AND Status = 1"),
                    {number});
    return true;
}

std::optional<FinalPage> loadFinal(const QSqlDatabase& db, int number) {
    db::Sql h(db, QStringLiteral("SELECT NumeroPagina, Fecha, Observacion, Usuario, Status FROM "
                                 "TOMAFISICA3 WHERE NumeroPagina = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    FinalPage p;
    p.number = h.integer(QStringLiteral("NumeroPagina"));
    p.date = h.dateTime(QStringLiteral("Fecha"));
    p.note = h.text(QStringLiteral("Observacion"));
    p.user = h.text(QStringLiteral("Usuario"));
    p.status = h.integer(QStringLiteral("Status"));
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad1, M.Cantidad2, "
                                 "M.Cantidad3 FROM MOVTOMAFISICA3 M LEFT JOIN INVENTARIO I ON "
                                 "I.CodigoBarra = M.CodigoBarra WHERE M.NumeroPagina = ? ORDER BY "
                                 "M.Item, M.CodigoBarra"));
    l.bind(number).exec();
    while (l.next())
        p.lines.append({l.text(QStringLiteral("CodigoBarra")), l.text(QStringLiteral("Nombre")),
                        l.decimal(QStringLiteral("Cantidad1")),
                        l.decimal(QStringLiteral("Cantidad2")),
                        l.decimal(QStringLiteral("Cantidad3"))});
    return p;
}

QList<PageProgress> pageProgress(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral(
                      "SELECT N.NumeroPagina, (SELECT Status FROM TOMAFISICA1 A WHERE "
                      "A.NumeroPagina = N.NumeroPagina) AS Conteo1, (SELECT Status FROM "
                      "TOMAFISICA2 B WHERE B.NumeroPagina = N.NumeroPagina) AS Conteo2, (SELECT "
                      "Status FROM TOMAFISICA3 C WHERE C.NumeroPagina = N.NumeroPagina) AS "
                      "Conteo3, (SELECT COUNT(*) FROM MOVTOMAFISICA3 M WHERE M.NumeroPagina = "
                      "N.NumeroPagina AND M.Cantidad1 <> M.Cantidad2) AS Diferencias FROM (SELECT "
                      "NumeroPagina FROM TOMAFISICA1 UNION SELECT NumeroPagina FROM TOMAFISICA2 "
                      "UNION SELECT NumeroPagina FROM TOMAFISICA3) N ORDER BY N.NumeroPagina"));
    q.exec();
    QList<PageProgress> out;
    auto status = [&q](const char* column) {
        const QString name = QString::fromLatin1(column);
        return q.isNull(name) ? -1 : q.integer(name);
    };
    while (q.next())
        out.append({q.integer(QStringLiteral("NumeroPagina")), status("Conteo1"), status("Conteo2"),
                    status("Conteo3"), q.integer(QStringLiteral("Diferencias"))});
    return out;
}

bool unprocessedPages(const QSqlDatabase& db, Pass pass) {
    db::requireTransaction(db);
    // The no-op update finds them, as the refusal always has.
    return db::execute(db, QStringLiteral("UPDATE ") + pages(pass) +
                               QStringLiteral(" SET Status = Status WHERE Status <> 2 OR Status "
                                              "= 0")) > 0;
}

bool anyFinalPage(const QSqlDatabase& db) {
    return db::exists(db, QStringLiteral("SELECT NumeroPagina FROM TOMAFISICA3"));
}

bool unapprovedFinalPages(const QSqlDatabase& db) {
    return db::exists(db, QStringLiteral("SELECT NumeroPagina FROM TOMAFISICA3 WHERE Status <> 1"));
}

bool adjustedOn(const QSqlDatabase& db, const QDate& day) {
    return db::exists(db,
                      QStringLiteral("SELECT CodigoBarra FROM FISICOLOGICO WHERE FechaAjuste >= ? "
                                     "AND FechaAjuste < ?"),
                      {db::dayStart(day), db::nextDayStart(day)});
}

bool openPages(const QSqlDatabase& db, Pass pass) {
    return db::exists(db, QStringLiteral("SELECT NumeroPagina FROM ") + pages(pass) +
                              QStringLiteral(" WHERE Status = 0"));
}

bool anyPage(const QSqlDatabase& db, Pass pass) {
    return db::exists(db, QStringLiteral("SELECT NumeroPagina FROM ") + pages(pass));
}

int loadInventory(const QSqlDatabase& db, const QDateTime& at) {
    db::requireTransaction(db);
    // An article whose tax code is missing is counted all the same, at no tax.
    return db::execute(
        db,
        QStringLiteral("INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, Precio, Impuesto, "
                       "Costo, ExistenciaLogica, ExistenciaFisica, Ajuste) SELECT ?, "
                       "I.CodigoBarra, COALESCE(I.PrecioDetal, 0), ROUND(COALESCE(I.PrecioDetal, "
                       "0) * (COALESCE(IMP.PorcentajeImpuesto, 0) / 100.00), 2), "
                       "COALESCE(I.CostoPromedio, 0), COALESCE(I.Existencia, 0), 0, 0 FROM "
                       "INVENTARIO I LEFT JOIN IMPUESTOS IMP ON I.TipoImpuesto = IMP.Codigo WHERE "
                       "I.Status <> 3"),
        {at});
}

void loadCounted(const QSqlDatabase& db, const QDateTime& at) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE FISICOLOGICO SET ExistenciaFisica = COALESCE((SELECT "
                               "ROUND(SUM(M.Cantidad3), 3) FROM MOVTOMAFISICA3 M WHERE "
                               "FISICOLOGICO.CodigoBarra = M.CodigoBarra), 0) WHERE FechaAjuste "
                               "= ?"),
                {at});
}

void computeDifferences(const QSqlDatabase& db, const QDateTime& at) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE FISICOLOGICO SET Ajuste = ROUND(ExistenciaFisica - "
                               "ExistenciaLogica, 3) WHERE FechaAjuste = ?"),
                {at});
}

void replaceStock(const QSqlDatabase& db, const QDateTime& at) {
    db::requireTransaction(db);
    db::execute(db,
                // A service is never counted and has no stock: it stays on sale as it was.
                QStringLiteral("UPDATE INVENTARIO SET Status = CASE WHEN Tipo = 1 THEN Status ELSE "
                               "0 END, Existencia = 0, ExistenciaInicial = 0, "
                               "FechaPrimerMovimiento = ? WHERE Status <> 3"),
                {at});
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Existencia = F.ExistenciaFisica, "
                               "ExistenciaInicial = F.ExistenciaFisica FROM FISICOLOGICO F WHERE "
                               "INVENTARIO.CodigoBarra = F.CodigoBarra AND F.FechaAjuste = ? AND "
                               "INVENTARIO.Status <> 3"),
                {at});
}

void deleteAllPages(const QSqlDatabase& db) {
    db::requireTransaction(db);
    for (const char* table : {"MOVTOMAFISICA1", "TOMAFISICA1", "MOVTOMAFISICA2", "TOMAFISICA2",
                              "MOVTOMAFISICA3", "TOMAFISICA3"})
        db::execute(db, QStringLiteral("DELETE FROM ") + QString::fromLatin1(table));
}

QList<MovedTransfer> movedTransfers(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Numero, CodigoEnvia, CodigoRecibe, Fecha FROM "
                                 "ITRANSFERENCIAS WHERE Status = 2 ORDER BY CodigoEnvia, Numero"));
    q.exec();
    QList<MovedTransfer> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("Numero")), q.text(QStringLiteral("CodigoEnvia")),
                    q.text(QStringLiteral("CodigoRecibe")), q.dateTime(QStringLiteral("Fecha"))});
    return out;
}

void logMovedTransfer(const QSqlDatabase& db, long long logNumber, const MovedTransfer& t,
                      const QDateTime& at, const QString& user) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO BITACORAMOVIMIENTO (Numero, TipodocumentoOrigen, "
                               "DocumentoOrigen, Origen, tipoDocumentoDestino, DocumentoDestino, "
                               "Destino, fecha, Usuario, Observacion) VALUES (?, 'TE', ?, ?, "
                               "'TD', ?, ?, ?, ?, ?)"))
        .bind(logNumber)
        .bind(QString::number(t.number))
        .bind(t.sender)
        .bind(QString::number(t.number))
        .bind(t.receiver)
        .bind(at)
        .bind(user)
        .bind(QStringLiteral("TRANSFERENCIA DESPLAZADA DE FECHA ORIGINAL : ") +
              t.date.toString(QStringLiteral("dd/MM/yyyy")))
        .exec();
}

void bringBackMovedTransfers(const QSqlDatabase& db, const QDateTime& at) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(INVENTARIO.Existencia + "
                               "S.Cantidad, 3) FROM (SELECT M.CodigoBarra, SUM(M.Cantidad) AS "
                               "Cantidad FROM IMOVTRANSFERENCIAS M INNER JOIN ITRANSFERENCIAS H ON "
                               "M.Numero = H.Numero AND M.CodigoEnvia = H.CodigoEnvia WHERE "
                               "H.Status = 2 GROUP BY M.CodigoBarra) S WHERE S.CodigoBarra = "
                               "INVENTARIO.CodigoBarra AND INVENTARIO.Status <> 3"));
    db::execute(db,
                QStringLiteral("UPDATE ITRANSFERENCIAS SET Fecha = ?, Status = 1 WHERE Status = 2"),
                {at});
}

void activateStockedArticles(const QSqlDatabase& db) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Status = 1 WHERE (ExistenciaInicial > 0 "
                                   "OR Existencia > 0) AND Status <> 3"));
}

namespace {

QList<Difference> differences(const QSqlDatabase& db, const QString& sql) {
    db::Sql q(db, sql);
    q.exec();
    QList<Difference> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")), q.text(QStringLiteral("Nombre")),
                    q.decimal(QStringLiteral("Libro")), q.decimal(QStringLiteral("Contado")),
                    q.decimal(QStringLiteral("Costo"))});
    return out;
}

} // namespace

QList<Difference> partialDifferences(const QSqlDatabase& db) {
    return differences(
        db, QStringLiteral("SELECT M.CodigoBarra, MAX(I.Nombre) AS Nombre, "
                           "MAX(COALESCE(I.Existencia, 0)) AS Libro, ROUND(SUM(M.Cantidad), "
                           "3) AS Contado, MAX(COALESCE(I.CostoPromedio, 0)) AS Costo FROM "
                           "MOVTOMAFISICA1 M INNER JOIN INVENTARIO I ON I.CodigoBarra = "
                           "M.CodigoBarra WHERE I.Status <> 3 GROUP BY M.CodigoBarra HAVING "
                           "ROUND(SUM(M.Cantidad) - MAX(COALESCE(I.Existencia, 0)), 3) <> 0 "
                           "ORDER BY M.CodigoBarra"));
}

QList<Difference> physicalDifferences(const QSqlDatabase& db) {
    // Services carry no stock and are never counted.
    return differences(
        db, QStringLiteral("SELECT I.CodigoBarra, MAX(I.Nombre) AS Nombre, "
                           "MAX(COALESCE(I.Existencia, 0)) AS Libro, "
                           "ROUND(COALESCE(SUM(M.Cantidad3), 0), 3) AS Contado, "
                           "MAX(COALESCE(I.CostoPromedio, 0)) AS Costo FROM INVENTARIO I LEFT "
                           "JOIN MOVTOMAFISICA3 M ON M.CodigoBarra = I.CodigoBarra WHERE I.Status "
                           "<> 3 AND COALESCE(I.Tipo, 0) <> 1 GROUP BY I.CodigoBarra HAVING "
                           "ROUND(COALESCE(SUM(M.Cantidad3), 0) - MAX(COALESCE(I.Existencia, "
                           "0)), 3) <> 0 ORDER BY I.CodigoBarra"));
}

void deleteFirstCount(const QSqlDatabase& db) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM MOVTOMAFISICA1"));
    db::execute(db, QStringLiteral("DELETE FROM TOMAFISICA1"));
}

} // namespace orvo::inventory::counts::store
