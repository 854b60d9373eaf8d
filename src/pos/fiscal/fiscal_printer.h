#pragma once

#include "pos/fiscal/commands.h"
#include "pos/fiscal/protocol/replies.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace orvo::pos::fiscal {

// The last invoice and credit note the printer numbered.
struct DocumentNumbers {
    int lastInvoice = 0;
    int lastCreditNote = 0;
};

// A fiscal printer. Subclasses speak a line (open/close and the five exchanges below); the
// operations the program uses are built here on those exchanges. Every call leaves the status
// number, the error number and the "last call failed" flag behind, as the printer library did.
// Not thread-safe: a printer belongs to one thread (see FiscalPrinterThread).
class FiscalPrinter {
public:
    virtual ~FiscalPrinter() = default;

    // --- the line ---
    virtual bool open(const QString& port) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual QString portName() const = 0;
    // Whether open() failed because another program holds the port.
    virtual bool portBusy() const = 0;
    // Whether the printer was unplugged while open: it must be opened again.
    virtual bool lineLost() { return false; }

    // Status probe (ENQ): updates status() and error(); false when there is no answer.
    virtual bool probe() = 0;
    // One command; true when the printer accepted it.
    virtual bool sendCommand(const QByteArray& command) = 0;
    // Several commands in order; stops at the first refusal. Items and payments whose ACK is lost
    // are checked against the open document before anything is sent again.
    virtual bool sendCommands(const QList<QByteArray>& commands) = 0;
    // A status read (S1, S2, S3, SV): the reply's data.
    virtual std::optional<QByteArray> readStatusData(const QByteArray& command) = 0;
    // A report upload (U0X, U0Z, U2A…, U3A…): one data block per record.
    virtual std::optional<QList<QByteArray>> upload(const QByteArray& command) = 0;

    // --- after every call ---
    int status() const { return m_status; }
    int error() const { return m_error; }
    bool lastCallFailed() const { return m_failed; }
    // What went wrong, in the user's words (empty after a good call).
    QString errorText() const;

    // --- operations ---
    // Answers a probe.
    bool check() { return probe(); }
    std::optional<protocol::S1Status> readS1();
    std::optional<protocol::S2Document> readS2();
    std::optional<protocol::S3Settings> readS3();
    // The open day's counters (U0X): last invoice and last credit note.
    std::optional<DocumentNumbers> lastDocumentNumbers();
    std::optional<protocol::ZReport> openDay();
    // The last Z closed (U0Z) and its number.
    std::optional<protocol::ZReport> lastZ();
    std::optional<int> lastZNumber();
    // The Z records of a range (U3A by numbers, U2A by dates).
    std::optional<QList<protocol::ZReport>> zReportsByNumber(int from, int to);
    std::optional<QList<protocol::ZReport>> zReportsByDate(const QDate& from, const QDate& to);

    bool printXReport();
    bool printZReport();
    bool printFiscalMemoryByDate(const QDate& from, const QDate& to, bool detailed);
    bool printFiscalMemoryByNumber(int from, int to, bool detailed);
    // Polls the status until the printer is ready (status 4) or the time is up.
    bool waitUntilReady(int timeoutMs, int pollMs = 500);

    // An invoice or a credit note. On a refusal the open document is cancelled when the printer
    // still allows it; the document is then not printed.
    bool printDocument(const FiscalDocument& document);
    // A non-fiscal document ("COPIA CLIENTE", card vouchers): one command per line, the last
    // one closes it.
    bool printNonFiscal(const QStringList& lines);
    // The two-line customer display; each line padded or cut to 20 characters.
    bool showOnDisplay(const QString& upper, const QString& lower);
    // Header lines 1..8 and footer lines 91..98 (the printer accepts them right after a Z).
    bool programLines(const QList<ProgrammedLine>& lines);
    // Tax rates 1..3 in hundredths of a percent; refused before their effective date.
    bool updateTaxRates(const QList<int>& hundredths, const QDate& effectiveDate);

protected:
    void setOutcome(int status, int error, bool failed) {
        m_status = status;
        m_error = error;
        m_failed = failed;
    }
    void setFailed(int error) { setOutcome(m_status, error, true); }

private:
    template <class Parse>
    auto readParsed(const QByteArray& command, Parse parse) -> decltype(parse(QByteArray()));
    std::optional<protocol::ZReport> uploadReport(const QByteArray& command);
    int m_status = 0;
    int m_error = 0;
    bool m_failed = false;
};

} // namespace orvo::pos::fiscal
