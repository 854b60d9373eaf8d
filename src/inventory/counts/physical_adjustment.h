#pragma once

#include "common/jobs/job.h"
#include "inventory/counts/count_store.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <functional>

// The physical-logical adjustment: the count closes and every article's book stock becomes what
// was counted; and the partial one, which corrects only the counted articles through two
// ordinary adjustments.
namespace orvo::inventory::counts {

inline const QString kPhysicalAdjustmentScreen = QStringLiteral("frmAjusteFisicoLogico");
inline const QString kPartialAdjustmentScreen = QStringLiteral("frmAjusteFisicoLogicoParcial");

// The refusals, in their order: count-1 pages not processed, the same for count 2, an adjustment
// already dated today, count-3 pages missing or not approved. Each leaves the database as it was.
void checkPhysicalAdjustment(const QSqlDatabase& db);

struct PhysicalAdjustmentOptions {
    QString user;
    QString backupFolder;   // empty: Respaldos under the application folder
    QString externalFolder; // a removable drive to copy the backup to; empty: none
};

struct PhysicalAdjustmentResult {
    QDateTime at;         // FechaAjuste
    QString backupFile;   // TF_<database>_<yyyyMMdd_HHmmss>.BAK
    QString externalFile; // the copy on the removable drive, when made
    bool externalFailed = false;
    int articles = 0;       // rows of FISICOLOGICO
    int movedTransfers = 0; // received transfers dated again
};

// The backup's file name: "TF_" + database + "_" + yyyyMMdd_HHmmss + ".BAK".
QString physicalBackupName(const QSqlDatabase& db, const QDateTime& at);

// Checks again, backs the database up (the engine's own copy: the SQLite file, pg_dump), copies
// the backup to the removable drive when one was named, then in one transaction: "Cargando
// Inventario...", "Cargando Toma Física...", "Ajustando Diferencias...", "Actualizando
// Inventario..." (every article not counted ends at 0, Status 3 untouched), the count pages
// deleted, received transfers moved aside dated now, logged and counted in, and only articles with
// stock active. A failure after the backup leaves the database as the backup has it.
class PhysicalAdjustmentJob : public jobs::Job {
    Q_OBJECT
public:
    PhysicalAdjustmentJob(const QSqlDatabase& db, PhysicalAdjustmentOptions options,
                          QObject* parent = nullptr);
    PhysicalAdjustmentResult result() const;

protected:
    void run(const QSqlDatabase& db) override;

private:
    PhysicalAdjustmentOptions m_options;
    PhysicalAdjustmentResult m_result;
};

// Runs the job and waits (tests, scripts); throws UserError with its message when it fails.
PhysicalAdjustmentResult adjustNow(const QSqlDatabase& db, const PhysicalAdjustmentOptions& options,
                                   const std::function<void(int, const QString&)>& progress = {});

// What the store-wide adjustment would change, for the screen to show before it runs.
QList<store::Difference> physicalDifferences(const QSqlDatabase& db);

// --- Partial count ---
// Refused with count-1 pages open, with count-2 pages, without pages, or when the
// physical-logical adjustment was already made today.
void checkPartialAdjustment(const QSqlDatabase& db);
// What the partial count found different from the book stock.
QList<store::Difference> partialDifferences(const QSqlDatabase& db);
struct PartialResult {
    long long plusNumber = 0;  // adjustment of type 999, 0 when nothing was above
    long long minusNumber = 0; // adjustment of type 998, 0 when nothing was below
};
// In one transaction: the articles counted above their stock in one approved adjustment of type
// 999 (they become active), those below in one of type 998, at their average cost; the count-1
// pages deleted. Articles not counted are not touched.
PartialResult runPartialAdjustment(const QSqlDatabase& db, const QString& user);

} // namespace orvo::inventory::counts
