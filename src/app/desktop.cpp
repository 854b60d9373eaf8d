#include "app/commands.h"
#include "app/screens.h"
#include "shell/main_window/shell_screens.h"
#include "shell/startup/desktop_startup.h"

#include <QApplication>

namespace orvo::app {

int runDesktop(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvo"));
    shell::registerShellScreens();
    registerAllScreens();
    return shell::runDesktopProgram();
}

} // namespace orvo::app
