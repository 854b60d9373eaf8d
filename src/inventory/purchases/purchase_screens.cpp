#include "inventory/purchases/purchase_screens.h"

#include "inventory/purchases/comparison_screen.h"
#include "inventory/purchases/order_screen.h"
#include "inventory/purchases/purchase_return_screen.h"
#include "inventory/purchases/purchase_screen.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/reception_screen.h"
#include "inventory/purchases/receptions.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::purchases {

void registerPurchaseScreens(PurchaseServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    auto& r = shell::ScreenRegistry::instance();
    r.add(kOrderScreen,
          [s](QWidget* parent) { return new OrderScreen(s.database(), s.userCode(), parent); });
    r.add(kPurchaseScreen,
          [s](QWidget* parent) { return new PurchaseScreen(s.database(), s.userCode(), parent); });
    r.add(kReturnScreen, [s](QWidget* parent) {
        return new PurchaseReturnScreen(s.database(), s.userCode(), parent);
    });
    r.add(kReceptionScreen,
          [s](QWidget* parent) { return new ReceptionScreen(s.database(), s.userCode(), parent); });
    r.add(kComparisonScreen,
          [s](QWidget* parent) { return new ComparisonScreen(s.database(), parent); });
}

} // namespace orvo::inventory::purchases
