#pragma once

#include "pos/sale/sale.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>

// frmConvTransferFact: a received transfer or an approved purchase invoiced on to a client as a
// credit sale of this register: the till's own save numbers it by the register's counter, records
// it on the register's day (DIARIOCAJA), takes the goods out of stock and leaves it pending print.
// Each document is invoiced once only (logged 'TE' or 'CO' → 'FA'), and every invoice made is
// added to "FacturasAutomaticas.txt".
namespace orvo::inventory::dispatch {

inline const QString kInvoiceConversionScreen = QStringLiteral("frmConvTransferFact");

enum class InvoiceSource { Transfer, Purchase };

struct InvoiceSourceDocument {
    InvoiceSource source = InvoiceSource::Transfer;
    QString number; // the transfer's Numero or the purchase's Documento
    QString from;   // the sending store or the supplier
    QDateTime date;
    Decimal value;
};
// Received transfers (loaded, Status 1) or approved purchases not invoiced yet, newest first.
QList<InvoiceSourceDocument> documentsToInvoice(const QSqlDatabase& db, InvoiceSource source);

// The invoice draft: the client and the seller, on credit, the document's lines summed by barcode
// at the client's list, checked as the till checks them.
pos::sale::SaleDraft invoiceDraft(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  const InvoiceSourceDocument& document,
                                  const pos::sale::SaleClient& client,
                                  const pos::sale::SaleSeller& seller);

// Saves the invoice, marks the document invoiced in the same transaction and lists the invoice
// in FacturasAutomaticas.txt. Returns the invoice's number.
long long convertToInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                           const InvoiceSourceDocument& document, const pos::sale::SaleDraft& draft,
                           pos::sale::SalePrinter* printer);

// The observation of the log: "Factura generada aut. por la transferencia Nº " / "... compra Nº ".
QString invoiceNote(const InvoiceSourceDocument& document);

} // namespace orvo::inventory::dispatch
