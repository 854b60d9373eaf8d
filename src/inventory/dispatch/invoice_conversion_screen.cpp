#include "inventory/dispatch/invoice_conversion_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/dispatch/orders.h"
#include "inventory/purchases/document_screen.h"
#include "pos/fiscal/register_printer.h"
#include "pos/sale/sale_print.h"
#include "pos/sale/sale_screen.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::dispatch {

InvoiceConversionScreen::InvoiceConversionScreen(QSqlDatabase db, shell::SessionContext ctx,
                                                 QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(std::move(ctx)) {
    setObjectName(kInvoiceConversionScreen);
    setWindowTitle(QStringLiteral("Facturar transferencia o compra"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    m_source = new QComboBox(this);
    m_source->setObjectName(QStringLiteral("cboTipoDocumento"));
    m_source->addItem(QStringLiteral("Transferencia recibida"), int(InvoiceSource::Transfer));
    m_source->addItem(QStringLiteral("Compra"), int(InvoiceSource::Purchase));
    top->addWidget(new QLabel(QStringLiteral("Documento:"), this));
    top->addWidget(m_source);
    m_clientCode = new QLineEdit(this);
    m_clientCode->setObjectName(QStringLiteral("txtCliente"));
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblNombreCliente"));
    top->addWidget(new QLabel(QStringLiteral("Cliente:"), this));
    top->addWidget(m_clientCode);
    top->addWidget(m_clientName, 1);
    m_sellerCode = new QLineEdit(this);
    m_sellerCode->setObjectName(QStringLiteral("txtVendedor"));
    m_sellerName = new QLabel(this);
    m_sellerName->setObjectName(QStringLiteral("lblNombreVendedor"));
    top->addWidget(new QLabel(QStringLiteral("Vendedor:"), this));
    top->addWidget(m_sellerCode);
    top->addWidget(m_sellerName, 1);
    QPushButton* run = purchases::screenButton(this, QStringLiteral("cmdFacturar"),
                                               QStringLiteral("Facturar"), Qt::Key_F12);
    top->addWidget(run);
    layout->addLayout(top);
    m_grid = purchases::listTable(this, QStringLiteral("grdDocumentos"),
                                  {QStringLiteral("Número"), QStringLiteral("Origen"),
                                   QStringLiteral("Fecha"), QStringLiteral("Total")});
    layout->addWidget(m_grid, 1);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    layout->addWidget(m_status);

    connect(m_source, &QComboBox::currentIndexChanged, this,
            [this] { guarded(this, [&] { fillDocuments(); }); });
    connect(m_clientCode, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { setClient(m_clientCode->text()); }); });
    connect(m_sellerCode, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { setSeller(m_sellerCode->text()); }); });
    connect(run, &QPushButton::clicked, this, [this] { guarded(this, [&] { invoice(); }); });
    try {
        checkOrderRegister(m_ctx);
    } catch (const UserError& e) {
        setEnabled(false);
        dialogs().information(this, e.text());
        return;
    }
    fillDocuments();
    m_clientCode->setFocus();
}

InvoiceConversionScreen::~InvoiceConversionScreen() = default;

InvoiceSource InvoiceConversionScreen::source() const {
    return InvoiceSource(m_source->currentData().toInt());
}

void InvoiceConversionScreen::fillDocuments() {
    m_documents = documentsToInvoice(m_db, source());
    const QLocale locale;
    QList<QStringList> rows;
    for (const InvoiceSourceDocument& d : m_documents)
        rows.append({d.number, d.from, locale.toString(d.date, QLocale::ShortFormat),
                     d.value.toLocaleString(locale, 2)});
    fillGrid(m_grid, rows, 3);
    if (!rows.isEmpty())
        m_grid->selectRow(0);
}

void InvoiceConversionScreen::setClient(const QString& code) {
    m_client = orderClient(m_db, m_ctx, code);
    m_clientName->setText(m_client.nombre);
    m_sellerCode->setFocus();
}

void InvoiceConversionScreen::setSeller(const QString& code) {
    m_seller = pos::sale::findSeller(m_db, code.trimmed());
    m_sellerName->setText(m_seller.nombre);
    m_grid->setFocus();
}

pos::sale::SalePrinter* InvoiceConversionScreen::printer() {
    if (!pos::sale::printsFiscally(m_ctx))
        return nullptr;
    if (!m_printer)
        m_printer = std::make_unique<pos::sale::ThreadSalePrinter>(pos::fiscal::registerPrinter());
    return m_printer.get();
}

void InvoiceConversionScreen::invoice() {
    const int row = m_grid->currentRow();
    if (row < 0 || row >= m_documents.size())
        throw UserError(QStringLiteral("Seleccione el documento a facturar...!"));
    const InvoiceSourceDocument document = m_documents.at(row);
    const pos::sale::SaleDraft draft = invoiceDraft(m_db, m_ctx, document, m_client, m_seller);
    if (!dialogs().question(this,
                            document.source == InvoiceSource::Transfer
                                ? QStringLiteral("Desea facturar la transferencia...?")
                                : QStringLiteral("Desea facturar la compra...?"),
                            QStringLiteral("Generar Factura"), false))
        return;
    const long long number = convertToInvoice(m_db, m_ctx, document, draft, printer());
    fillDocuments();
    m_status->setText(QStringLiteral("Factura Nº ") + QString::number(number) +
                      QStringLiteral(" (FacturasAutomaticas.txt)"));
    if (dialogs().question(this,
                           QStringLiteral("Factura Nº ") + QString::number(number) +
                               QStringLiteral(" generada con exito, Desea imprimir la factura?"),
                           QStringLiteral("Generar Factura"), false)) {
        const pos::sale::PrintResult printed = pos::sale::printSale(
            m_db, m_ctx, number, false, printer(), pos::sale::printPaperInvoice);
        if (!printed.ok())
            dialogs().warning(this, printed.error);
    }
    m_grid->setFocus();
}

} // namespace orvo::inventory::dispatch
