#pragma once

#include <QDialog>
#include <QSqlDatabase>

class QLineEdit;

namespace orvo::shell::setup {

// frmPrimerInicio: the first start of a store nobody can log in to yet. It asks for the
// company's name and RIF and for the administrator's code, name and password, and writes them
// with what a new store starts with. Accepted once the administrator exists.
class FirstStartScreen : public QDialog {
    Q_OBJECT
public:
    explicit FirstStartScreen(QSqlDatabase db, QWidget* parent = nullptr);

    // The administrator's code, for the login that follows.
    QString administratorCode() const;

private:
    void save();

    QSqlDatabase m_db;
    QLineEdit* m_empresa;
    QLineEdit* m_rif;
    QLineEdit* m_tienda;
    QLineEdit* m_usuario;
    QLineEdit* m_nombre;
    QLineEdit* m_clave;
    QLineEdit* m_confirmacion;
};

} // namespace orvo::shell::setup
