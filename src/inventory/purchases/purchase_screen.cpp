#include "inventory/purchases/purchase_screen.h"

#include "common/db/connection.h"
#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "common/grid_ui/catalog_dialog.h"
#include "inventory/articles/lots_screen.h"
#include "inventory/purchases/choice_dialog.h"
#include "inventory/purchases/line_sources.h"
#include "inventory/purchases/order_screen.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/purchases.h"
#include "inventory/stock/date_guard_edit.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

namespace orvo::inventory::purchases {

PurchaseScreen::PurchaseScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : DocumentScreen(std::move(db), std::move(userCode), kPurchaseScreen, QStringLiteral("Compras"),
                     QStringLiteral("SpreadCompras"), true, parent) {
    QFormLayout* left = header();
    m_supplier = supplierCombo(this, m_db);
    markKey(m_supplier);
    markRequired(m_supplier, QStringLiteral("el proveedor"));
    left->addRow(QStringLiteral("Proveedor"), m_supplier);
    m_document = textField(QStringLiteral("txtDocumento"), 12);
    markKey(m_document);
    markRequired(m_document, QStringLiteral("el número de la factura"));
    left->addRow(QStringLiteral("Factura Nº"), m_document);
    m_date = dateField(QStringLiteral("dtpFecha"));
    stock::guardDocumentDate(m_date, m_db);
    left->addRow(QStringLiteral("Fecha"), m_date);
    m_invoiceDate = dateField(QStringLiteral("dtpFechaFactura"));
    left->addRow(QStringLiteral("Fecha factura"), m_invoiceDate);
    m_paymentType = new QComboBox(this);
    m_paymentType->setObjectName(QStringLiteral("cboTipoPago"));
    m_paymentType->addItem(QStringLiteral("CONTADO"), 1);
    m_paymentType->addItem(QStringLiteral("CRÉDITO"), 2);
    left->addRow(QStringLiteral("Tipo de pago"), m_paymentType);
    m_creditDays = numberField(QStringLiteral("txtDiasCredito"), 0);
    left->addRow(QStringLiteral("Días de crédito"), m_creditDays);
    m_file = textField(QStringLiteral("txtExpediente"), 30);
    left->addRow(QStringLiteral("Expediente"), m_file);
    m_note = textField(QStringLiteral("txtObservacion"), 255);
    left->addRow(QStringLiteral("Observación"), m_note);

    QFormLayout* right = headerRight();
    m_discountPercent = numberField(QStringLiteral("txtPorcentajeDescuento"));
    connect(m_discountPercent, &QLineEdit::editingFinished, this, [this] {
        if (m_discountPercent->isEnabled() &&
            !guarded(this, [&] { rules::checkDiscountPercent(parsed(m_discountPercent)); })) {
            m_discountPercent->setFocus();
            m_discountPercent->selectAll();
        }
    });
    right->addRow(QStringLiteral("Descuento %"), m_discountPercent);
    m_exchangeRate = numberField(QStringLiteral("txtTasaCambio"), 4);
    right->addRow(QStringLiteral("Tasa de cambio"), m_exchangeRate);
    m_serviceFee = numberField(QStringLiteral("txtTasaServicio"));
    right->addRow(QStringLiteral("Tasa de servicio"), m_serviceFee);
    m_surcharges = numberField(QStringLiteral("txtRecargos"));
    right->addRow(QStringLiteral("Recargos"), m_surcharges);
    m_otherTaxes = numberField(QStringLiteral("txtOtrosImpuestos"));
    right->addRow(QStringLiteral("Otros impuestos"), m_otherTaxes);
    m_freight = numberField(QStringLiteral("txtFlete"));
    right->addRow(QStringLiteral("Flete"), m_freight);
    m_insurance = numberField(QStringLiteral("txtSeguro"));
    right->addRow(QStringLiteral("Seguro"), m_insurance);
    m_accountingTax = numberField(QStringLiteral("txtTotalImpuestoContable"));
    right->addRow(QStringLiteral("Impuesto contable"), m_accountingTax);
    auto* methods = new QHBoxLayout;
    m_valuation = new QButtonGroup(this);
    m_valuation->setObjectName(QStringLiteral("optMetodoValorizacion"));
    const QStringList captions = {QStringLiteral("Sin flete ni seguro"),
                                  QStringLiteral("Con flete y seguro")};
    for (int i = 0; i < 2; ++i) {
        auto* b = new QRadioButton(captions[i], this);
        b->setObjectName(QStringLiteral("optMetodoValorizacion_") + QString::number(i));
        m_valuation->addButton(b, i + 1); // the id is MetodoValorizacion
        methods->addWidget(b);
    }
    right->addRow(QStringLiteral("Valorización"), methods);
    auto* lotRow = new QHBoxLayout;
    m_lot = new QLabel(this);
    m_lot->setObjectName(QStringLiteral("lblLote"));
    QPushButton* lot = button(QStringLiteral("cmdLote"), QStringLiteral("Lote..."), Qt::Key_F4);
    connect(lot, &QPushButton::clicked, this, [this] { guarded(this, [&] { chooseLot(); }); });
    lotRow->addWidget(m_lot, 1);
    lotRow->addWidget(lot);
    left->addRow(QStringLiteral("Lote"), lotRow);
    m_generalTax = new QLabel(this);
    m_generalTax->setObjectName(QStringLiteral("lblPorcImpuestoGeneral"));
    right->addRow(QStringLiteral("Impuesto general %"), m_generalTax);
    m_editButtons << lot;

    auto* buttons = new QHBoxLayout;
    QPushButton* price =
        button(QStringLiteral("cmdCambiarPrecio"), QStringLiteral("Cambiar precio"), Qt::Key_F7);
    connect(price, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { changePriceOfModel(m_grid->currentRow()); }); });
    QPushButton* order = button(QStringLiteral("cmdCargarOrden"),
                                QStringLiteral("Cargar orden de compra"), Qt::Key_F5);
    connect(order, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromOrder(); }); });
    QPushButton* sister = button(QStringLiteral("cmdCargarTelmar"),
                                 QStringLiteral("Cargar factura de empresa"), Qt::Key_F6);
    connect(sister, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromSisterCompany(); }); });
    QPushButton* packing = button(QStringLiteral("cmdCargarArchivo"),
                                  QStringLiteral("Cargar MOVITRAN.DBF"), Qt::Key_F8);
    connect(packing, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromPackingList(); }); });
    for (QPushButton* b : {price, order, sister, packing}) {
        buttons->addWidget(b);
        m_editButtons << b;
    }
    finish(buttons);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QTableWidget::customContextMenuRequested, this, &PurchaseScreen::gridMenu);
    connect(this, &RecordScreen::recordStateChanged, this, &PurchaseScreen::updateButtons);
    updateButtons();
}

void PurchaseScreen::updateButtons() {
    for (QPushButton* b : std::as_const(m_editButtons))
        b->setEnabled(isEditing());
}

QList<DocumentSummary> PurchaseScreen::listDocuments() {
    return listPurchases(m_db);
}

void PurchaseScreen::showDocument(const DocumentSummary& summary) {
    const auto p = loadPurchase(m_db, summary.number, summary.supplier);
    if (!p)
        return;
    selectSupplier(m_supplier, p->supplier);
    m_document->setText(p->document);
    m_date->setDate(p->date.date());
    m_invoiceDate->setDate(p->invoiceDate);
    m_paymentType->setCurrentIndex(m_paymentType->findData(p->paymentType));
    m_creditDays->setText(QString::number(p->creditDays));
    m_file->setText(p->file);
    m_note->setText(p->note);
    setNumber(m_discountPercent, p->discountPercent);
    setNumber(m_exchangeRate, p->exchangeRate, 4);
    setNumber(m_serviceFee, p->serviceFee);
    setNumber(m_surcharges, p->surcharges);
    setNumber(m_otherTaxes, p->otherTaxes);
    setNumber(m_freight, p->freight);
    setNumber(m_insurance, p->insurance);
    setNumber(m_accountingTax, p->accountingTax);
    m_valuation->button(int(p->valuation))->setChecked(true);
    m_generalTax->setText(p->generalTaxPercent.toString(2));
    m_lotId = p->lotId;
    m_lot->setText(m_lotId > 0 ? QString::number(m_lotId) : QString());
    setLines(p->lines);
    setStatus(p->status);
}

Decimal PurchaseScreen::discountPercent() const {
    return parsed(m_discountPercent);
}

Purchase PurchaseScreen::purchaseFromControls() const {
    Purchase p;
    p.document = m_document->text().trimmed();
    p.supplier = m_supplier->currentData().toString();
    p.date = QDateTime(m_date->date(), QTime(0, 0));
    p.invoiceDate = m_invoiceDate->date();
    p.paymentType = m_paymentType->currentData().toInt();
    p.creditDays = int(parsed(m_creditDays).toLongLong());
    p.file = m_file->text();
    p.note = m_note->text();
    p.accountingTax = parsed(m_accountingTax);
    p.discountPercent = parsed(m_discountPercent);
    p.exchangeRate = parsed(m_exchangeRate);
    p.surcharges = parsed(m_surcharges);
    p.serviceFee = parsed(m_serviceFee);
    p.otherTaxes = parsed(m_otherTaxes);
    p.freight = parsed(m_freight);
    p.insurance = parsed(m_insurance);
    p.generalTaxPercent = store::generalTaxPercent(m_db);
    p.user = m_userCode;
    p.valuation = m_valuation->checkedId() == int(Valuation::WithFreight)
                      ? Valuation::WithFreight
                      : Valuation::WithoutFreight;
    p.lotId = m_lotId;
    p.lines = keyedLines();
    return p;
}

void PurchaseScreen::newRecord() {
    DocumentScreen::newRecord();
    m_paymentType->setCurrentIndex(0);
    m_valuation->button(int(Valuation::WithoutFreight))->setChecked(true);
    m_generalTax->setText(store::generalTaxPercent(m_db).toString(2));
    m_lotId = 0;
    m_lot->clear();
    for (QLineEdit* e : {m_creditDays, m_discountPercent, m_accountingTax, m_surcharges,
                         m_serviceFee, m_otherTaxes, m_freight, m_insurance})
        setNumber(e, Decimal(), e == m_creditDays ? 0 : 2);
    setNumber(m_exchangeRate, Decimal(1), 4);
}

void PurchaseScreen::saveDocument() {
    const Purchase p = purchaseFromControls();
    const bool isNew = mode() == Mode::Adding;
    checkPurchase(m_db, p, isNew);
    // Asked only when every line has its price; otherwise the purchase stays open.
    const bool approve =
        offersApproval(p) && dialogs().question(this, QStringLiteral("Desea aprobar la compra...?"),
                                                QStringLiteral("Aprobar compra"), false);
    savePurchase(m_db, p, isNew, approve, [this](const QString& text) { showProgress(text); });
    selectAfterRequery(p.document, p.supplier);
}

void PurchaseScreen::deleteDocument(const DocumentSummary& summary) {
    deletePurchase(m_db, summary.number, summary.supplier);
}

PrintedDocument PurchaseScreen::printedDocument(const DocumentSummary& summary) {
    return purchaseDocument(m_db, summary.number, summary.supplier);
}

void PurchaseScreen::appendLines(const QList<DocumentLine>& lines) {
    QList<DocumentLine> all = keyedLines();
    all.append(lines);
    setLines(all);
}

void PurchaseScreen::loadFromOrder() {
    if (!isEditing())
        return;
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Órdenes de compra"), m_db,
                                                 store::approvedOrdersCatalogSql());
    if (!row)
        return;
    const long long number =
        grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong();
    appendLines(orderLines(m_db, number));
    if (m_supplier->currentIndex() < 0)
        selectSupplier(m_supplier,
                       grid::CatalogDialog::valueOf(*row, QStringLiteral("Proveedor")).toString());
}

void PurchaseScreen::loadFromSisterCompany() {
    if (!isEditing())
        return;
    const QString supplier = m_supplier->currentData().toString();
    if (supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un proveedor...!"));
    const auto company = chooseSisterCompany(this, m_db);
    if (!company)
        return;
    // The sister's connection lives only while its invoice is read.
    const SisterDatabase sisterDb(m_db, *company);
    const QSqlDatabase& sister = sisterDb.db();
    const QList<SisterInvoice> invoices = sisterInvoices(m_db, sister, supplier);
    if (invoices.isEmpty())
        throw UserError(QStringLiteral("No existen facturas pendientes de la empresa ") +
                        company->name + QStringLiteral("...!"));
    QList<QStringList> rows;
    for (const SisterInvoice& i : invoices)
        rows.append({i.document(), i.serie, i.date.toString(QStringLiteral("dd/MM/yyyy")),
                     i.total.toLocaleString(QLocale(), 2)});
    const auto chosen =
        ChoiceDialog::choose(this, QStringLiteral("Cargar Factura Desde Telmar (Orvo)"),
                             {QStringLiteral("Factura"), QStringLiteral("Serie"),
                              QStringLiteral("Fecha"), QStringLiteral("Total")},
                             rows, true);
    if (!chosen)
        return;
    const SisterInvoice& invoice = invoices[*chosen];
    const LoadedLines loaded =
        loadSisterInvoice(m_db, sister, invoice, ArticleWriter::here(m_userCode, objectName()));
    appendLines(loaded.lines);
    if (m_document->text().trimmed().isEmpty())
        m_document->setText(invoice.document());
    if (!loaded.notFound.isEmpty())
        dialogs().information(
            this, QStringLiteral("No se cargaron ") + QString::number(loaded.notFound.size()) +
                      QStringLiteral(" articulos: ") + loaded.notFound.join(QStringLiteral(", ")));
}

void PurchaseScreen::loadFromPackingList() {
    if (!isEditing())
        return;
    appendLines(loadPackingList(this, m_db, PackingCheck::Exists));
}

void PurchaseScreen::changePriceOfModel(int row) {
    if (!isEditing() || row < 0 || row >= keyedLines().size())
        return;
    const QString barcode = keyedLines().at(row).barcode;
    const auto typed = dialogs().textInput(this, QStringLiteral("Cambiar precio"),
                                           QStringLiteral("Precio para todo el modelo:"),
                                           keyedLines().at(row).price.toString(6));
    if (!typed)
        return;
    QList<DocumentLine> lines = keyedLines();
    changeModelPrice(m_db, lines, barcode, rules::headerNumber(*typed));
    setLines(lines);
}

void PurchaseScreen::chooseLot() {
    if (const auto id = AssignLotDialog::choose(m_db, this)) {
        m_lotId = *id;
        m_lot->setText(QString::number(*id));
    }
}

void PurchaseScreen::searchValue() {
    const auto value =
        dialogs().textInput(this, QStringLiteral("Buscar Valor"), QStringLiteral("Valor:"));
    if (!value || value->trimmed().isEmpty())
        return;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        for (int c = 0; c < m_grid->columnCount(); ++c)
            if (m_grid->item(r, c) &&
                m_grid->item(r, c)->text().contains(value->trimmed(), Qt::CaseInsensitive)) {
                m_grid->setCurrentCell(r, c);
                return;
            }
    dialogs().information(this, QStringLiteral("No existe ningún valor similar al\nelemento "
                                               "buscado."));
}

void PurchaseScreen::goToRow() {
    const auto value =
        dialogs().textInput(this, QStringLiteral("Ir a Fila"), QStringLiteral("Fila:"));
    if (!value)
        return;
    const int row = value->toInt() - 1;
    if (row >= 0 && row < m_grid->rowCount())
        m_grid->selectRow(row);
}

void PurchaseScreen::gridMenu(const QPoint& pos) {
    QMenu menu(this);
    QAction* search = menu.addAction(QStringLiteral("&Buscar Valor"));
    QAction* go = menu.addAction(QStringLiteral("&Ir a Fila"));
    menu.addSeparator();
    QAction* file = menu.addAction(QStringLiteral("Cargar Datos Desde Archivo (MOVITRAN.DBF)"));
    QAction* order = menu.addAction(QStringLiteral("Cargar Datos Desde Orden de Compra"));
    QAction* sister = menu.addAction(QStringLiteral("Cargar Factura Desde Telmar (Orvo)"));
    for (QAction* a : {file, order, sister})
        a->setEnabled(isEditing());
    QAction* chosen = menu.exec(m_grid->viewport()->mapToGlobal(pos));
    guarded(this, [&] {
        if (chosen == search)
            searchValue();
        else if (chosen == go)
            goToRow();
        else if (chosen == file)
            loadFromPackingList();
        else if (chosen == order)
            loadFromOrder();
        else if (chosen == sister)
            loadFromSisterCompany();
    });
}

} // namespace orvo::inventory::purchases
