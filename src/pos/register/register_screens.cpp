#include "pos/register/register_screens.h"

#include "pos/fiscal/register_printer.h"
#include "pos/fiscal_screens/fiscal_operations_screen.h"
#include "pos/register/register_screen.h"
#include "shell/main_window/main_window.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::pos::registers {

void registerScreens() {
    auto& r = shell::ScreenRegistry::instance();
    r.add(QStringLiteral("frmConfigurarCaja"), [](QWidget* parent) {
        auto* screen = new RegisterScreen(shell::mainDb(), shell::session(), parent);
        // The caption and the status bar name the register this machine is bound to.
        QObject::connect(screen, &RegisterScreen::registerBound, screen, [screen] {
            if (auto* main = qobject_cast<shell::MainWindow*>(screen->window()))
                main->refreshStatusBar();
        });
        return screen;
    });
    r.add(QStringLiteral("frmOperacionesFiscales"), [](QWidget* parent) {
        return new fiscal_screens::FiscalOperationsScreen(shell::mainDb(), shell::session(),
                                                          fiscal::registerPrinter(), parent);
    });
}

} // namespace orvo::pos::registers
