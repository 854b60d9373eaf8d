#include "app/screens.h"

#include "inventory/articles/article_screens.h"
#include "shell/screens/screen_registry.h"

namespace orvo::app {

void registerAllScreens() {
    // One line per area: each area's register function adds its screens.
    inventory::registerArticleScreens();
}

} // namespace orvo::app
