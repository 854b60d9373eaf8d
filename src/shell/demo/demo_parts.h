#pragma once

#include "common/db/sql.h"

#include <QDate>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariant>
#include <initializer_list>

// The pieces of the demo store, each written inside the seeding transaction.
namespace orvo::shell::demo::detail {

// One prepared INSERT per table, run once per row.
class RowWriter {
public:
    RowWriter(const QSqlDatabase& db, const QString& table, const QStringList& columns);
    void insert(std::initializer_list<QVariant> values);
    void insert(const QVariantList& values);

private:
    db::Sql m_sql;
    qsizetype m_columnCount;
};

// Money and costs travel as text rounded to the column's scale.
QVariant money(const Decimal& value);
QVariant cost(const Decimal& value);

void seedMenu(const QSqlDatabase& db);
// `today` is the server's date: promotions are placed around it.
void seedArticles(const QSqlDatabase& db, const QDate& today);

} // namespace orvo::shell::demo::detail
