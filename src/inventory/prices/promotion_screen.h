#pragma once

#include "inventory/prices/price_types.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableWidget;
class QTreeWidget;

namespace orvo::inventory::prices {

// frmPreciosPromocion: models chosen by category, brand and reference are put on promotion for a
// period in a new open price list, approved later on the price list screen.
class PromotionScreen : public QWidget {
    Q_OBJECT
public:
    PromotionScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    // The screen's actions.
    void showModels();
    void markAll(bool marked);
    void selectCategory(const QString& code); // empty: every category
    // Returns the new list's number, 0 when the user said no.
    int generate();

    QSize sizeHint() const override { return {1150, 620}; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildUi();
    void startChanged();
    void endChanged();
    QList<ModelKey> markedModels() const;
    ModelFilter filter() const;

    QSqlDatabase m_db;
    QString m_userCode;
    QList<ModelPrices> m_models;

    QTreeWidget* m_categories = nullptr;
    QComboBox* m_brand = nullptr;
    QLineEdit* m_reference = nullptr;
    QTableWidget* m_list = nullptr;
    QLineEdit* m_percent = nullptr;
    QLineEdit* m_wholesale = nullptr;
    QLineEdit* m_member = nullptr;
    QDateEdit* m_start = nullptr;
    QDateEdit* m_end = nullptr;
    QLabel* m_result = nullptr;
};

// frmActualizarPrecios: retail, wholesale and member prices of the whole catalogue from the
// average cost and three margins.
class RepriceScreen : public QWidget {
    Q_OBJECT
public:
    RepriceScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);
    // Returns the articles repriced (0 when the user said no).
    int reprice();

private:
    QSqlDatabase m_db;
    QString m_userCode;
    QLineEdit* m_retail = nullptr;
    QLineEdit* m_wholesale = nullptr;
    QLineEdit* m_member = nullptr;
};

} // namespace orvo::inventory::prices
