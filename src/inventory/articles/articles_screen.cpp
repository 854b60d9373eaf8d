#include "inventory/articles/articles_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/articles/article_rules.h"
#include "shell/users/roles.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPrinter>
#include <QRadioButton>
#include <QSplitter>
#include <QTableView>
#include <QTableWidget>
#include <QTextDocument>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orvo::inventory {

namespace {

const char* kExact = "orvoExact"; // the full value behind a field that shows fewer decimals
const char* kShown = "orvoShown";

// Typed amounts: the last '.' or ',' is the decimal separator, the other one groups thousands.
Decimal parseAmount(QString text) {
    text.remove(QLatin1Char(' '));
    const int dot = int(text.lastIndexOf(QLatin1Char('.')));
    const int comma = int(text.lastIndexOf(QLatin1Char(',')));
    if (dot >= 0 && comma >= 0) {
        const QChar group = dot > comma ? QLatin1Char(',') : QLatin1Char('.');
        text.remove(group);
    }
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    return Decimal::parse(text).value_or(Decimal());
}

void setAmount(QLineEdit* e, const Decimal& value, int shown = 2) {
    const QString text = value.toString(shown);
    e->setText(text);
    e->setProperty(kExact, value.toString());
    e->setProperty(kShown, text);
}

Decimal amountOf(const QLineEdit* e) {
    if (e->text() == e->property(kShown).toString() && !e->property(kExact).toString().isEmpty())
        return Decimal::fromString(e->property(kExact).toString());
    return parseAmount(e->text());
}

QLineEdit* amountEdit(QWidget* parent, const QString& name) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(name);
    e->setAlignment(Qt::AlignRight);
    return e;
}

QButtonGroup* options(QWidget* parent, QHBoxLayout* row, const QString& name,
                      const QStringList& captions) {
    auto* group = new QButtonGroup(parent);
    group->setObjectName(name);
    for (int i = 0; i < captions.size(); ++i) {
        auto* b = new QRadioButton(captions[i], parent);
        b->setObjectName(name + QLatin1Char('_') + QString::number(i));
        group->addButton(b, i);
        row->addWidget(b);
    }
    return group;
}

void fillCombo(QComboBox* box, const QList<CodeName>& rows) {
    box->clear();
    for (const CodeName& r : rows)
        box->addItem(r.name, r.code);
    box->setCurrentIndex(-1);
}

void selectData(QComboBox* box, const QVariant& data) {
    box->setCurrentIndex(box->findData(data));
}

} // namespace

ArticlesScreen::ArticlesScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(QStringLiteral("frmArticulos"));
    setWindowTitle(QStringLiteral("Artículos"));
    m_seePrices = shell::users::maySeePrices(m_db, m_userCode);
    m_seeCosts = shell::users::maySeeCosts(m_db, m_userCode);
    buildForm();
    installFieldBehaviour();
    loadCatalogues();
    enableInputs(false, true);
    requery();
    if (recordCount() > 0)
        navigateTo(0);
    updateEditability();
    connect(this, &RecordScreen::recordStateChanged, this, &ArticlesScreen::updateEditability);
}

void ArticlesScreen::buildForm() {
    auto* split = new QSplitter(Qt::Vertical, this);
    auto* outer = new QVBoxLayout(this);
    outer->addWidget(split);

    m_browser = new grid::GridView(split);
    m_browser->setObjectName(QStringLiteral("grdConsulta"));
    m_browser->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_browser->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_browser, &QTableView::clicked, this, [this](const QModelIndex& i) {
        if (!isEditing())
            guarded(this, [&] { navigateTo(i.row()); });
    });

    auto* form = new QWidget(split);
    auto* formLayout = new QHBoxLayout(form);

    // Common data of the model.
    auto* data = new QGroupBox(QStringLiteral("Modelo"), form);
    auto* fl = new QFormLayout(data);
    m_reference = new QLineEdit(data);
    m_reference->setObjectName(QStringLiteral("txtReferencia"));
    m_reference->setMaxLength(20);
    markKey(m_reference);
    markRequired(m_reference, QStringLiteral("la referencia"));
    fl->addRow(QStringLiteral("Referencia"), m_reference);
    m_brand = new QComboBox(data);
    m_brand->setObjectName(QStringLiteral("cboMarca"));
    markKey(m_brand);
    markRequired(m_brand, QStringLiteral("la marca"));
    fl->addRow(QStringLiteral("Marca"), m_brand);
    m_name = new QLineEdit(data);
    m_name->setObjectName(QStringLiteral("txtNombre"));
    m_name->setMaxLength(70); // leaves room for " T:" + size + colour in the variant name
    markRequired(m_name, QStringLiteral("el nombre"));
    fl->addRow(QStringLiteral("Nombre"), m_name);
    m_manufacturer = new QComboBox(data);
    m_manufacturer->setObjectName(QStringLiteral("cboFabricante"));
    fl->addRow(QStringLiteral("Fabricante"), m_manufacturer);
    m_tax = new QComboBox(data);
    m_tax->setObjectName(QStringLiteral("cboImpuesto"));
    fl->addRow(QStringLiteral("Impuesto"), m_tax);
    m_reorder = amountEdit(data, QStringLiteral("txtPuntoReorden"));
    fl->addRow(QStringLiteral("Punto de reorden"), m_reorder);
    m_note = new QLineEdit(data);
    m_note->setObjectName(QStringLiteral("txtNota"));
    m_note->setMaxLength(255);
    fl->addRow(QStringLiteral("Nota"), m_note);
    auto* typeRow = new QHBoxLayout;
    m_type = options(data, typeRow, QStringLiteral("optTipo"),
                     {QStringLiteral("Articulo"), QStringLiteral("Servicio")});
    fl->addRow(QStringLiteral("Tipo"), typeRow);
    auto* statusRow = new QHBoxLayout;
    m_status = options(data, statusRow, QStringLiteral("optStatus"),
                       {QStringLiteral("Inactivo"), QStringLiteral("Activo")});
    fl->addRow(QStringLiteral("Estatus"), statusRow);
    m_serialized = new QCheckBox(QStringLiteral("Serializado"), data);
    m_serialized->setObjectName(QStringLiteral("chkSerializado"));
    fl->addRow(QString(), m_serialized);
    m_fractional = new QCheckBox(QStringLiteral("Se vende por peso o medida (cantidades con "
                                                "decimales)"),
                                 data);
    m_fractional->setObjectName(QStringLiteral("chkFraccionable"));
    fl->addRow(QString(), m_fractional);
    m_categories = new QTreeWidget(data);
    m_categories->setObjectName(QStringLiteral("tvwCategorias"));
    m_categories->setHeaderHidden(true);
    fl->addRow(QStringLiteral("Categoría"), m_categories);
    formLayout->addWidget(data);

    // Prices (before tax and tax included) and costs.
    auto* money = new QWidget(form);
    auto* ml = new QVBoxLayout(money);
    auto* prices = new QGroupBox(QStringLiteral("Precios"), money);
    prices->setObjectName(QStringLiteral("fraPrecios"));
    auto* pl = new QFormLayout(prices);
    auto pair = [&](const QString& caption, const QString& name, QLineEdit*& before,
                    QLineEdit*& with) {
        auto* row = new QHBoxLayout;
        before = amountEdit(prices, name);
        with = amountEdit(prices, name + QStringLiteral("Imp"));
        row->addWidget(before);
        row->addWidget(with);
        pl->addRow(caption, row);
        QLineEdit* b = before;
        QLineEdit* w = with;
        connect(b, &QLineEdit::textEdited, this, [this, b, w] { pairChanged(b, w, true); });
        connect(w, &QLineEdit::textEdited, this, [this, b, w] { pairChanged(b, w, false); });
    };
    pair(QStringLiteral("Detal"), QStringLiteral("txtPrecioDetal"), m_retail, m_retailTax);
    pair(QStringLiteral("Mayor"), QStringLiteral("txtPrecioMayor"), m_wholesale, m_wholesaleTax);
    pair(QStringLiteral("Afiliado"), QStringLiteral("txtPrecioAfiliado"), m_member, m_memberTax);
    auto* promoRow = new QHBoxLayout;
    m_promotion = options(prices, promoRow, QStringLiteral("optPromocion"),
                          {QStringLiteral("No"), QStringLiteral("Si")});
    pl->addRow(QStringLiteral("Promoción"), promoRow);
    pair(QStringLiteral("Precio promoción"), QStringLiteral("txtPrecioPromocion"), m_promotionPrice,
         m_promotionPriceTax);
    m_discount = amountEdit(prices, QStringLiteral("txtDescuento"));
    pl->addRow(QStringLiteral("Descuento %"), m_discount);
    connect(m_discount, &QLineEdit::editingFinished, this,
            [this] { guarded(this, [&] { discountTyped(); }); });
    connect(m_promotionPrice, &QLineEdit::editingFinished, this,
            [this] { guarded(this, [&] { promotionPriceTyped(); }); });
    connect(m_promotionPriceTax, &QLineEdit::editingFinished, this,
            [this] { guarded(this, [&] { promotionPriceTyped(); }); });
    m_start = new QDateEdit(prices);
    m_start->setObjectName(QStringLiteral("dtpFechaInicial"));
    m_start->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    m_start->setCalendarPopup(true);
    pl->addRow(QStringLiteral("Fecha inicial"), m_start);
    m_end = new QDateEdit(prices);
    m_end->setObjectName(QStringLiteral("dtpFechaFinal"));
    m_end->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    m_end->setCalendarPopup(true);
    pl->addRow(QStringLiteral("Fecha final"), m_end);
    connect(m_tax, &QComboBox::currentIndexChanged, this, [this] {
        if (m_filling)
            return;
        for (auto [b, w] : {std::pair{m_retail, m_retailTax},
                            {m_wholesale, m_wholesaleTax},
                            {m_member, m_memberTax},
                            {m_promotionPrice, m_promotionPriceTax}})
            pairChanged(b, w, true);
    });
    prices->setVisible(m_seePrices);
    ml->addWidget(prices);

    auto* costs = new QGroupBox(QStringLiteral("Costos"), money);
    costs->setObjectName(QStringLiteral("fraCostos"));
    auto* cl = new QFormLayout(costs);
    m_initialCost = amountEdit(costs, QStringLiteral("txtCostoInicial"));
    cl->addRow(QStringLiteral("Costo inicial"), m_initialCost);
    m_averageCost = amountEdit(costs, QStringLiteral("txtCostoPromedio"));
    cl->addRow(QStringLiteral("Costo promedio"), m_averageCost);
    m_lastCost = amountEdit(costs, QStringLiteral("txtUltimoCosto"));
    cl->addRow(QStringLiteral("Último costo"), m_lastCost);
    m_dollarCost = amountEdit(costs, QStringLiteral("txtCostoDolar"));
    cl->addRow(QStringLiteral("Costo en dólares"), m_dollarCost);
    costs->setVisible(m_seeCosts);
    ml->addWidget(costs);
    ml->addStretch();
    formLayout->addWidget(money);

    // Sizes and colours ticked build the grid; each cell holds one variant's barcode.
    auto* variants = new QGroupBox(QStringLiteral("Tallas y colores"), form);
    auto* vl = new QVBoxLayout(variants);
    auto* lists = new QHBoxLayout;
    m_sizes = new QListWidget(variants);
    m_sizes->setObjectName(QStringLiteral("lstTallas"));
    m_colours = new QListWidget(variants);
    m_colours->setObjectName(QStringLiteral("lstColores"));
    lists->addWidget(m_sizes);
    lists->addWidget(m_colours);
    vl->addLayout(lists);
    connect(m_sizes, &QListWidget::itemChanged, this,
            [this](QListWidgetItem* i) { guarded(this, [&] { sizeTicked(i); }); });
    connect(m_colours, &QListWidget::itemChanged, this,
            [this](QListWidgetItem* i) { guarded(this, [&] { colourTicked(i); }); });
    m_gridView = new QTableWidget(variants);
    m_gridView->setObjectName(QStringLiteral("SpreadArticulos"));
    m_gridView->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_gridView, &QTableWidget::customContextMenuRequested, this, &ArticlesScreen::gridMenu);
    connect(m_gridView, &QTableWidget::cellChanged, this, &ArticlesScreen::cellChanged);
    vl->addWidget(m_gridView);
    m_variants = new QLabel(variants);
    m_variants->setObjectName(QStringLiteral("lblVariaciones"));
    vl->addWidget(m_variants);
    formLayout->addWidget(variants, 1);
}

void ArticlesScreen::loadCatalogues() {
    m_filling = true;
    fillCombo(m_brand, brands(m_db));
    fillCombo(m_manufacturer, manufacturers(m_db));
    m_tax->clear();
    for (const TaxCode& t : taxCodes(m_db))
        m_tax->addItem(t.name + QStringLiteral(" (") + t.rate.toString(2) + QStringLiteral("%)"),
                       t.code);
    m_categories->clear();
    auto* root = new QTreeWidgetItem(m_categories, {QStringLiteral("SIN DEFINIR")});
    root->setData(0, Qt::UserRole, rules::kRootCategoryKey);
    QHash<QString, QTreeWidgetItem*> nodes;
    for (const Category& c : categories(m_db)) {
        QTreeWidgetItem* parent = nodes.value(c.parent, root);
        auto* node = new QTreeWidgetItem(parent, {c.name});
        node->setData(0, Qt::UserRole, rules::categoryKey(c.code));
        nodes.insert(c.code, node);
    }
    m_categories->expandAll();
    m_sizes->clear();
    for (const CodeName& s : sizes(m_db)) {
        auto* item = new QListWidgetItem(s.code, m_sizes);
        item->setData(Qt::UserRole, s.code);
        item->setCheckState(Qt::Unchecked);
    }
    m_colours->clear();
    for (const CodeName& c : colours(m_db)) {
        auto* item = new QListWidgetItem(c.name, m_colours);
        item->setData(Qt::UserRole, c.code);
        item->setCheckState(Qt::Unchecked);
    }
    m_filling = false;
}

int ArticlesScreen::recordCount() const {
    return m_browser->gridModel()->rowCount();
}

QPair<QString, QString> ArticlesScreen::keyAt(int row) const {
    const grid::GridModel* g = m_browser->gridModel();
    return {g->value(row, 0).toString(), g->value(row, g->columnCount() - 1).toString()};
}

int ArticlesScreen::rowOf(const QString& reference, const QString& brand) const {
    for (int r = 0; r < recordCount(); ++r)
        if (keyAt(r) == qMakePair(reference, brand))
            return r;
    return -1;
}

void ArticlesScreen::requery() {
    const auto current =
        m_current >= 0 && m_current < recordCount() ? keyAt(m_current) : QPair<QString, QString>();
    const ModelList list = listModels(m_db, m_userCode);
    using Type = grid::GridColumn::Type;
    QList<grid::GridColumn> columns = {{QStringLiteral("Referencia")},
                                       {QStringLiteral("Marca")},
                                       {QStringLiteral("Nombre")},
                                       {QStringLiteral("Variaciones"), Type::Number, 0},
                                       {QStringLiteral("Existencia"), Type::Number, 2}};
    if (list.withPrices)
        columns.append({QStringLiteral("Precio Detal"), Type::Number, 2});
    if (list.withCosts)
        columns.append({QStringLiteral("Costo Promedio"), Type::Number, 2});
    columns.append({QStringLiteral("~HDNCodigoMarca"), Type::Text, 0, true});
    QList<QVariantList> rows;
    rows.reserve(list.rows.size());
    for (const ModelRow& r : list.rows) {
        QVariantList v = {r.reference, r.brandName.isEmpty() ? r.brand : r.brandName, r.name,
                          QVariant::fromValue(Decimal(r.variants)), QVariant::fromValue(r.stock)};
        if (list.withPrices)
            v.append(QVariant::fromValue(r.retailPrice));
        if (list.withCosts)
            v.append(QVariant::fromValue(r.averageCost));
        v.append(r.brand);
        rows.append(std::move(v));
    }
    m_browser->setColumns(columns);
    m_browser->gridModel()->setRows(rows);
    m_current = rowOf(current.first, current.second);
    if (m_current < 0 && recordCount() > 0)
        m_current = 0;
}

void ArticlesScreen::runSearch() {
    // The reference (and brand, when chosen) typed while searching find the model.
    const QString reference = m_reference->text().trimmed();
    const QString brand = m_brand->currentData().toString();
    for (int r = 0; r < recordCount(); ++r) {
        const auto key = keyAt(r);
        if ((reference.isEmpty() || key.first == reference) &&
            (brand.isEmpty() || key.second == brand)) {
            navigateTo(r);
            return;
        }
    }
    dialogs().information(this, QStringLiteral("No existe ningún valor similar al\nelemento "
                                               "buscado."));
    navigateTo(m_current);
}

void ArticlesScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    m_current = row;
    m_browser->selectRow(row);
    afterNavigate();
}

void ArticlesScreen::afterNavigate() {
    if (m_current < 0 || m_current >= recordCount())
        return;
    const auto key = keyAt(m_current);
    if (const auto lm = loadModel(m_db, key.first, key.second))
        showModel(*lm);
}

void ArticlesScreen::showModel(const LoadedModel& lm) {
    m_filling = true;
    const ArticleModel& m = lm.model;
    m_reference->setText(m.reference);
    selectData(m_brand, m.brand);
    m_name->setText(m.name);
    selectData(m_manufacturer, m.manufacturer);
    selectData(m_tax, m.taxCode);
    setAmount(m_reorder, m.reorderPoint);
    m_note->setText(m.note);
    const Decimal rate = m.taxRate;
    for (auto [b, w, v] : {std::tuple{m_retail, m_retailTax, m.retailPrice},
                           {m_wholesale, m_wholesaleTax, m.wholesalePrice},
                           {m_member, m_memberTax, m.memberPrice},
                           {m_promotionPrice, m_promotionPriceTax, m.promotionPrice}}) {
        setAmount(b, v);
        setAmount(w, rules::withTax(v, rate));
    }
    setAmount(m_discount, rules::discountOf(m.retailPrice, m.promotionPrice));
    m_start->setDate(m.promotionStart);
    m_end->setDate(m.promotionEnd);
    setAmount(m_initialCost, m.initialCost);
    setAmount(m_averageCost, m.averageCost);
    setAmount(m_lastCost, m.lastCost);
    setAmount(m_dollarCost, m.dollarCost);
    m_type->button(m.type == 1 ? 1 : 0)->setChecked(true);
    m_status->button(m.status == 1 ? 1 : 0)->setChecked(true);
    m_promotion->button(m.promotion ? 1 : 0)->setChecked(true);
    m_serialized->setChecked(m.serialized);
    m_fractional->setChecked(m.fractional);
    selectCategory(m.category);
    m_typedCells.clear(); // edits of the model shown before
    m_grid = lm.grid;
    m_filling = false;
    rebuildGrid();
}

void ArticlesScreen::selectCategory(const QString& code) {
    const QString key = code.isEmpty() ? rules::kRootCategoryKey : rules::categoryKey(code);
    for (QTreeWidgetItemIterator it(m_categories); *it; ++it) {
        if ((*it)->data(0, Qt::UserRole).toString() == key) {
            m_categories->setCurrentItem(*it);
            return;
        }
    }
    m_categories->setCurrentItem(nullptr);
}

QString ArticlesScreen::selectedCategory() const {
    const QTreeWidgetItem* item = m_categories->currentItem();
    if (!item)
        return {};
    const QString key = item->data(0, Qt::UserRole).toString();
    return key == rules::kRootCategoryKey ? QString() : key.mid(1);
}

void ArticlesScreen::rebuildGrid() {
    // Cells typed before a size or colour moves the others are taken first.
    checkTypedCellsShowingRefusals();
    m_filling = true;
    m_gridView->clear();
    m_gridView->setRowCount(m_grid.rowCount());
    m_gridView->setColumnCount(m_grid.columnCount());
    m_gridView->setVerticalHeaderLabels(m_grid.sizes());
    QStringList captions;
    for (const GridColour& c : m_grid.colours())
        captions << c.name;
    m_gridView->setHorizontalHeaderLabels(captions);
    for (int r = 0; r < m_grid.rowCount(); ++r)
        for (int c = 0; c < m_grid.columnCount(); ++c)
            m_gridView->setItem(r, c, new QTableWidgetItem(m_grid.barcode(r, c)));
    m_gridView->resizeColumnsToContents();
    for (int c = 0; c < m_grid.columnCount(); ++c)
        m_gridView->setColumnWidth(c, std::max(m_gridView->columnWidth(c), 120));
    for (int i = 0; i < m_sizes->count(); ++i) {
        QListWidgetItem* item = m_sizes->item(i);
        item->setCheckState(m_grid.rowOf(item->data(Qt::UserRole).toString()) >= 0 ? Qt::Checked
                                                                                   : Qt::Unchecked);
    }
    for (int i = 0; i < m_colours->count(); ++i) {
        QListWidgetItem* item = m_colours->item(i);
        item->setCheckState(m_grid.columnOf(item->data(Qt::UserRole).toString()) >= 0
                                ? Qt::Checked
                                : Qt::Unchecked);
    }
    m_filling = false;
    updateVariantLabel();
    updateEditability();
}

void ArticlesScreen::updateVariantLabel() {
    m_variants->setText(QStringLiteral("Existe(n) ") + QString::number(m_grid.variantCount()) +
                        QStringLiteral(" variacion(es) por talla y color"));
}

void ArticlesScreen::updateEditability() {
    const bool editing = isEditing();
    m_gridView->setEditTriggers(editing ? QAbstractItemView::AllEditTriggers
                                        : QAbstractItemView::NoEditTriggers);
    m_sizes->setEnabled(editing);
    m_colours->setEnabled(editing);
    m_categories->setEnabled(editing);
    m_browser->setEnabled(!editing);
}

void ArticlesScreen::cellChanged(int row, int column) {
    if (m_filling)
        return;
    m_typedCells.append({row, column});
    if (m_typedCells.size() == 1)
        QMetaObject::invokeMethod(this, &ArticlesScreen::checkTypedCellsShowingRefusals,
                                  Qt::QueuedConnection);
}

void ArticlesScreen::checkTypedCells() {
    while (!m_typedCells.isEmpty()) {
        const auto [row, column] = m_typedCells.takeFirst();
        if (row >= m_grid.rowCount() || column >= m_grid.columnCount())
            continue; // the grid was rebuilt meanwhile
        QTableWidgetItem* item = m_gridView->item(row, column);
        const QString code = item ? item->text().trimmed() : QString();
        try {
            checkBarcodeCell(m_db, m_grid, row, column, code, m_reference->text().trimmed());
        } catch (...) {
            // The refused code leaves the cell; nothing else moves.
            m_grid.setBarcode(row, column, QString());
            if (item) {
                m_filling = true;
                item->setText(QString());
                m_filling = false;
            }
            updateVariantLabel();
            throw;
        }
        m_grid.setBarcode(row, column, code);
        updateVariantLabel();
    }
}

void ArticlesScreen::checkTypedCellsShowingRefusals() {
    while (!m_typedCells.isEmpty())
        guarded(this, [this] { checkTypedCells(); });
}

void ArticlesScreen::sizeTicked(QListWidgetItem* item) {
    if (m_filling)
        return;
    const QString size = item->data(Qt::UserRole).toString();
    if (item->checkState() == Qt::Checked)
        m_grid.addSize(size);
    else if (m_grid.rowOf(size) >= 0)
        m_grid.removeSize(m_grid.rowOf(size));
    rebuildGrid();
}

void ArticlesScreen::colourTicked(QListWidgetItem* item) {
    if (m_filling)
        return;
    const QString code = item->data(Qt::UserRole).toString();
    if (item->checkState() == Qt::Checked)
        m_grid.addColour({code, item->text()});
    else if (m_grid.columnOf(code) >= 0)
        m_grid.removeColour(m_grid.columnOf(code));
    rebuildGrid();
}

void ArticlesScreen::insertSizeRow(int row, const QString& size) {
    if (size.isEmpty() || m_grid.rowOf(size) >= 0)
        return;
    m_grid.insertSize(std::clamp(row, 0, m_grid.rowCount()), size);
    rebuildGrid();
}

void ArticlesScreen::deleteSizeRow(int row) {
    if (row < 0 || row >= m_grid.rowCount())
        return;
    m_grid.removeSize(row);
    rebuildGrid();
}

void ArticlesScreen::insertColourColumn(int column, const QString& colourCode) {
    if (colourCode.isEmpty() || m_grid.columnOf(colourCode) >= 0)
        return;
    QString name = colourCode;
    for (int i = 0; i < m_colours->count(); ++i)
        if (m_colours->item(i)->data(Qt::UserRole).toString() == colourCode)
            name = m_colours->item(i)->text();
    m_grid.insertColour(std::clamp(column, 0, m_grid.columnCount()), {colourCode, name});
    rebuildGrid();
}

void ArticlesScreen::deleteColourColumn(int column) {
    if (column < 0 || column >= m_grid.columnCount())
        return;
    m_grid.removeColour(column);
    rebuildGrid();
}

void ArticlesScreen::gridMenu(const QPoint& pos) {
    if (!isEditing())
        return;
    const QModelIndex at = m_gridView->indexAt(pos);
    const int row = at.isValid() ? at.row() : m_grid.rowCount();
    const int column = at.isValid() ? at.column() : m_grid.columnCount();
    QMenu menu(this);
    QAction* insertRow = menu.addAction(QStringLiteral("Insertar fila"));
    QAction* removeRow = menu.addAction(QStringLiteral("Eliminar fila"));
    QAction* insertColumn = menu.addAction(QStringLiteral("Insertar columna"));
    QAction* removeColumn = menu.addAction(QStringLiteral("Eliminar columna"));
    removeRow->setEnabled(at.isValid());
    removeColumn->setEnabled(at.isValid());
    QAction* chosen = menu.exec(m_gridView->viewport()->mapToGlobal(pos));
    guarded(this, [&] {
        if (chosen == insertRow) {
            if (const auto size = dialogs().textInput(this, QStringLiteral("Insertar fila"),
                                                      QStringLiteral("Talla")))
                insertSizeRow(row, size->trimmed());
        } else if (chosen == removeRow) {
            deleteSizeRow(row);
        } else if (chosen == insertColumn) {
            if (const auto colour = dialogs().textInput(this, QStringLiteral("Insertar columna"),
                                                        QStringLiteral("Código del color")))
                insertColourColumn(column, colour->trimmed());
        } else if (chosen == removeColumn) {
            deleteColourColumn(column);
        }
    });
}

Decimal ArticlesScreen::taxRate() const {
    const int code = m_tax->currentData().toInt();
    for (const TaxCode& t : taxCodes(m_db))
        if (t.code == code)
            return t.rate;
    return Decimal();
}

void ArticlesScreen::pairChanged(QLineEdit* beforeTax, QLineEdit* withTax, bool fromBeforeTax) {
    const Decimal rate = taxRate();
    if (fromBeforeTax) {
        const Decimal b = amountOf(beforeTax);
        setAmount(withTax, rules::withTax(b, rate));
    } else {
        setAmount(beforeTax, rules::withoutTax(amountOf(withTax), rate));
    }
    if (beforeTax == m_retail || beforeTax == m_promotionPrice)
        setAmount(m_discount, rules::discountOf(amountOf(m_retail), amountOf(m_promotionPrice)));
}

void ArticlesScreen::discountTyped() {
    if (!isEditing())
        return;
    const Decimal promotion = rules::promotionPriceFor(amountOf(m_retail), amountOf(m_discount));
    setAmount(m_promotionPrice, promotion);
    setAmount(m_promotionPriceTax, rules::withTax(promotion, taxRate()));
}

void ArticlesScreen::promotionPriceTyped() {
    if (!isEditing())
        return;
    try {
        rules::checkPromotionPrice(amountOf(m_retail), amountOf(m_promotionPrice));
    } catch (const UserError&) {
        setAmount(m_promotionPrice, amountOf(m_retail));
        setAmount(m_promotionPriceTax, rules::withTax(amountOf(m_retail), taxRate()));
        throw;
    }
}

ArticleModel ArticlesScreen::modelFromControls() const {
    ArticleModel m;
    m.reference = m_reference->text().trimmed();
    m.brand = m_brand->currentData().toString();
    m.name = m_name->text();
    m.category = selectedCategory();
    m.manufacturer = m_manufacturer->currentData().toString();
    m.taxCode = m_tax->currentData().toInt();
    m.taxRate = taxRate();
    m.reorderPoint = amountOf(m_reorder);
    m.note = m_note->text();
    m.retailPrice = amountOf(m_retail);
    m.wholesalePrice = amountOf(m_wholesale);
    m.memberPrice = amountOf(m_member);
    m.promotion = m_promotion->checkedId() == 1;
    m.promotionPrice = amountOf(m_promotionPrice);
    m.promotionStart = m_start->date();
    m.promotionEnd = m_end->date();
    m.initialCost = amountOf(m_initialCost);
    m.averageCost = amountOf(m_averageCost);
    m.lastCost = amountOf(m_lastCost);
    m.dollarCost = amountOf(m_dollarCost);
    m.type = m_type->checkedId() == 1 ? 1 : 0;
    m.status = m_status->checkedId() == 0 ? 0 : 1;
    m.serialized = m_serialized->isChecked();
    m.fractional = m_fractional->isChecked();
    return m;
}

void ArticlesScreen::save() {
    // A cell still being typed in counts, checked before anything is saved.
    m_gridView->setCurrentIndex(QModelIndex());
    checkTypedCells();
    const ArticleModel m = modelFromControls();
    saveModel(m_db, m, m_grid, mode() == Mode::Adding,
              ArticleWriter::here(m_userCode, objectName()));
    // Show the saved model after the requery.
    requery();
    m_current = rowOf(m.reference, m.brand);
}

void ArticlesScreen::remove() {
    if (m_current < 0 || m_current >= recordCount())
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    const auto key = keyAt(m_current);
    if (deleteModel(m_db, key.first, key.second, ArticleWriter::here(m_userCode, objectName())) ==
        0)
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    m_current = -1;
    clearModelForm();
}

void ArticlesScreen::print() {
    if (m_current < 0 || m_current >= recordCount())
        return;
    const auto key = keyAt(m_current);
    QTextDocument doc;
    doc.setHtml(articleReport(m_db, key.first, key.second, m_userCode));
    QPrinter printer;
    if (choosePrinter(this, printer, QStringLiteral("Artículo ") + key.first))
        doc.print(&printer);
}

void ArticlesScreen::clearModelForm() {
    m_typedCells.clear();
    m_grid = ModelGrid();
    rebuildGrid();
}

void ArticlesScreen::newRecord() {
    RecordScreen::newRecord();
    m_filling = true;
    m_start->setDate(QDate(2000, 1, 1));
    m_end->setDate(QDate(2000, 1, 1));
    m_type->button(0)->setChecked(true);
    m_status->button(1)->setChecked(true);
    m_promotion->button(0)->setChecked(true);
    selectData(m_tax, 1);
    for (QLineEdit* e : {m_reorder, m_retail, m_retailTax, m_wholesale, m_wholesaleTax, m_member,
                         m_memberTax, m_promotionPrice, m_promotionPriceTax, m_discount,
                         m_initialCost, m_averageCost, m_lastCost, m_dollarCost})
        setAmount(e, Decimal());
    m_categories->setCurrentItem(nullptr);
    m_filling = false;
    clearModelForm();
}

void ArticlesScreen::modifyRecord() {
    RecordScreen::modifyRecord();
    updateEditability();
}

void ArticlesScreen::cancelRecord() {
    clearModelForm();
    RecordScreen::cancelRecord();
}

} // namespace orvo::inventory
