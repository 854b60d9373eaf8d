#include "tools/common/run_until_stopped.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::tools {

namespace {
int g_signalFd[2] = {-1, -1};

void onSignal(int) {
    const char c = 1;
    [[maybe_unused]] auto n = ::write(g_signalFd[1], &c, 1);
}
} // namespace

int runUntilStopped(QCoreApplication& app) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalFd) == 0) {
        auto* notifier = new QSocketNotifier(g_signalFd[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app, [&app] {
            char c;
            [[maybe_unused]] auto n = ::read(g_signalFd[0], &c, 1);
            app.quit();
        });
        struct sigaction sa {};
        sa.sa_handler = onSignal;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESTART;
        sigaction(SIGINT, &sa, nullptr);
        sigaction(SIGTERM, &sa, nullptr);
    }
    return app.exec();
}

} // namespace orvo::tools
