#include "inventory/purchases/order_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/purchases.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QLineEdit>

namespace orvo::inventory::purchases {

QComboBox* supplierCombo(QWidget* parent, const QSqlDatabase& db) {
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("cboProveedor"));
    for (const store::Supplier& s : store::activeSuppliers(db))
        box->addItem(s.name + QStringLiteral(" (") + s.code + QStringLiteral(")"), s.code);
    box->setCurrentIndex(-1);
    return box;
}

void selectSupplier(QComboBox* box, const QString& code) {
    int at = box->findData(code);
    if (at < 0 && !code.isEmpty()) {
        // An inactive supplier still shows on its old documents.
        box->addItem(code, code);
        at = box->count() - 1;
    }
    box->setCurrentIndex(at);
}

OrderScreen::OrderScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : DocumentScreen(std::move(db), std::move(userCode), kOrderScreen,
                     QStringLiteral("Órdenes de compra"), QStringLiteral("SpreadOrdenCompras"),
                     true, parent) {
    m_number = textField(QStringLiteral("txtNumero"), 12);
    m_number->setReadOnly(true);
    markKey(m_number);
    header()->addRow(QStringLiteral("Número"), m_number);
    m_supplier = supplierCombo(this, m_db);
    markRequired(m_supplier, QStringLiteral("el proveedor"));
    header()->addRow(QStringLiteral("Proveedor"), m_supplier);
    m_date = dateField(QStringLiteral("dtpFecha"));
    headerRight()->addRow(QStringLiteral("Fecha"), m_date);
    m_note = textField(QStringLiteral("txtObservacion"), 255);
    headerRight()->addRow(QStringLiteral("Observación"), m_note);
    finish();
}

QList<DocumentSummary> OrderScreen::listDocuments() {
    return listOrders(m_db);
}

void OrderScreen::showDocument(const DocumentSummary& summary) {
    const auto o = loadOrder(m_db, summary.number.toLongLong());
    if (!o)
        return;
    m_number->setText(QString::number(o->number));
    selectSupplier(m_supplier, o->supplier);
    m_date->setDate(o->date.date());
    m_note->setText(o->note);
    setLines(o->lines);
    setStatus(o->status);
}

void OrderScreen::saveDocument() {
    PurchaseOrder o;
    o.number = mode() == Mode::Adding ? 0 : m_number->text().toLongLong();
    o.supplier = m_supplier->currentData().toString();
    o.date = QDateTime(m_date->date(), QTime(0, 0));
    o.note = m_note->text();
    o.user = m_userCode;
    o.lines = keyedLines();
    checkOrder(o);
    // As with purchases, an order with a line still without price is saved open.
    const bool approve =
        rules::everyLineHasPrice(o.lines) &&
        dialogs().question(this, QStringLiteral("Desea aprobar la orden compra...?"),
                           QStringLiteral("Aprobar orden de compra"), false);
    const long long number =
        saveOrder(m_db, o, approve, [this](const QString& text) { showProgress(text); });
    selectAfterRequery(QString::number(number));
}

void OrderScreen::deleteDocument(const DocumentSummary& summary) {
    deleteOrder(m_db, summary.number.toLongLong());
}

PrintedDocument OrderScreen::printedDocument(const DocumentSummary& summary) {
    return orderDocument(m_db, summary.number.toLongLong());
}

} // namespace orvo::inventory::purchases
