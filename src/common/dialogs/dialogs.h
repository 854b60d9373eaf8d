#pragma once

#include "common/errors/errors.h"

#include <QDate>
#include <QString>
#include <optional>

class QWidget;
class QPrinter;

namespace orvo {

// Every message box, question and file or printer choice of a screen goes through here, so that
// GUI tests can script the answers. QtDialogs is the only implementation that shows real boxes.
class Dialogs {
public:
    struct Credentials {
        QString user;
        QString password;
    };

    virtual ~Dialogs() = default;

    virtual void information(QWidget* parent, const QString& text,
                             const QString& title = QStringLiteral("Información")) = 0;
    virtual void warning(QWidget* parent, const QString& text,
                         const QString& title = QStringLiteral("Información")) = 0;
    virtual void databaseError(QWidget* parent, const DbError& error) = 0;
    // Yes/No question; defaultYes chooses the button that Enter presses.
    virtual bool question(QWidget* parent, const QString& text,
                          const QString& title = QStringLiteral("Información"),
                          bool defaultYes = false) = 0;
    // A supervisor's user and password, or nothing when cancelled. `formName` is the dialog's
    // objectName.
    virtual std::optional<Credentials>
    authorisation(QWidget* parent, const QString& prompt,
                  const QString& formName = QStringLiteral("frmAutorizacion")) = 0;
    virtual std::optional<QString> textInput(QWidget* parent, const QString& title,
                                             const QString& label, const QString& text = {},
                                             bool password = false) = 0;
    virtual QString openFileName(QWidget* parent, const QString& caption, const QString& dir,
                                 const QString& filter) = 0;
    virtual QString saveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                 const QString& filter) = 0;
    // Lets the user choose a printer (or a PDF file); false when cancelled.
    virtual bool choosePrinter(QWidget* parent, QPrinter& printer) = 0;
};

// The dialogs of this process (QtDialogs unless a test installed its own).
Dialogs& dialogs();

// From now on, whenever a modal dialog of the program closes and leaves the keyboard nowhere, it
// goes back to the window underneath (the open modal dialog, or the closed one's owner). Without
// a window manager nothing else does it, and the screens' shortcuts go unheard.
void returnKeyboardAfterDialogs();

// Every screen's printer choice: the job is named after `document`, and a station without an
// installed printer is offered a PDF named after the document and `day` in the report folder.
bool choosePrinter(QWidget* parent, QPrinter& printer, const QString& document,
                   const QDate& day = QDate::currentDate());
// Installs `d` (not owned); nullptr restores the real ones.
void setDialogs(Dialogs* d);

// Runs a screen action and shows whatever it refuses with: UserError as its message, DbError with
// number and description, anything else as an unexpected error. Nothing escapes a slot.
// Returns true when the action finished.
template <class F> bool guarded(QWidget* parent, F&& action) {
    try {
        action();
        return true;
    } catch (const UserError& e) {
        dialogs().information(parent, e.text(), e.title());
    } catch (const DbError& e) {
        dialogs().databaseError(parent, e);
    } catch (const std::exception& e) {
        dialogs().warning(parent, QString::fromUtf8(e.what()), QStringLiteral("Error"));
    }
    return false;
}

} // namespace orvo
