#include "common/grid_ui/catalog_dialog.h"

#include "common/dialogs/dialogs.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

namespace orvo::grid {

CatalogDialog::CatalogDialog(const QString& caption, const QSqlDatabase& db, const QString& sql,
                             const QVariantList& values, QWidget* parent)
    : QDialog(parent), m_grid(new GridView(this)), m_menu(new QMenu(this)), m_caption(caption) {
    setObjectName(QStringLiteral("frmCatalogo"));
    m_grid->setObjectName(QStringLiteral("SpreadCatalogo"));
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_grid);
    resize(640, 420);

    const auto add = [this](const QString& key, const QString& text, auto slot) {
        QAction* a = m_menu->addAction(text);
        a->setObjectName(key);
        connect(a, &QAction::triggered, this, [this, slot] { guarded(this, [&] { slot(); }); });
    };
    m_menu->setObjectName(QStringLiteral("mnuCatalogo"));
    add(QStringLiteral("OrdenarF"), QStringLiteral("&Ordenar Filas"), [this] { sortRows(); });
    add(QStringLiteral("BuscarV"), QStringLiteral("&Buscar Valor"), [this] { searchValue(); });
    add(QStringLiteral("IrAFila"), QStringLiteral("&Ir a Fila"), [this] { goToRow(); });
    add(QStringLiteral("Ocultar"), QStringLiteral("O&cultar Columna"), [this] { hideColumn(); });
    add(QStringLiteral("Exportar"), QStringLiteral("&Exportar"),
        [this] { m_grid->exportToFile(); });
    add(QStringLiteral("Imprimir"), QStringLiteral("Im&primir"),
        [this] { m_grid->printGrid(m_caption); });
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& p) { m_menu->popup(m_grid->viewport()->mapToGlobal(p)); });
    connect(m_grid, &QAbstractItemView::doubleClicked, this, [this] { chooseCurrent(); });

    guarded(this, [&] {
        const int rows = m_grid->load(db, sql, values);
        setWindowTitle(caption + QStringLiteral(" (") + QString::number(rows) +
                       QStringLiteral(" Registros)"));
        if (rows > 0)
            m_grid->setActiveCell(0, 0);
    });
    fitColumns();
}

void CatalogDialog::fitColumns() {
    // Wide enough for every column (a parked sale's total must not be cut), within the screen.
    int width = m_grid->verticalHeader()->sizeHint().width() + 2 * m_grid->frameWidth() +
                m_grid->verticalScrollBar()->sizeHint().width();
    for (int c = 0; c < m_grid->gridModel()->columnCount(); ++c)
        if (!m_grid->isColumnHidden(c))
            width += m_grid->columnWidth(c);
    const QMargins margins = layout()->contentsMargins();
    width += margins.left() + margins.right();
    const QScreen* screen = QGuiApplication::primaryScreen();
    const int room = screen ? screen->availableGeometry().width() * 9 / 10 : width;
    resize(std::clamp(width, 640, std::max(640, room)), height());
}

std::optional<QVariantMap> CatalogDialog::choose(QWidget* parent, const QString& caption,
                                                 const QSqlDatabase& db, const QString& sql,
                                                 const QVariantList& values) {
    CatalogDialog dialog(caption, db, sql, values, parent);
    if (dialog.rowCount() == 0 || dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.chosen();
}

QVariant CatalogDialog::valueOf(const QVariantMap& row, const QString& field) {
    for (auto it = row.begin(); it != row.end(); ++it)
        if (it.key().compare(field, Qt::CaseInsensitive) == 0)
            return it.value();
    return {};
}

QVariantMap CatalogDialog::currentRow() const {
    QVariantMap out;
    const int row = m_grid->activeRow();
    const GridModel* model = m_grid->gridModel();
    if (row < 0)
        return out;
    for (int c = 0; c < model->columnCount(); ++c) {
        const GridColumn& col = model->column(c);
        out.insert(col.field.isEmpty() ? col.caption : col.field, model->value(row, c));
    }
    return out;
}

void CatalogDialog::chooseCurrent() {
    m_chosen = currentRow();
    if (!m_chosen.isEmpty())
        accept();
}

void CatalogDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        chooseCurrent();
        return;
    }
    QDialog::keyPressEvent(event);
}

void CatalogDialog::sortRows() {
    m_grid->sortByColumn(std::max(0, m_grid->activeColumn()), m_sortDescending);
    m_sortDescending = !m_sortDescending;
    m_grid->setActiveCell(0, std::max(0, m_grid->activeColumn()));
}

void CatalogDialog::searchValue() {
    const auto value = dialogs().textInput(this, QStringLiteral("Buscar Valor"),
                                           QStringLiteral("Valor a buscar:"));
    if (value && !value->trimmed().isEmpty())
        m_grid->searchValue(*value, true);
}

void CatalogDialog::goToRow() {
    const auto value =
        dialogs().textInput(this, QStringLiteral("Ir a Fila"), QStringLiteral("Número de fila:"));
    if (value)
        m_grid->goToRow(value->trimmed().toInt());
}

void CatalogDialog::hideColumn() {
    const int c = m_grid->activeColumn();
    if (c >= 0)
        m_grid->hideGridColumn(c);
}

} // namespace orvo::grid
