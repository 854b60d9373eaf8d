#pragma once

#include "inventory/purchases/document_screen.h"
#include "inventory/transfers/transfer_types.h"

class QComboBox;
class QMenu;

namespace orvo::inventory::transfers {

// The active branches other than this store ("02 - TIENDA VALENCIA"), none chosen: cboSucursal.
QComboBox* branchCombo(QWidget* parent, const QSqlDatabase& db);

// frmTransferencias and frmDevTransferencias: a transfer to another branch, or the goods another
// branch gives back, keyed box by box (txtCaja, then barcode and quantity) or loaded from another
// document. Guardar asks whether to approve: a transfer then takes the goods out of stock at
// their cost, a return takes them in. An approved document is sent with Enviar (its package for
// the other store).
class TransferScreen : public purchases::DocumentScreen {
    Q_OBJECT
public:
    TransferScreen(Kind kind, QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    // The buttons and the grid's pop-up menu, also reachable by tests.
    void newBox();
    void loadFromAdjustment();
    void loadFromReturn();
    void loadFromDraft();
    void loadFromFile(const QString& caption);
    void loadFromOrders();
    void chooseLot();
    void send();

protected:
    QList<DocumentSummary> listDocuments() override;
    void showDocument(const DocumentSummary& summary) override;
    void saveDocument() override;
    void deleteDocument(const DocumentSummary& summary) override;
    purchases::PrintedDocument printedDocument(const DocumentSummary& summary) override;
    DocumentLine lineFor(const QString& barcode, const Decimal& quantity,
                         const Decimal& price) override;
    QList<Column> lineColumns() const override;
    QStringList lineCells(const DocumentLine& line) const override;
    QList<TotalField> totalFields() const override;
    QStringList totalTexts(const QList<DocumentLine>& lines) const override;
    void newRecord() override;

private:
    Transfer transferFromControls() const;
    // Adds lines of another document after checking them; those this store cannot send are
    // listed for the user. `intoCurrentBox`: the lines go into the box being keyed.
    void appendChecked(const QList<DocumentLine>& raw, bool intoCurrentBox);
    void updateButtons();
    QMenu* loadMenu();

    Kind m_kind;
    QLineEdit* m_number = nullptr;
    QComboBox* m_branch = nullptr;
    QDateEdit* m_date = nullptr;
    QLineEdit* m_origin = nullptr;
    QComboBox* m_dispatch = nullptr;
    QLineEdit* m_note = nullptr;
    QLabel* m_lot = nullptr;
    long long m_lotId = 0;
    QList<QPushButton*> m_editButtons;
    QPushButton* m_send = nullptr;
};

} // namespace orvo::inventory::transfers
