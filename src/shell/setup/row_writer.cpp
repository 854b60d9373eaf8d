#include "shell/setup/row_writer.h"

namespace orvo::shell::setup {

namespace {

QString insertStatement(const QString& table, const QStringList& columns) {
    QStringList marks;
    for (qsizetype i = 0; i < columns.size(); ++i)
        marks << QStringLiteral("?");
    return QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
        .arg(table, columns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
}

} // namespace

RowWriter::RowWriter(const QSqlDatabase& db, const QString& table, const QStringList& columns)
    : m_sql(db, insertStatement(table, columns)), m_columnCount(columns.size()) {}

void RowWriter::insert(std::initializer_list<QVariant> values) {
    insert(QVariantList(values));
}

void RowWriter::insert(const QVariantList& values) {
    Q_ASSERT(values.size() == m_columnCount);
    for (const QVariant& v : values) {
        // Dates are stored as date-times, like every date of the program.
        if (v.typeId() == QMetaType::QDate)
            m_sql.bind(v.toDate());
        else
            m_sql.bind(v);
    }
    m_sql.exec();
}

QStringList columns(std::initializer_list<const char*> names) {
    QStringList out;
    for (const char* n : names)
        out << QString::fromLatin1(n);
    return out;
}

QVariant money(const Decimal& value) {
    return value.toVariant(2);
}

QVariant cost(const Decimal& value) {
    return value.toVariant(5);
}

} // namespace orvo::shell::setup
