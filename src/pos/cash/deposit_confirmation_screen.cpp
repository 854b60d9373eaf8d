#include "pos/cash/deposit_confirmation_screen.h"

#include "common/dialogs/field_chain.h"
#include "pos/cash/cash_widgets.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/cash_movements.h"
#include "pos/cash/closing_report.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::cash {

namespace {
QDateEdit* dateEdit(QWidget* parent, const char* name, const QDate& date) {
    auto* d = new QDateEdit(date, parent);
    d->setObjectName(QLatin1String(name));
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    d->setCalendarPopup(true);
    return d;
}
QString stateText(const DepositRow& r) {
    if (!r.confirmationStatus)
        return QStringLiteral("Pendiente");
    return *r.confirmationStatus == 1 ? QStringLiteral("Confirmado") : QStringLiteral("Anulado");
}
} // namespace

DepositConfirmationScreen::DepositConfirmationScreen(QSqlDatabase db,
                                                     shell::SessionContext& session,
                                                     QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmConfirmarDepositos"));
    setWindowTitle(QStringLiteral("Confirmar Depósitos"));
    const QDate today = QDate::currentDate();
    m_desde = dateEdit(this, "dtpDesde", today.addDays(-7));
    m_hasta = dateEdit(this, "dtpHasta", today);
    m_grid = listTable(this, "grdDepositos",
                       {QStringLiteral("Fecha"), QStringLiteral("Caja"), QStringLiteral("Depósito"),
                        QStringLiteral("Cuenta"), QStringLiteral("Monto"), QStringLiteral("Estado"),
                        QStringLiteral("Monto banco")});
    m_fechaDeposito = dateEdit(this, "dtpFechaDeposito", today);
    m_monto = inputField(this, "txtMonto", true);
    m_nota = inputField(this, "txtNota");
    auto* buscar = actionButton(this, "cmdBuscar", QStringLiteral("Buscar"));
    auto* confirmar = actionButton(this, "cmdConfirmar", QStringLiteral("Confirmar"));
    auto* anular = actionButton(this, "cmdAnular", QStringLiteral("Anular"));
    auto* salir = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    chainFields({m_desde, m_hasta}, buscar);
    chainFields({m_fechaDeposito, m_monto, m_nota}, confirmar);

    auto* range = new QHBoxLayout;
    range->addWidget(m_desde);
    range->addWidget(m_hasta);
    range->addWidget(buscar);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Fecha en el banco:"), m_fechaDeposito);
    form->addRow(QStringLiteral("Monto acreditado:"), m_monto);
    form->addRow(QStringLiteral("Nota:"), m_nota);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(confirmar);
    buttons->addWidget(anular);
    buttons->addStretch();
    buttons->addWidget(salir);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(range);
    layout->addWidget(m_grid);
    layout->addLayout(form);
    layout->addLayout(buttons);

    connect(buscar, &QPushButton::clicked, this, [this] { guarded(this, [this] { search(); }); });
    connect(confirmar, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { confirm(1); }); });
    connect(anular, &QPushButton::clicked, this, [this] { guarded(this, [this] { confirm(0); }); });
    connect(salir, &QPushButton::clicked, this, [this] { close(); });
    connect(m_grid, &QTableWidget::itemSelectionChanged, this, [this] { rowChosen(); });
    guarded(this, [this] { search(); });
}

void DepositConfirmationScreen::search() {
    const auto rows = depositsBetween(m_db, m_desde->date(), m_hasta->date());
    m_grid->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        const DepositRow& d = rows[r];
        const QStringList cells = {d.fecha.toString(QStringLiteral("dd/MM/yyyy")),
                                   d.serie,
                                   d.numeroDeposito,
                                   d.cuentaBanco,
                                   amountText(d.totalEfectivo + d.totalCheques),
                                   stateText(d),
                                   d.confirmationStatus ? amountText(d.montoConfirmado)
                                                        : QString()};
        for (int c = 0; c < cells.size(); ++c)
            m_grid->setItem(r, c, new QTableWidgetItem(cells[c]));
    }
}

void DepositConfirmationScreen::rowChosen() {
    const int row = m_grid->currentRow();
    if (row < 0 || !m_grid->item(row, 4))
        return;
    // The deposited amount is offered; the user types what the bank credited when it differs.
    m_monto->setText(m_grid->item(row, 4)->text());
}

void DepositConfirmationScreen::confirm(int status) {
    const int row = m_grid->currentRow();
    if (row < 0)
        throw UserError(QStringLiteral("Debe seleccionar un depósito...!"));
    const auto amount = payments::parseTypedAmount(m_monto->text());
    if (!amount)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    Confirmation c;
    c.numeroDeposito = m_grid->item(row, 2)->text();
    c.cuentaBanco = m_grid->item(row, 3)->text();
    c.fechaDeposito = m_fechaDeposito->date();
    c.monto = *amount;
    c.nota = m_nota->text();
    c.status = status;
    confirmDeposit(m_db, c, m_session.userCode, QDateTime::currentDateTime());
    m_nota->clear();
    search();
    m_grid->selectRow(row);
}

} // namespace orvo::pos::cash
