#include "inventory/transfers/import_job.h"

namespace orvo::inventory::transfers {

ImportJob::ImportJob(const QSqlDatabase& source, Kind kind, QString folder, ArticleWriter writer,
                     QObject* parent)
    : Job(source, parent), m_kind(kind), m_folder(std::move(folder)), m_writer(std::move(writer)) {}

std::optional<ImportResult> ImportJob::result() const {
    QMutexLocker lock(&m_mutex);
    return m_result;
}

void ImportJob::run(const QSqlDatabase& db) {
    auto r = loadFromFolder(db, m_folder, m_kind, m_writer,
                            [this](int percent, const QString& label) { report(percent, label); });
    QMutexLocker lock(&m_mutex);
    m_result = std::move(r);
}

} // namespace orvo::inventory::transfers
