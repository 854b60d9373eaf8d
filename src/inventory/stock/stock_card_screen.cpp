#include "inventory/stock/stock_card_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "common/errors/errors.h"
#include "common/grid_ui/catalog_dialog.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/stock/movements.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::stock {

namespace {

QTableWidget* grid(QWidget* parent, const QString& name, const QStringList& headers) {
    auto* t = new QTableWidget(0, int(headers.size()), parent);
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(headers);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->verticalHeader()->hide();
    t->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    t->horizontalHeader()->setStretchLastSection(true);
    return t;
}

void put(QTableWidget* t, int row, int column, const QString& text, bool right = false) {
    auto* item = new QTableWidgetItem(text);
    if (right)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    t->setItem(row, column, item);
}

QString amount(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

QLabel* valueLabel(QWidget* parent, const char* name) {
    auto* l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(name));
    return l;
}

} // namespace

StockCardScreen::StockCardScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(kStockCardScreen);
    setWindowTitle(QStringLiteral("Kardex de Inventario"));
    m_barcode = new QLineEdit(this);
    m_barcode->setObjectName(QStringLiteral("txtCodigoBarra"));
    m_barcode->setMaxLength(15);
    m_reference = new QLineEdit(this);
    m_reference->setObjectName(QStringLiteral("txtReferencia"));
    m_reference->setMaxLength(20);
    m_brand = new QLineEdit(this);
    m_brand->setObjectName(QStringLiteral("txtMarca"));
    m_brand->setMaxLength(10);
    // From the last physical-logical adjustment: what today's stock is made of.
    const StockPeriod period = stockPeriod(m_db);
    m_from = new QDateEdit(
        period.lastCount ? period.lastCount->date() : QDate::currentDate().addMonths(-1), this);
    m_from->setObjectName(QStringLiteral("DtpDesde"));
    m_to = new QDateEdit(QDate::currentDate(), this);
    m_to->setObjectName(QStringLiteral("DtpHasta"));
    for (QDateEdit* d : {m_from, m_to}) {
        d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
        d->setCalendarPopup(true);
    }
    m_description = valueLabel(this, "lblDescripcion");
    m_opening = valueLabel(this, "lblSaldoInicial");
    m_closing = valueLabel(this, "lblSaldoFinal");
    m_stock = valueLabel(this, "lblExistencia");

    QPushButton* pickBarcode = purchases::screenButton(this, QStringLiteral("cmdBuscarCodigo"),
                                                       QStringLiteral("Código..."), Qt::Key_F2);
    QPushButton* pickModel = purchases::screenButton(this, QStringLiteral("cmdBuscarModelo"),
                                                     QStringLiteral("Modelo..."), Qt::Key_F3);
    QPushButton* run = purchases::screenButton(this, QStringLiteral("cmdConsultar"),
                                               QStringLiteral("&Consultar"), Qt::Key_F5);
    QPushButton* print = purchases::screenButton(this, QStringLiteral("cmdImprimir"),
                                                 QStringLiteral("&Imprimir"), Qt::Key_F6);
    QPushButton* pdf =
        purchases::screenButton(this, QStringLiteral("cmdPDF"), QStringLiteral("PDF"), Qt::Key_F7);

    auto* form = new QFormLayout;
    auto* codeRow = new QHBoxLayout;
    codeRow->addWidget(m_barcode, 1);
    codeRow->addWidget(pickBarcode);
    form->addRow(QStringLiteral("Código de barras:"), codeRow);
    auto* modelRow = new QHBoxLayout;
    modelRow->addWidget(new QLabel(QStringLiteral("Referencia:"), this));
    modelRow->addWidget(m_reference, 2);
    modelRow->addWidget(new QLabel(QStringLiteral("Marca:"), this));
    modelRow->addWidget(m_brand, 1);
    modelRow->addWidget(pickModel);
    form->addRow(QStringLiteral("o el modelo:"), modelRow);
    auto* days = new QHBoxLayout;
    days->addWidget(m_from);
    days->addWidget(new QLabel(QStringLiteral("hasta"), this));
    days->addWidget(m_to);
    days->addStretch();
    form->addRow(QStringLiteral("Desde:"), days);
    form->addRow(QStringLiteral("Descripción:"), m_description);
    auto* balances = new QHBoxLayout;
    balances->addWidget(new QLabel(QStringLiteral("Saldo inicial:"), this));
    balances->addWidget(m_opening);
    balances->addWidget(new QLabel(QStringLiteral("Saldo final:"), this));
    balances->addWidget(m_closing);
    balances->addWidget(new QLabel(QStringLiteral("Existencia actual:"), this));
    balances->addWidget(m_stock);
    balances->addStretch();
    form->addRow(balances);

    m_rows = grid(this, QStringLiteral("grdKardex"),
                  {QStringLiteral("Fecha"), QStringLiteral("Documento"), QStringLiteral("Número"),
                   QStringLiteral("Cantidad"), QStringLiteral("Saldo")});
    m_kinds = grid(this, QStringLiteral("grdResumen"),
                   {QStringLiteral("Tipo de documento"), QStringLiteral("Cantidad")});
    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(m_rows);
    split->addWidget(m_kinds);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {run, print, pdf})
        buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(split, 1);
    layout->addLayout(buttons);

    chainFields({m_barcode, m_reference, m_brand, m_from, m_to}, run);
    setFocusProxy(m_barcode);
    connect(run, &QPushButton::clicked, this, [this] { guarded(this, [&] { query(); }); });
    connect(pickBarcode, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { chooseBarcode(); }); });
    connect(pickModel, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { chooseModel(); }); });
    connect(print, &QPushButton::clicked, this, [this] { guarded(this, [&] { printCard(); }); });
    connect(pdf, &QPushButton::clicked, this, [this] { guarded(this, [&] { exportPdf(); }); });
    // A barcode typed replaces a model chosen before, and the other way round.
    connect(m_barcode, &QLineEdit::textEdited, this, [this] {
        m_reference->clear();
        m_brand->clear();
    });
    for (QLineEdit* e : {m_reference, m_brand})
        connect(e, &QLineEdit::textEdited, this, [this] { m_barcode->clear(); });
}

void StockCardScreen::chooseBarcode() {
    const auto row = grid::CatalogDialog::choose(
        this, QStringLiteral("Seleccione el codigo de barras en el catalogo"), m_db,
        barcodeCatalogSql());
    if (!row)
        return;
    m_barcode->setText(
        grid::CatalogDialog::valueOf(*row, QStringLiteral("CodigoBarra")).toString());
    m_reference->clear();
    m_brand->clear();
    m_from->setFocus();
}

void StockCardScreen::chooseModel() {
    const auto row = grid::CatalogDialog::choose(
        this, QStringLiteral("Seleccione la marca y la referencia en el catalogo"), m_db,
        modelCatalogSql());
    if (!row)
        return;
    m_barcode->clear();
    m_reference->setText(
        grid::CatalogDialog::valueOf(*row, QStringLiteral("Referencia")).toString());
    m_brand->setText(grid::CatalogDialog::valueOf(*row, QStringLiteral("CodigoMarca")).toString());
    m_from->setFocus();
}

void StockCardScreen::query() {
    CardSubject subject;
    subject.barcode = m_barcode->text().trimmed();
    subject.reference = m_reference->text().trimmed();
    subject.brand = m_brand->text().trimmed();
    if (subject.barcode.isEmpty() && (subject.reference.isEmpty() || subject.brand.isEmpty()))
        throw UserError(QStringLiteral("Seleccione el codigo de barras o la marca y la "
                                       "referencia en el catalogo...!"));
    m_card = stockCard(m_db, subject, m_from->date(), m_to->date());
    showCard(*m_card);
}

void StockCardScreen::showCard(const StockCard& card) {
    m_description->setText(card.description);
    m_opening->setText(amount(card.opening));
    m_closing->setText(amount(card.closing));
    m_stock->setText(amount(card.stock));
    m_rows->setRowCount(0);
    m_rows->setRowCount(int(card.rows.size()));
    for (int r = 0; r < card.rows.size(); ++r) {
        const CardRow& row = card.rows[r];
        put(m_rows, r, 0, row.date.toString(QStringLiteral("dd/MM/yyyy HH:mm")));
        put(m_rows, r, 1, row.kind);
        put(m_rows, r, 2, row.document);
        put(m_rows, r, 3, amount(row.quantity), true);
        put(m_rows, r, 4, amount(row.balance), true);
    }
    m_kinds->setRowCount(0);
    m_kinds->setRowCount(int(card.byKind.size()));
    for (int r = 0; r < card.byKind.size(); ++r) {
        put(m_kinds, r, 0, card.byKind[r].kind);
        put(m_kinds, r, 1, amount(card.byKind[r].quantity), true);
    }
}

void StockCardScreen::printCard() {
    if (!m_card)
        query();
    const PrintedCard p = printedCard(*m_card);
    purchases::printDocument(this, {p.title, p.html});
}

void StockCardScreen::exportPdf() {
    if (!m_card)
        query();
    const PrintedCard p = printedCard(*m_card);
    purchases::writePdf(this, {p.title, p.html});
}

} // namespace orvo::inventory::stock
