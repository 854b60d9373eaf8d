#include "pos/cash/closing_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/closing_report.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QProgressBar>
#include <QPushButton>
#include <QTextDocument>
#include <QVBoxLayout>

namespace orvo::pos::cash {

namespace {
QLineEdit* shown(QWidget* parent, const char* name) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    e->setReadOnly(true);
    return e;
}

struct ZOutcome {
    std::optional<fiscal::protocol::ZReport> z;
    QString error;
};
} // namespace

ClosingScreen::ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                             fiscal::FiscalPrinterThread& printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session), m_printer(printer) {
    setObjectName(QStringLiteral("frmCierreCaja"));
    setWindowTitle(QStringLiteral("Cierre de Caja"));
    m_numero = shown(this, "txtNumero");
    m_fecha = shown(this, "txtFecha");
    m_facturaFinal = shown(this, "txtFacturaFinal");
    m_status = shown(this, "txtStatus");
    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("lblTotales"));
    m_efectivoEsperado = shown(this, "txtEfectivoEsperado");
    m_efectivoEsperado->setAlignment(Qt::AlignRight);
    m_efectivoContado = new QLineEdit(this);
    m_efectivoContado->setObjectName(QStringLiteral("txtEfectivoContado"));
    m_efectivoContado->setAlignment(Qt::AlignRight);
    m_aceptar = new QPushButton(QStringLiteral("Aceptar"), this);
    m_aceptar->setObjectName(QStringLiteral("cmdAceptar"));
    auto* salir = new QPushButton(QStringLiteral("Salir"), this);
    salir->setObjectName(QStringLiteral("cmdSalir"));
    m_progressText = new QLabel(this);
    m_progressText->setObjectName(QStringLiteral("lblProgreso"));
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("prgCierre"));
    m_progress->setRange(0, 100);
    m_progress->setVisible(false);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Número:"), m_numero);
    form->addRow(QStringLiteral("Fecha:"), m_fecha);
    form->addRow(QStringLiteral("Factura final:"), m_facturaFinal);
    form->addRow(QStringLiteral("Estado:"), m_status);
    form->addRow(m_totals);
    form->addRow(QStringLiteral("Efectivo esperado (sin fondo):"), m_efectivoEsperado);
    form->addRow(QStringLiteral("Efectivo contado (sin fondo):"), m_efectivoContado);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_aceptar);
    buttons->addWidget(salir);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_progressText);
    layout->addWidget(m_progress);
    layout->addLayout(buttons);

    connect(m_aceptar, &QPushButton::clicked, this, [this] { accept(); });
    connect(salir, &QPushButton::clicked, this, [this] {
        if (!m_busy)
            close();
    });
    guarded(this, [this] { refresh(); });
}

void ClosingScreen::refresh() {
    const auto f = closingFigures(m_db, m_session.serial);
    if (!f)
        return;
    m_figures = *f;
    m_numero->setText(QString::number(f->day.numero));
    m_fecha->setText(dayText(f->day.fecha));
    m_facturaFinal->setText(QString::number(f->day.facturaFinal));
    m_status->setText(dayStatusText(f->day.status));
    m_totals->setText(QStringLiteral("Ventas: %1 (%2 facturas)   Impuesto: %3   Devoluciones: %4\n"
                                     "Salidas: %5   Depósitos: %6")
                          .arg(amountText(f->sales.neto()))
                          .arg(f->sales.documentos)
                          .arg(amountText(f->sales.impuesto), amountText(f->returns.neto()),
                               amountText(f->withdrawals),
                               amountText(f->depositedCash + f->depositedCheques)));
    m_efectivoEsperado->setText(amountText(f->expectedCash()));
}

Decimal ClosingScreen::countedCash() const {
    const QString typed = m_efectivoContado->text().trimmed();
    if (typed.isEmpty())
        return Decimal();
    const auto amount = payments::parseTypedAmount(typed);
    if (!amount)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    return *amount;
}

void ClosingScreen::setBusy(bool busy) {
    m_busy = busy;
    m_aceptar->setEnabled(!busy);
    m_efectivoContado->setEnabled(!busy);
    m_progress->setVisible(busy);
    if (!busy)
        m_progressText->clear();
}

void ClosingScreen::progress(int percent, const QString& text) {
    m_progress->setValue(percent);
    m_progressText->setText(text.isEmpty() ? QStringLiteral("Realizando el cierre... %1 % "
                                                            "completado...")
                                                 .arg(percent)
                                           : text);
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ClosingScreen::finish(bool closed) {
    setBusy(false);
    guarded(this, [this] { refresh(); });
    emit closingFinished(closed);
}

void ClosingScreen::accept() {
    if (m_busy)
        return;
    const bool checked = guarded(this, [this] {
        QStringList notices;
        countedCash();
        m_figures = checkClosing(m_db, m_session.serial, QDate::currentDate(), &notices);
        for (const QString& n : notices)
            dialogs().information(this, n);
    });
    if (!checked) {
        emit closingFinished(false);
        return;
    }
    setBusy(true);
    progress(0, QStringLiteral("Verificando la impresora fiscal..."));
    m_printer
        .call([](fiscal::FiscalPrinter& p) {
            try {
                fiscal::ensureOpen(p);
            } catch (const UserError&) {
                return PrinterZState{};
            }
            return readPrinterZState(p);
        })
        .then(this, [this](const PrinterZState& s) { afterPrinterState(s); });
}

void ClosingScreen::afterPrinterState(const PrinterZState& state) {
    m_state = state;
    bool approved = false;
    bool confirmed = false;
    std::optional<ZReservation> reservation;
    const bool ok = guarded(this, [&] {
        checkZAgainstPrinter(m_db, m_session.serial, m_figures.day.fecha, state);
        const Decimal counted = countedCash();
        for (;;) {
            const PendingQuestion q = nextQuestion(m_figures, counted, approved, confirmed);
            if (q.question == ClosingQuestion::None)
                break;
            if (!dialogs().question(this, q.text, q.title, false))
                return;
            (q.question == ClosingQuestion::CashDifference ? approved : confirmed) = true;
        }
        reservation = reserveClosingZ(m_db, m_session.serial, m_figures.day.fecha, state);
    });
    if (!ok || !reservation) {
        finish(false);
        return;
    }
    progress(25, {});
    const bool printed = reservation->alreadyPrinted;
    m_printer
        .call([printed](fiscal::FiscalPrinter& p) {
            ZOutcome out;
            try {
                out.z = printClosingZ(p, printed);
            } catch (const UserError& e) {
                out.error = e.text();
            }
            return out;
        })
        .then(this, [this](const ZOutcome& out) { afterZ(out.z, out.error); });
}

void ClosingScreen::afterZ(const std::optional<fiscal::protocol::ZReport>& z,
                           const QString& error) {
    if (!z) {
        dialogs().information(this, error);
        finish(false);
        return;
    }
    progress(50, {});
    const QDate day = m_figures.day.fecha;
    const bool closed = guarded(this, [&] {
        recordClosing(m_db, m_session.serial, day, *z, m_state.serial,
                      QDateTime::currentDateTime());
    });
    if (!closed) {
        finish(false);
        return;
    }
    progress(70, QStringLiteral("Espere un momento mientras se guarda la informacion del dia."));
    guarded(this, [&] { startExportAfterClosing(m_db, m_session.serial, day); });
    progress(85, QStringLiteral("Realizando respaldo local de la base de datos.."));
    guarded(this, [&] { backupAfterClosing(m_db, day); });
    progress(100, {});
    dialogs().information(this,
                          QStringLiteral("El proceso de cierre de caja finalizo con exito...!"));
    if (dialogs().question(this, QStringLiteral("Desea Imprimir los Reportes del Cierre ?"),
                           QStringLiteral("Imprimir Cierre"), true)) {
        guarded(this, [&] {
            QPrinter printer;
            if (!dialogs().choosePrinter(this, printer))
                return;
            QTextDocument doc;
            doc.setHtml(
                closingReportHtml(m_db, m_session.serial, day, m_session.nombre, countedCash()));
            doc.print(&printer);
        });
    }
    finish(true);
}

} // namespace orvo::pos::cash
