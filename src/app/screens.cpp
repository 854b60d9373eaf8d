#include "app/screens.h"

#include "pos/register/register_screens.h"
#include "shell/screens/screen_registry.h"

namespace orvo::app {

void registerAllScreens() {
    // One line per area: each area's register function adds its screens.
    pos::registers::registerScreens();
}

} // namespace orvo::app
