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
    bool allowChange = false; // a cash sale may pay more and take change
    bool cashAllowed = true;
    QString currencySymbol;
    QString serie; // this register, for its card terminal
};

// frmPagosVenta: how the client pays the invoice being keyed, one grid row per payment. Card
// payments through the terminal are made and voided from here. Accepted when the rows are
// complete and cover the invoice; the sale then takes rows() and amountPaid().
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
    QTableWidget* grid() const { return m_grid; }

    void accept() override;

private:
    PaymentRow rowAt(int row) const;
    int addEmptyRow();
    void onCellChanged(int row, int column);
    void refreshTotals();
    void runAction(QPushButton* button);
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
    QString m_terminalAccount;
    QTableWidget* m_grid;
    QLabel* m_total;
    QLabel* m_paid;
    QLabel* m_balance;
    QLabel* m_currency;
    bool m_filling = false;
};

} // namespace orvo::pos::payments
