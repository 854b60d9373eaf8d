#pragma once

#include "inventory/dispatch/orders.h"

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmConvRemOrdenDesp: txtCliente + Enter, txtNumero (the approved remission) + Enter shows the
// order it makes, priced for the client; Convertir (F12) asks, converts and offers the order's
// print.
class RemissionOrderScreen : public QWidget {
    Q_OBJECT
public:
    RemissionOrderScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {1000, 650}; }
    void setClient(const QString& code);
    void show(long long remission);
    void convert();

private:
    QSqlDatabase m_db;
    shell::SessionContext m_ctx;
    pos::sale::SaleDraft m_draft;
    pos::sale::SaleClient m_client;
    long long m_shown = 0;
    QLineEdit* m_clientCode = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_number = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
};

} // namespace orvo::inventory::dispatch
