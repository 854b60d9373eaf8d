#include "shell/setup/first_start_screen.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "shell/setup/store_setup.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::shell::setup {

namespace {

QLineEdit* field(QWidget* parent, const char* name, int maxLength) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    e->setMaxLength(maxLength);
    return e;
}

} // namespace

FirstStartScreen::FirstStartScreen(QSqlDatabase db, QWidget* parent)
    : QDialog(parent), m_db(std::move(db)) {
    setObjectName(QStringLiteral("frmPrimerInicio"));
    setWindowTitle(QStringLiteral("Primer inicio de la tienda"));

    auto* intro = new QLabel(
        QStringLiteral("Esta base de datos no tiene usuarios. Escriba los datos de la empresa y "
                       "cree el administrador: con él entrará al sistema y creará los demás "
                       "usuarios."),
        this);
    intro->setWordWrap(true);
    m_empresa = field(this, "txtEmpresa", 100);
    m_rif = field(this, "txtRif", 20);
    m_rif->setPlaceholderText(QStringLiteral("J-12345678-9"));
    m_tienda = field(this, "txtCodigoTienda", 10);
    m_usuario = field(this, "txtUsuario", 20);
    m_nombre = field(this, "txtNombreUsuario", 60);
    m_clave = field(this, "txtClave", 60);
    m_clave->setEchoMode(QLineEdit::Password);
    m_confirmacion = field(this, "TxtVerificarClave", 60);
    m_confirmacion->setEchoMode(QLineEdit::Password);
    auto* accept = new QPushButton(QStringLiteral("&Aceptar"), this);
    accept->setObjectName(QStringLiteral("cmdAceptar"));
    accept->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("&Cancelar"), this);
    cancel->setObjectName(QStringLiteral("cmdCancelar"));
    cancel->setAutoDefault(false);

    // What the store already says about itself is offered.
    const QVariant name = db::scalar(m_db, QStringLiteral("SELECT Nombre FROM PARAMETROS"));
    if (name.toString() != QLatin1String("MI EMPRESA"))
        m_empresa->setText(name.toString());
    m_rif->setText(db::scalar(m_db, QStringLiteral("SELECT IDEmpresa FROM PARAMETROS")).toString());
    m_tienda->setText(db::scalar(m_db, QStringLiteral("SELECT Codigo FROM PARAMETROS")).toString());
    if (m_tienda->text().isEmpty())
        m_tienda->setText(QStringLiteral("01"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Empresa:"), m_empresa);
    form->addRow(QStringLiteral("RIF:"), m_rif);
    form->addRow(QStringLiteral("Código de la tienda:"), m_tienda);
    form->addRow(QStringLiteral("Administrador (código):"), m_usuario);
    form->addRow(QStringLiteral("Nombre:"), m_nombre);
    form->addRow(QStringLiteral("Clave:"), m_clave);
    form->addRow(QStringLiteral("Confirme la clave:"), m_confirmacion);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setMinimumWidth(480);

    chainFields({m_empresa, m_rif, m_tienda, m_usuario, m_nombre, m_clave, m_confirmacion}, accept);
    connect(accept, &QPushButton::clicked, this, [this] { guarded(this, [this] { save(); }); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    (m_empresa->text().isEmpty() ? m_empresa : m_usuario)->setFocus();
}

QString FirstStartScreen::administratorCode() const {
    return m_usuario->text().trimmed();
}

void FirstStartScreen::save() {
    startStore(m_db, {m_empresa->text(), m_rif->text(), m_tienda->text()},
               {m_usuario->text(), m_nombre->text(), m_clave->text()}, m_confirmacion->text());
    dialogs().information(
        this,
        QStringLiteral("Administrador %1 creado: entre con su clave.").arg(administratorCode()));
    accept();
}

} // namespace orvo::shell::setup
