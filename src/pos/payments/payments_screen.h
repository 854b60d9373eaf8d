#pragma once

#include "common/decimal/decimal.h"
#include "pos/payments/payment_rules.h"

#include <QDialog>
#include <QSqlDatabase>
#include <memory>

class QLabel;
class QPushButton;
class QTableWidget;

namespace orvo::pos::card {
class VoucherPrinter;
class VPosPayment;
} // namespace orvo::pos::card

namespace orvo::pos::payments {

struct PaymentsScreenInput {
    Decimal invoiceTotal;
    Decimal exchangeRate;     // the day's rate, for EFECTIVO DOLAR
    bool allowChange = false; // a cash sale may pay more in cash and take change
    bool cashAllowed = true;
    QString currencySymbol;
    QString serie;               // this register, for its card terminal
    QList<PaymentRow> rows;      // shown again: the sale's payments, or its kept terminal payments
    fiscal::igtf::Settings igtf; // the register's IGTF: the dollars pay it on top
};

class PaymentGrid;

// frmPagosVenta: how the client pays the invoice being keyed, one grid row per payment. Card
// payments through the terminal are made and voided from here. Keyboard first: choosing a way
// proposes the balance, Enter moves along the row and on to the next one, and at the end of a row
// that leaves nothing to pay it accepts; F10 accepts, Escape leaves. Accepted when the rows are
// complete and cover the invoice; the sale then takes rows() and amountPaid(). Left without
// accepting, rows() still holds the payments charged at the terminal: the sale keeps them.
class PaymentsScreen : public QDialog {
    Q_OBJECT
public:
    enum Column {
        kWay,
        kAmount,
        kCounted, // what the row counts in local currency
        kDocument,
        kLot,
        kBank,
        kPointOfSale,
        kAction,
        kColumnCount
    };

    PaymentsScreen(QSqlDatabase db, PaymentsScreenInput input,
                   card::VoucherPrinter* voucherPrinter = nullptr, QWidget* parent = nullptr);
    ~PaymentsScreen() override;

    QList<PaymentRow> rows() const; // the rows with a payment way
    Decimal amountPaid() const;
    // The invoice's total and, with IGTF, the tax on what the dollar rows pay of it.
    fiscal::igtf::Owed owed() const;
    Decimal balance() const; // invoice total + IGTF − paid
    QTableWidget* grid() const;

    void accept() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    PaymentRow rowAt(int row) const;
    int addEmptyRow();
    void fillRow(int row, const PaymentRow& payment);
    void onCellChanged(int row, int column);
    void proposeFor(int row);
    void refreshTotals();
    // Enter on (or committing) a cell: on to the next cell the row's way needs.
    void enterPressed(int row, int column);
    QList<int> cellsOf(const PaymentRow& row) const;
    void editCell(int row, int column);
    int emptyRow();
    bool paysAtTerminal(const PaymentRow& row) const;
    void runAction(QPushButton* button);
    void runActionAt(int row);
    void payThroughTerminal(int row);
    bool voidTerminalPayment(int row);
    void deleteCurrentRow();
    void voidBySequence();
    void reprintLastVoucher();
    void setTerminalState(int row, TerminalState state);
    QString cell(int row, int column) const;
    void setCell(int row, int column, const QString& text);
    std::unique_ptr<card::VPosPayment> terminal() const;

    QSqlDatabase m_db;
    PaymentsScreenInput m_input;
    card::VoucherPrinter* m_voucherPrinter;
    QString m_terminalAccount; // empty when the register cannot pay through a terminal
    PaymentGrid* m_grid;
    QLabel* m_total;
    QLabel* m_paid;
    QLabel* m_balance;
    QLabel* m_igtf = nullptr;
    QLabel* m_currency;
    bool m_filling = false;
};

} // namespace orvo::pos::payments
