#pragma once

#include "pos/returns/return_draft.h"
#include "pos/sale/sale_draft.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::returns {

// frmCambiosDeMercancia: goods of an invoice of this register come back and others go out.
class ExchangeScreen : public QWidget {
public:
    ExchangeScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                   fiscal::FiscalPrinterThread* printer, QWidget* parent = nullptr);
    ~ExchangeScreen() override;

    void setPaperPrinter(sale::PaperPrinter paper) { m_paper = std::move(paper); }

private:
    void buildUi();
    void loadInvoice();
    void returnEverything();
    void addReturned();
    void addTaken();
    void deleteLine();
    void openPayments();
    void accept();
    void clearAll();
    void refresh();
    sale::SalePrinter* printer();

    QSqlDatabase m_db;
    const shell::SessionContext& m_ctx;
    fiscal::FiscalPrinterThread* m_printerThread;
    std::unique_ptr<sale::SalePrinter> m_printer;
    sale::PaperPrinter m_paper;
    ReturnDraft m_back;
    sale::SaleDraft m_taken;
    bool m_loaded = false;

    QLineEdit* m_invoice = nullptr;
    QLabel* m_client = nullptr;
    QLabel* m_clientType = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QTableWidget* m_backGrid = nullptr;
    QLineEdit* m_article = nullptr;
    QTableWidget* m_takenGrid = nullptr;
    QLabel* m_total = nullptr;
    QLabel* m_change = nullptr;
};

} // namespace orvo::pos::returns
