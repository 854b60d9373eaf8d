#include "inventory/transfers/transfer_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "common/grid_ui/catalog_dialog.h"
#include "inventory/articles/lots_screen.h"
#include "inventory/purchases/choice_dialog.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/stock/date_guard_edit.h"
#include "inventory/transfers/sources_store.h"
#include "inventory/transfers/transfer_package.h"
#include "inventory/transfers/transfer_print.h"
#include "inventory/transfers/transfer_sources.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSet>
#include <QTableWidget>

namespace orvo::inventory::transfers {

namespace {

QString shown(const Decimal& value, int decimals = 2) {
    return value.toLocaleString(QLocale(), decimals);
}

long long lastBox(const QList<DocumentLine>& lines) {
    long long box = 0;
    for (const DocumentLine& l : lines)
        box = std::max(box, l.box);
    return box;
}

} // namespace

QComboBox* branchCombo(QWidget* parent, const QSqlDatabase& db) {
    auto* combo = new QComboBox(parent);
    combo->setObjectName(QStringLiteral("cboSucursal"));
    const QString here = store::storeCode(db);
    for (const purchases::store::Branch& b : purchases::store::activeBranches(db))
        if (b.code != here)
            combo->addItem(b.code + QStringLiteral(" - ") + b.name, b.code);
    combo->setCurrentIndex(-1);
    return combo;
}

TransferScreen::TransferScreen(Kind kind, QSqlDatabase db, QString userCode, QWidget* parent)
    : DocumentScreen(std::move(db), std::move(userCode),
                     kind == Kind::Transfer ? kTransferScreen : kReturnScreen,
                     kind == Kind::Transfer ? QStringLiteral("Transferencias")
                                            : QStringLiteral("Devoluciones de transferencias"),
                     kind == Kind::Transfer ? QStringLiteral("SpreadTransferencias")
                                            : QStringLiteral("SpreadDevTransferencias"),
                     false, parent),
      m_kind(kind) {
    const bool transfer = kind == Kind::Transfer;
    keyIntoBoxes();
    setBrowserHeaders({QStringLiteral("Número"), QStringLiteral("Sucursal"),
                       QStringLiteral("Nombre"), QStringLiteral("Fecha"),
                       QStringLiteral("Total valor"), QStringLiteral("Estatus")});
    m_number = textField(QStringLiteral("txtNumero"), 12);
    m_number->setReadOnly(true);
    markKey(m_number);
    header()->addRow(QStringLiteral("Número"), m_number);
    m_branch = branchCombo(this, m_db);
    markRequired(m_branch, QStringLiteral("la sucursal"));
    header()->addRow(transfer ? QStringLiteral("Recibe") : QStringLiteral("Tienda que devuelve"),
                     m_branch);
    m_date = dateField(QStringLiteral("dtpFecha"));
    stock::guardDocumentDate(m_date, m_db);
    header()->addRow(QStringLiteral("Fecha"), m_date);
    m_origin = textField(QStringLiteral("txtDocumentoOrigen"), 20);
    header()->addRow(QStringLiteral("Documento origen"), m_origin);

    if (transfer) {
        m_dispatch = new QComboBox(this);
        m_dispatch->setObjectName(QStringLiteral("cboTipoDespacho"));
        m_dispatch->addItem(QString(), 0);
        for (const DispatchType& t : store::activeDispatchTypes(m_db))
            m_dispatch->addItem(t.description, t.id);
        headerRight()->addRow(QStringLiteral("Tipo de despacho"), m_dispatch);
    }
    auto* lotRow = new QHBoxLayout;
    m_lot = new QLabel(this);
    m_lot->setObjectName(QStringLiteral("lblLote"));
    QPushButton* lot = button(QStringLiteral("cmdLote"), QStringLiteral("Lote..."), Qt::Key_F4);
    connect(lot, &QPushButton::clicked, this, [this] { guarded(this, [&] { chooseLot(); }); });
    lotRow->addWidget(m_lot, 1);
    lotRow->addWidget(lot);
    headerRight()->addRow(QStringLiteral("Lote"), lotRow);
    m_note = textField(QStringLiteral("txtObservacion"), 255);
    headerRight()->addRow(QStringLiteral("Observación"), m_note);

    auto* buttons = new QHBoxLayout;
    QPushButton* box =
        button(QStringLiteral("cmdCajaNueva"), QStringLiteral("Caja nueva"), Qt::Key_F5);
    connect(box, &QPushButton::clicked, this, [this] { guarded(this, [&] { newBox(); }); });
    QPushButton* load = button(QStringLiteral("cmdCargar"), QStringLiteral("Cargar"), Qt::Key_F6);
    connect(load, &QPushButton::clicked, this, [this, load] {
        if (isEditing())
            loadMenu()->exec(load->mapToGlobal(QPoint(0, load->height())));
    });
    m_send =
        button(QStringLiteral("cmdEnviar"), QStringLiteral("Enviar a la sucursal"), Qt::Key_F9);
    connect(m_send, &QPushButton::clicked, this, [this] { guarded(this, [&] { send(); }); });
    buttons->addWidget(box);
    buttons->addWidget(load);
    buttons->addWidget(m_send);
    m_editButtons << lot << box << load;
    finish(buttons);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QTableWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        if (isEditing())
            loadMenu()->exec(m_grid->viewport()->mapToGlobal(pos));
    });
    connect(this, &RecordScreen::recordStateChanged, this, &TransferScreen::updateButtons);
    updateButtons();
}

QMenu* TransferScreen::loadMenu() {
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("mnuCargar"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const char* name, const QString& text, auto action) {
        QAction* a = menu->addAction(text);
        a->setObjectName(QString::fromLatin1(name));
        connect(a, &QAction::triggered, this, [this, action] { guarded(this, action); });
    };
    add("mnuAjuste", QStringLiteral("Cargar Datos Desde Ajuste"), [this] { loadFromAdjustment(); });
    if (m_kind == Kind::Transfer)
        add("mnuDevolucion", QStringLiteral("Cargar Datos Desde Devolución de Transferencia"),
            [this] { loadFromReturn(); });
    else
        add("mnuBorrador", QStringLiteral("Cargar Datos Desde Borrador de Devolución"),
            [this] { loadFromDraft(); });
    add("mnuMovitran", QStringLiteral("Cargar Datos Desde Archivo (MOVITRAN.DBF)"),
        [this] { loadFromFile(QStringLiteral("Cargar Datos Desde Archivo (MOVITRAN.DBF)")); });
    add("mnuMovidvtr", QStringLiteral("Cargar Datos Desde Archivo (MOVIDVTR.DBF)"),
        [this] { loadFromFile(QStringLiteral("Cargar Datos Desde Archivo (MOVIDVTR.DBF)")); });
    if (m_kind == Kind::Transfer)
        add("mnuPedidos", QStringLiteral("Cargar Pedidos Desde Telmar (Orvo)"),
            [this] { loadFromOrders(); });
    return menu;
}

void TransferScreen::updateButtons() {
    for (QPushButton* b : std::as_const(m_editButtons))
        b->setEnabled(isEditing());
    m_send->setEnabled(!isEditing() && current() && status() != kOpen);
}

QList<DocumentSummary> TransferScreen::listDocuments() {
    return listTransfers(m_db, m_kind);
}

void TransferScreen::showDocument(const DocumentSummary& summary) {
    const auto t = loadTransfer(m_db, m_kind, summary.number.toLongLong());
    if (!t)
        return;
    m_number->setText(QString::number(t->number));
    int at = m_branch->findData(t->receiver);
    if (at < 0) { // a branch closed since still shows on its old documents
        m_branch->addItem(t->receiver, t->receiver);
        at = m_branch->count() - 1;
    }
    m_branch->setCurrentIndex(at);
    m_date->setDate(t->issueDate);
    m_origin->setText(t->origin);
    if (m_dispatch)
        m_dispatch->setCurrentIndex(std::max(0, m_dispatch->findData(t->dispatchId)));
    m_note->setText(t->note);
    m_lotId = t->lotId;
    m_lot->setText(m_lotId > 0 ? QString::number(m_lotId) : QString());
    setLines(t->lines);
    setCurrentBox(lastBox(t->lines));
    setStatus(t->status);
}

Transfer TransferScreen::transferFromControls() const {
    Transfer t;
    t.kind = m_kind;
    t.number = mode() == Mode::Adding ? 0 : m_number->text().toLongLong();
    t.issueDate = m_date->date();
    t.receiver = m_branch->currentData().toString();
    t.origin = m_origin->text().trimmed();
    t.note = m_note->text();
    t.user = m_userCode;
    t.lotId = m_lotId;
    t.dispatchId = m_dispatch ? m_dispatch->currentData().toInt() : 0;
    t.lines = keyedLines();
    return t;
}

void TransferScreen::newRecord() {
    DocumentScreen::newRecord();
    m_lotId = 0;
    m_lot->clear();
    m_branch->setCurrentIndex(-1);
    if (m_dispatch)
        m_dispatch->setCurrentIndex(0);
}

void TransferScreen::saveDocument() {
    const Transfer t = transferFromControls();
    checkTransfer(m_db, t);
    const bool approve =
        m_kind == Kind::Transfer
            ? dialogs().question(this, QStringLiteral("Desea Aprobar la Transferencia ?"),
                                 QStringLiteral("Aprobar transferencia"), false)
            : dialogs().question(this, QStringLiteral("Desea Aprobar la Devolución ?"),
                                 QStringLiteral("Aprobar devolución"), false);
    const long long number =
        saveTransfer(m_db, t, approve, [this](const QString& text) { showProgress(text); });
    selectAfterRequery(QString::number(number));
}

void TransferScreen::deleteDocument(const DocumentSummary& summary) {
    deleteTransfer(m_db, m_kind, summary.number.toLongLong());
}

purchases::PrintedDocument TransferScreen::printedDocument(const DocumentSummary& summary) {
    return transferDocument(m_db, m_kind, summary.number.toLongLong());
}

DocumentLine TransferScreen::lineFor(const QString& barcode, const Decimal& quantity,
                                     const Decimal&) {
    return articleLine(m_db, m_kind, barcode, quantity, currentBox());
}

QList<purchases::DocumentScreen::Column> TransferScreen::lineColumns() const {
    return {{QStringLiteral("Caja"), true},  {QStringLiteral("Código")},
            {QStringLiteral("Descripción")}, {QStringLiteral("Cantidad"), true},
            {QStringLiteral("Costo"), true}, {QStringLiteral("Total"), true}};
}

QStringList TransferScreen::lineCells(const DocumentLine& l) const {
    return {QString::number(l.box), l.barcode,      l.name,
            shown(l.quantity),      shown(l.price), shown((l.quantity * l.price).rounded(2))};
}

QList<purchases::DocumentScreen::TotalField> TransferScreen::totalFields() const {
    return {{QStringLiteral("lblCajas"), QStringLiteral("Cajas:")},
            {QStringLiteral("lblTotalUnidades"), QStringLiteral("Unidades:")},
            {QStringLiteral("lblTotalValor"), QStringLiteral("Total valor:")}};
}

QStringList TransferScreen::totalTexts(const QList<DocumentLine>& lines) const {
    QSet<long long> boxes;
    Decimal units;
    Decimal value;
    for (const DocumentLine& l : lines) {
        boxes.insert(l.box);
        units += l.quantity;
        value += (l.quantity * l.price).rounded(2);
    }
    return {QString::number(boxes.size()), shown(units), shown(value)};
}

void TransferScreen::newBox() {
    if (!isEditing())
        return;
    const long long box = currentBox();
    const bool used = std::any_of(keyedLines().cbegin(), keyedLines().cend(),
                                  [box](const DocumentLine& l) { return l.box == box; });
    // A box still empty is the new one already.
    if (used)
        setCurrentBox(std::max(lastBox(keyedLines()), box) + 1);
    m_code->setFocus();
    m_code->selectAll();
}

void TransferScreen::appendChecked(const QList<DocumentLine>& raw, bool intoCurrentBox) {
    QList<DocumentLine> lines = raw;
    if (intoCurrentBox)
        for (DocumentLine& l : lines)
            l.box = currentBox();
    const CheckedLines checked = checkLines(m_db, m_kind, lines);
    QList<DocumentLine> all = keyedLines();
    all.append(checked.lines);
    setLines(all);
    linesChanged();
    purchases::offerMissingArticles(this, checked.missing);
}

void TransferScreen::loadFromAdjustment() {
    if (!isEditing())
        return;
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Ajustes"), m_db,
                                                 store::adjustmentsCatalogSql());
    if (!row)
        return;
    appendChecked(
        adjustmentLines(m_db,
                        grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong()),
        true);
}

void TransferScreen::loadFromReturn() {
    if (!isEditing())
        return;
    const auto row = grid::CatalogDialog::choose(
        this, QStringLiteral("Devoluciones de transferencias"), m_db, store::returnsCatalogSql());
    if (!row)
        return;
    appendChecked(
        returnLines(m_db,
                    grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong()),
        false);
}

void TransferScreen::loadFromDraft() {
    if (!isEditing())
        return;
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Borradores de devolución"),
                                                 m_db, store::draftsCatalogSql());
    if (!row)
        return;
    appendChecked(
        draftLines(m_db, grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong()),
        false);
}

void TransferScreen::loadFromFile(const QString& caption) {
    if (!isEditing())
        return;
    const QString path = purchases::chooseDbfFile(this, caption);
    if (path.isEmpty())
        return;
    const purchases::PackingList list =
        purchases::readPackingList(m_db, path, purchases::PackingCheck::Exists, true);
    CheckedLines checked = checkLines(m_db, m_kind, list.lines);
    checked.missing = list.missing + checked.missing;
    QList<DocumentLine> all = keyedLines();
    all.append(checked.lines);
    setLines(all);
    linesChanged();
    purchases::offerMissingArticles(this, checked.missing);
}

void TransferScreen::loadFromOrders() {
    if (!isEditing())
        return;
    const auto company = purchases::chooseSisterCompany(this, m_db);
    if (!company)
        return;
    const purchases::SisterDatabase orders(m_db, *company);
    const QList<StoreOrder> pending = pendingOrders(m_db, orders.db(), company->code);
    if (pending.isEmpty())
        throw UserError(QStringLiteral("No existen pedidos pendientes de ") + company->name +
                        QStringLiteral("...!"));
    QList<QStringList> rows;
    for (const StoreOrder& o : pending)
        rows.append(
            {QString::number(o.number), o.date.toString(QStringLiteral("dd/MM/yyyy")), o.note});
    const auto chosen = purchases::ChoiceDialog::choose(
        this, QStringLiteral("Cargar Pedidos Desde Telmar (Orvo)"),
        {QStringLiteral("Pedido"), QStringLiteral("Fecha"), QStringLiteral("Observación")}, rows,
        true);
    if (!chosen)
        return;
    const StoreOrder& order = pending[*chosen];
    appendChecked(orderLines(orders.db(), order.number), true);
    m_origin->setText(QString::number(order.number));
    if (const int at = m_branch->findData(company->code); at >= 0)
        m_branch->setCurrentIndex(at);
}

void TransferScreen::chooseLot() {
    if (const auto id = AssignLotDialog::choose(m_db, this)) {
        m_lotId = *id;
        m_lot->setText(QString::number(*id));
    }
}

void TransferScreen::send() {
    const DocumentSummary* d = current();
    if (!d || isEditing())
        return;
    const QString receiver = d->supplier;
    const SentPackage sent =
        writePackage(m_db, m_kind, receiver, {d->number.toLongLong()}, sendFolder(m_db));
    QStringList numbers;
    for (long long n : sent.numbers)
        numbers << QString::number(n);
    requery();
    afterNavigate();
    emit recordStateChanged();
    dialogs().information(
        this, QStringLiteral("Se generó el paquete ") + QDir::toNativeSeparators(sent.path) +
                  QStringLiteral(" para la sucursal ") + receiver +
                  (m_kind == Kind::Transfer ? QStringLiteral(" con las transferencias Nº ")
                                            : QStringLiteral(" con las devoluciones Nº ")) +
                  numbers.join(QStringLiteral(", ")) + QStringLiteral("...!"));
}

} // namespace orvo::inventory::transfers
