#pragma once

#include "pos/fiscal/protocol/frame.h"
#include "pos/fiscal/protocol/status.h"

#include <QByteArray>
#include <QList>
#include <QSerialPort>
#include <QString>
#include <optional>

namespace orvo::pos::fiscal {

// Waits of the serial exchanges. A command's ACK comes when the printer has done it, so the wait
// fits the command: a setting is quick, a printed line takes a moment, the foot of a ticket or a
// report takes seconds and a Z up to 20 s. The defaults suit a real printer; tests shorten them.
struct LinkTiming {
    int ackTimeoutMs = 3000;         // settings, customer data, the display
    int itemAckTimeoutMs = 6000;     // items, discounts, comments, non-fiscal lines
    int paymentAckTimeoutMs = 10000; // payments, the closing, the cancelling of a document
    int reportAckTimeoutMs = 20000;  // the X report and the fiscal memory reports
    int zTimeoutMs = 20000;          // the Z: its ACK, then how long it may keep the printer busy
    int probeTimeoutMs = 2000;       // a status probe's reply (sent twice)
    int replyTimeoutMs = 3000;       // a status read's frame
    int blockTimeoutMs = 5000;       // each block of an upload
    int busyPollMs = 500;            // between status probes while the printer is busy
    int nakRetries = 2;              // resends after a NAK

    // How long the ACK of `command` may take.
    int ackTimeoutFor(const QByteArray& command) const;
};

// The serial line to the printer: framing, check bytes and the four kinds of exchange. Blocking;
// used only from the thread that opened it.
class SerialLink {
public:
    enum class Answer { Ack, Nak, None, BadCheck };

    explicit SerialLink(LinkTiming timing = {}) : m_timing(timing) {}
    const LinkTiming& timing() const { return m_timing; }

    // 9600 8E1, RTS raised where the port has one. busy is set when another program holds it.
    bool open(const QString& port, bool* busy);
    void close();
    bool isOpen() const { return m_port.isOpen(); }
    // Whether the device went away under the open port (a USB adapter pulled out, the far end of
    // a pseudo-terminal gone). Takes in a hang-up the port has not noticed yet.
    bool deviceGone();
    QString portName() const { return m_name; }

    // ENQ, sent again once without an answer.
    std::optional<protocol::StatusBytes> probe();
    // One frame, one answer within the command's wait.
    Answer command(const QByteArray& data);
    // A status read: the reply frame's data; answer tells why there is none.
    std::optional<QByteArray> statusRead(const QByteArray& data, Answer* answer);
    // An upload; answer tells why it failed.
    std::optional<QList<QByteArray>> upload(const QByteArray& data, Answer* answer);

private:
    std::optional<protocol::WireEvent> nextEvent(int timeoutMs);
    void write(const QByteArray& bytes);
    void discardInput();

    LinkTiming m_timing;
    QSerialPort m_port;
    QString m_name;
    protocol::FrameReader m_reader;
};

} // namespace orvo::pos::fiscal
