#include "pos/returns/exchange_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "pos/returns/exchange.h"
#include "pos/sale/sale_payments.h"
#include "pos/sale/sale_print.h"
#include "pos/sale/sale_store.h"
#include "pos/sale/till_widgets.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
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
    return g;
}

QString money(const Decimal& d) {
    return payments::formatAmount(d);
}

// "A pagar: 13,08" or "A devolver: 5,00": what the cashier settles.
QString differenceText(const ExchangeAmounts& a) {
    if (a.toHandBack() > Decimal())
        return QStringLiteral("A devolver: ") + money(a.toHandBack());
    return QStringLiteral("A pagar: ") + money(a.toPay());
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
    layOutGrid(m_backGrid, 1);
    m_article = new QLineEdit(this);
    m_article->setObjectName(QStringLiteral("txtArticulo"));
    m_article->setPlaceholderText(QStringLiteral("código, o cantidad*código"));
    m_takenGrid = grid(this, "SpreadFacturacion");
    layOutGrid(m_takenGrid, 1);
    m_backTotal = sale::bigAmountLabel(this, "lblTotalDevuelto");
    m_total = sale::bigAmountLabel(this, "lblTotal");
    m_difference = sale::bigAmountLabel(this, "lblDiferencia");
    m_change = sale::bigAmountLabel(this, "lblCambio");
    auto* all = wholeInvoiceButton();
    auto* del = button("cmdEliminar", QStringLiteral("Eliminar"));
    auto* pay = actionButton("cmdPagos", QStringLiteral("F5 Pagos"), Qt::Key_F5,
                             [this] { openPayments(); });
    auto* ok = actionButton("cmdAceptar", QStringLiteral("F10 Aceptar"), Qt::Key_F10,
                            [this] { accept(); });
    auto* cancel = cancelButton();
    m_actions = {all, del, pay, ok, cancel};

    auto* taken = new QHBoxLayout;
    taken->addWidget(new QLabel(QStringLiteral("Lleva:"), this));
    taken->addWidget(m_article, 3);
    // The two sides and the difference, each on a line of its own so that nothing is cut.
    auto* amounts = new QGridLayout;
    amounts->addWidget(m_backTotal, 0, 0);
    amounts->addWidget(m_total, 0, 1);
    amounts->addWidget(m_difference, 1, 0);
    amounts->addWidget(m_change, 1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(del);
    buttons->addWidget(pay);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    addInvoiceRows(layout, QStringLiteral("Devuelve:"), all);
    layout->addWidget(new QLabel(QStringLiteral("Artículos que devuelve:"), this));
    layout->addWidget(m_backGrid, 1);
    layout->addLayout(taken);
    layout->addWidget(m_takenGrid, 1);
    layout->addLayout(amounts);
    layout->addLayout(buttons);
    layout->addWidget(m_lastDocument);

    // Eliminar works on the grid the cashier was last in.
    for (QTableWidget* g : {m_backGrid, m_takenGrid})
        connect(g, &QTableWidget::itemSelectionChanged, this, [this, g] { m_lastGrid = g; });
    connect(m_article, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { addTaken(); }); });
    connect(del, &QPushButton::clicked, this, [this] { guarded(this, [this] { deleteLine(); }); });
}

// What comes back is keyed: on to what the client takes.
void ExchangeScreen::returnedGoodsKeyed() {
    m_article->setFocus();
}

void ExchangeScreen::closeEvent(QCloseEvent* event) {
    if (!m_busy && releaseTerminalPayments())
        event->accept();
    else
        event->ignore();
}

// A card charged for the difference is voided before the exchange is given up.
bool ExchangeScreen::releaseTerminalPayments() {
    if (m_taken.terminalPayments().isEmpty())
        return true;
    bool released = false;
    guarded(this, [&] {
        if (!dialogs().question(this,
                                QStringLiteral("El cambio tiene pagos aprobados en el punto de "
                                               "venta VPOS. ¿Desea anularlos en el terminal?"),
                                QStringLiteral("Punto de venta VPOS")))
            return;
        released = sale::voidTerminalPayments(
            this, m_db, m_ctx, m_printerThread ? *m_printerThread : fiscal::registerPrinter(),
            m_taken);
    });
    refresh();
    return released;
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
    if (!releaseTerminalPayments())
        return;
    // The new invoice goes to the same client and seller.
    m_taken = sale::newDraft(m_db, m_ctx);
    if (const auto client = sale::findClient(m_db, inv.cliente))
        m_taken.setClient(*client);
    if (!inv.vendedor.isEmpty())
        m_taken.setSeller(sale::findSeller(m_db, inv.vendedor));
    takeInvoice(std::move(inv));
}

void ExchangeScreen::addTaken() {
    const auto [quantity, text] = sale::splitQuantity(m_article->text(), Decimal(1));
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
    sale::addArticle(m_taken, chosen, quantity);
    m_article->clear();
    m_lastDocument->clear();
    refresh();
}

void ExchangeScreen::deleteLine() {
    QTableWidget* g = m_lastGrid ? m_lastGrid : m_backGrid;
    const int row = g->currentRow();
    if (row < 0)
        return;
    if (!confirmDeleteLine())
        return;
    if (g == m_backGrid && row < m_draft.lines().size()) {
        m_draft.removeLine(row);
    } else if (g == m_takenGrid && row < m_taken.lines().size()) {
        sale::deleteLine(m_db, m_ctx, m_taken, row, m_ctx.userCode);
    }
    refresh();
}

void ExchangeScreen::openPayments() {
    if (m_busy)
        return;
    if (m_taken.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    const ExchangeAmounts amounts = exchangeAmounts(m_draft, m_taken);
    if (amounts.toPay() <= Decimal())
        throw UserError(QStringLiteral("El cliente no tiene diferencia que pagar: ") +
                        differenceText(amounts) + QStringLiteral("...!"));
    if (!m_day->check())
        throw UserError(m_day->text());
    if (sale::takePayments(this, m_db, m_ctx,
                           m_printerThread ? *m_printerThread : fiscal::registerPrinter(), m_taken,
                           amounts.toPay()))
        m_paidFor = amounts.toPay();
    refresh();
}

void ExchangeScreen::refresh() {
    const auto& back = m_draft.lines();
    m_backGrid->setRowCount(int(back.size()));
    for (int i = 0; i < back.size(); ++i) {
        const ReturnLine& l = back.at(i);
        m_backGrid->setItem(i, 0, cell(l.source.codigoBarra));
        m_backGrid->setItem(i, 1, cell(l.source.nombre));
        m_backGrid->setItem(i, 2, cell(payments::formatQuantity(l.cantidad), true));
        m_backGrid->setItem(
            i, 3,
            cell(money(((l.source.precioLista + l.source.impuesto) * l.cantidad).rounded(2)),
                 true));
    }
    const auto& taken = m_taken.lines();
    m_takenGrid->setRowCount(int(taken.size()));
    for (int i = 0; i < taken.size(); ++i) {
        const sale::SaleLine& l = taken.at(i);
        m_takenGrid->setItem(i, 0, cell(l.codigoBarra));
        m_takenGrid->setItem(i, 1, cell(l.nombre));
        m_takenGrid->setItem(i, 2, cell(payments::formatQuantity(l.cantidad), true));
        m_takenGrid->setItem(
            i, 3, cell(money(((l.precioLista + l.impuesto) * l.cantidad).rounded(2)), true));
    }
    refreshInvoiceLines();
    const ExchangeAmounts amounts = exchangeAmounts(m_draft, m_taken);
    // Payments taken for another difference no longer stand (a card charged stays, to be used or
    // voided).
    if (m_taken.paymentsAccepted() && m_paidFor != amounts.toPay())
        m_taken.clearPayments();
    m_backTotal->setText(QStringLiteral("Devuelve: ") + money(amounts.back));
    m_total->setText(QStringLiteral("Lleva: ") + money(amounts.taken));
    m_difference->setText(differenceText(amounts));
    const Decimal change = m_taken.paymentsAccepted()
                               ? payments::changeDue(m_taken.payments(), m_taken.exchangeRate(),
                                                     amounts.toPay() + m_taken.igtf().tax)
                               : Decimal();
    m_change->setText(QStringLiteral("Cambio: ") + money(change));
}

void ExchangeScreen::showDone(const ExchangeResult& r) {
    m_backTotal->setText(QStringLiteral("Devuelve: ") + money(r.amounts.back));
    m_total->setText(QStringLiteral("Lleva: ") + money(r.amounts.taken));
    m_difference->setText(differenceText(r.amounts));
    m_change->setText(QStringLiteral("Cambio: ") + money(r.change));
    m_lastDocument->setText(
        QStringLiteral("Nota de crédito Nº %1 y factura Nº %2: %3 %4%5")
            .arg(r.returnNumber)
            .arg(r.invoiceNumber)
            .arg(r.handedBack() > Decimal() ? QStringLiteral("devolver al cliente")
                                            : QStringLiteral("nada que devolver"),
                 r.handedBack() > Decimal() ? m_ctx.simboloMoneda : QString(),
                 r.handedBack() > Decimal() ? money(r.handedBack()) : QString()));
}

void ExchangeScreen::accept() {
    if (m_busy)
        return;
    if (m_taken.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    sale::BusyGuard busy(m_busy, m_actions);
    const ExchangeAmounts amounts = exchangeAmounts(m_draft, m_taken);
    if (amounts.toPay() > Decimal() && !m_taken.paymentsAccepted()) {
        if (!m_day->check())
            throw UserError(m_day->text());
        const bool paid = sale::takePayments(
            this, m_db, m_ctx, m_printerThread ? *m_printerThread : fiscal::registerPrinter(),
            m_taken, amounts.toPay());
        if (paid)
            m_paidFor = amounts.toPay();
        refresh();
        if (!paid)
            return;
    }
    // Credit notes and invoices an earlier failure left pending go out first, as the return and
    // the sale do: the printer's counters must agree with the register's before these two.
    if (!m_taken.isContingency()) {
        sale::PrintResult pending = printPendingReturns(m_db, m_ctx, printer(), m_paper);
        if (pending.ok())
            pending = sale::printPendingSales(m_db, m_ctx, printer(), m_paper);
        if (!pending.ok()) {
            dialogs().warning(this, pending.error);
            return;
        }
    }
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
    // The customer display shows what is settled, not the invoice's whole price.
    const QString symbol = m_ctx.simboloMoneda;
    const sale::CustomerDisplay display =
        r.amounts.toHandBack() > Decimal()
            ? sale::CustomerDisplay{sale::displayLine(QStringLiteral("Total: "), symbol,
                                                      r.amounts.taken),
                                    sale::displayLine(QStringLiteral("A devolver: "), symbol,
                                                      r.amounts.toHandBack())}
            : sale::CustomerDisplay{
                  sale::displayLine(QStringLiteral("A pagar: "), symbol, r.amounts.toPay()),
                  sale::displayLine(QStringLiteral("Cambio: "), symbol, r.change)};
    const sale::PrintResult invoice = sale::printSale(m_db, m_ctx, r.invoiceNumber, contingency,
                                                      printer(), m_paper, r.change, display);
    if (!invoice.ok())
        dialogs().warning(this, invoice.error);
    if (!r.reminder.isEmpty())
        dialogs().information(this, r.reminder);
    clearAll();
    showDone(r);
}

} // namespace orvo::pos::returns
