#include "inventory/stock/date_guard_edit.h"

#include "common/dialogs/dialogs.h"
#include "inventory/stock/date_guard.h"

#include <QDateTimeEdit>
#include <QEvent>

namespace orvo::inventory::stock {

namespace {

// Remembers the date a picker had when the user entered it.
class DateGuard : public QObject {
public:
    DateGuard(QDateTimeEdit* picker, QSqlDatabase db)
        : QObject(picker), m_picker(picker), m_db(std::move(db)) {
        picker->installEventFilter(this);
        // Typing passes through days that are not meant: the date left is the one judged.
        connect(picker, &QDateTimeEdit::editingFinished, this, &DateGuard::judge);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_picker && event->type() == QEvent::FocusIn)
            m_entered = m_picker->date();
        return false;
    }

private:
    void judge() {
        const QDate date = m_picker->date();
        if (date == m_entered)
            return;
        if (guarded(m_picker, [&] { checkDocumentDate(m_db, date); })) {
            m_entered = date;
            return;
        }
        m_picker->setDate(m_entered.isValid() ? m_entered : QDate::currentDate());
    }

    QDateTimeEdit* m_picker;
    QSqlDatabase m_db;
    QDate m_entered;
};

} // namespace

void guardDocumentDate(QDateTimeEdit* picker, QSqlDatabase db) {
    picker->setCalendarPopup(false); // keyboard entry: the date is judged when the field is left
    new DateGuard(picker, std::move(db));
}

} // namespace orvo::inventory::stock
