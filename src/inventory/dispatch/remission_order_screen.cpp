#include "inventory/dispatch/remission_order_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/conversions.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/purchases/document_screen.h"
#include "pos/sale/sale.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::dispatch {

namespace {

QString screenName(OrderSource source) {
    switch (source) {
    case OrderSource::Remission:
        return kRemissionOrderScreen;
    case OrderSource::Purchase:
        return kPurchaseOrderScreen;
    case OrderSource::Manual:
        break;
    }
    return kManualOrderScreen;
}

QLineEdit* numberEdit(QWidget* parent, const QString& name, const QString& pattern) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), edit));
    return edit;
}

} // namespace

RemissionOrderScreen::RemissionOrderScreen(QSqlDatabase db, shell::SessionContext ctx,
                                           OrderSource source, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(std::move(ctx)), m_source(source) {
    setObjectName(screenName(source));
    setWindowTitle(source == OrderSource::Remission
                       ? QStringLiteral("Convertir remisión en orden de despacho")
                   : source == OrderSource::Purchase
                       ? QStringLiteral("Convertir compra en orden de despacho")
                       : QStringLiteral("Convertir remisión manual en orden de despacho"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    m_clientCode = new QLineEdit(this);
    m_clientCode->setObjectName(QStringLiteral("txtCliente"));
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblNombreCliente"));
    top->addWidget(new QLabel(QStringLiteral("Cliente:"), this));
    top->addWidget(m_clientCode);
    top->addWidget(m_clientName, 1);
    switch (source) {
    case OrderSource::Remission:
        m_number = numberEdit(this, QStringLiteral("txtNumero"), QStringLiteral("[0-9]{0,9}"));
        top->addWidget(new QLabel(QStringLiteral("Remisión Nº:"), this));
        top->addWidget(m_number);
        break;
    case OrderSource::Purchase:
        m_supplier = new QLineEdit(this);
        m_supplier->setObjectName(QStringLiteral("txtProveedor"));
        m_number = new QLineEdit(this);
        m_number->setObjectName(QStringLiteral("txtDocumento"));
        top->addWidget(new QLabel(QStringLiteral("Proveedor:"), this));
        top->addWidget(m_supplier);
        top->addWidget(new QLabel(QStringLiteral("Compra Nº:"), this));
        top->addWidget(m_number);
        break;
    case OrderSource::Manual:
        m_number = new QLineEdit(this);
        m_number->setObjectName(QStringLiteral("txtCodigo"));
        m_quantity = numberEdit(this, QStringLiteral("txtCantidad"),
                                QStringLiteral("[0-9]{0,7}([.,][0-9]{0,3})?"));
        top->addWidget(new QLabel(QStringLiteral("Código:"), this));
        top->addWidget(m_number);
        top->addWidget(new QLabel(QStringLiteral("Cantidad:"), this));
        top->addWidget(m_quantity);
        break;
    }
    QPushButton* run = purchases::screenButton(this, QStringLiteral("cmdConvertir"),
                                               QStringLiteral("Convertir"), Qt::Key_F12);
    top->addWidget(run);
    layout->addLayout(top);
    m_grid = purchases::listTable(this, QStringLiteral("SpreadDetalle"),
                                  {QStringLiteral("Código"), QStringLiteral("Descripción"),
                                   QStringLiteral("Lista"), QStringLiteral("Cantidad"),
                                   QStringLiteral("Precio"), QStringLiteral("Total")});
    layout->addWidget(m_grid, 1);
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("lblTotal"));
    layout->addWidget(m_total);

    connect(m_clientCode, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { setClient(m_clientCode->text()); }); });
    if (m_supplier)
        connect(m_supplier, &QLineEdit::returnPressed, m_number, [this] { m_number->setFocus(); });
    if (m_quantity) {
        connect(m_number, &QLineEdit::returnPressed, m_quantity, [this] {
            if (!m_number->text().trimmed().isEmpty())
                m_quantity->setFocus();
        });
        connect(m_quantity, &QLineEdit::returnPressed, this, [this] {
            guarded(this, [&] {
                const QString typed = m_quantity->text().replace(QLatin1Char(','), '.');
                addTyped(m_number->text(),
                         typed.isEmpty() ? Decimal(1) : Decimal::fromString(typed));
            });
        });
    } else {
        connect(m_number, &QLineEdit::textEdited, this, [this] {
            m_shown = false;
            m_grid->setRowCount(0);
            m_total->clear();
        });
        connect(m_number, &QLineEdit::returnPressed, this, [this] {
            guarded(this, [&] {
                if (!m_number->text().trimmed().isEmpty())
                    show();
            });
        });
    }
    connect(run, &QPushButton::clicked, this, [this] { guarded(this, [&] { convert(); }); });
    try {
        m_draft = newOrderDraft(m_db, m_ctx);
    } catch (const UserError& e) {
        setEnabled(false);
        dialogs().information(this, e.text());
        return;
    }
    m_clientCode->setFocus();
}

void RemissionOrderScreen::setClient(const QString& code) {
    m_client = orderClient(m_db, m_ctx, code);
    m_clientName->setText(m_client.nombre);
    pos::sale::SaleDraft draft = newOrderDraft(m_db, m_ctx);
    setOrderClient(m_ctx, draft, m_client);
    m_draft = draft;
    m_shown = false;
    showDraft();
    (m_supplier ? m_supplier : m_number)->setFocus();
}

void RemissionOrderScreen::showDraft() {
    const QLocale locale;
    QList<QStringList> rows;
    for (const pos::sale::SaleLine& l : m_draft.lines())
        rows.append(
            {l.codigoBarra, l.nombre, QString(QLatin1Char(l.tipoLista)),
             l.cantidad.toLocaleString(locale, 3), l.precioLista.toLocaleString(locale, 2),
             ((l.precioLista + l.impuesto) * l.cantidad).rounded(2).toLocaleString(locale, 2)});
    fillGrid(m_grid, rows, 3);
    m_total->setText(m_draft.lines().isEmpty()
                         ? QString()
                         : QStringLiteral("Total: ") +
                               m_draft.totals().total.toLocaleString(locale, 2));
}

void RemissionOrderScreen::show() {
    m_shown = false;
    if (!m_client.isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    pos::sale::SaleDraft draft = newOrderDraft(m_db, m_ctx);
    setOrderClient(m_ctx, draft, m_client);
    if (m_source == OrderSource::Purchase)
        orderFromPurchase(m_db, m_number->text().trimmed(), m_supplier->text().trimmed(), draft);
    else
        orderFromRemission(m_db, m_number->text().toLongLong(), draft);
    m_draft = draft;
    showDraft();
    m_shown = true;
}

void RemissionOrderScreen::addTyped(const QString& barcode, const Decimal& quantity) {
    if (!m_client.isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor que cero...!"));
    addToOrder(m_db, m_draft, 0, barcode.trimmed(), quantity);
    showDraft();
    m_shown = true;
    m_number->clear();
    m_quantity->clear();
    m_number->setFocus();
}

void RemissionOrderScreen::convert() {
    if (!m_shown || m_draft.lines().isEmpty())
        throw UserError(m_source == OrderSource::Manual
                            ? QStringLiteral("Indique el cliente y los artículos...!")
                        : m_source == OrderSource::Purchase
                            ? QStringLiteral("Indique el cliente y la compra...!")
                            : QStringLiteral("Indique el cliente y la remisión...!"));
    const QString what = m_source == OrderSource::Purchase ? QStringLiteral("la compra")
                                                           : QStringLiteral("la remisión");
    if (!dialogs().question(this,
                            QStringLiteral("Desea convertir ") + what +
                                QStringLiteral(" en orden de despacho...?"),
                            QStringLiteral("Información"), false))
        return;
    long long order = 0;
    switch (m_source) {
    case OrderSource::Remission:
        order = convertRemissionToOrder(m_db, m_ctx, m_number->text().toLongLong(), m_draft);
        break;
    case OrderSource::Purchase:
        order = convertPurchaseToOrder(m_db, m_ctx, m_number->text().trimmed(),
                                       m_supplier->text().trimmed(), m_draft);
        break;
    case OrderSource::Manual:
        order = convertListToOrder(m_db, m_ctx, m_draft);
        break;
    }
    m_shown = false;
    m_draft = newOrderDraft(m_db, m_ctx);
    setOrderClient(m_ctx, m_draft, m_client);
    m_grid->setRowCount(0);
    m_number->clear();
    m_total->setText(QStringLiteral("Orden de despacho Nº ") + QString::number(order));
    const QString done = m_source == OrderSource::Purchase
                             ? QStringLiteral("Compra convertida con exito, Desea Imprimir la "
                                              "Orden de Despacho?")
                             : QStringLiteral("Remision convertida con exito, Desea Imprimir la "
                                              "Orden de Despacho?");
    if (dialogs().question(this, done, QStringLiteral("Información"), false))
        purchases::printDocument(this, orderDocument(m_db, order));
    (m_supplier ? m_supplier : m_number)->setFocus();
}

} // namespace orvo::inventory::dispatch
