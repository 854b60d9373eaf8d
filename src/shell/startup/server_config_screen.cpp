#include "shell/startup/server_config_screen.h"

#include "common/dialogs/dialogs.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"
#include "shell/startup/main_connection.h"

#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace orvo::shell {

namespace {

// The hourglass for as long as the connection attempt lasts.
struct WaitCursor {
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
};

QLineEdit* named(QLineEdit* edit, const char* name) {
    edit->setObjectName(QString::fromLatin1(name));
    return edit;
}

} // namespace

ServerConfigScreen::ServerConfigScreen(Mode mode, const ServerConfig& current, QWidget* parent,
                                       const QString& configPath, const QString& dataDir)
    : QDialog(parent), m_mode(mode),
      m_configPath(configPath.isEmpty() ? serverConfigPath() : configPath),
      m_dataDir(dataDir.isEmpty() ? shell::dataDir() : dataDir) {
    setObjectName(QStringLiteral("frmConfServidor"));
    setWindowTitle(QStringLiteral("Configuración del servidor"));

    m_server = named(new QLineEdit(current.server(), this), "txtServidor");
    m_server->setPlaceholderText(QStringLiteral("(local) o equipo[:puerto]"));
    m_database = named(new QLineEdit(current.database(), this), "txtBaseDatos");
    auto* auth = new QGroupBox(QStringLiteral("Autenticación"), this);
    auth->setObjectName(QStringLiteral("optAutenticacion"));
    m_integrated = new QRadioButton(QStringLiteral("Integrada del sistema"), auth);
    m_integrated->setObjectName(QStringLiteral("optAutenticacion_0"));
    m_passwordAuth = new QRadioButton(QStringLiteral("Usuario y contraseña"), auth);
    m_passwordAuth->setObjectName(QStringLiteral("optAutenticacion_1"));
    auto* authLayout = new QVBoxLayout(auth);
    authLayout->addWidget(m_integrated);
    authLayout->addWidget(m_passwordAuth);
    (current.passwordAuth() ? m_passwordAuth : m_integrated)->setChecked(true);
    m_user = named(new QLineEdit(current.user(), this), "txtUsuario");
    m_password = named(new QLineEdit(current.clearPassword(), this), "txtPassword");
    m_password->setEchoMode(QLineEdit::Password);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatusConexion"));
    m_status->setWordWrap(true);
    m_accept = new QPushButton(QStringLiteral("&Aceptar"), this);
    m_accept->setObjectName(QStringLiteral("cmdAceptar"));
    m_accept->setAutoDefault(false);
    m_cancel = new QPushButton(QStringLiteral("&Cancelar"), this);
    m_cancel->setObjectName(QStringLiteral("cmdCancelar"));
    m_cancel->setAutoDefault(false);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Servidor:"), m_server);
    form->addRow(QStringLiteral("Base de datos:"), m_database);
    form->addRow(auth);
    form->addRow(QStringLiteral("Usuario:"), m_user);
    form->addRow(QStringLiteral("Contraseña:"), m_password);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_status);
    layout->addLayout(buttons);

    for (QLineEdit* e : {m_server, m_database, m_user, m_password})
        e->installEventFilter(this);
    connect(m_passwordAuth, &QRadioButton::toggled, this, &ServerConfigScreen::updateAuthFields);
    connect(m_accept, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { acceptSettings(); }); });
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    updateAuthFields();
}

bool ServerConfigScreen::eventFilter(QObject* watched, QEvent* event) {
    // Enter moves on; entering a field selects its text.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            focusNextChild();
            return true;
        }
    } else if (event->type() == QEvent::FocusIn) {
        if (auto* edit = qobject_cast<QLineEdit*>(watched))
            QMetaObject::invokeMethod(edit, &QLineEdit::selectAll, Qt::QueuedConnection);
    }
    return QDialog::eventFilter(watched, event);
}

void ServerConfigScreen::showFailure(const QString& reason) {
    QString text = QStringLiteral("No se pudo establecer la conexión con el servidor.");
    if (!reason.trimmed().isEmpty())
        text += u'\n' + reason.trimmed();
    m_status->setText(text);
}

void ServerConfigScreen::updateAuthFields() {
    const bool withPassword = m_passwordAuth->isChecked();
    m_user->setEnabled(withPassword);
    m_password->setEnabled(withPassword);
}

ServerConfig ServerConfigScreen::enteredConfig() const {
    return ServerConfig::fromFields(m_server->text(), m_database->text(),
                                    m_passwordAuth->isChecked(), m_user->text(),
                                    m_password->text());
}

void ServerConfigScreen::acceptSettings() {
    if (m_server->text().trimmed().isEmpty() || m_database->text().trimmed().isEmpty()) {
        dialogs().information(
            this, QStringLiteral("Debe escribir un nombre de servidor y de base de datos!"));
        return;
    }
    if (m_passwordAuth->isChecked() && m_user->text().trimmed().isEmpty()) {
        dialogs().information(this, QStringLiteral("Ingrese el usuario de SQL Server...!"));
        m_user->setFocus();
        return;
    }
    const ServerConfig config = enteredConfig();
    if (m_mode == Mode::Startup) {
        m_status->setText(
            QStringLiteral("Estableciendo conexión con el servidor. Por favor espere..."));
        {
            WaitCursor wait;
            QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            QString reason;
            if (!openMainConnection(config, m_dataDir, true, &reason)) {
                showFailure(reason);
                return;
            }
        }
        writeServerConfig(m_configPath, config);
        currentServerConfig() = config;
        accept();
        return;
    }

    m_status->setText(
        QStringLiteral("Estableciendo conexion con el servidor. Por favor espere..."));
    {
        WaitCursor wait;
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QString reason;
        if (!testConnection(config, m_dataDir, true, &reason)) {
            showFailure(reason);
            return;
        }
    }
    m_status->setText(QStringLiteral("Conexión establecida."));
    if (!dialogs().question(this,
                            QStringLiteral("Desea cambiar la conexión de la base de datos...?")))
        return;
    m_status->setText(QStringLiteral("Cambiando configuración...."));
    {
        WaitCursor wait;
        QString reason;
        if (!openMainConnection(config, m_dataDir, true, &reason)) {
            showFailure(reason);
            return;
        }
    }
    writeServerConfig(m_configPath, config);
    currentServerConfig() = config;
    emit connectionChanged();
    accept();
}

} // namespace orvo::shell
