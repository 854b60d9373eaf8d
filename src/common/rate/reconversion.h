#pragma once

#include "common/decimal/decimal.h"
#include "common/jobs/job.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <atomic>

// The monetary reconversion: once, from the configured day (ReCon), every stored amount of the
// store database is divided by the factor ReVal. It runs when a register opens its day.
namespace orvo::common::rate {

struct ReconversionTable {
    QString table;
    QStringList columns;
    bool fixedFactor = false; // divided by kFixedReconversionFactor instead of ReVal
};
struct ReconversionGroup {
    QString label;
    QList<ReconversionTable> tables;
};

// Cash withdrawals and the registers' withdrawal thresholds have always been divided by this
// figure, whatever ReVal says.
inline const Decimal kFixedReconversionFactor = Decimal(100000);

// Every group, table and column, in the order they are divided.
const QList<ReconversionGroup>& reconversionPlan();

// Today is on or after ReCon, and the reconversion is neither done (ReRea) nor marked as running
// (ReTra, left by an interrupted run of the previous system).
bool reconversionDue(const QSqlDatabase& db, const QDate& today);

// What the screen shows before it starts, one message after the other, and then as the label.
QStringList reconversionWarnings();
inline const QString kReconversionStartLabel =
    QStringLiteral("Se realizara el proceso de reconversion");
// What it shows at the end, before the opening goes on.
QStringList reconversionEndMessages();

// The whole reconversion on the job's own connection:
// 1. a backup of the database (Respaldos/<base>_<yyyymmdd>_RECONVERSION.BAK);
// 2. one transaction: the preconditions again under the write lock, ReTra '1', every column of
//    the plan widened (where the engine keeps a declared scale) and divided, table by table,
//    SALDODIARIO dropped, ReRea '1' and ReTra '0';
// 3. after commit, the log of the embedded database is truncated.
// Any failure rolls the whole of step 2 back: the database is as it was and the next opening
// tries again. Progress follows the plan's labels.
class ReconversionJob : public jobs::Job {
    Q_OBJECT
public:
    ReconversionJob(const QSqlDatabase& db, const QDate& today, QObject* parent = nullptr);

    const QString& backupFile() const { return m_backupFile; }
    // False when another register had already done it (nothing was changed).
    bool performed() const { return m_performed; }

protected:
    void run(const QSqlDatabase& db) override;

private:
    QDate m_today;
    QString m_backupFile;
    std::atomic<bool> m_performed{false};
};

// Runs the job to its end on this thread's behalf (headless opening, commands, tests). Returns
// whether it reconverted; UserError with the job's error when it failed.
bool runReconversion(const QSqlDatabase& db, const QDate& today);

} // namespace orvo::common::rate
