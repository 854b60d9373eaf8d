#pragma once

#include "pos/returns/return_screen_base.h"
#include "pos/sale/sale_draft.h"

class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::pos::returns {

// frmCambiosDeMercancia: goods of an invoice of this register come back and others go out.
class ExchangeScreen : public ReturnScreenBase {
public:
    ExchangeScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                   fiscal::FiscalPrinterThread* printer, QWidget* parent = nullptr);
    ~ExchangeScreen() override;

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

    sale::SaleDraft m_taken;

    QTableWidget* m_backGrid = nullptr;
    QLineEdit* m_article = nullptr;
    QTableWidget* m_takenGrid = nullptr;
    QLabel* m_total = nullptr;
    QLabel* m_change = nullptr;
};

} // namespace orvo::pos::returns
