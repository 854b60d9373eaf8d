#include "app/commands.h"
#include "app/screens.h"
#include "common/dialogs/dialogs.h"
#include "shell/main_window/shell_screens.h"
#include "shell/startup/desktop_startup.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace orvo::app {

namespace {

// Qt's own buttons and dialogs (Yes/No, Cancel, the file and print dialogs) speak Spanish like
// the rest of the program; Debian ships them in qt6-translations-l10n.
void loadQtTranslations(QApplication& app) {
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Venezuela));
    auto* translator = new QTranslator(&app);
    if (translator->load(QLocale(QLocale::Spanish), QStringLiteral("qtbase"), QStringLiteral("_"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
}

} // namespace

int runDesktop(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvo"));
    loadQtTranslations(app);
    returnKeyboardAfterDialogs();
    shell::registerShellScreens();
    registerAllScreens();
    return shell::runDesktopProgram();
}

} // namespace orvo::app
