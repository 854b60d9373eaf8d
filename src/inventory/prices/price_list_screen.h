#pragma once

#include "inventory/prices/price_types.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;

namespace orvo::inventory::prices {

// frmListaPrecios: a price list keyed by model (cost, suggested and chosen prices, promotion and
// its dates), saved, approved and written into every variant of its models.
class PriceListScreen : public QWidget {
    Q_OBJECT
public:
    PriceListScreen(QSqlDatabase db, QString userCode, QString recibeFolder = {},
                    QWidget* parent = nullptr);

    const PriceList& list() const { return m_list; }
    QSize sizeHint() const override { return {1450, 760}; }

    // The screen's actions, as its buttons and keys run them (tests call them directly where a
    // lookup list would be chosen from).
    void newList();
    void openList(int number);
    void addModel(const QString& reference, const QString& brand);
    void removeLine(int row);
    void loadFromList(int number);
    void loadFromReceivedFile(); // MoviList.dbf / MovLista.dbf in Recibe
    void applyDiscount();
    void removeDiscount();
    void save();
    void applyToInventory();
    void print();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void buildUi();
    void showList();
    void showLine(int row);
    void cellEdited(QTableWidgetItem* item);
    void factorsEdited();
    void chooseModel();
    void chooseList();
    void chooseListToLoad();
    void setEditable(bool editable);

    QSqlDatabase m_db;
    QString m_userCode;
    QString m_recibe;
    PriceList m_list;
    bool m_filling = false;

    QLineEdit* m_number = nullptr;
    QLineEdit* m_date = nullptr;
    QLabel* m_status = nullptr;
    QLineEdit* m_note = nullptr;
    QLineEdit* m_retailFactor = nullptr;
    QLineEdit* m_wholesaleFactor = nullptr;
    QLineEdit* m_memberFactor = nullptr;
    QLineEdit* m_reference = nullptr;
    QComboBox* m_brand = nullptr;
    QTableWidget* m_lines = nullptr;
    QLineEdit* m_discount = nullptr;
    QDateEdit* m_from = nullptr;
    QDateEdit* m_to = nullptr;
    QLabel* m_taxNote = nullptr;
    QList<QWidget*> m_editing; // enabled only while the list is open
    QPushButton* m_apply = nullptr;
};

} // namespace orvo::inventory::prices
