#pragma once

#include "shell/record_form/record_screen.h"

#include <QPointer>
#include <QToolBar>
#include <array>

class QAction;

namespace orvo::shell {

// The main window's one record toolbar. Its buttons act on the active child screen: the main
// window calls setActiveScreen() whenever a sub-window is activated (nullptr when none is). A
// screen that is not a RecordScreen leaves every record button disabled; Salir still closes it.
//
// Actions carry the button keys as objectName ("Nuevo", "Modificar", ...); their tool buttons are
// named "cmdNuevo", "cmdModificar", ... for tests and operators.
class RecordToolbar : public QToolBar {
    Q_OBJECT
public:
    explicit RecordToolbar(QWidget* parent = nullptr);

    // The screen (or its QMdiSubWindow) the buttons act on.
    void setActiveScreen(QWidget* screen);
    QWidget* activeScreen() const { return m_screen; }
    QAction* action(RecordScreen::Action action) const {
        return m_actions[static_cast<int>(action)];
    }
    // Re-evaluates which buttons are visible and enabled.
    void refresh();

    // Button key of an action ("Nuevo" ... "Salir").
    static QString keyOf(RecordScreen::Action action);

signals:
    // Salir pressed with no screen open: the main window decides what leaving means.
    void exitRequested();

private:
    void trigger(RecordScreen::Action action);
    void closeActiveScreen();

    QPointer<QWidget> m_screen;
    QMetaObject::Connection m_stateConnection;
    std::array<QAction*, 9> m_actions{};
};

} // namespace orvo::shell
