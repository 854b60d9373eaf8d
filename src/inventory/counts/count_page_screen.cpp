#include "inventory/counts/count_page_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/counts/counts.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/purchase_rules.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::counts {

namespace {

QString units(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

QString formOf(CountPageScreen::Kind kind) {
    switch (kind) {
    case CountPageScreen::Kind::First:
        return kFirstCountScreen;
    case CountPageScreen::Kind::Second:
        return kSecondCountScreen;
    case CountPageScreen::Kind::Partial:
        break;
    }
    return kPartialCountScreen;
}

QString titleOf(CountPageScreen::Kind kind) {
    switch (kind) {
    case CountPageScreen::Kind::First:
        return QStringLiteral("Toma física - Conteo 1");
    case CountPageScreen::Kind::Second:
        return QStringLiteral("Toma física - Conteo 2");
    case CountPageScreen::Kind::Partial:
        break;
    }
    return QStringLiteral("Toma física parcial");
}

} // namespace

CountPageScreen::CountPageScreen(QSqlDatabase db, QString userCode, Kind kind, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_userCode(std::move(userCode)), m_kind(kind) {
    setObjectName(formOf(kind));
    setWindowTitle(titleOf(kind));
    auto* outer = new QVBoxLayout(this);
    auto* split = new QSplitter(Qt::Vertical, this);
    outer->addWidget(split);
    m_browser = purchases::listTable(split, QStringLiteral("grdPaginas"),
                                     {QStringLiteral("Página"), QStringLiteral("Usuario"),
                                      QStringLiteral("Fecha"), QStringLiteral("Artículos"),
                                      QStringLiteral("Unidades"), QStringLiteral("Estatus"),
                                      QStringLiteral("Observación")},
                                     6);
    connect(m_browser, &QTableWidget::cellClicked, this, [this](int row) {
        if (!isEditing())
            guarded(this, [&] { navigateTo(row); });
    });

    auto* body = new QWidget(split);
    auto* bodyLayout = new QVBoxLayout(body);
    auto* head = new QGroupBox(QStringLiteral("Página"), body);
    auto* form = new QFormLayout(head);
    m_number = new QLineEdit(head);
    m_number->setObjectName(QStringLiteral("txtPagina"));
    m_number->setValidator(new QIntValidator(1, 999999, m_number));
    markKey(m_number);
    markRequired(m_number, QStringLiteral("el número de la página"));
    form->addRow(QStringLiteral("Página (zona) Nº"), m_number);
    m_note = new QLineEdit(head);
    m_note->setObjectName(QStringLiteral("txtObservacion"));
    m_note->setMaxLength(255);
    form->addRow(QStringLiteral("Observación"), m_note);
    m_state = new QLabel(head);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    QFont bold = m_state->font();
    bold.setBold(true);
    m_state->setFont(bold);
    form->addRow(QStringLiteral("Estatus"), m_state);
    if (kind == Kind::First) {
        auto* passes = new QHBoxLayout;
        m_passes = new QLabel(head);
        m_passes->setObjectName(QStringLiteral("lblConteos"));
        passes->addWidget(m_passes, 1);
        QPushButton* choose = purchases::screenButton(this, QStringLiteral("cmdConteos"),
                                                      QStringLiteral("Cambiar..."));
        connect(choose, &QPushButton::clicked, this,
                [this] { guarded(this, [&] { chooseCountPasses(); }); });
        passes->addWidget(choose);
        form->addRow(QStringLiteral("Conteos de la toma"), passes);
    }
    bodyLayout->addWidget(head);

    auto* keying = new QHBoxLayout;
    m_code = new QLineEdit(body);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_code->setMaxLength(30);
    m_code->setPlaceholderText(QStringLiteral("Código de barras (cantidad*código)"));
    m_quantity = new QLineEdit(QStringLiteral("1"), body);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_quantity->setAlignment(Qt::AlignRight);
    m_quantity->setMaximumWidth(90);
    keying->addWidget(new QLabel(QStringLiteral("Código:"), body));
    keying->addWidget(m_code, 2);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad (F2):"), body));
    keying->addWidget(m_quantity);
    m_article = new QLabel(body);
    m_article->setObjectName(QStringLiteral("lblDescripcion"));
    keying->addWidget(m_article, 3);
    bodyLayout->addLayout(keying);
    m_grid = purchases::listTable(
        body, QStringLiteral("SpreadToma"),
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Cantidad")}, 1);
    m_grid->installEventFilter(this);
    bodyLayout->addWidget(m_grid, 1);
    auto* bottom = new QHBoxLayout;
    m_totals = new QLabel(body);
    m_totals->setObjectName(QStringLiteral("lblTotales"));
    bottom->addWidget(m_totals, 1);
    auto add = [&](const char* name, const QString& text, int key, auto slot) {
        QPushButton* b = purchases::screenButton(this, QString::fromLatin1(name), text, key);
        connect(b, &QPushButton::clicked, this, [this, slot] { guarded(this, [&] { slot(); }); });
        bottom->addWidget(b);
        return b;
    };
    m_countButtons << add("cmdAprobar", QStringLiteral("Aprobar página"), Qt::Key_F12,
                          [this] { approve(); });
    add("cmdActualizar", QStringLiteral("Actualizar"), Qt::Key_F5, [this] { refresh(); });
    add("cmdPDF", QStringLiteral("PDF"), 0, [this] { exportPdf(); });
    bodyLayout->addLayout(bottom);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);

    // F2: the quantity of the next scans.
    auto* quantityKey = new QShortcut(QKeySequence(Qt::Key_F2), this);
    quantityKey->setContext(Qt::WidgetWithChildrenShortcut);
    connect(quantityKey, &QShortcut::activated, this, [this] {
        if (m_quantity->isEnabled()) {
            m_quantity->setFocus();
            m_quantity->selectAll();
        }
    });

    installFieldBehaviour();
    connect(this, &RecordScreen::recordStateChanged, this, &CountPageScreen::updateEditability);
    enableInputs(false, true);
    requery();
    if (recordCount() > 0)
        navigateTo(0);
    updateEditability();
}

bool CountPageScreen::offers(Action action) const {
    if (action == Action::Approve)
        return false; // F12, beside the page
    if ((action == Action::Modify || action == Action::Delete) && !pageOpen())
        return false;
    return true;
}

const PageSummary* CountPageScreen::current() const {
    return m_current >= 0 && m_current < m_pages.size() ? &m_pages[m_current] : nullptr;
}

int CountPageScreen::currentPage() const {
    return current() ? current()->number : 0;
}

bool CountPageScreen::pageOpen() const {
    return current() && m_page.number == current()->number && m_page.status == kOpen;
}

void CountPageScreen::updateEditability() {
    const bool editing = isEditing();
    m_browser->setEnabled(!editing);
    const bool counting = !editing && mode() == Mode::Browsing && pageOpen();
    m_code->setEnabled(counting);
    m_quantity->setEnabled(counting);
    if (counting && m_quantity->text().trimmed().isEmpty())
        m_quantity->setText(QStringLiteral("1"));
    for (QPushButton* b : std::as_const(m_countButtons))
        b->setEnabled(counting);
    if (m_passes)
        m_passes->setText(QString::number(countPasses(m_db)));
}

bool CountPageScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && watched == m_code) {
            guarded(this, [&] { scanCode(m_code->text()); });
            return true;
        }
        if (enter && watched == m_quantity) {
            // The quantity stays for the next scan.
            m_code->setFocus();
            m_code->selectAll();
            return true;
        }
        if (key->key() == Qt::Key_Delete && watched == m_grid) {
            guarded(this, [&] { removeLine(m_grid->currentRow()); });
            return true;
        }
    }
    return RecordScreen::eventFilter(watched, event);
}

void CountPageScreen::requery() {
    if (m_pending == 0 && current())
        m_pending = current()->number;
    m_pages = listPages(m_db, pass());
    m_browser->setRowCount(0);
    m_browser->setRowCount(int(m_pages.size()));
    m_current = m_pages.isEmpty() ? -1 : 0;
    for (int r = 0; r < m_pages.size(); ++r) {
        const PageSummary& p = m_pages[r];
        m_browser->setItem(r, 0, purchases::listCell(QString::number(p.number), true));
        m_browser->setItem(r, 1, purchases::listCell(p.user));
        m_browser->setItem(
            r, 2, purchases::listCell(p.date.toString(QStringLiteral("dd/MM/yyyy HH:mm"))));
        m_browser->setItem(r, 3, purchases::listCell(QString::number(p.items), true));
        m_browser->setItem(r, 4, purchases::listCell(units(p.units), true));
        m_browser->setItem(r, 5, purchases::listCell(statusText(p, m_kind == Kind::Partial)));
        m_browser->setItem(r, 6, purchases::listCell(p.note));
        if (p.number == m_pending)
            m_current = r;
    }
    m_pending = 0;
}

void CountPageScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    m_current = row;
    afterNavigate();
}

void CountPageScreen::afterNavigate() {
    const PageSummary* p = current();
    if (!p) {
        showPage(CountPage());
        return;
    }
    m_browser->selectRow(m_current);
    const auto page = loadPage(m_db, pass(), p->number);
    showPage(page ? *page : CountPage());
    updateEditability();
    emit recordStateChanged();
    // Ready to scan: the first barcode goes to the page.
    if (m_code->isEnabled())
        m_code->setFocus();
}

void CountPageScreen::showPage(const CountPage& page) {
    m_page = page;
    m_number->setText(page.number > 0 ? QString::number(page.number) : QString());
    m_note->setText(page.note);
    const PageSummary* p = current();
    m_state->setText(page.number == 0 || !p ? QString() : statusText(*p, m_kind == Kind::Partial));
    m_rowOf.clear();
    m_grid->setRowCount(0);
    m_grid->setRowCount(int(page.lines.size()));
    for (int r = 0; r < page.lines.size(); ++r) {
        const CountLine& l = page.lines[r];
        m_grid->setItem(r, 0, purchases::listCell(l.barcode));
        m_grid->setItem(r, 1, purchases::listCell(l.name));
        m_grid->setItem(r, 2, purchases::listCell(units(l.quantity), true));
        m_rowOf.insert(l.barcode, r);
    }
    m_article->clear();
    showTotals();
}

void CountPageScreen::showLine(const CountLine& line) {
    int row = m_rowOf.value(line.barcode, -1);
    if (row < 0) {
        row = m_grid->rowCount();
        m_grid->insertRow(row);
        m_grid->setItem(row, 0, purchases::listCell(line.barcode));
        m_grid->setItem(row, 1, purchases::listCell(line.name));
        m_grid->setItem(row, 2, purchases::listCell(units(line.quantity), true));
        m_rowOf.insert(line.barcode, row);
        m_page.lines.append(line);
    } else {
        m_grid->item(row, 2)->setText(units(line.quantity));
        m_page.lines[row].quantity = line.quantity;
    }
    m_grid->selectRow(row);
    m_grid->scrollToItem(m_grid->item(row, 0));
    m_article->setText(line.name + QStringLiteral(": ") + units(line.quantity));
    showTotals();
}

void CountPageScreen::showTotals() {
    Decimal total;
    for (const CountLine& l : std::as_const(m_page.lines))
        total += l.quantity;
    m_totals->setText(QString::number(m_page.lines.size()) + QStringLiteral(" artículo(s), ") +
                      units(total) + QStringLiteral(" unidad(es)"));
    // The page's row in the list follows the scanning.
    if (current() && current()->number == m_page.number && m_browser->item(m_current, 4)) {
        m_browser->item(m_current, 3)->setText(QString::number(m_page.lines.size()));
        m_browser->item(m_current, 4)->setText(units(total));
    }
}

void CountPageScreen::scanCode(const QString& text) {
    if (!pageOpen())
        return;
    QString code = text.trimmed();
    if (code.isEmpty())
        return;
    Decimal quantity;
    try {
        if (const qsizetype star = code.indexOf(QLatin1Char('*')); star > 0) {
            quantity = purchases::rules::headerNumber(code.left(star));
            code = code.mid(star + 1).trimmed();
        } else {
            quantity = m_quantity->text().trimmed().isEmpty()
                           ? Decimal(1)
                           : purchases::rules::headerNumber(m_quantity->text());
        }
        const Scan s = scan(m_db, pass(), m_page.number, code, quantity);
        showLine(s.line);
        m_code->clear();
        m_quantity->setText(QStringLiteral("1"));
        m_code->setFocus();
        // Said once a barcode: the team goes on scanning.
        if (s.zeroCost && !m_warnedZeroCost.contains(s.line.barcode)) {
            m_warnedZeroCost.insert(s.line.barcode);
            dialogs().information(this, QStringLiteral("Artículo con Costo cero...!"));
            m_code->setFocus();
        }
    } catch (const UserError&) {
        m_code->setFocus();
        m_code->selectAll();
        throw;
    }
}

void CountPageScreen::removeLine(int row) {
    if (!pageOpen() || row < 0 || row >= m_page.lines.size())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                            QStringLiteral("Eliminar item")))
        return;
    counts::removeLine(m_db, pass(), m_page.number, m_page.lines[row].barcode);
    requery();
    afterNavigate();
}

void CountPageScreen::approve() {
    if (!pageOpen())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea Aprobar la Pagina ?"),
                            QStringLiteral("Información"), false))
        return;
    approvePage(m_db, pass(), m_page.number, m_kind == Kind::Partial);
    requery();
    afterNavigate();
}

void CountPageScreen::refresh() {
    requery();
    afterNavigate();
}

void CountPageScreen::chooseCountPasses() {
    const auto typed = dialogs().textInput(this, QStringLiteral("Conteos de la toma física"),
                                           QStringLiteral("Número de conteos (1 o 2):"),
                                           QString::number(countPasses(m_db)));
    if (!typed)
        return;
    bool ok = false;
    const int passes = typed->trimmed().toInt(&ok);
    if (!ok)
        throw UserError(QStringLiteral("La toma física se hace en 1 o 2 conteos...!"));
    setCountPasses(m_db, passes);
    updateEditability();
}

void CountPageScreen::save() {
    if (mode() == Mode::Adding) {
        CountPage p;
        p.number = m_number->text().trimmed().toInt();
        p.note = m_note->text();
        p.user = m_userCode;
        createPage(m_db, pass(), p);
        m_pending = p.number;
    } else {
        saveNote(m_db, pass(), m_page.number, m_note->text());
        m_pending = m_page.number;
    }
}

void CountPageScreen::remove() {
    if (!current())
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    deletePage(m_db, pass(), current()->number);
    m_current = -1;
}

void CountPageScreen::print() {
    if (current())
        purchases::printDocument(this, countSheet(m_db, pass(), current()->number));
}

void CountPageScreen::exportPdf() {
    if (current())
        purchases::writePdf(this, countSheet(m_db, pass(), current()->number));
}

QString CountPageScreen::proposedKey() const {
    if (m_kind == Kind::Second) {
        // The first page the first team counted that the second has not.
        QSet<int> done;
        for (const PageSummary& p : m_pages)
            done.insert(p.number);
        for (const PageSummary& p : listPages(m_db, Pass::First))
            if (!done.contains(p.number))
                return QString::number(p.number);
        return {};
    }
    int highest = 0;
    for (const PageSummary& p : m_pages)
        highest = std::max(highest, p.number);
    return QString::number(highest + 1);
}

void CountPageScreen::newRecord() {
    RecordScreen::newRecord();
    m_page = CountPage();
    m_rowOf.clear();
    m_grid->setRowCount(0);
    m_article->clear();
    m_state->setText(QStringLiteral("ABIERTA"));
    showTotals();
    m_number->setFocus();
    m_number->selectAll();
}

void CountPageScreen::cancelRecord() {
    RecordScreen::cancelRecord();
    if (recordCount() == 0)
        showPage(CountPage());
}

void CountPageScreen::beginSearch() {
    RecordScreen::beginSearch();
    m_number->setFocus();
}

void CountPageScreen::runSearch() {
    const int wanted = m_number->text().trimmed().toInt();
    for (int r = 0; r < m_pages.size(); ++r) {
        if (wanted > 0 && m_pages[r].number == wanted) {
            navigateTo(r);
            return;
        }
    }
    dialogs().information(this, QStringLiteral("No existe ningún valor similar al\nelemento "
                                               "buscado."));
    navigateTo(m_current);
}

void CountPageScreen::keyTakesTyping(bool) {}

} // namespace orvo::inventory::counts
