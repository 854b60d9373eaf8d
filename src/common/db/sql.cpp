#include "common/db/sql.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QSqlError>
#include <QSqlRecord>
#include <unordered_map>

namespace orvo::db {

Sql::Sql(const QSqlDatabase& db, const QString& statement)
    : m_connection(db.connectionName()), m_statement(statement),
      m_lease(statement_cache::take(db, statement)), m_query(m_lease.query.get()) {
    m_query->setForwardOnly(true);
}

Sql::~Sql() {
    if (!m_lease.prepared)
        return;
    // Rows not read are dropped and, on SQLite, the statement's read lock is released.
    m_query->finish();
    statement_cache::giveBack(m_connection, m_statement, std::move(m_lease));
}

void lockRows(const QSqlDatabase& db, const QString& selectOrdered, const QVariantList& values) {
    if (engineOf(db) == Engine::Sqlite)
        return;
    Sql q(db, selectOrdered + QStringLiteral(" FOR UPDATE"));
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
}

bool isUniqueViolation(const DbError& error) {
    // SQLite reports the extended codes 2067 (UNIQUE) and 1555 (PRIMARY KEY), or the plain
    // constraint code 19 with its text.
    const QString& n = error.number();
    return n == QLatin1String("23505") || n == QLatin1String("2067") ||
           n == QLatin1String("1555") ||
           error.text().contains(QLatin1String("UNIQUE constraint failed"), Qt::CaseInsensitive);
}

bool changesSchema(const QString& statement) {
    const QStringView s = QStringView(statement).trimmed();
    for (const char* verb : {"CREATE ", "ALTER ", "DROP "})
        if (s.startsWith(QLatin1String(verb), Qt::CaseInsensitive))
            return true;
    return false;
}

void Sql::fail() const {
    const QSqlError err = m_query->lastError();
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

bool Sql::runPrepared() {
    for (const QVariant& v : m_values)
        m_query->addBindValue(v);
    return m_query->exec();
}

Sql& Sql::exec() {
    m_recordRead = false;
    // PostgreSQL cannot prepare DDL; a statement without values runs as it is.
    if (m_values.isEmpty() && !m_lease.prepared) {
        if (!m_query->exec(m_statement))
            fail();
        if (changesSchema(m_statement))
            statement_cache::forget(m_connection);
        return *this;
    }
    const bool reused = m_lease.prepared;
    if (!m_lease.prepared) {
        if (!m_query->prepare(m_statement))
            fail();
        m_lease.prepared = true;
    }
    if (!runPrepared()) {
        // A kept statement that no longer fits (the schema changed under another connection, or
        // the server released it) is prepared again once, where no transaction was spoilt.
        const QString code = m_query->lastError().nativeErrorCode();
        const bool stale = code == QLatin1String("26000") || code == QLatin1String("0A000");
        if (!reused || !stale || Transaction::isOpen(QSqlDatabase::database(m_connection, false)) ||
            !m_query->prepare(m_statement) || !runPrepared()) {
            m_values.clear();
            fail();
        }
    }
    m_values.clear();
    return *this;
}

QVariant Sql::value(const QString& column) const {
    if (!m_recordRead) {
        m_record = m_query->record();
        m_recordRead = true;
    }
    const int index = m_record.indexOf(column);
    if (index < 0)
        throw DbError(QStringLiteral("-1"),
                      QStringLiteral("No existe la columna '%1' en el resultado").arg(column),
                      m_statement);
    return m_query->value(index);
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

namespace {

// The server's clock as last read on each connection, and a monotonic timer since then.
struct ServerClock {
    QDateTime read;
    QElapsedTimer since;
};
QMutex g_clockMutex;
std::unordered_map<QString, ServerClock>& serverClocks() {
    static auto* clocks = new std::unordered_map<QString, ServerClock>;
    return *clocks;
}
// A reading serves this long; a clock set while the program runs is seen within a minute.
constexpr qint64 kClockReadingMs = 60'000;

QDateTime readServerNow(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT ") + nowExpression(db) + QStringLiteral(" AS Ahora"));
    q.exec();
    q.next();
    return q.dateTime(QStringLiteral("Ahora"));
}

} // namespace

QDateTime serverNow(const QSqlDatabase& db) {
    // The embedded engine's clock is this machine's: nothing to save.
    if (engineOf(db) == Engine::Sqlite)
        return readServerNow(db);
    // A store server is a round trip away and a sale asks for the time several times: the
    // server's time is read once a minute and carried forward by this machine's monotonic clock.
    const QString name = db.connectionName();
    {
        QMutexLocker lock(&g_clockMutex);
        auto it = serverClocks().find(name);
        if (it != serverClocks().end() && it->second.since.elapsed() < kClockReadingMs)
            return it->second.read.addMSecs(it->second.since.elapsed());
    }
    QElapsedTimer roundTrip;
    roundTrip.start();
    const QDateTime read = readServerNow(db);
    ServerClock clock;
    // The server read its clock about half-way through the round trip.
    clock.read = read.addMSecs(roundTrip.elapsed() / 2);
    clock.since.start();
    {
        QMutexLocker lock(&g_clockMutex);
        serverClocks()[name] = clock;
    }
    return read;
}

void forgetServerClock(const QString& connectionName) {
    QMutexLocker lock(&g_clockMutex);
    serverClocks().erase(connectionName);
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
