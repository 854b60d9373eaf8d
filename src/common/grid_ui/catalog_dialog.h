#pragma once

#include "common/grid_ui/grid_view.h"

#include <QDialog>
#include <QVariantMap>
#include <optional>

class QMenu;

namespace orvo::grid {

// frmCatalogo: the one lookup list. The caller gives a caption and a query; the list shows the
// rows with the count in its caption and hands the chosen row back (every field, hidden ones too).
// Its pop-up menu sorts, searches, goes to a row, hides a column, exports and prints.
class CatalogDialog : public QDialog {
    Q_OBJECT
public:
    CatalogDialog(const QString& caption, const QSqlDatabase& db, const QString& sql,
                  const QVariantList& values = {}, QWidget* parent = nullptr);

    // Shows the list and waits; the chosen row, or nothing when cancelled or empty.
    static std::optional<QVariantMap> choose(QWidget* parent, const QString& caption,
                                             const QSqlDatabase& db, const QString& sql,
                                             const QVariantList& values = {});

    GridView* grid() const { return m_grid; }
    QMenu* popupMenu() const { return m_menu; }
    int rowCount() const { return m_grid->gridModel()->rowCount(); }
    // The current row by field name; empty when there is none.
    QVariantMap currentRow() const;
    // Valid after the dialog was accepted. Keys are the field names as the engine returns them
    // (PostgreSQL folds unquoted names to lower case): read them with chosenValue().
    const QVariantMap& chosen() const { return m_chosen; }
    // A field of the chosen row by name, ignoring case.
    QVariant chosenValue(const QString& field) const { return valueOf(m_chosen, field); }
    static QVariant valueOf(const QVariantMap& row, const QString& field);

    void sortRows();
    void searchValue();
    void goToRow();
    void hideColumn();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void chooseCurrent();
    void fitColumns();
    GridView* m_grid;
    QMenu* m_menu;
    QString m_caption;
    QVariantMap m_chosen;
    bool m_sortDescending = false;
};

} // namespace orvo::grid
