#include "inventory/purchases/document_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "common/grid/grid_print.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/choice_dialog.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchases.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"

#include <QApplication>
#include <QDateEdit>
#include <QDesktopServices>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPdfWriter>
#include <QPrinter>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableWidget>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>

namespace orvo::inventory::purchases {

namespace {

QTableWidgetItem* cell(const QString& text, bool right = false) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    if (right)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

QString shown(const Decimal& value, int decimals = 2) {
    return value.toLocaleString(QLocale(), decimals);
}

} // namespace

QTableWidget* listTable(QWidget* parent, const QString& name, const QStringList& headers,
                        int stretch) {
    auto* t = new QTableWidget(0, int(headers.size()), parent);
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(headers);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->setSelectionMode(QAbstractItemView::SingleSelection);
    t->verticalHeader()->hide();
    if (stretch < 0) {
        t->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    } else {
        t->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        t->horizontalHeader()->setSectionResizeMode(stretch, QHeaderView::Stretch);
    }
    return t;
}

QTableWidgetItem* listCell(const QString& text, bool right) {
    auto* item = new QTableWidgetItem(text);
    if (right)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

QPushButton* screenButton(QWidget* screen, const QString& name, const QString& text, int key) {
    const QKeySequence shortcut(key);
    auto* b =
        new QPushButton(key ? text + QStringLiteral(" (") +
                                  shortcut.toString(QKeySequence::NativeText) + QLatin1Char(')')
                            : text,
                        screen);
    b->setObjectName(name);
    b->setAutoDefault(false);
    // Enter walks the fields; buttons are pressed with the mouse or their key.
    b->setFocusPolicy(Qt::ClickFocus);
    if (key) {
        auto* s = new QShortcut(shortcut, screen);
        s->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(s, &QShortcut::activated, b, [b] {
            if (b->isEnabled())
                b->click();
        });
    }
    return b;
}

void offerMissingArticles(QWidget* parent, const QList<PackingList::Missing>& missing) {
    if (missing.isEmpty())
        return;
    const QString file = writeMissingArticles(missing);
    if (dialogs().question(parent,
                           QStringLiteral("No se cargaron ") + QString::number(missing.size()) +
                               QStringLiteral(" articulos...! Desea visualizarlos...?"),
                           QStringLiteral("Información"), false))
        QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

QString chooseDbfFile(QWidget* parent, const QString& caption) {
    return dialogs().openFileName(parent, caption,
                                  QDir(shell::appHome()).filePath(QStringLiteral("Recibe")),
                                  QStringLiteral("Tablas dBase (*.dbf *.DBF)"));
}

QList<DocumentLine> loadPackingList(QWidget* parent, const QSqlDatabase& db, PackingCheck check) {
    const QString path =
        chooseDbfFile(parent, QStringLiteral("Cargar Datos Desde Archivo (MOVITRAN.DBF)"));
    if (path.isEmpty())
        return {};
    const PackingList list = readPackingList(db, path, check);
    offerMissingArticles(parent, list.missing);
    return list.lines;
}

std::optional<SisterCompany> chooseSisterCompany(QWidget* parent, const QSqlDatabase& db) {
    const QList<SisterCompany> companies = sisterCompanies(db);
    if (companies.isEmpty())
        throw UserError(QStringLiteral("No existen empresas relacionadas registradas...!"));
    QList<QStringList> rows;
    for (const SisterCompany& c : companies)
        rows.append({c.code, c.name, c.database});
    const auto which = ChoiceDialog::choose(
        parent, QStringLiteral("Empresas"),
        {QStringLiteral("Código"), QStringLiteral("Nombre"), QStringLiteral("Base de datos")},
        rows);
    if (!which)
        return std::nullopt;
    return companies[*which];
}

void printDocument(QWidget* parent, const PrintedDocument& document) {
    if (document.html.isEmpty())
        return;
    QPrinter printer;
    if (!choosePrinter(parent, printer, document.title))
        return;
    QTextDocument body;
    body.setHtml(document.html);
    grid::printDocument(printer, body, document.title);
}

void writePdf(QWidget* parent, const PrintedDocument& document) {
    if (document.html.isEmpty())
        return;
    QString path = dialogs().saveFileName(parent, QStringLiteral("Guardar como PDF"),
                                          shell::reportPdfPath(document.title),
                                          QStringLiteral("Documentos PDF (*.pdf)"));
    if (path.isEmpty())
        return;
    if (!path.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive))
        path += QStringLiteral(".pdf");
    QPdfWriter pdf(path);
    pdf.setPageSize(QPageSize(QPageSize::Letter));
    pdf.setResolution(300);
    pdf.setTitle(document.title);
    QTextDocument body;
    body.setHtml(document.html);
    grid::printDocument(pdf, body, document.title);
}

DocumentScreen::DocumentScreen(QSqlDatabase db, QString userCode, const QString& name,
                               const QString& title, const QString& linesName, bool withPrice,
                               QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_userCode(std::move(userCode)),
      m_linesName(linesName), m_withPrice(withPrice) {
    setObjectName(name);
    setWindowTitle(title);
    auto* outer = new QVBoxLayout(this);
    auto* split = new QSplitter(Qt::Vertical, this);
    outer->addWidget(split);
    m_browser = new QTableWidget(0, 6, split);
    m_browser->setObjectName(QStringLiteral("grdConsulta"));
    m_browser->setHorizontalHeaderLabels({QStringLiteral("Número"), QStringLiteral("Código"),
                                          QStringLiteral("Nombre"), QStringLiteral("Fecha"),
                                          QStringLiteral("Total"), QStringLiteral("Estatus")});
    m_browser->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_browser->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_browser->setSelectionMode(QAbstractItemView::SingleSelection);
    m_browser->verticalHeader()->hide();
    m_browser->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    connect(m_browser, &QTableWidget::cellClicked, this, [this](int row) {
        if (!isEditing())
            guarded(this, [&] { navigateTo(row); });
    });
    auto* form = new QWidget(split);
    m_form = new QVBoxLayout(form);
    auto* top = new QHBoxLayout;
    m_header = new QFormLayout;
    m_headerRight = new QFormLayout;
    top->addLayout(m_header, 1);
    top->addLayout(m_headerRight, 1);
    m_form->addLayout(top);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);
}

QLineEdit* DocumentScreen::numberField(const QString& name, int decimals) {
    auto* e = new QLineEdit(this);
    e->setObjectName(name);
    e->setAlignment(Qt::AlignRight);
    connect(e, &QLineEdit::editingFinished, this, [this, e, decimals] {
        if (!e->isEnabled() || e->isReadOnly())
            return;
        Decimal value;
        if (guarded(this, [&] { value = rules::headerNumber(e->text()); })) {
            if (!e->text().trimmed().isEmpty())
                setNumber(e, value, decimals);
            refreshTotals();
        } else {
            e->setFocus();
            e->selectAll();
        }
    });
    return e;
}

QDateEdit* DocumentScreen::dateField(const QString& name) {
    auto* d = new QDateEdit(QDate::currentDate(), this);
    d->setObjectName(name);
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    return d;
}

QLineEdit* DocumentScreen::textField(const QString& name, int maxLength) {
    auto* e = new QLineEdit(this);
    e->setObjectName(name);
    e->setMaxLength(maxLength);
    return e;
}

QPushButton* DocumentScreen::button(const QString& name, const QString& text, int key) {
    return screenButton(this, name, text, key);
}

void DocumentScreen::keyIntoBoxes() {
    m_boxed = true;
}

void DocumentScreen::setBrowserHeaders(const QStringList& headers) {
    m_browser->setHorizontalHeaderLabels(headers);
}

QList<DocumentScreen::Column> DocumentScreen::lineColumns() const {
    if (m_atCost)
        return {{QStringLiteral("Código")},
                {QStringLiteral("Descripción")},
                {QStringLiteral("Cantidad"), true},
                {QStringLiteral("Costo"), true},
                {QStringLiteral("Total"), true}};
    return {{QStringLiteral("Código")},         {QStringLiteral("Descripción")},
            {QStringLiteral("Cantidad"), true}, {QStringLiteral("Precio"), true},
            {QStringLiteral("% Imp."), true},   {QStringLiteral("Total"), true}};
}

QStringList DocumentScreen::lineCells(const DocumentLine& l) const {
    if (m_atCost)
        return {l.barcode, l.name, shown(l.quantity), shown(l.price, 2),
                shown((l.quantity * l.price).rounded(2))};
    return {l.barcode,           l.name,
            shown(l.quantity),   shown(l.price, 6),
            shown(l.taxPercent), shown((l.quantity * l.price).rounded(2))};
}

QList<DocumentScreen::TotalField> DocumentScreen::totalFields() const {
    // Valued at cost there is no discount or tax to show.
    if (m_atCost)
        return {{QStringLiteral("lblTotal"), QStringLiteral("Total:")}};
    return {{QStringLiteral("lblTotalMercancia"), QStringLiteral("Mercancía:")},
            {QStringLiteral("lblTotalDescuento"), QStringLiteral("Descuento:")},
            {QStringLiteral("lblTotalImpuesto"), QStringLiteral("Impuesto:")},
            {QStringLiteral("lblTotal"), QStringLiteral("Total:")}};
}

QStringList DocumentScreen::totalTexts(const QList<DocumentLine>& lines) const {
    Decimal discount;
    try {
        discount = discountPercent();
    } catch (const UserError&) {
        discount = Decimal(); // shown when the field is left
    }
    const DocumentTotals t = rules::totalsOf(lines, discount);
    if (m_atCost)
        return {shown(t.total())};
    return {shown(t.merchandise), shown(t.discount), shown(t.tax), shown(t.total())};
}

long long DocumentScreen::currentBox() const {
    const long long box = m_box ? m_box->text().trimmed().toLongLong() : 0;
    return box > 0 ? box : 1;
}

void DocumentScreen::setCurrentBox(long long box) {
    if (m_box)
        m_box->setText(QString::number(box > 0 ? box : 1));
}

void DocumentScreen::finish(QBoxLayout* extraButtons) {
    auto* keying = new QHBoxLayout;
    if (m_boxed) {
        m_box = new QLineEdit(QStringLiteral("1"), this);
        m_box->setObjectName(QStringLiteral("txtCaja"));
        m_box->setAlignment(Qt::AlignRight);
        m_box->setValidator(new QIntValidator(1, 99999, m_box));
        m_box->setMaximumWidth(70);
        keying->addWidget(new QLabel(QStringLiteral("Caja:"), this));
        keying->addWidget(m_box);
    }
    m_code = textField(QStringLiteral("txtCodigo"), 15);
    m_quantity = new QLineEdit(QStringLiteral("1"), this);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_quantity->setAlignment(Qt::AlignRight);
    keying->addWidget(new QLabel(QStringLiteral("Código:"), this));
    keying->addWidget(m_code, 2);
    m_article = new QLabel(this);
    m_article->setObjectName(QStringLiteral("lblDescripcion"));
    keying->addWidget(m_article, 3);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad:"), this));
    keying->addWidget(m_quantity, 1);
    if (m_withPrice) {
        m_price = new QLineEdit(this);
        m_price->setObjectName(QStringLiteral("txtPrecio"));
        m_price->setAlignment(Qt::AlignRight);
        keying->addWidget(new QLabel(QStringLiteral("Precio:"), this));
        keying->addWidget(m_price, 1);
    }
    m_form->addLayout(keying);

    const QList<Column> columns = lineColumns();
    m_grid = new QTableWidget(0, int(columns.size()), this);
    m_grid->setObjectName(m_linesName);
    QStringList headers;
    int description = 0;
    for (int c = 0; c < columns.size(); ++c) {
        headers << columns[c].header;
        if (columns[c].header == QStringLiteral("Descripción"))
            description = c;
    }
    m_grid->setHorizontalHeaderLabels(headers);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_grid->horizontalHeader()->setSectionResizeMode(description, QHeaderView::Stretch);
    m_grid->installEventFilter(this);
    m_form->addWidget(m_grid, 1);

    auto* bottom = new QHBoxLayout;
    auto label = [&](const QString& name, const QString& caption) {
        bottom->addWidget(new QLabel(caption, this));
        auto* l = new QLabel(this);
        l->setObjectName(name);
        l->setMinimumWidth(90);
        l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        bottom->addWidget(l);
        return l;
    };
    m_state = new QLabel(this);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    QFont bold = m_state->font();
    bold.setBold(true);
    m_state->setFont(bold);
    bottom->addWidget(m_state);
    m_progress = new QLabel(this);
    m_progress->setObjectName(QStringLiteral("lblProgreso"));
    bottom->addWidget(m_progress, 1);
    for (const TotalField& f : totalFields())
        m_totals << label(f.name, f.caption);
    m_form->addLayout(bottom);

    auto* buttons = extraButtons ? extraButtons : new QHBoxLayout;
    QPushButton* pdf = button(QStringLiteral("cmdPDF"), QStringLiteral("PDF"));
    connect(pdf, &QPushButton::clicked, this, [this] { guarded(this, [&] { exportPdf(); }); });
    buttons->addStretch();
    buttons->addWidget(pdf);
    m_form->addLayout(buttons);

    keysTakeTyping(true);
    keysTakeTyping(false);
    installFieldBehaviour();
    // Installed after the record screen's: Enter in the keying row is handled here first.
    for (QLineEdit* e : {m_box, m_code, m_quantity, m_price})
        if (e)
            e->installEventFilter(this);
    connect(this, &RecordScreen::recordStateChanged, this, &DocumentScreen::updateEditability);
    enableInputs(false, true);
    requery();
    if (recordCount() > 0) {
        navigateTo(0);
    } else {
        setLines({});
        setStatus(kOpen);
    }
    updateEditability();
}

bool DocumentScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (watched == m_grid && key->key() == Qt::Key_Delete && isEditing()) {
            guarded(this, [&] { deleteLine(m_grid->currentRow()); });
            return true;
        }
        if (enter && watched == m_box && m_box) {
            m_code->setFocus();
            m_code->selectAll();
            return true;
        }
        if (enter && (watched == m_code || watched == m_quantity || watched == m_price)) {
            if (watched == m_code) {
                guarded(this, [&] { barcodeEntered(); });
            } else if (watched == m_quantity && m_price) {
                m_price->setFocus();
                m_price->selectAll();
            } else {
                guarded(this, [&] { addKeyedLine(); });
            }
            return true;
        }
    }
    return RecordScreen::eventFilter(watched, event);
}

bool DocumentScreen::offers(Action action) const {
    if (action == Action::Approve)
        return false;
    if ((action == Action::Modify || action == Action::Delete) && m_status != kOpen)
        return false;
    return true;
}

void DocumentScreen::updateEditability() {
    m_browser->setEnabled(!isEditing());
    m_grid->setEnabled(true);
    // After a save the field that had the focus is disabled and Qt hands the focus out of the
    // screen: bring it back to the documents, so that the screen's F-keys keep working.
    QWidget* focused = QApplication::focusWidget();
    if (!isEditing() && isVisible() && !(focused && isAncestorOf(focused) && focused->isEnabled()))
        m_browser->setFocus();
}

void DocumentScreen::barcodeEntered() {
    const QString code = m_code->text().trimmed();
    if (code.isEmpty())
        return;
    const DocumentLine l = lineFor(code, Decimal(1), Decimal());
    m_article->setText(l.name);
    if (m_price) {
        // The price this article was keyed at on this document, or its last cost.
        std::optional<Decimal> price;
        for (const DocumentLine& k : m_lines)
            if (k.barcode == l.barcode)
                price = k.price;
        if (!price)
            if (const auto article = findArticleByBarcode(m_db, l.barcode))
                price = article->lastCost;
        m_price->setText(price && !price->isZero() ? price->toString(6) : QString());
    }
    m_quantity->setFocus();
    m_quantity->selectAll();
}

DocumentLine DocumentScreen::lineFor(const QString& barcode, const Decimal& quantity,
                                     const Decimal& price) {
    return articleLine(m_db, barcode, quantity, price);
}

void DocumentScreen::keyLine(const QString& barcode, const QString& quantity,
                             const QString& price) {
    const Decimal q = quantity.trimmed().isEmpty() ? Decimal(1) : rules::headerNumber(quantity);
    const Decimal p = rules::headerNumber(price);
    DocumentLine line = lineFor(barcode, q, p);
    if (m_boxed)
        line.box = currentBox();
    addLine(m_lines, line);
    refreshLines();
    linesChanged();
}

void DocumentScreen::addKeyedLine() {
    if (!isEditing() || m_code->text().trimmed().isEmpty())
        return;
    try {
        keyLine(m_code->text(), m_quantity->text(), m_price ? m_price->text() : QString());
    } catch (const UserError&) {
        m_code->setFocus();
        m_code->selectAll();
        throw;
    }
    m_grid->selectRow(m_grid->rowCount() - 1);
    m_code->clear();
    m_article->clear();
    m_quantity->setText(QStringLiteral("1"));
    if (m_price)
        m_price->clear();
    m_code->setFocus();
}

void DocumentScreen::deleteLine(int row) {
    if (row < 0 || row >= m_lines.size())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                            QStringLiteral("Eliminar item")))
        return;
    m_lines.removeAt(row);
    refreshLines();
    linesChanged();
}

void DocumentScreen::setLines(const QList<DocumentLine>& lines) {
    m_lines = lines;
    refreshLines();
}

void DocumentScreen::refreshLines() {
    m_grid->setRowCount(0);
    m_grid->setRowCount(int(m_lines.size()));
    const QList<Column> columns = lineColumns();
    for (int r = 0; r < m_lines.size(); ++r) {
        const QStringList cells = lineCells(m_lines[r]);
        for (int c = 0; c < columns.size() && c < cells.size(); ++c)
            m_grid->setItem(r, c, cell(cells[c], columns[c].right));
    }
    refreshTotals();
}

void DocumentScreen::refreshTotals() {
    const QStringList texts = totalTexts(m_lines);
    for (int i = 0; i < m_totals.size() && i < texts.size(); ++i)
        m_totals[i]->setText(texts[i]);
}

void DocumentScreen::setStatus(int status) {
    m_status = status;
    m_state->setText(statusText(status));
    emit recordStateChanged();
}

void DocumentScreen::showProgress(const QString& text) {
    m_progress->setText(text);
    m_progress->repaint();
}

Decimal DocumentScreen::parsed(const QLineEdit* field) {
    return rules::headerNumber(field->text());
}

void DocumentScreen::setNumber(QLineEdit* field, const Decimal& value, int decimals) {
    field->setText(value.toString(decimals));
}

void DocumentScreen::selectAfterRequery(const QString& number, const QString& supplier) {
    m_pending = {number, supplier};
}

const DocumentSummary* DocumentScreen::current() const {
    return m_current >= 0 && m_current < m_documents.size() ? &m_documents[m_current] : nullptr;
}

void DocumentScreen::requery() {
    if (m_pending.first.isEmpty() && current())
        m_pending = {current()->number, current()->supplier};
    m_documents = listDocuments();
    m_browser->setRowCount(0);
    m_browser->setRowCount(int(m_documents.size()));
    m_current = m_documents.isEmpty() ? -1 : 0;
    for (int r = 0; r < m_documents.size(); ++r) {
        const DocumentSummary& d = m_documents[r];
        m_browser->setItem(r, 0, cell(d.number));
        m_browser->setItem(r, 1, cell(d.supplier));
        m_browser->setItem(r, 2, cell(d.supplierName));
        m_browser->setItem(r, 3, cell(d.date.toString(QStringLiteral("dd/MM/yyyy"))));
        m_browser->setItem(r, 4, cell(shown(d.total), true));
        m_browser->setItem(r, 5, cell(statusText(d.status)));
        if (d.number == m_pending.first &&
            (m_pending.second.isEmpty() || d.supplier == m_pending.second))
            m_current = r;
    }
    m_pending = {};
}

void DocumentScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    m_current = row;
    m_browser->selectRow(row);
    afterNavigate();
}

void DocumentScreen::afterNavigate() {
    m_progress->clear();
    const DocumentSummary* d = current();
    if (!d) {
        setLines({});
        setStatus(kOpen);
        return;
    }
    m_browser->selectRow(m_current);
    showDocument(*d);
}

void DocumentScreen::save() {
    saveDocument();
    m_progress->clear();
}

void DocumentScreen::remove() {
    const DocumentSummary* d = current();
    if (!d)
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    deleteDocument(*d);
    m_current = -1;
}

void DocumentScreen::print() {
    if (const DocumentSummary* d = current())
        printDocument(this, printedDocument(*d));
}

void DocumentScreen::exportPdf() {
    if (const DocumentSummary* d = current())
        writePdf(this, printedDocument(*d));
}

void DocumentScreen::newRecord() {
    RecordScreen::newRecord();
    setLines({});
    setStatus(kOpen);
    setCurrentBox(1);
    m_quantity->setText(QStringLiteral("1"));
    m_article->clear();
    focusFirstEditable();
}

void DocumentScreen::modifyRecord() {
    RecordScreen::modifyRecord();
    m_quantity->setText(QStringLiteral("1"));
    focusFirstEditable();
}

void DocumentScreen::keysTakeTyping(bool typing) {
    for (QWidget* w : inputControls()) {
        auto* e = qobject_cast<QLineEdit*>(w);
        if (!e || !isKey(e))
            continue;
        if (typing && e->isReadOnly()) {
            e->setProperty("orvoReadOnlyKey", true);
            e->setReadOnly(false);
            e->setFocusPolicy(Qt::StrongFocus);
        } else if (!typing && e->property("orvoReadOnlyKey").toBool()) {
            e->setReadOnly(true);
            e->setFocusPolicy(Qt::NoFocus); // Enter passes it by
        }
    }
}

void DocumentScreen::focusFirstEditable() {
    for (QWidget* w : inputControls()) {
        auto* e = qobject_cast<QLineEdit*>(w);
        if (w->isEnabled() && w->isVisibleTo(this) && w->focusPolicy() != Qt::NoFocus &&
            !(e && e->isReadOnly())) {
            w->setFocus();
            return;
        }
    }
}

void DocumentScreen::beginSearch() {
    keysTakeTyping(true);
    RecordScreen::beginSearch();
}

void DocumentScreen::cancelRecord() {
    keysTakeTyping(false);
    RecordScreen::cancelRecord();
    if (recordCount() == 0) {
        setLines({});
        setStatus(kOpen);
    }
}

void DocumentScreen::runSearch() {
    QString wanted;
    for (QWidget* w : inputControls())
        if (auto* e = qobject_cast<QLineEdit*>(w); e && isKey(e))
            wanted = e->text().trimmed();
    keysTakeTyping(false);
    for (int r = 0; r < m_documents.size(); ++r) {
        if (!wanted.isEmpty() && m_documents[r].number == wanted) {
            navigateTo(r);
            return;
        }
    }
    dialogs().information(this, QStringLiteral("No existe ningún valor similar al\nelemento "
                                               "buscado."));
    navigateTo(m_current);
}

} // namespace orvo::inventory::purchases
