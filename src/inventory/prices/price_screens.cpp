#include "inventory/prices/price_screens.h"

#include "inventory/prices/import_screen.h"
#include "inventory/prices/price_list_screen.h"
#include "inventory/prices/promotion_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::prices {

namespace {

QString recibeFolder() {
    const QString home =
        shell::session().appFolder.isEmpty() ? shell::appHome() : shell::session().appFolder;
    return home + QStringLiteral("/Recibe");
}

} // namespace

void registerPriceScreens(ArticleServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    auto& r = shell::ScreenRegistry::instance();
    r.add(kPriceListScreen, [s](QWidget* parent) {
        return new PriceListScreen(s.database(), s.userCode(), recibeFolder(), parent);
    });
    r.add(kImportListsScreen, [s](QWidget* parent) {
        return new ImportListsScreen(s.database(), s.userCode(), recibeFolder(), parent);
    });
    r.add(kPromotionScreen,
          [s](QWidget* parent) { return new PromotionScreen(s.database(), s.userCode(), parent); });
    r.add(kRepriceScreen,
          [s](QWidget* parent) { return new RepriceScreen(s.database(), s.userCode(), parent); });
}

} // namespace orvo::inventory::prices
