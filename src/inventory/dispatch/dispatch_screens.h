#pragma once

#include "shell/session/session_context.h"

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::inventory::dispatch {

// What the dispatch screens borrow from the running program.
struct DispatchServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> userCode;
    std::function<shell::SessionContext()> session; // the register keying dispatch orders
};

// Adds the dispatch screens (orders, remissions, guides) and the conversions between documents
// to the ScreenRegistry. Without services, the shared connection and the logged-in user.
void registerDispatchScreens(DispatchServices services = {});

} // namespace orvo::inventory::dispatch
