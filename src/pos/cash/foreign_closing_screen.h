#pragma once

#include <QPointer>
#include <QSqlDatabase>
#include <QWidget>

class QPushButton;
class QTableWidget;
class QVBoxLayout;

namespace orvo::shell {
struct SessionContext;
}
namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::cash {

class ClosingScreen;

// frmCierreCajaForanea: closes the day of a register whose own machine cannot, with that
// register's fiscal printer connected to this machine. Lists the other registers whose latest
// day is not closed; choosing one asks for an administrator's key (frmClaveCierreForaneo) and
// then shows the closing of that register below the list.
class ForeignClosingScreen : public QWidget {
    Q_OBJECT
public:
    ForeignClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                         fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);

    // The closing shown, once a register was chosen and authorised.
    ClosingScreen* closing() const { return m_closing; }

private:
    void refresh();
    void choose();

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    fiscal::FiscalPrinterThread& m_printer;
    QTableWidget* m_registers;
    QPushButton* m_choose;
    QVBoxLayout* m_layout;
    QPointer<ClosingScreen> m_closing;
};

} // namespace orvo::pos::cash
