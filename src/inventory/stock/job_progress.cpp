#include "inventory/stock/job_progress.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace orvo::inventory::stock {

JobProgress::JobProgress(QWidget* parent) : QWidget(parent) {
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("lblMensaje"));
    m_message->setMinimumWidth(360);
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("prbProgreso"));
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_message);
    layout->addWidget(m_bar);
}

JobProgress::~JobProgress() {
    if (m_job) {
        m_job->cancel();
        m_job->wait();
    }
}

void JobProgress::run(std::unique_ptr<jobs::Job> job,
                      std::function<void(jobs::Job&, bool, const QString&)> done) {
    if (m_running)
        return;
    m_job = std::move(job);
    m_bar->setValue(0);
    connect(m_job.get(), &jobs::Job::progress, this, [this](int percent, const QString& label) {
        m_bar->setValue(percent);
        m_message->setText(label);
    });
    connect(m_job.get(), &jobs::Job::finished, this,
            [this, done = std::move(done)](bool ok, const QString& error) {
                m_job->wait();
                m_running = false;
                if (ok)
                    m_bar->setValue(100);
                emit runningChanged(false);
                if (done)
                    done(*m_job, ok, error);
            });
    m_running = true;
    emit runningChanged(true);
    m_job->start();
}

bool JobProgress::isRunning() const {
    return m_running;
}

void JobProgress::cancel() {
    if (m_job && m_running)
        m_job->cancel();
}

void JobProgress::setMessage(const QString& text) {
    m_message->setText(text);
}

QString JobProgress::message() const {
    return m_message->text();
}

} // namespace orvo::inventory::stock
