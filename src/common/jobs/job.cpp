#include "common/jobs/job.h"

#include "common/db/connection.h"
#include "common/errors/errors.h"

#include <QThread>
#include <QUuid>

namespace orvo::jobs {

Job::Job(const QSqlDatabase& source, QObject* parent)
    : QObject(parent), m_sourceName(source.connectionName()) {}

Job::~Job() {
    if (m_thread) {
        cancel();
        m_thread->wait();
    }
}

void Job::start() {
    if (m_thread)
        return;
    m_thread.reset(QThread::create([this] { execute(); }));
    m_thread->setObjectName(QStringLiteral("job"));
    m_thread->start();
}

bool Job::wait(int timeoutMs) {
    if (!m_thread)
        return m_done;
    return timeoutMs < 0 ? m_thread->wait() : m_thread->wait(QDeadlineTimer(timeoutMs));
}

bool Job::isRunning() const {
    return m_thread && !m_done;
}

QString Job::error() const {
    QMutexLocker lock(&m_mutex);
    return m_error;
}

bool Job::succeeded() const {
    QMutexLocker lock(&m_mutex);
    return m_done && m_ok;
}

void Job::report(int percent, const QString& label) {
    const bool due = !m_lastReport.isValid() || m_lastReport.elapsed() >= 200 ||
                     label != m_lastLabel || percent >= 100;
    if (!due)
        return;
    m_lastReport.start();
    m_lastLabel = label;
    emit progress(percent, label);
}

void Job::execute() {
    const QString name = QStringLiteral("job-") + QUuid::createUuid().toString(QUuid::Id128);
    QString error;
    try {
        const QSqlDatabase db = db::cloneConnection(m_sourceName, name);
        run(db);
    } catch (const UserError& e) {
        error = e.text();
    } catch (const DbError& e) {
        error = e.message();
    } catch (const std::exception& e) {
        error = QString::fromLocal8Bit(e.what());
    }
    db::closeConnection(name);
    {
        QMutexLocker lock(&m_mutex);
        m_error = error;
        m_ok = error.isEmpty();
    }
    m_done = true;
    emit finished(error.isEmpty(), error);
}

void runToEnd(Job& job, const std::function<void(int, const QString&)>& progress) {
    if (progress)
        QObject::connect(&job, &Job::progress, &job, progress, Qt::DirectConnection);
    job.start();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
}

} // namespace orvo::jobs
