#include "inventory/transfers/destination_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/transfers/transfer_screen.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace orvo::inventory::transfers {

DestinationScreen::DestinationScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(kChangeDestinationScreen);
    setWindowTitle(QStringLiteral("Cambiar destino de transferencia"));
    auto* layout = new QVBoxLayout(this);
    auto* kinds = new QHBoxLayout;
    m_transfer = new QRadioButton(QStringLiteral("Transferencia"), this);
    m_transfer->setObjectName(QStringLiteral("optTransferencia"));
    m_transfer->setChecked(true);
    m_return = new QRadioButton(QStringLiteral("Dev. Transferencia"), this);
    m_return->setObjectName(QStringLiteral("optDevTransferencia"));
    kinds->addWidget(m_transfer);
    kinds->addWidget(m_return);
    kinds->addStretch();
    layout->addLayout(kinds);
    auto* form = new QFormLayout;
    m_number = new QLineEdit(this);
    m_number->setObjectName(QStringLiteral("txtNumero"));
    m_number->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    form->addRow(QStringLiteral("Número"), m_number);
    m_current = new QLabel(this);
    m_current->setObjectName(QStringLiteral("lblDestinoActual"));
    form->addRow(QStringLiteral("Destino actual"), m_current);
    m_branch = branchCombo(this, m_db);
    form->addRow(QStringLiteral("Nuevo destino"), m_branch);
    layout->addLayout(form);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    QPushButton* ok = purchases::screenButton(this, QStringLiteral("cmdAceptar"),
                                              QStringLiteral("Aceptar"), Qt::Key_F9);
    buttons->addWidget(ok);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(ok, &QPushButton::clicked, this, [this] { guarded(this, [&] { accept(); }); });
    m_number->installEventFilter(this);
    m_branch->installEventFilter(this);
    m_number->setFocus();
}

bool DestinationScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (watched == m_number) {
                if (guarded(this, [&] { showCurrent(); }))
                    m_branch->setFocus();
                return true;
            }
            if (watched == m_branch) {
                guarded(this, [&] { accept(); });
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

void DestinationScreen::showCurrent() {
    const Kind kind = m_return->isChecked() ? Kind::Return : Kind::Transfer;
    const auto state = store::headerState(m_db, kind, m_number->text().toLongLong());
    if (!state || state->status == kOpen) {
        m_current->clear();
        throw UserError(QStringLiteral("No existe el numero de documento...!"));
    }
    m_current->setText(state->receiver);
}

void DestinationScreen::accept() {
    const Kind kind = m_return->isChecked() ? Kind::Return : Kind::Transfer;
    changeDestination(m_db, kind, m_number->text().toLongLong(),
                      m_branch->currentData().toString());
    m_current->setText(m_branch->currentData().toString());
    dialogs().information(this, QStringLiteral("Cambio de destino realizado con exito...!"));
    m_number->setFocus();
    m_number->selectAll();
}

} // namespace orvo::inventory::transfers
