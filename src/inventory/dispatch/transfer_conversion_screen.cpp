#include "inventory/dispatch/transfer_conversion_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/transfers/transfer_print.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"

#include <QComboBox>
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

struct Texts {
    QString screen;
    QString title;
    QString question;
    QString done;
};

Texts textsOf(TransferSource source) {
    switch (source) {
    case TransferSource::Remission:
        return {kRemissionTransferScreen, QStringLiteral("Convertir remisión en transferencia"),
                QStringLiteral("Desea convertir la remisión en transferencia...?"),
                QStringLiteral("Remision convertida con exito, Desea Imprimir la(s) "
                               "Transferencia(s)?")};
    case TransferSource::Purchase:
        return {kPurchaseTransferScreen, QStringLiteral("Convertir compra en transferencia"),
                QStringLiteral("Desea convertir la compra en transferencia...?"),
                QStringLiteral("Compra convertida con exito, Desea Imprimir la(s) "
                               "Transferencia(s)?")};
    case TransferSource::Reception:
        break;
    }
    return {kReceptionReturnScreen,
            QStringLiteral("Convertir recepción en devolución de transferencia"),
            QStringLiteral("Desea convertir la recepción en devolución de transferencia...?"),
            QStringLiteral("Recepción convertida con exito, Desea Imprimir la Devolución de "
                           "Transferencia?")};
}

} // namespace

TransferConversionScreen::TransferConversionScreen(QSqlDatabase db, QString userCode,
                                                   TransferSource source, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)), m_source(source) {
    const Texts texts = textsOf(source);
    setObjectName(texts.screen);
    setWindowTitle(texts.title);
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    const bool purchase = source == TransferSource::Purchase;
    if (purchase) {
        m_supplier = new QLineEdit(this);
        m_supplier->setObjectName(QStringLiteral("txtProveedor"));
        top->addWidget(new QLabel(QStringLiteral("Proveedor:"), this));
        top->addWidget(m_supplier);
    }
    m_number = new QLineEdit(this);
    m_number->setObjectName(purchase ? QStringLiteral("txtDocumento")
                                     : QStringLiteral("txtNumero"));
    if (!purchase)
        m_number->setValidator(new QRegularExpressionValidator(
            QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    top->addWidget(new QLabel(purchase ? QStringLiteral("Compra Nº:")
                              : source == TransferSource::Remission
                                  ? QStringLiteral("Remisión Nº:")
                                  : QStringLiteral("Recepción Nº:"),
                              this));
    top->addWidget(m_number);
    if (purchase) {
        m_branch = new QComboBox(this);
        m_branch->setObjectName(QStringLiteral("cboSucursal"));
        const QString here = transfers::store::storeCode(m_db);
        for (const purchases::store::Branch& b : purchases::store::activeBranches(m_db))
            if (b.code != here)
                m_branch->addItem(b.code + QStringLiteral(" - ") + b.name, b.code);
        m_branch->setCurrentIndex(-1);
        top->addWidget(new QLabel(QStringLiteral("Sucursal:"), this));
        top->addWidget(m_branch, 1);
    }
    if (source != TransferSource::Reception) {
        m_dispatch = new QComboBox(this);
        m_dispatch->setObjectName(QStringLiteral("cboTipoDespacho"));
        m_dispatch->addItem(QString(), 0);
        for (const transfers::DispatchType& t : transfers::store::activeDispatchTypes(m_db))
            m_dispatch->addItem(t.description, t.id);
        top->addWidget(new QLabel(QStringLiteral("Tipo de despacho:"), this));
        top->addWidget(m_dispatch, 1);
    }
    QPushButton* run = purchases::screenButton(this, QStringLiteral("cmdConvertir"),
                                               QStringLiteral("Convertir"), Qt::Key_F12);
    top->addWidget(run);
    layout->addLayout(top);
    m_grid = purchases::listTable(this, QStringLiteral("SpreadDetalle"),
                                  {QStringLiteral("Caja"), QStringLiteral("Código"),
                                   QStringLiteral("Descripción"), QStringLiteral("Cantidad"),
                                   QStringLiteral("Costo"), QStringLiteral("Total")});
    layout->addWidget(m_grid, 1);
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("lblTotal"));
    layout->addWidget(m_total);

    if (m_supplier)
        connect(m_supplier, &QLineEdit::returnPressed, m_number, [this] { m_number->setFocus(); });
    connect(m_number, &QLineEdit::textEdited, this, [this] { clear(); });
    connect(m_number, &QLineEdit::returnPressed, this, [this] {
        guarded(this, [&] {
            if (!m_number->text().trimmed().isEmpty())
                show();
        });
    });
    connect(run, &QPushButton::clicked, this, [this] { guarded(this, [&] { convert(); }); });
    (m_supplier ? m_supplier : m_number)->setFocus();
}

TransferRequest TransferConversionScreen::request() const {
    TransferRequest r;
    r.source = m_source;
    r.user = m_userCode;
    if (m_source == TransferSource::Purchase) {
        r.supplier = m_supplier->text().trimmed();
        r.document = m_number->text().trimmed();
        r.receiver = m_branch->currentData().toString();
    } else {
        r.number = m_number->text().toLongLong();
    }
    if (m_dispatch)
        r.dispatchType = m_dispatch->currentData().toInt();
    return r;
}

void TransferConversionScreen::clear() {
    m_shown = false;
    m_grid->setRowCount(0);
    m_total->clear();
}

void TransferConversionScreen::show() {
    clear();
    const transfers::Transfer t = previewTransfer(m_db, request());
    const QLocale locale;
    QList<QStringList> rows;
    for (const transfers::DocumentLine& l : t.lines)
        rows.append({QString::number(l.box), l.barcode, l.name,
                     l.quantity.toLocaleString(locale, 3), l.price.toLocaleString(locale, 2),
                     (l.quantity * l.price).rounded(2).toLocaleString(locale, 2)});
    fillGrid(m_grid, rows, 3);
    m_total->setText(QStringLiteral("Sucursal: ") + t.receiver + QStringLiteral("    Total: ") +
                     t.totalValue.toLocaleString(locale, 2));
    m_shown = true;
    if (m_branch && m_branch->currentIndex() < 0)
        m_branch->setFocus();
    else if (m_dispatch)
        m_dispatch->setFocus();
}

void TransferConversionScreen::convert() {
    if (m_number->text().trimmed().isEmpty())
        throw UserError(QStringLiteral("Indique el número del documento...!"));
    const TransferRequest r = request();
    if (!m_shown)
        show();
    transferFor(m_db, r); // the refusals before the question
    if (!dialogs().question(this, textsOf(m_source).question, QStringLiteral("Información"), false))
        return;
    const long long number = convertToTransfer(m_db, r);
    const transfers::Kind kind =
        m_source == TransferSource::Reception ? transfers::Kind::Return : transfers::Kind::Transfer;
    clear();
    m_number->clear();
    m_total->setText(transfers::kindName(kind) + QStringLiteral(" Nº ") + QString::number(number));
    if (dialogs().question(this, textsOf(m_source).done, QStringLiteral("Información"), false))
        purchases::printDocument(this, transfers::transferDocument(m_db, kind, number));
    (m_supplier ? m_supplier : m_number)->setFocus();
}

} // namespace orvo::inventory::dispatch
