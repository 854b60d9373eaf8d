#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QTableWidget;

namespace orvo::pos::payments {

// frmFormaPago: switches payment ways on and off.
class PaymentWaysScreen : public QWidget {
    Q_OBJECT
public:
    explicit PaymentWaysScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QTableWidget* grid() const { return m_grid; }

private:
    void load();
    void save();

    QSqlDatabase m_db;
    QTableWidget* m_grid;
};

// Registers frmFormaPago with the screens the menu opens.
void registerPaymentScreens();

} // namespace orvo::pos::payments
