#include "shell/startup/app_state.h"

namespace orvo::shell {

namespace {
bool g_loggedIn = false;
} // namespace

SessionContext& session() {
    static SessionContext ctx;
    return ctx;
}

ServerConfig& currentServerConfig() {
    static ServerConfig config;
    return config;
}

bool isLoggedIn() {
    return g_loggedIn;
}

void setLoggedIn(bool loggedIn) {
    g_loggedIn = loggedIn;
}

} // namespace orvo::shell
