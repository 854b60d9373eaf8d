#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QDateEdit;
class QLineEdit;
class QTableWidget;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::cash {

// frmConfirmarDepositos: the deposits of a range of days, each confirmed (or annulled) against
// what the bank credited, with the bank's date and a note.
class DepositConfirmationScreen : public QWidget {
    Q_OBJECT
public:
    DepositConfirmationScreen(QSqlDatabase db, shell::SessionContext& session,
                              QWidget* parent = nullptr);

private:
    void search();
    void confirm(int status);
    void rowChosen();

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    QDateEdit* m_desde;
    QDateEdit* m_hasta;
    QTableWidget* m_grid;
    QDateEdit* m_fechaDeposito;
    QLineEdit* m_monto;
    QLineEdit* m_nota;
};

} // namespace orvo::pos::cash
