#pragma once

#include "pos/fiscal/commands.h"
#include "pos/fiscal/protocol/replies.h"
#include "pos/fiscal/protocol/status.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

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
    // What the open document held before the first of a run of commands: a lost ACK on an item
    // or a payment is checked against the printer's count from there.
    struct OpenCounts {
        int articles = 0; // thousandths
        int payments = 0;
    };
    // Several commands in order; stops at the first refusal. Items and payments whose ACK is lost
    // are checked against the open document (S2) before anything is sent again.
    virtual bool sendCommands(const QList<QByteArray>& commands, OpenCounts from) = 0;
    bool sendCommands(const QList<QByteArray>& commands) { return sendCommands(commands, {}); }
    // A status read (S1, S2, S3, SV): the reply's data.
    virtual std::optional<QByteArray> readStatusData(const QByteArray& command) = 0;
    // A report upload (U0X, U0Z, U2A…, U3A…): one data block per record.
    virtual std::optional<QList<QByteArray>> upload(const QByteArray& command) = 0;
    // How long the printer may take over `command` before its ACK, and between probes while it
    // is busy.
    virtual int ackWaitMs(const QByteArray& command) const = 0;
    virtual int busyPollMs() const = 0;

    // --- after every call ---
    int status() const { return m_status; }
    int error() const { return m_error; }
    bool lastCallFailed() const { return m_failed; }
    // A failure after which nobody knows what the printer did (no answer, a garbled reply): it
    // must be asked before anything is sent again.
    bool lastCallUnclear() const;
    // The last probe found the printer busy: it answers ENQ but takes nothing else yet.
    bool busy() const;
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

    // Answers a probe, waiting while the printer says it is busy (a Z, a slow line) for at most
    // `timeoutMs`. False when it does not answer or is still busy.
    bool waitWhileBusy(int timeoutMs);

    bool printXReport();
    // A Z whose ACK is lost is checked against the printer's Z counter once it is ready again.
    bool printZReport();
    bool printFiscalMemoryByDate(const QDate& from, const QDate& to, bool detailed);
    bool printFiscalMemoryByNumber(int from, int to, bool detailed);
    // Polls the status until the printer is idle and not busy, or the time is up.
    bool waitUntilReady(int timeoutMs, int pollMs = 500);

    // An invoice or a credit note, true once the printer has numbered it. Nothing is printed
    // twice: when the document has its number and the printer's own counter already reached it,
    // an earlier attempt printed it (alreadyPrinted() tells). A document an earlier attempt left
    // open is completed when it holds payments (the printer refuses to cancel it), cancelled
    // otherwise. After an unclear failure (a lost ACK, silence, a busy printer) the printer is
    // asked (ENQ while busy, then S2 and S1) whether the document printed, is still open (then
    // it is completed or cancelled) or never started. With IGTF the document closes with "199".
    bool printDocument(const FiscalDocument& document);
    bool alreadyPrinted() const { return m_alreadyPrinted; }
    // A non-fiscal document ("COPIA CLIENTE", card vouchers): one command per line, the last
    // one closes it.
    bool printNonFiscal(const QStringList& lines);
    // The two-line customer display; each line padded or cut to 20 characters.
    bool showOnDisplay(const QString& upper, const QString& lower);
    // Header lines 1..8 and footer lines 91..98 (the printer accepts them right after a Z).
    bool programLines(const QList<ProgrammedLine>& lines);
    // Tax rates 1..3 in hundredths of a percent; refused before their effective date.
    bool updateTaxRates(const QList<int>& hundredths, const QDate& effectiveDate);
    // Names the payment means the register uses (PE), e.g. {20, "EFECTIVO DOLAR"}.
    bool nameMeans(const QList<std::pair<int, QString>>& names);
    // IGTF on (flag 50 = 01, the rate as PT's fourth group, the other rates kept) or off. The
    // rates are accepted right after a Z only.
    bool setIgtf(bool enabled, int rateHundredths);
    // Whether the printer has IGTF enabled (S3 flag 50).
    std::optional<bool> igtfEnabled();

protected:
    void setOutcome(int status, int error, bool failed) {
        m_status = status;
        m_error = error;
        m_failed = failed;
        m_message.clear();
    }
    void setFailed(int error) { setOutcome(m_status, error, true); }
    // A failure the program words itself.
    void setFailed(const QString& text) {
        setOutcome(m_status, protocol::kErrorInternal, true);
        m_message = text;
    }

private:
    // The outcome of a call, kept while the printer is asked what happened.
    struct Outcome {
        int status = 0;
        int error = 0;
        bool failed = false;
        QString message;
    };
    Outcome outcome() const { return {m_status, m_error, m_failed, m_message}; }
    bool restore(const Outcome& o) {
        setOutcome(o.status, o.error, o.failed);
        m_message = o.message;
        return !o.failed;
    }
    // Completes the document left open in the printer: the payments it has not taken yet (when
    // it is `document`), what is left with the rest means, then "199" when the printer keeps it
    // open. False when the printer refuses or stops answering.
    bool completeOpenDocument(const FiscalDocument* document, int restMeans);
    // After the commands of `document` were sent (or an unclear failure): ends the document as
    // the printer allows and tells from the printer's counter (`before` + 1) whether it printed.
    bool settleDocument(const FiscalDocument& document, int before);
    template <class Parse>
    auto readParsed(const QByteArray& command, Parse parse) -> decltype(parse(QByteArray()));
    std::optional<protocol::ZReport> uploadReport(const QByteArray& command);
    int m_status = 0;
    int m_error = 0;
    bool m_failed = false;
    QString m_message;
    bool m_alreadyPrinted = false;
};

} // namespace orvo::pos::fiscal
