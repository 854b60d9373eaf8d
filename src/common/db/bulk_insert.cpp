#include "common/db/bulk_insert.h"

#include <algorithm>
#include <stdexcept>

namespace orvo::db {

namespace {
constexpr int kMaxValuesPerStatement = 32000;
}

BulkInsert::BulkInsert(const QSqlDatabase& db, const QString& table, const QStringList& columns,
                       int rowsPerStatement)
    : m_db(db), m_table(table), m_columns(columns),
      m_rowsPerStatement(std::clamp(rowsPerStatement, 1,
                                    std::max(1, kMaxValuesPerStatement / int(columns.size())))) {
    if (columns.isEmpty())
        throw std::invalid_argument("BulkInsert without columns");
}

void BulkInsert::add(const QVariantList& row) {
    if (row.size() != m_columns.size())
        throw std::invalid_argument("BulkInsert row of " + std::to_string(row.size()) +
                                    " values for " + std::to_string(m_columns.size()) +
                                    " columns of " + m_table.toStdString());
    for (const QVariant& v : row) {
        if (v.userType() == qMetaTypeId<Decimal>())
            m_pending.append(v.value<Decimal>().toString());
        else if (v.typeId() == QMetaType::QDate)
            m_pending.append(QDateTime(v.toDate(), QTime(0, 0)));
        else
            m_pending.append(v);
    }
    if (pending() >= m_rowsPerStatement)
        write(m_rowsPerStatement);
}

void BulkInsert::flush() {
    while (pending() > 0)
        write(std::min<qsizetype>(pending(), m_rowsPerStatement));
}

void BulkInsert::write(qsizetype rows) {
    const QString one = u'(' + QStringList(m_columns.size(), QStringLiteral("?")).join(u',') + u')';
    QString statement = QStringLiteral("INSERT INTO %1 (%2) VALUES ")
                            .arg(m_table, m_columns.join(QStringLiteral(", ")));
    statement.reserve(statement.size() + rows * (one.size() + 1));
    for (qsizetype r = 0; r < rows; ++r) {
        if (r > 0)
            statement += u',';
        statement += one;
    }
    const qsizetype values = rows * m_columns.size();
    const QVariantList batch = m_pending.mid(0, values);
    m_pending.remove(0, values);
    Sql q(m_db, statement);
    for (const QVariant& v : batch)
        q.bind(v);
    q.exec();
    m_written += rows;
}

} // namespace orvo::db
