#pragma once

class QCoreApplication;

namespace orvo::tools {
// Runs the event loop of a headless service until SIGINT or SIGTERM, then returns its exit code.
int runUntilStopped(QCoreApplication& app);
} // namespace orvo::tools
