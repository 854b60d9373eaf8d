#pragma once

#include "inventory/dispatch/orders.h"

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

enum class OrderSource { Remission, Purchase, Manual };

// frmConvRemOrdenDesp, frmConvCompOrdenDesp and frmConvRemManualOrdenDesp: txtCliente + Enter,
// then the source: txtNumero (the approved remission) or txtProveedor + txtDocumento (the approved
// purchase) + Enter shows the order it makes, priced for the client; a typed list takes txtCodigo
// + txtCantidad + Enter line by line. Convertir (F12) asks, converts and offers the order's print.
class RemissionOrderScreen : public QWidget {
    Q_OBJECT
public:
    RemissionOrderScreen(QSqlDatabase db, shell::SessionContext ctx,
                         OrderSource source = OrderSource::Remission, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {1000, 650}; }
    void setClient(const QString& code);
    void show();
    void addTyped(const QString& barcode, const Decimal& quantity);
    void convert();

private:
    void showDraft();

    QSqlDatabase m_db;
    shell::SessionContext m_ctx;
    pos::sale::SaleDraft m_draft;
    pos::sale::SaleClient m_client;
    OrderSource m_source;
    bool m_shown = false;
    QLineEdit* m_clientCode = nullptr;
    QLineEdit* m_supplier = nullptr;
    QLineEdit* m_quantity = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_number = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
};

} // namespace orvo::inventory::dispatch
