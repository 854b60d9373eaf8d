#include "shell/startup/desktop_startup.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "shell/main_window/main_window.h"
#include "shell/setup/first_start_screen.h"
#include "shell/setup/store_setup.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"
#include "shell/startup/main_connection.h"
#include "shell/startup/server_config_screen.h"
#include "shell/startup/single_instance.h"
#include "shell/startup/user_settings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>
#include <memory>

namespace orvo::shell {

Q_LOGGING_CATEGORY(lcDesktop, "orvo.desktop")

bool connectAtStartup(QWidget* parent) {
    ServerConfig config;
    QString reason;
    const StartupConnection result =
        connectFromConfigFile(serverConfigPath(), dataDir(), config, &reason);
    currentServerConfig() = config;
    if (result == StartupConnection::Connected)
        return true;
    ServerConfigScreen screen(ServerConfigScreen::Mode::Startup, config, parent);
    if (!reason.isEmpty())
        screen.showFailure(reason);
    screen.exec();
    return mainConnectionOpen();
}

bool firstStartDone(QWidget* parent) {
    bool hasUser = false;
    guarded(parent, [&] { hasUser = setup::hasActiveUser(mainDb()); });
    if (hasUser)
        return true;
    setup::FirstStartScreen screen(mainDb(), parent);
    if (screen.exec() != QDialog::Accepted) {
        // Nobody could log in: the program has nothing to offer yet.
        QApplication::quit();
        return false;
    }
    settings::write(QStringLiteral("Login"), screen.administratorCode());
    return true;
}

int runDesktopProgram() {
    QElapsedTimer started;
    started.start();
    SingleInstance instance;
    if (!instance.acquire()) {
        dialogs().information(nullptr, QStringLiteral("La aplicación se esta ejecutando...!"),
                              QStringLiteral("Orvo-Información"));
        return 0;
    }
    std::unique_ptr<MainWindow> window;
    QString failure;
    try {
        ensureAppFolders();
        if (!connectAtStartup()) {
            closeMainConnection();
            return 0;
        }
        ensureCurrentSchema(mainDb());
        window = std::make_unique<MainWindow>();
        window->load();
        window->show();
        QTimer::singleShot(0, window.get(), [w = window.get(), started] {
            if (!firstStartDone(w))
                return;
            w->showLogin();
            qCInfo(lcDesktop) << "login screen after" << started.elapsed() << "ms";
        });
    } catch (const StartupError& e) {
        failure = e.message();
    } catch (const UserError& e) {
        failure = e.text();
    } catch (const DbError& e) {
        failure = e.message();
    } catch (const std::exception& e) {
        failure = QStringLiteral("5\n") + QString::fromUtf8(e.what());
    }
    if (!failure.isEmpty()) {
        window.reset();
        dialogs().warning(nullptr, failure, QStringLiteral("Orvo"));
        closeMainConnection();
        return 1;
    }
    const int code = QApplication::exec();
    window.reset();
    closeMainConnection();
    return code;
}

} // namespace orvo::shell
