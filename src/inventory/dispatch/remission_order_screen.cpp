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

RemissionOrderScreen::RemissionOrderScreen(QSqlDatabase db, shell::SessionContext ctx,
                                           QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(std::move(ctx)) {
    setObjectName(kRemissionOrderScreen);
    setWindowTitle(QStringLiteral("Convertir remisión en orden de despacho"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    m_clientCode = new QLineEdit(this);
    m_clientCode->setObjectName(QStringLiteral("txtCliente"));
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblNombreCliente"));
    m_number = new QLineEdit(this);
    m_number->setObjectName(QStringLiteral("txtNumero"));
    m_number->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    top->addWidget(new QLabel(QStringLiteral("Cliente:"), this));
    top->addWidget(m_clientCode);
    top->addWidget(m_clientName, 1);
    top->addWidget(new QLabel(QStringLiteral("Remisión Nº:"), this));
    top->addWidget(m_number);
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
    connect(m_number, &QLineEdit::returnPressed, this, [this] {
        guarded(this, [&] {
            if (!m_number->text().isEmpty())
                show(m_number->text().toLongLong());
        });
    });
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
    const auto client = pos::sale::findClient(m_db, code.trimmed());
    if (!client)
        throw UserError(QStringLiteral("El cliente no esta registrado...!"));
    pos::sale::SaleDraft probe = newOrderDraft(m_db, m_ctx);
    setOrderClient(m_ctx, probe, *client);
    m_client = *client;
    m_clientName->setText(client->nombre);
    m_shown = 0;
    m_grid->setRowCount(0);
    m_number->setFocus();
}

void RemissionOrderScreen::show(long long remission) {
    m_shown = 0;
    m_grid->setRowCount(0);
    m_total->clear();
    if (!m_client.isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    pos::sale::SaleDraft draft = newOrderDraft(m_db, m_ctx);
    setOrderClient(m_ctx, draft, m_client);
    orderFromRemission(m_db, remission, draft);
    const QLocale locale;
    QList<QStringList> rows;
    for (const pos::sale::SaleLine& l : draft.lines())
        rows.append(
            {l.codigoBarra, l.nombre, QString(QLatin1Char(l.tipoLista)),
             l.cantidad.toLocaleString(locale, 3), l.precioLista.toLocaleString(locale, 2),
             ((l.precioLista + l.impuesto) * l.cantidad).rounded(2).toLocaleString(locale, 2)});
    fillGrid(m_grid, rows, 3);
    m_total->setText(QStringLiteral("Total: ") + draft.totals().total.toLocaleString(locale, 2));
    m_draft = draft;
    m_shown = remission;
}

void RemissionOrderScreen::convert() {
    if (m_shown == 0)
        throw UserError(QStringLiteral("Indique el cliente y la remisión...!"));
    if (!dialogs().question(this,
                            QStringLiteral("Desea convertir la remisión en orden de despacho...?"),
                            QStringLiteral("Información"), false))
        return;
    const long long order = convertRemissionToOrder(m_db, m_ctx, m_shown, m_draft);
    m_shown = 0;
    m_grid->setRowCount(0);
    m_number->clear();
    m_total->setText(QStringLiteral("Orden de despacho Nº ") + QString::number(order));
    if (dialogs().question(this,
                           QStringLiteral("Remision convertida con exito, Desea Imprimir la Orden "
                                          "de Despacho?"),
                           QStringLiteral("Información"), false))
        purchases::printDocument(this, orderDocument(m_db, order));
    m_number->setFocus();
}

} // namespace orvo::inventory::dispatch
