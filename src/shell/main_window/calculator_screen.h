#pragma once

#include "common/decimal/decimal.h"

#include <QDialog>

class QLineEdit;

namespace orvo::shell {

// frmCalculadora: a four-operation desk calculator for the cashier and the back office.
class CalculatorScreen : public QDialog {
    Q_OBJECT
public:
    explicit CalculatorScreen(QWidget* parent = nullptr);

    // Feeds one key as the buttons do: digits, ".", "+", "-", "*", "/", "=", "C".
    void press(const QString& key);
    QString display() const;

private:
    void applyPending();

    QLineEdit* m_display;
    Decimal m_accumulator;
    QString m_pending;
    bool m_startNew = true;
};

} // namespace orvo::shell
