#pragma once

#include "inventory/purchases/document_screen.h"

class QButtonGroup;
class QComboBox;

namespace orvo::inventory::purchases {

// frmCompras: the supplier's invoice. Approving it (asked at save when every line has a price)
// adds the goods to stock at their prorated cost.
class PurchaseScreen : public DocumentScreen {
    Q_OBJECT
public:
    PurchaseScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    // The grid's pop-up menu and the buttons, also reachable by tests.
    void loadFromOrder();
    void loadFromSisterCompany();
    void loadFromPackingList();
    void changePriceOfModel(int row);
    void chooseLot();
    void searchValue();
    void goToRow();

protected:
    QList<DocumentSummary> listDocuments() override;
    void showDocument(const DocumentSummary& summary) override;
    void saveDocument() override;
    void deleteDocument(const DocumentSummary& summary) override;
    PrintedDocument printedDocument(const DocumentSummary& summary) override;
    Decimal discountPercent() const override;
    void newRecord() override;

private:
    Purchase purchaseFromControls() const;
    void appendLines(const QList<DocumentLine>& lines);
    void gridMenu(const QPoint& pos);
    void updateButtons();

    QLineEdit* m_document = nullptr;
    QComboBox* m_supplier = nullptr;
    QDateEdit* m_date = nullptr;
    QDateEdit* m_invoiceDate = nullptr;
    QComboBox* m_paymentType = nullptr;
    QLineEdit* m_creditDays = nullptr;
    QLineEdit* m_file = nullptr;
    QLineEdit* m_note = nullptr;
    QLineEdit* m_exchangeRate = nullptr;
    QLineEdit* m_discountPercent = nullptr;
    QLineEdit* m_accountingTax = nullptr;
    QLineEdit* m_surcharges = nullptr;
    QLineEdit* m_serviceFee = nullptr;
    QLineEdit* m_otherTaxes = nullptr;
    QLineEdit* m_freight = nullptr;
    QLineEdit* m_insurance = nullptr;
    QButtonGroup* m_valuation = nullptr;
    QLabel* m_generalTax = nullptr;
    QLabel* m_lot = nullptr;
    long long m_lotId = 0;
    QList<QPushButton*> m_editButtons;
};

} // namespace orvo::inventory::purchases
