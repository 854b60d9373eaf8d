#pragma once

#include <QDialog>
#include <QSqlDatabase>

class QLabel;
class QProgressBar;

namespace orvo::common::rate {

class ReconversionJob;

// The reconversion as the opening of the register shows it: when it is due, the three warnings,
// then a progress window while the job works, then the two end messages. Returns normally when
// nothing was due or it finished (the opening goes on); throws UserError when it failed, so the
// opening stops with its message and the database as it was.
void reconvertIfDue(QWidget* parent, const QSqlDatabase& db);

// The progress window (frmReconversion): the plan's labels and a progress bar.
class ReconversionDialog : public QDialog {
    Q_OBJECT
public:
    ReconversionDialog(ReconversionJob& job, QWidget* parent = nullptr);

private:
    QLabel* m_label = nullptr;
    QProgressBar* m_bar = nullptr;
};

} // namespace orvo::common::rate
