#pragma once

#include "pos/sale/sale_draft.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>
#include <functional>
#include <optional>

// The sale's actions. Each one that writes opens and commits its own transaction; the printer and
// the paper invoice come after the commit.
namespace orvo::pos::sale {

// A draft set up for this register and the server's date.
SaleDraft newDraft(const QSqlDatabase& db, const shell::SessionContext& ctx);

// The number the next invoice of this register will take (the caption of the sale screen).
long long nextInvoiceNumberPreview(const QSqlDatabase& db, const shell::SessionContext& ctx);

// Looks the typed text up (barcode, or the start of reference+brand+size+colour) and returns the
// candidates with their model's highest prices.
QList<ArticlePrices> lookupArticles(const QSqlDatabase& db, const QString& text);
// Reads what the cashier typed in the article field: "6*7591234000018" (or "1,5*..." for goods
// sold by weight) is the quantity before the '*' and the code after it; a text without '*' is the
// code, of `otherwise` units. Throws UserError for a quantity that is not a number.
std::pair<Decimal, QString> splitQuantity(const QString& typed, const Decimal& otherwise);

// Adds an article found by lookupArticles.
const SaleLine& addArticle(SaleDraft& draft, const ArticlePrices& article,
                           const Decimal& quantity = Decimal(1));

// The client by code; nullopt when not registered (the screen offers to register it). The draft
// refuses a client type the register may not invoice when it is set (SaleDraft::setClient).
std::optional<SaleClient> findClient(const QSqlDatabase& db, const QString& code);
// The seller by code or identity number; refuses an inactive or unknown one.
SaleSeller findSeller(const QSqlDatabase& db, const QString& code);

// F2: what an article costs on each list and how much is left.
struct PriceQuote {
    ArticlePrices article;
    SaleLine line; // as it would be sold now to the draft's client
};
QList<PriceQuote> priceQuery(const QSqlDatabase& db, const SaleDraft& draft, const QString& text);

// Removes a line, logging it in MOVVENTASBORRADAS with who authorised it.
void deleteLine(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                int index, const QString& authorisedBy);
// Drops the whole sale, every line logged as deleted; the draft is cleared.
// A supervisor's user and password, as typed in the authorisation dialog.
struct Supervisor {
    QString user;
    QString password;
};

// Whether a price change must be authorised by a supervisor: the register asks for it, or the
// cashier is not an administrator.
bool priceChangeNeedsAuthorisation(const QSqlDatabase& db, const shell::SessionContext& ctx);
// Changes the unit price of line `index`. Refused when the register may not change prices, or
// when an authorisation is needed and `supervisor` is missing, wrong or not an administrator.
void changeLinePrice(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                     int index, const Decimal& price, const std::optional<Supervisor>& supervisor);

void cancelSale(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                const QString& authorisedBy);

// --- parked sales ---
struct ParkedSale {
    long long numero = 0;
    QDateTime fecha;
    QString cliente;
    QString clienteNombre;
    QString vendedorNombre;
    Decimal totalVenta;
};
// Parks the draft (HISTVENTAS/HISTMOVVENTAS) and clears it; returns the parked number.
long long parkSale(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft);
QList<ParkedSale> parkedSales(const QSqlDatabase& db, const QString& serie);
// Loads a parked sale into an empty draft and deletes the parked copy. A client the register may
// not invoice is refused and the sale stays parked.
void takeBackParked(const QSqlDatabase& db, const shell::SessionContext& ctx, long long numero,
                    SaleDraft& draft);

// --- dispatch orders ---
struct DispatchOrderSummary {
    long long numero = 0;
    QString cliente;
    QDateTime fecha;
    Decimal totalMercancia;
    QString observacion;
    bool exenta = false;
};
// The current period of dispatch orders: the first day of the last DiasFacturarOrdenDespacho
// days (all time when 0).
QDate dispatchOrdersSince(const QSqlDatabase& db, const shell::SessionContext& ctx);
// Open orders (Status 1) of the current period.
QList<DispatchOrderSummary> openDispatchOrders(const QSqlDatabase& db,
                                               const shell::SessionContext& ctx);
// Fills an empty draft with the order's client, lines and exempt flag; refuses, leaving the draft
// as it was, an order whose client the register may not invoice.
void loadDispatchOrder(const QSqlDatabase& db, const shell::SessionContext& ctx, long long numero,
                       SaleDraft& draft);

// --- accept ---
struct AcceptResult {
    enum class Status {
        Saved,
        // The invoice would take the day over the printer's maximum: the screen says so, runs
        // forcedZ() and accepts again with forcedZDone.
        NeedsForcedZ
    };
    Status status = Status::Saved;
    long long number = 0;
    Decimal total;
    Decimal paid; // what the client handed over (the total on credit)
    Decimal change;
    Decimal igtf; // paid on top of the total on the dollars
};

// Whether this register prints its invoices on a fiscal printer.
bool printsFiscally(const shell::SessionContext& ctx);

// Checks the day, the sale and the printer, then saves the invoice in one transaction: number,
// VENTAS, MOVVENTAS (equal lines merged), stock of kept articles, payments or the receivable,
// totals, the day's accumulated amount. Saved "pending print". A client the register may not
// invoice (as the register is configured now) is refused before anything is written. `printer`
// may be null only for a register that does not print fiscally. `alsoInTransaction` writes what
// belongs with the invoice (the return of an exchange) right after the transaction opens;
// `withNumber` writes what needs the invoice's number (a conversion's log) before the commit.
AcceptResult acceptSale(const QSqlDatabase& db, const shell::SessionContext& ctx,
                        const SaleDraft& draft, SalePrinter* printer, bool forcedZDone = false,
                        const std::function<void()>& alsoInTransaction = {},
                        const std::function<void(long long number)>& withNumber = {});

// The forced Z: prints it and waits; false with the printer's error text when it failed.
bool forcedZ(SalePrinter& printer);

struct PrintResult {
    bool fiscalPrinted = false;
    bool paperPrinted = false;
    QString error; // empty when everything went out
    bool ok() const { return error.isEmpty(); }
};

// What printSavedDocument needs to know of one saved document.
struct SavedDocumentPrint {
    QString failurePrefix; // "La factura 12" / "La devolución 3"
    std::function<fiscal::FiscalDocument()> fiscalDocument;
    std::function<QString(bool largeFormat)> paperHtml;
    std::function<void()> markPrinted; // runs inside its own transaction
};

// The print after the commit shared by invoices and credit notes: the fiscal printer, or paper for
// a contingency document or a register without fiscal printer; marked printed only when it went
// out, so a failure leaves it pending and it can be printed again.
PrintResult printSavedDocument(const QSqlDatabase& db, const shell::SessionContext& ctx,
                               bool contingency, SalePrinter* printer, const PaperPrinter& paper,
                               long long number, const SavedDocumentPrint& document);

// The customer display's two lines after a sale; by default "Total: " and "Cambio: ".
struct CustomerDisplay {
    QString upper;
    QString lower;
};

// After the commit: the fiscal print (or the paper invoice of a contingency sale or a register
// without fiscal printer), the mark "printed", the customer display. A failure leaves the invoice
// pending print; printSale can be called again for it and never sells anything twice.
PrintResult printSale(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                      bool contingency, SalePrinter* printer, const PaperPrinter& paper,
                      const Decimal& change = Decimal(),
                      const std::optional<CustomerDisplay>& display = std::nullopt);

// Invoices of this register saved but not printed yet.
QList<long long> pendingPrints(const QSqlDatabase& db, const QString& serie);
// Whether a saved invoice (VENTAS) or return (DEVVENTAS) was made on paper while the printer was
// out: it is never printed as a fiscal document afterwards.
bool isContingency(const QSqlDatabase& db, const QString& table, const QString& numberColumn,
                   const QString& serie, long long number);

// Prints the pending documents in order and stops at the first failure, whose result it returns;
// the ones after it stay pending so nothing goes out of order. Otherwise says where they went.
// A document numbered up to `printerLast` (the fiscal printer's last one of its kind) went out
// before the program could mark it (it was stopped between the two): it is only marked, never
// printed a second time.
PrintResult printPending(const QList<long long>& numbers, long long printerLast,
                         const std::function<void(long long number)>& markOnly,
                         const std::function<PrintResult(long long number)>& print);
// The fiscal printer's last invoice (or credit note) when documents are pending on a register
// that prints fiscally; 0 otherwise, or when the printer does not answer (the print then says why).
long long printerLastDocument(const shell::SessionContext& ctx, SalePrinter* printer,
                              bool creditNotes, const QList<long long>& pending);

// The invoices of this register left pending, printed again before the next sale.
PrintResult printPendingSales(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              SalePrinter* printer, const PaperPrinter& paper);

} // namespace orvo::pos::sale
