#pragma once

#include "inventory/purchases/document_screen.h"

namespace orvo::inventory::purchases {

// frmDevCompra: goods sent back to the supplier against an approved purchase, no more than each
// line has left. Approving takes them out of stock; costs stay.
class PurchaseReturnScreen : public DocumentScreen {
    Q_OBJECT
public:
    PurchaseReturnScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    // txtCompra + Enter: the approved purchase with that number (its supplier chosen when
    // several have one).
    void loadPurchase();

protected:
    QList<DocumentSummary> listDocuments() override;
    void showDocument(const DocumentSummary& summary) override;
    void saveDocument() override;
    void deleteDocument(const DocumentSummary& summary) override;
    PrintedDocument printedDocument(const DocumentSummary& summary) override;
    DocumentLine lineFor(const QString& barcode, const Decimal& quantity,
                         const Decimal& price) override;
    Decimal discountPercent() const override { return m_discountPercent; }
    void newRecord() override;

private:
    void showReturnable();

    QLineEdit* m_number = nullptr;
    QLineEdit* m_purchase = nullptr;
    QLabel* m_supplierName = nullptr;
    QDateEdit* m_date = nullptr;
    QLineEdit* m_note = nullptr;
    QTableWidget* m_returnableGrid = nullptr;
    QString m_document;
    QString m_supplier;
    Decimal m_discountPercent;
    QList<ReturnableLine> m_returnable;
};

} // namespace orvo::inventory::purchases
