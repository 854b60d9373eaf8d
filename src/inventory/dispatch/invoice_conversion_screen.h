#pragma once

#include "inventory/dispatch/invoice_conversion.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmConvTransferFact: cboTipoDocumento (received transfer or purchase), grdDocumentos (the ones
// not invoiced yet), txtCliente + Enter, txtVendedor + Enter, Facturar (F12) asks, saves the
// invoice and offers to print it now (otherwise the till prints it before its next sale).
class InvoiceConversionScreen : public QWidget {
    Q_OBJECT
public:
    InvoiceConversionScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent = nullptr);
    ~InvoiceConversionScreen() override;

    QSize sizeHint() const override { return {1000, 650}; }
    void fillDocuments();
    void setClient(const QString& code);
    void setSeller(const QString& code);
    void invoice();

private:
    InvoiceSource source() const;
    pos::sale::SalePrinter* printer();

    QSqlDatabase m_db;
    shell::SessionContext m_ctx;
    QList<InvoiceSourceDocument> m_documents;
    pos::sale::SaleClient m_client;
    pos::sale::SaleSeller m_seller;
    std::unique_ptr<pos::sale::SalePrinter> m_printer;
    QComboBox* m_source = nullptr;
    QTableWidget* m_grid = nullptr;
    QLineEdit* m_clientCode = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_sellerCode = nullptr;
    QLabel* m_sellerName = nullptr;
    QLabel* m_status = nullptr;
};

} // namespace orvo::inventory::dispatch
