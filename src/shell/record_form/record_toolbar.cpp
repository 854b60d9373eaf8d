#include "shell/record_form/record_toolbar.h"

#include "common/dialogs/dialogs.h"

#include <QAction>
#include <QKeySequence>
#include <QMdiSubWindow>

namespace orvo::shell {

namespace {

using Action = RecordScreen::Action;

constexpr std::array kOrder{Action::New,    Action::Modify,  Action::Delete,
                            Action::Search, Action::Print,   Action::Cancel,
                            Action::Save,   Action::Approve, Action::Exit};

QString toolTipOf(Action action) {
    switch (action) {
    case Action::New:
        return QStringLiteral("Nuevo registro");
    case Action::Modify:
        return QStringLiteral("Modificar el registro actual");
    case Action::Delete:
        return QStringLiteral("Eliminar el registro actual");
    case Action::Search:
        return QStringLiteral("Buscar registros");
    case Action::Print:
        return QStringLiteral("Imprimir");
    case Action::Cancel:
        return QStringLiteral("Cancelar la operación");
    case Action::Save:
        return QStringLiteral("Guardar el registro");
    case Action::Approve:
        return QStringLiteral("Aprobar");
    case Action::Exit:
        return QStringLiteral("Salir");
    }
    return {};
}

// The keys a clerk uses instead of the mouse. Ctrl with a letter only: the till screens keep their
// F-keys, and a line edit keeps Ctrl+A, Ctrl+K, Ctrl+Z and the clipboard keys.
QKeySequence shortcutOf(Action action) {
    switch (action) {
    case Action::New:
        return QKeySequence(Qt::CTRL | Qt::Key_N);
    case Action::Modify:
        return QKeySequence(Qt::CTRL | Qt::Key_M);
    case Action::Delete:
        return QKeySequence(Qt::CTRL | Qt::Key_E);
    case Action::Search:
        return QKeySequence(Qt::CTRL | Qt::Key_B);
    case Action::Print:
        return QKeySequence(Qt::CTRL | Qt::Key_P);
    case Action::Cancel:
        return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    case Action::Save:
        return QKeySequence(Qt::CTRL | Qt::Key_G);
    case Action::Approve:
        return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A);
    case Action::Exit:
        return {}; // Escape and Ctrl+F4 close the screen
    }
    return {};
}

RecordScreen* recordScreenOf(QWidget* w) {
    return qobject_cast<RecordScreen*>(w);
}

} // namespace

QString RecordToolbar::keyOf(Action action) {
    switch (action) {
    case Action::New:
        return QStringLiteral("Nuevo");
    case Action::Modify:
        return QStringLiteral("Modificar");
    case Action::Delete:
        return QStringLiteral("Eliminar");
    case Action::Search:
        return QStringLiteral("Buscar");
    case Action::Print:
        return QStringLiteral("Imprimir");
    case Action::Cancel:
        return QStringLiteral("Cancelar");
    case Action::Save:
        return QStringLiteral("Guardar");
    case Action::Approve:
        return QStringLiteral("Aprobar");
    case Action::Exit:
        return QStringLiteral("Salir");
    }
    return {};
}

RecordToolbar::RecordToolbar(QWidget* parent) : QToolBar(parent) {
    setObjectName(QStringLiteral("tlbregistro"));
    setWindowTitle(QStringLiteral("Registro"));
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    for (Action a : kOrder) {
        const QString key = keyOf(a);
        if (a == Action::Exit)
            addSeparator();
        QAction* act = addAction(key);
        act->setObjectName(key);
        const QKeySequence keys = shortcutOf(a);
        act->setShortcut(keys);
        act->setToolTip(keys.isEmpty()
                            ? toolTipOf(a)
                            : toolTipOf(a) + QStringLiteral(" (") +
                                  keys.toString(QKeySequence::NativeText) + QLatin1Char(')'));
        if (QWidget* button = widgetForAction(act))
            button->setObjectName(QStringLiteral("cmd") + key);
        connect(act, &QAction::triggered, this, [this, a] { trigger(a); });
        m_actions[static_cast<int>(a)] = act;
    }
    refresh();
}

void RecordToolbar::setActiveScreen(QWidget* screen) {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(screen))
        screen = sub->widget();
    if (screen == m_screen)
        return refresh();
    disconnect(m_stateConnection);
    m_screen = screen;
    if (RecordScreen* rs = recordScreenOf(screen))
        m_stateConnection =
            connect(rs, &RecordScreen::recordStateChanged, this, &RecordToolbar::refresh);
    refresh();
}

void RecordToolbar::refresh() {
    RecordScreen* rs = recordScreenOf(m_screen);
    for (Action a : kOrder) {
        QAction* act = action(a);
        if (a == Action::Exit) {
            act->setEnabled(true);
            act->setVisible(true);
            continue;
        }
        act->setVisible(rs ? rs->offers(a) : a != Action::Approve);
        act->setEnabled(rs && rs->canPerform(a));
    }
}

void RecordToolbar::trigger(Action a) {
    if (a == Action::Exit)
        return closeActiveScreen();
    RecordScreen* rs = recordScreenOf(m_screen);
    if (!rs || !rs->canPerform(a))
        return refresh();
    rs->perform(a);
    refresh();
}

void RecordToolbar::closeActiveScreen() {
    if (!m_screen) {
        emit exitRequested();
        return;
    }
    if (RecordScreen* rs = recordScreenOf(m_screen); rs && rs->isEditing()) {
        const QString text = (rs->mode() == RecordScreen::Mode::Adding
                                  ? QStringLiteral("Esta incluyendo un nuevo registro en ")
                                  : QStringLiteral("Esta modificando un registro en ")) +
                             rs->caption() + QStringLiteral(" ¿Desea cancelar la operación?");
        if (!dialogs().question(rs, text, QStringLiteral("Información"), false))
            return;
        rs->perform(Action::Cancel);
    }
    QWidget* screen = m_screen;
    QWidget* window = screen;
    for (QWidget* p = screen->parentWidget(); p; p = p->parentWidget()) {
        if (qobject_cast<QMdiSubWindow*>(p)) {
            window = p;
            break;
        }
    }
    setActiveScreen(nullptr);
    window->close();
}

} // namespace orvo::shell
