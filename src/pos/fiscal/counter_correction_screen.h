#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QWidget>

class QLineEdit;
class QPushButton;

namespace orvo::pos::fiscal {

class FiscalPrinterThread;

// frmCorregirConsecutivos: sets the register's invoice and return counters by hand, the invoice
// counter to the fiscal printer's. The printer is read on its own thread.
class CounterCorrectionScreen : public QWidget {
    Q_OBJECT
public:
    CounterCorrectionScreen(QSqlDatabase db, QString serial, int controlFactura,
                            FiscalPrinterThread& printer, QWidget* parent = nullptr);

signals:
    // After the counters were written.
    void countersChanged();

private:
    void load();
    void accept();

    QSqlDatabase m_db;
    QString m_serial;
    int m_controlFactura;
    FiscalPrinterThread& m_printer;
    QLineEdit* m_invoice;
    QLineEdit* m_return;
    QPushButton* m_accept;
};

// Registers the fiscal printer's screens with the menu.
void registerFiscalScreens();

} // namespace orvo::pos::fiscal
