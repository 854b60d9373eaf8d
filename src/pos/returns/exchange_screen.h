#pragma once

#include "pos/returns/return_screen_base.h"
#include "pos/sale/sale_draft.h"

class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::pos::returns {

struct ExchangeResult;

// frmCambiosDeMercancia: goods of an invoice of this register come back and others go out. The
// screen works on the difference: "A pagar" is collected through frmPagosVenta (F5), "A devolver"
// is handed back; F10 (cmdAceptar) saves both documents and prints the credit note, then the
// invoice.
class ExchangeScreen : public ReturnScreenBase {
public:
    ExchangeScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                   fiscal::FiscalPrinterThread* printer, QWidget* parent = nullptr);
    ~ExchangeScreen() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void returnedGoodsKeyed() override;

private:
    void buildUi();
    void loadInvoice() override;
    void refresh() override;
    bool contingency() const override { return m_taken.isContingency(); }
    void addTaken();
    void deleteLine();
    void openPayments();
    void accept();
    void clearAll();
    void showDone(const ExchangeResult& r);
    bool releaseTerminalPayments();

    sale::SaleDraft m_taken;
    Decimal m_paidFor; // the difference the accepted payments were taken for

    QTableWidget* m_backGrid = nullptr;
    QLineEdit* m_article = nullptr;
    QTableWidget* m_takenGrid = nullptr;
    QTableWidget* m_lastGrid = nullptr;
    QLabel* m_backTotal = nullptr;
    QLabel* m_total = nullptr;
    QLabel* m_difference = nullptr;
    QLabel* m_change = nullptr;
    QList<QWidget*> m_actions;
};

} // namespace orvo::pos::returns
