#include "pos/returns/return_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "pos/payments/payment_rules.h"
#include "pos/register/day_state.h"
#include "pos/returns/exchange_screen.h"
#include "pos/returns/returns.h"
#include "pos/sale/till_widgets.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "shell/startup/user_settings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::returns {

ReturnScreen::ReturnScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                           fiscal::FiscalPrinterThread* printer, QWidget* parent)
    : ReturnScreenBase(std::move(db), ctx, printer, parent) {
    setObjectName(QStringLiteral("frmDevolucion"));
    buildUi();
    clearAll();
}

ReturnScreen::~ReturnScreen() = default;

void ReturnScreen::buildUi() {
    m_quantity->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,9}([.,][0-9]{0,3})?")), this));
    m_grid = new QTableWidget(0, 6, this);
    m_grid->setObjectName(QStringLiteral("SpreadDevolucion"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Código"), QStringLiteral("Descripción"),
                                       QStringLiteral("Cantidad"), QStringLiteral("CantidadMax"),
                                       QStringLiteral("Precio"), QStringLiteral("Total")});
    layOutGrid(m_grid, 1);
    m_total = sale::bigLabel(this, "lblTotal");
    m_total->setWordWrap(false);
    m_contingency = new QCheckBox(QStringLiteral("Contingencia"), this);
    m_contingency->setObjectName(QStringLiteral("chkContingencia"));
    m_contingency->setVisible(registers::contingencyAllowed(m_db, m_ctx.serial));
    m_all = wholeInvoiceButton();
    m_delete = button("cmdEliminar", QStringLiteral("Eliminar"));
    m_accept = actionButton("cmdAceptar", QStringLiteral("F10 Aceptar"), Qt::Key_F10,
                            [this] { accept(); });
    auto* cancel = cancelButton();

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_contingency);
    buttons->addWidget(m_total);
    buttons->addStretch();
    buttons->addWidget(m_delete);
    buttons->addWidget(m_accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    addInvoiceRows(layout, QStringLiteral("Artículo:"), m_all);
    layout->addWidget(new QLabel(QStringLiteral("Artículos que devuelve:"), this));
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    layout->addWidget(m_lastDocument);

    connect(m_delete, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { deleteLine(); }); });
}

void ReturnScreen::clearAll() {
    clearInvoice();
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
    takeInvoice(returns::loadInvoice(m_db, m_ctx, number));
}

void ReturnScreen::deleteLine() {
    const int row = m_grid->currentRow();
    if (row < 0 || row >= m_draft.lines().size())
        return;
    if (!confirmDeleteLine())
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
        m_grid->setItem(i, 2, cell(payments::formatQuantity(l.cantidad), true));
        m_grid->setItem(i, 3, cell(payments::formatQuantity(l.source.remaining()), true));
        // With its tax, as the client paid it.
        const Decimal unit = l.source.precioLista + l.source.impuesto;
        m_grid->setItem(i, 4, cell(payments::formatAmount(unit), true));
        m_grid->setItem(i, 5, cell(payments::formatAmount((unit * l.cantidad).rounded(2)), true));
    }
    refreshInvoiceLines();
    m_total->setText(QStringLiteral("Total a devolver: ") +
                     payments::formatAmount(m_draft.totals().total()));
}

void ReturnScreen::accept() {
    if (m_busy)
        return;
    sale::BusyGuard busy(m_busy, {m_accept, m_delete, m_all});
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
    const long long invoice = m_draft.invoice().number;
    const bool credit = m_draft.invoice().tipoVenta == kCreditSale;
    clearAll();
    // What the client gets back stays in sight.
    m_lastDocument->setText(QStringLiteral("Devolución Nº %1 de la factura %2 - %3: %4%5")
                                .arg(saved.number)
                                .arg(invoice)
                                .arg(credit ? QStringLiteral("abono a la cuenta por cobrar")
                                            : QStringLiteral("devolver al cliente"),
                                     m_ctx.simboloMoneda, payments::formatAmount(saved.refund())));
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
