#include "pos/cash/opening_screen.h"

#include "shell/startup/external_backup.h"

#include "common/dialogs/field_chain.h"
#include "pos/cash/cash_widgets.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "pos/cash/cash_day.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "shell/session/session_context.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::pos::cash {

OpeningScreen::OpeningScreen(QSqlDatabase db, shell::SessionContext& session,
                             fiscal::FiscalPrinterThread& printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session), m_printer(printer) {
    setObjectName(QStringLiteral("frmAperturaCaja"));
    setWindowTitle(QStringLiteral("Apertura de Caja"));
    m_serie = shownField(this, "txtSerie");
    m_fecha = shownField(this, "txtFecha");
    m_numero = shownField(this, "txtNumero");
    m_facturaInicial = shownField(this, "txtFacturaInicial");
    m_facturaFinal = shownField(this, "txtFacturaFinal");
    m_horaApertura = shownField(this, "txtHoraApertura");
    m_horaCierre = shownField(this, "txtHoraCierre");
    m_status = shownField(this, "txtStatus");
    // The times read whole: "23/11/2026 03:28:02 PM".
    const int timeWidth =
        fontMetrics().horizontalAdvance(QStringLiteral("00/00/0000 00:00:00 PM")) + 16;
    m_horaApertura->setMinimumWidth(timeWidth);
    m_horaCierre->setMinimumWidth(timeWidth);
    m_nuevaFecha = new QDateEdit(QDate::currentDate(), this);
    m_nuevaFecha->setObjectName(QStringLiteral("dtpFecha"));
    m_nuevaFecha->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    m_nuevaFecha->setCalendarPopup(true);
    m_aperturar = actionButton(this, "cmdAperturar", QStringLiteral("Aperturar"));
    m_eliminar = actionButton(this, "cmdEliminar", QStringLiteral("Eliminar"));
    auto* salir = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    m_progress = new QLabel(this);
    m_progress->setObjectName(QStringLiteral("lblProgreso"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Caja:"), m_serie);
    form->addRow(QStringLiteral("Última fecha:"), m_fecha);
    form->addRow(QStringLiteral("Número:"), m_numero);
    form->addRow(QStringLiteral("Factura inicial:"), m_facturaInicial);
    form->addRow(QStringLiteral("Factura final:"), m_facturaFinal);
    form->addRow(QStringLiteral("Hora de apertura:"), m_horaApertura);
    form->addRow(QStringLiteral("Hora de cierre:"), m_horaCierre);
    form->addRow(QStringLiteral("Estado:"), m_status);
    form->addRow(QStringLiteral("Fecha de la apertura:"), m_nuevaFecha);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_aperturar);
    buttons->addWidget(m_eliminar);
    buttons->addStretch();
    buttons->addWidget(salir);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_progress);
    layout->addLayout(buttons);

    chainFields({m_nuevaFecha}, m_aperturar);
    setFocusProxy(m_nuevaFecha);
    connect(m_aperturar, &QPushButton::clicked, this, [this] { openDay(); });
    connect(m_eliminar, &QPushButton::clicked, this, [this] { deleteDay(); });
    connect(salir, &QPushButton::clicked, this, [this] { close(); });

    if (!m_session.registerConfigured || m_session.serial.isEmpty()) {
        dialogs().information(this, QStringLiteral("Debe configurar la caja...!"));
        m_aperturar->setEnabled(false);
        m_eliminar->setEnabled(false);
        return;
    }
    guarded(this, [this] { refresh(); });
}

void OpeningScreen::refresh() {
    m_serie->setText(m_session.serial);
    const auto d = latestDay(m_db, m_session.serial);
    const QString timeFormat = QStringLiteral("dd/MM/yyyy hh:mm:ss AP");
    m_fecha->setText(d ? dayText(d->fecha) : QString());
    m_numero->setText(d ? QString::number(d->numero) : QString());
    m_facturaInicial->setText(d ? QString::number(d->facturaInicial) : QString());
    m_facturaFinal->setText(d ? QString::number(d->facturaFinal) : QString());
    m_horaApertura->setText(d ? d->horaApertura.toString(timeFormat) : QString());
    m_horaCierre->setText(d && d->horaCierre.isValid() ? d->horaCierre.toString(timeFormat)
                                                       : QString());
    m_status->setText(d ? dayStatusText(d->status) : QString());
    m_eliminar->setEnabled(d && d->status == 0);
}

void OpeningScreen::setBusy(bool busy, const QString& text) {
    m_busy = busy;
    m_aperturar->setEnabled(!busy);
    m_eliminar->setEnabled(!busy);
    m_nuevaFecha->setEnabled(!busy);
    m_progress->setText(text);
    if (!busy)
        guarded(this, [this] { refresh(); });
}

void OpeningScreen::openDay() {
    if (m_busy)
        return;
    OpeningRequest r;
    r.serial = m_session.serial;
    r.day = m_nuevaFecha->date();
    r.controlFactura = m_session.controlFactura;
    const bool checked = guarded(this, [&] {
        checkOpening(m_db, r.serial, r.day);
        runDueReconversion(m_db);
    });
    // A day after today is most likely a mistyped date: asked first.
    const QDate today = db::serverNow(m_db).date();
    const bool confirmed =
        checked &&
        (r.day <= today ||
         dialogs().question(this,
                            QStringLiteral("La fecha de apertura %1 es posterior a la fecha de hoy "
                                           "%2. ¿Desea aperturar la caja con esa fecha?")
                                .arg(r.day.toString(QStringLiteral("dd/MM/yyyy")),
                                     today.toString(QStringLiteral("dd/MM/yyyy"))),
                            QStringLiteral("Apertura de caja")));
    if (!confirmed) {
        emit openingFinished(false);
        return;
    }
    setBusy(true, QStringLiteral("Verificando la impresora fiscal..."));
    m_printer.call([](fiscal::FiscalPrinter& p) { return readPrinterForOpening(p); })
        .then(this, [this, r](const PrinterAtOpening& printer) mutable {
            r.today = QDate::currentDate();
            r.now = QDateTime::currentDateTime();
            const bool opened = guarded(this, [&] { cash::openDay(m_db, r, printer); });
            setBusy(false);
            // The day is open; the closing's backup would fail later, so say it now.
            if (opened)
                if (const QString problem = shell::backupToolProblem(m_db); !problem.isEmpty())
                    dialogs().warning(this, problem);
            emit openingFinished(opened);
        });
}

void OpeningScreen::deleteDay() {
    const auto d = latestDay(m_db, m_session.serial);
    if (!d || m_busy)
        return;
    if (!dialogs().question(this,
                            QStringLiteral("Desea eliminar la apertura de Fecha ") +
                                dayText(d->fecha) + QStringLiteral("...?"),
                            QStringLiteral("Apertura de Caja"), false))
        return;
    guarded(this, [&] {
        deleteOpening(m_db, m_session.serial, d->fecha);
        refresh();
    });
}

} // namespace orvo::pos::cash
