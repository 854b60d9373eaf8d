#pragma once

#include <QSqlDatabase>
#include <QWidget>
#include <functional>

class QCheckBox;
class QDateEdit;
class QPlainTextEdit;
class QPushButton;

namespace orvo::pos::fiscal {

class FiscalPrinter;
class FiscalPrinterThread;

// frmImpresoraFiscal: the managers' printer screen. Reads the printer's state and counters,
// prints the X and Z reports and the fiscal memory by dates, programs the header and footer
// lines (TABLA_VALORES) and the tax rates (IMPUESTOS 1..3). Every call runs on the printer's
// thread; the buttons wait while one is under way.
class FiscalScreen : public QWidget {
    Q_OBJECT
public:
    FiscalScreen(QSqlDatabase db, FiscalPrinterThread& printer, QWidget* parent = nullptr);

    bool busy() const { return m_busy; }

signals:
    // A call finished (its outcome is in the state text or a message).
    void finished();

private:
    // Runs `job` on the printer thread and shows the text it returns.
    void run(const QString& what, std::function<QString(FiscalPrinter&)> job);
    void setBusy(bool busy);

    QSqlDatabase m_db;
    FiscalPrinterThread& m_printer;
    QPlainTextEdit* m_state;
    QDateEdit* m_from;
    QDateEdit* m_to;
    QCheckBox* m_detailed;
    QDateEdit* m_effective;
    QList<QPushButton*> m_buttons;
    bool m_busy = false;
};

} // namespace orvo::pos::fiscal
