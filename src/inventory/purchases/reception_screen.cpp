#include "inventory/purchases/reception_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/choice_dialog.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/purchase_print.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/purchases/receptions.h"
#include "inventory/stock/date_guard_edit.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::purchases {

namespace {

void setRow(QTableWidget* t, int row, const QStringList& cells) {
    for (int c = 0; c < cells.size(); ++c) {
        auto* item = new QTableWidgetItem(cells[c]);
        t->setItem(row, c, item);
    }
}

QString quantityText(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

} // namespace

ReceptionScreen::ReceptionScreen(QSqlDatabase db, QString userCode, QWidget* parent,
                                 const BoxKind& kind)
    : RecordScreen(parent), m_db(std::move(db)), m_userCode(std::move(userCode)), m_kind(&kind) {
    setObjectName(kind.screen);
    setWindowTitle(kind.title);
    auto* outer = new QVBoxLayout(this);
    auto* split = new QSplitter(Qt::Vertical, this);
    outer->addWidget(split);
    m_browser =
        listTable(split, QStringLiteral("grdConsulta"),
                  {QStringLiteral("Número"), QStringLiteral("Destino"), QStringLiteral("Nombre"),
                   QStringLiteral("Fecha"), QStringLiteral("Cantidad"), QStringLiteral("Estatus")},
                  2);
    connect(m_browser, &QTableWidget::cellClicked, this, [this](int row) {
        if (!isEditing())
            guarded(this, [&] { navigateTo(row); });
    });

    auto* body = new QWidget(split);
    auto* bodyLayout = new QHBoxLayout(body);
    auto* head = new QGroupBox(kind.title, body);
    auto* form = new QFormLayout(head);
    m_number = new QLineEdit(head);
    m_number->setObjectName(QStringLiteral("txtNumero"));
    m_number->setReadOnly(true);
    m_number->setFocusPolicy(Qt::NoFocus); // a number the program gives
    markKey(m_number);
    form->addRow(QStringLiteral("Número"), m_number);
    m_branch = new QComboBox(head);
    m_branch->setObjectName(QStringLiteral("cboSucursal"));
    for (const store::Branch& b : store::activeBranches(m_db))
        m_branch->addItem(b.code + QStringLiteral(" - ") + b.name, b.code);
    markRequired(m_branch, QStringLiteral("el destino"));
    form->addRow(QStringLiteral("Destino"), m_branch);
    m_date = new QDateEdit(QDate::currentDate(), head);
    m_date->setObjectName(QStringLiteral("dtpFecha"));
    m_date->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    stock::guardDocumentDate(m_date, m_db);
    form->addRow(QStringLiteral("Fecha"), m_date);
    m_originType = new QComboBox(head);
    m_originType->setObjectName(QStringLiteral("cboTipoDocumento"));
    m_originType->addItem(QStringLiteral("Compras"), int(ReceptionOrigin::Purchases));
    m_originType->addItem(QStringLiteral("Otros Documentos"), int(ReceptionOrigin::OtherDocuments));
    form->addRow(QStringLiteral("Origen"), m_originType);
    m_origin = new QLineEdit(head);
    m_origin->setObjectName(QStringLiteral("txtDocumentoOrigen"));
    m_origin->setMaxLength(20);
    form->addRow(QStringLiteral("Documento origen"), m_origin);
    m_note = new QLineEdit(head);
    m_note->setObjectName(QStringLiteral("txtObservacion"));
    m_note->setMaxLength(255);
    form->addRow(QStringLiteral("Observación"), m_note);
    m_purchase = new QLineEdit(head);
    m_purchase->setObjectName(QStringLiteral("txtCompra"));
    m_purchase->setMaxLength(12);
    form->addRow(QStringLiteral("Compra Nº"), m_purchase);
    m_purchases = listTable(
        head, QStringLiteral("SpreadCompras"),
        {QStringLiteral("Compra"), QStringLiteral("Proveedor"), QStringLiteral("Nombre")}, 2);
    m_purchases->installEventFilter(this);
    form->addRow(m_purchases);
    m_state = new QLabel(head);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    QFont bold = m_state->font();
    bold.setBold(true);
    m_state->setFont(bold);
    form->addRow(QStringLiteral("Estatus"), m_state);
    bodyLayout->addWidget(head, 2);

    auto* boxes = new QGroupBox(QStringLiteral("Cajas"), body);
    auto* boxLayout = new QVBoxLayout(boxes);
    m_boxes = listTable(boxes, QStringLiteral("grdCajas"),
                        {QStringLiteral("Caja"), QStringLiteral("Usuario"),
                         QStringLiteral("Cantidad"), QStringLiteral("Estatus")},
                        1);
    m_boxes->setMaximumHeight(150);
    boxLayout->addWidget(m_boxes);
    m_boxLabel = new QLabel(boxes);
    m_boxLabel->setObjectName(QStringLiteral("lblCaja"));
    m_boxLabel->setFont(bold);
    boxLayout->addWidget(m_boxLabel);
    auto* keying = new QHBoxLayout;
    m_code = new QLineEdit(boxes);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_code->setMaxLength(15);
    m_quantity = new QLineEdit(QStringLiteral("1"), boxes);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_quantity->setAlignment(Qt::AlignRight);
    keying->addWidget(new QLabel(QStringLiteral("Código:"), boxes));
    keying->addWidget(m_code, 3);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad:"), boxes));
    keying->addWidget(m_quantity, 1);
    boxLayout->addLayout(keying);
    m_boxGrid = listTable(
        boxes, QStringLiteral("SpreadCaja"),
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Cantidad")}, 1);
    m_boxGrid->installEventFilter(this);
    boxLayout->addWidget(m_boxGrid, 1);
    auto* buttons = new QHBoxLayout;
    auto add = [&](const char* name, const QString& text, int key,
                   void (ReceptionScreen::*slot)()) {
        QPushButton* b = screenButton(this, QString::fromLatin1(name), text, key);
        connect(b, &QPushButton::clicked, this,
                [this, slot] { guarded(this, [&] { (this->*slot)(); }); });
        buttons->addWidget(b);
        m_boxButtons << b;
        return b;
    };
    add("cmdGuardarCaja", QStringLiteral("Guardar caja"), Qt::Key_F9, &ReceptionScreen::saveBox);
    add("cmdFinalizar", QStringLiteral("Cerrar caja"), Qt::Key_F10, &ReceptionScreen::closeBox);
    add("cmdEliminarCaja", QStringLiteral("Eliminar caja"), 0, &ReceptionScreen::deleteBox);
    add("cmdImprimirCaja", QStringLiteral("Imprimir caja"), 0, &ReceptionScreen::printBox);
    add("cmdCargarLista", QStringLiteral("Cargar lista de empaque"), Qt::Key_F8,
        &ReceptionScreen::loadPackingList);
    add("cmdAprobar", QStringLiteral("Aprobar"), Qt::Key_F12, &ReceptionScreen::approve);
    QPushButton* pdf = screenButton(this, QStringLiteral("cmdPDF"), QStringLiteral("PDF"));
    connect(pdf, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            if (const DocumentSummary* d = current())
                writePdf(this, receptionDocument(m_db, d->number.toLongLong(), *m_kind));
        });
    });
    buttons->addWidget(pdf);
    boxLayout->addLayout(buttons);
    bodyLayout->addWidget(boxes, 3);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);

    installFieldBehaviour();
    connect(this, &RecordScreen::recordStateChanged, this, &ReceptionScreen::updateEditability);
    enableInputs(false, true);
    requery();
    if (recordCount() > 0)
        navigateTo(0);
    updateEditability();
}

ReceptionScreen::~ReceptionScreen() = default;

bool ReceptionScreen::offers(Action action) const {
    if (action == Action::Approve)
        return false;
    if ((action == Action::Modify || action == Action::Delete) && m_reception.status != kOpen)
        return false;
    return true;
}

const DocumentSummary* ReceptionScreen::current() const {
    return m_current >= 0 && m_current < m_receptions.size() ? &m_receptions[m_current] : nullptr;
}

void ReceptionScreen::updateEditability() {
    const bool editing = isEditing();
    m_browser->setEnabled(!editing);
    const bool counting = !editing && current() && m_reception.status == kOpen;
    for (QWidget* w : {static_cast<QWidget*>(m_code), static_cast<QWidget*>(m_quantity)})
        w->setEnabled(counting);
    if (counting && m_quantity->text().isEmpty())
        m_quantity->setText(QStringLiteral("1"));
    for (QPushButton* b : std::as_const(m_boxButtons))
        b->setEnabled(counting ||
                      (b->objectName() == QLatin1String("cmdImprimirCaja") && current()));
    m_purchase->setEnabled(editing);
}

bool ReceptionScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && watched == m_code) {
            if (!m_code->text().trimmed().isEmpty()) {
                m_quantity->setFocus();
                m_quantity->selectAll();
            }
            return true;
        }
        if (enter && watched == m_quantity) {
            guarded(this, [&] { scan(m_code->text(), m_quantity->text()); });
            return true;
        }
        if (enter && watched == m_purchase) {
            guarded(this, [&] { addPurchase(); });
            return true;
        }
        if (key->key() == Qt::Key_Delete && watched == m_purchases && isEditing()) {
            const int row = m_purchases->currentRow();
            if (row >= 0 && row < m_reception.purchases.size()) {
                m_reception.purchases.removeAt(row);
                showPurchases();
            }
            return true;
        }
        if (key->key() == Qt::Key_Delete && watched == m_boxGrid && m_code->isEnabled()) {
            const int row = m_boxGrid->currentRow();
            if (row >= 0 && row < m_box.lines.size() &&
                dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                                   QStringLiteral("Eliminar item"))) {
                m_box.lines.removeAt(row);
                m_boxDirty = true;
                backUp();
                showBox();
            }
            return true;
        }
    }
    return RecordScreen::eventFilter(watched, event);
}

void ReceptionScreen::requery() {
    if (m_pending.isEmpty() && current())
        m_pending = current()->number;
    m_receptions = listReceptions(m_db, *m_kind);
    m_browser->setRowCount(0);
    m_browser->setRowCount(int(m_receptions.size()));
    m_current = m_receptions.isEmpty() ? -1 : 0;
    for (int r = 0; r < m_receptions.size(); ++r) {
        const DocumentSummary& d = m_receptions[r];
        setRow(m_browser, r,
               {d.number, d.supplier, d.supplierName, d.date.toString(QStringLiteral("dd/MM/yyyy")),
                quantityText(d.total), boxedStatusText(d.status)});
        if (d.number == m_pending)
            m_current = r;
    }
    m_pending.clear();
}

void ReceptionScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    if (boxHasUnsavedLines() &&
        dialogs().question(this,
                           QStringLiteral("Desea guardar un respaldo local de la información "
                                          "léida...?"),
                           QStringLiteral("Información"), true))
        backUp();
    m_current = row;
    afterNavigate();
}

void ReceptionScreen::afterNavigate() {
    const DocumentSummary* d = current();
    if (!d) {
        m_reception = Reception();
        m_box = Box();
        showReception(m_reception);
        return;
    }
    m_browser->selectRow(m_current);
    const auto r = loadReception(m_db, d->number.toLongLong(), *m_kind);
    if (!r)
        return;
    m_reception = *r;
    showReception(m_reception);
    m_box = currentBox(m_db, m_reception.number, m_userCode, *m_kind);
    m_boxDirty = false;
    if (m_reception.status == kOpen)
        offerBackup();
    showBox();
    showBoxes();
    emit recordStateChanged();
    // Ready to count: the scanner's first barcode goes to the box.
    if (m_code->isEnabled())
        m_code->setFocus();
}

void ReceptionScreen::showReception(const Reception& r) {
    m_number->setText(r.number > 0 ? QString::number(r.number) : QString());
    m_branch->setCurrentIndex(m_branch->findData(r.branch));
    if (r.date.isValid())
        m_date->setDate(r.date.date());
    m_origin->setText(r.origin);
    m_note->setText(r.note);
    m_originType->setCurrentIndex(m_originType->findData(int(r.originType)));
    m_state->setText(r.number == 0 ? QString() : boxedStatusText(r.status));
    showPurchases();
}

void ReceptionScreen::showPurchases() {
    m_purchases->setRowCount(0);
    m_purchases->setRowCount(int(m_reception.purchases.size()));
    for (int r = 0; r < m_reception.purchases.size(); ++r) {
        const CoveredPurchase& p = m_reception.purchases[r];
        setRow(m_purchases, r, {p.document, p.supplier, p.supplierName});
    }
}

void ReceptionScreen::showBox() {
    m_boxLabel->setText(m_box.number > 0
                            ? QStringLiteral("Caja Nº ") + QString::number(m_box.number) +
                                  (m_boxDirty ? QStringLiteral(" (sin guardar)") : QString())
                            : QStringLiteral("Caja nueva"));
    m_boxGrid->setRowCount(0);
    m_boxGrid->setRowCount(int(m_box.lines.size()));
    Decimal total;
    for (int r = 0; r < m_box.lines.size(); ++r) {
        const BoxLine& l = m_box.lines[r];
        setRow(m_boxGrid, r, {l.barcode, l.name, quantityText(l.quantity)});
        m_boxGrid->item(r, 2)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        total += l.quantity;
    }
    m_boxLabel->setToolTip(QStringLiteral("Total: ") + quantityText(total));
}

void ReceptionScreen::showBoxes() {
    // The browser's count follows the boxes.
    if (current() && !isEditing()) {
        requery();
        m_browser->selectRow(m_current);
    }
    const QList<BoxSummary> all = m_reception.number > 0
                                      ? receptionBoxes(m_db, m_reception.number, *m_kind)
                                      : QList<BoxSummary>();
    m_boxes->setRowCount(0);
    m_boxes->setRowCount(int(all.size()));
    for (int r = 0; r < all.size(); ++r)
        setRow(m_boxes, r,
               {QString::number(all[r].number), all[r].user, quantityText(all[r].quantity),
                all[r].closed ? QStringLiteral("Cerrada") : QStringLiteral("Abierta")});
}

bool ReceptionScreen::boxHasUnsavedLines() const {
    return m_boxDirty && !m_box.lines.isEmpty();
}

void ReceptionScreen::backUp() {
    writeBoxBackup(boxBackupPath(*m_kind),
                   {m_reception.number, m_box.number, m_userCode, m_box.lines}, *m_kind);
}

void ReceptionScreen::offerBackup() {
    const auto backup = readBoxBackup(boxBackupPath(*m_kind), *m_kind);
    if (!backup || backup->reception != m_reception.number || backup->user != m_userCode ||
        backup->lines.isEmpty() || backup->box != m_box.number)
        return;
    if (!dialogs().question(this, QStringLiteral("Desea cargar un respaldo local...?"),
                            QStringLiteral("Información"), true))
        return;
    m_box.lines = backup->lines;
    m_boxDirty = true;
}

void ReceptionScreen::addPurchase() {
    if (!isEditing())
        return;
    const QList<CoveredPurchase> found = purchasesNumbered(m_db, m_purchase->text());
    QList<QStringList> rows;
    for (const CoveredPurchase& p : found)
        rows.append({p.document, p.supplier, p.supplierName});
    const auto which = ChoiceDialog::choose(
        this, QStringLiteral("Compras"),
        {QStringLiteral("Compra"), QStringLiteral("Proveedor"), QStringLiteral("Nombre")}, rows);
    if (!which)
        return;
    coverPurchase(m_reception, found[*which]);
    if (m_origin->text().trimmed().isEmpty())
        m_origin->setText(found[*which].document);
    m_purchase->clear();
    showPurchases();
}

void ReceptionScreen::scan(const QString& barcode, const QString& quantity) {
    if (!current() || m_reception.status != kOpen || barcode.trimmed().isEmpty())
        return;
    const Decimal q = quantity.trimmed().isEmpty() ? Decimal(1) : rules::headerNumber(quantity);
    try {
        const DocumentLine article = articleLine(m_db, barcode, q, Decimal());
        countInto(m_box, {article.barcode, article.name, q});
    } catch (const UserError&) {
        m_code->setFocus();
        m_code->selectAll();
        throw;
    }
    m_boxDirty = true;
    backUp(); // a crash or a pulled cable loses nothing scanned
    showBox();
    m_code->clear();
    m_quantity->setText(QStringLiteral("1"));
    m_code->setFocus();
}

void ReceptionScreen::saveBox() {
    if (!current())
        return;
    m_box.user = m_userCode;
    m_box.number = purchases::saveBox(m_db, m_reception.number, m_box, false, *m_kind);
    m_boxDirty = false;
    QFile::remove(boxBackupPath(*m_kind));
    showBox();
    showBoxes();
}

void ReceptionScreen::closeBox() {
    if (!current())
        return;
    if (m_box.lines.isEmpty())
        throw UserError(m_kind->emptyBox);
    if (!dialogs().question(this, QStringLiteral("Desea cerrar la caja ?"),
                            QStringLiteral("Información"), false))
        return;
    m_box.user = m_userCode;
    purchases::saveBox(m_db, m_reception.number, m_box, true, *m_kind);
    QFile::remove(boxBackupPath(*m_kind));
    m_box = Box();
    m_box.user = m_userCode;
    m_boxDirty = false;
    showBox();
    showBoxes();
    m_code->setFocus();
}

void ReceptionScreen::deleteBox() {
    if (!current())
        return;
    // The box chosen in the list, or the one being counted.
    long long number = m_box.number;
    if (const int row = m_boxes->currentRow(); row >= 0 && m_boxes->item(row, 0))
        number = m_boxes->item(row, 0)->text().toLongLong();
    if (number == 0)
        return;
    checkBoxDeletion(m_db, m_reception.number, number, *m_kind);
    if (!dialogs().question(this, QStringLiteral("Desea eliminar la caja...?"),
                            QStringLiteral("Información"), false))
        return;
    purchases::deleteBox(m_db, m_reception.number, number, *m_kind);
    if (number == m_box.number) {
        m_box = Box();
        m_box.user = m_userCode;
        m_boxDirty = false;
    }
    showBox();
    showBoxes();
}

void ReceptionScreen::approve() {
    if (!current())
        return;
    if (boxHasUnsavedLines())
        throw UserError(m_kind->openBoxes);
    checkReceptionApproval(m_db, m_reception.number, *m_kind);
    if (!dialogs().question(this, m_kind->approveQuestion, QStringLiteral("Información"), false))
        return;
    approveReception(m_db, m_reception.number, m_userCode, *m_kind);
    requery();
    afterNavigate();
}

void ReceptionScreen::loadPackingList() {
    if (!current() || m_reception.status != kOpen)
        return;
    const QList<DocumentLine> lines =
        purchases::loadPackingList(this, m_db, PackingCheck::ActiveWithCost);
    for (const DocumentLine& l : lines)
        countInto(m_box, {l.barcode, l.name, l.quantity});
    if (lines.isEmpty())
        return;
    m_boxDirty = true;
    backUp();
    showBox();
}

void ReceptionScreen::printBox() {
    if (!current())
        return;
    long long number = m_box.number;
    if (const int row = m_boxes->currentRow(); row >= 0 && m_boxes->item(row, 0))
        number = m_boxes->item(row, 0)->text().toLongLong();
    if (number > 0)
        printDocument(this, boxDocument(m_db, m_reception.number, number, *m_kind));
}

void ReceptionScreen::save() {
    Reception r = m_reception;
    r.number = mode() == Mode::Adding ? 0 : m_number->text().toLongLong();
    r.branch = m_branch->currentData().toString();
    r.date = QDateTime(m_date->date(), QTime(0, 0));
    r.origin = m_origin->text().trimmed();
    r.note = m_note->text();
    r.originType = ReceptionOrigin(m_originType->currentData().toInt());
    m_pending = QString::number(saveReception(m_db, r, *m_kind));
}

void ReceptionScreen::remove() {
    const DocumentSummary* d = current();
    if (!d)
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    deleteReception(m_db, d->number.toLongLong(), *m_kind);
    m_current = -1;
}

void ReceptionScreen::print() {
    if (const DocumentSummary* d = current())
        printDocument(this, receptionDocument(m_db, d->number.toLongLong(), *m_kind));
}

void ReceptionScreen::newRecord() {
    RecordScreen::newRecord();
    m_reception = Reception();
    m_box = Box();
    m_boxDirty = false;
    m_originType->setCurrentIndex(0);
    if (m_branch->count() > 0)
        m_branch->setCurrentIndex(0);
    showPurchases();
    showBox();
    m_boxes->setRowCount(0);
    m_state->setText(QStringLiteral("ABIERTA"));
    m_branch->setFocus();
}

void ReceptionScreen::cancelRecord() {
    m_number->setReadOnly(true);
    m_number->setFocusPolicy(Qt::NoFocus);
    RecordScreen::cancelRecord();
    if (recordCount() == 0) {
        m_reception = Reception();
        showReception(m_reception);
    }
}

void ReceptionScreen::beginSearch() {
    m_number->setReadOnly(false);
    m_number->setFocusPolicy(Qt::StrongFocus);
    RecordScreen::beginSearch();
}

void ReceptionScreen::runSearch() {
    const QString wanted = m_number->text().trimmed();
    m_number->setReadOnly(true);
    m_number->setFocusPolicy(Qt::NoFocus);
    for (int r = 0; r < m_receptions.size(); ++r) {
        if (!wanted.isEmpty() && m_receptions[r].number == wanted) {
            navigateTo(r);
            return;
        }
    }
    dialogs().information(this, QStringLiteral("No existe ningún valor similar al\nelemento "
                                               "buscado."));
    navigateTo(m_current);
}

void ReceptionScreen::closeEvent(QCloseEvent* event) {
    if (boxHasUnsavedLines()) {
        if (dialogs().question(this,
                               QStringLiteral("Desea guardar un respaldo local de la información "
                                              "léida...?"),
                               QStringLiteral("Información"), true))
            guarded(this, [&] { backUp(); });
        else
            QFile::remove(boxBackupPath(*m_kind));
    }
    RecordScreen::closeEvent(event);
}

} // namespace orvo::inventory::purchases
