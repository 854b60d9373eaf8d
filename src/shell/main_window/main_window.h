#pragma once

#include "shell/main_window/menu_tree.h"

#include <QMainWindow>
#include <QPointer>

class QAction;
class QDockWidget;
class QFileSystemWatcher;
class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QTimer;
class QToolBar;
class QTreeWidget;

namespace orvo::shell {

class LoginScreen;
class RecordToolbar;

// frmPrincipal: the one top-level window. Every screen opens inside it as a child window; it
// carries the user's menu (menu bar or explorer tree), the record toolbar with the session
// button, the status bar and the task bar of pending exchange files.
//
// Screens that hold unsaved records say so through the dynamic property "orvoEditing" (true while
// adding or modifying) and "orvoMode" ("adding" or "modifying"); closing such a screen, or
// leaving the program, asks about them first. A screen that closes itself ("Salir") takes its
// window frame with it; Escape (when no control of the screen used it) and Ctrl+F4 close the
// active screen. The window starts maximised.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    // The load at start: workstation settings, session, status bar, caption, menu, then the
    // external backup reminder and the version registration. Throws on a database error.
    void load();

    // VerificarClave over the main window; the session opens when it is accepted.
    void showLogin();
    LoginScreen* loginScreen() const;
    // The toolbar's "Sesion" button: log in, or end the session and log in again.
    void sessionButton();

    void rebuildMenu();
    int menuPresentation() const { return m_menuOption; }
    // Switches between the menu bar and the explorer tree and remembers the choice.
    void setMenuPresentation(int option);

    // Opens the screen of a menu node; a folder opens nothing.
    void openNode(const QString& nodeCode);
    // Opens (or brings forward) the screen registered under `formName`; nullptr when there is
    // none, or when the user's groups do not grant it. `WorkOfAGrantedScreen` is for a screen
    // that carries on what a granted one started (the closing's export): the user's grant there
    // covers it.
    enum class Access { Granted, WorkOfAGrantedScreen };
    QWidget* openForm(const QString& formName, Access access = Access::Granted);

    void checkPendingFiles();
    // Title and lines of the last pending-files notice ("" when none).
    QString pendingNotice() const { return m_pendingNotice; }

    void refreshStatusBar();
    // After frmConfServidor replaced the connection: session reloaded, status bar and menu redone.
    void reloadAfterConnectionChange();
    QMdiArea* mdiArea() const { return m_mdi; }
    RecordToolbar* recordToolbar() const { return m_recordToolbar; }

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void startUserSession(const QString& code, const QString& name);
    void endUserSession();
    // Asks about every child screen that is adding or modifying; false when the user keeps one.
    bool confirmCloseScreens();
    // The same question for one screen; true when it may close.
    bool confirmCloseScreen(QMdiSubWindow* sub);
    // Whether a screen is still open (one refused to close).
    bool hasOpenScreens() const;
    void buildFixedMenus();
    void buildMenuBar(const QList<MenuNode>& nodes);
    void buildTree(const QList<MenuNode>& nodes);
    void applyMenuFont();
    void chooseMenuFont();
    void openHelp();
    void showCalculator();
    void showAbout();
    void externalBackupReminder();
    void registerVersions();
    void centreActive();
    void showPopupMenu(const QPoint& pos);

    QMdiArea* m_mdi;
    RecordToolbar* m_recordToolbar;
    QAction* m_sessionAction;
    QToolBar* m_taskBar;
    QDockWidget* m_treeDock;
    QTreeWidget* m_tree;
    QMenu* m_popup;
    QLabel* m_userPanel;
    QLabel* m_machinePanel;
    QLabel* m_registerPanel;
    QLabel* m_messagePanel;
    QLabel* m_serverPanel;
    QTimer* m_pendingTimer;
    QTimer* m_messageTimer;
    QFileSystemWatcher* m_watcher;
    QPointer<LoginScreen> m_login;
    QList<QAction*> m_userMenuActions;
    QList<QAction*> m_sessionOnlyActions;
    QAction* m_switchAction = nullptr;
    int m_menuOption = 0;
    QString m_pendingNotice;
};

} // namespace orvo::shell
