#pragma once

#include "inventory/dispatch/transfer_conversions.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmConvRemTransfer, frmConvCompTransfer and frmConvRecDevTransfer: the source document
// (txtNumero, or txtProveedor + txtDocumento for a purchase) + Enter shows the transfer it makes;
// cboTipoDespacho (required from a remission), cboSucursal (a purchase's destination); Convertir
// (F12) asks, converts and offers the transfer's print.
class TransferConversionScreen : public QWidget {
    Q_OBJECT
public:
    TransferConversionScreen(QSqlDatabase db, QString userCode, TransferSource source,
                             QWidget* parent = nullptr);

    QSize sizeHint() const override { return {1000, 650}; }
    void show();
    void convert();

private:
    TransferRequest request() const;
    void clear();

    QSqlDatabase m_db;
    QString m_userCode;
    TransferSource m_source;
    bool m_shown = false;
    QLineEdit* m_number = nullptr;
    QLineEdit* m_supplier = nullptr;
    QComboBox* m_branch = nullptr;
    QComboBox* m_dispatch = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
};

} // namespace orvo::inventory::dispatch
