#include "common/rate/reconversion_dialog.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "common/rate/reconversion.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace orvo::common::rate {

ReconversionDialog::ReconversionDialog(ReconversionJob& job, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmReconversion"));
    setWindowTitle(QStringLiteral("Reconversión monetaria"));
    setModal(true);
    // The work cannot be left half-way from here: the window closes when the job ends.
    setWindowFlags(windowFlags() & ~Qt::WindowCloseButtonHint);
    m_label = new QLabel(kReconversionStartLabel, this);
    m_label->setObjectName(QStringLiteral("lblProceso"));
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("prgReconversion"));
    m_bar->setRange(0, 100);
    m_bar->setMinimumWidth(420);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    connect(&job, &jobs::Job::progress, this, [this](int percent, const QString& label) {
        m_bar->setValue(percent);
        if (!label.isEmpty())
            m_label->setText(label);
    });
    connect(&job, &jobs::Job::finished, this, [this](bool ok) { done(ok ? Accepted : Rejected); });
}

void reconvertIfDue(QWidget* parent, const QSqlDatabase& db) {
    const QDate today = db::serverNow(db).date();
    if (!reconversionDue(db, today))
        return;
    for (const QString& text : reconversionWarnings())
        dialogs().information(parent, text);
    ReconversionJob job(db, today);
    ReconversionDialog window(job, parent);
    job.start();
    window.exec();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
    if (!job.performed())
        return;
    for (const QString& text : reconversionEndMessages())
        dialogs().information(parent, text);
}

} // namespace orvo::common::rate
