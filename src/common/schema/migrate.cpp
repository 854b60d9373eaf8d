#include "common/schema/migrate.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/schema/schema.h"

#include <stdexcept>

namespace orvo::schema {

namespace {

const QString kVersionTable = QStringLiteral("VERSIONESQUEMA");

void ensureVersionTable(const QSqlDatabase& db) {
    if (db::tableExists(db, kVersionTable))
        return;
    db::execute(db, QStringLiteral("CREATE TABLE VERSIONESQUEMA (Version INTEGER PRIMARY KEY, "
                                   "Fecha TIMESTAMP, Descripcion VARCHAR(200))"));
}

// Everything that version `v` adds: new tables whole, new columns and indexes of older tables,
// and the new types of older columns.
QStringList statementsFor(const QList<Table>& tables, int v, db::Engine engine) {
    QStringList out;
    for (const Table& t : tables) {
        if (t.since == v) {
            // Columns and indexes of later versions come with their own version's ALTERs.
            Table created = t;
            created.columns.removeIf([v](const Column& c) { return c.since > v; });
            created.indexes.removeIf([v](const Index& i) { return i.since > v; });
            out += createStatements(created, engine);
            continue;
        }
        if (t.since > v)
            continue;
        for (const Column& c : t.columns) {
            if (c.since == v)
                out << QStringLiteral("ALTER TABLE %1 ADD COLUMN %2")
                           .arg(t.name, columnDefinition(c, engine));
            else if (c.since < v && c.retypedSince == v)
                out += retypeStatements(t.name, c, engine);
        }
        for (const Index& i : t.indexes)
            if (i.since == v)
                out << QStringLiteral("CREATE %1INDEX %2 ON %3 (%4)")
                           .arg(i.unique ? QStringLiteral("UNIQUE ") : QString(), i.name, t.name,
                                i.columns.join(QStringLiteral(", ")));
    }
    return out;
}

} // namespace

bool createTableIfMissing(const QSqlDatabase& db, const QString& table) {
    const Table* t = findTable(table);
    if (!t)
        throw std::invalid_argument("unknown store table " + table.toStdString());
    if (db::tableExists(db, t->name))
        return false;
    for (const QString& s : createStatements(*t, db::engineOf(db)))
        db::execute(db, s);
    return true;
}

int appliedVersion(const QSqlDatabase& db) {
    if (!db::tableExists(db, kVersionTable))
        return 0;
    const QVariant v = db::scalar(db, QStringLiteral("SELECT MAX(Version) FROM VERSIONESQUEMA"));
    return v.isNull() ? 0 : v.toInt();
}

MigrationResult migrate(const QSqlDatabase& db, const ProgressFn& progress) {
    return migrate(db, storeTables(), progress);
}

MigrationResult migrate(const QSqlDatabase& db, const QList<Table>& tables,
                        const ProgressFn& progress) {
    MigrationResult result;
    ensureVersionTable(db);
    result.fromVersion = appliedVersion(db);
    const int target = currentVersion(tables);
    const db::Engine engine = db::engineOf(db);
    for (int v = result.fromVersion + 1; v <= target; ++v) {
        const QStringList statements = statementsFor(tables, v, engine);
        db::Transaction tx(db);
        int done = 0;
        for (const QString& s : statements) {
            db::execute(db, s);
            ++done;
            if (progress && (done % 10 == 0 || done == statements.size()))
                progress(int(100.0 * done / std::max<qsizetype>(1, statements.size())),
                         QStringLiteral("Versión %1 del esquema").arg(v));
        }
        db::execute(db,
                    QStringLiteral("INSERT INTO VERSIONESQUEMA (Version, Fecha, Descripcion) "
                                   "VALUES (?, ") +
                        db::nowExpression(db) + QStringLiteral(", ?)"),
                    {v, QStringLiteral("%1 sentencias").arg(statements.size())});
        tx.commit();
        result.steps << QStringLiteral("Versión %1: %2 sentencias").arg(v).arg(statements.size());
    }
    result.toVersion = std::max(result.fromVersion, target);
    return result;
}

} // namespace orvo::schema
