#pragma once

#include "common/grid_ui/grid_view.h"
#include "inventory/articles/articles.h"
#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QTableView;
class QTableWidget;
class QTreeWidget;

namespace orvo::inventory {

// frmArticulos: the model browser and the model form with its size-by-colour grid of barcodes.
class ArticlesScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    ArticlesScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    int recordCount() const override;
    // Shows the model at `row` of the browser.
    void navigateTo(int row);

    // The grid's pop-up menu actions, also reachable by tests.
    void insertSizeRow(int row, const QString& size);
    void deleteSizeRow(int row);
    void insertColourColumn(int column, const QString& colourCode);
    void deleteColourColumn(int column);

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void modifyRecord() override;
    void cancelRecord() override;

private:
    void buildForm();
    void loadCatalogues();
    void showModel(const LoadedModel& lm);
    ArticleModel modelFromControls() const;
    void rebuildGrid();
    void updateVariantLabel();
    void updateEditability();
    // A cell typed in is checked once the view has finished its edit: a message box shown
    // inside the edit's commit left the refused code in the cell, or moved it to another.
    void cellChanged(int row, int column);
    // Checks the cells typed since the last check; the first refusal clears its cell and is
    // thrown.
    void checkTypedCells();
    void checkTypedCellsShowingRefusals();
    void sizeTicked(QListWidgetItem* item);
    void colourTicked(QListWidgetItem* item);
    void gridMenu(const QPoint& pos);
    Decimal taxRate() const;
    void pairChanged(QLineEdit* beforeTax, QLineEdit* withTax, bool fromBeforeTax);
    void discountTyped();
    void promotionPriceTyped();
    void selectCategory(const QString& code);
    QString selectedCategory() const;
    void clearModelForm();
    // Reference and brand code of the browser's row.
    QPair<QString, QString> keyAt(int row) const;
    int rowOf(const QString& reference, const QString& brand) const;
    void runSearch() override;

    QSqlDatabase m_db;
    QString m_userCode;
    bool m_seePrices = false;
    bool m_seeCosts = false;
    ModelGrid m_grid;
    bool m_filling = false;
    QList<QPair<int, int>> m_typedCells; // typed, not checked yet
    int m_current = -1;

    grid::GridView* m_browser = nullptr;
    QLineEdit* m_reference = nullptr;
    QComboBox* m_brand = nullptr;
    QLineEdit* m_name = nullptr;
    QTreeWidget* m_categories = nullptr;
    QComboBox* m_manufacturer = nullptr;
    QComboBox* m_tax = nullptr;
    QLineEdit* m_reorder = nullptr;
    QLineEdit* m_note = nullptr;
    QLineEdit* m_retail = nullptr;
    QLineEdit* m_retailTax = nullptr;
    QLineEdit* m_wholesale = nullptr;
    QLineEdit* m_wholesaleTax = nullptr;
    QLineEdit* m_member = nullptr;
    QLineEdit* m_memberTax = nullptr;
    QLineEdit* m_promotionPrice = nullptr;
    QLineEdit* m_promotionPriceTax = nullptr;
    QLineEdit* m_discount = nullptr;
    QDateEdit* m_start = nullptr;
    QDateEdit* m_end = nullptr;
    QLineEdit* m_initialCost = nullptr;
    QLineEdit* m_averageCost = nullptr;
    QLineEdit* m_lastCost = nullptr;
    QLineEdit* m_dollarCost = nullptr;
    QButtonGroup* m_type = nullptr;
    QButtonGroup* m_status = nullptr;
    QButtonGroup* m_promotion = nullptr;
    QCheckBox* m_serialized = nullptr;
    QCheckBox* m_fractional = nullptr;
    QListWidget* m_sizes = nullptr;
    QListWidget* m_colours = nullptr;
    QTableWidget* m_gridView = nullptr;
    QLabel* m_variants = nullptr;
};

} // namespace orvo::inventory
