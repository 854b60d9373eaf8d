#include "common/dialogs/qt_dialogs.h"

#include "shell/startup/app_state.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFileDialog>
#include <QFormLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTimer>

namespace orvo {

namespace {
Dialogs* g_override = nullptr;
} // namespace

Dialogs& dialogs() {
    static QtDialogs real;
    return g_override ? *g_override : real;
}

void setDialogs(Dialogs* d) {
    g_override = d;
}

namespace {
class KeyboardReturn : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Hide)
            return false;
        // A modal dialog (a box, a lookup list, the printer's) of a window of ours.
        auto* closed = qobject_cast<QDialog*>(watched);
        if (!closed || !closed->isWindow() || !closed->parentWidget() ||
            (!closed->testAttribute(Qt::WA_ShowModal) && closed->windowModality() == Qt::NonModal))
            return false;
        QPointer<QWidget> owner = closed->parentWidget()->window();
        // Once the close is done: the window under it is then known.
        QTimer::singleShot(0, this, [owner] {
            // Only when the keyboard really went nowhere: a window the user is typing in (the
            // login opening meanwhile) keeps it.
            const QWidget* active = QApplication::activeWindow();
            if ((active && active->isVisible()) || QApplication::activePopupWidget())
                return;
            QWidget* target = QApplication::activeModalWidget();
            if (!target)
                target = owner;
            if (target && target->isVisible() && !target->isActiveWindow())
                target->activateWindow();
        });
        return false;
    }
};
} // namespace

void returnKeyboardAfterDialogs() {
    qApp->installEventFilter(new KeyboardReturn(qApp));
}

bool choosePrinter(QWidget* parent, QPrinter& printer, const QString& document, const QDate& day) {
    printer.setDocName(document);
    // With a printer installed the dialog starts on it; without one, on a file of our own
    // rather than the toolkit's print.pdf in the home folder.
    if (printer.outputFileName().isEmpty() && QPrinterInfo::availablePrinterNames().isEmpty())
        printer.setOutputFileName(shell::reportPdfPath(document, day));
    return dialogs().choosePrinter(parent, printer);
}

namespace {
// One message box at a time: a box asked for while another is open (the mail that ends while the
// closing says it is done) waits for the first to be answered instead of stacking on it, where
// the keyboard could answer only the top one.
void waitForOpenBox() {
    while (auto* open = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        QEventLoop loop;
        QObject::connect(open, &QDialog::finished, &loop, &QEventLoop::quit);
        QObject::connect(open, &QObject::destroyed, &loop, &QEventLoop::quit);
        loop.exec();
    }
}
// After a box or a choice, the keyboard goes back to the window that asked: some window managers
// (and none at all) leave it nowhere, and the screen's F-keys then go unheard.
struct GivesFocusBack {
    QWidget* parent;
    ~GivesFocusBack() {
        if (parent && parent->window()->isVisible())
            parent->window()->activateWindow();
    }
};
} // namespace

void QtDialogs::information(QWidget* parent, const QString& text, const QString& title) {
    waitForOpenBox();
    const GivesFocusBack back{parent};
    QMessageBox::information(parent, title, text);
}

void QtDialogs::warning(QWidget* parent, const QString& text, const QString& title) {
    waitForOpenBox();
    const GivesFocusBack back{parent};
    QMessageBox::warning(parent, title, text);
}

void QtDialogs::databaseError(QWidget* parent, const DbError& error) {
    // The database's own words first; its error number after them.
    const QString text = error.text().trimmed().isEmpty()
                             ? QStringLiteral("La base de datos no dio el motivo.")
                             : error.text().trimmed();
    waitForOpenBox();
    const GivesFocusBack back{parent};
    QMessageBox::critical(parent, QStringLiteral("Error de base de datos"),
                          text + QStringLiteral("\n\n(Error ") + error.number() + u')');
}

bool QtDialogs::question(QWidget* parent, const QString& text, const QString& title,
                         bool defaultYes) {
    waitForOpenBox();
    const GivesFocusBack back{parent};
    return QMessageBox::question(parent, title, text, QMessageBox::Yes | QMessageBox::No,
                                 defaultYes ? QMessageBox::Yes : QMessageBox::No) ==
           QMessageBox::Yes;
}

std::optional<Dialogs::Credentials> QtDialogs::authorisation(QWidget* parent, const QString& prompt,
                                                             const QString& formName) {
    const GivesFocusBack back{parent};
    QDialog dlg(parent);
    dlg.setObjectName(formName);
    dlg.setWindowTitle(QStringLiteral("Autorización"));
    auto* form = new QFormLayout(&dlg);
    form->addRow(new QLabel(prompt));
    auto* user = new QLineEdit;
    user->setObjectName(QStringLiteral("txtUsuario"));
    auto* pass = new QLineEdit;
    pass->setObjectName(QStringLiteral("txtClave"));
    pass->setEchoMode(QLineEdit::Password);
    form->addRow(QStringLiteral("Usuario:"), user);
    form->addRow(QStringLiteral("Clave:"), pass);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dlg, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dlg, &QDialog::reject);
    if (dlg.exec() != QDialog::Accepted)
        return std::nullopt;
    return Credentials{user->text().trimmed(), pass->text()};
}

std::optional<QString> QtDialogs::textInput(QWidget* parent, const QString& title,
                                            const QString& label, const QString& text,
                                            bool password) {
    const GivesFocusBack back{parent};
    bool ok = false;
    const QString value = QInputDialog::getText(
        parent, title, label, password ? QLineEdit::Password : QLineEdit::Normal, text, &ok);
    if (!ok)
        return std::nullopt;
    return value;
}

QString QtDialogs::openFileName(QWidget* parent, const QString& caption, const QString& dir,
                                const QString& filter) {
    const GivesFocusBack back{parent};
    return QFileDialog::getOpenFileName(parent, caption, dir, filter);
}

QString QtDialogs::saveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                const QString& filter) {
    const GivesFocusBack back{parent};
    return QFileDialog::getSaveFileName(parent, caption, dir, filter);
}

bool QtDialogs::choosePrinter(QWidget* parent, QPrinter& printer) {
    const GivesFocusBack back{parent};
    QPrintDialog dlg(&printer, parent);
    return dlg.exec() == QDialog::Accepted;
}

} // namespace orvo
