#include "inventory/counts/count_screens.h"

#include "inventory/counts/count_close_screens.h"
#include "inventory/counts/count_page_screen.h"
#include "inventory/counts/counts.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::counts {

void registerCountScreens(shell::ScreenServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    auto& r = shell::ScreenRegistry::instance();
    const struct {
        QString name;
        CountPageScreen::Kind kind;
    } pages[] = {{kFirstCountScreen, CountPageScreen::Kind::First},
                 {kSecondCountScreen, CountPageScreen::Kind::Second},
                 {kPartialCountScreen, CountPageScreen::Kind::Partial}};
    for (const auto& p : pages)
        r.add(p.name, [s, kind = p.kind](QWidget* parent) {
            return new CountPageScreen(s.database(), s.userCode(), kind, parent);
        });
    r.add(kFinalCountScreen,
          [s](QWidget* parent) { return new FinalCountScreen(s.database(), parent); });
    r.add(kBatchApprovalScreen,
          [s](QWidget* parent) { return new BatchApprovalScreen(s.database(), parent); });
    for (bool partial : {false, true})
        r.add(partial ? kPartialAdjustmentScreen : kPhysicalAdjustmentScreen,
              [s, partial](QWidget* parent) {
                  return new PhysicalAdjustmentScreen(s.database(), s.userCode(), partial, parent);
              });
}

} // namespace orvo::inventory::counts
