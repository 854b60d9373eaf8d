#include "inventory/prices/promotion_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "common/dialogs/screen_widgets.h"
#include "common/errors/errors.h"
#include "inventory/articles/articles.h"
#include "inventory/prices/price_lists.h"
#include "inventory/prices/price_rules.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orvo::inventory::prices {

namespace {

// An optional percentage: empty is "not given", anything else must be a number.
std::optional<Decimal> optionalPercent(const QLineEdit* field, const QString& refusal) {
    if (field->text().trimmed().isEmpty())
        return std::nullopt;
    const auto value = parseTypedNumber(field->text());
    if (!value)
        throw UserError(refusal);
    return value;
}

const QString kPromotionRefusal =
    QStringLiteral("introdusca un numero entre 0 y 100 para el precio promoción...!");

} // namespace

PromotionScreen::PromotionScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(kPromotionScreen);
    setWindowTitle(QStringLiteral("Precios de promoción"));
    buildUi();
    guarded(this, [this] {
        // The tree: parents before children, every category under the root.
        auto* root = new QTreeWidgetItem(m_categories, {QStringLiteral("TODAS LAS CATEGORIAS")});
        QHash<QString, QTreeWidgetItem*> nodes;
        for (const Category& c : categories(m_db)) {
            QTreeWidgetItem* parent = nodes.value(c.parent, root);
            auto* node = new QTreeWidgetItem(parent, {c.name});
            node->setData(0, Qt::UserRole, c.code);
            nodes.insert(c.code, node);
        }
        root->setExpanded(true);
        m_categories->setCurrentItem(root);
        m_brand->addItem(QStringLiteral("(todas las marcas)"), QString());
        for (const CodeName& b : brands(m_db))
            m_brand->addItem(b.code + QStringLiteral(" - ") + b.name, b.code);
        showModels();
    });
}

void PromotionScreen::buildUi() {
    m_categories = new QTreeWidget(this);
    m_categories->setObjectName(QStringLiteral("tvwCategorias"));
    m_categories->setHeaderHidden(true);
    m_brand = new QComboBox(this);
    m_brand->setObjectName(QStringLiteral("cboMarca"));
    m_reference = inputField(this, "txtReferencia");
    m_list = listTable(this, "lstModelos",
                       {QString(), QStringLiteral("Referencia"), QStringLiteral("Marca"),
                        QStringLiteral("Descripción"), QStringLiteral("Precio detal"),
                        QStringLiteral("Variantes")});
    m_list->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->verticalHeader()->hide();
    // Tab leaves the list for the marks and the terms; Space marks the current model.
    m_list->setTabKeyNavigation(false);
    m_list->installEventFilter(this);
    auto* all = actionButton(this, "cmdMarcarTodos", QStringLiteral("Marcar todos"));
    auto* none = actionButton(this, "cmdDesmarcarTodos", QStringLiteral("Desmarcar todos"));
    m_percent = inputField(this, "txtPorcentajePromocion", true);
    m_wholesale = inputField(this, "txtPorcentajeMayor", true);
    m_member = inputField(this, "txtPorcentajeAfiliado", true);
    m_start = dateField(this, "dtpFechaInicial");
    m_end = dateField(this, "dtpFechaFinal");
    m_end->setDate(QDate::currentDate().addDays(7));
    auto* generateButton = actionButton(this, "cmdGenerar", QStringLiteral("Generar lista"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    m_result = new QLabel(this);
    m_result->setObjectName(QStringLiteral("lblResultado"));
    m_result->setWordWrap(true);

    auto* filters = new QFormLayout;
    filters->addRow(QStringLiteral("Marca:"), m_brand);
    filters->addRow(QStringLiteral("Referencia:"), m_reference);
    auto* left = new QVBoxLayout;
    left->addWidget(new QLabel(QStringLiteral("Categoría"), this));
    left->addWidget(m_categories, 1);
    left->addLayout(filters);

    auto* marks = new QHBoxLayout;
    marks->addWidget(all);
    marks->addWidget(none);
    marks->addStretch();
    auto* middle = new QVBoxLayout;
    middle->addWidget(m_list, 1);
    middle->addLayout(marks);

    auto* terms = new QFormLayout;
    terms->addRow(QStringLiteral("% promoción (sobre el precio detal):"), m_percent);
    terms->addRow(QStringLiteral("% precio mayor (opcional):"), m_wholesale);
    terms->addRow(QStringLiteral("% precio afiliado (opcional):"), m_member);
    terms->addRow(QStringLiteral("Fecha inicial:"), m_start);
    terms->addRow(QStringLiteral("Fecha final:"), m_end);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(generateButton);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* right = new QVBoxLayout;
    right->addLayout(terms);
    right->addWidget(m_result);
    right->addStretch();
    right->addLayout(buttons);

    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left, 1);
    layout->addLayout(middle, 2);
    layout->addLayout(right, 1);

    chainFields({m_percent, m_wholesale, m_member, m_start, m_end}, generateButton);
    setFocusProxy(m_categories);
    connect(m_categories, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (item)
            guarded(this, [this] { showModels(); });
    });
    connect(m_brand, &QComboBox::currentIndexChanged, this,
            [this] { guarded(this, [this] { showModels(); }); });
    connect(m_reference, &QLineEdit::returnPressed, this, [this] {
        guarded(this, [this] { showModels(); });
        m_list->setFocus();
    });
    connect(all, &QPushButton::clicked, this, [this] { markAll(true); });
    connect(none, &QPushButton::clicked, this, [this] { markAll(false); });
    connect(m_start, &QDateEdit::editingFinished, this,
            [this] { guarded(this, [this] { startChanged(); }); });
    connect(m_end, &QDateEdit::editingFinished, this,
            [this] { guarded(this, [this] { endChanged(); }); });
    connect(generateButton, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { generate(); }); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });
}

ModelFilter PromotionScreen::filter() const {
    ModelFilter f;
    if (const QTreeWidgetItem* node = m_categories->currentItem())
        f.category = node->data(0, Qt::UserRole).toString();
    f.brand = m_brand->currentData().toString();
    f.reference = m_reference->text();
    return f;
}

void PromotionScreen::selectCategory(const QString& code) {
    const auto items =
        m_categories->findItems(QStringLiteral("*"), Qt::MatchWildcard | Qt::MatchRecursive);
    for (QTreeWidgetItem* item : items)
        if (item->data(0, Qt::UserRole).toString() == code) {
            m_categories->setCurrentItem(item);
            return;
        }
}

void PromotionScreen::showModels() {
    m_models = findModels(m_db, filter());
    m_list->setRowCount(int(m_models.size()));
    for (int r = 0; r < m_models.size(); ++r) {
        const ModelPrices& m = m_models[r];
        auto* mark = new QTableWidgetItem;
        mark->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        mark->setCheckState(Qt::Unchecked);
        m_list->setItem(r, 0, mark);
        const QStringList cells = {m.reference, m.brandName.isEmpty() ? m.brand : m.brandName,
                                   m.name, moneyText(m.retail), QString::number(m.variants)};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (c >= 3)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_list->setItem(r, c + 1, item);
        }
    }
}

bool PromotionScreen::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        if (QTableWidgetItem* mark = m_list->item(m_list->currentRow(), 0))
            mark->setCheckState(mark->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void PromotionScreen::markAll(bool marked) {
    for (int r = 0; r < m_list->rowCount(); ++r)
        m_list->item(r, 0)->setCheckState(marked ? Qt::Checked : Qt::Unchecked);
}

QList<ModelKey> PromotionScreen::markedModels() const {
    QList<ModelKey> out;
    for (int r = 0; r < m_list->rowCount() && r < m_models.size(); ++r)
        if (m_list->item(r, 0)->checkState() == Qt::Checked)
            out.append({m_models[r].reference, m_models[r].brand});
    return out;
}

void PromotionScreen::startChanged() {
    try {
        rules::checkPromotionStart(m_start->date(), m_end->date(), QDate::currentDate());
    } catch (...) {
        m_start->setDate(QDate::currentDate());
        throw;
    }
}

void PromotionScreen::endChanged() {
    try {
        rules::checkPromotionEnd(m_start->date(), m_end->date(), QDate::currentDate());
    } catch (...) {
        m_end->setDate(std::max(m_start->date(), QDate::currentDate()));
        throw;
    }
}

int PromotionScreen::generate() {
    PromotionRequest r;
    r.models = markedModels();
    r.user = m_userCode;
    r.start = m_start->date();
    r.end = m_end->date();
    const auto percent = parseTypedNumber(m_percent->text());
    if (!r.models.isEmpty() && !percent)
        throw UserError(kPromotionRefusal);
    r.promotionPercent = percent.value_or(Decimal());
    r.wholesalePercent = optionalPercent(
        m_wholesale,
        QStringLiteral("introdusca un numero entre -100 y 100 y <> 0 para el precio mayor...!"));
    r.memberPercent = optionalPercent(
        m_member,
        QStringLiteral("introdusca un numero entre -100 y 100 y <> 0 para el precio afiliado...!"));
    rules::checkPromotionRequest(r, QDate::currentDate());
    if (!dialogs().question(this, QStringLiteral("Esta seguro de generar la lista de precio...?"),
                            QStringLiteral("Lista de precios"), false))
        return 0;
    const int number = generatePromotionList(m_db, r, QDate::currentDate());
    m_result->setText(QStringLiteral("Lista de precio Nº %1 (ABIERTA, %2 referencias): apruébela "
                                     "en Listas de precios.")
                          .arg(number)
                          .arg(r.models.size()));
    dialogs().information(this, QStringLiteral("Lista de precio generada con exito...!"));
    return number;
}

RepriceScreen::RepriceScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(kRepriceScreen);
    setWindowTitle(QStringLiteral("Actualizar precios"));
    m_retail = inputField(this, "txtUtilidadDetal", true);
    m_wholesale = inputField(this, "txtUtilidadMayor", true);
    m_member = inputField(this, "txtUtilidadAfiliado", true);
    auto* update = actionButton(this, "cmdActualizar", QStringLiteral("Actualizar"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("% de utilidad precio detal:"), m_retail);
    form->addRow(QStringLiteral("% de utilidad precio mayor:"), m_wholesale);
    form->addRow(QStringLiteral("% de utilidad precio afiliado:"), m_member);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(update);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Los precios de todos los artículos con costo "
                                                "pasan a ser el costo promedio más la utilidad."),
                                 this));
    layout->addLayout(form);
    layout->addLayout(buttons);
    layout->addStretch();
    chainFields({m_retail, m_wholesale, m_member}, update);
    setFocusProxy(m_retail);
    connect(update, &QPushButton::clicked, this, [this] { guarded(this, [this] { reprice(); }); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });
}

int RepriceScreen::reprice() {
    Margins m;
    const auto margin = [](const QLineEdit* field, const char* price) -> std::optional<Decimal> {
        if (field->text().trimmed().isEmpty())
            return std::nullopt;
        const auto v = parseTypedNumber(field->text());
        if (!v)
            throw UserError(QStringLiteral("Introduzca un porcentaje de utilidad > 0 para el "
                                           "precio ") +
                            QString::fromLatin1(price) + QStringLiteral("...!"));
        return v;
    };
    m.retail = margin(m_retail, "detal");
    m.wholesale = margin(m_wholesale, "mayor");
    m.member = margin(m_member, "afiliado");
    rules::checkMargins(m);
    if (!dialogs().question(this,
                            QStringLiteral("Desea actualizar los precios de los articulos y "
                                           "servicion?..."),
                            QStringLiteral("Actualizar precios"), false))
        return 0;
    const int n = repriceFromCosts(m_db, m, ArticleWriter::here(m_userCode, kRepriceScreen));
    dialogs().information(this, QStringLiteral("precios actualizados con exito...!"));
    return n;
}

} // namespace orvo::inventory::prices
