#pragma once

#include "pos/fiscal/serial_link.h"
#include "tools/fiscal_emulator/emulator_thread.h"

namespace orvo::test {

// The software printer on a real pseudo-terminal, busy for a short while after a Z.
class RunningEmulator : public tools::fiscal::EmulatorThread {
public:
    explicit RunningEmulator(int zBusyMs = 300) : EmulatorThread(options(zBusyMs)) {}
    // A printer whose memory and tickets live in `folder`: another one started there later is
    // the same printer plugged in again.
    RunningEmulator(const QString& folder, int zBusyMs)
        : EmulatorThread(options(zBusyMs, folder)) {}

private:
    static tools::fiscal::EmulatorOptions options(int zBusyMs, const QString& folder = {}) {
        tools::fiscal::EmulatorOptions o;
        o.zBusyMs = zBusyMs;
        if (!folder.isEmpty()) {
            o.statePath = folder + QStringLiteral("/memoria.json");
            o.ticketsFolder = folder + QStringLiteral("/tickets");
            o.controlFile = folder + QStringLiteral("/control.txt");
        }
        return o;
    }
};

// Short waits, with room for a loaded machine: a silent printer fails a test in a few seconds.
inline pos::fiscal::LinkTiming fastTiming() {
    pos::fiscal::LinkTiming t;
    t.ackTimeoutMs = 600;
    t.itemAckTimeoutMs = 600;
    t.paymentAckTimeoutMs = 600;
    t.reportAckTimeoutMs = 1500;
    t.zTimeoutMs = 3000;
    t.probeTimeoutMs = 300;
    t.replyTimeoutMs = 600;
    t.blockTimeoutMs = 600;
    t.busyPollMs = 50;
    return t;
}

} // namespace orvo::test
