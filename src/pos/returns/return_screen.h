#pragma once

#include "pos/returns/return_draft.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::returns {

// frmDevolucion: a client brings back goods of an invoice of this register.
class ReturnScreen : public QWidget {
public:
    // `printer` null: the register's printer thread.
    ReturnScreen(QSqlDatabase db, const shell::SessionContext& ctx,
                 fiscal::FiscalPrinterThread* printer, QWidget* parent = nullptr);
    ~ReturnScreen() override;

    // Where paper credit notes go (tests); by default ImpresoraFactura.
    void setPaperPrinter(sale::PaperPrinter paper) { m_paper = std::move(paper); }

private:
    void buildUi();
    void loadInvoice();
    void returnEverything();
    void addArticle();
    void deleteLine();
    void accept();
    void clearAll();
    void refresh();
    sale::SalePrinter* printer();

    QSqlDatabase m_db;
    const shell::SessionContext& m_ctx;
    fiscal::FiscalPrinterThread* m_printerThread;
    std::unique_ptr<sale::SalePrinter> m_printer;
    sale::PaperPrinter m_paper;
    ReturnDraft m_draft;
    bool m_loaded = false;

    QLineEdit* m_invoice = nullptr;
    QLabel* m_client = nullptr;
    QLabel* m_clientType = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
    QCheckBox* m_contingency = nullptr;
    QPushButton* m_all = nullptr;
    QPushButton* m_delete = nullptr;
    QPushButton* m_accept = nullptr;
};

// Sends a paper document to ImpresoraFactura (a printer by name or a .pdf path).
bool printPaperDocument(const QString& html, bool large, long long number);

// Adds frmDevolucion and frmCambiosDeMercancia to the ScreenRegistry.
void registerReturnScreens();

} // namespace orvo::pos::returns
