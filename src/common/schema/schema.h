#pragma once

#include "common/db/connection.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace orvo::schema {

// The store database described once; DDL for both engines and the numbered migrations are
// derived from this description. Columns are listed in the order the program inserts them.
enum class Type {
    Text,     // VARCHAR(size)
    Memo,     // TEXT, unbounded
    SmallInt, // flags, Status, small codes
    Int,
    BigInt,
    Numeric,  // NUMERIC(size, scale): money (18,2), costs (18,5), quantities (18,3)
    DateTime, // real date-times; days are compared with half-open ranges
    Identity, // an engine-assigned integer key
};

struct Column {
    QString name;
    Type type = Type::Text;
    int size = 0;
    int scale = 0;
    bool notNull = false;
    QString defaultValue;    // SQL literal, the same on both engines ("0", "''")
    bool defaultNow = false; // the server's local date-time when the insert leaves it out
    int since = 1;           // schema version that added the column
    int retypedSince = 0;    // schema version that changed its type (a wider scale), if any
};

struct Index {
    QString name;
    QStringList columns;
    bool unique = false;
    int since = 1;
};

struct Table {
    QString name;
    QList<Column> columns;
    QStringList primaryKey; // empty: no key (logs, copies)
    QList<Index> indexes;
    int since = 1;

    const Column* column(const QString& name) const;
};

// Column builders, so the table list reads like the table list of the documentation.
namespace col {
Column text(const QString& name, int size);
Column memo(const QString& name);
Column smallint(const QString& name, const QString& defaultValue = QStringLiteral("0"));
Column integer(const QString& name);
Column bigint(const QString& name);
Column money(const QString& name);    // NUMERIC(18,2)
Column cost(const QString& name);     // NUMERIC(18,5)
Column quantity(const QString& name); // NUMERIC(18,3)
Column rate(const QString& name);     // NUMERIC(18,8): exchange rates, factors
Column percent(const QString& name);  // NUMERIC(9,4)
// NUMERIC(18,4): unit selling prices before tax, kept to four decimals so that the
// tax-included price typed by the user comes back exactly.
Column price(const QString& name);
Column numeric(const QString& name, int precision, int scale);
Column dateTime(const QString& name);
Column identity(const QString& name);
Column since(Column c, int version);
// The column's type (its scale) became this one at `version`; older databases are altered.
Column retyped(Column c, int version);
Column notNull(Column c);
Column defaultTo(Column c, const QString& sqlLiteral);
// Set by the server on insert. Only for columns of a new table: SQLite cannot add a column whose
// default is an expression.
Column defaultNow(Column c);
} // namespace col

// Every table of the store database.
const QList<Table>& storeTables();
const Table* findTable(const QString& name);

// The schema version that the description reaches (of the store, or of another table list).
int currentVersion();
int currentVersion(const QList<Table>& tables);

// DDL for one table: CREATE TABLE followed by its CREATE INDEX statements.
QStringList createStatements(const Table& table, db::Engine engine);
QString columnDefinition(const Column& column, db::Engine engine);
// What turns an existing column into `column`'s type; nothing on SQLite, whose NUMERIC columns
// keep whatever scale is written to them.
QStringList retypeStatements(const QString& table, const Column& column, db::Engine engine);

} // namespace orvo::schema
