// The store database, table by table. Columns stand in the order the program inserts them, so an
// INSERT ... SELECT that copies a whole row (invoice renumbering, FISICOLOGICO, MOVLISTAPRECIO)
// lines up; add new columns at the end of a table.
//
// Types: amounts money (18,2); selling prices before tax price (18,4); unit costs cost (18,5);
// quantities and stock quantity (18,3); rates and factors rate (18,8); tax and discount
// percentages percent (9,4); Status and flags smallint; document numbers, Item and numeric codes
// (IMPUESTOS, TIPOAJUSTES, FORMAPAGO) integer; other codes text, compared as text.
// Keys: masters on their code, documents on their number (sales: number and Serie; purchases:
// Documento and Proveedor), priced lines on document and Item. Logs, received copies (I...),
// box-counted lines and tables that documented statements fill with repeated rows have no key,
// only indexes.
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

Table withUniqueNumber(Table t, const QStringList& columns, int since) {
    Index i{QStringLiteral("UX_%1_%2").arg(t.name, columns.join(u'_')), columns, true, since};
    t.indexes.append(i);
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
