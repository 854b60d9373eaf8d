#pragma once

#include "common/jobs/job.h"

#include <QWidget>
#include <functional>
#include <memory>

class QLabel;
class QProgressBar;

namespace orvo::inventory::stock {

// The label (lblMensaje) and progress bar (prbProgreso) of a screen that runs a long job: the
// job's steps show here while the screen stays responsive.
class JobProgress : public QWidget {
    Q_OBJECT
public:
    explicit JobProgress(QWidget* parent = nullptr);
    ~JobProgress() override;

    // Starts `job`; `done` runs on the screen's thread once it ended (the job still alive).
    void run(std::unique_ptr<jobs::Job> job,
             std::function<void(jobs::Job& job, bool ok, const QString& error)> done);
    bool isRunning() const;
    // Asks the running job to stop at its next safe point.
    void cancel();
    void setMessage(const QString& text);
    QString message() const;

signals:
    void runningChanged(bool running);

private:
    QLabel* m_message;
    QProgressBar* m_bar;
    std::unique_ptr<jobs::Job> m_job;
    bool m_running = false;
};

} // namespace orvo::inventory::stock
