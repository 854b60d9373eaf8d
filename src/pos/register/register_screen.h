#pragma once

#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace orvo::shell {
struct SessionContext;
}

namespace orvo::pos::registers {

// frmConfigurarCaja: creates or edits the register of this machine (CAJAS) through the record
// toolbar (Nuevo, Modificar, Guardar, Cancelar) and binds the machine to the register saved.
class RegisterScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    RegisterScreen(QSqlDatabase db, shell::SessionContext& session, QWidget* parent = nullptr);

    int recordCount() const override { return m_loaded ? 1 : 0; }
    bool offers(Action action) const override;

signals:
    // This machine was bound to a register: the main window's caption and status bar change.
    void registerBound();

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override {}
    void print() override {}
    void newRecord() override;

private:
    QComboBox* comboWithValues(const char* name, const QList<std::pair<int, QString>>& items);
    static void selectValue(QComboBox* combo, int value);
    void loadPrinters();
    void zMaximumEdited(const QString& text);
    void copiesEdited(const QString& text);
    void loadStationSettings();

    QSqlDatabase m_db;
    shell::SessionContext& m_session;
    bool m_loaded = false;

    QLineEdit* m_serie;
    QLineEdit* m_numero;
    QLineEdit* m_fondoCaja;
    QComboBox* m_tipoListaPrecio;
    QComboBox* m_tipoVenta;
    QComboBox* m_tipoReporte;
    QCheckBox* m_permiteDescuento;
    QCheckBox* m_permiteFacturarOrdenDespacho;
    QCheckBox* m_permiteFacturasExentas;
    QCheckBox* m_permiteAlternarListas;
    QCheckBox* m_cambiarPrecios;
    QCheckBox* m_requerirAutorizacion;
    QComboBox* m_impresoraFiscal;
    QCheckBox* m_permitirFacturaContingencia;
    QLineEdit* m_maximoZDiario;
    QString m_lastZText;
    // This machine's own settings (ServidorOrvo / Orvo), saved with the register.
    QComboBox* m_impresoraFactura;
    QLineEdit* m_numeroCopias;
    QString m_lastCopiesText;
};

} // namespace orvo::pos::registers
