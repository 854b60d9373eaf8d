#include "test_db.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/schema/migrate.h"
#include "common/schema/schema.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QMutex>
#include <QTemporaryDir>
#include <QTextStream>
#include <atomic>

namespace orvo::test {

namespace {

std::atomic<int> g_counter{0};
QMutex g_templateMutex;

QTemporaryDir& tempDir() {
    static QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/orvo-test-XXXXXX"));
    return dir;
}

QString uniqueSuffix() {
    return QStringLiteral("%1_%2").arg(QCoreApplication::applicationPid()).arg(++g_counter);
}

// The endpoint the cluster fixture wrote, when ORVO_TEST_PG is not given.
QString pgEndpoint() {
    const QString env = qEnvironmentVariable("ORVO_TEST_PG");
    if (!env.isEmpty())
        return env;
    const QString file =
        qEnvironmentVariable("ORVO_TEST_PG_FILE", QStringLiteral(ORVO_TEST_PG_ENDPOINT_FILE));
    QFile f(file);
    if (!file.isEmpty() && f.open(QIODevice::ReadOnly))
        return QString::fromUtf8(f.readLine()).trimmed();
    return {};
}

// Each test case runs in a process of its own: the migrated schema is built once per schema
// description and shared by every process of the run (and of later runs) as a template.
QString schemaKey(db::Engine engine) {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const schema::Table& t : schema::storeTables())
        for (const QString& statement : schema::createStatements(t, engine))
            hash.addData(statement.toUtf8());
    hash.addData(QByteArray::number(schema::currentVersion()));
    return QString::fromLatin1(hash.result().toHex().left(16));
}

const QString& sqliteTemplate() {
    static QString path;
    QMutexLocker lock(&g_templateMutex);
    if (path.isEmpty()) {
        const QString dir = QDir::tempPath() + QStringLiteral("/orvo-test-templates");
        QDir().mkpath(dir);
        const QString file = dir + u'/' + schemaKey(db::Engine::Sqlite) + QStringLiteral(".db");
        QLockFile building(file + QStringLiteral(".lock"));
        building.lock();
        if (!QFile::exists(file)) {
            const QString partial =
                file + QStringLiteral(".%1").arg(QCoreApplication::applicationPid());
            {
                db::ConnectionSettings s;
                s.engine = db::Engine::Sqlite;
                s.sqliteFile = partial;
                QSqlDatabase db = db::openConnection(s, QStringLiteral("orvo_test_template"));
                schema::migrate(db);
                db::execute(db, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
            }
            db::closeConnection(QStringLiteral("orvo_test_template"));
            QFile::remove(partial + QStringLiteral("-wal"));
            QFile::remove(partial + QStringLiteral("-shm"));
            QFile::rename(partial, file);
        }
        path = file;
    }
    return path;
}

const QString& pgTemplate() {
    static QString name;
    QMutexLocker lock(&g_templateMutex);
    if (name.isEmpty()) {
        const QString key = schemaKey(db::Engine::Postgres);
        const QString tpl = QStringLiteral("orvo_tpl_") + key;
        const QString admin = QStringLiteral("orvo_test_admin");
        {
            QSqlDatabase a = db::openConnection(postgresServer(QStringLiteral("postgres")), admin);
            // One process builds it; the others wait for it on the lock.
            const QString lockKey = QString::number(key.left(12).toLongLong(nullptr, 16));
            db::execute(a, QStringLiteral("SELECT pg_advisory_lock(%1)").arg(lockKey));
            if (!db::exists(a, QStringLiteral("SELECT 1 FROM pg_database WHERE datname = ?"),
                            {tpl})) {
                const QString partial = tpl + QStringLiteral("_new");
                db::execute(a, QStringLiteral("DROP DATABASE IF EXISTS ") + partial);
                db::execute(a, QStringLiteral("CREATE DATABASE ") + partial);
                {
                    QSqlDatabase db =
                        db::openConnection(postgresServer(partial), QStringLiteral("orvo_tpl"));
                    schema::migrate(db);
                }
                db::closeConnection(QStringLiteral("orvo_tpl"));
                db::execute(a, QStringLiteral("ALTER DATABASE %1 RENAME TO %2").arg(partial, tpl));
            }
            db::execute(a, QStringLiteral("SELECT pg_advisory_unlock(%1)").arg(lockKey));
        }
        db::closeConnection(admin);
        name = tpl;
    }
    return name;
}

} // namespace

db::Engine testEngine() {
    return qEnvironmentVariable("ORVO_TEST_ENGINE") == QLatin1String("pg") ? db::Engine::Postgres
                                                                           : db::Engine::Sqlite;
}

QString processTempDir() {
    return tempDir().path();
}

db::ConnectionSettings postgresServer(const QString& database) {
    const QString endpoint = pgEndpoint();
    if (endpoint.isEmpty())
        throw std::runtime_error("no PostgreSQL server for the tests: set ORVO_TEST_PG or run "
                                 "through ctest, whose fixture starts one");
    db::ConnectionSettings s;
    s.engine = db::Engine::Postgres;
    const qsizetype colon = endpoint.lastIndexOf(u':');
    s.host = colon > 0 ? endpoint.left(colon) : endpoint;
    s.port = colon > 0 ? endpoint.mid(colon + 1).toInt() : 5432;
    s.database = database;
    s.user = qEnvironmentVariable("ORVO_TEST_PG_USER", QStringLiteral("orvo"));
    s.password = qEnvironmentVariable("ORVO_TEST_PG_PASSWORD");
    return s;
}

TestDatabase::TestDatabase() {
    m_name = QStringLiteral("orvo_test_") + uniqueSuffix();
    if (testEngine() == db::Engine::Sqlite) {
        const QString file = tempDir().path() + u'/' + m_name + QStringLiteral(".db");
        QFile::copy(sqliteTemplate(), file);
        m_settings.engine = db::Engine::Sqlite;
        m_settings.sqliteFile = file;
    } else {
        m_pgName = m_name.toLower();
        const QString tpl = pgTemplate();
        {
            QSqlDatabase admin = db::openConnection(postgresServer(QStringLiteral("postgres")),
                                                    m_name + QStringLiteral("_admin"));
            db::execute(admin, QStringLiteral("CREATE DATABASE %1 TEMPLATE %2").arg(m_pgName, tpl));
        }
        db::closeConnection(m_name + QStringLiteral("_admin"));
        m_settings = postgresServer(m_pgName);
    }
    db::openConnection(m_settings, m_name);
}

TestDatabase::~TestDatabase() {
    for (const QString& n : m_extraNames)
        db::closeConnection(n);
    db::closeConnection(m_name);
    if (m_settings.engine == db::Engine::Sqlite) {
        QFile::remove(m_settings.sqliteFile);
        QFile::remove(m_settings.sqliteFile + QStringLiteral("-wal"));
        QFile::remove(m_settings.sqliteFile + QStringLiteral("-shm"));
    } else {
        try {
            const QString admin = m_name + QStringLiteral("_drop");
            {
                QSqlDatabase a =
                    db::openConnection(postgresServer(QStringLiteral("postgres")), admin);
                db::execute(
                    a, QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(m_pgName));
            }
            db::closeConnection(admin);
        } catch (...) {
        }
    }
}

QSqlDatabase TestDatabase::db() const {
    return QSqlDatabase::database(m_name);
}

QSqlDatabase TestDatabase::openAnother(const QString& connectionName) const {
    const_cast<TestDatabase*>(this)->m_extraNames << connectionName;
    return db::openConnection(m_settings, connectionName);
}

void DbTest::exec(const QString& statement, std::initializer_list<QVariant> values) const {
    try {
        db::execute(db(), statement, values);
    } catch (const DbError& e) {
        ADD_FAILURE() << "statement failed: " << statement.toStdString() << "\n"
                      << e.message().toStdString();
        throw;
    }
}

QVariant DbTest::scalar(const QString& statement, std::initializer_list<QVariant> values) const {
    return db::scalar(db(), statement, values);
}

int DbTest::count(const QString& table, const QString& where,
                  std::initializer_list<QVariant> values) const {
    QString sql = QStringLiteral("SELECT COUNT(*) FROM ") + table;
    if (!where.isEmpty())
        sql += QStringLiteral(" WHERE ") + where;
    return db::scalar(db(), sql, values).toInt();
}

} // namespace orvo::test
