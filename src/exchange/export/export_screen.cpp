#include "exchange/export/export_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "exchange/export/export_job.h"
#include "exchange/mail/mail_job.h"
#include "exchange/mail/mail_screen.h"
#include "exchange/package/templates.h"

#include <QCloseEvent>
#include <QDateEdit>
#include <QDockWidget>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QToolBar>
#include <QVBoxLayout>

namespace orvo::exchange::exporting {

namespace {

QDateEdit* datePicker(QWidget* parent, const char* name) {
    auto* d = new QDateEdit(QDate::currentDate(), parent);
    d->setObjectName(QString::fromLatin1(name));
    d->setCalendarPopup(true);
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    return d;
}

QString titleOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::Orvo:
        return QStringLiteral("Exportar datos de la tienda");
    case ExportFormat::Vandu:
        return QStringLiteral("Exportar a casa matriz");
    case ExportFormat::Xml:
        return QStringLiteral("Exportar a XML");
    }
    return {};
}

} // namespace

QString ExportScreen::formName(ExportFormat format) {
    switch (format) {
    case ExportFormat::Orvo:
        return QStringLiteral("frmExpArchivosOrvo");
    case ExportFormat::Vandu:
        return QStringLiteral("frmExpArchivos");
    case ExportFormat::Xml:
        return QStringLiteral("frmExpArchivosXML");
    }
    return {};
}

ExportScreen::ExportScreen(QSqlDatabase db, ExportFormat format, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_format(format) {
    setObjectName(formName(format));
    setWindowTitle(titleOf(format));
    m_desde = datePicker(this, "DtpDesde");
    m_hasta = datePicker(this, "DtpHasta");
    m_mensaje = new QLabel(this);
    m_mensaje->setObjectName(QStringLiteral("lblMensaje"));
    m_mensaje->setMinimumWidth(360);
    m_rows = new QProgressBar(this);
    m_rows->setObjectName(QStringLiteral("prbTerm"));
    m_rows->setRange(0, 100);
    m_rows->setValue(0);
    m_tables = new QProgressBar(this);
    m_tables->setObjectName(QStringLiteral("prbTablas"));
    m_tables->setFormat(QStringLiteral("%v de %m tablas"));
    m_tables->setRange(0, 1);
    m_tables->setValue(0);
    m_tables->setTextVisible(false);
    m_exportar = new QPushButton(QStringLiteral("&Exportar"), this);
    m_exportar->setObjectName(QStringLiteral("cmdExportar"));
    m_cancelar = new QPushButton(QStringLiteral("&Cancelar"), this);
    m_cancelar->setObjectName(QStringLiteral("cmdCancelar"));
    chainFields({m_desde, m_hasta}, m_exportar);
    setFocusProxy(m_desde);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Desde:"), m_desde);
    form->addRow(QStringLiteral("Hasta:"), m_hasta);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_exportar);
    buttons->addWidget(m_cancelar);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_mensaje);
    layout->addWidget(m_rows);
    layout->addWidget(m_tables);
    layout->addLayout(buttons);

    connect(m_exportar, &QPushButton::clicked, this, [this] { exportClicked(); });
    connect(m_cancelar, &QPushButton::clicked, this, [this] { cancelClicked(); });

    // The DBF packages need their templates: without the folder nothing can be exported.
    if (format != ExportFormat::Xml) {
        m_templatesFound = guarded(this, [] { package::requireTemplateFolder(); });
        m_exportar->setEnabled(m_templatesFound);
    }
}

ExportScreen::~ExportScreen() {
    lockMainWindow(false);
}

bool ExportScreen::isRunning() const {
    return m_running;
}

void ExportScreen::exportClicked() {
    startExport(m_desde->date(), m_hasta->date());
}

void ExportScreen::cancelClicked() {
    if (m_job && m_job->isRunning()) {
        m_job->cancel();
        m_mensaje->setText(QStringLiteral("Cancelando..."));
        return;
    }
    if (!m_running)
        closeScreen();
}

void ExportScreen::startExport(const QDate& from, const QDate& to, const QString& origin) {
    if (m_running)
        return;
    m_origin = origin;
    m_desde->setDate(from);
    m_hasta->setDate(to);
    // The folder may have appeared since the screen opened (orvo db init on another console).
    if (m_format != ExportFormat::Xml && !guarded(this, [] { package::requireTemplateFolder(); })) {
        emit runFinished(false);
        if (!m_origin.isEmpty())
            closeScreen();
        return;
    }
    m_templatesFound = true;
    if (from > to) {
        dialogs().information(
            this, QStringLiteral("La fecha inicial debe ser menor o igual a la fecha final...!"));
        emit runFinished(false);
        return;
    }
    setRunning(true);
    m_job = std::make_unique<ExportJob>(m_db, ExportRequest{m_format, from, to});
    connect(m_job.get(), &jobs::Job::progress, this, [this](int percent, const QString& label) {
        m_rows->setValue(percent);
        m_mensaje->setText(label);
    });
    connect(m_job.get(), &ExportJob::tablesProgress, this, [this](int done, int total) {
        m_tables->setMaximum(total);
        m_tables->setValue(done);
        m_tables->setTextVisible(true);
    });
    connect(m_job.get(), &jobs::Job::finished, this,
            [this](bool ok, const QString& error) { afterExport(ok, error); });
    m_job->start();
}

void ExportScreen::afterExport(bool ok, const QString& error) {
    m_job->wait();
    if (!ok) {
        dialogs().information(this, error);
        m_mensaje->clear();
        m_rows->setValue(0);
        setRunning(false);
        emit runFinished(false);
        if (!m_origin.isEmpty())
            closeScreen();
        return;
    }
    m_rows->setValue(0);
    m_mensaje->setText(QStringLiteral("Transfiriendo la información..."));
    // The mail window over the program, with the export date; the closing's run moves the last
    // export date once the mail is done.
    const bool xml = m_format == ExportFormat::Xml;
    auto* mail = new mail::MailScreen(m_db, xml, this);
    mail->setWindowFlag(Qt::Window);
    mail->setWindowModality(Qt::ApplicationModal);
    mail->setAttribute(Qt::WA_DeleteOnClose);
    connect(mail, &mail::MailScreen::mailFinished, this, [this] { afterMail(); });
    mail::MailOptions options;
    if (xml)
        options.fixedRecipient = mail::xmlRecipient(m_db);
    if (m_origin == QLatin1String(kClosingOrigin))
        options.advanceLastExportTo = m_hasta->date();
    mail->adjustSize();
    mail->move(window()->geometry().center() - mail->rect().center());
    mail->show();
    mail->send(options, true);
}

void ExportScreen::afterMail() {
    m_mensaje->clear();
    setRunning(false);
    emit runFinished(true);
    if (!m_origin.isEmpty())
        closeScreen();
}

// Inside the main window the frame closes with the screen.
void ExportScreen::closeScreen() {
    if (auto* frame = qobject_cast<QMdiSubWindow*>(parentWidget()))
        frame->close();
    else
        close();
}

void ExportScreen::setRunning(bool running) {
    m_running = running;
    const bool unattended = !m_origin.isEmpty();
    m_desde->setEnabled(!running && !unattended);
    m_hasta->setEnabled(!running && !unattended);
    m_exportar->setEnabled(!running && !unattended && m_templatesFound);
    // The user's own run can be stopped between tables; the closing's cannot.
    m_cancelar->setEnabled(!unattended);
    m_cancelar->setText(running ? QStringLiteral("&Detener") : QStringLiteral("&Cancelar"));
    if (!running) {
        m_tables->setValue(0);
        m_tables->setTextVisible(false);
    }
    if (unattended)
        lockMainWindow(running);
    else if (!running)
        m_desde->setFocus();
}

// The closing's run keeps the user out of the menus until the package has gone.
void ExportScreen::lockMainWindow(bool lock) {
    if (!lock) {
        for (const QPointer<QWidget>& w : std::as_const(m_locked))
            if (w)
                w->setEnabled(true);
        m_locked.clear();
        return;
    }
    auto* main = qobject_cast<QMainWindow*>(window());
    if (!main || window() == this || !m_locked.isEmpty())
        return;
    QList<QWidget*> parts{main->menuBar()};
    for (QToolBar* t : main->findChildren<QToolBar*>())
        parts << t;
    for (QDockWidget* d : main->findChildren<QDockWidget*>())
        parts << d;
    for (QWidget* w : parts)
        if (w && w->isEnabled()) {
            w->setEnabled(false);
            m_locked << w;
        }
}

void ExportScreen::closeEvent(QCloseEvent* event) {
    // A run in progress is not abandoned half-written.
    if (m_running) {
        event->ignore();
        return;
    }
    lockMainWindow(false);
    QWidget::closeEvent(event);
}

} // namespace orvo::exchange::exporting
