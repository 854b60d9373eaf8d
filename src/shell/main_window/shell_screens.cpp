#include "shell/main_window/shell_screens.h"

#include "shell/login/attendance_screen.h"
#include "shell/login/change_password_screen.h"
#include "shell/main_window/about_screen.h"
#include "shell/main_window/calculator_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "shell/startup/server_config_screen.h"

namespace orvo::shell {

void registerShellScreens() {
    auto& r = ScreenRegistry::instance();
    r.add(QStringLiteral("frmConfServidor"), [](QWidget* parent) {
        return new ServerConfigScreen(ServerConfigScreen::Mode::Change, currentServerConfig(),
                                      parent);
    });
    r.add(QStringLiteral("frmCambiarClave"),
          [](QWidget* parent) { return new ChangePasswordScreen(parent); });
    r.add(QStringLiteral("frmControlAcceso"),
          [](QWidget* parent) { return new AttendanceScreen(parent); });
    r.add(QStringLiteral("frmCalculadora"),
          [](QWidget* parent) { return new CalculatorScreen(parent); });
    r.add(QStringLiteral("frmAcercaDe"), [](QWidget* parent) { return new AboutScreen(parent); });
}

} // namespace orvo::shell
