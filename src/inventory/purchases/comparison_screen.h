#pragma once

#include "inventory/purchases/purchase_types.h"
#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::purchases {

// frmCompararRecepcionCompra: what a reception counted against what its purchases invoiced, by
// barcode, differences marked; printed from the toolbar (Imprimir) or to PDF.
class ComparisonScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    ComparisonScreen(QSqlDatabase db, QWidget* parent = nullptr);

    int recordCount() const override { return int(m_lines.size()); }
    QSize sizeHint() const override { return {1000, 700}; }
    bool offers(Action action) const override;
    // txtRecepcion + Enter.
    void compare(long long reception);
    const QList<ComparisonLine>& lines() const { return m_lines; }

protected:
    void requery() override {}
    void afterNavigate() override {}
    void save() override {}
    void remove() override {}
    void print() override;

private:
    QSqlDatabase m_db;
    long long m_reception = 0;
    QList<ComparisonLine> m_lines;
    QLineEdit* m_number = nullptr;
    QLabel* m_summary = nullptr;
    QTableWidget* m_grid = nullptr;
};

} // namespace orvo::inventory::purchases
