#include "pos/fiscal_screens/counter_correction_screen.h"

#include "common/numbering/numbering.h"
#include "pos/fiscal_screens/fiscal_operations.h"
#include "shell/session/session_context.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace orvo::pos::fiscal_screens {

CounterCorrectionScreen::CounterCorrectionScreen(QSqlDatabase db,
                                                 const shell::SessionContext& session,
                                                 fiscal::FiscalPrinterThread& printer,
                                                 QWidget* parent)
    : PrinterScreen(printer, parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmCorregirConsecutivos"));
    setWindowTitle(QStringLiteral("Corregir Consecutivos"));

    const auto field = [this](const char* name, bool editable) {
        auto* e = new QLineEdit(this);
        e->setObjectName(QLatin1String(name));
        e->setAlignment(Qt::AlignRight);
        e->setReadOnly(!editable);
        if (editable) {
            e->setMaxLength(9);
            e->setValidator(
                new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), e));
        }
        return e;
    };
    m_currentInvoice = field("txtFacturaActual", false);
    m_currentReturn = field("txtDevolucionActual", false);
    m_newInvoice = field("txtFactura", true);
    m_newReturn = field("txtDevolucion", true);

    m_accept = new QPushButton(QStringLiteral("Aceptar"), this);
    m_accept->setObjectName(QStringLiteral("cmdAceptar"));
    auto* close = new QPushButton(QStringLiteral("Salir"), this);
    close->setObjectName(QStringLiteral("cmdSalir"));
    addActionControl(m_accept);
    addActionControl(m_newInvoice);
    addActionControl(m_newReturn);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Última factura actual:"), m_currentInvoice);
    form->addRow(QStringLiteral("Última devolución actual:"), m_currentReturn);
    form->addRow(QStringLiteral("Nueva última factura:"), m_newInvoice);
    form->addRow(QStringLiteral("Nueva última devolución:"), m_newReturn);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(statusLabel(), 1);
    buttons->addWidget(m_accept);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addStretch();
    layout->addLayout(buttons);

    connect(m_newInvoice, &QLineEdit::returnPressed, m_newReturn, qOverload<>(&QWidget::setFocus));
    connect(m_accept, &QPushButton::clicked, this, [this] { accept(); });
    connect(close, &QPushButton::clicked, this, [this] {
        if (!isBusy())
            (parentWidget() ? parentWidget() : this)->close();
    });
    guarded(this, [this] { loadCurrent(); });
}

void CounterCorrectionScreen::loadCurrent() {
    const common::SalesCounters c =
        common::readSalesCounters(m_db, m_session.controlFactura, m_session.serial);
    m_currentInvoice->setText(QString::number(c.lastInvoice));
    m_currentReturn->setText(QString::number(c.lastReturn));
    m_newInvoice->setText(QString::number(c.lastInvoice));
    m_newReturn->setText(QString::number(c.lastReturn));
}

void CounterCorrectionScreen::accept() {
    if (isBusy())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea cambiar los consecutivos...?"),
                            QStringLiteral("Información"), false))
        return;
    common::SalesCounters wanted;
    wanted.lastInvoice = m_newInvoice->text().toLongLong();
    wanted.lastReturn = m_newReturn->text().toLongLong();
    runOnPrinter(
        QStringLiteral("Leyendo los contadores de la impresora fiscal..."),
        [](fiscal::FiscalPrinter& p) { return printerLastInvoice(p); },
        [this, wanted](long long printerInvoice) {
            common::correctSalesCounters(m_db, m_session.controlFactura, m_session.serial, wanted,
                                         printerInvoice);
            loadCurrent();
            dialogs().information(this,
                                  QStringLiteral("Los consecutivos han sido actualizados...!"));
        });
}

} // namespace orvo::pos::fiscal_screens
