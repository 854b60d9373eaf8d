#include "pos/returns/return_screen_base.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_screen.h"
#include "pos/sale/till_widgets.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QVBoxLayout>

namespace orvo::pos::returns {

bool printPaperDocument(const QString& html, bool large, long long number) {
    return sale::printPaperInvoice(html, large, number);
}

ReturnScreenBase::ReturnScreenBase(QSqlDatabase db, const shell::SessionContext& ctx,
                                   fiscal::FiscalPrinterThread* printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(ctx), m_printerThread(printer),
      m_paper(printPaperDocument) {
    m_invoice = new QLineEdit(this);
    m_invoice->setObjectName(QStringLiteral("TxtFactura"));
    m_invoice->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    m_client = new QLabel(this);
    m_client->setObjectName(QStringLiteral("lblCliente"));
    m_clientType = new QLabel(this);
    m_clientType->setObjectName(QStringLiteral("lblTipoCliente"));
    m_code = new QLineEdit(this);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_quantity = new QLineEdit(this);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_day = new sale::DayStateBanner(m_db, m_ctx, this);
    m_invoiceLines = new QTableWidget(0, 6, this);
    m_invoiceLines->setObjectName(QStringLiteral("SpreadFactura"));
    m_invoiceLines->setHorizontalHeaderLabels(
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Vendido"),
         QStringLiteral("Devuelto"), QStringLiteral("Por devolver"), QStringLiteral("Precio")});
    layOutGrid(m_invoiceLines, 1);
    m_invoiceLines->installEventFilter(this);
    connect(m_invoiceLines, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int) { pickInvoiceLine(row); });
    m_lastDocument = sale::bigLabel(this, "lblUltimaDevolucion");

    connect(m_invoice, &QLineEdit::returnPressed, this, [this] {
        m_day->check(); // the line on top says how the day stands now
        guarded(this, [this] { loadInvoice(); });
    });
    connect(m_code, &QLineEdit::returnPressed, m_quantity, [this] {
        if (m_code->text().trimmed().isEmpty()) {
            returnedGoodsKeyed();
            return;
        }
        m_quantity->setFocus();
        m_quantity->selectAll();
    });
    connect(m_quantity, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { addReturned(); }); });
}

ReturnScreenBase::~ReturnScreenBase() = default;

QPushButton* ReturnScreenBase::button(const char* name, const QString& text) {
    auto* b = new QPushButton(text, this);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
}

QPushButton* ReturnScreenBase::actionButton(const char* name, const QString& text, Qt::Key key,
                                            std::function<void()> action) {
    QPushButton* b = button(name, text);
    m_keys.insert(key, action);
    connect(b, &QPushButton::clicked, this, [this, action] { guarded(this, action); });
    return b;
}

void ReturnScreenBase::keyPressEvent(QKeyEvent* event) {
    if (m_busy)
        return;
    const auto action = m_keys.find(event->key());
    if (action != m_keys.end()) {
        guarded(this, *action);
        return;
    }
    QWidget::keyPressEvent(event);
}

QPushButton* ReturnScreenBase::wholeInvoiceButton() {
    QPushButton* b = button("cmdDevTotal", QStringLiteral("Devolución total"));
    connect(b, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { returnEverything(); }); });
    return b;
}

QPushButton* ReturnScreenBase::cancelButton() {
    QPushButton* b = button("cmdCancelar", QStringLiteral("Cancelar"));
    connect(b, &QPushButton::clicked, this, [this] {
        if (parentWidget())
            parentWidget()->close();
        close();
    });
    return b;
}

void ReturnScreenBase::addInvoiceRows(QVBoxLayout* layout, const QString& codeCaption,
                                      QPushButton* wholeInvoice) {
    layout->addWidget(m_day);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Factura:"), m_invoice);
    form->addRow(QStringLiteral("Cliente:"), m_client);
    form->addRow(QString(), m_clientType);
    auto* keying = new QHBoxLayout;
    keying->addWidget(new QLabel(codeCaption, this));
    keying->addWidget(m_code, 3);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad:"), this));
    keying->addWidget(m_quantity, 1);
    keying->addWidget(wholeInvoice);
    layout->addLayout(form);
    layout->addWidget(new QLabel(QStringLiteral("Artículos de la factura (Enter lleva uno a la "
                                                "devolución):"),
                                 this));
    layout->addWidget(m_invoiceLines, 1);
    layout->addLayout(keying);
}

bool ReturnScreenBase::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_invoiceLines && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && m_invoiceLines->currentRow() >= 0) {
            pickInvoiceLine(m_invoiceLines->currentRow());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ReturnScreenBase::refreshInvoiceLines() {
    const QList<InvoiceLine> lines = m_loaded ? m_draft.invoice().lines : QList<InvoiceLine>();
    m_invoiceLines->setRowCount(int(lines.size()));
    for (int i = 0; i < lines.size(); ++i) {
        const InvoiceLine& l = lines.at(i);
        Decimal keyed;
        for (const ReturnLine& r : m_draft.lines())
            if (r.source.item == l.item)
                keyed += r.cantidad;
        m_invoiceLines->setItem(i, 0, cell(l.codigoBarra));
        m_invoiceLines->setItem(i, 1, cell(l.nombre));
        m_invoiceLines->setItem(i, 2, cell(payments::formatQuantity(l.cantidad), true));
        m_invoiceLines->setItem(i, 3, cell(payments::formatQuantity(l.cantidadDevuelta), true));
        m_invoiceLines->setItem(i, 4, cell(payments::formatQuantity(l.remaining() - keyed), true));
        m_invoiceLines->setItem(i, 5,
                                cell(payments::formatAmount(l.precioLista + l.impuesto), true));
    }
}

void ReturnScreenBase::pickInvoiceLine(int row) {
    if (!m_loaded || row < 0 || row >= m_draft.invoice().lines.size())
        return;
    const InvoiceLine& l = m_draft.invoice().lines.at(row);
    m_code->setText(l.codigoBarra);
    m_quantity->setText(payments::formatQuantity(l.remaining()));
    m_quantity->setFocus();
    m_quantity->selectAll();
}

void ReturnScreenBase::layOutGrid(QTableWidget* grid, int stretch) {
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setWordWrap(false);
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    grid->horizontalHeader()->setSectionResizeMode(stretch, QHeaderView::Stretch);
}

QTableWidgetItem* ReturnScreenBase::cell(const QString& text, bool right) {
    auto* item = new QTableWidgetItem(text);
    item->setToolTip(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    if (right)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

void ReturnScreenBase::takeInvoice(ReturnableInvoice invoice) {
    m_client->setText(invoice.cliente + QStringLiteral(" ") + invoice.clienteNombre);
    m_clientType->setText(QStringLiteral("CLIENTE TIPO : ") + invoice.tipoCliente);
    m_draft = ReturnDraft(std::move(invoice));
    m_loaded = true;
    m_lastDocument->clear();
    refresh();
    m_code->setFocus();
}

void ReturnScreenBase::returnEverything() {
    if (!m_loaded)
        loadInvoice();
    if (!m_loaded)
        return;
    m_draft.addEverything();
    refresh();
}

void ReturnScreenBase::addReturned() {
    if (!m_loaded || m_code->text().trimmed().isEmpty())
        return;
    const QString q = m_quantity->text().trimmed();
    const auto typed = q.isEmpty() ? std::optional<Decimal>(1) : payments::parseTypedAmount(q);
    if (!typed)
        throw UserError(QStringLiteral("La cantidad debe ser un número...!"));
    const Decimal quantity = *typed;
    m_draft.addArticle(m_code->text(), quantity);
    m_code->clear();
    m_quantity->setText(QStringLiteral("1"));
    refresh();
    m_code->setFocus();
}

void ReturnScreenBase::clearInvoice() {
    m_draft = ReturnDraft();
    m_loaded = false;
    m_invoice->clear();
    m_client->clear();
    m_clientType->clear();
    m_code->clear();
    m_quantity->setText(QStringLiteral("1"));
}

bool ReturnScreenBase::confirmDeleteLine() {
    return dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                              QStringLiteral("Eliminar item"));
}

sale::SalePrinter* ReturnScreenBase::printer() {
    if (!sale::printsFiscally(m_ctx) || contingency())
        return nullptr;
    if (!m_printer)
        m_printer = std::make_unique<sale::ThreadSalePrinter>(
            m_printerThread ? *m_printerThread : fiscal::registerPrinter());
    return m_printer.get();
}

} // namespace orvo::pos::returns
