#include "bench_db.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/schema/migrate.h"

#include <QTemporaryDir>

namespace orvo::bench {

void forEachEngine(const QString& name,
                   const std::function<void(const char* engine, const QSqlDatabase& db)>& body) {
    QTemporaryDir dir;
    {
        db::ConnectionSettings s;
        s.sqliteFile = dir.path() + u'/' + name + QStringLiteral(".sqlite");
        QSqlDatabase db = db::openConnection(s, QStringLiteral("bench_sqlite"));
        schema::migrate(db);
        body("SQLite", db);
    }
    db::closeConnection(QStringLiteral("bench_sqlite"));

    const QString pg = qEnvironmentVariable("ORVO_TEST_PG");
    if (pg.isEmpty())
        return;
    db::ConnectionSettings s;
    s.engine = db::Engine::Postgres;
    s.host = pg.section(u':', 0, 0);
    s.port = pg.section(u':', 1, 1).toInt();
    s.user = qEnvironmentVariable("ORVO_TEST_PG_USER", QStringLiteral("orvo"));
    s.password = qEnvironmentVariable("ORVO_TEST_PG_PASSWORD");
    s.database = QStringLiteral("postgres");
    {
        QSqlDatabase admin = db::openConnection(s, QStringLiteral("bench_admin"));
        db::execute(admin, QStringLiteral("DROP DATABASE IF EXISTS ") + name);
        db::execute(admin, QStringLiteral("CREATE DATABASE ") + name);
    }
    db::closeConnection(QStringLiteral("bench_admin"));
    s.database = name;
    {
        QSqlDatabase db = db::openConnection(s, QStringLiteral("bench_pg"));
        schema::migrate(db);
        body("PostgreSQL", db);
    }
    db::closeConnection(QStringLiteral("bench_pg"));
}

} // namespace orvo::bench
