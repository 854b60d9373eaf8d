#include "pos/payments/payments_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/card/terminal_settings.h"
#include "pos/card/vpos_payment.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::payments {

namespace {

const QString kPay = QStringLiteral("     Pagar");
const QString kVoid = QStringLiteral("    Anular");
const QString kRejected = QStringLiteral("Rechazado");
constexpr int kStateRole = Qt::UserRole;
constexpr int kJsonRole = Qt::UserRole + 1;
constexpr int kAuthorisationRole = Qt::UserRole + 2;

// Offers a list in the cells of one column.
class ListDelegate : public QStyledItemDelegate {
public:
    ListDelegate(QStringList items, QObject* parent)
        : QStyledItemDelegate(parent), m_items(std::move(items)) {}
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex&) const override {
        auto* combo = new QComboBox(parent);
        combo->addItem(QString());
        combo->addItems(m_items);
        return combo;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        auto* combo = static_cast<QComboBox*>(editor);
        combo->setCurrentIndex(std::max(0, combo->findText(index.data().toString())));
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override {
        model->setData(index, static_cast<QComboBox*>(editor)->currentText());
    }

private:
    QStringList m_items;
};

QLabel* amountLabel(const QString& name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QPushButton* button(const QString& name, const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

PaymentsScreen::PaymentsScreen(QSqlDatabase db, PaymentsScreenInput input,
                               card::VoucherPrinter* voucherPrinter, QWidget* parent)
    : QDialog(parent), m_db(std::move(db)), m_input(std::move(input)),
      m_voucherPrinter(voucherPrinter) {
    setObjectName(QStringLiteral("frmPagosVenta"));
    setWindowTitle(QStringLiteral("Pagos de la Factura"));
    m_terminalAccount = card::terminalAccountName(m_db).value_or(QString());

    m_grid = new QTableWidget(0, kColumnCount, this);
    m_grid->setObjectName(QStringLiteral("SpreadPagosVenta"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Forma de Pago"), QStringLiteral("Monto"),
                                       QStringLiteral("Monto Bs."), QStringLiteral("Documento"),
                                       QStringLiteral("Lote"), QStringLiteral("Banco"),
                                       QStringLiteral("Punto de Venta"), QStringLiteral("Acción")});
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_grid->setItemDelegateForColumn(
        kWay, new ListDelegate(paymentWayNames(m_db, m_input.cashAllowed), this));
    m_grid->setItemDelegateForColumn(kBank, new ListDelegate(bankNames(m_db), this));
    m_grid->setItemDelegateForColumn(kPointOfSale, new ListDelegate(pointOfSaleNames(m_db), this));
    connect(m_grid, &QTableWidget::cellChanged, this, &PaymentsScreen::onCellChanged);

    m_total = amountLabel(QStringLiteral("lblTotalFactura"), this);
    m_paid = amountLabel(QStringLiteral("lblTotalAbonado"), this);
    m_balance = amountLabel(QStringLiteral("lblTotalSaldo"), this);
    m_currency = new QLabel(m_input.currencySymbol, this);
    m_currency->setObjectName(QStringLiteral("lblMoneda"));

    auto* totals = new QGridLayout;
    totals->addWidget(new QLabel(QStringLiteral("Total Factura:"), this), 0, 0);
    totals->addWidget(m_total, 0, 1);
    totals->addWidget(m_currency, 0, 2);
    totals->addWidget(new QLabel(QStringLiteral("Total Abonado:"), this), 1, 0);
    totals->addWidget(m_paid, 1, 1);
    totals->addWidget(new QLabel(QStringLiteral("Saldo:"), this), 2, 0);
    totals->addWidget(m_balance, 2, 1);

    auto* remove = button(QStringLiteral("cmdEliminar"), QStringLiteral("Eliminar"), this);
    auto* voidSequence = button(QStringLiteral("cmdAnular"), QStringLiteral("Anular VPOS"), this);
    auto* reprint = button(QStringLiteral("btnImprimirUltimoVoucherVPos"),
                           QStringLiteral("Imprimir Ultimo Voucher (VPOS)"), this);
    auto* ok = button(QStringLiteral("cmdAceptar"), QStringLiteral("Aceptar"), this);
    auto* cancel = button(QStringLiteral("cmdCancelar"), QStringLiteral("Cancelar"), this);
    connect(remove, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { deleteCurrentRow(); }); });
    connect(voidSequence, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { voidBySequence(); }); });
    connect(reprint, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { reprintLastVoucher(); }); });
    connect(ok, &QPushButton::clicked, this, &PaymentsScreen::accept);
    connect(cancel, &QPushButton::clicked, this, &PaymentsScreen::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(remove);
    buttons->addWidget(voidSequence);
    buttons->addWidget(reprint);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_grid);
    layout->addLayout(totals);
    layout->addLayout(buttons);

    addEmptyRow();
    refreshTotals();
    resize(900, 400);
}

PaymentsScreen::~PaymentsScreen() = default;

QString PaymentsScreen::cell(int row, int column) const {
    const QTableWidgetItem* item = m_grid->item(row, column);
    return item ? item->text() : QString();
}

void PaymentsScreen::setCell(int row, int column, const QString& text) {
    const bool filling = m_filling;
    m_filling = true;
    m_grid->item(row, column)->setText(text);
    m_filling = filling;
}

int PaymentsScreen::addEmptyRow() {
    m_filling = true;
    const int row = m_grid->rowCount();
    m_grid->insertRow(row);
    for (int c = 0; c < kColumnCount; ++c) {
        auto* item = new QTableWidgetItem;
        if (c == kCounted || c == kAction)
            item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        if (c == kAmount || c == kCounted)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_grid->setItem(row, c, item);
    }
    m_grid->item(row, kWay)->setData(kStateRole, int(TerminalState::None));
    auto* action = button(QStringLiteral("cmdAccion"), kPay, m_grid);
    connect(action, &QPushButton::clicked, this,
            [this, action] { guarded(this, [this, action] { runAction(action); }); });
    m_grid->setCellWidget(row, kAction, action);
    m_filling = false;
    return row;
}

PaymentRow PaymentsScreen::rowAt(int row) const {
    PaymentRow r;
    r.way = cell(row, kWay).trimmed();
    QString amount = cell(row, kAmount);
    amount.remove(QLatin1Char('$'));
    if (!amount.trimmed().isEmpty())
        r.amount = parseTypedAmount(amount);
    r.document = cell(row, kDocument).trimmed();
    r.lot = cell(row, kLot).trimmed();
    r.bank = cell(row, kBank).trimmed();
    r.pointOfSale = cell(row, kPointOfSale).trimmed();
    r.terminal = TerminalState(m_grid->item(row, kWay)->data(kStateRole).toInt());
    r.merchantJson = m_grid->item(row, kWay)->data(kJsonRole).toString();
    return r;
}

QList<PaymentRow> PaymentsScreen::rows() const {
    QList<PaymentRow> list;
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        const PaymentRow row = rowAt(r);
        if (!row.isEmpty())
            list.append(row);
    }
    return list;
}

Decimal PaymentsScreen::amountPaid() const {
    return totalPaid(rows(), m_input.exchangeRate);
}

void PaymentsScreen::onCellChanged(int row, int column) {
    if (m_filling)
        return;
    if (column == kAmount || column == kWay) {
        const PaymentRow r = rowAt(row);
        QString counted;
        if (r.amount)
            counted = formatAmount(countedAmount(r, m_input.exchangeRate));
        setCell(row, kCounted, counted);
        if (r.amount)
            setCell(row, kAmount,
                    formatAmount(*r.amount) +
                        (r.way == kCashDollar ? QStringLiteral(" $") : QString()));
    }
    if (column == kWay && row == m_grid->rowCount() - 1 && !cell(row, kWay).isEmpty())
        addEmptyRow();
    refreshTotals();
}

void PaymentsScreen::refreshTotals() {
    const Decimal paid = amountPaid();
    m_total->setText(formatAmount(m_input.invoiceTotal));
    m_paid->setText(formatAmount(paid));
    m_balance->setText(formatAmount(m_input.invoiceTotal - paid));
}

void PaymentsScreen::accept() {
    guarded(this, [this] {
        const QList<PaymentRow> list = rows();
        checkRowsComplete(list);
        checkCoversInvoice(totalPaid(list, m_input.exchangeRate), m_input.invoiceTotal,
                           m_input.allowChange);
        QDialog::accept();
    });
}

std::unique_ptr<card::VPosPayment> PaymentsScreen::terminal() const {
    return std::make_unique<card::VPosPayment>(card::loadTerminalSettings(m_db, m_input.serie),
                                               m_voucherPrinter);
}

void PaymentsScreen::runAction(QPushButton* action) {
    int row = -1;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->cellWidget(r, kAction) == action)
            row = r;
    const PaymentRow r = row < 0 ? PaymentRow() : rowAt(row);
    if (r.isEmpty() || !r.isCard())
        throw UserError(QStringLiteral("No es posible ejecutar la Accion en este momento."));
    if (m_terminalAccount.isEmpty() ||
        (r.pointOfSale != m_terminalAccount && r.terminal != TerminalState::Approved))
        throw UserError(QStringLiteral("No es posible ejecutar la Accion en este momento. Solo "
                                       "disponible para Punto VPOS - VERIFONE"));
    if (r.terminal == TerminalState::Approved) {
        if (voidTerminalPayment(row))
            dialogs().information(this, QStringLiteral("Se ha realizado la Anulacion del Pago "
                                                       "satisfactoriamente."));
        else
            dialogs().information(this, QStringLiteral("No ha sido posible Anular el Pago "
                                                       "realizado. Por favor intente nuevamente."));
        return;
    }
    payThroughTerminal(row);
}

void PaymentsScreen::payThroughTerminal(int row) {
    const std::optional<QString> cedula = dialogs().textInput(
        this, QStringLiteral("Información"), QStringLiteral("Cédula de Identidad del titular"));
    if (!cedula)
        return;
    static const QRegularExpression validCedula(QStringLiteral("^[VEJGPvejgp]?-?[0-9]{5,10}$"));
    if (!validCedula.match(cedula->trimmed()).hasMatch())
        throw UserError(
            QStringLiteral("Por favor, especifique un numero de Cedula Identidad valido"));
    const PaymentRow r = rowAt(row);
    if (!r.amount || *r.amount <= Decimal())
        throw UserError(QStringLiteral("Monto del Pago correspondiente no es Válido."));

    auto vpos = terminal();
    vpos->setIdPayment(QStringLiteral("%1-%2").arg(m_input.serie).arg(row + 1));
    vpos->setCedula(cedula->trimmed().toUpper());
    vpos->setCardKind(r.way == kCreditCard ? card::CardKind::Credit : card::CardKind::Debit);
    vpos->setAmount(*r.amount);
    if (!vpos->pay()) {
        setTerminalState(row, TerminalState::Rejected);
        dialogs().information(this, QStringLiteral("El Pago ha sido rechazado por el Banco"));
        return;
    }
    setCell(row, kLot, vpos->lot());
    setCell(row, kDocument, vpos->authorisationNumber());
    setCell(row, kBank, kTerminalBank);
    if (const auto account = accountOfAcquirer(m_db, vpos->bankCode()))
        setCell(row, kPointOfSale, *account);
    m_grid->item(row, kWay)->setData(kJsonRole, vpos->merchantJson());
    m_grid->item(row, kWay)->setData(kAuthorisationRole, vpos->authorisationNumber());
    setTerminalState(row, TerminalState::Approved);
    refreshTotals();
    if (!vpos->printError().isEmpty())
        dialogs().warning(this, vpos->printError());
}

bool PaymentsScreen::voidTerminalPayment(int row) {
    auto vpos = terminal();
    vpos->setAuthorisationNumber(m_grid->item(row, kWay)->data(kAuthorisationRole).toString());
    if (!vpos->voidPayment())
        return false;
    for (int c : {kDocument, kLot, kBank})
        setCell(row, c, QString());
    setCell(row, kPointOfSale, m_terminalAccount); // ready to be paid again
    m_grid->item(row, kWay)->setData(kJsonRole, QVariant());
    m_grid->item(row, kWay)->setData(kAuthorisationRole, QVariant());
    setTerminalState(row, TerminalState::None);
    return true;
}

void PaymentsScreen::setTerminalState(int row, TerminalState state) {
    m_grid->item(row, kWay)->setData(kStateRole, int(state));
    auto* action = static_cast<QPushButton*>(m_grid->cellWidget(row, kAction));
    action->setText(state == TerminalState::Approved   ? kVoid
                    : state == TerminalState::Rejected ? kRejected
                                                       : kPay);
    // An approved payment is the terminal's: its cells are no longer typed over.
    for (int c : {kWay, kAmount, kDocument, kLot, kBank, kPointOfSale}) {
        QTableWidgetItem* item = m_grid->item(row, c);
        const bool editable = state != TerminalState::Approved;
        item->setFlags(editable ? item->flags() | Qt::ItemIsEditable
                                : item->flags() & ~Qt::ItemIsEditable);
    }
}

void PaymentsScreen::deleteCurrentRow() {
    const int row = m_grid->currentRow();
    if (row < 0 || rowAt(row).isEmpty())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea eliminar el item seleccionado?"),
                            QStringLiteral("Eliminar item")))
        return;
    if (rowAt(row).isCard() && rowAt(row).terminal == TerminalState::Approved) {
        if (!voidTerminalPayment(row)) {
            dialogs().information(this, QStringLiteral("No ha sido posible Anular el Pago "
                                                       "realizado. Por favor intente nuevamente."));
            return;
        }
        dialogs().information(
            this, QStringLiteral("Se ha realizado la Anulacion del Pago satisfactoriamente."));
    }
    m_grid->removeRow(row);
    if (m_grid->rowCount() == 0 || !cell(m_grid->rowCount() - 1, kWay).isEmpty())
        addEmptyRow();
    refreshTotals();
}

void PaymentsScreen::voidBySequence() {
    const std::optional<QString> sequence =
        dialogs().textInput(this, QStringLiteral("Información de Secuencia de Pago"),
                            QStringLiteral("Ingrese Número de la Secuencia, (Debe ser Númerico)"));
    if (!sequence)
        return;
    static const QRegularExpression digits(QStringLiteral("^[0-9]+$"));
    if (!digits.match(sequence->trimmed()).hasMatch())
        throw UserError(QStringLiteral("Ingrese Número de la Secuencia, (Debe ser Númerico)"),
                        QStringLiteral("Información de Secuencia de Pago"));
    if (terminal()->voidBySequence(*sequence))
        dialogs().information(this,
                              QStringLiteral("Se ha realizado la Anulacion satisfactoriamente"));
    else
        dialogs().information(this,
                              QStringLiteral("No se ha podido realizar la Anulacion del Pago"));
}

void PaymentsScreen::reprintLastVoucher() {
    bool printed = false;
    try {
        printed = terminal()->reprintLastVoucher();
    } catch (const UserError&) {
        printed = false;
    }
    if (!printed)
        dialogs().information(this,
                              QStringLiteral("Error al momento de Imprimir el Ultimo Voucher"));
}

} // namespace orvo::pos::payments
