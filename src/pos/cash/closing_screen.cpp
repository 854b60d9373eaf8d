#include "pos/cash/closing_screen.h"

#include "common/dialogs/field_chain.h"
#include "pos/cash/cash_widgets.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/closing_report.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QApplication>
#include <QFormLayout>
#include <QGridLayout>
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
Decimal typedAmount(const QLineEdit* e) {
    const QString text = e->text().trimmed();
    if (text.isEmpty())
        return Decimal();
    const auto amount = payments::parseTypedAmount(text);
    if (!amount)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    return *amount;
}

struct ZOutcome {
    std::optional<fiscal::protocol::ZReport> z;
    QString error;
};
} // namespace

ClosingScreen::ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                             fiscal::FiscalPrinterThread& printer, QWidget* parent)
    : ClosingScreen(std::move(db), session, printer, session.serial, parent) {}

ClosingScreen::~ClosingScreen() = default;

ClosingScreen::ClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                             fiscal::FiscalPrinterThread& printer, QString serial, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session), m_printer(printer),
      m_serial(std::move(serial)) {
    setObjectName(QStringLiteral("frmCierreCaja"));
    setWindowTitle(QStringLiteral("Cierre de Caja"));
    m_numero = shownField(this, "txtNumero");
    m_fecha = shownField(this, "txtFecha");
    m_facturaFinal = shownField(this, "txtFacturaFinal");
    m_status = shownField(this, "txtStatus");
    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("lblTotales"));
    m_efectivoEsperado = shownField(this, "txtEfectivoEsperado", true);
    m_efectivoContado = inputField(this, "txtEfectivoContado", true);
    m_dolaresEsperados = shownField(this, "txtDolaresEsperados", true);
    m_dolaresContados = inputField(this, "txtDolaresContados", true);
    m_chequesEsperados = shownField(this, "txtChequesEsperados", true);
    m_chequesContados = inputField(this, "txtChequesContados", true);
    m_aceptar = actionButton(this, "cmdAceptar", QStringLiteral("Aceptar"));
    auto* salir = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    chainFields({m_efectivoContado, m_dolaresContados, m_chequesContados}, m_aceptar);
    setFocusProxy(m_efectivoContado);
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
    // What the drawer must hold beside what the cashier counted, one row per kind of money.
    auto* drawer = new QGridLayout;
    drawer->addWidget(new QLabel(QStringLiteral("Esperado"), this), 0, 1);
    drawer->addWidget(new QLabel(QStringLiteral("Contado"), this), 0, 2);
    const auto drawerRow = [&](int row, const QString& label, QLineEdit* expected,
                               QLineEdit* counted) {
        drawer->addWidget(new QLabel(label, this), row, 0);
        drawer->addWidget(expected, row, 1);
        drawer->addWidget(counted, row, 2);
    };
    drawerRow(1, QStringLiteral("Efectivo (con el fondo):"), m_efectivoEsperado, m_efectivoContado);
    drawerRow(2, QStringLiteral("Efectivo en dólares:"), m_dolaresEsperados, m_dolaresContados);
    drawerRow(3, QStringLiteral("Cheques:"), m_chequesEsperados, m_chequesContados);
    form->addRow(drawer);
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
    const auto f = closingFigures(m_db, m_serial);
    if (!f)
        return;
    m_figures = *f;
    m_numero->setText(QString::number(f->day.numero));
    m_fecha->setText(dayText(f->day.fecha));
    m_facturaFinal->setText(QString::number(f->day.facturaFinal));
    m_status->setText(dayStatusText(f->day.status));
    m_totals->setText(
        QStringLiteral("Ventas: %1 (%2 facturas)   Impuesto: %3   Devoluciones: %4\n"
                       "Salidas: %5   Depósitos: %6")
            .arg(amountText(f->sales.neto()))
            .arg(f->sales.documentos)
            .arg(amountText(f->sales.impuesto), amountText(f->returns.neto()),
                 amountText(f->withdrawals), amountText(f->depositedCash + f->depositedCheques)) +
        (f->sales.igtf.isZero() && f->returns.igtf.isZero()
             ? QString()
             : QStringLiteral("   IGTF: %1").arg(amountText(f->sales.igtf - f->returns.igtf))));
    m_efectivoEsperado->setText(amountText(f->expectedCash()));
    m_dolaresEsperados->setText(amountText(f->expectedDollars()));
    m_chequesEsperados->setText(amountText(f->expectedCheques()));
}

CountedCash ClosingScreen::counted() const {
    CountedCash c;
    c.cash = typedAmount(m_efectivoContado);
    c.dollars = typedAmount(m_dolaresContados);
    c.cheques = typedAmount(m_chequesContados);
    return c;
}

void ClosingScreen::setBusy(bool busy) {
    m_busy = busy;
    m_aceptar->setEnabled(!busy);
    for (QLineEdit* e : {m_efectivoContado, m_dolaresContados, m_chequesContados})
        e->setEnabled(!busy);
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
        counted();
        m_figures = checkClosing(m_db, m_serial, QDate::currentDate(), &notices);
        for (const QString& n : notices)
            dialogs().information(this, n);
    });
    if (!checked) {
        emit closingFinished(false);
        return;
    }
    setBusy(true);
    progress(0, QStringLiteral("Verificando la impresora fiscal..."));
    m_printer.call([](fiscal::FiscalPrinter& p) { return readPrinterZState(p); })
        .then(this, [this](const PrinterZState& s) { afterPrinterState(s); });
}

void ClosingScreen::afterPrinterState(const PrinterZState& state) {
    m_state = state;
    bool approved = false;
    bool confirmed = false;
    std::optional<ZReservation> reservation;
    const bool ok = guarded(this, [&] {
        checkZAgainstPrinter(m_db, m_serial, m_figures.day.fecha, state);
        const CountedCash drawer = counted();
        for (;;) {
            const PendingQuestion q = nextQuestion(m_figures, drawer, approved, confirmed);
            if (q.question == ClosingQuestion::None)
                break;
            if (!dialogs().question(this, q.text, q.title, false))
                return;
            (q.question == ClosingQuestion::CashDifference ? approved : confirmed) = true;
        }
        reservation = reserveClosingZ(m_db, m_serial, m_figures.day.fecha, state);
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
        recordClosing(m_db, m_serial, day, *z, m_state.serial, QDateTime::currentDateTime());
    });
    if (!closed) {
        finish(false);
        return;
    }
    progress(70, QStringLiteral("Espere un momento mientras se guarda la informacion del dia."));
    guarded(this, [&] { startExportAfterClosing(m_db, m_serial, day); });
    const bool started = guarded(this, [&] {
        m_backup = std::make_unique<ClosingBackupJob>(m_db, day);
        connect(m_backup.get(), &jobs::Job::progress, this,
                [this](int percent, const QString& label) {
                    progress(80 + percent * 20 / 100, label);
                });
        connect(m_backup.get(), &jobs::Job::finished, this,
                [this](bool ok, const QString& error) { afterBackup(ok, error); });
        progress(80, QStringLiteral("Realizando respaldo local de la base de datos.."));
        m_backup->start();
    });
    if (!started)
        afterBackup(false, {});
}

void ClosingScreen::afterBackup(bool ok, const QString& error) {
    // The day is closed whatever became of the copy; a failed copy is only reported.
    if (ok)
        backupAfterClosingDone();
    else if (!error.isEmpty())
        dialogs().warning(this, error);
    progress(100, {});
    dialogs().information(this,
                          QStringLiteral("El proceso de cierre de caja finalizo con exito...!"));
    const QDate day = m_figures.day.fecha;
    if (dialogs().question(this, QStringLiteral("Desea Imprimir los Reportes del Cierre ?"),
                           QStringLiteral("Imprimir Cierre"), true)) {
        guarded(this, [&] {
            QPrinter printer;
            if (!choosePrinter(this, printer, windowTitle(), day))
                return;
            QTextDocument doc;
            doc.setHtml(closingReportHtml(m_db, m_serial, day, m_session.nombre, counted()));
            doc.print(&printer);
        });
    }
    finish(true);
}

} // namespace orvo::pos::cash
