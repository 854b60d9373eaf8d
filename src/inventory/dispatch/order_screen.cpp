#include "inventory/dispatch/order_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/purchases/document_screen.h"
#include "pos/sale/sale.h"
#include "shell/main_window/main_window.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::dispatch {

namespace {

QString money(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

QString statusText(int status) {
    return status == 0   ? QStringLiteral("ABIERTA")
           : status == 1 ? QStringLiteral("APROBADA")
                         : QStringLiteral("FACTURADA");
}

} // namespace

OrderScreen::OrderScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(std::move(ctx)) {
    setObjectName(kOrderScreen);
    setWindowTitle(QStringLiteral("Orden de Despacho"));
    auto* layout = new QVBoxLayout(this);
    m_list = purchases::listTable(this, QStringLiteral("grdConsulta"),
                                  {QStringLiteral("Número"), QStringLiteral("Fecha"),
                                   QStringLiteral("Cliente"), QStringLiteral("Nombre"),
                                   QStringLiteral("Total"), QStringLiteral("Estatus")});
    m_list->setMaximumHeight(180);
    m_list->installEventFilter(this);
    connect(m_list, &QTableWidget::cellDoubleClicked, this,
            [this](int row) { guarded(this, [&] { open(m_orders.value(row).number); }); });
    layout->addWidget(m_list);

    auto* form = new QFormLayout;
    auto* clientRow = new QHBoxLayout;
    m_client = new QLineEdit(this);
    m_client->setObjectName(QStringLiteral("txtCliente"));
    m_client->setMaxLength(15);
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblNombreCliente"));
    clientRow->addWidget(m_client, 1);
    clientRow->addWidget(m_clientName, 3);
    form->addRow(QStringLiteral("Cliente"), clientRow);
    m_exempt = new QCheckBox(QStringLiteral("Orden exenta de impuesto"), this);
    m_exempt->setObjectName(QStringLiteral("chkExenta"));
    m_exempt->setEnabled(m_ctx.permiteFacturasExentas == 1);
    form->addRow(QString(), m_exempt);
    m_note = new QLineEdit(this);
    m_note->setObjectName(QStringLiteral("txtObservacion"));
    m_note->setMaxLength(255);
    form->addRow(QStringLiteral("Observación"), m_note);
    auto* keying = new QHBoxLayout;
    m_code = new QLineEdit(this);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_code->setMaxLength(15);
    m_quantity = new QLineEdit(QStringLiteral("1"), this);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_quantity->setAlignment(Qt::AlignRight);
    m_discount = new QLineEdit(this);
    m_discount->setObjectName(QStringLiteral("txtDescuento"));
    m_discount->setAlignment(Qt::AlignRight);
    keying->addWidget(new QLabel(QStringLiteral("Código:"), this));
    keying->addWidget(m_code, 3);
    keying->addWidget(new QLabel(QStringLiteral("Cantidad:"), this));
    keying->addWidget(m_quantity, 1);
    keying->addWidget(new QLabel(QStringLiteral("Descuento global %:"), this));
    keying->addWidget(m_discount, 1);
    form->addRow(keying);
    m_state = new QLabel(this);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    form->addRow(QStringLiteral("Estatus"), m_state);
    layout->addLayout(form);
    m_grid = purchases::listTable(this, QStringLiteral("SpreadOrden"),
                                  {QStringLiteral("Código"), QStringLiteral("Descripción"),
                                   QStringLiteral("Lista"), QStringLiteral("Cantidad"),
                                   QStringLiteral("Precio"), QStringLiteral("Desc. %"),
                                   QStringLiteral("Impuesto"), QStringLiteral("Total")});
    layout->addWidget(m_grid, 1);
    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("lblTotales"));
    layout->addWidget(m_totals);

    auto* buttons = new QHBoxLayout;
    auto add = [&](const char* name, const QString& text, int key, void (OrderScreen::*slot)()) {
        QPushButton* b = purchases::screenButton(this, QString::fromLatin1(name), text, key);
        connect(b, &QPushButton::clicked, this,
                [this, slot] { guarded(this, [&] { (this->*slot)(); }); });
        buttons->addWidget(b);
    };
    add("cmdNuevo", QStringLiteral("Nueva"), Qt::Key_F2, &OrderScreen::newOrder);
    add("cmdListas", QStringLiteral("Detal/Mayor"), Qt::Key_F5, &OrderScreen::switchList);
    add("cmdGuardar", QStringLiteral("Guardar"), Qt::Key_F10, &OrderScreen::saveOrder);
    add("cmdImprimir", QStringLiteral("Imprimir"), 0, &OrderScreen::printOrder);
    QPushButton* pdf =
        purchases::screenButton(this, QStringLiteral("cmdPDF"), QStringLiteral("PDF"));
    connect(pdf, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            if (m_number > 0)
                purchases::writePdf(this, orderDocument(m_db, m_number));
        });
    });
    buttons->addWidget(pdf);
    buttons->addStretch();
    layout->addLayout(buttons);

    for (QLineEdit* e : {m_client, m_code, m_quantity, m_discount})
        e->installEventFilter(this);
    connect(m_exempt, &QCheckBox::toggled, this, [this](bool on) {
        m_draft.setExempt(on);
        showLines();
    });

    try {
        m_draft = newOrderDraft(m_db, m_ctx);
    } catch (const UserError& e) {
        m_usable = false;
        setEditable(false);
        dialogs().information(this, e.text());
        return;
    }
    guarded(this, [&] { showOrders(); });
    newOrder();
}

void OrderScreen::setEditable(bool editable) {
    editable = editable && m_usable;
    for (QWidget* w :
         std::initializer_list<QWidget*>{m_client, m_note, m_code, m_quantity, m_discount})
        w->setEnabled(editable);
    m_exempt->setEnabled(editable && m_ctx.permiteFacturasExentas == 1);
    if (editable && m_draft.isLocked()) {
        m_code->setEnabled(false);
        m_quantity->setEnabled(false);
        m_discount->setEnabled(false);
    }
}

bool OrderScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && watched == m_client) {
            guarded(this, [&] { findClient(m_client->text()); });
            return true;
        }
        if (enter && watched == m_code) {
            if (!m_code->text().trimmed().isEmpty()) {
                m_quantity->setFocus();
                m_quantity->selectAll();
            }
            return true;
        }
        if (enter && watched == m_quantity) {
            guarded(this, [&] { addLine(m_code->text(), m_quantity->text()); });
            return true;
        }
        if (enter && watched == m_discount) {
            guarded(this, [&] { applyDiscount(m_discount->text()); });
            return true;
        }
        if (enter && watched == m_list) {
            guarded(this, [&] { open(m_orders.value(m_list->currentRow()).number); });
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void OrderScreen::findClient(const QString& code) {
    const QString typed = code.trimmed();
    if (typed.isEmpty())
        return;
    const auto client = pos::sale::findClient(m_db, typed);
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
    setOrderClient(m_ctx, m_draft, *client);
    m_clientName->setText(client->nombre);
    showLines();
    m_code->setFocus();
}

void OrderScreen::addLine(const QString& barcode, const QString& quantity) {
    if (barcode.trimmed().isEmpty())
        return;
    const auto q =
        Decimal::parse(quantity.trimmed().isEmpty() ? QStringLiteral("1") : quantity.trimmed());
    try {
        if (!q)
            throw UserError(QStringLiteral("Debe ingresar un dato valido"));
        addToOrder(m_db, m_draft, m_number, barcode, *q);
    } catch (const UserError&) {
        m_code->setFocus();
        m_code->selectAll();
        throw;
    }
    showLines();
    m_code->clear();
    m_quantity->setText(QStringLiteral("1"));
    m_code->setFocus();
}

void OrderScreen::switchList() {
    switchOrderList(m_ctx, m_draft, m_grid->currentRow());
    const int row = m_grid->currentRow();
    showLines();
    m_grid->selectRow(row);
}

void OrderScreen::applyDiscount(const QString& percent) {
    const auto p = Decimal::parse(percent.trimmed());
    if (!p || *p < Decimal() || *p > Decimal(100))
        throw UserError(QStringLiteral("Debe ingresar un dato valido"));
    if (!dialogs().question(this,
                            QStringLiteral("No podra ingresar mas items si aplica el descuento en "
                                           "este momento, Finalizo el registro de los "
                                           "artículos...?"),
                            QStringLiteral("Información"), false))
        return;
    m_draft.applyGlobalDiscount(*p);
    setEditable(true);
    showLines();
}

void OrderScreen::saveOrder() {
    if (!m_usable || m_status != 0)
        return;
    if (!m_draft.client().isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    if (m_draft.isEmpty())
        throw UserError(QStringLiteral("La orden de despacho debe contener al menos un items...!"));
    const bool approve =
        dialogs().question(this, QStringLiteral("Desea aprobar la orden de despacho...?"),
                           QStringLiteral("Información"), false);
    m_number = dispatch::saveOrder(m_db, m_ctx, m_draft, {m_number, m_note->text(), approve});
    showOrders();
    open(m_number);
}

void OrderScreen::newOrder() {
    if (!m_usable)
        return;
    m_draft.clear();
    m_number = 0;
    m_status = 0;
    m_client->clear();
    m_clientName->clear();
    m_note->clear();
    m_discount->clear();
    m_exempt->setChecked(false);
    m_state->setText(QStringLiteral("ABIERTA"));
    setEditable(true);
    showLines();
    m_client->setFocus();
}

void OrderScreen::open(long long number) {
    if (number <= 0)
        return;
    const LoadedOrder o = loadOrder(m_db, number, m_draft);
    m_number = number;
    m_status = o.summary.status;
    m_client->setText(o.summary.client);
    m_clientName->setText(o.summary.clientName);
    m_note->setText(o.note);
    {
        const QSignalBlocker block(m_exempt);
        m_exempt->setChecked(o.summary.exempt);
    }
    m_state->setText(QStringLiteral("Nº ") + QString::number(number) + QStringLiteral(" - ") +
                     statusText(m_status));
    setEditable(m_status == 0);
    showLines();
}

void OrderScreen::printOrder() {
    if (m_number > 0)
        purchases::printDocument(this, orderDocument(m_db, m_number));
}

void OrderScreen::showLines() {
    const QLocale locale;
    QList<QStringList> rows;
    for (const pos::sale::SaleLine& l : m_draft.lines())
        rows.append({l.codigoBarra, l.nombre, QString(QLatin1Char(l.tipoLista)),
                     l.cantidad.toLocaleString(locale, 3), money(l.precio),
                     l.porcentajeDescuento.toLocaleString(locale, 2), money(l.impuesto),
                     money(((l.precioLista + l.impuesto) * l.cantidad).rounded(2))});
    fillGrid(m_grid, rows, 3);
    const pos::sale::SaleTotals t = m_draft.totals();
    m_totals->setText(QStringLiteral("Mercancía: ") + money(t.merchandise) +
                      QStringLiteral("   Descuento: ") + money(t.discount) +
                      QStringLiteral("   Impuesto: ") + money(t.tax) +
                      QStringLiteral("   Total: ") + money(t.total));
}

void OrderScreen::showOrders() {
    m_orders = listOrders(m_db);
    QList<QStringList> rows;
    for (const OrderSummary& o : m_orders)
        rows.append({QString::number(o.number), o.date.toString(QStringLiteral("dd/MM/yyyy")),
                     o.client, o.clientName, money(o.total), statusText(o.status)});
    fillGrid(m_list, rows);
}

} // namespace orvo::inventory::dispatch
