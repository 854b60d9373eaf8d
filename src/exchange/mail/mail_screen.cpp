#include "exchange/mail/mail_screen.h"

#include "common/dialogs/dialogs.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::exchange::mail {

MailScreen::MailScreen(QSqlDatabase db, bool xmlVariant, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_xml(xmlVariant) {
    setObjectName(xmlVariant ? QStringLiteral("fmEnvioTraNet2") : QStringLiteral("frmEnvioTraNet"));
    setWindowTitle(QStringLiteral("Envío de información"));
    m_estado = new QPlainTextEdit(this);
    m_estado->setObjectName(QStringLiteral("txtEstado"));
    m_estado->setReadOnly(true);
    m_estado->setMinimumSize(420, 200);
    m_enviar = new QPushButton(QStringLiteral("&Enviar"), this);
    m_enviar->setObjectName(QStringLiteral("cmdEnviar"));
    m_salir = new QPushButton(QStringLiteral("&Salir"), this);
    m_salir->setObjectName(QStringLiteral("cmdSalir"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_enviar);
    buttons->addWidget(m_salir);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_estado);
    layout->addLayout(buttons);
    setFocusProxy(m_enviar);
    m_estado->setFocusPolicy(Qt::NoFocus);

    connect(m_enviar, &QPushButton::clicked, this, [this] {
        MailOptions options;
        if (m_xml)
            guarded(this, [&] { options.fixedRecipient = xmlRecipient(m_db); });
        send(options);
    });
    connect(m_salir, &QPushButton::clicked, this, [this] { close(); });
}

MailScreen::~MailScreen() = default;

bool MailScreen::isSending() const {
    return m_job && m_job->isRunning();
}

void MailScreen::send(const MailOptions& options, bool closeWhenDone) {
    if (isSending())
        return;
    m_closeWhenDone = closeWhenDone;
    m_estado->clear();
    m_enviar->setEnabled(false);
    m_salir->setEnabled(false);
    m_job = std::make_unique<MailJob>(m_db, options);
    connect(m_job.get(), &MailJob::logLine, this,
            [this](const QString& line) { m_estado->appendPlainText(line); });
    connect(m_job.get(), &jobs::Job::finished, this,
            [this](bool ok, const QString& error) { finished(ok, error); });
    m_job->start();
}

void MailScreen::finished(bool ok, const QString& error) {
    m_job->wait();
    const bool sent = ok && m_job->sent();
    m_enviar->setEnabled(true);
    m_salir->setEnabled(true);
    if (!ok)
        dialogs().information(this, error);
    dialogs().information(this, QStringLiteral("Proceso finalizado...!"), QStringLiteral("Orvo"));
    emit mailFinished(sent);
    if (m_closeWhenDone)
        close();
}

// Keyboard first: Enter sends (the log box takes no typing).
void MailScreen::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        m_enviar->isEnabled()) {
        m_enviar->click();
        return;
    }
    QWidget::keyPressEvent(event);
}

void MailScreen::closeEvent(QCloseEvent* event) {
    if (isSending()) {
        event->ignore();
        return;
    }
    QWidget::closeEvent(event);
}

} // namespace orvo::exchange::mail
