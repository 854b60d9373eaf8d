#pragma once

#include "pos/fiscal/commands.h"
#include "pos/fiscal/register_check.h"

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::pos::fiscal {
class FiscalPrinterThread;
}

namespace orvo::shell {
struct SessionContext;
}

// What the sale does after its transaction: the fiscal print, the paper invoice, the customer
// display; and the printer checks it needs before.
namespace orvo::pos::sale {

// The register's fiscal printer as the sale uses it.
class SalePrinter {
public:
    virtual ~SalePrinter() = default;
    virtual fiscal::PrinterFacts facts() = 0;
    // The Z report, then waits until the printer is ready again.
    virtual bool printZ() = 0;
    virtual bool print(const fiscal::FiscalDocument& document) = 0;
    virtual bool display(const QString& upper, const QString& lower) = 0;
    // Why the last call failed, in the user's words.
    virtual QString errorText() const = 0;
};

// The printer on its own thread: each call is queued there and waited for while this thread's
// events keep running, so the screen keeps painting during a forced Z.
class ThreadSalePrinter : public SalePrinter {
public:
    explicit ThreadSalePrinter(fiscal::FiscalPrinterThread& thread) : m_thread(thread) {}
    fiscal::PrinterFacts facts() override;
    bool printZ() override;
    bool print(const fiscal::FiscalDocument& document) override;
    bool display(const QString& upper, const QString& lower) override;
    QString errorText() const override { return m_error; }

private:
    fiscal::FiscalPrinterThread& m_thread;
    QString m_error;
};

// How long a Z may keep the printer busy.
inline constexpr int kZReportTimeoutMs = 60000;

// The paper invoice as a printable document: "crpFacturaPEQ" (small) or "crpFacturaGRD" (large),
// with the payments, and the word "CONTINGENCIA" on a contingency sale.
QString paperInvoiceHtml(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                         bool contingency, bool largeFormat);
// The parts the paper invoice and the paper credit note share: the opening with the company
// (and "CONTINGENCIA"), the lines of `linesTable` (MOVVENTAS, MOVDEVVENTAS) whose `numberColumn`
// is `number`, and the totals.
QString paperHeadHtml(const shell::SessionContext& ctx, bool contingency, bool largeFormat);
QString paperLinesHtml(const QSqlDatabase& db, const QString& linesTable,
                       const QString& numberColumn, long long number, const QString& serie);
QString paperTotalsHtml(const Decimal& merchandise, const Decimal& discount, const Decimal& tax);
// Writes the document as a PDF file, `copies` times one after another (as many pages as a printer
// would give); false when the file cannot be written.
bool writePdf(const QString& html, const QString& path, bool largeFormat, int copies = 1);

// Sends a paper invoice to its destination (a printer, or a PDF file).
using PaperPrinter = std::function<bool(const QString& html, bool largeFormat, long long number)>;
// ImpresoraFactura (shell::settings::invoicePrinter) naming a .pdf file: one file per invoice
// beside it ("factura.pdf" gives "factura_00000012.pdf") holding its `copies`. False for any other
// setting (printers are the screen's).
bool printToPdfSetting(const QString& setting, const QString& html, bool largeFormat,
                       long long number, int copies);

// A line of the customer display: the label, the currency symbol and the amount, padded to its 20
// characters ("Total: ", "Cambio: "). The symbol is left out when the line would not fit.
QString displayLine(const QString& label, const QString& symbol, const Decimal& amount);

} // namespace orvo::pos::sale
