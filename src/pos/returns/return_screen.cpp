#include "pos/returns/return_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "pos/register/day_state.h"
#include "pos/returns/exchange_screen.h"
#include "pos/returns/returns.h"
#include "pos/sale/sale_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "shell/startup/user_settings.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace orvo::pos::returns {

namespace {

QPushButton* button(QWidget* parent, const char* name, const QString& text) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
}

QTableWidgetItem* cell(const QString& text, bool right = false) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    if (right)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

} // namespace

bool printPaperDocument(const QString& html, bool large, long long number) {
    return sale::printPaperInvoice(html, large, number);
}

ReturnScreen::ReturnScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                           fiscal::FiscalPrinterThread* printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(ctx), m_printerThread(printer),
      m_paper(printPaperDocument) {
    setObjectName(QStringLiteral("frmDevolucion"));
    buildUi();
    clearAll();
}

ReturnScreen::~ReturnScreen() = default;

void ReturnScreen::buildUi() {
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
    m_quantity->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,9}([.,][0-9]{0,3})?")), this));
    m_grid = new QTableWidget(0, 6, this);
    m_grid->setObjectName(QStringLiteral("SpreadDevolucion"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Código"), QStringLiteral("Descripción"),
                                       QStringLiteral("Cantidad"), QStringLiteral("CantidadMax"),
                                       QStringLiteral("Precio"), QStringLiteral("Total")});
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("lblTotal"));
    m_contingency = new QCheckBox(QStringLiteral("Contingencia"), this);
    m_contingency->setObjectName(QStringLiteral("chkContingencia"));
    m_contingency->setVisible(registers::contingencyAllowed(m_db, m_ctx.serial));
    m_all = button(this, "cmdDevTotal", QStringLiteral("Devolución total"));
    m_delete = button(this, "cmdEliminar", QStringLiteral("Eliminar"));
    m_accept = button(this, "cmdAceptar", QStringLiteral("Aceptar"));
    auto* cancel = button(this, "cmdCancelar", QStringLiteral("Cancelar"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Factura:"), m_invoice);
    form->addRow(QStringLiteral("Cliente:"), m_client);
    form->addRow(QString(), m_clientType);
    auto* keying = new QHBoxLayout;
    keying->addWidget(new QLabel(QStringLiteral("Artículo:"), this));
    keying->addWidget(m_code, 3);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad:"), this));
    keying->addWidget(m_quantity, 1);
    keying->addWidget(m_all);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_contingency);
    buttons->addWidget(m_total);
    buttons->addStretch();
    buttons->addWidget(m_delete);
    buttons->addWidget(m_accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(keying);
    layout->addWidget(m_grid);
    layout->addLayout(buttons);

    connect(m_invoice, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { loadInvoice(); }); });
    connect(m_code, &QLineEdit::returnPressed, m_quantity, [this] {
        m_quantity->setFocus();
        m_quantity->selectAll();
    });
    connect(m_quantity, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [this] { addArticle(); }); });
    connect(m_all, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { returnEverything(); }); });
    connect(m_delete, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { deleteLine(); }); });
    connect(m_accept, &QPushButton::clicked, this, [this] { guarded(this, [this] { accept(); }); });
    connect(cancel, &QPushButton::clicked, this, [this] {
        if (parentWidget())
            parentWidget()->close();
        close();
    });
}

void ReturnScreen::clearAll() {
    m_draft = ReturnDraft();
    m_loaded = false;
    m_invoice->clear();
    m_client->clear();
    m_clientType->clear();
    m_code->clear();
    m_quantity->setText(QStringLiteral("1"));
    m_contingency->setChecked(false);
    guarded(this, [this] {
        setWindowTitle(QStringLiteral("Devolución - (Devolución Nº %1)")
                           .arg(nextReturnNumberPreview(m_db, m_ctx)));
    });
    refresh();
    m_invoice->setFocus();
}

void ReturnScreen::loadInvoice() {
    const long long number = m_invoice->text().toLongLong();
    if (number <= 0)
        return;
    m_draft = ReturnDraft(returns::loadInvoice(m_db, m_ctx, number));
    m_loaded = true;
    const ReturnableInvoice& inv = m_draft.invoice();
    m_client->setText(inv.cliente + QStringLiteral(" ") + inv.clienteNombre);
    m_clientType->setText(QStringLiteral("CLIENTE TIPO : ") + inv.tipoCliente);
    refresh();
    m_code->setFocus();
}

void ReturnScreen::returnEverything() {
    if (!m_loaded)
        loadInvoice();
    if (!m_loaded)
        return;
    m_draft.addEverything();
    refresh();
}

void ReturnScreen::addArticle() {
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

void ReturnScreen::deleteLine() {
    const int row = m_grid->currentRow();
    if (row < 0 || row >= m_draft.lines().size())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                            QStringLiteral("Eliminar item")))
        return;
    m_draft.removeLine(row);
    refresh();
}

void ReturnScreen::refresh() {
    const auto& lines = m_draft.lines();
    m_grid->setRowCount(int(lines.size()));
    for (int i = 0; i < lines.size(); ++i) {
        const ReturnLine& l = lines.at(i);
        m_grid->setItem(i, 0, cell(l.source.codigoBarra));
        m_grid->setItem(i, 1, cell(l.source.nombre));
        m_grid->setItem(i, 2, cell(l.cantidad.toString(), true));
        m_grid->setItem(i, 3, cell(l.source.remaining().toString(), true));
        m_grid->setItem(i, 4, cell(payments::formatAmount(l.source.precioLista), true));
        m_grid->setItem(
            i, 5,
            cell(payments::formatAmount((l.source.precioLista * l.cantidad).rounded(2)), true));
    }
    m_total->setText(QStringLiteral("Total: ") + payments::formatAmount(m_draft.totals().total()));
}

sale::SalePrinter* ReturnScreen::printer() {
    if (!sale::printsFiscally(m_ctx) || m_draft.contingency())
        return nullptr;
    if (!m_printer)
        m_printer = std::make_unique<sale::ThreadSalePrinter>(
            m_printerThread ? *m_printerThread : fiscal::registerPrinter());
    return m_printer.get();
}

void ReturnScreen::accept() {
    m_draft.setContingency(m_contingency->isVisible() && m_contingency->isChecked());
    // A credit note whose print failed goes out before the next one. A contingency return is
    // made because the printer is down, so it does not wait for them.
    if (!m_draft.contingency()) {
        const sale::PrintResult pending = printPendingReturns(m_db, m_ctx, printer(), m_paper);
        if (!pending.ok()) {
            dialogs().warning(this, pending.error);
            return;
        }
    }
    const SavedReturn saved = saveReturn(m_db, m_ctx, m_draft, printer());
    const sale::PrintResult printed =
        printReturn(m_db, m_ctx, saved.number, m_draft.contingency(), printer(), m_paper);
    if (!printed.ok())
        dialogs().warning(this, printed.error);
    if (!saved.reminder.isEmpty())
        dialogs().information(this, saved.reminder);
    clearAll();
}

void registerReturnScreens() {
    shell::ScreenRegistry::instance().add(QStringLiteral("frmDevolucion"), [](QWidget* parent) {
        if (shell::settings::invoicePrinter().isEmpty())
            throw UserError(QStringLiteral("Debe configurar la impresora para facturar...!"));
        return new ReturnScreen(shell::mainDb(), shell::session(), nullptr, parent);
    });
    shell::ScreenRegistry::instance().add(
        QStringLiteral("frmCambiosDeMercancia"), [](QWidget* parent) {
            if (shell::settings::invoicePrinter().isEmpty())
                throw UserError(QStringLiteral("Debe configurar la impresora para facturar...!"));
            return new ExchangeScreen(shell::mainDb(), shell::session(), nullptr, parent);
        });
}

} // namespace orvo::pos::returns
