#pragma once

#include "pos/returns/return_draft.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"

#include <QHash>
#include <QSqlDatabase>
#include <QWidget>
#include <functional>
#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;
class QVBoxLayout;

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}
namespace orvo::pos::sale {
class DayStateBanner;
}

namespace orvo::pos::returns {

// What the return and the exchange screens share: the day's state said at once, the invoice that
// goods come back from with its client and its lines (sold, returned, what is left), the keying
// row of the goods coming back (code, quantity, whole invoice) wired to the Enter keys, the line
// that says what the last document gave back, and the printer the documents go to.
class ReturnScreenBase : public QWidget {
public:
    ~ReturnScreenBase() override;

    // Where paper documents go (tests); by default ImpresoraFactura.
    void setPaperPrinter(sale::PaperPrinter paper) { m_paper = std::move(paper); }

protected:
    // `printer` null: the register's printer thread.
    ReturnScreenBase(QSqlDatabase db, const shell::SessionContext& ctx,
                     fiscal::FiscalPrinterThread* printer, QWidget* parent);

    // Room for the invoice's lines and what comes back, descriptions whole.
    QSize sizeHint() const override { return {1100, 760}; }

    // Enter on an empty code: the goods coming back are all keyed.
    virtual void returnedGoodsKeyed() {}
    // Reads the invoice typed in TxtFactura (nothing when none is typed) and hands it to
    // takeInvoice().
    virtual void loadInvoice() = 0;
    virtual void refresh() = 0;
    // A contingency document prints on paper only.
    virtual bool contingency() const = 0;

    void takeInvoice(ReturnableInvoice invoice);
    // The invoice's lines with what is left of each once this return takes its part.
    void refreshInvoiceLines();
    // Enter on a line of the invoice: its code and what is left go to the keying row.
    void pickInvoiceLine(int row);
    void returnEverything();
    void addReturned();
    // Empties the draft and the invoice fields; the quantity goes back to 1.
    void clearInvoice();
    bool confirmDeleteLine();
    sale::SalePrinter* printer();

    // Buttons are made in the order Tab visits them: the screen creates cmdDevTotal and
    // cmdCancelar through these when their turn comes.
    QPushButton* button(const char* name, const QString& text);
    // A button that runs `action` (its refusals shown), also on the function key `key`.
    QPushButton* actionButton(const char* name, const QString& text, Qt::Key key,
                              std::function<void()> action);
    // The function keys run their buttons' actions, except while a document is saved and printed.
    void keyPressEvent(QKeyEvent* event) override;
    QPushButton* wholeInvoiceButton();
    QPushButton* cancelButton();
    // The day's banner, the invoice form, the invoice's lines and the keying row, the latter
    // headed by `codeCaption`.
    void addInvoiceRows(QVBoxLayout* layout, const QString& codeCaption, QPushButton* wholeInvoice);
    bool eventFilter(QObject* watched, QEvent* event) override;
    static QTableWidgetItem* cell(const QString& text, bool right = false);
    // A read-only grid whose description column (`stretch`) takes the room.
    static void layOutGrid(QTableWidget* grid, int stretch);

    QSqlDatabase m_db;
    const shell::SessionContext& m_ctx;
    fiscal::FiscalPrinterThread* m_printerThread;
    std::unique_ptr<sale::SalePrinter> m_printer;
    sale::PaperPrinter m_paper;
    ReturnDraft m_draft;
    bool m_loaded = false;
    bool m_busy = false; // a document is being saved and printed
    QHash<int, std::function<void()>> m_keys;

    sale::DayStateBanner* m_day = nullptr;
    QTableWidget* m_invoiceLines = nullptr;
    QLabel* m_lastDocument = nullptr;
    QLineEdit* m_invoice = nullptr;
    QLabel* m_client = nullptr;
    QLabel* m_clientType = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
};

// Sends a paper document to ImpresoraFactura (a printer by name or a .pdf path).
bool printPaperDocument(const QString& html, bool large, long long number);

} // namespace orvo::pos::returns
