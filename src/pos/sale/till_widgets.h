#pragma once

#include <QLabel>
#include <QList>
#include <QPointer>
#include <QSqlDatabase>
#include <QWidget>

namespace orvo::shell {
struct SessionContext;
}

// Pieces the sale, return and exchange screens share.
namespace orvo::pos::sale {

// Says at once, when its screen first shows, that the register's day is not open or already
// closed: a message and a red line on the screen, so the cashier learns it before keying a sale
// (and before a card is charged), not at Aceptar. check() looks again.
class DayStateBanner : public QLabel {
public:
    DayStateBanner(QSqlDatabase db, const shell::SessionContext& ctx, QWidget* screen);
    // Whether the day is open now; the banner follows.
    bool check();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QSqlDatabase m_db;
    const shell::SessionContext& m_ctx;
    bool m_told = false;
};

// Keeps an action from running twice. A document is saved and printed while the screen's events
// keep running (the printer is waited for in a local loop), so a second press of Aceptar would
// start it again: while the guard lives the screen is busy and its action controls are disabled.
class BusyGuard {
public:
    BusyGuard(bool& busy, QList<QWidget*> controls);
    ~BusyGuard();
    BusyGuard(const BusyGuard&) = delete;
    BusyGuard& operator=(const BusyGuard&) = delete;

private:
    bool& m_busy;
    QList<QPointer<QWidget>> m_disabled;
};

// A line in large bold type, for what the cashier must not miss (the change, a refund).
QLabel* bigLabel(QWidget* parent, const char* name);
// An amount in large type, right-aligned, wide enough for "999.999.999,99".
QLabel* bigAmountLabel(QWidget* parent, const char* name);

} // namespace orvo::pos::sale
