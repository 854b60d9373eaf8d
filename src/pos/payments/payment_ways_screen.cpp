#include "pos/payments/payment_ways_screen.h"

#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

#include "common/dialogs/dialogs.h"
#include "pos/payments/payment_ways.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::payments {

PaymentWaysScreen::PaymentWaysScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(QStringLiteral("frmFormaPago"));
    setWindowTitle(QStringLiteral("Formas de Pago"));
    m_grid = new QTableWidget(0, 3, this);
    m_grid->setObjectName(QStringLiteral("SpreadFormaPago"));
    m_grid->setHorizontalHeaderLabels(
        {QStringLiteral("Código"), QStringLiteral("Nombre"), QStringLiteral("Activo")});
    m_grid->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto* save = new QPushButton(QStringLiteral("Guardar"), this);
    save->setObjectName(QStringLiteral("cmdGuardar"));
    connect(save, &QPushButton::clicked, this, [this] { guarded(this, [this] { this->save(); }); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(save);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_grid);
    layout->addLayout(buttons);
    guarded(this, [this] { load(); });
}

void PaymentWaysScreen::load() {
    const QList<PaymentWay> ways = loadPaymentWays(m_db);
    m_grid->setRowCount(int(ways.size()));
    for (int r = 0; r < ways.size(); ++r) {
        m_grid->setItem(r, 0, new QTableWidgetItem(QString::number(ways[r].code)));
        m_grid->setItem(r, 1, new QTableWidgetItem(ways[r].name));
        auto* active = new QTableWidgetItem;
        active->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
        active->setCheckState(ways[r].active ? Qt::Checked : Qt::Unchecked);
        m_grid->setItem(r, 2, active);
    }
}

void PaymentWaysScreen::save() {
    QList<PaymentWay> ways;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        ways.append({m_grid->item(r, 0)->text().toInt(), m_grid->item(r, 1)->text(),
                     m_grid->item(r, 2)->checkState() == Qt::Checked});
    savePaymentWayStates(m_db, ways);
    dialogs().information(this, QStringLiteral("Las formas de pago han sido guardadas...!"));
}

void registerPaymentScreens() {
    shell::ScreenRegistry::instance().add(
        QStringLiteral("frmFormaPago"),
        [](QWidget* parent) -> QWidget* { return new PaymentWaysScreen(shell::mainDb(), parent); });
}

} // namespace orvo::pos::payments
