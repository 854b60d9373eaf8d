#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QPushButton;

namespace orvo::inventory::stock {

class JobProgress;

// frmKardex, "Rekardear Inventario": the period the stock is rebuilt over (from the last
// physical-logical adjustment to today at 23:59), cmdProcesar (F5) to rebuild it on the job's
// thread with its steps shown, cmdCancelar to stop it (nothing changes) or close the screen.
class RebuildScreen : public QWidget {
    Q_OBJECT
public:
    explicit RebuildScreen(QSqlDatabase db, QWidget* parent = nullptr);

    void process();
    bool isRunning() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showPeriod();

    QSqlDatabase m_db;
    QLabel* m_from;
    QLabel* m_to;
    QLabel* m_result;
    JobProgress* m_progress;
    QPushButton* m_process;
    QPushButton* m_cancel;
};

} // namespace orvo::inventory::stock
