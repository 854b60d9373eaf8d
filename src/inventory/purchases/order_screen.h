#pragma once

#include "inventory/purchases/document_screen.h"

class QComboBox;

namespace orvo::inventory::purchases {

// frmOrdenCompras: what was ordered from a supplier. Approving it moves no stock.
class OrderScreen : public DocumentScreen {
    Q_OBJECT
public:
    OrderScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

protected:
    QList<DocumentSummary> listDocuments() override;
    void showDocument(const DocumentSummary& summary) override;
    void saveDocument() override;
    void deleteDocument(const DocumentSummary& summary) override;
    PrintedDocument printedDocument(const DocumentSummary& summary) override;

private:
    QLineEdit* m_number = nullptr;
    QComboBox* m_supplier = nullptr;
    QDateEdit* m_date = nullptr;
    QLineEdit* m_note = nullptr;
};

// The active suppliers in a combo box ("NAME (CODE)"), the code as item data.
QComboBox* supplierCombo(QWidget* parent, const QSqlDatabase& db);
void selectSupplier(QComboBox* box, const QString& code);

} // namespace orvo::inventory::purchases
