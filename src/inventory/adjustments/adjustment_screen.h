#pragma once

#include "inventory/adjustments/adjustment_types.h"
#include "inventory/purchases/document_screen.h"

class QComboBox;

namespace orvo::inventory::adjustments {

// frmAjustes: an adjustment's type (cboTipoAjuste, its sign beside it), date and note, its lines
// keyed by barcode and quantity at the article's average cost, or loaded from a transfer (F5), a
// transfer return (F6) or a packing list (F8). Saving asks whether to approve: approving moves the
// stock by the type's sign; an approved adjustment is read-only.
class AdjustmentScreen : public purchases::DocumentScreen {
    Q_OBJECT
public:
    AdjustmentScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    void loadFromTransfer();
    void loadFromTransferReturn();
    void loadFromPackingList();

protected:
    QList<purchases::DocumentSummary> listDocuments() override;
    void showDocument(const purchases::DocumentSummary& summary) override;
    void saveDocument() override;
    void deleteDocument(const purchases::DocumentSummary& summary) override;
    purchases::PrintedDocument printedDocument(const purchases::DocumentSummary& summary) override;
    purchases::DocumentLine lineFor(const QString& barcode, const Decimal& quantity,
                                    const Decimal& price) override;
    void newRecord() override;

private:
    void appendLines(const QList<AdjustmentLine>& lines,
                     const QList<purchases::PackingList::Missing>& missing = {});
    void showSign();
    void chooseLot();
    void updateButtons();

    QLineEdit* m_number = nullptr;
    QComboBox* m_type = nullptr;
    QLabel* m_sign = nullptr;
    QDateEdit* m_date = nullptr;
    QLineEdit* m_note = nullptr;
    QLabel* m_lot = nullptr;
    long long m_lotId = 0;
    QList<QPushButton*> m_editButtons;
};

} // namespace orvo::inventory::adjustments
