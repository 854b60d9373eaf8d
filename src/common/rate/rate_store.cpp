#include "common/rate/rate_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::common::rate::store {

using db::Sql;

std::optional<LatestRate> latestRate(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT Valor, Fecha FROM TASA_CAMBIO ORDER BY Fecha DESC, ID DESC "
                             "LIMIT 1"));
    q.exec();
    if (!q.next())
        return std::nullopt;
    return LatestRate{q.decimal(QStringLiteral("Valor")), q.dateTime(QStringLiteral("Fecha"))};
}

std::optional<Decimal> rateBefore(const QSqlDatabase& db, const QDateTime& until) {
    Sql q(db, QStringLiteral("SELECT Valor FROM TASA_CAMBIO WHERE Fecha < ? ORDER BY Fecha DESC, "
                             "ID DESC LIMIT 1"));
    q.bind(until).exec();
    if (!q.next())
        return std::nullopt;
    return q.decimal(QStringLiteral("Valor"));
}

bool rateRegisteredBetween(const QSqlDatabase& db, const QDateTime& from, const QDateTime& until) {
    return db::exists(db,
                      QStringLiteral("SELECT ID FROM TASA_CAMBIO WHERE Fecha >= ? AND Fecha < ?"),
                      {from, until});
}

QList<RateEntry> rates(const QSqlDatabase& db, int limit) {
    Sql q(db, QStringLiteral("SELECT ID, Fecha, Valor FROM TASA_CAMBIO ORDER BY Fecha DESC, ID "
                             "DESC LIMIT ?"));
    q.bind(limit).exec();
    QList<RateEntry> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("ID")), q.dateTime(QStringLiteral("Fecha")),
                    q.decimal(QStringLiteral("Valor"))});
    return out;
}

void insertRate(const QSqlDatabase& db, const Decimal& value, const QDateTime& fecha) {
    db::requireTransaction(db);
    if (!fecha.isValid()) {
        Sql(db, QStringLiteral("INSERT INTO TASA_CAMBIO (Valor) VALUES (?)")).bind(value, 8).exec();
        return;
    }
    Sql(db, QStringLiteral("INSERT INTO TASA_CAMBIO (Fecha, Valor) VALUES (?, ?)"))
        .bind(fecha)
        .bind(value, 8)
        .exec();
}

int repriceCatalogue(const QSqlDatabase& db, const Decimal& previous, const Decimal& value) {
    db::requireTransaction(db);
    // Each price goes back to the old rate's unit, then forward at the new one; kept to the
    // price columns' four decimals.
    QStringList sets;
    QVariantList values;
    for (const char* column : {"PrecioDetal", "PrecioMayor", "PrecioPromocion", "PrecioAfiliado"}) {
        sets << QStringLiteral("%1 = ROUND(ROUND(%1 / ?, 10) * ?, 4)").arg(QLatin1String(column));
        values << previous.toVariant(8) << value.toVariant(8);
    }
    Sql q(db, QStringLiteral("UPDATE INVENTARIO SET ") + sets.join(QStringLiteral(", ")));
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    return q.rowsAffected();
}

void setTableValue(const QSqlDatabase& db, const QString& key, const QString& value) {
    db::requireTransaction(db);
    Sql update(db, QStringLiteral("UPDATE TABLA_VALORES SET Descripcion = ? WHERE IdTabla = ?"));
    update.bind(value).bind(key).exec();
    if (update.rowsAffected() > 0)
        return;
    Sql(db, QStringLiteral("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, "
                           "?, ?)"))
        .bind(key)
        .bind(QStringLiteral("01"))
        .bind(value)
        .exec();
}

} // namespace orvo::common::rate::store
