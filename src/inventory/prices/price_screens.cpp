#include "inventory/prices/price_screens.h"

#include "inventory/prices/price_list_screen.h"
#include "inventory/prices/promotion_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::prices {

void registerPriceScreens() {
    auto& r = shell::ScreenRegistry::instance();
    r.add(kPriceListScreen, [](QWidget* parent) {
        return new PriceListScreen(shell::mainDb(), shell::session().userCode, parent);
    });
    r.add(kPromotionScreen, [](QWidget* parent) {
        return new PromotionScreen(shell::mainDb(), shell::session().userCode, parent);
    });
    r.add(kRepriceScreen, [](QWidget* parent) {
        return new RepriceScreen(shell::mainDb(), shell::session().userCode, parent);
    });
}

} // namespace orvo::inventory::prices
