#pragma once

#include "pos/sale/sale.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::sale {

// frmFacturacion: the cashier keys a sale (articles by barcode or reference, client, seller,
// lists and discounts), takes the payment through frmPagosVenta and accepts it. Keyboard first:
// Enter moves on, F2 asks prices, F5 payments, F6 parks, F7 takes a parked sale back, F8
// invoices a dispatch order, F10 accepts, F12 cancels the sale.
class SaleScreen : public QWidget {
    Q_OBJECT
public:
    enum Column {
        kList,
        kBarcode,
        kName,
        kQuantity,
        kPrice,
        kDiscount,
        kCharged,
        kTax,
        kTotal,
        kColumnCount
    };

    // `printer` is the register's fiscal printer thread (the process's one when null).
    SaleScreen(QSqlDatabase db, shell::SessionContext& ctx,
               fiscal::FiscalPrinterThread* printer = nullptr, QWidget* parent = nullptr);
    ~SaleScreen() override;

    const SaleDraft& draft() const { return m_draft; }
    QTableWidget* grid() const { return m_grid; }

    // The actions, as the buttons and keys run them.
    void enterArticle();
    void enterClient();
    void enterSeller();
    void chooseClient();
    void chooseSeller();
    void openPayments();
    void accept();
    void park();
    void takeBack();
    void invoiceDispatchOrder();
    void cancelSale();
    void deleteSelectedLine();
    void switchList();
    void changePrice();
    void applyDiscount();
    void priceQuery();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildUi();
    void refresh();
    void clearForNextSale();
    void showClient();
    bool authorise(QString& who);
    SalePrinter* printer();
    bool printInvoice(long long number, bool contingency, const Decimal& change);

    QSqlDatabase m_db;
    shell::SessionContext& m_ctx;
    fiscal::FiscalPrinterThread* m_printerThread;
    std::unique_ptr<ThreadSalePrinter> m_printer;
    SaleDraft m_draft;

    QLineEdit* m_barcode = nullptr;
    QLineEdit* m_client = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_seller = nullptr;
    QLabel* m_sellerName = nullptr;
    QTableWidget* m_grid = nullptr;
    QCheckBox* m_exempt = nullptr;
    QCheckBox* m_contingency = nullptr;
    QRadioButton* m_cash = nullptr;
    QRadioButton* m_credit = nullptr;
    QLineEdit* m_creditDays = nullptr;
    QLineEdit* m_discount = nullptr;
    QLabel* m_merchandise = nullptr;
    QLabel* m_discountTotal = nullptr;
    QLabel* m_taxBase = nullptr;
    QLabel* m_tax = nullptr;
    QLabel* m_total = nullptr;
    QLineEdit* m_paid = nullptr;
    QLineEdit* m_change = nullptr;
};

// Sends a paper invoice (or credit note) to ImpresoraFactura, a printer by name or a .pdf path,
// in NumeroCopias copies; false when no destination is configured or the printer is unknown.
bool printPaperInvoice(const QString& html, bool largeFormat, long long number);

// Adds frmFacturacion to the ScreenRegistry.
void registerSaleScreens();

} // namespace orvo::pos::sale
