#include "shell/login/login_screen.h"

#include "common/dialogs/dialogs.h"
#include "shell/startup/app_state.h"
#include "shell/startup/user_settings.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace orvo::shell {

LoginScreen::LoginScreen(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("VerificarClave"));
    setWindowTitle(QStringLiteral("Iniciar sesión en ") + session().systemCode);

    m_userEdit = new QLineEdit(this);
    m_userEdit->setObjectName(QStringLiteral("txtUsuario"));
    m_passwordEdit = new QLineEdit(this);
    m_passwordEdit->setObjectName(QStringLiteral("txtClaveUsuario"));
    m_passwordEdit->setEchoMode(QLineEdit::Password);
    m_remember = new QCheckBox(QStringLiteral("Recordar usuario"), this);
    m_remember->setObjectName(QStringLiteral("Check1"));
    auto* accept = new QPushButton(QStringLiteral("&Aceptar"), this);
    accept->setObjectName(QStringLiteral("cmdAceptar"));
    accept->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("&Cancelar"), this);
    cancel->setObjectName(QStringLiteral("cmdCancelar"));
    cancel->setAutoDefault(false);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Usuario:"), m_userEdit);
    form->addRow(QStringLiteral("Clave:"), m_passwordEdit);
    form->addRow(m_remember);
    auto* buttons = new QHBoxLayout;
    // The web-mail page, when this installation has one.
    const QString webMail = settings::read(QStringLiteral("WebMail"));
    if (!webMail.isEmpty()) {
        auto* mail = new QPushButton(QStringLiteral("Correo"), this);
        mail->setObjectName(QStringLiteral("cmdCorreo"));
        mail->setFlat(true);
        connect(mail, &QPushButton::clicked, this,
                [webMail] { QDesktopServices::openUrl(QUrl(webMail)); });
        buttons->addWidget(mail);
    }
    buttons->addStretch();
    buttons->addWidget(accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);

    setLoggedIn(false);
    const QString last = settings::read(QStringLiteral("Login"));
    m_userEdit->setText(last);
    m_remember->setChecked(!last.isEmpty());
    (last.isEmpty() ? m_userEdit : m_passwordEdit)->setFocus();

    for (QLineEdit* e : {m_userEdit, m_passwordEdit})
        e->installEventFilter(this);
    connect(accept, &QPushButton::clicked, this, [this] { guarded(this, [&] { tryLogin(); }); });
    connect(cancel, &QPushButton::clicked, this, [this] {
        setLoggedIn(false);
        reject();
    });
}

bool LoginScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (watched == m_passwordEdit)
                guarded(this, [&] { tryLogin(); });
            else
                focusNextChild();
            return true;
        }
    } else if (event->type() == QEvent::FocusIn) {
        if (auto* edit = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}

void LoginScreen::tryLogin() {
    try {
        m_user = checkLogin(mainDb(), m_userEdit->text(), m_passwordEdit->text());
    } catch (const LoginRefused& refused) {
        dialogs().information(this, refused.text());
        m_passwordEdit->setFocus();
        m_passwordEdit->selectAll();
        return;
    }
    settings::write(QStringLiteral("Login"), m_remember->isChecked() ? m_user.code : QString());
    setLoggedIn(true);
    accept();
}

} // namespace orvo::shell
