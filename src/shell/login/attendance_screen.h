#pragma once

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTimer;

namespace orvo::shell {

// frmControlAcceso: the attendance clock. A worker swipes (or types) his card number; the screen
// shows his name and whether an entry or an exit was recorded, then clears itself for the next.
class AttendanceScreen : public QWidget {
    Q_OBJECT
public:
    explicit AttendanceScreen(QWidget* parent = nullptr);

private:
    void cardEntered();
    void showClock();
    void clearResult();

    QLineEdit* m_card;
    QLabel* m_name;
    QLabel* m_cardLabel;
    QLabel* m_date;
    QLabel* m_time;
    QLabel* m_condition;
    QTimer* m_clock;
    QTimer* m_clear;
    QTimer* m_editing;
    bool m_typingAllowed = true;
};

} // namespace orvo::shell
