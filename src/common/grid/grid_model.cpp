#include "common/grid/grid_model.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTextStream>
#include <algorithm>
#include <numeric>

namespace orvo::grid {

namespace {

using Type = GridColumn::Type;

bool isNumericMeta(int typeId) {
    switch (typeId) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

bool isDateMeta(int typeId) {
    return typeId == QMetaType::QDate || typeId == QMetaType::QDateTime;
}

// SQLite hands dates back as ISO text ("2026-11-23T00:00:00"); PostgreSQL as dates.
bool looksLikeIsoDate(const QVariant& v) {
    static const QRegularExpression iso(QStringLiteral(
        R"(^\d{4}-\d{2}-\d{2}([T ]\d{2}:\d{2}(:\d{2}(\.\d+)?)?(Z|[+-]\d{2}(:?\d{2})?)?)?$)"));
    return iso.match(v.toString()).hasMatch();
}

Decimal toDecimal(const QVariant& v) {
    if (v.metaType() == QMetaType::fromType<Decimal>())
        return v.value<Decimal>();
    return Decimal::fromVariant(v);
}

} // namespace

QString columnLetter(int column) {
    QString out;
    for (int n = column + 1; n > 0; n = (n - 1) / 26)
        out.prepend(QChar(u'A' + (n - 1) % 26));
    return out;
}

GridFormula percentageFormula(int a, QChar op, int b) {
    const QString text = columnLetter(a) + op + columnLetter(b);
    return {text, [a, op, b](const std::function<Decimal(int)>& cell) {
                if (op == u'*')
                    return cell(a) * cell(b);
                if (op == u'/')
                    return cell(b).isZero() ? Decimal() : cell(a) / cell(b);
                return cell(a) * cell(b) / Decimal(100);
            }};
}

GridFormula priceWithTaxTimesQuantity(int price, int taxPercent, int quantity) {
    const QString text = QStringLiteral("((ROUND(") + columnLetter(price) +
                         QStringLiteral("* (1 + (") + columnLetter(taxPercent) +
                         QStringLiteral("/100)),2) * ") + columnLetter(quantity) +
                         QStringLiteral("))");
    return {text, [=](const std::function<Decimal(int)>& cell) {
                return (cell(price) * (Decimal(1) + cell(taxPercent) / Decimal(100))).rounded(2) *
                       cell(quantity);
            }};
}

GridFormula priceWithoutTax(int price, int taxPercent) {
    const QString text = columnLetter(price) + QStringLiteral("/ (") + QStringLiteral("1") +
                         QStringLiteral("+ (") + columnLetter(taxPercent) +
                         QStringLiteral("/100))");
    return {text, [=](const std::function<Decimal(int)>& cell) {
                return cell(price) / (Decimal(1) + cell(taxPercent) / Decimal(100));
            }};
}

GridFormula differencePercent(int a, int b, int percent) {
    const QString text = QStringLiteral("(") + columnLetter(a) + QStringLiteral("-") +
                         columnLetter(b) + QStringLiteral(") * (") + columnLetter(percent) +
                         QStringLiteral("/100)");
    return {text, [=](const std::function<Decimal(int)>& cell) {
                return (cell(a) - cell(b)) * (cell(percent) / Decimal(100));
            }};
}

QString orderByClause(const QList<QPair<QString, bool>>& columnsDescending) {
    QStringList parts;
    for (const auto& [column, descending] : columnsDescending)
        parts << column + (descending ? QStringLiteral(" DESC") : QStringLiteral(" ASC"));
    return parts.isEmpty() ? QString() : QStringLiteral(" ORDER BY ") + parts.join(", ");
}

SearchCondition searchCondition(const QList<GridColumn>& columns, const QString& value, bool like) {
    SearchCondition out;
    QStringList parts;
    const auto number = Decimal::parse(value.trimmed());
    for (const GridColumn& c : columns) {
        if (c.hidden)
            continue;
        const QString field = c.field.isEmpty() ? c.caption : c.field;
        if (c.type == Type::Number || c.type == Type::Check) {
            if (!number)
                continue;
            parts << field + QStringLiteral(" = ?");
            out.values << number->toString();
        } else if (c.type == Type::Text || c.type == Type::List) {
            parts << field + (like ? QStringLiteral(" LIKE ?") : QStringLiteral(" = ?"));
            out.values << (like ? QStringLiteral("%") + value + QStringLiteral("%") : value);
        }
    }
    out.where = parts.join(QStringLiteral(" OR "));
    return out;
}

GridModel::GridModel(QObject* parent) : QAbstractTableModel(parent) {}

void GridModel::setColumns(const QList<GridColumn>& columns) {
    beginResetModel();
    m_columns = columns;
    m_cells.assign(size_t(m_rows) * m_columns.size(), QVariant());
    m_totals.assign(m_columns.size(), Decimal());
    endResetModel();
    recomputeTotals();
}

void GridModel::setColumnHidden(int c, bool hidden) {
    if (c < 0 || c >= m_columns.size())
        return;
    m_columns[c].hidden = hidden;
    emit headerDataChanged(Qt::Horizontal, c, c);
}

int GridModel::load(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    m_db = db;
    m_query = sql;
    m_queryValues = values;
    db::Sql q(db, sql);
    q.raw().setForwardOnly(true);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    const QSqlRecord rec = q.raw().record();

    // Field of each grid column; columns described by the caller keep their types.
    QList<int> source;
    bool described = !m_columns.isEmpty();
    if (described) {
        for (const GridColumn& c : m_columns) {
            const int i = rec.indexOf(c.field.isEmpty() ? c.caption : c.field);
            source << i;
        }
    } else {
        QList<GridColumn> cols;
        for (int i = 0; i < rec.count(); ++i) {
            const QSqlField f = rec.field(i);
            GridColumn c;
            c.caption = f.name();
            c.field = f.name();
            c.hidden = c.caption.startsWith(QStringLiteral("~HDN"), Qt::CaseInsensitive);
            const int typeId = f.metaType().id();
            if (c.caption.compare(QStringLiteral("Status"), Qt::CaseInsensitive) == 0) {
                c.type = Type::Check;
            } else if (isNumericMeta(typeId)) {
                c.type = Type::Number;
                const bool integral = typeId != QMetaType::Double && typeId != QMetaType::Float;
                c.decimals = integral ? 0 : (f.precision() > 0 ? f.precision() : 2);
            } else if (isDateMeta(typeId)) {
                c.type = Type::Date;
            }
            cols << c;
            source << i;
        }
        m_columns = cols;
    }

    beginResetModel();
    m_cells.clear();
    m_rows = 0;
    const int nCols = m_columns.size();
    while (q.next()) {
        for (int c = 0; c < nCols; ++c)
            m_cells.push_back(source[c] >= 0 ? stored(m_columns[c], q.value(source[c]))
                                             : QVariant());
        ++m_rows;
    }
    if (!described)
        typeTextDates();
    m_totals.assign(nCols, Decimal());
    endResetModel();
    for (int r = 0; !m_formulas.isEmpty() && r < m_rows; ++r)
        recompute(r);
    recomputeTotals();
    return m_rows;
}

void GridModel::typeTextDates() {
    for (int c = 0; c < m_columns.size(); ++c) {
        GridColumn& col = m_columns[c];
        if (col.type != Type::Text)
            continue;
        bool any = false;
        bool allDates = true;
        for (int r = 0; r < m_rows && allDates; ++r) {
            const QVariant& v = cell(r, c);
            if (!v.isValid() || v.isNull())
                continue;
            any = true;
            allDates = looksLikeIsoDate(v);
        }
        if (!any || !allDates)
            continue;
        col.type = Type::Date;
        for (int r = 0; r < m_rows; ++r) {
            QVariant& v = cell(r, c);
            if (v.isValid() && !v.isNull())
                v = db::dateTimeValue(v).date();
        }
    }
}

void GridModel::requerySorted(const QList<QPair<QString, bool>>& columnsDescending) {
    if (m_query.isEmpty())
        return;
    QString sql = m_query;
    const int at = sql.lastIndexOf(QStringLiteral(" ORDER BY "), -1, Qt::CaseInsensitive);
    if (at >= 0)
        sql.truncate(at);
    load(m_db, sql + orderByClause(columnsDescending), m_queryValues);
    m_query = sql; // keep the unsorted text so that sorts do not pile up
}

void GridModel::clearRows() {
    beginResetModel();
    m_cells.clear();
    m_rows = 0;
    endResetModel();
    recomputeTotals();
}

void GridModel::setRows(const QList<QVariantList>& rows) {
    beginResetModel();
    m_cells.clear();
    m_cells.reserve(size_t(rows.size()) * m_columns.size());
    for (const QVariantList& row : rows)
        for (int c = 0; c < m_columns.size(); ++c)
            m_cells.push_back(stored(m_columns[c], row.value(c)));
    m_rows = int(rows.size());
    endResetModel();
    for (int r = 0; !m_formulas.isEmpty() && r < m_rows; ++r)
        recompute(r);
    recomputeTotals();
}

int GridModel::appendRow(const QVariantList& values) {
    beginInsertRows({}, m_rows, m_rows);
    for (int c = 0; c < m_columns.size(); ++c)
        m_cells.push_back(stored(m_columns[c], values.value(c)));
    ++m_rows;
    endInsertRows();
    recompute(m_rows - 1);
    recomputeTotals();
    return m_rows - 1;
}

void GridModel::removeRows(int row, int count) {
    if (row < 0 || count <= 0 || row + count > m_rows)
        return;
    beginRemoveRows({}, row, row + count - 1);
    const auto begin = m_cells.begin() + ptrdiff_t(row) * m_columns.size();
    m_cells.erase(begin, begin + ptrdiff_t(count) * m_columns.size());
    m_rows -= count;
    endRemoveRows();
    recomputeTotals();
}

QVariant GridModel::value(int row, int c) const {
    if (row < 0 || row >= m_rows || c < 0 || c >= m_columns.size())
        return {};
    return cell(row, c);
}

Decimal GridModel::number(int row, int c) const {
    return toDecimal(value(row, c));
}

void GridModel::setValue(int row, int c, const QVariant& v) {
    if (row < 0 || row >= m_rows || c < 0 || c >= m_columns.size())
        return;
    cell(row, c) = stored(m_columns[c], v);
    emit dataChanged(index(row, c), index(row, c));
    recompute(row);
    recomputeTotals();
}

void GridModel::setFormula(int target, GridFormula formula) {
    m_formulas.append({target, std::move(formula)});
    for (int r = 0; r < m_rows; ++r)
        recompute(r);
    recomputeTotals();
}

Decimal GridModel::total(int c) const {
    return c >= 0 && size_t(c) < m_totals.size() ? m_totals[c] : Decimal();
}

void GridModel::recompute(int row) {
    if (m_formulas.isEmpty())
        return;
    const auto cellOf = [this, row](int c) { return toDecimal(cell(row, c)); };
    for (const auto& [target, formula] : m_formulas) {
        const Decimal v = formula.evaluate(cellOf).rounded(m_columns[target].decimals);
        cell(row, target) = QVariant::fromValue(v);
        emit dataChanged(index(row, target), index(row, target));
    }
}

void GridModel::recomputeTotals() {
    m_totals.assign(m_columns.size(), Decimal());
    for (int c = 0; c < m_columns.size(); ++c) {
        if (m_columns[c].type != Type::Number)
            continue;
        Decimal sum;
        for (int r = 0; r < m_rows; ++r)
            sum += toDecimal(cell(r, c));
        m_totals[c] = sum;
    }
    emit totalsChanged();
}

QVariant GridModel::stored(const GridColumn& col, const QVariant& v) const {
    if (!v.isValid() || v.isNull())
        return {};
    switch (col.type) {
    case Type::Number: {
        if (v.metaType() == QMetaType::fromType<Decimal>())
            return v;
        const QString text = v.toString().trimmed();
        if (text.isEmpty())
            return {};
        // Typed numbers may use the machine's separators; SQL values always use ".".
        if (auto d = Decimal::parse(text))
            return QVariant::fromValue(*d);
        bool ok = false;
        const double parsed = m_locale.toDouble(text, &ok);
        return ok ? QVariant::fromValue(Decimal::fromDouble(parsed)) : QVariant();
    }
    case Type::Date:
        if (v.metaType().id() == QMetaType::QDateTime)
            return v.toDateTime().date();
        if (v.metaType().id() == QMetaType::QString) {
            const QDate d = QDate::fromString(v.toString(), QStringLiteral("dd/MM/yyyy"));
            return d.isValid() ? QVariant(d) : v.toDate();
        }
        return v.toDate();
    case Type::Check:
        return QVariant(v.toInt() == 1 || v.toBool() ? 1 : 0);
    case Type::Text:
    case Type::List:
        break;
    }
    return v.toString();
}

void GridModel::setBlockColour(int r1, int r2, int c1, int c2, const QColor& colour) {
    m_colours.append({QRect(QPoint(c1, r1), QPoint(c2, r2)), colour});
    emit dataChanged(index(r1, c1), index(r2, c2), {Qt::BackgroundRole});
}

void GridModel::setBlockLocked(int r1, int r2, int c1, int c2, bool locked) {
    const QRect block(QPoint(c1, r1), QPoint(c2, r2));
    if (locked)
        m_locked.append(block);
    else
        m_locked.removeIf([&](const QRect& r) { return block.contains(r); });
}

void GridModel::clearBlock(int r1, int r2, int c1, int c2) {
    for (int r = std::max(0, r1); r <= std::min(r2, m_rows - 1); ++r)
        for (int c = std::max(0, c1); c <= std::min(c2, int(m_columns.size()) - 1); ++c)
            cell(r, c) = QVariant();
    emit dataChanged(index(r1, c1), index(r2, c2));
    for (int r = std::max(0, r1); r <= std::min(r2, m_rows - 1); ++r)
        recompute(r);
    recomputeTotals();
}

bool GridModel::isLocked(int row, int c) const {
    for (const QRect& r : m_locked)
        if (r.contains(c, row))
            return true;
    return false;
}

int GridModel::columnByCaption(const QString& caption) const {
    for (int c = 0; c < m_columns.size(); ++c)
        if (!m_columns[c].hidden && m_columns[c].caption.compare(caption, Qt::CaseInsensitive) == 0)
            return c;
    return -1;
}

int GridModel::findInColumn(int c, const QString& value, int fromRow) const {
    if (c < 0 || c >= m_columns.size())
        return -1;
    const QString wanted = value.trimmed();
    const auto number = Decimal::parse(wanted);
    for (int r = std::max(0, fromRow); r < m_rows; ++r) {
        if (m_columns[c].type == Type::Number) {
            if (number && cell(r, c).isValid() && toDecimal(cell(r, c)) == *number)
                return r;
        } else if (displayText(r, c).trimmed().compare(wanted, Qt::CaseInsensitive) == 0) {
            return r;
        }
    }
    return -1;
}

int GridModel::findRow(const QString& value, bool like, int fromRow) const {
    const QString wanted = value.trimmed();
    if (wanted.isEmpty())
        return -1;
    const auto number = Decimal::parse(wanted);
    for (int r = std::max(0, fromRow); r < m_rows; ++r) {
        for (int c = 0; c < m_columns.size(); ++c) {
            const GridColumn& col = m_columns[c];
            if (col.hidden || col.type == Type::Check)
                continue;
            if (col.type == Type::Number) {
                if (number && cell(r, c).isValid() && toDecimal(cell(r, c)) == *number)
                    return r;
                continue;
            }
            const QString text = displayText(r, c);
            if (like ? text.contains(wanted, Qt::CaseInsensitive)
                     : text.trimmed().compare(wanted, Qt::CaseInsensitive) == 0)
                return r;
        }
    }
    return -1;
}

int GridModel::lastUsedRow() const {
    for (int r = m_rows - 1; r >= 0; --r)
        for (int c = 0; c < m_columns.size(); ++c)
            if (cell(r, c).isValid() && !cell(r, c).toString().isEmpty())
                return r;
    return -1;
}

QString GridModel::displayText(int row, int c) const {
    const QVariant& v = cell(row, c);
    if (!v.isValid())
        return {};
    const GridColumn& col = m_columns[c];
    switch (col.type) {
    case Type::Number:
        return toDecimal(v).toLocaleString(m_locale, col.decimals);
    case Type::Date:
        return v.toDate().toString(QStringLiteral("dd/MM/yyyy"));
    case Type::Check:
        return v.toInt() == 1 ? QStringLiteral("1") : QStringLiteral("0");
    case Type::Text:
    case Type::List:
        break;
    }
    return v.toString();
}

QString GridModel::toTabDelimited() const {
    QString out;
    QStringList header;
    for (const GridColumn& c : m_columns)
        if (!c.hidden)
            header << c.caption;
    out += header.join(u'\t') + QStringLiteral("\r\n");
    for (int r = 0; r < m_rows; ++r) {
        QStringList line;
        for (int c = 0; c < m_columns.size(); ++c)
            if (!m_columns[c].hidden)
                line << displayText(r, c).replace(u'\t', u' ').replace(u'\n', u' ');
        out += line.join(u'\t') + QStringLiteral("\r\n");
    }
    return out;
}

void GridModel::exportTabDelimited(const QString& path) const {
    if (QFile::exists(path))
        QFile::remove(path);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw UserError(QStringLiteral("No se pudo crear el archivo ") + path +
                        QStringLiteral("!"));
    f.write(toTabDelimited().toUtf8());
}

int GridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_rows)
        return {};
    const GridColumn& col = m_columns[index.column()];
    switch (role) {
    case Qt::DisplayRole:
        return col.type == Type::Check ? QVariant()
                                       : QVariant(displayText(index.row(), index.column()));
    case Qt::EditRole:
        if (col.type == Type::Number) {
            const QVariant& v = cell(index.row(), index.column());
            return v.isValid() ? QVariant(toDecimal(v).toString(col.decimals)) : QVariant();
        }
        return cell(index.row(), index.column());
    case Qt::CheckStateRole:
        if (col.type == Type::Check)
            return cell(index.row(), index.column()).toInt() == 1 ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::BackgroundRole:
        for (auto it = m_colours.crbegin(); it != m_colours.crend(); ++it)
            if (it->cells.contains(index.column(), index.row()))
                return it->colour;
        return {};
    case Qt::TextAlignmentRole:
        if (col.type == Type::Number)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        if (col.type == Type::Check)
            return int(Qt::AlignCenter);
        return {};
    default:
        return {};
    }
}

bool GridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid())
        return false;
    if (role == Qt::CheckStateRole)
        setValue(index.row(), index.column(),
                 value.toInt() == Qt::Checked ? QVariant(1) : QVariant(0));
    else if (role == Qt::EditRole)
        setValue(index.row(), index.column(), value);
    else
        return false;
    return true;
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    const GridColumn& col = m_columns[index.column()];
    if (col.editable && !isLocked(index.row(), index.column()))
        f |= col.type == Type::Check ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
    return f;
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return section >= 0 && section < m_columns.size() ? QVariant(m_columns[section].caption)
                                                      : QVariant();
}

void GridModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= m_columns.size() || m_rows < 2)
        return;
    emit layoutAboutToBeChanged();
    std::vector<int> perm(m_rows);
    std::iota(perm.begin(), perm.end(), 0);
    const GridColumn& col = m_columns[column];
    const auto less = [&](int a, int b) {
        const QVariant& x = cell(a, column);
        const QVariant& y = cell(b, column);
        if (!x.isValid() || !y.isValid())
            return !x.isValid() && y.isValid();
        switch (col.type) {
        case Type::Number:
            return toDecimal(x) < toDecimal(y);
        case Type::Date:
            return x.toDate() < y.toDate();
        case Type::Check:
            return x.toInt() < y.toInt();
        default:
            return x.toString().localeAwareCompare(y.toString()) < 0;
        }
    };
    if (order == Qt::AscendingOrder)
        std::stable_sort(perm.begin(), perm.end(), less);
    else
        std::stable_sort(perm.begin(), perm.end(), [&](int a, int b) { return less(b, a); });
    std::vector<QVariant> sorted;
    sorted.reserve(m_cells.size());
    const int n = m_columns.size();
    for (int r : perm)
        for (int c = 0; c < n; ++c)
            sorted.push_back(std::move(m_cells[size_t(r) * n + c]));
    m_cells.swap(sorted);
    // Persistent indexes follow their rows.
    const QModelIndexList from = persistentIndexList();
    QModelIndexList to;
    std::vector<int> where(m_rows);
    for (int i = 0; i < m_rows; ++i)
        where[perm[i]] = i;
    for (const QModelIndex& i : from)
        to << index(where[i.row()], i.column());
    changePersistentIndexList(from, to);
    emit layoutChanged();
}

} // namespace orvo::grid
