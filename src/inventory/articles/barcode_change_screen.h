#pragma once

#include "inventory/articles/barcode_change.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory {

// frmCambiarCodigos: new barcodes typed beside the current ones of a model's variants.
class BarcodeChangeScreen : public QWidget {
    Q_OBJECT
public:
    BarcodeChangeScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    void search();
    void saveChanges();

private:
    void newCodeTyped(int row, int column);

    QSqlDatabase m_db;
    QString m_userCode;
    QString m_brandShown;
    QString m_referenceShown;
    bool m_filling = false;
    QComboBox* m_brand = nullptr;
    QLineEdit* m_reference = nullptr;
    QTableWidget* m_codes = nullptr;
};

} // namespace orvo::inventory
