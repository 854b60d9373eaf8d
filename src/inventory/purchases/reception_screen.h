#pragma once

#include "inventory/purchases/box_kind.h"
#include "inventory/purchases/purchase_types.h"
#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::inventory::purchases {

// frmRecepcion: the reception's header and the purchases it covers go through the record
// toolbar; below, each user counts his own box (txtCodigo, Enter, txtCantidad, Enter), saves it
// (GuardarCaja), closes it (Finalizar) and, once every box is closed, the reception is approved.
// The box being counted is kept in a local backup file after every scan. The remission, counted
// the same way, is this screen on its own tables.
class ReceptionScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    ReceptionScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr,
                    const BoxKind& kind = receptionKind());
    ~ReceptionScreen() override;

    int recordCount() const override { return int(m_receptions.size()); }
    QSize sizeHint() const override { return {1250, 820}; }
    bool offers(Action action) const override;

    void navigateTo(int row);
    // Steps of the screen, as its fields and buttons run them.
    void addPurchase();
    void scan(const QString& barcode, const QString& quantity);
    void saveBox();
    void closeBox();
    void deleteBox();
    void approve() override;
    void printBox();
    // A packing list counted into the box instead of scanning.
    void loadPackingList();
    const Box& box() const { return m_box; }

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void cancelRecord() override;
    void beginSearch() override;
    void runSearch() override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const DocumentSummary* current() const;
    void showReception(const Reception& r);
    void showPurchases();
    void showBox();
    void showBoxes();
    void updateEditability();
    void backUp();
    void offerBackup();
    bool boxHasUnsavedLines() const;

    QSqlDatabase m_db;
    QString m_userCode;
    const BoxKind* m_kind;
    QList<DocumentSummary> m_receptions;
    int m_current = -1;
    QString m_pending;
    Reception m_reception;
    Box m_box;
    bool m_boxDirty = false;

    QTableWidget* m_browser = nullptr;
    QLineEdit* m_number = nullptr;
    QComboBox* m_branch = nullptr;
    QDateEdit* m_date = nullptr;
    QLineEdit* m_origin = nullptr;
    QLineEdit* m_note = nullptr;
    QComboBox* m_originType = nullptr;
    QLineEdit* m_purchase = nullptr;
    QTableWidget* m_purchases = nullptr;
    QLabel* m_state = nullptr;
    QLabel* m_boxLabel = nullptr;
    QTableWidget* m_boxes = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QTableWidget* m_boxGrid = nullptr;
    QList<QPushButton*> m_boxButtons;
};

} // namespace orvo::inventory::purchases
