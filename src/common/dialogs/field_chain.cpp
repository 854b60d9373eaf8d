#include "common/dialogs/field_chain.h"

#include <QAbstractButton>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace orvo {

namespace {

class FieldChain : public QObject {
public:
    FieldChain(const QList<QWidget*>& fields, QAbstractButton* action, QObject* owner)
        : QObject(owner), m_action(action) {
        for (QWidget* f : fields) {
            m_fields << f;
            f->installEventFilter(this);
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusIn) {
            if (auto* e = qobject_cast<QLineEdit*>(watched))
                QTimer::singleShot(0, e, [e] { e->selectAll(); });
            return false;
        }
        if (event->type() != QEvent::KeyPress)
            return false;
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) ||
            (key->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
            return false;
        const qsizetype at = indexOf(watched);
        if (at < 0)
            return false;
        for (qsizetype next = at + 1; next < m_fields.size(); ++next) {
            QWidget* w = m_fields.at(next);
            if (w && w->isEnabled() && w->isVisible()) {
                w->setFocus(Qt::TabFocusReason);
                return true;
            }
        }
        if (m_action && m_action->isEnabled()) {
            m_action->setFocus(Qt::TabFocusReason);
            m_action->click();
        }
        return true;
    }

private:
    qsizetype indexOf(QObject* o) const {
        for (qsizetype i = 0; i < m_fields.size(); ++i)
            if (m_fields.at(i) == o)
                return i;
        return -1;
    }

    QList<QPointer<QWidget>> m_fields;
    QPointer<QAbstractButton> m_action;
};

} // namespace

void chainFields(const QList<QWidget*>& fields, QAbstractButton* action) {
    if (fields.isEmpty())
        return;
    new FieldChain(fields, action, fields.first());
}

} // namespace orvo
