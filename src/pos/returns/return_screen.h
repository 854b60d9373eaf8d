#pragma once

#include "pos/returns/return_screen_base.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace orvo::pos::returns {

// frmDevolucion: a client brings back goods of an invoice of this register.
class ReturnScreen : public ReturnScreenBase {
public:
    // `printer` null: the register's printer thread.
    ReturnScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                 fiscal::FiscalPrinterThread* printer, QWidget* parent = nullptr);
    ~ReturnScreen() override;

private:
    void buildUi();
    void loadInvoice() override;
    void refresh() override;
    bool contingency() const override { return m_draft.contingency(); }
    void deleteLine();
    void accept();
    void clearAll();

    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
    QCheckBox* m_contingency = nullptr;
    QPushButton* m_all = nullptr;
    QPushButton* m_delete = nullptr;
    QPushButton* m_accept = nullptr;
};

// Adds frmDevolucion and frmCambiosDeMercancia to the ScreenRegistry.
void registerReturnScreens();

} // namespace orvo::pos::returns
