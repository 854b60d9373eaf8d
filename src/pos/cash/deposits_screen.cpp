#include "pos/cash/deposits_screen.h"

#include "common/dialogs/field_chain.h"
#include "pos/cash/cash_widgets.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/cash_movements.h"
#include "pos/cash/closing_report.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::cash {

DepositsScreen::DepositsScreen(QSqlDatabase db, shell::SessionContext& session, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmDepositos"));
    setWindowTitle(QStringLiteral("Depósitos"));
    m_numero = inputField(this, "txtNumeroDeposito");
    m_cuenta = new QComboBox(this);
    m_cuenta->setObjectName(QStringLiteral("cboCuentaBanco"));
    m_efectivo = inputField(this, "txtEfectivo", true);
    m_observacion = inputField(this, "txtObservacion");
    m_cheques = listTable(this, "grdCheques",
                          {QStringLiteral("Factura"), QStringLiteral("Cheque"),
                           QStringLiteral("Banco"), QStringLiteral("Monto")});
    m_depositos = listTable(this, "grdDepositos",
                            {QStringLiteral("Depósito"), QStringLiteral("Cuenta"),
                             QStringLiteral("Efectivo"), QStringLiteral("Cheques")});
    auto* guardar = actionButton(this, "cmdGuardar", QStringLiteral("Guardar"));
    auto* salir = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    chainFields({m_numero, m_cuenta, m_efectivo, m_observacion}, guardar);
    setFocusProxy(m_numero);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Número de depósito:"), m_numero);
    form->addRow(QStringLiteral("Cuenta bancaria:"), m_cuenta);
    form->addRow(QStringLiteral("Efectivo:"), m_efectivo);
    form->addRow(QStringLiteral("Observación:"), m_observacion);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(guardar);
    buttons->addWidget(salir);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(new QLabel(QStringLiteral("Cheques por depositar:"), this));
    layout->addWidget(m_cheques);
    layout->addWidget(new QLabel(QStringLiteral("Depósitos del día:"), this));
    layout->addWidget(m_depositos);
    layout->addLayout(buttons);

    connect(guardar, &QPushButton::clicked, this, [this] { guarded(this, [this] { save(); }); });
    connect(salir, &QPushButton::clicked, this, [this] { close(); });
    guarded(this, [this] {
        for (const auto& [code, name] : depositAccounts(m_db))
            m_cuenta->addItem(name, code);
        refresh();
    });
}

void DepositsScreen::refresh() {
    const QDate today = QDate::currentDate();
    const auto cheques = pendingCheques(m_db, m_session.serial, today);
    m_cheques->setRowCount(int(cheques.size()));
    for (int r = 0; r < cheques.size(); ++r) {
        const PendingCheque& c = cheques[r];
        auto* first = new QTableWidgetItem(QString::number(c.factura));
        first->setFlags(first->flags() | Qt::ItemIsUserCheckable);
        first->setCheckState(Qt::Unchecked);
        first->setData(Qt::UserRole, c.item);
        m_cheques->setItem(r, 0, first);
        m_cheques->setItem(r, 1, new QTableWidgetItem(c.cheque));
        m_cheques->setItem(r, 2, new QTableWidgetItem(c.banco));
        m_cheques->setItem(r, 3, new QTableWidgetItem(amountText(c.monto)));
    }
    const auto deposits = depositsOf(m_db, m_session.serial, today);
    m_depositos->setRowCount(int(deposits.size()));
    for (int r = 0; r < deposits.size(); ++r) {
        const DepositRow& d = deposits[r];
        const QStringList cells = {d.numeroDeposito, d.cuentaBanco, amountText(d.totalEfectivo),
                                   amountText(d.totalCheques)};
        for (int c = 0; c < cells.size(); ++c)
            m_depositos->setItem(r, c, new QTableWidgetItem(cells[c]));
    }
}

void DepositsScreen::save() {
    Deposit d;
    d.numeroDeposito = m_numero->text();
    d.cuentaBanco = m_cuenta->currentData().toString();
    d.observacion = m_observacion->text();
    if (!m_efectivo->text().trimmed().isEmpty()) {
        const auto cash = payments::parseTypedAmount(m_efectivo->text());
        if (!cash)
            throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
        d.totalEfectivo = *cash;
    }
    for (int r = 0; r < m_cheques->rowCount(); ++r) {
        const QTableWidgetItem* first = m_cheques->item(r, 0);
        if (first->checkState() == Qt::Checked)
            d.cheques.append({first->text().toInt(),
                              first->data(Qt::UserRole).toInt(),
                              m_cheques->item(r, 1)->text(),
                              m_cheques->item(r, 2)->text(),
                              {}});
    }
    addDeposit(m_db, m_session.serial, QDate::currentDate(), d, m_session.userCode,
               QDateTime::currentDateTime());
    m_numero->clear();
    m_efectivo->clear();
    m_observacion->clear();
    refresh();
    m_numero->setFocus();
}

} // namespace orvo::pos::cash
