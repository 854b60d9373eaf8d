// The store database, table by table. Columns stand in the order the program inserts them.
#include "common/schema/schema_tables.h"

namespace orvo::schema {

namespace tables {

Table table(const QString& name, QList<Column> columns, QStringList primaryKey,
            const QList<QStringList>& indexes) {
    Table t;
    t.name = name;
    t.columns = std::move(columns);
    t.primaryKey = std::move(primaryKey);
    for (const QStringList& cols : indexes)
        t.indexes.append(Index{QStringLiteral("IX_%1_%2").arg(name, cols.join(u'_')), cols});
    return t;
}

} // namespace tables

const QList<Table>& storeTables() {
    static const QList<Table> all = [] {
        QList<Table> out;
        out += tables::configurationTables();
        out += tables::masterTables();
        out += tables::registerTables();
        out += tables::salesTables();
        out += tables::purchaseTables();
        out += tables::stockTables();
        out += tables::exchangeTables();
        return out;
    }();
    return all;
}

} // namespace orvo::schema
