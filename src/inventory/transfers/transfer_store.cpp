#include "inventory/transfers/transfer_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::transfers::store {

namespace {

// Column scales: amounts (18,2), quantities (18,3), costs (18,5).
constexpr int kMoney = 2;
constexpr int kQuantity = 3;
constexpr int kCost = 5;

} // namespace

const Tables& issued(Kind kind) {
    static const Tables transfers{QStringLiteral("TRANSFERENCIAS"),
                                  QStringLiteral("MOVTRANSFERENCIAS")};
    static const Tables returns{QStringLiteral("DEVTRANSFERENCIAS"),
                                QStringLiteral("MOVDEVTRANSFERENCIAS")};
    return kind == Kind::Transfer ? transfers : returns;
}

const Tables& received(Kind kind) {
    static const Tables transfers{QStringLiteral("ITRANSFERENCIAS"),
                                  QStringLiteral("IMOVTRANSFERENCIAS")};
    static const Tables returns{QStringLiteral("IDEVTRANSFERENCIAS"),
                                QStringLiteral("IMOVDEVTRANSFERENCIAS")};
    return kind == Kind::Transfer ? transfers : returns;
}

QString storeCode(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SELECT Codigo FROM PARAMETROS LIMIT 1"))
        .toString()
        .trimmed();
}

bool branchExists(const QSqlDatabase& db, const QString& code) {
    return db::exists(db, QStringLiteral("SELECT 1 FROM SUCURSALES WHERE Codigo = ?"), {code});
}

QList<DispatchType> activeDispatchTypes(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT ID, Descripcion FROM TIPO_DESPACHO WHERE Estado <> 0 "
                                 "ORDER BY ID"));
    q.exec();
    QList<DispatchType> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("ID")), q.text(QStringLiteral("Descripcion"))});
    return out;
}

void insertHeader(const QSqlDatabase& db, const Transfer& t) {
    db::requireTransaction(db);
    if (t.kind == Kind::Transfer) {
        db::Sql(db, QStringLiteral("INSERT INTO TRANSFERENCIAS (Numero, Fecha, FechaEmision, "
                                   "CodigoRecibe, CodigoEnvia, DocumentoOrigen, TotalValor, "
                                   "Observacion, Usuario, InterContable, Status, IDLote, "
                                   "IDDespacho) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0, ?, ?)"))
            .bind(t.number)
            .bind(t.date)
            .bind(t.issueDate)
            .bind(t.receiver)
            .bind(t.sender)
            .bind(t.origin)
            .bind(t.totalValue, kMoney)
            .bind(t.note)
            .bind(t.user)
            .bind(t.lotId)
            .bind(t.dispatchId)
            .exec();
        return;
    }
    db::Sql(db, QStringLiteral("INSERT INTO DEVTRANSFERENCIAS (Numero, Fecha, FechaEmision, "
                               "CodigoEnvia, CodigoRecibe, DocumentoOrigen, TotalValor, "
                               "Observacion, Usuario, Status, InterContable, IDLote) VALUES (?, "
                               "?, ?, ?, ?, ?, ?, ?, ?, 0, 0, ?)"))
        .bind(t.number)
        .bind(t.date)
        .bind(t.issueDate)
        .bind(t.sender)
        .bind(t.receiver)
        .bind(t.origin)
        .bind(t.totalValue, kMoney)
        .bind(t.note)
        .bind(t.user)
        .bind(t.lotId)
        .exec();
}

bool updateHeader(const QSqlDatabase& db, const Transfer& t) {
    db::requireTransaction(db);
    const bool transfer = t.kind == Kind::Transfer;
    db::Sql up(db, QStringLiteral("UPDATE ") + issued(t.kind).header +
                       QStringLiteral(" SET Fecha = ?, FechaEmision = ?, CodigoRecibe = ?, "
                                      "DocumentoOrigen = ?, Observacion = ?, TotalValor = ?, "
                                      "IDLote = ?, ") +
                       (transfer ? QStringLiteral("IDDespacho = ?, ") : QString()) +
                       QStringLiteral("Usuario = ? WHERE Numero = ? AND Status = 0"));
    up.bind(t.date)
        .bind(t.issueDate)
        .bind(t.receiver)
        .bind(t.origin)
        .bind(t.note)
        .bind(t.totalValue, kMoney)
        .bind(t.lotId);
    if (transfer)
        up.bind(t.dispatchId);
    up.bind(t.user).bind(t.number).exec();
    return up.rowsAffected() > 0;
}

void deleteLines(const QSqlDatabase& db, Kind kind, long long number) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("DELETE FROM ") + issued(kind).lines +
                    QStringLiteral(" WHERE Numero = ?"),
                {number});
}

void upsertLine(const QSqlDatabase& db, Kind kind, long long number, const DocumentLine& line,
                int item, const QDateTime& when) {
    db::requireTransaction(db);
    const QString& lines = issued(kind).lines;
    db::Sql up(db, QStringLiteral("UPDATE ") + lines +
                       QStringLiteral(" SET Cantidad = ROUND(Cantidad + ?, 3) WHERE Numero = ? AND "
                                      "CodigoBarra = ? AND NumeroCaja = ?"));
    up.bind(line.quantity, kQuantity).bind(number).bind(line.barcode).bind(line.box).exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO ") + lines +
                    QStringLiteral(" (Numero, CodigoBarra, Valor, Cantidad, NumeroCaja, Item, "
                                   "Fecha) VALUES (?, ?, ?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(line.barcode)
        .bind(line.price, kCost)
        .bind(line.quantity, kQuantity)
        .bind(line.box)
        .bind(item)
        .bind(when)
        .exec();
}

QList<Movement> holdMovements(const QSqlDatabase& db, Kind kind, long long number) {
    db::requireTransaction(db);
    const QString& lines = issued(kind).lines;
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra IN "
                               "(SELECT CodigoBarra FROM ") +
                    lines + QStringLiteral(" WHERE Numero = ?)"),
                {number});
    // Summed here as exact decimals, in the order the barcodes were first keyed.
    db::Sql q(db, QStringLiteral("SELECT M.CodigoBarra, M.Cantidad, I.CostoPromedio FROM ") +
                      lines +
                      QStringLiteral(" M INNER JOIN INVENTARIO I ON I.CodigoBarra = "
                                     "M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item"));
    q.bind(number).exec();
    QList<Movement> out;
    while (q.next()) {
        const QString barcode = q.text(QStringLiteral("CodigoBarra"));
        const Decimal units = q.decimal(QStringLiteral("Cantidad"));
        auto it = std::find_if(out.begin(), out.end(),
                               [&](const Movement& m) { return m.barcode == barcode; });
        if (it == out.end())
            out.append({barcode, units, q.decimal(QStringLiteral("CostoPromedio"))});
        else
            it->units += units;
    }
    return out;
}

void addStock(const QSqlDatabase& db, const QString& barcode, const Decimal& units) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(Existencia + ?, 3) WHERE "
                               "CodigoBarra = ?"))
        .bind(units, kQuantity)
        .bind(barcode)
        .exec();
}

void freezeValue(const QSqlDatabase& db, Kind kind, long long number, const QString& barcode,
                 const Decimal& cost) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE ") + issued(kind).lines +
                    QStringLiteral(" SET Valor = ? WHERE Numero = ? AND CodigoBarra = ?"))
        .bind(cost, kCost)
        .bind(number)
        .bind(barcode)
        .exec();
}

bool markApproved(const QSqlDatabase& db, Kind kind, long long number, const Decimal& total) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + issued(kind).header +
                           QStringLiteral(" SET Status = 1, TotalValor = ? WHERE Numero = ? AND "
                                          "Status = 0"),
                       {total.toVariant(kMoney), number}) > 0;
}

void markExported(const QSqlDatabase& db, Kind kind, long long number) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE ") + issued(kind).header +
                    QStringLiteral(" SET Status = 2 WHERE Numero = ? AND Status = 1"),
                {number});
}

bool deleteDocument(const QSqlDatabase& db, Kind kind, long long number) {
    db::requireTransaction(db);
    const Tables& t = issued(kind);
    if (db::execute(db,
                    QStringLiteral("UPDATE ") + t.header +
                        QStringLiteral(" SET Status = Status WHERE Numero = ? AND Status = 0"),
                    {number}) == 0)
        return false;
    deleteLines(db, kind, number);
    return db::execute(
               db, QStringLiteral("DELETE FROM ") + t.header + QStringLiteral(" WHERE Numero = ?"),
               {number}) > 0;
}

std::optional<Transfer> load(const QSqlDatabase& db, Kind kind, long long number) {
    const Tables& t = issued(kind);
    db::Sql h(db,
              QStringLiteral("SELECT * FROM ") + t.header + QStringLiteral(" WHERE Numero = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    Transfer out;
    out.kind = kind;
    out.number = number;
    out.date = h.dateTime(QStringLiteral("Fecha"));
    out.issueDate = h.dateTime(QStringLiteral("FechaEmision")).date();
    out.sender = h.text(QStringLiteral("CodigoEnvia"));
    out.receiver = h.text(QStringLiteral("CodigoRecibe"));
    out.origin = h.text(QStringLiteral("DocumentoOrigen"));
    out.note = h.text(QStringLiteral("Observacion"));
    out.user = h.text(QStringLiteral("Usuario"));
    out.lotId = h.bigint(QStringLiteral("IDLote"));
    if (kind == Kind::Transfer)
        out.dispatchId = h.integer(QStringLiteral("IDDespacho"));
    out.status = h.integer(QStringLiteral("Status"));
    out.totalValue = h.decimal(QStringLiteral("TotalValor"));
    db::Sql q(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.Valor, "
                                 "M.NumeroCaja FROM ") +
                      t.lines +
                      QStringLiteral(" M LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra "
                                     "WHERE M.Numero = ? ORDER BY M.Item"));
    q.bind(number).exec();
    while (q.next()) {
        DocumentLine l;
        l.barcode = q.text(QStringLiteral("CodigoBarra"));
        l.name = q.text(QStringLiteral("Nombre"));
        l.quantity = q.decimal(QStringLiteral("Cantidad"));
        l.price = q.decimal(QStringLiteral("Valor"));
        l.box = q.bigint(QStringLiteral("NumeroCaja"));
        out.lines.append(l);
    }
    return out;
}

std::optional<HeaderState> headerState(const QSqlDatabase& db, Kind kind, long long number) {
    db::Sql q(db, QStringLiteral("SELECT Status, CodigoRecibe FROM ") + issued(kind).header +
                      QStringLiteral(" WHERE Numero = ?"));
    q.bind(number).exec();
    if (!q.next())
        return std::nullopt;
    return HeaderState{q.integer(QStringLiteral("Status")), q.text(QStringLiteral("CodigoRecibe"))};
}

QList<DocumentSummary> list(const QSqlDatabase& db, Kind kind) {
    db::Sql q(db, QStringLiteral("SELECT T.Numero, T.CodigoRecibe, S.Nombre, T.Fecha, "
                                 "T.TotalValor, T.Status FROM ") +
                      issued(kind).header +
                      QStringLiteral(" T LEFT JOIN SUCURSALES S ON S.Codigo = T.CodigoRecibe "
                                     "ORDER BY T.Numero DESC"));
    q.exec();
    QList<DocumentSummary> out;
    while (q.next()) {
        DocumentSummary s;
        s.number = q.text(QStringLiteral("Numero"));
        s.supplier = q.text(QStringLiteral("CodigoRecibe"));
        s.supplierName = q.text(QStringLiteral("Nombre"));
        s.date = q.dateTime(QStringLiteral("Fecha"));
        s.total = q.decimal(QStringLiteral("TotalValor"));
        s.status = q.integer(QStringLiteral("Status"));
        out.append(s);
    }
    return out;
}

QList<long long> approvedFor(const QSqlDatabase& db, Kind kind, const QString& receiver,
                             bool exportedToo) {
    db::Sql q(db, QStringLiteral("SELECT Numero FROM ") + issued(kind).header +
                      QStringLiteral(" WHERE CodigoRecibe = ? AND (Status = 1 OR Status = ?) "
                                     "ORDER BY Numero"));
    q.bind(receiver).bind(exportedToo ? kExported : kApproved).exec();
    QList<long long> out;
    while (q.next())
        out.append(q.bigint(QStringLiteral("Numero")));
    return out;
}

bool changeReceiver(const QSqlDatabase& db, Kind kind, long long number, const QString& receiver) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + issued(kind).header +
                           QStringLiteral(" SET CodigoRecibe = ? WHERE Numero = ? AND Status > 0"),
                       {receiver, number}) > 0;
}

QList<ReceivedSummary> receivedBetween(const QSqlDatabase& db, const QDateTime& from,
                                       const QDateTime& to) {
    db::Sql q(db, QStringLiteral("SELECT Numero, CodigoEnvia, Fecha, TotalValor, Status FROM "
                                 "ITRANSFERENCIAS WHERE Fecha >= ? AND Fecha < ? ORDER BY Fecha, "
                                 "CodigoEnvia, Numero"));
    q.bind(from).bind(to).exec();
    QList<ReceivedSummary> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("Numero")), q.text(QStringLiteral("CodigoEnvia")),
                    q.dateTime(QStringLiteral("Fecha")), q.decimal(QStringLiteral("TotalValor")),
                    q.integer(QStringLiteral("Status"))});
    return out;
}

bool setReceivedStatus(const QSqlDatabase& db, long long number, const QString& sender,
                       int status) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ITRANSFERENCIAS SET Status = ? WHERE Numero = ? AND "
                                      "CodigoEnvia = ?"),
                       {status, number, sender}) > 0;
}

} // namespace orvo::inventory::transfers::store
