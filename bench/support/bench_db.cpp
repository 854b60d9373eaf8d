#include "bench_db.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/schema/migrate.h"

#include <QMap>
#include <QTemporaryDir>
#include <cstdio>

namespace orvo::bench {

namespace {

db::ConnectionSettings postgres(const QString& endpoint, const QString& database) {
    db::ConnectionSettings s;
    s.engine = db::Engine::Postgres;
    s.host = endpoint.section(u':', 0, 0);
    s.port = endpoint.section(u':', 1, 1).toInt();
    s.user = qEnvironmentVariable("ORVO_TEST_PG_USER", QStringLiteral("orvo"));
    s.password = qEnvironmentVariable("ORVO_TEST_PG_PASSWORD");
    s.database = database;
    return s;
}

void printFigure(const QString& engine, const QString& what, const Figure& f,
                 const std::optional<Figure>& sqlite) {
    QString line = QStringLiteral("%1 %2 %3 %4")
                       .arg(engine, -28)
                       .arg(what, -44)
                       .arg(f.value, 9, 'f', f.value < 10 ? 2 : 1)
                       .arg(f.unit, -3);
    if (sqlite && sqlite->value > 0)
        line += QStringLiteral("  %1 x SQLite").arg(f.value / sqlite->value, 5, 'f', 1);
    else
        line += QStringLiteral("             ");
    if (!f.detail.isEmpty())
        line += QStringLiteral("  (") + f.detail + u')';
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

} // namespace

void forEachEngine(const QString& name,
                   const std::function<Figures(const QSqlDatabase& db)>& body) {
    QMap<QString, Figure> sqlite;
    QTemporaryDir dir;
    {
        db::ConnectionSettings s;
        s.sqliteFile = dir.path() + u'/' + name + QStringLiteral(".sqlite");
        QSqlDatabase db = db::openConnection(s, QStringLiteral("bench_sqlite"));
        schema::migrate(db);
        for (const auto& [what, f] : body(db)) {
            printFigure(QStringLiteral("SQLite"), what, f, std::nullopt);
            sqlite.insert(what, f);
        }
    }
    db::closeConnection(QStringLiteral("bench_sqlite"));

    const QList<std::pair<QString, QString>> servers = {
        {QStringLiteral("PostgreSQL (test, fsync off)"), qEnvironmentVariable("ORVO_TEST_PG")},
        {QStringLiteral("PostgreSQL (durable)"), qEnvironmentVariable("ORVO_BENCH_PG_DURABLE")}};
    for (const auto& [label, endpoint] : servers) {
        if (endpoint.isEmpty())
            continue;
        {
            QSqlDatabase admin = db::openConnection(postgres(endpoint, QStringLiteral("postgres")),
                                                    QStringLiteral("bench_admin"));
            db::execute(admin, QStringLiteral("DROP DATABASE IF EXISTS ") + name);
            db::execute(admin, QStringLiteral("CREATE DATABASE ") + name);
        }
        db::closeConnection(QStringLiteral("bench_admin"));
        {
            QSqlDatabase db =
                db::openConnection(postgres(endpoint, name), QStringLiteral("bench_pg"));
            schema::migrate(db);
            for (const auto& [what, f] : body(db))
                printFigure(label, what, f,
                            sqlite.contains(what) ? std::optional(sqlite.value(what))
                                                  : std::nullopt);
        }
        db::closeConnection(QStringLiteral("bench_pg"));
        {
            QSqlDatabase admin = db::openConnection(postgres(endpoint, QStringLiteral("postgres")),
                                                    QStringLiteral("bench_admin"));
            db::execute(admin, QStringLiteral("DROP DATABASE IF EXISTS ") + name);
        }
        db::closeConnection(QStringLiteral("bench_admin"));
    }
}

void forEachEngine(const QString& name, const QString& what, const QString& budget,
                   const std::function<Figure(const QSqlDatabase& db)>& body) {
    forEachEngine(name, [&](const QSqlDatabase& db) {
        Figure f = body(db);
        if (!budget.isEmpty())
            f.detail = f.detail.isEmpty() ? QStringLiteral("budget ") + budget
                                          : f.detail + QStringLiteral("; budget ") + budget;
        return Figures{{what, f}};
    });
}

shell::SessionContext cashierSession(const QSqlDatabase& db, const QString& serie) {
    shell::SessionContext ctx;
    ctx.serial = serie;
    shell::loadSession(db, ctx);
    ctx.userCode = QStringLiteral("CAJERO1");
    return ctx;
}

QStringList costedBarcodes(const QSqlDatabase& db, int count) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND "
                                 "CostoPromedio > 0 ORDER BY CodigoBarra LIMIT ?"));
    q.bind(count).exec();
    QStringList codes;
    while (q.next())
        codes << q.text(QStringLiteral("CodigoBarra")).trimmed();
    return codes;
}

} // namespace orvo::bench
