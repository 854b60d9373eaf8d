#pragma once

namespace orvo::app {

// Headless commands: `orvo <command> ...`. Returns the process exit code.
int runCommand(int argc, char** argv);
// The desktop program.
int runDesktop(int argc, char** argv);

} // namespace orvo::app
