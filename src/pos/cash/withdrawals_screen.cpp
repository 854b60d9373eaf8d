#include "pos/cash/withdrawals_screen.h"

#include "common/dialogs/field_chain.h"
#include "pos/cash/cash_widgets.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/cash_movements.h"
#include "pos/cash/closing_report.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::cash {

WithdrawalsScreen::WithdrawalsScreen(QSqlDatabase db, shell::SessionContext& session,
                                     QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmSalidasCaja"));
    setWindowTitle(QStringLiteral("Salidas de Caja"));
    m_codigoContable = inputField(this, "txtCodigoContable");
    m_acreedor = inputField(this, "txtAcreedor");
    m_documento = inputField(this, "txtDocumento");
    m_descripcion = inputField(this, "txtDescripcion");
    m_monto = inputField(this, "txtMonto", true);
    m_grid = listTable(this, "grdSalidas",
                       {QStringLiteral("Número"), QStringLiteral("Descripción"),
                        QStringLiteral("Acreedor"), QStringLiteral("Documento"),
                        QStringLiteral("Monto")});
    auto* agregar = actionButton(this, "cmdAgregar", QStringLiteral("Agregar"));
    auto* eliminar = actionButton(this, "cmdEliminar", QStringLiteral("Eliminar"));
    auto* salir = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    chainFields({m_codigoContable, m_acreedor, m_documento, m_descripcion, m_monto}, agregar);
    setFocusProxy(m_codigoContable);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Cuenta contable:"), m_codigoContable);
    form->addRow(QStringLiteral("Acreedor:"), m_acreedor);
    form->addRow(QStringLiteral("Documento:"), m_documento);
    form->addRow(QStringLiteral("Descripción:"), m_descripcion);
    form->addRow(QStringLiteral("Monto:"), m_monto);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(agregar);
    buttons->addWidget(eliminar);
    buttons->addStretch();
    buttons->addWidget(salir);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_grid);
    layout->addLayout(buttons);

    connect(agregar, &QPushButton::clicked, this, [this] { guarded(this, [this] { add(); }); });
    connect(eliminar, &QPushButton::clicked, this, [this] { guarded(this, [this] { remove(); }); });
    connect(salir, &QPushButton::clicked, this, [this] { close(); });
    guarded(this, [this] { refresh(); });
}

void WithdrawalsScreen::refresh() {
    const auto list = withdrawalsOf(m_db, m_session.serial, QDate::currentDate());
    m_grid->setRowCount(int(list.size()));
    for (int r = 0; r < list.size(); ++r) {
        const Withdrawal& w = list[r];
        const QStringList cells = {QString::number(w.numero), w.descripcion, w.acreedor,
                                   w.documento, amountText(w.monto)};
        for (int c = 0; c < cells.size(); ++c)
            m_grid->setItem(r, c, new QTableWidgetItem(cells[c]));
        m_grid->item(r, 0)->setData(Qt::UserRole, w.numero);
    }
}

void WithdrawalsScreen::add() {
    const auto amount = payments::parseTypedAmount(m_monto->text());
    if (!amount)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    Withdrawal w;
    w.codigoContable = m_codigoContable->text();
    w.acreedor = m_acreedor->text();
    w.documento = m_documento->text();
    w.descripcion = m_descripcion->text();
    w.monto = *amount;
    addWithdrawal(m_db, m_session.serial, QDate::currentDate(), w, m_session.userCode,
                  QDateTime::currentDateTime());
    for (QLineEdit* e : {m_codigoContable, m_acreedor, m_documento, m_descripcion, m_monto})
        e->clear();
    refresh();
    m_codigoContable->setFocus();
}

void WithdrawalsScreen::remove() {
    const int row = m_grid->currentRow();
    if (row < 0)
        return;
    const int number = m_grid->item(row, 0)->data(Qt::UserRole).toInt();
    if (!dialogs().question(this,
                            QStringLiteral("Desea eliminar la salida de caja %1...?").arg(number),
                            QStringLiteral("Salidas de Caja"), false))
        return;
    removeWithdrawal(m_db, m_session.serial, number);
    refresh();
}

} // namespace orvo::pos::cash
