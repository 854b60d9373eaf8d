#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QLineEdit;
class QTableWidget;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::cash {

// frmSalidasCaja: the cash withdrawals of today's open day; adds one and removes one.
class WithdrawalsScreen : public QWidget {
    Q_OBJECT
public:
    WithdrawalsScreen(QSqlDatabase db, shell::SessionContext& session, QWidget* parent = nullptr);

private:
    void refresh();
    void add();
    void remove();

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    QLineEdit* m_codigoContable;
    QLineEdit* m_acreedor;
    QLineEdit* m_documento;
    QLineEdit* m_descripcion;
    QLineEdit* m_monto;
    QTableWidget* m_grid;
};

} // namespace orvo::pos::cash
