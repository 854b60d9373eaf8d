#pragma once

#include <QSqlDatabase>
#include <functional>

namespace orvo::inventory::stock {

// Adds frmKardex and frmReporteKardex to the ScreenRegistry. Without a database, the shared
// connection.
void registerStockScreens(std::function<QSqlDatabase()> database = {});

} // namespace orvo::inventory::stock
