#include "app/screens.h"

#include "shell/record_form/master_data.h"
#include "shell/screens/screen_registry.h"

#include <QSqlDatabase>

namespace orvo::app {

void registerAllScreens() {
    // One line per area: each area's register function adds its screens.
    shell::registerRecordScreens(
        {[] { return QSqlDatabase::database(QStringLiteral("orvo_main")); },
         [] {
             return QString(); /* the logged-in user: set by start-up */
         }});
}

} // namespace orvo::app
