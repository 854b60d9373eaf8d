#pragma once

#include "common/jobs/job.h"
#include "inventory/stock/movements.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <functional>

class QTextStream;

// The stock rebuild ("Rekardear Inventario"): every article's stock recomputed from its starting
// point and the approved documents since. The screen, `orvo stock rebuild` and the tests run the
// same job.
namespace orvo::inventory::stock {

inline const QString kRebuildScreen = QStringLiteral("frmKardex");

struct RebuildResult {
    StockPeriod period;
    int changed = 0; // articles whose stock the documents did not agree with
};

// percent, label
using RebuildProgress = std::function<void(int, const QString&)>;

// In one transaction, in this order: the starting stock (the last physical-logical adjustment's
// counted quantities, every other article at 0; without an adjustment ExistenciaInicial), then
// each kind of document with its sign, summed per barcode in one statement each, then services
// at 0. Articles with Status 3 are kept out of counts and keep their stock here too. Costs are not
// touched. `cancelled` is asked between steps; a cancelled or failed rebuild changes nothing.
RebuildResult rebuildStock(const QSqlDatabase& db, const RebuildProgress& progress = {},
                           const std::function<bool()>& cancelled = {});

class StockRebuildJob : public jobs::Job {
    Q_OBJECT
public:
    explicit StockRebuildJob(const QSqlDatabase& db, QObject* parent = nullptr);
    // Once it worked.
    RebuildResult result() const;

protected:
    void run(const QSqlDatabase& db) override;

private:
    RebuildResult m_result;
};

// Runs the job and waits for it (commands, tests); throws UserError with its message on failure.
RebuildResult rebuildNow(const QSqlDatabase& db, const RebuildProgress& progress = {});

// orvo stock rebuild: progress on `err`, the outcome on `out`. Returns the exit code.
int stockCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                 QTextStream& err);

} // namespace orvo::inventory::stock
