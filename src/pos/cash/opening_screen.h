#pragma once

#include <QSqlDatabase>
#include <QWidget>

class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

namespace orvo::shell {
struct SessionContext;
}
namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::cash {

// frmAperturaCaja: shows the register's latest day, opens a new one after asking the printer
// (on its thread, so the screen stays alive) and deletes an opening without sales.
class OpeningScreen : public QWidget {
    Q_OBJECT
public:
    OpeningScreen(QSqlDatabase db, shell::SessionContext& session,
                  fiscal::FiscalPrinterThread& printer, QWidget* parent = nullptr);

    bool busy() const { return m_busy; }

signals:
    // An opening finished (opened true) or stopped.
    void openingFinished(bool opened);

private:
    void refresh();
    void openDay();
    void deleteDay();
    void setBusy(bool busy, const QString& text = {});

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    fiscal::FiscalPrinterThread& m_printer;
    bool m_busy = false;

    QLineEdit* m_serie;
    QLineEdit* m_fecha;
    QLineEdit* m_numero;
    QLineEdit* m_facturaInicial;
    QLineEdit* m_facturaFinal;
    QLineEdit* m_horaApertura;
    QLineEdit* m_horaCierre;
    QLineEdit* m_status;
    QDateEdit* m_nuevaFecha;
    QPushButton* m_aperturar;
    QPushButton* m_eliminar;
    QLabel* m_progress;
};

} // namespace orvo::pos::cash
