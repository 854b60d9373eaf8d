// Two, four and eight registers of one store working at once on one database, each on its own
// thread and connection: cash and credit sales, a sale parked and taken back, a return with its
// cash refund and a worker's entry per round. Prints the wall time per action for each number of
// registers, and checks that no document number was taken twice.
#include "bench_db.h"
#include "common/db/connection.h"
#include "common/db/sql.h"
#include "support/register_workload.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTemporaryDir>
#include <cstdio>

using namespace orvo;

namespace {

constexpr int kRounds = 10;
constexpr int kActionsPerRound = 5;

db::ConnectionSettings settingsOf(const QSqlDatabase& db) {
    db::ConnectionSettings s;
    s.engine = db::engineOf(db);
    if (s.engine == db::Engine::Sqlite) {
        s.sqliteFile = db.databaseName();
        return s;
    }
    s.host = db.hostName();
    s.port = db.port();
    s.database = db.databaseName();
    s.user = db.userName();
    s.password = db.password();
    return s;
}

// Document numbers found more than once, in every numbering the workload uses.
int duplicates(const QSqlDatabase& db) {
    int found = 0;
    for (const char* sql :
         {"SELECT NumeroFactura, Serie FROM VENTAS GROUP BY NumeroFactura, Serie HAVING COUNT(*) > "
          "1",
          "SELECT NumeroDevolucion, Serie FROM DEVVENTAS GROUP BY NumeroDevolucion, Serie HAVING "
          "COUNT(*) > 1",
          "SELECT Numero FROM CUENTASXCOBRAR GROUP BY Numero HAVING COUNT(*) > 1",
          "SELECT Numero FROM CONTROLACCESO GROUP BY Numero HAVING COUNT(*) > 1",
          "SELECT Numero, Serie FROM SALIDASCAJA GROUP BY Numero, Serie HAVING COUNT(*) > 1"}) {
        db::Sql q(db, QString::fromLatin1(sql));
        q.exec();
        while (q.next())
            ++found;
    }
    return found;
}

bench::Figures run(const QSqlDatabase& db) {
    test::Workload all;
    all.registers = 8;
    all.rounds = kRounds * 3; // workers for the three runs below
    test::prepareRegisters(db, all);
    const db::ConnectionSettings settings = settingsOf(db);
    bench::Figures out;
    int failed = 0;
    int firstRound = 0;
    for (int registers : {2, 4, 8}) {
        test::Workload w;
        w.registers = registers;
        w.rounds = kRounds;
        w.firstRound = firstRound;
        firstRound += kRounds;
        const test::WorkloadOutcome o = test::runRegisters(settings, w);
        failed += int(o.errors.size());
        for (const QString& e : o.errors)
            std::fprintf(stderr, "%s\n", qPrintable(e));
        const int actions = registers * kRounds * kActionsPerRound;
        out.append({QStringLiteral("%1 registers at once: time per action").arg(registers),
                    {o.seconds * 1000 / actions, QStringLiteral("ms"),
                     QStringLiteral("%1 actions in %2 s; %3 failed")
                         .arg(actions)
                         .arg(o.seconds, 0, 'f', 2)
                         .arg(o.errors.size())}});
    }
    const int twice = duplicates(db);
    std::printf("%s: %d numbers taken twice, %d actions failed\n",
                qPrintable(db::engineOf(db) == db::Engine::Sqlite
                               ? QStringLiteral("SQLite")
                               : db.hostName() + u':' + QString::number(db.port())),
                twice, failed);
    return out;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("orvo.*.info=false"));
    QTemporaryDir home;
    qputenv("ORVO_HOME", home.path().toUtf8());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, home.path());
    bench::forEachEngine(QStringLiteral("orvo_bench_registers"), run);
    return 0;
}
