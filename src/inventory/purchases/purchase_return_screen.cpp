#include "inventory/purchases/purchase_return_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/choice_dialog.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/purchases.h"
#include "inventory/stock/date_guard_edit.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::purchases {

PurchaseReturnScreen::PurchaseReturnScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : DocumentScreen(std::move(db), std::move(userCode), kReturnScreen,
                     QStringLiteral("Devoluciones de compra"), QStringLiteral("SpreadDevCompra"),
                     false, parent) {
    m_number = textField(QStringLiteral("txtNumero"), 12);
    m_number->setReadOnly(true);
    markKey(m_number);
    header()->addRow(QStringLiteral("Número"), m_number);
    m_purchase = textField(QStringLiteral("txtCompra"), 12);
    header()->addRow(QStringLiteral("Compra Nº"), m_purchase);
    m_supplierName = new QLabel(this);
    m_supplierName->setObjectName(QStringLiteral("lblProveedor"));
    header()->addRow(QStringLiteral("Proveedor"), m_supplierName);
    m_date = dateField(QStringLiteral("dtpFecha"));
    stock::guardDocumentDate(m_date, m_db);
    headerRight()->addRow(QStringLiteral("Fecha"), m_date);
    m_note = textField(QStringLiteral("txtObservacion"), 255);
    headerRight()->addRow(QStringLiteral("Observación"), m_note);
    m_returnableGrid = new QTableWidget(0, 4, this);
    m_returnableGrid->setObjectName(QStringLiteral("SpreadCompra"));
    m_returnableGrid->setHorizontalHeaderLabels(
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Precio"),
         QStringLiteral("Por devolver")});
    m_returnableGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_returnableGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_returnableGrid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_returnableGrid->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_returnableGrid->setMaximumHeight(160);
    m_form->addWidget(m_returnableGrid);
    // A returnable line double-clicked goes to the keying row.
    connect(m_returnableGrid, &QTableWidget::cellDoubleClicked, this, [this](int row) {
        if (isEditing() && row >= 0 && row < m_returnable.size()) {
            m_code->setText(m_returnable[row].barcode);
            m_quantity->setFocus();
            m_quantity->selectAll();
        }
    });
    finish();
    // Enter in txtCompra loads the purchase, then the keying row follows.
    connect(m_purchase, &QLineEdit::editingFinished, this, [this] {
        if (isEditing() && m_purchase->text().trimmed() != m_document)
            guarded(this, [&] { loadPurchase(); });
    });
}

QList<DocumentSummary> PurchaseReturnScreen::listDocuments() {
    return listPurchaseReturns(m_db);
}

void PurchaseReturnScreen::showReturnable() {
    m_returnableGrid->setRowCount(0);
    m_returnableGrid->setRowCount(int(m_returnable.size()));
    const QLocale locale;
    for (int r = 0; r < m_returnable.size(); ++r) {
        const ReturnableLine& l = m_returnable[r];
        m_returnableGrid->setItem(r, 0, new QTableWidgetItem(l.barcode));
        m_returnableGrid->setItem(r, 1, new QTableWidgetItem(l.name));
        m_returnableGrid->setItem(r, 2, new QTableWidgetItem(l.price.toLocaleString(locale, 6)));
        m_returnableGrid->setItem(r, 3,
                                  new QTableWidgetItem(l.returnable.toLocaleString(locale, 2)));
    }
}

void PurchaseReturnScreen::loadPurchase() {
    const QString number = m_purchase->text().trimmed();
    if (number.isEmpty())
        return;
    const QList<DocumentSummary> found = store::approvedPurchases(m_db, number);
    QList<QStringList> rows;
    for (const DocumentSummary& s : found)
        rows.append(
            {s.number, s.supplier, s.supplierName, s.date.toString(QStringLiteral("dd/MM/yyyy"))});
    if (found.isEmpty())
        throw UserError(QStringLiteral("La compra no existe o no ha sido aprobada...!"));
    const auto which = ChoiceDialog::choose(this, QStringLiteral("Compras"),
                                            {QStringLiteral("Factura"), QStringLiteral("Código"),
                                             QStringLiteral("Proveedor"), QStringLiteral("Fecha")},
                                            rows);
    if (!which)
        return;
    const DocumentSummary& chosen = found[*which];
    m_document = chosen.number;
    m_supplier = chosen.supplier;
    m_supplierName->setText(chosen.supplier + QStringLiteral(" - ") + chosen.supplierName);
    m_discountPercent = purchases::loadPurchase(m_db, m_document, m_supplier)->discountPercent;
    m_returnable = returnableLines(m_db, m_document, m_supplier);
    showReturnable();
    setLines({});
    m_code->setFocus();
}

void PurchaseReturnScreen::showDocument(const DocumentSummary& summary) {
    const auto r = loadPurchaseReturn(m_db, summary.number.toLongLong());
    if (!r)
        return;
    m_number->setText(QString::number(r->number));
    m_document = r->document;
    m_supplier = r->supplier;
    m_discountPercent = r->discountPercent;
    m_purchase->setText(r->document);
    m_supplierName->setText(r->supplier + QStringLiteral(" - ") +
                            store::supplierName(m_db, r->supplier));
    m_date->setDate(r->date.date());
    m_note->setText(r->note);
    m_returnable = returnableLines(m_db, r->document, r->supplier);
    showReturnable();
    setLines(r->lines);
    setStatus(r->status);
}

DocumentLine PurchaseReturnScreen::lineFor(const QString& barcode, const Decimal& quantity,
                                           const Decimal&) {
    if (m_document.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar la compra a devolver...!"));
    QList<DocumentLine> lines = keyedLines();
    addReturnLine(lines, m_returnable, barcode, quantity);
    return lines.last();
}

void PurchaseReturnScreen::newRecord() {
    DocumentScreen::newRecord();
    m_document.clear();
    m_supplier.clear();
    m_discountPercent = Decimal();
    m_supplierName->clear();
    m_returnable.clear();
    showReturnable();
}

void PurchaseReturnScreen::saveDocument() {
    PurchaseReturn r;
    r.number = mode() == Mode::Adding ? 0 : m_number->text().toLongLong();
    r.date = QDateTime(m_date->date(), QTime(0, 0));
    r.document = m_document;
    r.supplier = m_supplier;
    r.note = m_note->text();
    r.user = m_userCode;
    r.lines = keyedLines();
    checkPurchaseReturn(r);
    const bool approve =
        dialogs().question(this, QStringLiteral("Desea Aprobar la devolución de compra ?"),
                           QStringLiteral("Aprobar transferencia"), false);
    const long long number = savePurchaseReturn(m_db, r, approve);
    selectAfterRequery(QString::number(number));
}

void PurchaseReturnScreen::deleteDocument(const DocumentSummary& summary) {
    deletePurchaseReturn(m_db, summary.number.toLongLong());
}

PrintedDocument PurchaseReturnScreen::printedDocument(const DocumentSummary& summary) {
    return purchaseReturnDocument(m_db, summary.number.toLongLong());
}

} // namespace orvo::inventory::purchases
