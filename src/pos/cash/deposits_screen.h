#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLineEdit;
class QTableWidget;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::cash {

// frmDepositos: a bank deposit of today's cash and of the day's sale cheques the cashier ticks.
class DepositsScreen : public QWidget {
    Q_OBJECT
public:
    DepositsScreen(QSqlDatabase db, shell::SessionContext& session, QWidget* parent = nullptr);

private:
    void refresh();
    void save();

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    QLineEdit* m_numero;
    QComboBox* m_cuenta;
    QLineEdit* m_efectivo;
    QLineEdit* m_observacion;
    QTableWidget* m_cheques;
    QTableWidget* m_depositos;
};

} // namespace orvo::pos::cash
