#pragma once

#include "common/db/sql.h"

#include <QSqlDatabase>
#include <QStringList>
#include <QVariant>
#include <initializer_list>

namespace orvo::shell::setup {

// One prepared INSERT per table, run once per row: the rows a new store or the demo starts with.
class RowWriter {
public:
    RowWriter(const QSqlDatabase& db, const QString& table, const QStringList& columns);
    void insert(std::initializer_list<QVariant> values);
    void insert(const QVariantList& values);

private:
    db::Sql m_sql;
    qsizetype m_columnCount;
};

// Column names from Latin-1 literals.
QStringList columns(std::initializer_list<const char*> names);

// Money and costs travel as text rounded to the column's scale.
QVariant money(const Decimal& value);
QVariant cost(const Decimal& value);

} // namespace orvo::shell::setup
