#include "inventory/articles/lots.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"

namespace orvo::inventory::lots {

namespace {

QList<Lot> read(const QSqlDatabase& db, const QString& statement) {
    db::Sql q(db, statement);
    q.exec();
    QList<Lot> out;
    while (q.next())
        out.append({q.bigint("ID"), q.text("Lote"), q.text("Descripcion"), q.integer("Estado"),
                    q.dateTime("FechaRegistro"), q.text("UsuarioCreacion")});
    return out;
}

} // namespace

QList<Lot> listLots(const QSqlDatabase& db) {
    return read(db, QStringLiteral("SELECT ID, Lote, Descripcion, Estado, FechaRegistro, "
                                   "UsuarioCreacion FROM LOTES WHERE ID <> 0 ORDER BY Lote"));
}

void saveLot(const QSqlDatabase& db, const Lot& lot, bool adding, const QString& userCode) {
    db::Transaction tx(db);
    if (adding) {
        if (db::execute(db, QStringLiteral("UPDATE LOTES SET Estado = Estado WHERE Lote = ?"),
                        {lot.code}) > 0)
            throw UserError(QStringLiteral("Registro duplicado!"));
        db::execute(db,
                    QStringLiteral("INSERT INTO LOTES(Lote, Descripcion, FechaRegistro, Estado, "
                                   "UsuarioCreacion) VALUES (?, ?, ") +
                        db::nowExpression(db) + QStringLiteral(", ?, ?)"),
                    {lot.code, lot.description, lot.state, userCode});
    } else {
        db::execute(db,
                    QStringLiteral("UPDATE LOTES SET Descripcion = ?, Estado = ? WHERE Lote = ?"),
                    {lot.description, lot.state, lot.code});
    }
    tx.commit();
}

bool deleteLot(const QSqlDatabase& db, const QString& code) {
    db::Transaction tx(db);
    const int deleted =
        db::execute(db, QStringLiteral("DELETE FROM LOTES WHERE Lote = ? AND ID <> 0"), {code});
    tx.commit();
    return deleted > 0;
}

QList<Lot> openLots(const QSqlDatabase& db) {
    return read(db, QStringLiteral("SELECT ID, Lote, Descripcion, Estado, FechaRegistro, "
                                   "UsuarioCreacion FROM LOTES WHERE Estado <> 0 AND ID <> 0 "
                                   "ORDER BY Lote"));
}

std::optional<long long> lotIdOf(const QSqlDatabase& db, const QString& code) {
    const QVariant id =
        db::scalar(db, QStringLiteral("SELECT ID FROM LOTES WHERE Lote = ?"), {code});
    if (!id.isValid() || id.isNull())
        return std::nullopt;
    return id.toLongLong();
}

} // namespace orvo::inventory::lots
