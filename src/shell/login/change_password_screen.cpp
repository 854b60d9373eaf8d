#include "shell/login/change_password_screen.h"

#include "common/dialogs/dialogs.h"
#include "shell/login/login.h"
#include "shell/startup/app_state.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::shell {

ChangePasswordScreen::ChangePasswordScreen(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCambiarClave"));
    setWindowTitle(QStringLiteral("Cambiar clave"));
    const auto passwordEdit = [this](const char* name) {
        auto* e = new QLineEdit(this);
        e->setObjectName(QString::fromLatin1(name));
        e->setEchoMode(QLineEdit::Password);
        connect(e, &QLineEdit::returnPressed, this, [this] { focusNextChild(); });
        return e;
    };
    m_current = passwordEdit("txtClave");
    m_new = passwordEdit("TxtClaveNueva");
    m_confirm = passwordEdit("TxtConfirmarClave");
    auto* accept = new QPushButton(QStringLiteral("&Aceptar"), this);
    accept->setObjectName(QStringLiteral("cmdAceptar"));
    accept->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("&Cancelar"), this);
    cancel->setObjectName(QStringLiteral("cmdCancelar"));
    cancel->setAutoDefault(false);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Clave actual:"), m_current);
    form->addRow(QStringLiteral("Clave nueva:"), m_new);
    form->addRow(QStringLiteral("Confirmar clave:"), m_confirm);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);

    connect(accept, &QPushButton::clicked, this, [this] { guarded(this, [&] { changeIt(); }); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void ChangePasswordScreen::changeIt() {
    try {
        changePassword(mainDb(), session().userCode, m_current->text(), m_new->text(),
                       m_confirm->text());
    } catch (const LoginRefused& refused) {
        dialogs().information(this, refused.text());
        QLineEdit* field = refused.field() == LoginRefused::Field::NewPassword ? m_new : m_current;
        field->setFocus();
        field->selectAll();
        return;
    }
    dialogs().information(this, QStringLiteral("Cambio de clave realizada con exito.. !"));
    accept();
}

} // namespace orvo::shell
