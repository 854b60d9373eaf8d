#pragma once

#include "common/grid/grid_model.h"

#include <QTableView>

namespace orvo::grid {

// The grid every screen shows its lines and lists in: a QTableView over a GridModel, with typed
// editors (numbers, dates, check boxes, drop-down lists) and the grid services screens call.
// Messages and file or printer choices go through dialogs().
class GridView : public QTableView {
    Q_OBJECT
public:
    explicit GridView(QWidget* parent = nullptr);

    GridModel* gridModel() const { return m_model; }
    void setColumns(const QList<GridColumn>& columns);

    // Loads the grid from a query; an empty result says "No hay datos registrados." unless
    // `silent` ("SinMsj"). Returns the number of rows.
    int load(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {},
             bool silent = false);

    // Moves the active cell and shows it.
    void setActiveCell(int row, int column);
    int activeRow() const;
    int activeColumn() const;
    int columnByCaption(const QString& caption) const { return m_model->columnByCaption(caption); }
    // "BuscarV": the first row whose visible cells match becomes active; otherwise the two-line
    // message and the active cell stays. Returns whether a row was found.
    bool searchValue(const QString& value, bool like = true);
    // Searches one column; the found cell becomes active.
    bool goToValue(int column, const QString& value);
    // 1-based row number, as the user counts.
    bool goToRow(int rowNumber);
    void hideGridColumn(int column);
    // Accion_Spread7: an action on rows r1..r2 by columns c1..c2. Hide hides the columns when
    // r1 is negative (the whole column), otherwise the rows.
    enum class BlockAction { Lock, Unlock, Hide, Clear, Select };
    void blockAction(BlockAction action, int r1, int r2, int c1, int c2);
    // Sorts by a column: re-queries a query-fed grid, sorts the loaded rows otherwise.
    void sortByColumn(int column, bool descending);
    // Asks for a file ("Guardar como") and saves the visible columns tab-delimited. False when
    // cancelled.
    bool exportToFile();
    // Asks for a printer and prints the grid under `title`. False when cancelled.
    bool printGrid(const QString& title);

private:
    void applyHiddenColumns();
    GridModel* m_model;
};

} // namespace orvo::grid
