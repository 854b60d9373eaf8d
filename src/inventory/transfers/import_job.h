#pragma once

#include "common/jobs/job.h"
#include "inventory/articles/article_types.h"
#include "inventory/transfers/transfer_import.h"

#include <QMutex>
#include <optional>

namespace orvo::inventory::transfers {

// The load of the transfers (or transfer returns) lying in a folder, off the screen's thread, with
// the same code as `orvo import`. Once finished: result() is empty when no package was there.
class ImportJob : public jobs::Job {
    Q_OBJECT
public:
    ImportJob(const QSqlDatabase& source, Kind kind, QString folder, ArticleWriter writer,
              QObject* parent = nullptr);
    std::optional<ImportResult> result() const;

protected:
    void run(const QSqlDatabase& db) override;

private:
    Kind m_kind;
    QString m_folder;
    ArticleWriter m_writer;
    mutable QMutex m_mutex;
    std::optional<ImportResult> m_result;
};

} // namespace orvo::inventory::transfers
