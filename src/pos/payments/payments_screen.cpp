#include "pos/payments/payments_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/card/terminal_settings.h"
#include "pos/card/vpos_payment.h"
#include "pos/payments/terminal_payments.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace orvo::pos::payments {

namespace {

const QString kPay = QStringLiteral("     Pagar");
const QString kVoid = QStringLiteral("    Anular");
const QString kRejected = QStringLiteral("Rechazado");
constexpr int kStateRole = Qt::UserRole;
constexpr int kJsonRole = Qt::UserRole + 1;
constexpr int kAuthorisationRole = Qt::UserRole + 2;
constexpr int kIdRole = Qt::UserRole + 3;

bool isEnter(const QKeyEvent* e) {
    return e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter;
}

// Notes that an editor is being closed by Enter, not by the cashier moving elsewhere (the view
// closes an editor the same way when the current row changes).
class EnterDelegate : public QStyledItemDelegate {
public:
    explicit EnterDelegate(bool* enterFlag, QObject* parent)
        : QStyledItemDelegate(parent), m_enter(enterFlag) {}

protected:
    bool eventFilter(QObject* editor, QEvent* event) override {
        if (event->type() == QEvent::KeyPress && isEnter(static_cast<QKeyEvent*>(event)))
            *m_enter = true;
        return QStyledItemDelegate::eventFilter(editor, event);
    }

private:
    bool* m_enter;
};

// A list picked by typing: the letters typed in a row (spaces too, which would open a plain
// combo's list) choose the first item they start.
class TypedCombo : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void keyPressEvent(QKeyEvent* e) override {
        const QString text = e->text();
        if (text.isEmpty() || !text.at(0).isPrint() || (e->modifiers() & Qt::ControlModifier)) {
            QComboBox::keyPressEvent(e);
            return;
        }
        if (!m_typing.isValid() || m_typing.elapsed() > 1500)
            m_typed.clear();
        m_typing.start();
        m_typed += text;
        for (int i = 0; i < count(); ++i)
            if (itemText(i).startsWith(m_typed, Qt::CaseInsensitive)) {
                setCurrentIndex(i);
                break;
            }
    }

private:
    QString m_typed;
    QElapsedTimer m_typing;
};

// Offers a list in the cells of one column, picked by typing.
class ListDelegate : public EnterDelegate {
public:
    ListDelegate(QStringList items, bool* enterFlag, QObject* parent)
        : EnterDelegate(enterFlag, parent), m_items(std::move(items)) {}
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex&) const override {
        auto* combo = new TypedCombo(parent);
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
    label->setMinimumWidth(
        label->fontMetrics().horizontalAdvance(QStringLiteral("999.999.999,99")));
    return label;
}

QPushButton* button(const QString& name, const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

// The payments grid: Enter that commits a cell, or Enter on a cell not being edited, goes to the
// screen, which decides where the cashier goes next.
class PaymentGrid : public QTableWidget {
public:
    PaymentGrid(int rows, int columns, QWidget* parent) : QTableWidget(rows, columns, parent) {
        setItemDelegate(new EnterDelegate(&enterOnEditor, this));
    }
    std::function<void(int row, int column)> onEnter;
    bool enterOnEditor = false; // set by the delegates

protected:
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override {
        const bool enter = enterOnEditor && hint == QAbstractItemDelegate::SubmitModelCache;
        enterOnEditor = false;
        QTableWidget::closeEditor(editor, hint);
        if (enter && onEnter)
            onEnter(currentRow(), currentColumn());
    }
    void keyPressEvent(QKeyEvent* e) override {
        if (isEnter(e) && state() != EditingState && onEnter) {
            onEnter(currentRow(), currentColumn());
            return;
        }
        QTableWidget::keyPressEvent(e);
    }
};

PaymentsScreen::PaymentsScreen(QSqlDatabase db, PaymentsScreenInput input,
                               card::VoucherPrinter* voucherPrinter, QWidget* parent)
    : QDialog(parent), m_db(std::move(db)), m_input(std::move(input)),
      m_voucherPrinter(voucherPrinter) {
    setObjectName(QStringLiteral("frmPagosVenta"));
    setWindowTitle(QStringLiteral("Pagos de la Factura"));
    m_terminalAccount = card::terminalAccountName(m_db).value_or(QString());

    m_grid = new PaymentGrid(0, kColumnCount, this);
    m_grid->setObjectName(QStringLiteral("SpreadPagosVenta"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Forma de Pago"), QStringLiteral("Monto"),
                                       QStringLiteral("Monto Bs."), QStringLiteral("Documento"),
                                       QStringLiteral("Lote"), QStringLiteral("Banco"),
                                       QStringLiteral("Punto de Venta"), QStringLiteral("Acción")});
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_grid->horizontalHeader()->setSectionResizeMode(kWay, QHeaderView::Stretch);
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    bool* enter = &m_grid->enterOnEditor;
    m_grid->setItemDelegateForColumn(
        kWay, new ListDelegate(paymentWayNames(m_db, m_input.cashAllowed), enter, this));
    m_grid->setItemDelegateForColumn(kBank, new ListDelegate(bankNames(m_db), enter, this));
    m_grid->setItemDelegateForColumn(kPointOfSale,
                                     new ListDelegate(pointOfSaleNames(m_db), enter, this));
    m_grid->onEnter = [this](int row, int column) {
        guarded(this, [&] { enterPressed(row, column); });
    };
    connect(m_grid, &QTableWidget::cellChanged, this, &PaymentsScreen::onCellChanged);

    m_total = amountLabel(QStringLiteral("lblTotalFactura"), this);
    m_paid = amountLabel(QStringLiteral("lblTotalAbonado"), this);
    m_balance = amountLabel(QStringLiteral("lblTotalSaldo"), this);
    m_igtf = amountLabel(QStringLiteral("lblMontoIGTF"), this);
    m_currency = new QLabel(m_input.currencySymbol, this);
    m_currency->setObjectName(QStringLiteral("lblMoneda"));
    QFont big = m_balance->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    for (QLabel* l : {m_total, m_paid, m_balance, m_igtf})
        l->setFont(big);

    auto* totals = new QGridLayout;
    totals->addWidget(new QLabel(QStringLiteral("Total Factura:"), this), 0, 0);
    totals->addWidget(m_total, 0, 1);
    totals->addWidget(m_currency, 0, 2);
    // With IGTF the dollar rows pay 3 % on top: the balance includes it.
    auto* igtfLabel =
        new QLabel(QStringLiteral("IGTF (%1%):").arg(formatAmount(m_input.igtf.percent)), this);
    totals->addWidget(igtfLabel, 1, 0);
    totals->addWidget(m_igtf, 1, 1);
    igtfLabel->setVisible(m_input.igtf.enabled);
    m_igtf->setVisible(m_input.igtf.enabled);
    totals->addWidget(new QLabel(QStringLiteral("Total Abonado:"), this), 2, 0);
    totals->addWidget(m_paid, 2, 1);
    totals->addWidget(new QLabel(QStringLiteral("Saldo:"), this), 3, 0);
    totals->addWidget(m_balance, 3, 1);
    totals->setColumnStretch(3, 1);

    auto* remove = button(QStringLiteral("cmdEliminar"), QStringLiteral("Eliminar"), this);
    auto* voidSequence = button(QStringLiteral("cmdAnular"), QStringLiteral("Anular VPOS"), this);
    auto* reprint = button(QStringLiteral("btnImprimirUltimoVoucherVPos"),
                           QStringLiteral("Imprimir Ultimo Voucher (VPOS)"), this);
    auto* ok = button(QStringLiteral("cmdAceptar"), QStringLiteral("F10 Aceptar"), this);
    auto* cancel = button(QStringLiteral("cmdCancelar"), QStringLiteral("Esc Cancelar"), this);
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

    for (const PaymentRow& r : m_input.rows)
        fillRow(addEmptyRow(), r);
    addEmptyRow();
    refreshTotals();
    resize(1000, 420);
    // The cashier starts on the way of the first row still free, once the screen is up.
    m_grid->setFocus();
    m_grid->setCurrentCell(m_grid->rowCount() - 1, kWay);
    QTimer::singleShot(0, this, [this] {
        if (rowAt(m_grid->currentRow()).isEmpty())
            editCell(m_grid->currentRow(), kWay);
    });
}

PaymentsScreen::~PaymentsScreen() = default;

QTableWidget* PaymentsScreen::grid() const {
    return m_grid;
}

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
    const bool filling = m_filling;
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
    action->setFocusPolicy(Qt::NoFocus); // Enter on the cell runs it
    connect(action, &QPushButton::clicked, this,
            [this, action] { guarded(this, [this, action] { runAction(action); }); });
    m_grid->setCellWidget(row, kAction, action);
    m_filling = filling;
    return row;
}

void PaymentsScreen::fillRow(int row, const PaymentRow& p) {
    m_filling = true;
    setCell(row, kWay, p.way);
    if (p.amount)
        setCell(row, kAmount,
                formatAmount(*p.amount) +
                    (p.way == kCashDollar ? QStringLiteral(" $") : QString()));
    setCell(row, kCounted,
            p.amount ? formatAmount(countedAmount(p, m_input.exchangeRate)) : QString());
    setCell(row, kDocument, p.document);
    setCell(row, kLot, p.lot);
    setCell(row, kBank, p.bank);
    setCell(row, kPointOfSale, p.pointOfSale);
    QTableWidgetItem* way = m_grid->item(row, kWay);
    way->setData(kJsonRole, p.merchantJson);
    way->setData(kAuthorisationRole, p.authorisation);
    way->setData(kIdRole, p.idPayment);
    setTerminalState(row, p.terminal);
    m_filling = false;
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
    const QTableWidgetItem* way = m_grid->item(row, kWay);
    r.terminal = TerminalState(way->data(kStateRole).toInt());
    r.merchantJson = way->data(kJsonRole).toString();
    r.authorisation = way->data(kAuthorisationRole).toString();
    r.idPayment = way->data(kIdRole).toString();
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

fiscal::igtf::Owed PaymentsScreen::owed() const {
    return amountOwed(rows(), m_input.exchangeRate, m_input.invoiceTotal, m_input.igtf);
}

Decimal PaymentsScreen::balance() const {
    return owed().total - amountPaid();
}

void PaymentsScreen::onCellChanged(int row, int column) {
    if (m_filling)
        return;
    if (column == kWay)
        proposeFor(row);
    if (column == kAmount || column == kWay) {
        const PaymentRow r = rowAt(row);
        setCell(row, kCounted,
                r.amount ? formatAmount(countedAmount(r, m_input.exchangeRate)) : QString());
        if (r.amount)
            setCell(row, kAmount,
                    formatAmount(*r.amount) +
                        (r.way == kCashDollar ? QStringLiteral(" $") : QString()));
    }
    if (column == kWay && row == m_grid->rowCount() - 1 && !cell(row, kWay).isEmpty())
        addEmptyRow();
    refreshTotals();
}

// A way just chosen proposes what is still due, and a card the register's terminal.
void PaymentsScreen::proposeFor(int row) {
    const PaymentRow r = rowAt(row);
    if (r.isEmpty() || r.isApprovedAtTerminal())
        return;
    if (!r.amount) {
        QList<PaymentRow> others;
        for (int i = 0; i < m_grid->rowCount(); ++i)
            if (i != row)
                others << rowAt(i);
        if (const auto amount = proposedAmount(r.way, others, m_input.exchangeRate,
                                               m_input.invoiceTotal, m_input.igtf))
            setCell(row, kAmount, amount->toString(2)); // formatted by onCellChanged
    }
    if (r.isCard() && r.pointOfSale.isEmpty() && !m_terminalAccount.isEmpty() &&
        !card::terminalUrl(m_db, m_input.serie).isEmpty())
        setCell(row, kPointOfSale, m_terminalAccount);
}

void PaymentsScreen::refreshTotals() {
    const Decimal paid = amountPaid();
    const fiscal::igtf::Owed o = owed();
    m_total->setText(formatAmount(m_input.invoiceTotal));
    m_igtf->setText(formatAmount(o.tax));
    m_paid->setText(formatAmount(paid));
    m_balance->setText(formatAmount(o.total - paid));
}

bool PaymentsScreen::paysAtTerminal(const PaymentRow& row) const {
    return row.isCard() && !m_terminalAccount.isEmpty() && row.pointOfSale == m_terminalAccount;
}

// The cells a row's way needs, in the order Enter visits them.
QList<int> PaymentsScreen::cellsOf(const PaymentRow& row) const {
    if (row.way == kCheque || row.way == kDeposit)
        return {kWay, kAmount, kDocument, kBank};
    if (row.isCard()) {
        if (row.isApprovedAtTerminal() || paysAtTerminal(row))
            return {kWay, kAmount, kPointOfSale};
        return {kWay, kAmount, kPointOfSale, kDocument, kLot, kBank};
    }
    return {kWay, kAmount};
}

void PaymentsScreen::editCell(int row, int column) {
    m_grid->setCurrentCell(row, column);
    QTableWidgetItem* item = m_grid->item(row, column);
    if (item && (item->flags() & Qt::ItemIsEditable))
        m_grid->editItem(item);
}

int PaymentsScreen::emptyRow() {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (rowAt(r).isEmpty())
            return r;
    return addEmptyRow();
}

void PaymentsScreen::enterPressed(int row, int column) {
    if (row < 0)
        return;
    if (column == kAction) {
        runActionAt(row);
        return;
    }
    const PaymentRow r = rowAt(row);
    if (r.isEmpty()) {
        // Nothing more to pay: Enter on a free row accepts.
        if (balance().rounded(2) <= Decimal())
            accept();
        return;
    }
    // A terminal payment is made once its point of sale is chosen.
    if (column == kPointOfSale && paysAtTerminal(r) && !r.isApprovedAtTerminal()) {
        payThroughTerminal(row);
        if (!rowAt(row).isApprovedAtTerminal())
            return;
    }
    const QList<int> cells = cellsOf(rowAt(row));
    const qsizetype at = cells.indexOf(column);
    if (at >= 0 && at + 1 < cells.size()) {
        editCell(row, cells.at(at + 1));
        return;
    }
    // The row is done: accept when it settles the invoice, otherwise on to the next payment.
    if (balance().rounded(2) <= Decimal()) {
        accept();
        return;
    }
    editCell(emptyRow(), kWay);
}

void PaymentsScreen::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F10) {
        accept();
        return;
    }
    // Enter belongs to the grid; it never presses a button here.
    if (isEnter(event))
        return;
    QDialog::keyPressEvent(event);
}

void PaymentsScreen::accept() {
    guarded(this, [this] {
        const QList<PaymentRow> list = rows();
        checkRowsComplete(list);
        checkCoversInvoice(list, m_input.exchangeRate, owed().total, m_input.allowChange);
        QDialog::accept();
    });
}

std::unique_ptr<card::VPosPayment> PaymentsScreen::terminal() const {
    return terminalOf(m_db, m_input.serie, m_voucherPrinter);
}

void PaymentsScreen::runAction(QPushButton* action) {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->cellWidget(r, kAction) == action) {
            runActionAt(r);
            return;
        }
}

void PaymentsScreen::runActionAt(int row) {
    const PaymentRow r = rowAt(row);
    if (r.isEmpty() || !r.isCard())
        throw UserError(QStringLiteral("No es posible ejecutar la Accion en este momento."));
    if (m_terminalAccount.isEmpty() || (!paysAtTerminal(r) && !r.isApprovedAtTerminal()))
        throw UserError(QStringLiteral("No es posible ejecutar la Accion en este momento. Solo "
                                       "disponible para Punto VPOS - VERIFONE"));
    if (r.isApprovedAtTerminal()) {
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
    const PaymentRow r = rowAt(row);
    if (!r.amount || *r.amount <= Decimal())
        throw UserError(QStringLiteral("Monto del Pago correspondiente no es Válido."));
    const std::optional<QString> cedula = dialogs().textInput(
        this, QStringLiteral("Información"), QStringLiteral("Cédula de Identidad del titular"));
    if (!cedula)
        return;
    static const QRegularExpression validCedula(QStringLiteral("^[VEJGPvejgp]?-?[0-9]{5,10}$"));
    if (!validCedula.match(cedula->trimmed()).hasMatch())
        throw UserError(
            QStringLiteral("Por favor, especifique un numero de Cedula Identidad valido"));

    auto vpos = terminal();
    const QString id = card::newPaymentId(m_input.serie);
    vpos->setIdPayment(id);
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
    QTableWidgetItem* way = m_grid->item(row, kWay);
    way->setData(kJsonRole, vpos->merchantJson());
    way->setData(kAuthorisationRole, vpos->authorisationNumber());
    way->setData(kIdRole, id);
    setTerminalState(row, TerminalState::Approved);
    refreshTotals();
    if (!vpos->printError().isEmpty())
        dialogs().warning(this, vpos->printError());
}

bool PaymentsScreen::voidTerminalPayment(int row) {
    auto vpos = terminal();
    if (!voidAtTerminal(*vpos, rowAt(row)))
        return false;
    for (int c : {kDocument, kLot, kBank})
        setCell(row, c, QString());
    setCell(row, kPointOfSale, m_terminalAccount); // ready to be paid again
    QTableWidgetItem* way = m_grid->item(row, kWay);
    for (int role : {kJsonRole, kAuthorisationRole, kIdRole})
        way->setData(role, QVariant());
    setTerminalState(row, TerminalState::None);
    refreshTotals();
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
    if (rowAt(row).isCard() && rowAt(row).isApprovedAtTerminal()) {
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
