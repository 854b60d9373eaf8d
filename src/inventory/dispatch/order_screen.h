#pragma once

#include "inventory/dispatch/orders.h"

#include <QSqlDatabase>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmOrdenDespacho: txtCliente + Enter, then txtCodigo + Enter, txtCantidad + Enter per line;
// F5 alternates the selected line between retail and wholesale, txtDescuento + Enter applies a
// global discount (and closes the entry of items), chkExenta exempts the order, F10 saves (and
// asks for the approval), F2 starts a new order. Enter on an order of the list opens it.
class OrderScreen : public QWidget {
    Q_OBJECT
public:
    OrderScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {1200, 780}; }
    void findClient(const QString& code);
    void addLine(const QString& barcode, const QString& quantity);
    void switchList();
    void applyDiscount(const QString& percent);
    void saveOrder();
    void newOrder();
    void open(long long number);
    void printOrder();
    const pos::sale::SaleDraft& draft() const { return m_draft; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showLines();
    void showOrders();
    void setEditable(bool editable);

    QSqlDatabase m_db;
    shell::SessionContext m_ctx;
    pos::sale::SaleDraft m_draft;
    long long m_number = 0;
    int m_status = 0;
    bool m_usable = true;
    QList<OrderSummary> m_orders;

    QTableWidget* m_list = nullptr;
    QLineEdit* m_client = nullptr;
    QLabel* m_clientName = nullptr;
    QLabel* m_state = nullptr;
    QCheckBox* m_exempt = nullptr;
    QLineEdit* m_note = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QLineEdit* m_discount = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_totals = nullptr;
};

} // namespace orvo::inventory::dispatch
