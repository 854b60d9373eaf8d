#include "common/grid_ui/grid_view.h"

#include "common/dialogs/dialogs.h"
#include "common/grid/grid_print.h"

#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QPrinter>
#include <QStyledItemDelegate>

namespace orvo::grid {

namespace {

using Type = GridColumn::Type;

const QString kNotFound = QStringLiteral("No existe ningún valor similar al\nelemento buscado.");

// Editors by column type; check boxes are edited by the view itself.
class GridDelegate : public QStyledItemDelegate {
public:
    explicit GridDelegate(GridModel* model, QObject* parent)
        : QStyledItemDelegate(parent), m_model(model) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        const GridColumn& col = m_model->column(index.column());
        switch (col.type) {
        case Type::Date: {
            auto* e = new QDateEdit(parent);
            e->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
            e->setCalendarPopup(true);
            return e;
        }
        case Type::List: {
            auto* c = new QComboBox(parent);
            c->addItems(col.items);
            return c;
        }
        case Type::Number: {
            auto* e = new QLineEdit(parent);
            e->setAlignment(Qt::AlignRight);
            return e;
        }
        default:
            return QStyledItemDelegate::createEditor(parent, option, index);
        }
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        if (auto* d = qobject_cast<QDateEdit*>(editor)) {
            const QDate v = index.data(Qt::EditRole).toDate();
            d->setDate(v.isValid() ? v : QDate::currentDate());
        } else if (auto* c = qobject_cast<QComboBox*>(editor)) {
            c->setCurrentIndex(c->findText(index.data(Qt::EditRole).toString()));
        } else {
            QStyledItemDelegate::setEditorData(editor, index);
        }
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override {
        if (auto* d = qobject_cast<QDateEdit*>(editor))
            model->setData(index, d->date());
        else if (auto* c = qobject_cast<QComboBox*>(editor))
            model->setData(index, c->currentText());
        else
            QStyledItemDelegate::setModelData(editor, model, index);
    }

private:
    GridModel* m_model;
};

} // namespace

GridView::GridView(QWidget* parent) : QTableView(parent), m_model(new GridModel(this)) {
    setModel(m_model);
    setItemDelegate(new GridDelegate(m_model, this));
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setAlternatingRowColors(true);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    // Fixed row heights keep 100,000 rows cheap to lay out and scroll.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QFont header = horizontalHeader()->font();
    header.setBold(true);
    horizontalHeader()->setFont(header);
}

void GridView::setColumns(const QList<GridColumn>& columns) {
    m_model->setColumns(columns);
    applyHiddenColumns();
}

int GridView::load(const QSqlDatabase& db, const QString& sql, const QVariantList& values,
                   bool silent) {
    const int rows = m_model->load(db, sql, values);
    applyHiddenColumns();
    resizeColumnsToContents();
    if (rows == 0 && !silent)
        dialogs().information(this, QStringLiteral("No hay datos registrados."));
    return rows;
}

void GridView::applyHiddenColumns() {
    for (int c = 0; c < m_model->columnCount(); ++c)
        setColumnHidden(c, m_model->column(c).hidden);
}

void GridView::setActiveCell(int row, int column) {
    const QModelIndex i = m_model->index(row, column);
    if (!i.isValid())
        return;
    setCurrentIndex(i);
    scrollTo(i, QAbstractItemView::PositionAtCenter);
    viewport()->update();
}

int GridView::activeRow() const {
    return currentIndex().isValid() ? currentIndex().row() : -1;
}

int GridView::activeColumn() const {
    return currentIndex().isValid() ? currentIndex().column() : -1;
}

bool GridView::searchValue(const QString& value, bool like) {
    const int row = m_model->findRow(value, like);
    if (row < 0) {
        dialogs().information(this, kNotFound);
        return false;
    }
    int column = std::max(0, activeColumn());
    if (m_model->column(column).hidden)
        column = 0;
    while (column < m_model->columnCount() && m_model->column(column).hidden)
        ++column;
    setActiveCell(row, column);
    return true;
}

bool GridView::goToValue(int column, const QString& value) {
    const int row = m_model->findInColumn(column, value);
    if (row < 0) {
        dialogs().information(this, kNotFound);
        return false;
    }
    setActiveCell(row, column);
    return true;
}

bool GridView::goToRow(int rowNumber) {
    if (rowNumber < 1 || rowNumber > m_model->rowCount())
        return false;
    setActiveCell(rowNumber - 1, std::max(0, activeColumn()));
    return true;
}

void GridView::hideGridColumn(int column) {
    m_model->setColumnHidden(column, true);
    setColumnHidden(column, true);
}

void GridView::blockAction(BlockAction action, int r1, int r2, int c1, int c2) {
    switch (action) {
    case BlockAction::Lock:
    case BlockAction::Unlock:
        m_model->setBlockLocked(r1, r2, c1, c2, action == BlockAction::Lock);
        break;
    case BlockAction::Hide:
        if (r1 < 0) {
            for (int c = c1; c <= c2; ++c)
                hideGridColumn(c);
        } else {
            for (int r = r1; r <= r2; ++r)
                setRowHidden(r, true);
        }
        break;
    case BlockAction::Clear:
        m_model->clearBlock(r1, r2, c1, c2);
        break;
    case BlockAction::Select:
        selectionModel()->select(QItemSelection(m_model->index(r1, c1), m_model->index(r2, c2)),
                                 QItemSelectionModel::ClearAndSelect);
        break;
    }
}

void GridView::sortByColumn(int column, bool descending) {
    if (column < 0 || column >= m_model->columnCount())
        return;
    if (!m_model->query().isEmpty()) {
        const GridColumn& c = m_model->column(column);
        m_model->requerySorted({{c.field.isEmpty() ? c.caption : c.field, descending}});
        applyHiddenColumns();
    } else {
        m_model->sort(column, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    }
}

bool GridView::exportToFile() {
    const QString extension = QStringLiteral("txt");
    const QString path =
        dialogs().saveFileName(this, QStringLiteral("Guardar como"), QString(),
                               QStringLiteral("Texto delimitado por tabulación (*.") + extension +
                                   QStringLiteral(")| *.") + extension);
    if (path.isEmpty())
        return false;
    m_model->exportTabDelimited(path);
    return true;
}

bool GridView::printGrid(const QString& title) {
    QPrinter printer;
    if (!choosePrinter(this, printer, title))
        return false;
    grid::printGrid(printer, *m_model, title);
    return true;
}

} // namespace orvo::grid
