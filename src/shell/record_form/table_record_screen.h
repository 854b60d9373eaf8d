#pragma once

#include "shell/record_form/record_screen.h"
#include "shell/record_form/record_table.h"

#include <QHash>
#include <QSqlDatabase>

namespace orvo::grid {
class GridView;
}

namespace orvo::shell {

// A record screen built from a RecordTable: one control per field (named as the description
// says), the query set listed in a grid (grdConsulta) to browse, the generic toolbar actions,
// search by the typed values and the catalogue report on Imprimir.
class TableRecordScreen : public RecordScreen {
    Q_OBJECT
public:
    TableRecordScreen(RecordTable table, QSqlDatabase db, QString actingUser,
                      QWidget* parent = nullptr);

    const RecordTable& table() const { return m_table; }
    int recordCount() const override { return int(m_rows.rows.size()); }
    int currentRow() const { return m_current; }
    QVariant currentKey() const;
    // Moves to the row with `key`; false when it is not in the set.
    bool showKey(const QVariant& key);
    grid::GridView* browser() const { return m_browser; }

    // The field values as typed, by column.
    QList<QPair<QString, QVariant>> typedValues() const;
    // HTML of the catalogue report (every row of the set).
    QString catalogueHtml() const;

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void beginSearch() override;
    void runSearch() override;
    QString proposedKey() const override;
    // The row to show after the next requery (the one just saved).
    void keepKeyAfterRequery(const QVariant& key) { m_keyAfterRequery = key; }

    QSqlDatabase m_db;
    QString m_actingUser;

private:
    void buildControls();
    void fillBrowser();
    void setFieldValue(const RecordField& f, const QVariant& value);
    QVariant fieldValue(const RecordField& f) const;
    void onBrowserRowChanged(int row);

    RecordTable m_table;
    RecordRows m_rows;
    int m_current = -1;
    QVariant m_keyAfterRequery;
    grid::GridView* m_browser = nullptr;
    QHash<QString, QWidget*> m_controls; // by column
};

} // namespace orvo::shell
