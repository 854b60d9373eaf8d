#pragma once

#include "pos/fiscal_screens/printer_call.h"

#include <QSqlDatabase>

class QLineEdit;
class QPushButton;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::fiscal_screens {

// frmCorregirConsecutivos: sets the last invoice and return numbers by hand. The invoice number
// must be the fiscal printer's last invoice, read through the printer's thread.
class CounterCorrectionScreen : public PrinterScreen {
    Q_OBJECT
public:
    CounterCorrectionScreen(QSqlDatabase db, const shell::SessionContext& session,
                            fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);

private:
    void loadCurrent();
    void accept();

    QSqlDatabase m_db;
    const shell::SessionContext& m_session;
    QLineEdit* m_currentInvoice;
    QLineEdit* m_currentReturn;
    QLineEdit* m_newInvoice;
    QLineEdit* m_newReturn;
    QPushButton* m_accept;
};

} // namespace orvo::pos::fiscal_screens
