#pragma once

#include "pos/cash/cash_closing.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

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

// frmCierreCaja: the register's latest day with its totals and what the drawer must hold;
// "Aceptar" checks, asks, prints the Z on the printer's thread (the screen shows its progress and
// stays alive), records and closes the day, backs up on a job's thread, and offers the closing
// reports. `serial` is the register closed: this machine's, or another one's when closed from
// here (frmCierreCajaForanea).
class ClosingScreen : public QWidget {
    Q_OBJECT
public:
    ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                  fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);
    ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                  fiscal::FiscalPrinterThread& printer, QString serial, QWidget* parent = nullptr);
    ~ClosingScreen() override;

    bool busy() const { return m_busy; }
    const QString& serial() const { return m_serial; }

signals:
    void closingFinished(bool closed);

private:
    void refresh();
    void accept();
    void afterPrinterState(const PrinterZState& state);
    void afterZ(const std::optional<fiscal::protocol::ZReport>& z, const QString& error);
    void afterBackup(bool ok, const QString& error);
    void setBusy(bool busy);
    void progress(int percent, const QString& text);
    void finish(bool closed);
    CountedCash counted() const;

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    fiscal::FiscalPrinterThread& m_printer;
    QString m_serial;
    bool m_busy = false;
    std::unique_ptr<ClosingBackupJob> m_backup;
    ClosingFigures m_figures;
    PrinterZState m_state;

    QLineEdit* m_numero;
    QLineEdit* m_fecha;
    QLineEdit* m_facturaFinal;
    QLineEdit* m_status;
    QLabel* m_totals;
    QLineEdit* m_efectivoEsperado;
    QLineEdit* m_efectivoContado;
    QLineEdit* m_dolaresEsperados;
    QLineEdit* m_dolaresContados;
    QLineEdit* m_chequesEsperados;
    QLineEdit* m_chequesContados;
    QPushButton* m_aceptar;
    QLabel* m_progressText;
    QProgressBar* m_progress;
};

} // namespace orvo::pos::cash
