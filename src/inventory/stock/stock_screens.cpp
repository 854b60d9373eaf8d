#include "inventory/stock/stock_screens.h"

#include "inventory/stock/rebuild_screen.h"
#include "inventory/stock/stock_card_screen.h"
#include "inventory/stock/stock_rebuild.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::stock {

void registerStockScreens(std::function<QSqlDatabase()> database) {
    if (!database)
        database = [] { return shell::mainDb(); };
    auto& r = shell::ScreenRegistry::instance();
    r.add(kRebuildScreen,
          [database](QWidget* parent) { return new RebuildScreen(database(), parent); });
    r.add(kStockCardScreen,
          [database](QWidget* parent) { return new StockCardScreen(database(), parent); });
}

} // namespace orvo::inventory::stock
