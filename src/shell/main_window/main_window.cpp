#include "shell/main_window/main_window.h"

#include "common/build_info/build_info.h"
#include "common/dialogs/dialogs.h"
#include "shell/login/login_screen.h"
#include "shell/main_window/about_screen.h"
#include "shell/main_window/calculator_screen.h"
#include "shell/main_window/pending_files.h"
#include "shell/record_form/record_toolbar.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"
#include "shell/startup/external_backup.h"
#include "shell/startup/server_config_screen.h"
#include "shell/startup/user_settings.h"
#include "shell/startup/version_registry.h"
#include "shell/users/roles.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QFontDialog>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QSysInfo>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>

namespace orvo::shell {

namespace {

constexpr int kPendingIntervalMs = 60 * 1000;
constexpr int kMessageShownMs = 20 * 1000;
const QString kMessageLine = QStringLiteral("Linea de Mensajes");

// Task bar buttons and the screens that load what they signal.
struct TaskButton {
    const char* key;
    const char* caption;
    const char* form;
};
constexpr TaskButton kTaskButtons[] = {
    {"Transferencias", "Transferencias", "frmImpTransferencias"},
    {"ListaPrecios", "Listas de precios", "frmImpListaPrecios"},
    {"Compras", "Compras", "frmCompras"},
    {"Nomina", "Nómina", "frmNomina"},
    {"ReimprimirNomina", "Reimprimir nómina", "frmReimprimirNomina"},
};

QLabel* panel(QWidget* parent, const char* name, const QString& tooltip = {}) {
    auto* l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setToolTip(tooltip);
    l->setFrameShape(QFrame::Panel);
    l->setFrameShadow(QFrame::Sunken);
    return l;
}

QString machineName() {
    return QSysInfo::machineHostName();
}

} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmPrincipal"));
    setWindowTitle(session().systemCode);
    // The till works on the whole screen: maximised, and as large as the screen where no window
    // manager maximises it.
    if (QScreen* s = screen())
        setGeometry(s->availableGeometry());
    else
        resize(1024, 720);
    setWindowState(windowState() | Qt::WindowMaximized);

    m_mdi = new QMdiArea(this);
    m_mdi->setObjectName(QStringLiteral("mdiArea"));
    m_mdi->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_mdi->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_mdi);

    m_recordToolbar = new RecordToolbar(this);
    addToolBar(m_recordToolbar);
    m_recordToolbar->addSeparator();
    m_sessionAction = m_recordToolbar->addAction(style()->standardIcon(QStyle::SP_DialogYesButton),
                                                 QStringLiteral("Sesión"));
    m_sessionAction->setObjectName(QStringLiteral("Sesion"));
    m_sessionAction->setToolTip(QStringLiteral("Iniciar o cerrar la sesión"));
    connect(m_sessionAction, &QAction::triggered, this, [this] { sessionButton(); });
    connect(m_recordToolbar, &RecordToolbar::exitRequested, this, &QWidget::close);
    connect(m_mdi, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* sub) {
        m_recordToolbar->setActiveScreen(sub ? sub->widget() : nullptr);
    });

    m_taskBar = new QToolBar(QStringLiteral("Archivos pendientes"), this);
    m_taskBar->setObjectName(QStringLiteral("tblbarraTarea"));
    for (const TaskButton& b : kTaskButtons) {
        QAction* a = m_taskBar->addAction(QString::fromUtf8(b.caption));
        a->setObjectName(QString::fromLatin1(b.key));
        a->setEnabled(false);
        const QString form = QString::fromLatin1(b.form);
        connect(a, &QAction::triggered, this, [this, form] { openForm(form); });
    }
    addToolBar(Qt::BottomToolBarArea, m_taskBar);

    m_tree = new QTreeWidget(this);
    m_tree->setObjectName(QStringLiteral("tvArbol"));
    m_tree->setHeaderHidden(true);
    connect(m_tree, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        const QString code = item->data(0, Qt::UserRole).toString();
        if (code == QLatin1String("#switch"))
            setMenuPresentation(kMenuBar);
        else if (item->childCount() == 0)
            openNode(code);
    });
    m_treeDock = new QDockWidget(QStringLiteral("Menú"), this);
    m_treeDock->setObjectName(QStringLiteral("dockArbol"));
    m_treeDock->setWidget(m_tree);
    m_treeDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    addDockWidget(Qt::LeftDockWidgetArea, m_treeDock);
    m_treeDock->hide();

    m_userPanel = panel(this, "pnlUsuario", QStringLiteral("Nombre del usuario"));
    m_machinePanel = panel(this, "pnlEquipo", QStringLiteral("Nombre del equipo"));
    m_registerPanel = panel(this, "pnlCaja");
    m_messagePanel = panel(this, "pnlMensaje");
    m_serverPanel = panel(this, "pnlServidor");
    statusBar()->addWidget(m_userPanel);
    statusBar()->addWidget(m_machinePanel);
    statusBar()->addWidget(m_registerPanel);
    statusBar()->addWidget(m_messagePanel, 1);
    statusBar()->addPermanentWidget(m_serverPanel);

    // Pop-up menu of the child windows.
    m_popup = new QMenu(this);
    m_popup->setObjectName(QStringLiteral("smxPopUpMain"));
    const auto popupItem = [this](const char* key, const QString& text, auto slot) {
        QAction* a = m_popup->addAction(text);
        a->setObjectName(QString::fromLatin1(key));
        connect(a, &QAction::triggered, this, slot);
    };
    popupItem("Calculadora", QStringLiteral("Calculadora"), [this] { showCalculator(); });
    m_popup->addSeparator();
    popupItem("Cascada", QStringLiteral("Cascada"), [this] { m_mdi->cascadeSubWindows(); });
    popupItem("MosaicoV", QStringLiteral("Mosaico vertical"), [this] { m_mdi->tileSubWindows(); });
    popupItem("MosaicoH", QStringLiteral("Mosaico horizontal"), [this] {
        // Stacked one under the other, each as wide as the area.
        const auto subs = m_mdi->subWindowList();
        if (subs.isEmpty())
            return;
        const int h = m_mdi->viewport()->height() / int(subs.size());
        int y = 0;
        for (QMdiSubWindow* s : subs) {
            s->showNormal();
            s->setGeometry(0, y, m_mdi->viewport()->width(), h);
            y += h;
        }
    });
    popupItem("Centrar", QStringLiteral("Centrar"), [this] { centreActive(); });
    popupItem("Cerrar", QStringLiteral("Cerrar"), [this] { m_mdi->closeActiveSubWindow(); });
    m_mdi->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_mdi, &QWidget::customContextMenuRequested, this, &MainWindow::showPopupMenu);

    m_pendingTimer = new QTimer(this);
    m_pendingTimer->setObjectName(QStringLiteral("TimerArchivosPendientes"));
    m_pendingTimer->setInterval(kPendingIntervalMs);
    connect(m_pendingTimer, &QTimer::timeout, this, &MainWindow::checkPendingFiles);
    m_messageTimer = new QTimer(this);
    m_messageTimer->setObjectName(QStringLiteral("TimerTiempoMensaje"));
    m_messageTimer->setSingleShot(true);
    m_messageTimer->setInterval(kMessageShownMs);
    connect(m_messageTimer, &QTimer::timeout, this,
            [this] { m_messagePanel->setText(kMessageLine); });
    m_watcher = new QFileSystemWatcher(this);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this,
            [this] { QTimer::singleShot(500, this, &MainWindow::checkPendingFiles); });

    buildFixedMenus();
}

MainWindow::~MainWindow() = default;

LoginScreen* MainWindow::loginScreen() const {
    return m_login;
}

void MainWindow::load() {
    SessionContext& ctx = session();
    const WorkstationSettings ws = WorkstationSettings::load();
    ctx.appFolder = appHome();
    ctx.serial = ws.serie;
    loadSession(mainDb(), ctx);
    ctx.menuFontSize = ws.fontSize;
    ctx.menuFontName = ws.fontName;
    ctx.menuFontBold = ws.fontBold;
    ctx.menuFontItalic = ws.fontItalic;
    ctx.barcodeReader = ws.barcodeReader;
    ctx.systemCode = systemCode();
    refreshStatusBar();
    m_menuOption = ws.menuOption == kMenuTree ? kMenuTree : kMenuBar;
    rebuildMenu();

    for (const char* sub : {"Recibe", "Actualizar"}) {
        const QString dir = ctx.appFolder + u'/' + QString::fromLatin1(sub);
        if (QFileInfo(dir).isDir())
            m_watcher->addPath(dir);
    }
    checkPendingFiles();
    m_pendingTimer->start();

    if (externalBackupDue(ctx.tipo, ctx.nombreEquipo, machineName(), ws.externalBackupDone))
        externalBackupReminder();
    registerVersions();
}

void MainWindow::refreshStatusBar() {
    const SessionContext& ctx = session();
    setWindowTitle(captionText(ctx, versionString()));
    m_userPanel->setText(userPanelText(ctx));
    m_machinePanel->setText(machineName());
    m_registerPanel->setText(QStringLiteral("       ") + registerPanelText(ctx));
    m_messagePanel->setText(kMessageLine);
    m_serverPanel->setText(mainConnectionOpen() ? serverPanelText(mainDb()) : QString());
}

void MainWindow::reloadAfterConnectionChange() {
    guarded(this, [&] {
        loadSession(mainDb(), session());
        refreshStatusBar();
        rebuildMenu();
    });
}

// --- session ----------------------------------------------------------------------------------

void MainWindow::showLogin() {
    if (m_login) {
        m_login->raise();
        m_login->activateWindow();
        return;
    }
    setLoggedIn(false);
    auto* dlg = new LoginScreen(this);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    connect(dlg, &QDialog::accepted, this, [this, dlg] {
        guarded(this, [&] { startUserSession(dlg->loggedUser().code, dlg->loggedUser().name); });
        // The keyboard comes back here: without this, some window managers (and none at all)
        // leave it nowhere once the login closes, and the menu keys and shortcuts go unheard.
        activateWindow();
    });
    m_login = dlg;
    dlg->open();
}

void MainWindow::startUserSession(const QString& code, const QString& name) {
    SessionContext& ctx = session();
    ctx.userCode = code;
    ctx.userName = name;
    setLoggedIn(true);
    loadSession(mainDb(), ctx);
    refreshStatusBar();
    rebuildMenu();
    checkPendingFiles();
}

void MainWindow::endUserSession() {
    SessionContext& ctx = session();
    ctx.userCode.clear();
    ctx.userName.clear();
    setLoggedIn(false);
    loadSession(mainDb(), ctx);
    refreshStatusBar();
    rebuildMenu();
    checkPendingFiles();
}

void MainWindow::sessionButton() {
    if (!isLoggedIn()) {
        showLogin();
        return;
    }
    if (!dialogs().question(this,
                            QStringLiteral("Desea cerrar la sesión del usuario '") +
                                session().userName + QStringLiteral("'...?"),
                            QStringLiteral("Nueva sesión"), false))
        return;
    // The next user does not inherit the screens of the last one.
    if (!confirmCloseScreens())
        return;
    for (QMdiSubWindow* sub : m_mdi->subWindowList())
        sub->widget()->setProperty("orvoEditing", false);
    m_mdi->closeAllSubWindows();
    if (hasOpenScreens())
        return; // a screen refused to close
    guarded(this, [&] { endUserSession(); });
    showLogin();
}

// --- menu --------------------------------------------------------------------------------------

void MainWindow::buildFixedMenus() {
    m_sessionOnlyActions.clear();
    QMenu* sistema = menuBar()->addMenu(QStringLiteral("&Sistema"));
    sistema->setObjectName(QStringLiteral("mnuSistema"));
    const auto item = [&](QMenu* menu, const char* key, const QString& text, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(QString::fromLatin1(key));
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    m_sessionOnlyActions << item(sistema, "A1", QStringLiteral("Actualizar opciones de menú"),
                                 [this] { rebuildMenu(); });
    m_sessionOnlyActions << item(sistema, "A2", QStringLiteral("Estructura del menú"),
                                 [this] { openForm(QStringLiteral("FrmEstructura")); });
    m_switchAction =
        item(sistema, "A3",
             m_menuOption == kMenuTree ? QStringLiteral("Cambiar a menú XP")
                                       : QStringLiteral("Cambiar a menú explorador"),
             [this] { setMenuPresentation(m_menuOption == kMenuTree ? kMenuBar : kMenuTree); });
    m_sessionOnlyActions << m_switchAction;
    m_sessionOnlyActions << item(sistema, "A4", QStringLiteral("Fuente del menú principal..."),
                                 [this] { chooseMenuFont(); });
    item(sistema, "A5", QStringLiteral("Calculadora..."), [this] { showCalculator(); });
    sistema->addSeparator();
    item(sistema, "A6", QStringLiteral("Nueva sesión"), [this] { sessionButton(); });
    item(sistema, "A7", QStringLiteral("Salir del sistema"), [this] { close(); });
    for (QAction* a : std::as_const(m_sessionOnlyActions))
        a->setVisible(isLoggedIn());
    // The menu structure belongs to the systems group.
    bool systems = false;
    if (isLoggedIn())
        guarded(this, [&] { systems = users::isSystems(mainDb(), session().userCode); });
    m_sessionOnlyActions[1]->setVisible(systems);

    QMenu* ayuda = menuBar()->addMenu(QStringLiteral("A&yuda"));
    ayuda->setObjectName(QStringLiteral("mnuAyuda"));
    item(ayuda, "B1", QStringLiteral("Ayuda..."), [this] { openHelp(); });
    item(ayuda, "B2", QStringLiteral("Acerca de..."), [this] { showAbout(); });
}

void MainWindow::rebuildMenu() {
    QList<MenuNode> nodes;
    if (isLoggedIn() && !session().userCode.isEmpty()) {
        guarded(this, [&] {
            nodes = loadUserMenu(mainDb(), session().userCode, m_menuOption != kMenuTree);
        });
    }
    menuBar()->clear();
    m_tree->clear();
    if (m_menuOption == kMenuTree) {
        buildTree(nodes);
        m_treeDock->setVisible(isLoggedIn());
    } else {
        buildMenuBar(nodes);
        m_treeDock->hide();
    }
    buildFixedMenus();
    applyMenuFont();
}

namespace {

// The menu bar's titles get an Alt letter each, so that a cashier opens "Ventas" with Alt+V:
// the first letter of the title not taken yet by another title or by the fixed menus (Sistema,
// Ayuda), else the next free one of the title.
QString withAltLetter(const QString& caption, QString& taken) {
    if (caption.contains(u'&'))
        return caption;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        const QChar c = caption.at(i).toLower();
        if (!c.isLetter() || taken.contains(c))
            continue;
        taken.append(c);
        return caption.left(i) + u'&' + caption.mid(i);
    }
    return caption;
}

} // namespace

void MainWindow::buildMenuBar(const QList<MenuNode>& nodes) {
    QString taken = QStringLiteral("sy"); // &Sistema, A&yuda
    // Inside an open menu each entry has its letter too: Alt+V, C opens "Cierre de caja".
    QHash<QMenu*, QString> takenIn;
    std::function<void(QMenu*, const MenuNode&)> addNode = [&](QMenu* menu, const MenuNode& n) {
        if (n.isSeparator()) {
            menu->addSeparator();
            return;
        }
        const QString caption = withAltLetter(n.caption, takenIn[menu]);
        if (!n.children.isEmpty() || n.form.isEmpty()) {
            QMenu* sub = menu->addMenu(caption);
            sub->setObjectName(n.code);
            sub->menuAction()->setObjectName(n.code);
            for (const MenuNode& c : n.children)
                addNode(sub, c);
            return;
        }
        QAction* a = menu->addAction(caption);
        a->setObjectName(n.code);
        const QString code = n.code;
        connect(a, &QAction::triggered, this, [this, code] { openNode(code); });
    };
    for (const MenuNode& n : nodes) {
        if (n.isSeparator())
            continue;
        if (n.children.isEmpty() && !n.form.isEmpty()) {
            QAction* a = menuBar()->addAction(withAltLetter(n.caption, taken));
            a->setObjectName(n.code);
            const QString code = n.code;
            connect(a, &QAction::triggered, this, [this, code] { openNode(code); });
            continue;
        }
        QMenu* menu = menuBar()->addMenu(withAltLetter(n.caption, taken));
        menu->setObjectName(n.code);
        menu->menuAction()->setObjectName(n.code);
        for (const MenuNode& c : n.children)
            addNode(menu, c);
    }
}

void MainWindow::buildTree(const QList<MenuNode>& nodes) {
    const QIcon folder = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon leaf = style()->standardIcon(QStyle::SP_FileIcon);
    std::function<void(QTreeWidgetItem*, const MenuNode&)> addNode = [&](QTreeWidgetItem* parent,
                                                                         const MenuNode& n) {
        auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_tree);
        item->setText(0, n.caption);
        item->setData(0, Qt::UserRole, n.code);
        item->setIcon(0, n.children.isEmpty() && !n.form.isEmpty() ? leaf : folder);
        for (const MenuNode& c : n.children)
            addNode(item, c);
    };
    for (const MenuNode& n : nodes)
        addNode(nullptr, n);
    auto* switchItem = new QTreeWidgetItem(m_tree);
    switchItem->setText(0, QStringLiteral("Cambiar a menú XP"));
    switchItem->setData(0, Qt::UserRole, QStringLiteral("#switch"));
}

void MainWindow::setMenuPresentation(int option) {
    m_menuOption = option == kMenuTree ? kMenuTree : kMenuBar;
    settings::write(QStringLiteral("OpcionMenu"), QString::number(m_menuOption));
    rebuildMenu();
}

void MainWindow::applyMenuFont() {
    const SessionContext& ctx = session();
    QFont f = font();
    f.setFamily(ctx.menuFontName);
    f.setPointSize(ctx.menuFontSize > 0 ? ctx.menuFontSize : 8);
    f.setBold(ctx.menuFontBold);
    f.setItalic(ctx.menuFontItalic);
    menuBar()->setFont(f);
    m_tree->setFont(f);
}

void MainWindow::chooseMenuFont() {
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, menuBar()->font(), this,
                                              QStringLiteral("Fuente del menú principal"));
    if (!ok)
        return;
    SessionContext& ctx = session();
    ctx.menuFontName = chosen.family();
    ctx.menuFontSize = chosen.pointSize() > 0 ? chosen.pointSize() : 8;
    ctx.menuFontBold = chosen.bold();
    ctx.menuFontItalic = chosen.italic();
    saveMenuFont(ctx.menuFontName, ctx.menuFontSize, ctx.menuFontBold, ctx.menuFontItalic);
    applyMenuFont();
}

// --- screens -----------------------------------------------------------------------------------

void MainWindow::openNode(const QString& nodeCode) {
    guarded(this, [&] {
        if (!isLoggedIn() || !nodeGranted(mainDb(), session().userCode, nodeCode))
            return;
        const auto form = formOfNode(mainDb(), nodeCode);
        if (form)
            openForm(*form);
    });
}

QWidget* MainWindow::openForm(const QString& formName, Access access) {
    // A screen is never opened twice: the latest instance is brought forward.
    const QList<QMdiSubWindow*> subs = m_mdi->subWindowList(QMdiArea::CreationOrder);
    for (auto it = subs.crbegin(); it != subs.crend(); ++it) {
        QWidget* w = (*it)->widget();
        if (w && w->objectName().toUpper() == formName.trimmed().toUpper()) {
            if ((*it)->isMinimized())
                (*it)->showNormal();
            m_mdi->setActiveSubWindow(*it);
            return w;
        }
    }
    QWidget* screen = nullptr;
    const bool ok = guarded(this, [&] {
        // Shortcuts between screens (the client form from the sale) obey the menu's grants too.
        if (access == Access::Granted && mainConnectionOpen() &&
            !formGranted(mainDb(), isLoggedIn() ? session().userCode : QString(), formName))
            throw UserError(QStringLiteral("Usuario no autorizado para esta opción...!"));
        screen = ScreenRegistry::instance().create(formName.trimmed(), nullptr);
        if (!screen)
            throw UserError(QStringLiteral("La pantalla '%1' no existe en el sistema...!")
                                .arg(formName.trimmed()));
    });
    if (!ok || !screen)
        return nullptr;
    QMdiSubWindow* sub = m_mdi->addSubWindow(screen);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(screen->windowTitle());
    sub->setWindowIcon(windowIcon());
    if (auto* dlg = qobject_cast<QDialog*>(screen))
        connect(dlg, &QDialog::finished, sub, &QWidget::close);
    if (auto* config = qobject_cast<ServerConfigScreen*>(screen))
        connect(config, &ServerConfigScreen::connectionChanged, this,
                &MainWindow::reloadAfterConnectionChange);
    sub->installEventFilter(this);
    screen->installEventFilter(this);
    screen->show();
    sub->show();
    m_mdi->setActiveSubWindow(sub);
    m_recordToolbar->setActiveScreen(screen);
    return screen;
}

void MainWindow::centreActive() {
    QMdiSubWindow* sub = m_mdi->activeSubWindow();
    if (!sub)
        return;
    const QSize area = m_mdi->viewport()->size();
    sub->move(std::max(0, (area.width() - sub->width()) / 2),
              std::max(0, (area.height() - sub->height()) / 2));
}

void MainWindow::showPopupMenu(const QPoint& pos) {
    m_popup->popup(m_mdi->mapToGlobal(pos));
}

void MainWindow::showCalculator() {
    auto* calc = findChild<CalculatorScreen*>();
    if (!calc) {
        calc = new CalculatorScreen(this);
        calc->setAttribute(Qt::WA_DeleteOnClose);
    }
    calc->show();
    calc->raise();
}

void MainWindow::showAbout() {
    auto* about = new AboutScreen(this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
}

void MainWindow::openHelp() {
    // The HTML help is preferred: it opens everywhere without a viewer.
    for (const char* name : {"Ayuda.htm", "Ayuda.pdf"}) {
        const QString path = appHome() + u'/' + QString::fromLatin1(name);
        if (QFileInfo::exists(path)) {
            QDesktopServices::openUrl(QUrl::fromLocalFile(path));
            return;
        }
    }
    dialogs().information(this, QStringLiteral("No se encontró el archivo de ayuda...!"));
}

// --- pending exchange files ---------------------------------------------------------------------

void MainWindow::checkPendingFiles() {
    const PendingFiles pending =
        scanPendingFiles(session().appFolder.isEmpty() ? appHome() : session().appFolder);
    for (const TaskButton& b : kTaskButtons) {
        if (QAction* a = m_taskBar->findChild<QAction*>(QString::fromLatin1(b.key)))
            a->setEnabled(isLoggedIn() && pending.buttons.contains(QString::fromLatin1(b.key)));
    }
    if (pending.lines.isEmpty()) {
        m_pendingNotice.clear();
        return;
    }
    const QString title = QStringLiteral("Archivos pendientes en ") + session().nombre;
    const QString notice = title + u'\n' + pending.lines.join(u'\n');
    if (notice == m_pendingNotice)
        return;
    m_pendingNotice = notice;
    m_messagePanel->setText(title + QStringLiteral(": ") + pending.lines.join(u' '));
    m_messagePanel->setToolTip(pending.lines.join(u'\n'));
    m_messageTimer->start();
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        auto* tray = findChild<QSystemTrayIcon*>();
        if (!tray) {
            tray = new QSystemTrayIcon(style()->standardIcon(QStyle::SP_DriveNetIcon), this);
            tray->show();
        }
        tray->showMessage(title, pending.lines.join(u'\n'), QSystemTrayIcon::Information,
                          kMessageShownMs);
    }
}

// --- start-up duties ----------------------------------------------------------------------------

void MainWindow::externalBackupReminder() {
    dialogs().information(
        this, QStringLiteral("Debe realizar respaldo en un dispositivo externo USB...!"),
        QStringLiteral("Repaldo externo"));
    const QString suggested = backupFileName(QDir::homePath(), mainDb(), QDate::currentDate());
    const QString target =
        dialogs().saveFileName(this, QStringLiteral("Respaldo externo"), suggested,
                               QStringLiteral("Respaldo (*_RESP.BAK)"));
    if (target.isEmpty())
        return;
    QString file = target;
    if (!file.endsWith(QStringLiteral("_RESP.BAK"), Qt::CaseInsensitive))
        file += QStringLiteral("_RESP.BAK");
    guarded(this, [&] {
        backupDatabase(mainDb(), file);
        settings::write(QStringLiteral("RespaldoExternoUltimoCierre"), QStringLiteral("1"));
        dialogs().information(this, QStringLiteral("Respaldo realizado en %1").arg(file));
    });
}

void MainWindow::registerVersions() {
    guarded(this, [&] {
        registerExecutableVersions(
            mainDb(), session().serial, QCoreApplication::applicationDirPath(),
            QFileInfo(QCoreApplication::applicationFilePath()).fileName(), versionString());
    });
}

// --- leaving -------------------------------------------------------------------------------------

bool MainWindow::confirmCloseScreen(QMdiSubWindow* sub) {
    QWidget* w = sub->widget();
    if (!w || !w->property("orvoEditing").toBool())
        return true;
    const bool adding = w->property("orvoMode").toString() == QLatin1String("adding");
    const QString caption = w->windowTitle();
    const QString text = (adding ? QStringLiteral("Esta incluyendo un nuevo registro en ")
                                 : QStringLiteral("Esta modificando un registro en ")) +
                         caption + QStringLiteral(" ¿Desea cancelar la operación?");
    m_mdi->setActiveSubWindow(sub);
    return dialogs().question(this, text, QStringLiteral("Información"), false);
}

bool MainWindow::confirmCloseScreens() {
    for (QMdiSubWindow* sub : m_mdi->subWindowList())
        if (!confirmCloseScreen(sub))
            return false;
    return true;
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(watched)) {
        if (event->type() == QEvent::Close) {
            // The frame's close button, its Ctrl+F4, Escape: an editing record form asks first.
            if (!confirmCloseScreen(sub)) {
                event->ignore();
                return true;
            }
            if (QWidget* w = sub->widget())
                w->setProperty("orvoEditing", false);
        } else if (event->type() == QEvent::KeyPress &&
                   static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
                   static_cast<QKeyEvent*>(event)->modifiers() == Qt::NoModifier) {
            // Only an Escape that no control of the screen took reaches the frame.
            sub->close();
            return true;
        }
        return false;
    }
    if (event->type() == QEvent::Close) {
        // A screen that closed itself ("Salir") leaves no empty frame behind, once its close is
        // over (a screen may refuse it).
        auto* w = qobject_cast<QWidget*>(watched);
        QPointer<QMdiSubWindow> sub = w ? qobject_cast<QMdiSubWindow*>(w->parentWidget()) : nullptr;
        QPointer<QWidget> screen = w;
        if (sub)
            QTimer::singleShot(0, this, [sub, screen] {
                if (sub && screen && !screen->isVisible() && sub->isVisible() &&
                    !sub->isMinimized())
                    sub->close();
            });
    }
    return false;
}

bool MainWindow::hasOpenScreens() const {
    const auto screens = m_mdi->subWindowList();
    return std::any_of(screens.begin(), screens.end(),
                       [](const QMdiSubWindow* s) { return s->isVisible(); });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!confirmCloseScreens() ||
        !dialogs().question(this, QStringLiteral("¿Desea abandonar el sistema?"),
                            QStringLiteral("Salir ") + session().systemCode, false)) {
        event->ignore();
        return;
    }
    // The operations were cancelled above: the screens close without asking again.
    for (QMdiSubWindow* sub : m_mdi->subWindowList())
        if (sub->widget())
            sub->widget()->setProperty("orvoEditing", false);
    m_mdi->closeAllSubWindows();
    // A screen that would lose something (a sale holding a card payment) stays, and so do we.
    if (hasOpenScreens()) {
        event->ignore();
        return;
    }
    m_pendingTimer->stop();
    event->accept();
}

} // namespace orvo::shell
