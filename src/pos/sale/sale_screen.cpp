#include "pos/sale/sale_screen.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "common/grid_ui/catalog_dialog.h"
#include "common/rate/exchange_rate.h"
#include "pos/card/fiscal_voucher_printer.h"
#include "pos/card/vpos_payment.h"
#include "pos/fiscal/igtf.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/terminal_payments.h"
#include "pos/register/day_state.h"
#include "pos/sale/sale_payments.h"
#include "pos/sale/sale_store.h"
#include "pos/sale/till_widgets.h"
#include "shell/login/login.h"
#include "shell/main_window/main_window.h"
#include "shell/screens/screen_registry.h"
#include "shell/session/settings_readers.h"
#include "shell/startup/app_state.h"
#include "shell/startup/user_settings.h"
#include "shell/users/roles.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace orvo::pos::sale {

namespace {

long long chosenNumber(const QVariantMap& row) {
    return grid::CatalogDialog::valueOf(row, QStringLiteral("Numero")).toLongLong();
}

QString money(const Decimal& d) {
    return payments::formatAmount(d);
}

QLabel* amountLabel(QWidget* parent, const char* name) {
    auto* l = new QLabel(QStringLiteral("0,00"), parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    l->setFrameShape(QFrame::StyledPanel);
    l->setMinimumWidth(l->fontMetrics().horizontalAdvance(QStringLiteral(" 999.999.999,99 ")));
    return l;
}

QPushButton* button(QWidget* parent, const char* name, const QString& text) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
}

bool isEnter(const QKeyEvent* e) {
    return e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter;
}

// The card terminal's reports, by the words the cashier knows them by.
const QString kLastClosing = QStringLiteral("(PRIMERA OPCION) Reimprimir Ultimo Cierre VPOS");
const QString kClosing = QStringLiteral("(SEGUNDA OPCION) Cierre de Caja VPOS");
const QString kPreClosing = QStringLiteral("Imprimir Pre-Cierre VPOS (CORTE DE PUNTO)");
const QString kLastVoucher = QStringLiteral("Imprimir Ultimo Voucher (VPOS)");

} // namespace

bool printPaperInvoice(const QString& html, bool large, long long number) {
    const QString setting = shell::settings::invoicePrinter();
    if (setting.isEmpty())
        return false;
    const int copies = shell::settings::invoiceCopies();
    if (setting.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        return printToPdfSetting(setting, html, large, number, copies);
    QPrinter printer;
    printer.setPrinterName(setting);
    if (!printer.isValid())
        return false;
    QTextDocument doc;
    doc.setHtml(html);
    // Where the driver cannot make the copies, each one is a print of its own.
    if (printer.supportsMultipleCopies()) {
        printer.setCopyCount(copies);
        doc.print(&printer);
    } else {
        for (int i = 0; i < copies; ++i)
            doc.print(&printer);
    }
    return true;
}

SaleScreen::SaleScreen(QSqlDatabase db, shell::SessionContext& ctx,
                       fiscal::FiscalPrinterThread* printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(ctx), m_printerThread(printer) {
    setObjectName(QStringLiteral("frmFacturacion"));
    m_draft = newDraft(m_db, m_ctx);
    buildUi();
    clearForNextSale();
    if (common::rate::rateReminderDue(m_db, QDate::currentDate()))
        dialogs().warning(this, common::rate::kRateReminder); // the sale uses the day's rate
}

SaleScreen::~SaleScreen() = default;

void SaleScreen::buildUi() {
    auto* root = new QVBoxLayout(this);
    m_day = new DayStateBanner(m_db, m_ctx, this);
    root->addWidget(m_day);

    auto* head = new QGridLayout;
    head->addWidget(new QLabel(QStringLiteral("Cliente:"), this), 0, 0);
    m_client = new QLineEdit(this);
    m_client->setObjectName(QStringLiteral("txtCliente"));
    head->addWidget(m_client, 0, 1);
    auto* clientButton = button(this, "cmdCatalogoCliente", QStringLiteral("..."));
    head->addWidget(clientButton, 0, 2);
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblCliente"));
    head->addWidget(m_clientName, 0, 3, 1, 3);
    head->addWidget(new QLabel(QStringLiteral("Vendedor:"), this), 1, 0);
    m_seller = new QLineEdit(this);
    m_seller->setObjectName(QStringLiteral("txtVendedor"));
    head->addWidget(m_seller, 1, 1);
    auto* sellerButton = button(this, "cmdCatalogoVendedor", QStringLiteral("..."));
    head->addWidget(sellerButton, 1, 2);
    m_sellerName = new QLabel(this);
    m_sellerName->setObjectName(QStringLiteral("lblVendedor"));
    head->addWidget(m_sellerName, 1, 3, 1, 3);
    head->addWidget(new QLabel(QStringLiteral("Artículo:"), this), 2, 0);
    m_barcode = new QLineEdit(this);
    m_barcode->setObjectName(QStringLiteral("txtCodigoBarra"));
    m_barcode->setPlaceholderText(QStringLiteral("código, o cantidad*código"));
    m_barcode->installEventFilter(this);
    head->addWidget(m_barcode, 2, 1, 1, 3);
    head->addWidget(new QLabel(QStringLiteral("Cantidad:"), this), 2, 4);
    m_quantityField = new QLineEdit(QStringLiteral("1"), this);
    m_quantityField->setObjectName(QStringLiteral("txtCantidad"));
    m_quantityField->setAlignment(Qt::AlignRight);
    m_quantityField->setMaximumWidth(90);
    head->addWidget(m_quantityField, 2, 5);
    head->setColumnStretch(3, 1);
    root->addLayout(head);

    m_grid = new SaleGrid(0, kColumnCount, this);
    m_grid->setObjectName(QStringLiteral("SpreadFacturacion"));
    m_grid->setHorizontalHeaderLabels(
        {QStringLiteral("L"), QStringLiteral("Código"), QStringLiteral("Descripción"),
         QStringLiteral("Cantidad"), QStringLiteral("Precio"), QStringLiteral("% Desc."),
         QStringLiteral("Precio Lista"), QStringLiteral("Impuesto"), QStringLiteral("Total")});
    // Only the quantity is edited in the grid: the line's current cell stays on it, so that a
    // digit typed on a line starts its new quantity.
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::AnyKeyPressed);
    connect(m_grid, &QTableWidget::currentCellChanged, this, [this](int row, int column) {
        if (row >= 0 && column != kQuantity)
            m_grid->setCurrentCell(row, kQuantity, QItemSelectionModel::NoUpdate);
    });
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    // The description is what the cashier reads: it takes the room, the figures what they need.
    QHeaderView* header = m_grid->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(kName, QHeaderView::Stretch);
    header->setMinimumSectionSize(40);
    m_grid->setWordWrap(false);
    m_grid->setTextElideMode(Qt::ElideMiddle);
    m_grid->installEventFilter(this);
    connect(m_grid, &QTableWidget::itemChanged, this, &SaleScreen::quantityEdited);
    root->addWidget(m_grid, 1);

    auto* options = new QHBoxLayout;
    m_exempt = new QCheckBox(QStringLiteral("Factura exenta de impuesto"), this);
    m_exempt->setObjectName(QStringLiteral("chkFacturaExentaDeImpuesto"));
    m_exempt->setEnabled(m_ctx.permiteFacturasExentas == 1);
    m_contingency = new QCheckBox(QStringLiteral("Factura de contingencia"), this);
    m_contingency->setObjectName(QStringLiteral("chkFacturaContingencia"));
    m_contingency->setVisible(registers::contingencyAllowed(m_db, m_ctx.serial));
    auto* mode = new QGroupBox(QStringLiteral("Modo de pago"), this);
    mode->setObjectName(QStringLiteral("OptModoPago"));
    auto* modeLayout = new QHBoxLayout(mode);
    m_cash = new QRadioButton(QStringLiteral("Contado"), mode);
    m_cash->setObjectName(QStringLiteral("optContado"));
    m_credit = new QRadioButton(QStringLiteral("Crédito"), mode);
    m_credit->setObjectName(QStringLiteral("optCredito"));
    m_creditDays = new QLineEdit(mode);
    m_creditDays->setObjectName(QStringLiteral("txtDiasCredito"));
    m_creditDays->setPlaceholderText(QStringLiteral("Días"));
    m_creditDays->setMaximumWidth(60);
    modeLayout->addWidget(m_cash);
    modeLayout->addWidget(m_credit);
    modeLayout->addWidget(m_creditDays);
    m_discount = new QLineEdit(this);
    m_discount->setObjectName(QStringLiteral("txtPorcentajeDescuento"));
    m_discount->setMaximumWidth(70);
    auto* discountButton = button(this, "cmdDescuento", QStringLiteral("% Descuento"));
    discountButton->setEnabled(m_ctx.permiteDescuento == 1);
    m_discount->setEnabled(m_ctx.permiteDescuento == 1);
    options->addWidget(m_exempt);
    options->addWidget(m_contingency);
    options->addWidget(mode);
    options->addWidget(m_discount);
    options->addWidget(discountButton);
    options->addStretch();
    root->addLayout(options);

    auto* totals = new QGridLayout;
    m_merchandise = amountLabel(this, "lblTotalMercancia");
    m_discountTotal = amountLabel(this, "lblTotalDescuento");
    m_taxBase = amountLabel(this, "lblBaseImponible");
    m_tax = amountLabel(this, "lblTotalImpuesto");
    m_total = bigAmountLabel(this, "lblTotalFactura");
    m_paid = new QLineEdit(this);
    m_paid->setObjectName(QStringLiteral("txtTotalPago"));
    m_paid->setReadOnly(true);
    m_paid->setAlignment(Qt::AlignRight);
    m_change = new QLineEdit(this);
    m_change->setObjectName(QStringLiteral("txtTotalCambio"));
    m_change->setReadOnly(true);
    m_change->setAlignment(Qt::AlignRight);
    m_igtf = new QLineEdit(this);
    m_igtf->setObjectName(QStringLiteral("txtMontoIGTF"));
    m_igtf->setReadOnly(true);
    m_igtf->setAlignment(Qt::AlignRight);
    m_igtf->setFocusPolicy(Qt::NoFocus);
    const fiscal::igtf::Settings igtf = fiscal::igtf::settings(m_db, m_ctx.serial);
    QList<std::pair<QString, QWidget*>> cells = {{QStringLiteral("Mercancía"), m_merchandise},
                                                 {QStringLiteral("Descuento"), m_discountTotal},
                                                 {QStringLiteral("Base imponible"), m_taxBase},
                                                 {QStringLiteral("Impuesto"), m_tax},
                                                 {QStringLiteral("Total"), m_total}};
    // The IGTF the dollars pay on top of the total, on registers that charge it.
    if (igtf.enabled)
        cells.append({QStringLiteral("IGTF %1%").arg(money(igtf.percent)), m_igtf});
    else
        m_igtf->hide();
    cells.append({QStringLiteral("Pagado"), m_paid});
    cells.append({QStringLiteral("Cambio"), m_change});
    for (int i = 0; i < cells.size(); ++i) {
        totals->addWidget(new QLabel(cells[i].first, this), 0, i);
        totals->addWidget(cells[i].second, 1, i);
    }
    root->addLayout(totals);

    // What the last sale asked and gave back stays in sight until the next one starts.
    m_lastSale = bigLabel(this, "lblUltimaVenta");
    root->addWidget(m_lastSale);

    auto* actions = new QHBoxLayout;
    auto* lists = button(this, "cmdListaPrecios", QStringLiteral("Lista de precios"));
    auto* priceButton = button(this, "cmdCambiarPrecio", QStringLiteral("Cambiar precio"));
    auto* pay = button(this, "cmdPagos", QStringLiteral("F5 Pagos"));
    auto* parkButton = button(this, "cmdCongelar", QStringLiteral("F6 Congelar"));
    auto* backButton = button(this, "cmdDescongelar", QStringLiteral("F7 Descongelar"));
    auto* orderButton = button(this, "cmdOrdenDespacho", QStringLiteral("F8 Orden de despacho"));
    orderButton->setEnabled(m_ctx.permiteFacturarOrdenDespacho == 1);
    auto* terminalButton = button(this, "cmdVPOS", QStringLiteral("F9 Punto VPOS"));
    auto* acceptButton = button(this, "cmdAceptar", QStringLiteral("F10 Aceptar"));
    auto* cancelButton = button(this, "cmdCancelar", QStringLiteral("F12 Cancelar"));
    m_actions = {lists,        priceButton,    pay,          parkButton,   backButton,
                 orderButton,  terminalButton, acceptButton, cancelButton, discountButton,
                 clientButton, sellerButton};
    for (QPushButton* b : {lists, priceButton, pay, parkButton, backButton, orderButton,
                           terminalButton, acceptButton, cancelButton})
        actions->addWidget(b);
    root->addLayout(actions);
    buildTerminalActions();

    connect(m_barcode, &QLineEdit::returnPressed, this, &SaleScreen::enterArticle);
    connect(m_quantityField, &QLineEdit::returnPressed, this, [this] {
        m_barcode->setFocus();
        m_barcode->selectAll();
    });
    connect(m_client, &QLineEdit::returnPressed, this, &SaleScreen::enterClient);
    connect(m_seller, &QLineEdit::returnPressed, this, &SaleScreen::enterSeller);
    connect(m_discount, &QLineEdit::returnPressed, this, &SaleScreen::applyDiscount);
    connect(clientButton, &QPushButton::clicked, this, &SaleScreen::chooseClient);
    connect(sellerButton, &QPushButton::clicked, this, &SaleScreen::chooseSeller);
    connect(discountButton, &QPushButton::clicked, this, &SaleScreen::applyDiscount);
    connect(lists, &QPushButton::clicked, this, &SaleScreen::switchList);
    connect(priceButton, &QPushButton::clicked, this, &SaleScreen::changePrice);
    connect(pay, &QPushButton::clicked, this, &SaleScreen::openPayments);
    connect(parkButton, &QPushButton::clicked, this, &SaleScreen::park);
    connect(backButton, &QPushButton::clicked, this, &SaleScreen::takeBack);
    connect(orderButton, &QPushButton::clicked, this, &SaleScreen::invoiceDispatchOrder);
    connect(terminalButton, &QPushButton::clicked, this, &SaleScreen::terminalMenu);
    connect(acceptButton, &QPushButton::clicked, this, &SaleScreen::accept);
    connect(cancelButton, &QPushButton::clicked, this, &SaleScreen::cancelSale);
    connect(m_exempt, &QCheckBox::toggled, this, [this](bool on) {
        m_draft.setExempt(on);
        paymentsNoLongerStand();
        refresh();
    });
    connect(m_contingency, &QCheckBox::toggled, this,
            [this](bool on) { m_draft.setContingency(on); });
    connect(m_credit, &QRadioButton::toggled, this, [this](bool on) {
        // A credit sale takes no payments: those charged at the terminal are voided first.
        if (on && !releaseTerminalPayments()) {
            m_cash->setChecked(true);
            return;
        }
        m_draft.setMode(on ? PaymentMode::Credit : PaymentMode::Cash);
        paymentsNoLongerStand();
        refresh();
    });
    connect(m_creditDays, &QLineEdit::textChanged, this,
            [this](const QString& t) { m_draft.setCreditDays(t.toInt()); });
}

void SaleScreen::buildTerminalActions() {
    m_terminalMenu = new QMenu(this);
    m_terminalMenu->setObjectName(QStringLiteral("mnuVPOS"));
    const QList<std::pair<const char*, QString>> entries = {{"mnuUltimoCierreVPOS", kLastClosing},
                                                            {"mnuCierreVPOS", kClosing},
                                                            {"mnuPreCierreVPOS", kPreClosing},
                                                            {"mnuUltimoVoucherVPOS", kLastVoucher}};
    for (const auto& [name, text] : entries) {
        QAction* a = m_terminalMenu->addAction(text);
        a->setObjectName(QString::fromLatin1(name));
        connect(a, &QAction::triggered, this, [this, what = text] { runTerminalReport(what); });
    }
}

void SaleScreen::keyPressEvent(QKeyEvent* event) {
    // Keys wait while a sale is being saved and printed.
    if (m_busy)
        return;
    switch (event->key()) {
    case Qt::Key_F2:
        priceQuery();
        return;
    case Qt::Key_F5:
        openPayments();
        return;
    case Qt::Key_F6:
        park();
        return;
    case Qt::Key_F7:
        takeBack();
        return;
    case Qt::Key_F8:
        invoiceDispatchOrder();
        return;
    case Qt::Key_F9:
        terminalMenu();
        return;
    case Qt::Key_F10:
        accept();
        return;
    case Qt::Key_F12:
        cancelSale();
        return;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

bool SaleScreen::eventFilter(QObject* watched, QEvent* event) {
    // Keys of the grid itself, not of its quantity editor passing them on. A digit typed on a
    // line starts its new quantity (the grid's own edit on a key).
    if (watched == m_grid && event->type() == QEvent::KeyPress && !m_grid->isEditing()) {
        auto* key = static_cast<QKeyEvent*>(event);
        const int row = m_grid->currentRow();
        // Delete removes the selected line; Enter changes its quantity; Escape goes back to the
        // article field.
        if (key->key() == Qt::Key_Delete) {
            deleteSelectedLine();
            return true;
        }
        if (isEnter(key) && row >= 0) {
            if (QTableWidgetItem* item = m_grid->item(row, kQuantity))
                m_grid->editItem(item);
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            m_barcode->setFocus();
            return true;
        }
    }
    if (watched == m_barcode && event->type() == QEvent::KeyPress && m_grid->rowCount() > 0) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            m_grid->setFocus();
            m_grid->selectRow(m_grid->currentRow() < 0 ? m_grid->rowCount() - 1
                                                       : m_grid->currentRow());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void SaleScreen::closeEvent(QCloseEvent* event) {
    // A card charged at the terminal is not left behind with the screen.
    if (!m_busy && releaseTerminalPayments()) {
        event->accept();
        return;
    }
    event->ignore();
}

void SaleScreen::refresh() {
    m_refreshing = true;
    const auto& lines = m_draft.lines();
    m_grid->setRowCount(int(lines.size()));
    for (int r = 0; r < lines.size(); ++r) {
        const SaleLine& l = lines.at(r);
        const QStringList cells = {QString(QLatin1Char(l.tipoLista)),
                                   l.codigoBarra,
                                   l.nombre,
                                   payments::formatQuantity(l.cantidad),
                                   money(l.precio),
                                   money(l.porcentajeDescuento),
                                   money(l.precioLista),
                                   money(l.impuesto),
                                   money(((l.precioLista + l.impuesto) * l.cantidad).rounded(2))};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (c >= kQuantity)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (c != kQuantity || m_draft.isLocked())
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            if (c == kName)
                item->setToolTip(l.nombre);
            m_grid->setItem(r, c, item);
        }
    }
    const SaleTotals t = m_draft.totals();
    m_merchandise->setText(money(t.merchandise));
    m_discountTotal->setText(money(t.discount));
    m_taxBase->setText(money(t.taxBase));
    m_tax->setText(money(t.tax));
    m_total->setText(money(t.total));
    m_igtf->setText(money(m_draft.igtf().tax));
    m_paid->setText(money(m_draft.amountPaid()));
    m_change->setText(money(m_draft.change()));
    m_barcode->setEnabled(!m_draft.isLocked());
    m_quantityField->setEnabled(!m_draft.isLocked());
    m_refreshing = false;
}

void SaleScreen::clearForNextSale() {
    m_draft = newDraft(m_db, m_ctx);
    m_client->clear();
    m_clientName->clear();
    m_seller->clear();
    m_sellerName->clear();
    m_discount->clear();
    m_creditDays->clear();
    m_quantityField->setText(QStringLiteral("1"));
    m_exempt->setChecked(false);
    m_contingency->setChecked(false);
    m_cash->setChecked(true);
    const QString title =
        QStringLiteral("Facturación - (Factura Nº %1)      F2 - Consultar precios")
            .arg(nextInvoiceNumberPreview(m_db, m_ctx));
    setWindowTitle(title);
    refresh();
    m_client->setFocus();
}

void SaleScreen::showLastSale(const AcceptResult& r) {
    QString text = QStringLiteral("Factura Nº %1   Total: %2").arg(r.number).arg(money(r.total));
    if (r.igtf > Decimal())
        text += QStringLiteral("   IGTF: %1").arg(money(r.igtf));
    m_lastSale->setText(
        text + QStringLiteral("   Pagado: %1   Cambio: %2").arg(money(r.paid), money(r.change)));
    // The fields keep what was paid and the change until the next sale is keyed.
    m_igtf->setText(money(r.igtf));
    m_paid->setText(money(r.paid));
    m_change->setText(money(r.change));
}

void SaleScreen::showClient() {
    const SaleClient& c = m_draft.client();
    m_client->setText(c.codigo);
    m_clientName->setText(c.isSet()
                              ? c.nombre + QStringLiteral("   CLIENTE TIPO : ") + c.tipoDescripcion
                              : QString());
    m_seller->setText(m_draft.seller().codigo);
    m_sellerName->setText(m_draft.seller().nombre);
    m_exempt->blockSignals(true);
    m_exempt->setChecked(m_draft.isExempt());
    m_exempt->blockSignals(false);
}

void SaleScreen::paymentsNoLongerStand() {
    m_draft.clearPayments();
}

void SaleScreen::enterClient() {
    m_day->check(); // a sale starts: the line on top says how the day stands now
    guarded(this, [&] {
        const QString code = m_client->text().trimmed();
        if (code.isEmpty())
            return;
        auto client = findClient(m_db, code);
        if (!client) {
            if (dialogs().question(this,
                                   QStringLiteral("El cliente no esta registrado. ¿Desea "
                                                  "Registrarlo?"),
                                   QStringLiteral("Registro de Cliente"))) {
                if (auto* main = qobject_cast<shell::MainWindow*>(window()))
                    main->openForm(QStringLiteral("frmClientes"));
            }
            return;
        }
        try {
            m_draft.setClient(*client);
        } catch (const UserError&) {
            showClient(); // the refused client is not taken: the field shows the sale's own
            throw;
        }
        m_lastSale->clear();
        showClient();
        m_seller->setFocus();
        m_seller->selectAll();
    });
}

void SaleScreen::focusSellerOrBarcode() {
    if (m_draft.seller().codigo.isEmpty()) {
        m_seller->setFocus();
        m_seller->selectAll();
    } else {
        m_barcode->setFocus();
    }
}

void SaleScreen::chooseClient() {
    guarded(this, [&] {
        const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Clientes"), m_db,
                                                     store::clientCatalogSql());
        if (!row)
            return;
        m_client->setText(grid::CatalogDialog::valueOf(*row, QStringLiteral("Codigo")).toString());
        enterClient();
    });
}

void SaleScreen::enterSeller() {
    guarded(this, [&] {
        const QString code = m_seller->text().trimmed();
        if (code.isEmpty())
            return;
        m_draft.setSeller(findSeller(m_db, code));
        m_sellerName->setText(m_draft.seller().nombre);
        m_barcode->setFocus();
    });
}

void SaleScreen::chooseSeller() {
    guarded(this, [&] {
        const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Vendedores"), m_db,
                                                     store::sellerCatalogSql());
        if (!row)
            return;
        m_seller->setText(grid::CatalogDialog::valueOf(*row, QStringLiteral("Codigo")).toString());
        enterSeller();
    });
}

void SaleScreen::enterArticle() {
    if (m_busy)
        return;
    guarded(this, [&] {
        const auto quantityTyped = payments::parseTypedAmount(m_quantityField->text());
        if (!quantityTyped)
            throw UserError(QStringLiteral("La cantidad debe ser un número...!"));
        const auto [quantity, text] = splitQuantity(m_barcode->text(), *quantityTyped);
        if (text.isEmpty())
            return;
        QList<ArticlePrices> found = lookupArticles(m_db, text);
        if (found.isEmpty()) {
            dialogs().information(this, QStringLiteral("El artículo no existe o no tiene "
                                                       "existencia...!"));
            m_barcode->selectAll();
            return;
        }
        ArticlePrices chosen = found.first();
        if (found.size() > 1) {
            const auto row =
                grid::CatalogDialog::choose(this, QStringLiteral("Artículos"), m_db,
                                            store::articleCatalogSql(), {text + QLatin1Char('%')});
            if (!row)
                return;
            const QString code =
                grid::CatalogDialog::valueOf(*row, QStringLiteral("CodigoBarra")).toString();
            for (const ArticlePrices& a : found)
                if (a.codigoBarra == code.trimmed())
                    chosen = a;
        }
        try {
            addArticle(m_draft, chosen, quantity);
        } catch (const UserError&) {
            m_barcode->selectAll();
            throw;
        }
        m_lastSale->clear();
        paymentsNoLongerStand();
        refresh();
        m_grid->selectRow(m_grid->rowCount() - 1);
        m_barcode->clear();
        m_quantityField->setText(QStringLiteral("1"));
    });
    m_barcode->setFocus();
}

void SaleScreen::quantityEdited(QTableWidgetItem* item) {
    if (m_refreshing || !item || item->column() != kQuantity)
        return;
    const int row = item->row();
    guarded(this, [&] {
        const auto quantity = payments::parseTypedAmount(item->text());
        if (!quantity)
            throw UserError(QStringLiteral("La cantidad debe ser un número...!"));
        if (*quantity == m_draft.lines().at(row).cantidad)
            return;
        m_draft.setQuantity(row, *quantity);
        paymentsNoLongerStand();
    });
    // The grid shows what the sale holds, the refused quantity gone.
    QMetaObject::invokeMethod(
        this,
        [this, row] {
            refresh();
            m_grid->selectRow(row);
            m_barcode->setFocus();
        },
        Qt::QueuedConnection);
}

void SaleScreen::priceQuery() {
    guarded(this, [&] {
        const auto text =
            dialogs().textInput(this, QStringLiteral("Consultar precios"),
                                QStringLiteral("Código de barra o referencia:"), m_barcode->text());
        if (!text || text->trimmed().isEmpty())
            return;
        const auto quotes = sale::priceQuery(m_db, m_draft, *text);
        if (quotes.isEmpty()) {
            dialogs().information(this, QStringLiteral("El artículo no existe o no tiene "
                                                       "existencia...!"));
            return;
        }
        QStringList out;
        for (const PriceQuote& q : quotes.mid(0, 10)) {
            const ArticlePrices& a = q.article;
            out << QStringLiteral("%1  %2\nDetal: %3  Mayor: %4  Afiliado: %5%6  Existencia: %7\n"
                                  "Precio de venta: %8 + impuesto %9")
                       .arg(a.codigoBarra, a.nombre, money(a.precioDetal.rounded(2)),
                            money(a.precioMayor.rounded(2)), money(a.precioAfiliado.rounded(2)),
                            promotionActive(a, m_draft.settings().today)
                                ? QStringLiteral("  Promoción: ") +
                                      money(a.precioPromocion.rounded(2))
                                : QString(),
                            payments::formatQuantity(a.existencia), money(q.line.precioLista),
                            money(q.line.impuesto));
        }
        dialogs().information(this, out.join(QStringLiteral("\n\n")),
                              QStringLiteral("Consultar precios"));
    });
}

bool SaleScreen::authorise(QString& who) {
    const bool ask = shell::authoriseDeletingInvoiceLine(m_db) ||
                     shell::registerRequiresAuthorisation(m_db, m_ctx.serial);
    if (!ask) {
        who = m_ctx.userCode;
        return true;
    }
    const auto credentials =
        dialogs().authorisation(this, QStringLiteral("Autorización del supervisor"));
    if (!credentials)
        return false;
    const shell::LoggedUser user =
        shell::checkLogin(m_db, credentials->user, credentials->password);
    if (!shell::users::isAdministrator(m_db, user.code))
        throw UserError(QStringLiteral("Ud no esta autorizado para eliminar items de facturacion"));
    who = user.code;
    return true;
}

bool SaleScreen::releaseTerminalPayments() {
    const auto held = m_draft.terminalPayments();
    if (held.isEmpty())
        return true;
    bool released = false;
    guarded(this, [&] {
        const QString text =
            QStringLiteral("La venta tiene pagos aprobados en el punto de venta VPOS por %1. "
                           "¿Desea anularlos en el terminal?")
                .arg(money(payments::totalPaid(held, m_draft.exchangeRate())));
        if (!dialogs().question(this, text, QStringLiteral("Punto de venta VPOS")))
            return;
        released = voidTerminalPayments(this, m_db, m_ctx, printerThread(), m_draft);
    });
    refresh();
    return released;
}

void SaleScreen::deleteSelectedLine() {
    guarded(this, [&] {
        const int row = m_grid->currentRow();
        if (row < 0 || row >= m_draft.lines().size())
            return;
        if (!dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                                QStringLiteral("Eliminar item")))
            return;
        QString who;
        if (!authorise(who))
            return;
        sale::deleteLine(m_db, m_ctx, m_draft, row, who);
        paymentsNoLongerStand();
        refresh();
    });
}

void SaleScreen::cancelSale() {
    if (m_busy)
        return;
    guarded(this, [&] {
        if (m_draft.isEmpty() && m_draft.terminalPayments().isEmpty()) {
            clearForNextSale();
            return;
        }
        if (!dialogs().question(this, QStringLiteral("Desea cancelar la factura?")))
            return;
        QString who;
        if (!authorise(who))
            return;
        if (!releaseTerminalPayments())
            return;
        sale::cancelSale(m_db, m_ctx, m_draft, who);
        clearForNextSale();
    });
}

void SaleScreen::switchList() {
    guarded(this, [&] {
        const bool allowed = m_ctx.permiteAlternarListas == 1 && !m_draft.isLocked();
        m_draft.switchList(m_grid->currentRow(), allowed);
        paymentsNoLongerStand();
        refresh();
    });
}

void SaleScreen::changePrice() {
    guarded(this, [&] {
        const int row = m_grid->currentRow();
        if (!shell::registerMayChangePrices(m_db, m_ctx.serial))
            throw UserError(
                QStringLiteral("Caja ó Usuario no autorizado para cambiar precios...!"));
        if (row < 0 || row >= m_draft.lines().size())
            throw UserError(
                QStringLiteral("Seleccione la fila con datos para cambiar el precio...!"));
        const auto typed = dialogs().textInput(this, QStringLiteral("Cambiar precio"),
                                               QStringLiteral("Nuevo precio:"),
                                               money(m_draft.lines().at(row).precio));
        if (!typed)
            return;
        const auto price = payments::parseTypedAmount(*typed);
        if (!price)
            throw UserError(QStringLiteral("No se puede vender el artículo con precio cero...!"));
        std::optional<Supervisor> supervisor;
        if (priceChangeNeedsAuthorisation(m_db, m_ctx)) {
            const auto credentials =
                dialogs().authorisation(this, QStringLiteral("Autorización del supervisor"));
            if (!credentials)
                return;
            supervisor = Supervisor{credentials->user, credentials->password};
        }
        sale::changeLinePrice(m_db, m_ctx, m_draft, row, *price, supervisor);
        paymentsNoLongerStand();
        refresh();
    });
}

void SaleScreen::applyDiscount() {
    guarded(this, [&] {
        if (m_draft.isEmpty())
            throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
        const auto percent = payments::parseTypedAmount(m_discount->text());
        if (!percent || *percent < Decimal() || *percent > Decimal(100))
            return;
        if (!dialogs().question(this, QStringLiteral("No podra ingresar mas items si aplica el "
                                                     "descuento en este momento, Finalizo el "
                                                     "registro de los artículos...?")))
            return;
        m_draft.applyGlobalDiscount(*percent);
        paymentsNoLongerStand();
        refresh();
    });
}

fiscal::FiscalPrinterThread& SaleScreen::printerThread() {
    return m_printerThread ? *m_printerThread : fiscal::registerPrinter();
}

void SaleScreen::openPayments() {
    if (m_busy)
        return;
    guarded(this, [&] {
        if (m_draft.isEmpty())
            throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
        if (m_draft.mode() == PaymentMode::Credit)
            return;
        // No card is charged on a day that cannot take the sale.
        if (!m_day->check())
            throw UserError(m_day->text());
        takePayments(this, m_db, m_ctx, printerThread(), m_draft);
    });
    refresh();
}

void SaleScreen::terminalMenu() {
    if (m_busy)
        return;
    auto* b = findChild<QPushButton*>(QStringLiteral("cmdVPOS"));
    m_terminalMenu->popup(b->mapToGlobal(QPoint(0, b->height())));
}

void SaleScreen::runTerminalReport(const QString& what) {
    guarded(this, [&] {
        if (what == kClosing) {
            // A payment of the sale under way would end in a closed lot that can no longer be
            // voided.
            if (!m_draft.terminalPayments().isEmpty())
                throw UserError(QStringLiteral("La venta en curso tiene pagos aprobados en el "
                                               "punto de venta VPOS: termine la venta antes del "
                                               "cierre...!"));
            if (!dialogs().question(this,
                                    QStringLiteral("¿Desea realizar el cierre del punto de venta "
                                                   "VPOS? El lote se cierra y no podrá anular "
                                                   "sus pagos."),
                                    QStringLiteral("Cierre de Caja VPOS")))
                return;
        }
        const auto vouchers = card::makeVoucherPrinter(m_db, printerThread());
        const auto terminal = payments::terminalOf(m_db, m_ctx.serial, vouchers.get());
        bool ok = false;
        if (what == kLastClosing)
            ok = terminal->reprintLastClosing();
        else if (what == kClosing)
            ok = terminal->closingReport();
        else if (what == kPreClosing)
            ok = terminal->preClosingReport();
        else
            ok = terminal->reprintLastVoucher();
        if (!ok) {
            dialogs().information(this, what == kLastVoucher
                                            ? QStringLiteral("Error al momento de Imprimir el "
                                                             "Ultimo Voucher")
                                            : QStringLiteral("El punto de venta VPOS no pudo "
                                                             "realizar la operación: %1")
                                                  .arg(terminal->responseMessage()));
            return;
        }
        if (!terminal->printError().isEmpty())
            dialogs().warning(this, terminal->printError());
        if (what == kClosing || what == kPreClosing) {
            const QString amount = terminal->value(QStringLiteral("monto"));
            dialogs().information(
                this,
                QStringLiteral("%1 del lote %2: %3 transacciones aprobadas por %4%5")
                    .arg(what == kClosing ? QStringLiteral("Cierre") : QStringLiteral("Pre-cierre"),
                         terminal->lot(), terminal->value(QStringLiteral("cantidadTransacciones")),
                         m_ctx.simboloMoneda, money(Decimal::parse(amount).value_or(Decimal()))));
        }
    });
}

SalePrinter* SaleScreen::printer() {
    if (!printsFiscally(m_ctx))
        return nullptr;
    if (!m_printer)
        m_printer = std::make_unique<ThreadSalePrinter>(printerThread());
    return m_printer.get();
}

bool SaleScreen::printInvoice(long long number, bool contingency, const Decimal& change) {
    const PrintResult r =
        printSale(m_db, m_ctx, number, contingency, printer(), printPaperInvoice, change);
    if (!r.ok())
        dialogs().warning(this, r.error);
    return r.ok();
}

void SaleScreen::accept() {
    if (m_busy)
        return;
    BusyGuard busy(m_busy, m_actions);
    std::optional<AcceptResult> saved;
    guarded(this, [&] {
        // An invoice saved earlier whose print failed goes out first.
        const PrintResult pending = printPendingSales(m_db, m_ctx, printer(), printPaperInvoice);
        if (!pending.ok()) {
            dialogs().warning(this, pending.error);
            return;
        }
        if (m_draft.mode() == PaymentMode::Cash && !m_draft.paymentsAccepted() &&
            m_draft.client().isSet() && !m_draft.isEmpty()) {
            // Nothing is asked of the client on a day that cannot take the sale.
            if (!m_day->check())
                throw UserError(m_day->text());
            if (!takePayments(this, m_db, m_ctx, printerThread(), m_draft))
                return;
        }
        AcceptResult r = acceptSale(m_db, m_ctx, m_draft, printer());
        if (r.status == AcceptResult::Status::NeedsForcedZ) {
            dialogs().information(
                this, QStringLiteral("El monto facturado mas el monto acumulado por ventas supera "
                                     "el total soportado por la impresora, se procedera a "
                                     "imprimir un Z y luego la factura. Esto durara unos 10 "
                                     "Segundos."));
            if (!forcedZ(*printer()))
                throw UserError(printer()->errorText());
            dialogs().information(this, QStringLiteral("Presione ENTER para imprimir la "
                                                       "factura...!"));
            r = acceptSale(m_db, m_ctx, m_draft, printer(), true);
        }
        saved = r;
        printInvoice(r.number, m_draft.isContingency(), r.change);
    });
    if (!saved) {
        refresh();
        return;
    }
    clearForNextSale();
    showLastSale(*saved);
}

void SaleScreen::park() {
    if (m_busy)
        return;
    guarded(this, [&] {
        if (m_draft.isEmpty())
            throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
        // Parked sales keep no payments.
        if (!releaseTerminalPayments())
            return;
        parkSale(m_db, m_ctx, m_draft);
        clearForNextSale();
    });
}

void SaleScreen::takeBack() {
    if (m_busy)
        return;
    guarded(this, [&] {
        const auto row =
            grid::CatalogDialog::choose(this, QStringLiteral("Facturas congeladas"), m_db,
                                        store::parkedCatalogSql(), {m_ctx.serial});
        if (!row)
            return;
        // The sale on the screen is parked in its place.
        if (!releaseTerminalPayments())
            return;
        if (!m_draft.isEmpty()) {
            parkSale(m_db, m_ctx, m_draft);
            clearForNextSale();
        }
        takeBackParked(m_db, m_ctx, chosenNumber(*row), m_draft);
        m_lastSale->clear();
        showClient();
        refresh();
        focusSellerOrBarcode();
    });
}

void SaleScreen::invoiceDispatchOrder() {
    if (m_busy)
        return;
    guarded(this, [&] {
        if (m_ctx.permiteFacturarOrdenDespacho != 1)
            return;
        const auto row = grid::CatalogDialog::choose(
            this, QStringLiteral("Ordenes de despacho"), m_db, store::dispatchCatalogSql(),
            {db::dayStart(dispatchOrdersSince(m_db, m_ctx))});
        if (!row)
            return;
        // The order takes the place of the sale on the screen, which is parked.
        if (!releaseTerminalPayments())
            return;
        if (!m_draft.isEmpty()) {
            parkSale(m_db, m_ctx, m_draft);
            clearForNextSale();
        }
        loadDispatchOrder(m_db, m_ctx, chosenNumber(*row), m_draft);
        m_lastSale->clear();
        showClient();
        refresh();
        // The order brings client and lines: what is left to key is who sold it.
        focusSellerOrBarcode();
    });
}

void registerSaleScreens() {
    shell::ScreenRegistry::instance().add(QStringLiteral("frmFacturacion"), [](QWidget* parent) {
        if (shell::settings::invoicePrinter().isEmpty())
            throw UserError(QStringLiteral("Debe configurar la impresora para facturar...!"));
        return new SaleScreen(shell::mainDb(), shell::session(), nullptr, parent);
    });
}

} // namespace orvo::pos::sale
