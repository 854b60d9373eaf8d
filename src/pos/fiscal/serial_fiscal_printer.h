#pragma once

#include "pos/fiscal/fiscal_printer.h"
#include "pos/fiscal/serial_link.h"

namespace orvo::pos::fiscal {

// The fiscal printer on a serial port (or anything that looks like one: USB adapters,
// pseudo-terminals).
class SerialFiscalPrinter : public FiscalPrinter {
public:
    explicit SerialFiscalPrinter(LinkTiming timing = {}) : m_link(timing) {}

    bool open(const QString& port) override;
    void close() override { m_link.close(); }
    bool isOpen() const override { return m_link.isOpen(); }
    QString portName() const override { return m_link.portName(); }
    bool portBusy() const override { return m_busy; }
    bool lineLost() override { return m_link.deviceGone(); }

    bool probe() override;
    bool sendCommand(const QByteArray& command) override;
    using FiscalPrinter::sendCommands;
    bool sendCommands(const QList<QByteArray>& commands, OpenCounts from) override;
    std::optional<QByteArray> readStatusData(const QByteArray& command) override;
    std::optional<QList<QByteArray>> upload(const QByteArray& command) override;
    int ackWaitMs(const QByteArray& command) const override {
        return m_link.timing().ackTimeoutFor(command);
    }
    int busyPollMs() const override { return m_link.timing().busyPollMs; }

private:
    enum class Sent { Done, Refused, Lost };
    // One command with the resends the protocol allows; on a refusal the status is read.
    Sent send(const QByteArray& command);
    bool failNotOpen();
    void failFromAnswer(SerialLink::Answer answer);

    SerialLink m_link;
    bool m_busy = false;
};

} // namespace orvo::pos::fiscal
