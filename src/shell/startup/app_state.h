#pragma once

#include "shell/session/session_context.h"
#include "shell/startup/main_connection.h"
#include "shell/startup/server_config.h"

namespace orvo::shell {

// Process-wide state of the desktop program, owned by the shell and borrowed by every screen.
// Only the UI thread touches it.
SessionContext& session();
// The lines of data/srvsql.txt as last read or written.
ServerConfig& currentServerConfig();
// Whether a user is logged in now.
bool isLoggedIn();
void setLoggedIn(bool loggedIn);

// mainDb() (main_connection.h) is the shared connection "orvo_main".

} // namespace orvo::shell
