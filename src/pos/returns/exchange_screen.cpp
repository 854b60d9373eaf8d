#include "pos/returns/exchange_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "pos/returns/exchange.h"
#include "pos/sale/sale_payments.h"
#include "pos/sale/sale_store.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::returns {

namespace {

QTableWidget* grid(QWidget* parent, const char* name) {
    auto* g = new QTableWidget(0, 4, parent);
    g->setObjectName(QString::fromLatin1(name));
    g->setHorizontalHeaderLabels({QStringLiteral("Código"), QStringLiteral("Descripción"),
                                  QStringLiteral("Cantidad"), QStringLiteral("Total")});
    g->setSelectionBehavior(QAbstractItemView::SelectRows);
    g->setSelectionMode(QAbstractItemView::SingleSelection);
    g->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    return g;
}

} // namespace

ExchangeScreen::ExchangeScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                               fiscal::FiscalPrinterThread* printer, QWidget* parent)
    : ReturnScreenBase(std::move(db), ctx, printer, parent) {
    setObjectName(QStringLiteral("frmCambiosDeMercancia"));
    setWindowTitle(QStringLiteral("Cambios de Mercancía"));
    buildUi();
    clearAll();
}

ExchangeScreen::~ExchangeScreen() = default;

void ExchangeScreen::buildUi() {
    m_backGrid = grid(this, "SpreadDevolucion");
    m_article = new QLineEdit(this);
    m_article->setObjectName(QStringLiteral("txtArticulo"));
    m_takenGrid = grid(this, "SpreadFacturacion");
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("lblTotal"));
    m_change = new QLabel(this);
    m_change->setObjectName(QStringLiteral("lblCambio"));
    auto* all = wholeInvoiceButton();
    auto* del = button("cmdEliminar", QStringLiteral("Eliminar"));
    auto* pay = button("cmdPagos", QStringLiteral("Pagos"));
    auto* ok = button("cmdAceptar", QStringLiteral("Aceptar"));
    auto* cancel = cancelButton();

    auto* taken = new QHBoxLayout;
    taken->addWidget(new QLabel(QStringLiteral("Lleva:"), this));
    taken->addWidget(m_article, 3);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_total);
    buttons->addWidget(m_change);
    buttons->addStretch();
    buttons->addWidget(del);
    buttons->addWidget(pay);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    addInvoiceRows(layout, QStringLiteral("Devuelve:"), all);
    layout->addWidget(m_backGrid);
    layout->addLayout(taken);
    layout->addWidget(m_takenGrid);
    layout->addLayout(buttons);

    connect(m_article, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { addTaken(); }); });
    connect(del, &QPushButton::clicked, this, [this] { guarded(this, [this] { deleteLine(); }); });
    connect(pay, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { openPayments(); }); });
    connect(ok, &QPushButton::clicked, this, [this] { guarded(this, [this] { accept(); }); });
}

void ExchangeScreen::clearAll() {
    clearInvoice();
    m_taken = sale::newDraft(m_db, m_ctx);
    m_article->clear();
    refresh();
    m_invoice->setFocus();
}

void ExchangeScreen::loadInvoice() {
    const long long number = m_invoice->text().toLongLong();
    if (number <= 0)
        return;
    ReturnableInvoice inv = loadExchangeInvoice(m_db, m_ctx, number);
    // The new invoice goes to the same client and seller.
    m_taken = sale::newDraft(m_db, m_ctx);
    if (const auto client = sale::findClient(m_db, inv.cliente))
        m_taken.setClient(*client);
    if (!inv.vendedor.isEmpty())
        m_taken.setSeller(sale::findSeller(m_db, inv.vendedor));
    takeInvoice(std::move(inv));
}

void ExchangeScreen::addTaken() {
    const QString text = m_article->text().trimmed();
    if (text.isEmpty())
        return;
    const auto found = sale::lookupArticles(m_db, text);
    if (found.isEmpty())
        throw UserError(QStringLiteral("El articulo no existe...!"));
    // An exact barcode wins over the articles whose key only starts with the text.
    auto chosen = found.at(0);
    for (const auto& a : found)
        if (a.codigoBarra.trimmed().compare(text, Qt::CaseInsensitive) == 0)
            chosen = a;
    sale::addArticle(m_taken, chosen);
    m_taken.clearPayments();
    m_article->clear();
    refresh();
}

void ExchangeScreen::deleteLine() {
    QTableWidget* g = m_takenGrid->hasFocus() ? m_takenGrid : m_backGrid;
    const int row = g->currentRow();
    if (row < 0)
        return;
    if (!confirmDeleteLine())
        return;
    if (g == m_backGrid && row < m_draft.lines().size()) {
        m_draft.removeLine(row);
    } else if (g == m_takenGrid && row < m_taken.lines().size()) {
        sale::deleteLine(m_db, m_ctx, m_taken, row, m_ctx.userCode);
        m_taken.clearPayments();
    }
    refresh();
}

void ExchangeScreen::openPayments() {
    if (m_taken.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    if (!sale::takePayments(this, m_db, m_ctx,
                            m_printerThread ? *m_printerThread : fiscal::registerPrinter(),
                            m_taken))
        return;
    refresh();
}

void ExchangeScreen::refresh() {
    const auto& back = m_draft.lines();
    m_backGrid->setRowCount(int(back.size()));
    for (int i = 0; i < back.size(); ++i) {
        const ReturnLine& l = back.at(i);
        m_backGrid->setItem(i, 0, cell(l.source.codigoBarra));
        m_backGrid->setItem(i, 1, cell(l.source.nombre));
        m_backGrid->setItem(i, 2, cell(l.cantidad.toString(), true));
        m_backGrid->setItem(
            i, 3,
            cell(payments::formatAmount((l.source.precioLista * l.cantidad).rounded(2)), true));
    }
    const auto& taken = m_taken.lines();
    m_takenGrid->setRowCount(int(taken.size()));
    for (int i = 0; i < taken.size(); ++i) {
        const sale::SaleLine& l = taken.at(i);
        m_takenGrid->setItem(i, 0, cell(l.codigoBarra));
        m_takenGrid->setItem(i, 1, cell(l.nombre));
        m_takenGrid->setItem(i, 2, cell(l.cantidad.toString(), true));
        m_takenGrid->setItem(
            i, 3, cell(payments::formatAmount((l.precioLista * l.cantidad).rounded(2)), true));
    }
    m_total->setText(QStringLiteral("Total: ") + payments::formatAmount(m_taken.totals().total));
    m_change->setText(QStringLiteral("Cambio: ") + payments::formatAmount(m_taken.change()));
}

void ExchangeScreen::accept() {
    if (m_taken.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    ExchangeResult r = acceptExchange(m_db, m_ctx, m_draft, m_taken, printer());
    if (r.status == ExchangeResult::Status::NeedsForcedZ) {
        dialogs().information(
            this, QStringLiteral("El monto facturado mas el monto acumulado por ventas supera el "
                                 "total soportado por la impresora, se procedera a imprimir un Z "
                                 "y luego la factura. Esto durara uno 10 Segundos."));
        if (!sale::forcedZ(*printer()))
            throw UserError(printer()->errorText());
        r = acceptExchange(m_db, m_ctx, m_draft, m_taken, printer(), true);
    }
    const bool contingency = m_taken.isContingency();
    const sale::PrintResult note =
        printReturn(m_db, m_ctx, r.returnNumber, contingency, printer(), m_paper);
    if (!note.ok())
        dialogs().warning(this, note.error);
    dialogs().information(this, QStringLiteral("Presione ENTER al terminar de imprimir la nota de "
                                               "credito para imprimir la factura...!"));
    const sale::PrintResult invoice = sale::printSale(m_db, m_ctx, r.invoiceNumber, contingency,
                                                      printer(), m_paper, r.handedBack());
    if (!invoice.ok())
        dialogs().warning(this, invoice.error);
    if (!r.reminder.isEmpty())
        dialogs().information(this, r.reminder);
    clearAll();
    m_total->setText(QStringLiteral("Total: ") + payments::formatAmount(r.invoiceTotal));
    m_change->setText(QStringLiteral("Cambio: ") + payments::formatAmount(r.handedBack()));
}

} // namespace orvo::pos::returns
