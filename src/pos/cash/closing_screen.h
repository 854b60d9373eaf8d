#pragma once

#include "pos/cash/cash_closing.h"

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace orvo::shell {
struct SessionContext;
}
namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::cash {

// frmCierreCaja: the register's latest day with its totals; "Aceptar" checks, asks, prints the Z
// on the printer's thread (the screen shows its progress and stays alive), records and closes
// the day, backs up, and offers the closing reports.
class ClosingScreen : public QWidget {
    Q_OBJECT
public:
    ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                  fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);

    bool busy() const { return m_busy; }

signals:
    void closingFinished(bool closed);

private:
    void refresh();
    void accept();
    void afterPrinterState(const PrinterZState& state);
    void afterZ(const std::optional<fiscal::protocol::ZReport>& z, const QString& error);
    void setBusy(bool busy);
    void progress(int percent, const QString& text);
    void finish(bool closed);
    Decimal countedCash() const;

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    fiscal::FiscalPrinterThread& m_printer;
    bool m_busy = false;
    ClosingFigures m_figures;
    PrinterZState m_state;

    QLineEdit* m_numero;
    QLineEdit* m_fecha;
    QLineEdit* m_facturaFinal;
    QLineEdit* m_status;
    QLabel* m_totals;
    QLineEdit* m_efectivoEsperado;
    QLineEdit* m_efectivoContado;
    QPushButton* m_aceptar;
    QLabel* m_progressText;
    QProgressBar* m_progress;
};

} // namespace orvo::pos::cash
