#pragma once

#include <QDate>
#include <QSqlDatabase>

// The pieces of the demo store, each written inside the seeding transaction.
namespace orvo::shell::demo::detail {

// `today` is the server's date: promotions are placed around it.
void seedArticles(const QSqlDatabase& db, const QDate& today);

} // namespace orvo::shell::demo::detail
