#pragma once

#include "pos/fiscal_screens/printer_call.h"

#include <QSqlDatabase>

class QDateEdit;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::fiscal_screens {

// frmOperacionesFiscales: the managers' work on the register's fiscal printer: X and Z reports,
// fiscal memory reports by dates or numbers, header and footer lines, tax rates, the counters
// and the customer display.
class FiscalOperationsScreen : public PrinterScreen {
    Q_OBJECT
public:
    FiscalOperationsScreen(QSqlDatabase db, const shell::SessionContext& session,
                           fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);

private:
    QWidget* reportsBox();
    QWidget* rangeBox();
    QWidget* programmingBox();
    QWidget* readingBox();
    QPushButton* button(const char* name, const QString& text);

    void xReport();
    void zReport();
    void rangeReport();
    void programLines();
    void updateRates();
    void readCounters();
    void testDisplay();

    QSqlDatabase m_db;
    const shell::SessionContext& m_session;
    QRadioButton* m_byDates = nullptr;
    QRadioButton* m_byNumbers = nullptr;
    QRadioButton* m_detailed = nullptr;
    QRadioButton* m_summary = nullptr;
    QDateEdit* m_fromDate = nullptr;
    QDateEdit* m_toDate = nullptr;
    QLineEdit* m_fromNumber = nullptr;
    QLineEdit* m_toNumber = nullptr;
    QList<QLineEdit*> m_rates;
    QDateEdit* m_ratesDate = nullptr;
    QPlainTextEdit* m_counters = nullptr;
    QLineEdit* m_display1 = nullptr;
    QLineEdit* m_display2 = nullptr;
};

} // namespace orvo::pos::fiscal_screens
