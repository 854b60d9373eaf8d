#include "shell/record_form/record_screen.h"

#include "common/dialogs/dialogs.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTextEdit>
#include <QTimer>

namespace orvo::shell {

namespace {

const char* const kTagProperty = "Tag";
const char* const kRequiredProperty = "orvoRequired";
const QString kDeleteRefused = QStringLiteral("Registro no se puede eliminar!");

bool isInputType(const QWidget* w) {
    return qobject_cast<const QLineEdit*>(w) || qobject_cast<const QPlainTextEdit*>(w) ||
           qobject_cast<const QTextEdit*>(w) || qobject_cast<const QComboBox*>(w) ||
           qobject_cast<const QCheckBox*>(w) || qobject_cast<const QRadioButton*>(w) ||
           qobject_cast<const QAbstractSpinBox*>(w);
}

// A line edit inside a combo box or a spin box belongs to it, and a grid's editors to the grid.
bool isInsideOtherInput(const QWidget* w, const QWidget* screen) {
    for (const QWidget* p = w->parentWidget(); p && p != screen; p = p->parentWidget()) {
        if (isInputType(p) || qobject_cast<const QAbstractItemView*>(p))
            return true;
    }
    return false;
}

bool isEmptyInput(const QWidget* w) {
    if (auto* e = qobject_cast<const QLineEdit*>(w))
        return e->text().trimmed().isEmpty();
    if (auto* e = qobject_cast<const QPlainTextEdit*>(w))
        return e->toPlainText().trimmed().isEmpty();
    if (auto* e = qobject_cast<const QTextEdit*>(w))
        return e->toPlainText().trimmed().isEmpty();
    if (auto* c = qobject_cast<const QComboBox*>(w))
        return c->currentIndex() < 0 && c->currentText().trimmed().isEmpty();
    return false;
}

QString modeName(RecordScreen::Mode mode) {
    switch (mode) {
    case RecordScreen::Mode::Adding:
        return QStringLiteral("adding");
    case RecordScreen::Mode::Modifying:
        return QStringLiteral("modifying");
    case RecordScreen::Mode::Searching:
        return QStringLiteral("searching");
    case RecordScreen::Mode::Browsing:
        break;
    }
    return QStringLiteral("browsing");
}

} // namespace

RecordScreen::RecordScreen(QWidget* parent) : QWidget(parent) {
    setProperty("orvoEditing", false);
    setProperty("orvoMode", modeName(m_mode));
}

bool RecordScreen::offers(Action action) const {
    return action != Action::Approve;
}

bool RecordScreen::canPerform(Action action) const {
    if (!offers(action))
        return false;
    const bool hasRows = recordCount() > 0;
    switch (m_mode) {
    case Mode::Browsing:
        switch (action) {
        case Action::New:
        case Action::Exit:
            return true;
        case Action::Modify:
        case Action::Delete:
        case Action::Search:
        case Action::Print:
        case Action::Approve:
            return hasRows;
        case Action::Cancel:
        case Action::Save:
            return false;
        }
        break;
    case Mode::Adding:
    case Mode::Modifying:
        return action == Action::Save || action == Action::Cancel || action == Action::Approve ||
               action == Action::Exit;
    case Mode::Searching:
        return action == Action::Search || action == Action::Cancel || action == Action::Exit;
    }
    return false;
}

QString RecordScreen::caption() const {
    const QString title = windowTitle();
    return title.isEmpty() ? objectName() : title;
}

void RecordScreen::markKey(QWidget* control) {
    control->setProperty(kTagProperty, "COD");
}

bool RecordScreen::isKey(const QWidget* control) {
    return control->property(kTagProperty).toString() == QLatin1String("COD");
}

void RecordScreen::markRequired(QWidget* control, const QString& description) {
    control->setProperty(kRequiredProperty, description);
}

QList<QWidget*> RecordScreen::inputControls() const {
    // The focus chain is the tab order; widgets that take no focus are appended in creation order.
    QList<QWidget*> out;
    const auto all = findChildren<QWidget*>();
    for (QWidget* w = nextInFocusChain(); w && w != this; w = w->nextInFocusChain()) {
        if (isAncestorOf(w) && isInputType(w) && !isInsideOtherInput(w, this) && !out.contains(w))
            out << w;
    }
    for (QWidget* w : all) {
        if (isInputType(w) && !isInsideOtherInput(w, this) && !out.contains(w))
            out << w;
    }
    return out;
}

void RecordScreen::setMode(Mode mode) {
    m_mode = mode;
    setProperty("orvoEditing", isEditing());
    setProperty("orvoMode", modeName(mode));
    emit recordStateChanged();
}

bool RecordScreen::perform(Action action) {
    bool done = false;
    guarded(this, [&] { done = performUnguarded(action); });
    return done;
}

bool RecordScreen::performUnguarded(Action action) {
    if (!canPerform(action))
        return false;
    switch (action) {
    case Action::New:
        newRecord();
        setMode(Mode::Adding);
        return true;
    case Action::Modify:
        modifyRecord();
        setMode(Mode::Modifying);
        return true;
    case Action::Cancel:
        cancelRecord();
        setMode(Mode::Browsing);
        return true;
    case Action::Save:
        checkRequired();
        save(); // a refusal throws and leaves the screen in its mode with what was typed
        clearInputs();
        enableInputs(false, true);
        setMode(Mode::Browsing);
        requery();
        if (recordCount() > 0)
            afterNavigate();
        emit recordStateChanged();
        return true;
    case Action::Delete: {
        if (!dialogs().question(this, QStringLiteral("¿Desea eliminar el registro actual?"),
                                QStringLiteral("Eliminar ") + caption(), false))
            return false;
        bool deleted = false;
        try {
            remove();
            deleted = true;
        } catch (const DbError& e) {
            dialogs().databaseError(this, e);
        } catch (const UserError& e) {
            // A row still in use is refused with the message below, said once.
            if (e.text() != kDeleteRefused)
                dialogs().information(this, e.text(), e.title());
        }
        if (!deleted) {
            dialogs().information(this, kDeleteRefused);
            return false;
        }
        dialogs().information(this, QStringLiteral("Registro eliminado con exito!"));
        requery();
        clearInputs();
        if (recordCount() > 0)
            afterNavigate();
        emit recordStateChanged();
        return true;
    }
    case Action::Search:
        if (m_mode == Mode::Searching) {
            runSearch();
            enableInputs(false, true);
            setMode(Mode::Browsing);
        } else {
            beginSearch();
            setMode(Mode::Searching);
        }
        return true;
    case Action::Print:
        print();
        return true;
    case Action::Approve:
        approve();
        return true;
    case Action::Exit:
        return true; // the toolbar closes the screen
    }
    return false;
}

void RecordScreen::newRecord() {
    clearInputs();
    const auto inputs = inputControls();
    for (QWidget* w : inputs) {
        if (auto* d = qobject_cast<QDateTimeEdit*>(w))
            d->setDate(QDate::currentDate());
    }
    enableInputs(true, true);
    const QString key = proposedKey();
    if (!key.isEmpty()) {
        for (QWidget* w : inputs) {
            if (auto* e = qobject_cast<QLineEdit*>(w); e && isKey(w)) {
                e->setText(key);
                break;
            }
        }
    }
    focusFirstInput();
}

void RecordScreen::modifyRecord() {
    enableInputs(true, false);
    focusFirstInput();
}

void RecordScreen::cancelRecord() {
    clearInputs();
    enableInputs(false, true);
    if (recordCount() > 0)
        afterNavigate();
}

void RecordScreen::beginSearch() {
    clearInputs();
    enableInputs(true, true);
    focusFirstInput();
}

void RecordScreen::runSearch() {}

void RecordScreen::checkRequired() const {
    for (QWidget* w : inputControls()) {
        const QString description = w->property(kRequiredProperty).toString();
        if (!description.isEmpty() && w->isEnabled() && isEmptyInput(w)) {
            w->setFocus();
            throw UserError(QStringLiteral("¡Debe introducir ") + description +
                            QStringLiteral("!"));
        }
    }
}

void RecordScreen::installFieldBehaviour() {
    for (QWidget* w : inputControls())
        w->installEventFilter(this);
}

bool RecordScreen::eventFilter(QObject* watched, QEvent* event) {
    auto* w = qobject_cast<QWidget*>(watched);
    if (w && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool multiLine = qobject_cast<QPlainTextEdit*>(w) || qobject_cast<QTextEdit*>(w);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && !multiLine &&
            key->modifiers() == Qt::NoModifier) {
            focusNextChild();
            return true;
        }
    } else if (auto* e = qobject_cast<QLineEdit*>(watched); e && event->type() == QEvent::FocusIn) {
        QTimer::singleShot(0, e, [e] { e->selectAll(); });
    }
    return QWidget::eventFilter(watched, event);
}

void RecordScreen::clearInputs() {
    for (QWidget* w : inputControls()) {
        if (auto* e = qobject_cast<QLineEdit*>(w))
            e->clear();
        else if (auto* e = qobject_cast<QPlainTextEdit*>(w))
            e->clear();
        else if (auto* e = qobject_cast<QTextEdit*>(w))
            e->clear();
        else if (auto* c = qobject_cast<QComboBox*>(w)) {
            c->setCurrentIndex(-1);
            if (c->isEditable())
                c->clearEditText();
        } else if (auto* c = qobject_cast<QCheckBox*>(w))
            c->setChecked(false);
        else if (auto* d = qobject_cast<QDateTimeEdit*>(w))
            d->setDate(QDate(2000, 1, 1));
        else if (auto* s = qobject_cast<QAbstractSpinBox*>(w))
            s->clear();
    }
}

void RecordScreen::enableInputs(bool enabled, bool keyToo) {
    for (QWidget* w : inputControls())
        w->setEnabled(enabled && (keyToo || !isKey(w)));
}

void RecordScreen::focusFirstInput() {
    for (QWidget* w : inputControls()) {
        if (w->isEnabled() && w->isVisibleTo(this)) {
            w->setFocus();
            if (auto* e = qobject_cast<QLineEdit*>(w))
                e->selectAll();
            return;
        }
    }
}

} // namespace orvo::shell
