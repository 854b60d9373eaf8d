#include "pos/sale/till_widgets.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/register/day_state.h"
#include "shell/session/session_context.h"

#include <QEvent>
#include <QTimer>

namespace orvo::pos::sale {

DayStateBanner::DayStateBanner(QSqlDatabase db, const shell::SessionContext& ctx, QWidget* screen)
    : QLabel(screen), m_db(std::move(db)), m_ctx(ctx) {
    setObjectName(QStringLiteral("lblEstadoCaja"));
    setStyleSheet(QStringLiteral("QLabel { color: #b00000; font-weight: bold; }"));
    hide();
    screen->installEventFilter(this);
}

bool DayStateBanner::check() {
    try {
        registers::checkDayOpen(m_db, m_ctx.serial, db::serverNow(m_db).date());
        hide();
        return true;
    } catch (const UserError& e) {
        setText(e.text());
        show();
        return false;
    }
}

bool DayStateBanner::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && !m_told) {
        m_told = true;
        // Once the screen is up, so that the message stands over it.
        QTimer::singleShot(0, this, [this] {
            if (!check())
                dialogs().information(parentWidget(), text());
        });
    }
    return QLabel::eventFilter(watched, event);
}

BusyGuard::BusyGuard(bool& busy, QList<QWidget*> controls) : m_busy(busy) {
    m_busy = true;
    for (QWidget* w : controls)
        if (w && w->isEnabled()) {
            w->setEnabled(false);
            m_disabled << w;
        }
}

BusyGuard::~BusyGuard() {
    for (const QPointer<QWidget>& w : m_disabled)
        if (w)
            w->setEnabled(true);
    m_busy = false;
}

QLabel* bigLabel(QWidget* parent, const char* name) {
    auto* l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(name));
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * 1.4);
    f.setBold(true);
    l->setFont(f);
    l->setWordWrap(true);
    return l;
}

QLabel* bigAmountLabel(QWidget* parent, const char* name) {
    QLabel* l = bigLabel(parent, name);
    l->setText(QStringLiteral("0,00"));
    l->setWordWrap(false);
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    l->setFrameShape(QFrame::StyledPanel);
    l->setMinimumWidth(l->fontMetrics().horizontalAdvance(QStringLiteral(" 999.999.999,99 ")));
    return l;
}

} // namespace orvo::pos::sale
