#include "common/db/sql.h"

#include "common/errors/errors.h"

#include <QSqlError>
#include <QSqlRecord>

namespace orvo::db {

Sql::Sql(const QSqlDatabase& db, const QString& statement) : m_query(db), m_statement(statement) {
    m_query.setForwardOnly(true);
}

void Sql::fail() const {
    const QSqlError err = m_query.lastError();
    QString number = err.nativeErrorCode();
    if (number.isEmpty())
        number = QString::number(int(err.type()));
    QString text = err.databaseText();
    if (text.isEmpty())
        text = err.text();
    throw DbError(number, text, m_statement);
}

Sql& Sql::bind(const QVariant& value) {
    m_values.append(value);
    return *this;
}

Sql& Sql::bindAll(std::initializer_list<QVariant> values) {
    for (const auto& v : values) {
        if (v.userType() == qMetaTypeId<Decimal>())
            m_values.append(v.value<Decimal>().toString());
        else if (v.typeId() == QMetaType::QDate)
            m_values.append(QDateTime(v.toDate(), QTime(0, 0)));
        else
            m_values.append(v);
    }
    return *this;
}

Sql& Sql::exec() {
    // PostgreSQL cannot prepare DDL; a statement without values runs as it is.
    if (m_values.isEmpty()) {
        if (!m_query.exec(m_statement))
            fail();
        return *this;
    }
    if (!m_prepared) {
        if (!m_query.prepare(m_statement))
            fail();
        m_prepared = true;
    }
    for (const QVariant& v : m_values)
        m_query.addBindValue(v);
    m_values.clear();
    if (!m_query.exec())
        fail();
    return *this;
}

QVariant Sql::value(const QString& column) const {
    const int index = m_query.record().indexOf(column);
    if (index < 0)
        throw DbError(QStringLiteral("-1"),
                      QStringLiteral("No existe la columna '%1' en el resultado").arg(column),
                      m_statement);
    return m_query.value(index);
}

int Sql::integer(const QString& column) const {
    const QVariant v = value(column);
    if (v.isNull())
        return 0;
    return int(Decimal::fromVariant(v).toLongLong());
}

long long Sql::bigint(const QString& column) const {
    const QVariant v = value(column);
    if (v.isNull())
        return 0;
    return Decimal::fromVariant(v).toLongLong();
}

QDateTime Sql::dateTime(const QString& column) const {
    return dateTimeValue(value(column));
}

QDateTime dateTimeValue(const QVariant& v) {
    if (v.isNull())
        return {};
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime();
    const QString text = v.toString();
    QDateTime dt = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!dt.isValid())
        dt = QDateTime::fromString(text, Qt::ISODate);
    if (!dt.isValid())
        dt = QDateTime(QDate::fromString(text.left(10), Qt::ISODate), QTime(0, 0));
    return dt;
}

int execute(const QSqlDatabase& db, const QString& statement,
            std::initializer_list<QVariant> values) {
    Sql q(db, statement);
    q.bindAll(values).exec();
    return q.rowsAffected();
}

QVariant scalar(const QSqlDatabase& db, const QString& statement,
                std::initializer_list<QVariant> values) {
    Sql q(db, statement);
    q.bindAll(values).exec();
    if (!q.next())
        return {};
    return q.value(0);
}

bool exists(const QSqlDatabase& db, const QString& statement,
            std::initializer_list<QVariant> values) {
    Sql q(db, statement);
    q.bindAll(values).exec();
    return q.next();
}

long long insertReturningId(const QSqlDatabase& db, const QString& insertStatement,
                            const QString& idColumn, std::initializer_list<QVariant> values) {
    Sql q(db, insertStatement + QStringLiteral(" RETURNING ") + idColumn);
    q.bindAll(values).exec();
    if (!q.next())
        throw DbError(QStringLiteral("-1"), QStringLiteral("La inserción no devolvió el número"),
                      insertStatement);
    return Decimal::fromVariant(q.value(0)).toLongLong();
}

QString nowExpression(const QSqlDatabase& db) {
    if (engineOf(db) == Engine::Sqlite)
        return QStringLiteral("strftime('%Y-%m-%dT%H:%M:%f','now','localtime')");
    return QStringLiteral("LOCALTIMESTAMP");
}

QDateTime serverNow(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT ") + nowExpression(db) + QStringLiteral(" AS Ahora"));
    q.exec();
    q.next();
    return q.dateTime(QStringLiteral("Ahora"));
}

bool tableExists(const QSqlDatabase& db, const QString& table) {
    if (engineOf(db) == Engine::Sqlite)
        return exists(db,
                      QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND "
                                     "lower(name) = lower(?)"),
                      {table});
    return exists(db,
                  QStringLiteral("SELECT table_name FROM information_schema.tables WHERE "
                                 "table_schema = current_schema() AND table_name = lower(?)"),
                  {table});
}

QStringList columnsOf(const QSqlDatabase& db, const QString& table) {
    QStringList out;
    const QSqlRecord rec = db.record(engineOf(db) == Engine::Postgres ? table.toLower() : table);
    for (int i = 0; i < rec.count(); ++i)
        out << rec.fieldName(i).toUpper();
    return out;
}

bool numericFlag(const QVariant& value) {
    if (value.isNull() || !value.isValid())
        return false;
    const auto d = Decimal::parse(value.toString());
    return d && *d == Decimal(1);
}

bool textFlag(const QVariant& value) {
    return !value.isNull() && value.toString() == QLatin1String("TRUE");
}

} // namespace orvo::db
