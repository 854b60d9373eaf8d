#include "inventory/adjustments/adjustment_screens.h"

#include "inventory/adjustments/adjustment_screen.h"
#include "inventory/adjustments/adjustments.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::adjustments {

void registerAdjustmentScreens(shell::ScreenServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    shell::ScreenRegistry::instance().add(kAdjustmentScreen, [s](QWidget* parent) {
        return new AdjustmentScreen(s.database(), s.userCode(), parent);
    });
}

} // namespace orvo::inventory::adjustments
