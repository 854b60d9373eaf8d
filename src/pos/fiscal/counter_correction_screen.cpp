#include "pos/fiscal/counter_correction_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/fiscal/counter_correction.h"
#include "pos/fiscal/register_printer.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace orvo::pos::fiscal {

CounterCorrectionScreen::CounterCorrectionScreen(QSqlDatabase db, QString serial,
                                                 int controlFactura, FiscalPrinterThread& printer,
                                                 QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_serial(std::move(serial)),
      m_controlFactura(controlFactura), m_printer(printer) {
    setObjectName(QStringLiteral("frmCorregirConsecutivos"));
    setWindowTitle(QStringLiteral("Corregir Consecutivos"));
    const auto digits = [this](const char* name) {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QString::fromLatin1(name));
        edit->setValidator(new QRegularExpressionValidator(
            QRegularExpression(QStringLiteral("[0-9]{0,9}")), edit));
        return edit;
    };
    m_invoice = digits("txtFactura");
    m_return = digits("txtDevolucion");
    m_accept = new QPushButton(QStringLiteral("Aceptar"), this);
    m_accept->setObjectName(QStringLiteral("cmdAceptar"));
    auto* cancel = new QPushButton(QStringLiteral("Cancelar"), this);
    cancel->setObjectName(QStringLiteral("cmdCancelar"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Última factura:"), m_invoice);
    form->addRow(QStringLiteral("Última devolución:"), m_return);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);

    connect(m_invoice, &QLineEdit::returnPressed, m_return, qOverload<>(&QWidget::setFocus));
    connect(m_return, &QLineEdit::returnPressed, m_accept, qOverload<>(&QWidget::setFocus));
    connect(m_accept, &QPushButton::clicked, this, [this] { guarded(this, [this] { accept(); }); });
    connect(cancel, &QPushButton::clicked, this, [this] {
        if (parentWidget())
            parentWidget()->close();
        close();
    });
    guarded(this, [this] { load(); });
}

void CounterCorrectionScreen::load() {
    const RegisterCounters c = currentCounters(m_db, m_serial, m_controlFactura);
    m_invoice->setText(QString::number(c.lastInvoice));
    m_return->setText(QString::number(c.lastReturn));
}

void CounterCorrectionScreen::accept() {
    if (!dialogs().question(this, QStringLiteral("Desea cambiar los consecutivos...?")))
        return;
    const int invoice = m_invoice->text().toInt();
    const int returned = m_return->text().toInt();
    m_accept->setEnabled(false);
    m_printer
        .call([](FiscalPrinter& p) {
            const auto numbers = p.lastDocumentNumbers();
            if (!numbers)
                throw UserError(
                    QStringLiteral("No existe comunicación con la impresora fiscal...!"));
            return numbers->lastInvoice;
        })
        .then(this, [this, invoice, returned](QFuture<int> printerInvoice) {
            m_accept->setEnabled(true);
            guarded(this, [&] {
                correctCounters(m_db, m_serial, m_controlFactura, invoice, returned,
                                printerInvoice.result());
                load();
                emit countersChanged();
            });
        });
}

void registerFiscalScreens() {
    shell::ScreenRegistry::instance().add(
        QStringLiteral("frmCorregirConsecutivos"), [](QWidget* parent) -> QWidget* {
            const shell::SessionContext& s = shell::session();
            return new CounterCorrectionScreen(shell::mainDb(), s.serial, s.controlFactura,
                                               registerPrinter(), parent);
        });
}

} // namespace orvo::pos::fiscal
