#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace orvo::inventory::transfers {

// frmCambiarDestinoTrans: an approved transfer (or transfer return) goes to another branch.
// Keyboard: the kind, the number (Enter shows where it goes now), the branch, Enter accepts.
class DestinationScreen : public QWidget {
    Q_OBJECT
public:
    DestinationScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {560, 240}; }

    void showCurrent();
    void accept();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QSqlDatabase m_db;
    QRadioButton* m_transfer = nullptr;
    QRadioButton* m_return = nullptr;
    QLineEdit* m_number = nullptr;
    QLabel* m_current = nullptr;
    QComboBox* m_branch = nullptr;
};

} // namespace orvo::inventory::transfers
