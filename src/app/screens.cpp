#include "app/screens.h"

#include "shell/screens/screen_registry.h"

namespace orvo::app {

void registerAllScreens() {
    // One line per area: each area's register function adds its screens.
}

} // namespace orvo::app
