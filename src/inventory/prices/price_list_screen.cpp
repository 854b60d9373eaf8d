#include "inventory/prices/price_list_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "common/dialogs/screen_widgets.h"
#include "common/errors/errors.h"
#include "common/grid/grid_print.h"
#include "common/grid_ui/catalog_dialog.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/prices/price_lists.h"
#include "inventory/prices/price_rules.h"
#include "inventory/prices/price_store.h"
#include "inventory/prices/received_lists.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPushButton>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace orvo::inventory::prices {

namespace {

enum Column {
    kReference,
    kBrand,
    kName,
    kCost,
    kRetailSuggested,
    kRetail,
    kWholesaleSuggested,
    kWholesale,
    kMemberSuggested,
    kMember,
    kPromotion,
    kDiscount,
    kPromotionPrice,
    kStart,
    kEnd,
    kColumns
};

const QStringList kHeaders = {QStringLiteral("Referencia"),       QStringLiteral("Marca"),
                              QStringLiteral("Descripción"),      QStringLiteral("Costo"),
                              QStringLiteral("Detal sugerido"),   QStringLiteral("Precio detal"),
                              QStringLiteral("Mayor sugerido"),   QStringLiteral("Precio mayor"),
                              QStringLiteral("Afiliado sug."),    QStringLiteral("Precio afiliado"),
                              QStringLiteral("Promoción"),        QStringLiteral("% Descuento"),
                              QStringLiteral("Precio promoción"), QStringLiteral("Fecha inicial"),
                              QStringLiteral("Fecha final")};

bool editableColumn(int c) {
    return c == kCost || c == kRetail || c == kWholesale || c == kMember || c == kPromotion ||
           c == kDiscount || c == kPromotionPrice || c == kStart || c == kEnd;
}

QDate typedDate(const QString& text) {
    const QDate d = QDate::fromString(text.trimmed(), QStringLiteral("dd/MM/yyyy"));
    if (!d.isValid())
        throw UserError(QStringLiteral("Escriba la fecha como dd/mm/aaaa...!"));
    return d;
}

} // namespace

PriceListScreen::PriceListScreen(QSqlDatabase db, QString userCode, QString recibeFolder,
                                 QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)),
      m_recibe(std::move(recibeFolder)) {
    setObjectName(kPriceListScreen);
    setWindowTitle(QStringLiteral("Listas de precios"));
    buildUi();
    guarded(this, [this] {
        for (const CodeName& b : brands(m_db))
            m_brand->addItem(b.code + QStringLiteral(" - ") + b.name, b.code);
        m_brand->setCurrentIndex(-1);
        if (taxIncludedFactor(m_db) != Decimal(1))
            m_taxNote->setText(QStringLiteral("Los precios se escriben con el impuesto incluido: "
                                              "al aprobar la lista se guardan sin impuesto."));
        newList();
    });
}

void PriceListScreen::buildUi() {
    m_number = shownField(this, "txtNumero");
    m_date = shownField(this, "txtFecha");
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_note = inputField(this, "txtObservacion");
    m_note->setMaxLength(255);
    m_retailFactor = inputField(this, "txtFactorDetal", true);
    m_wholesaleFactor = inputField(this, "txtFactorMayor", true);
    m_memberFactor = inputField(this, "txtFactorAfiliado", true);
    m_reference = inputField(this, "txtReferencia");
    m_reference->setMaxLength(20);
    m_brand = new QComboBox(this);
    m_brand->setObjectName(QStringLiteral("cboMarca"));
    auto* add = actionButton(this, "cmdAgregar", QStringLiteral("Agregar"));
    auto* find = actionButton(this, "cmdBuscarModelo", QStringLiteral("Buscar modelo (F2)"));

    m_lines = new QTableWidget(0, kColumns, this);
    m_lines->setObjectName(QStringLiteral("SpreadListaPrecios"));
    m_lines->setHorizontalHeaderLabels(kHeaders);
    m_lines->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_lines->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_lines->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);

    m_discount = inputField(this, "txtDescuento", true);
    m_from = dateField(this, "dtpDesde");
    m_to = dateField(this, "dtpHasta");
    m_to->setDate(QDate::currentDate().addDays(7));
    auto* applyDiscount = actionButton(this, "cmdAplicarDescuento", QStringLiteral("Aplicar"));
    auto* removeDiscount =
        actionButton(this, "cmdEliminarDescuento", QStringLiteral("Eliminar descuento"));

    auto* fresh = actionButton(this, "cmdNuevo", QStringLiteral("Nuevo"));
    auto* open = actionButton(this, "cmdAbrir", QStringLiteral("Abrir... (F3)"));
    auto* fromList =
        actionButton(this, "cmdCargarLista", QStringLiteral("Cargar de otra lista..."));
    auto* fromFile = actionButton(this, "cmdCargarArchivo", QStringLiteral("Cargar de RECIBE"));
    auto* removeLine = actionButton(this, "cmdEliminarLinea", QStringLiteral("Eliminar línea"));
    auto* save = actionButton(this, "cmdGuardar", QStringLiteral("Guardar (F10)"));
    m_apply =
        actionButton(this, "cmdActualizarInventario", QStringLiteral("Actualizar inventario"));
    auto* print = actionButton(this, "cmdImprimir", QStringLiteral("Imprimir"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    m_taxNote = new QLabel(this);
    m_taxNote->setObjectName(QStringLiteral("lblImpuestoIncluido"));

    auto* head = new QFormLayout;
    auto* numberRow = new QHBoxLayout;
    numberRow->addWidget(m_number);
    numberRow->addWidget(new QLabel(QStringLiteral("Fecha:"), this));
    numberRow->addWidget(m_date);
    numberRow->addWidget(m_status);
    numberRow->addStretch();
    head->addRow(QStringLiteral("Número:"), numberRow);
    head->addRow(QStringLiteral("Observación:"), m_note);
    auto* factors = new QHBoxLayout;
    factors->addWidget(new QLabel(QStringLiteral("Detal"), this));
    factors->addWidget(m_retailFactor);
    factors->addWidget(new QLabel(QStringLiteral("Mayor"), this));
    factors->addWidget(m_wholesaleFactor);
    factors->addWidget(new QLabel(QStringLiteral("Afiliado"), this));
    factors->addWidget(m_memberFactor);
    head->addRow(QStringLiteral("Factores sobre el costo:"), factors);
    auto* model = new QHBoxLayout;
    model->addWidget(m_reference);
    model->addWidget(m_brand, 1);
    model->addWidget(add);
    model->addWidget(find);
    head->addRow(QStringLiteral("Referencia / marca:"), model);

    auto* discount = new QHBoxLayout;
    discount->addWidget(new QLabel(QStringLiteral("Descuento de la lista %"), this));
    discount->addWidget(m_discount);
    discount->addWidget(new QLabel(QStringLiteral("desde"), this));
    discount->addWidget(m_from);
    discount->addWidget(new QLabel(QStringLiteral("hasta"), this));
    discount->addWidget(m_to);
    discount->addWidget(applyDiscount);
    discount->addWidget(removeDiscount);
    discount->addStretch();

    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {fresh, open, fromList, fromFile, removeLine, save, m_apply, print})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addWidget(m_lines, 1);
    layout->addLayout(discount);
    layout->addWidget(m_taxNote);
    layout->addLayout(buttons);

    m_editing = {m_note,
                 m_retailFactor,
                 m_wholesaleFactor,
                 m_memberFactor,
                 m_reference,
                 m_brand,
                 add,
                 find,
                 m_discount,
                 m_from,
                 m_to,
                 applyDiscount,
                 removeDiscount,
                 fromList,
                 fromFile,
                 removeLine,
                 save};

    chainFields({m_reference, m_brand}, add);
    chainFields({m_discount, m_from, m_to}, applyDiscount);
    setFocusProxy(m_reference);
    const auto action = [this](QPushButton* b, auto f) {
        connect(b, &QPushButton::clicked, this,
                [this, f] { guarded(this, [this, f] { f(this); }); });
    };
    action(add, [](PriceListScreen* s) {
        s->addModel(s->m_reference->text(), s->m_brand->currentData().toString());
    });
    action(find, [](PriceListScreen* s) { s->chooseModel(); });
    action(applyDiscount, [](PriceListScreen* s) { s->applyDiscount(); });
    action(removeDiscount, [](PriceListScreen* s) { s->removeDiscount(); });
    action(fresh, [](PriceListScreen* s) { s->newList(); });
    action(open, [](PriceListScreen* s) { s->chooseList(); });
    action(fromList, [](PriceListScreen* s) { s->chooseListToLoad(); });
    action(fromFile, [](PriceListScreen* s) { s->loadFromReceivedFile(); });
    action(removeLine, [](PriceListScreen* s) { s->removeLine(s->m_lines->currentRow()); });
    action(save, [](PriceListScreen* s) { s->save(); });
    action(m_apply, [](PriceListScreen* s) { s->applyToInventory(); });
    action(print, [](PriceListScreen* s) { s->print(); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });
    connect(m_lines, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (!m_filling)
            guarded(this, [this, item] { cellEdited(item); });
    });
    for (QLineEdit* f : {m_retailFactor, m_wholesaleFactor, m_memberFactor})
        connect(f, &QLineEdit::editingFinished, this,
                [this] { guarded(this, [this] { factorsEdited(); }); });
    connect(m_note, &QLineEdit::textEdited, this, [this](const QString& t) { m_list.note = t; });
}

void PriceListScreen::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_F2:
        guarded(this, [this] { chooseModel(); });
        return;
    case Qt::Key_F3:
        guarded(this, [this] { chooseList(); });
        return;
    case Qt::Key_F10:
        guarded(this, [this] { save(); });
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PriceListScreen::newList() {
    m_list = PriceList();
    m_list.user = m_userCode;
    showList();
    m_reference->setFocus();
}

void PriceListScreen::openList(int number) {
    const auto list = loadList(m_db, number);
    if (!list)
        throw UserError(QStringLiteral("No existe la lista de precio %1...!").arg(number));
    m_list = *list;
    showList();
}

void PriceListScreen::showList() {
    m_filling = true;
    m_number->setText(m_list.number > 0 ? QString::number(m_list.number) : QString());
    m_date->setText(m_list.date.isValid() ? m_list.date.toString(QStringLiteral("dd/MM/yyyy"))
                                          : QDate::currentDate().toString(u"dd/MM/yyyy"));
    m_status->setText(listStatusText(m_list.status));
    m_note->setText(m_list.note);
    m_retailFactor->setText(m_list.retailFactor.toString());
    m_wholesaleFactor->setText(m_list.wholesaleFactor.toString());
    m_memberFactor->setText(m_list.memberFactor.toString());
    m_lines->setRowCount(int(m_list.lines.size()));
    m_filling = false;
    for (int r = 0; r < m_list.lines.size(); ++r)
        showLine(r);
    setEditable(!m_list.isApproved());
}

void PriceListScreen::showLine(int row) {
    const PriceLine& l = m_list.lines[row];
    const bool open = !m_list.isApproved();
    m_filling = true;
    const auto cell = [&](int c, const QString& text, bool right = false) {
        auto* item = new QTableWidgetItem(text);
        Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
        if (open && editableColumn(c))
            flags |= c == kPromotion ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
        item->setFlags(flags);
        if (right)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_lines->setItem(row, c, item);
        return item;
    };
    cell(kReference, l.reference);
    cell(kBrand, l.brand);
    cell(kName, l.name);
    cell(kCost, moneyText(l.cost), true);
    cell(kRetailSuggested, moneyText(l.retailSuggested), true);
    cell(kRetail, moneyText(l.retail), true);
    cell(kWholesaleSuggested, moneyText(l.wholesaleSuggested), true);
    cell(kWholesale, moneyText(l.wholesale), true);
    cell(kMemberSuggested, moneyText(l.memberSuggested), true);
    cell(kMember, moneyText(l.member), true);
    cell(kPromotion, QString())->setCheckState(l.promotion ? Qt::Checked : Qt::Unchecked);
    cell(kDiscount, moneyText(l.discount), true);
    cell(kPromotionPrice, moneyText(l.promotionPrice), true);
    cell(kStart, l.start.toString(QStringLiteral("dd/MM/yyyy")));
    cell(kEnd, l.end.toString(QStringLiteral("dd/MM/yyyy")));
    m_filling = false;
}

void PriceListScreen::setEditable(bool editable) {
    for (QWidget* w : std::as_const(m_editing))
        w->setEnabled(editable);
    m_apply->setEnabled(!editable && m_list.number > 0);
}

void PriceListScreen::cellEdited(QTableWidgetItem* item) {
    const int row = item->row();
    if (row < 0 || row >= m_list.lines.size())
        return;
    PriceLine l = m_list.lines[row];
    try {
        const int c = item->column();
        if (c == kPromotion) {
            l.promotion = item->checkState() == Qt::Checked;
            if (l.promotion && l.start == kNoPromotionDate && l.end == kNoPromotionDate)
                l.start = l.end = QDate::currentDate();
        } else if (c == kStart || c == kEnd) {
            const QDate d = typedDate(item->text());
            rules::checkLineDates(c == kStart ? d : l.start, c == kEnd ? d : l.end);
            (c == kStart ? l.start : l.end) = d;
        } else if (editableColumn(c)) {
            const Decimal v = typedAmount(item->text());
            switch (c) {
            case kCost:
                l.cost = v.rounded(5);
                rules::suggest(l, m_list);
                break;
            case kRetail:
                l.retail = v.rounded(4);
                l.discount = inventory::rules::discountOf(l.retail, l.promotionPrice);
                break;
            case kWholesale:
                l.wholesale = v.rounded(4);
                break;
            case kMember:
                l.member = v.rounded(4);
                break;
            case kDiscount:
                rules::setLineDiscount(l, v);
                break;
            case kPromotionPrice:
                rules::setLinePromotionPrice(l, v);
                break;
            default:
                break;
            }
        }
    } catch (...) {
        showLine(row); // the cell goes back to what the line holds
        throw;
    }
    m_list.lines[row] = l;
    showLine(row);
}

void PriceListScreen::factorsEdited() {
    PriceList factors = m_list;
    factors.retailFactor = typedAmount(m_retailFactor->text());
    factors.wholesaleFactor = typedAmount(m_wholesaleFactor->text());
    factors.memberFactor = typedAmount(m_memberFactor->text());
    if (factors.retailFactor == m_list.retailFactor &&
        factors.wholesaleFactor == m_list.wholesaleFactor &&
        factors.memberFactor == m_list.memberFactor)
        return;
    for (PriceLine& l : factors.lines)
        rules::suggest(l, factors);
    m_list = factors;
    showList();
}

void PriceListScreen::addModel(const QString& reference, const QString& brand) {
    const ModelKey key{reference.trimmed(), brand};
    if (key.reference.isEmpty() || key.brand.isEmpty())
        throw UserError(
            QStringLiteral("Debe seleccionar una marca y una referencia para la lista...!"));
    if (m_list.indexOf(key) >= 0)
        throw UserError(QStringLiteral("La referencia ") + key.reference +
                        QStringLiteral(" ya esta en la lista...!"));
    const auto line = modelLine(m_db, key, m_list);
    if (!line)
        throw UserError(QStringLiteral("No existe la referencia ") + key.reference +
                        QStringLiteral(" de la marca ") + key.brand + QStringLiteral("...!"));
    m_list.lines.append(*line);
    m_lines->setRowCount(int(m_list.lines.size()));
    showLine(int(m_list.lines.size()) - 1);
    m_lines->setCurrentCell(int(m_list.lines.size()) - 1, kRetail);
    m_reference->clear();
    m_reference->setFocus();
}

void PriceListScreen::removeLine(int row) {
    if (row < 0 || row >= m_list.lines.size() || m_list.isApproved())
        return;
    m_list.lines.removeAt(row);
    m_lines->removeRow(row);
}

void PriceListScreen::loadFromList(int number) {
    const int n = mergeLines(m_list, linesOfList(m_db, number));
    for (PriceLine& l : m_list.lines)
        rules::suggest(l, m_list);
    showList();
    dialogs().information(
        this, QStringLiteral("Se cargaron %1 referencias de la lista %2.").arg(n).arg(number));
}

void PriceListScreen::loadFromReceivedFile() {
    const int n = mergeLines(m_list, linesFromReceivedFile(m_recibe));
    // Names and suggested prices from this store's catalogue and the list's factors.
    for (PriceLine& l : m_list.lines) {
        if (l.name.isEmpty())
            if (const auto model = modelLine(m_db, l.key(), m_list))
                l.name = model->name;
        rules::suggest(l, m_list);
    }
    showList();
    dialogs().information(this, QStringLiteral("Se cargaron %1 referencias del archivo.").arg(n));
}

void PriceListScreen::applyDiscount() {
    const auto percent = parseTypedNumber(m_discount->text());
    if (!percent)
        throw UserError(QStringLiteral("Introduzca el porcentaje de descuento...!"));
    QList<PriceLine> lines = m_list.lines;
    const QString done = rules::applyListDiscount(lines, *percent, m_from->date(), m_to->date());
    m_list.lines = lines;
    showList();
    dialogs().information(this, done);
}

void PriceListScreen::removeDiscount() {
    const QString done = rules::removeListDiscount(m_list.lines);
    showList();
    dialogs().information(this, done);
}

void PriceListScreen::save() {
    if (m_list.isApproved())
        return;
    factorsEdited();
    m_list.note = m_note->text();
    rules::checkLines(m_list.lines);
    SaveOptions options;
    options.approve =
        dialogs().question(this, QStringLiteral("Desea aprobar la lista de precio...?"),
                           QStringLiteral("Aprobar lista de precio"), false);
    if (options.approve)
        options.applyToInventory = dialogs().question(
            this,
            QStringLiteral("Desea actualizar los valores del inventario con la lista de "
                           "precio...?"),
            QStringLiteral("Actualizar inventario"), false);
    const SaveResult r =
        saveList(m_db, m_list, options, ArticleWriter::here(m_userCode, kPriceListScreen));
    openList(r.number);
    QString text = QStringLiteral("Lista de precio Nº %1 guardada").arg(r.number);
    if (options.approve)
        text += QStringLiteral(" y aprobada");
    if (options.applyToInventory)
        text +=
            QStringLiteral(": se actualizaron los precios de %1 artículos").arg(r.articlesUpdated);
    dialogs().information(this, text + QStringLiteral("...!"));
}

void PriceListScreen::applyToInventory() {
    if (!m_list.isApproved())
        return;
    if (!dialogs().question(this,
                            QStringLiteral("Desea actualizar los valores del inventario con la "
                                           "lista de precio...?"),
                            QStringLiteral("Actualizar inventario"), false))
        return;
    const int n = applyListToInventory(m_db, m_list.number,
                                       ArticleWriter::here(m_userCode, kPriceListScreen));
    dialogs().information(this,
                          QStringLiteral("Se actualizaron los precios de %1 artículos...!").arg(n));
}

void PriceListScreen::print() {
    QList<QStringList> rows;
    for (const PriceLine& l : std::as_const(m_list.lines))
        rows << QStringList{l.reference,
                            l.brand,
                            l.name,
                            moneyText(l.retail),
                            moneyText(l.wholesale),
                            moneyText(l.member),
                            l.promotion ? moneyText(l.promotionPrice) : QString(),
                            l.promotion ? l.start.toString(u"dd/MM/yyyy") + QStringLiteral(" - ") +
                                              l.end.toString(u"dd/MM/yyyy")
                                        : QString()};
    QTextDocument doc;
    doc.setHtml(grid::tableHtml({QStringLiteral("Referencia"), QStringLiteral("Marca"),
                                 QStringLiteral("Descripción"), QStringLiteral("Detal"),
                                 QStringLiteral("Mayor"), QStringLiteral("Afiliado"),
                                 QStringLiteral("Promoción"), QStringLiteral("Vigencia")},
                                rows, {false, false, false, true, true, true, true, false}));
    const QString title = QStringLiteral("Lista de precios Nº %1 (%2)")
                              .arg(m_list.number)
                              .arg(listStatusText(m_list.status));
    QPrinter printer;
    if (!choosePrinter(this, printer, title))
        return;
    grid::printDocument(printer, doc, title);
}

void PriceListScreen::chooseModel() {
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Modelos"), m_db,
                                                 store::modelsCatalogSql());
    if (!row)
        return;
    addModel(grid::CatalogDialog::valueOf(*row, QStringLiteral("Referencia")).toString(),
             grid::CatalogDialog::valueOf(*row, QStringLiteral("Marca")).toString());
}

void PriceListScreen::chooseList() {
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Listas de precios"), m_db,
                                                 store::listsCatalogSql());
    if (row)
        openList(grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toInt());
}

void PriceListScreen::chooseListToLoad() {
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Listas de precios"), m_db,
                                                 store::listsCatalogSql());
    if (row)
        loadFromList(grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toInt());
}

} // namespace orvo::inventory::prices
