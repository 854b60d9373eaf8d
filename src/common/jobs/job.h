#pragma once

#include <QElapsedTimer>
#include <QMutex>
#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>

class QThread;

namespace orvo::jobs {

// Long work off the screen's thread: run() executes on a thread of its own with its own
// connection to the same database (connections are never shared across threads), reports
// progress a few times a second at most, and ends with finished(ok, error).
//
// A screen starts it and listens to progress()/finished(); a headless command calls start()
// and then wait(), and prints the same progress to the terminal.
class Job : public QObject {
    Q_OBJECT
public:
    // `source` names the database to work on; the job opens its own connection to it.
    explicit Job(const QSqlDatabase& source, QObject* parent = nullptr);
    ~Job() override;

    void start();
    // Blocks until the job has ended (for commands and tests). True when it ended.
    bool wait(int timeoutMs = -1);
    bool isRunning() const;

    // Asks the work to stop at its next safe point.
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

    // The outcome once finished: empty when it worked.
    QString error() const;
    bool succeeded() const;

signals:
    void progress(int percent, const QString& label);
    void finished(bool ok, const QString& error);

protected:
    // The work, on the job's thread. Throw UserError/DbError to fail with their text.
    virtual void run(const QSqlDatabase& db) = 0;
    // Throttled: the label changing or 100 % always goes out, otherwise at most every 200 ms.
    void report(int percent, const QString& label);

private:
    void execute();

    QString m_sourceName;
    std::unique_ptr<QThread> m_thread;
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_done{false};
    mutable QMutex m_mutex;
    QString m_error;
    bool m_ok = false;
    QElapsedTimer m_lastReport;
    QString m_lastLabel;
};

// Starts `job` and waits for it on this thread (commands, tests), its progress passed to
// `progress` as it comes; throws UserError with the job's error when it failed.
void runToEnd(Job& job,
              const std::function<void(int percent, const QString& label)>& progress = {});

} // namespace orvo::jobs
