#pragma once

#include "common/decimal/decimal.h"

#include <QAbstractTableModel>
#include <QColor>
#include <QDate>
#include <QList>
#include <QLocale>
#include <QRect>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <initializer_list>
#include <vector>

namespace orvo::grid {

// How a column shows and edits its cells.
struct GridColumn {
    enum class Type {
        Text,
        Number, // Decimal, shown "###,###,###,##0.00" with the machine's separators
        Date,   // four-digit year, "/" separators
        Check,  // centred check box, stored 1 / 0
        List,   // drop-down list of `items`
    };
    QString caption;
    Type type = Type::Text;
    int decimals = 2;
    bool hidden = false;
    bool editable = false;
    QStringList items; // List
    QString field;     // source column of a query-fed grid (caption when empty)
};

// A line formula: the value of one column computed from the others of the same line, kept with
// the grid formula text as the document grids write it.
struct GridFormula {
    QString text;
    std::function<Decimal(const std::function<Decimal(int column)>& cell)> evaluate;
};

// Column letter of a 0-based column: 0 -> "A", 26 -> "AA".
QString columnLetter(int column);

// Formula builders (columns are 0-based; the text uses letters).
// Percentage of a column: a op b, op one of "%", "*", "/" ("%" gives a * b / 100).
GridFormula percentageFormula(int a, QChar op, int b);
// Price with tax times quantity: ((ROUND(price * (1 + (tax/100)),2) * quantity)).
GridFormula priceWithTaxTimesQuantity(int price, int taxPercent, int quantity);
// Price without tax from a price that includes it: price / (1 + (tax/100)).
GridFormula priceWithoutTax(int price, int taxPercent);
// Discount or margin amount: (a - b) * (percent/100).
GridFormula differencePercent(int a, int b, int percent);

// ORDER BY clause of a sort by columns: " ORDER BY A ASC, B DESC".
QString orderByClause(const QList<QPair<QString, bool>>& columnsDescending);

// The "BuscarV" condition over columns (hidden ones are skipped by the caller): text columns by
// equality or LIKE '%value%', numeric ones by equality (only when the value is a number). Values
// are returned for binding; the conditions are joined with OR.
struct SearchCondition {
    QString where;
    QVariantList values;
};
SearchCondition searchCondition(const QList<GridColumn>& columns, const QString& value, bool like);

// The table model behind every grid: typed cells in memory, filled from a query or line by line,
// with line formulas and column totals kept as lines change. Works as a plain model so views stay
// fast with 100,000 rows (no per-cell widgets, no per-row queries).
class GridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit GridModel(QObject* parent = nullptr);

    void setColumns(const QList<GridColumn>& columns);
    const QList<GridColumn>& columns() const { return m_columns; }
    const GridColumn& column(int c) const { return m_columns[c]; }
    void setColumnHidden(int c, bool hidden);

    // Replaces the rows with a query's result. Columns come from the query (captions = field
    // names, "~HDN..." hidden, numeric fields as numbers) unless set before with matching fields.
    // Returns the number of rows.
    int load(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});
    // Runs the last query again with an ORDER BY for the given columns (virtual-mode sort).
    void requerySorted(const QList<QPair<QString, bool>>& columnsDescending);
    const QString& query() const { return m_query; }

    void clearRows();
    // Replaces every row at once (values in column order).
    void setRows(const QList<QVariantList>& rows);
    int appendRow(const QVariantList& values = {});
    void removeRows(int row, int count);
    QVariant value(int row, int c) const;
    Decimal number(int row, int c) const;
    void setValue(int row, int c, const QVariant& value);

    // Keeps column `target` equal to `formula` on every line; recomputed when a line changes.
    void setFormula(int target, GridFormula formula);
    // Sum of a number column over all lines, kept up to date.
    Decimal total(int c) const;

    // First visible column whose caption equals `caption` (ignoring case: PostgreSQL folds
    // unquoted aliases), or -1.
    int columnByCaption(const QString& caption) const;
    // First row from `fromRow` whose visible cells match `value` (as shown, equal or containing),
    // or -1.
    int findRow(const QString& value, bool like, int fromRow = 0) const;
    // First row whose cell in column c matches, or -1.
    int findInColumn(int c, const QString& value, int fromRow = 0) const;
    // The row of the highest index holding any data (DataRowCnt), or -1.
    int lastUsedRow() const;

    // Block services: rows r1..r2 by columns c1..c2, inclusive.
    void setBlockColour(int r1, int r2, int c1, int c2, const QColor& colour);
    void setBlockLocked(int r1, int r2, int c1, int c2, bool locked);
    void clearBlock(int r1, int r2, int c1, int c2);
    bool isLocked(int row, int c) const;

    // Cell as the user sees it (numbers formatted, dates dd/MM/yyyy, check boxes "1"/"0").
    QString displayText(int row, int c) const;
    // Tab-delimited text of the visible columns, header line first. Lines end with CRLF.
    QString toTabDelimited() const;
    // Writes toTabDelimited() to `path`, replacing an existing file; throws UserError on failure.
    void exportTabDelimited(const QString& path) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    void totalsChanged();

private:
    QVariant stored(const GridColumn& col, const QVariant& v) const;
    void recompute(int row);
    void recomputeTotals();
    // Text columns holding nothing but ISO dates are date columns (SQLite keeps dates as text).
    void typeTextDates();
    const QVariant& cell(int row, int c) const {
        return m_cells[size_t(row) * m_columns.size() + c];
    }
    QVariant& cell(int row, int c) { return m_cells[size_t(row) * m_columns.size() + c]; }

    QList<GridColumn> m_columns;
    std::vector<QVariant> m_cells; // row-major
    int m_rows = 0;
    QList<QPair<int, GridFormula>> m_formulas;
    std::vector<Decimal> m_totals;
    QString m_query;
    QVariantList m_queryValues;
    QSqlDatabase m_db;
    struct Block {
        QRect cells; // x = column, y = row
        QColor colour;
    };
    QList<Block> m_colours;
    QList<QRect> m_locked;
    QLocale m_locale; // the machine's separators, read once
};

} // namespace orvo::grid
