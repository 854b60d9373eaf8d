#pragma once

#include "pos/fiscal/protocol/frame.h"
#include "tools/fiscal_emulator/fault_control.h"
#include "tools/fiscal_emulator/fiscal_memory.h"
#include "tools/fiscal_emulator/ticket_writer.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QString>
#include <QStringList>

namespace orvo::tools::fiscal {

// The printer itself, without any line: bytes from the host in, bytes to the host out. Keeps the
// document state machine, counters and accumulators, refuses what a fiscal printer refuses, and
// prints to the ticket writer.
class EmulatedPrinter {
public:
    EmulatedPrinter(FiscalMemory memory, QString statePath, TicketWriter tickets,
                    FaultControl control = FaultControl());

    // Bytes received from the host; returns what the printer answers right away.
    QByteArray receive(QByteArrayView bytes);
    // An answer held back (a slow ACK) whose time has come; empty otherwise.
    QByteArray takeDue();
    // Milliseconds until the held-back answer is due; -1 when there is none.
    int msUntilDue() const;

    const FiscalMemory& memory() const { return m_memory; }
    Faults& faults() { return m_faults; }
    // How long the printer stays silent after a Z report.
    void setZBusyMs(int ms) { m_faults.zBusyMs = ms; }
    bool documentOpen() const { return m_doc.kind != DocKind::None; }
    // The last save error of the state file, if any.
    const QString& saveError() const { return m_saveError; }

private:
    enum class DocKind { None, Pending, Invoice, CreditNote, NonFiscal };
    struct Line {
        int rate = 0;        // 0 exempt, 1..3
        qint64 amount = 0;   // cents, signed
        qint64 quantity = 0; // thousandths; 0 for discounts and surcharges
        qint64 price = 0;
        QString text;
        bool item = false;
    };
    struct Payment {
        int means = 0;
        qint64 amount = 0;
    };
    struct Document {
        DocKind kind = DocKind::None;
        QString rif;
        QString name;
        QString refInvoice, refDate, refSerial;
        QStringList extraLines;
        QList<Line> lines;
        QList<Payment> payments;
        bool lastWasSubtotal = false;
        QStringList nonFiscalLines;
    };
    struct Outcome {
        enum Kind { Ack, Nak, Reply, Upload } kind = Ack;
        quint8 error = 0;
        QByteArray data;
        QList<QByteArray> blocks;
    };

    void handleFrame(const pos::fiscal::protocol::WireEvent& e, QByteArray& out);
    void handleControl(char c, QByteArray& out);
    Outcome execute(const QByteArray& cmd);

    Outcome ack() { return {}; }
    Outcome nak(quint8 error) { return {Outcome::Nak, error, {}, {}}; }
    Outcome reply(QByteArray data) { return {Outcome::Reply, 0, std::move(data), {}}; }
    Outcome upload(QList<QByteArray> blocks) { return {Outcome::Upload, 0, {}, std::move(blocks)}; }

    // Commands by family.
    Outcome customerData(const QByteArray& cmd);
    Outcome item(const QByteArray& cmd, int rate, bool creditNote, bool voidIt);
    Outcome adjustment(const QByteArray& cmd);
    Outcome payment(const QByteArray& cmd);
    Outcome nonFiscal(const QByteArray& cmd);
    Outcome program(const QByteArray& cmd);
    Outcome report(const QByteArray& cmd);
    Outcome status(const QByteArray& cmd);

    // Paper and cover refuse anything that prints.
    std::optional<quint8> printingBlocked(bool isItem);
    quint8 sts1() const;
    quint8 sts2() const;

    qint64 documentTotal() const;
    qint64 documentPaid() const;
    // IGTF (flag 50 = 01): what was paid in foreign currency, capped at the document's amount,
    // and the tax on it; what is still due counts the tax.
    bool isForeign(int means) const;
    qint64 igtfBase() const;
    qint64 igtf() const;
    qint64 due() const;
    // Busy for `ms`: frames are lost; ENQ is answered (with the buffer-full bit) if asked.
    void startBusy(int ms, bool answersEnq);
    void accumulate(std::array<qint64, 4>& gross) const;
    void closeDocument();
    void writeReportTicket(const QString& type, int number, const QString& title,
                           const pos::fiscal::protocol::ZReport& r);
    QList<pos::fiscal::protocol::ZReport> zRange(const QByteArray& args, bool byDate, bool* ok);
    void save();

    FiscalMemory m_memory;
    QString m_statePath;
    TicketWriter m_tickets;
    FaultControl m_control;
    Faults m_faults;
    pos::fiscal::protocol::FrameReader m_reader;
    Document m_doc;
    quint8 m_lastError = 0x40;
    QDeadlineTimer m_busyUntil;
    bool m_busyAnswersEnq = false;
    QByteArray m_delayed;
    QDeadlineTimer m_delayedAt;
    std::array<pos::fiscal::protocol::TaxRate, 3> m_stagedRates{};
    int m_stagedIgtfRate = 0;
    bool m_ratesStaged = false;
    QString m_displayUpper, m_displayLower;
    QList<QByteArray> m_uploadBlocks;
    enum class UploadState { None, WaitFirstAck, WaitBlockAck } m_uploadState = UploadState::None;
    QString m_saveError;
};

} // namespace orvo::tools::fiscal
