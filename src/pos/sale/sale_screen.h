#pragma once

#include "pos/sale/sale.h"

#include <QSqlDatabase>
#include <QTableWidget>
#include <QWidget>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;
class QTableWidget;
class QTableWidgetItem;

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::pos::sale {

class DayStateBanner;

// The sale's grid, which tells whether a quantity is being edited in it.
class SaleGrid : public QTableWidget {
public:
    using QTableWidget::QTableWidget;
    bool isEditing() const { return state() == EditingState; }
};

// frmFacturacion: the cashier keys a sale (articles by barcode or reference, client, seller,
// lists and discounts), takes the payment through frmPagosVenta and accepts it. Keyboard first:
// Enter moves on, "6*code" (or txtCantidad) sells six, Enter or a digit on a grid row edits its
// quantity, F2 asks prices, F5 payments, F6 parks, F7 takes a parked sale back, F8 invoices a
// dispatch order, F9 the card terminal's reports, F10 accepts, F12 cancels the sale.
// A payment charged at the card terminal stays with the sale until an invoice uses it or it is
// voided: nothing drops the sale (cancel, park, credit, closing the screen) before that.
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
    // Room for the grid's descriptions and the totals in one row.
    QSize sizeHint() const override { return {1200, 720}; }
    QTableWidget* grid() const { return m_grid; }

    // The actions, as the buttons and keys run them.
    void enterArticle();
    void enterClient();
    void enterSeller();
    void focusSellerOrBarcode();
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
    void terminalMenu();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildUi();
    void buildTerminalActions();
    void refresh();
    void clearForNextSale();
    void showClient();
    void showLastSale(const AcceptResult& r);
    void quantityEdited(QTableWidgetItem* item);
    void paymentsNoLongerStand();
    bool authorise(QString& who);
    // The sale is about to be dropped or replaced: its terminal payments are voided first, when
    // the cashier agrees. False leaves the sale as it is.
    bool releaseTerminalPayments();
    void runTerminalReport(const QString& what);
    fiscal::FiscalPrinterThread& printerThread();
    SalePrinter* printer();
    bool printInvoice(long long number, bool contingency, const Decimal& change);

    QSqlDatabase m_db;
    shell::SessionContext& m_ctx;
    fiscal::FiscalPrinterThread* m_printerThread;
    std::unique_ptr<ThreadSalePrinter> m_printer;
    SaleDraft m_draft;
    bool m_busy = false;
    bool m_refreshing = false;

    DayStateBanner* m_day = nullptr;
    QLineEdit* m_quantityField = nullptr;
    QLineEdit* m_barcode = nullptr;
    QLineEdit* m_client = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_seller = nullptr;
    QLabel* m_sellerName = nullptr;
    SaleGrid* m_grid = nullptr;
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
    QLineEdit* m_igtf = nullptr; // shown when the register charges IGTF
    QLabel* m_lastSale = nullptr;
    QMenu* m_terminalMenu = nullptr;
    QList<QWidget*> m_actions; // disabled while a sale is saved and printed
};

// Sends a paper invoice (or credit note) to ImpresoraFactura, a printer by name or a .pdf path,
// in NumeroCopias copies; false when no destination is configured or the printer is unknown.
bool printPaperInvoice(const QString& html, bool largeFormat, long long number);

// Adds frmFacturacion to the ScreenRegistry.
void registerSaleScreens();

} // namespace orvo::pos::sale
