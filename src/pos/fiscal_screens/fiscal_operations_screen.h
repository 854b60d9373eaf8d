#pragma once

#include "pos/fiscal_screens/printer_call.h"

#include <QSqlDatabase>

class QCheckBox;
class QDateEdit;
class QTableWidget;
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
// and the customer display; IGTF on the register and the payment means the printer names.
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
    QWidget* igtfBox();
    QPushButton* button(const char* name, const QString& text);

    void xReport();
    void zReport();
    void rangeReport();
    void programLines();
    void updateRates();
    void readCounters();
    void testDisplay();
    void loadMeans();
    void saveMeans();
    void applyIgtf();

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
    QTableWidget* m_means = nullptr;
    QCheckBox* m_igtf = nullptr;
};

} // namespace orvo::pos::fiscal_screens
