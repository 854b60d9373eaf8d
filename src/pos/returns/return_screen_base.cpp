#include "pos/returns/return_screen_base.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/fiscal/register_printer.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_screen.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
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

    connect(m_invoice, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { loadInvoice(); }); });
    connect(m_code, &QLineEdit::returnPressed, m_quantity, [this] {
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
    layout->addLayout(keying);
}

QTableWidgetItem* ReturnScreenBase::cell(const QString& text, bool right) {
    auto* item = new QTableWidgetItem(text);
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
    QString q = m_quantity->text().trimmed();
    q.replace(QLatin1Char(','), QLatin1Char('.'));
    const Decimal quantity = q.isEmpty() ? Decimal(1) : Decimal::fromString(q);
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
