#pragma once

#include "pos/fiscal/serial_link.h"
#include "tools/fiscal_emulator/fiscal_memory.h"

#include <QString>
#include <QTemporaryDir>
#include <QThread>

namespace orvo::tools::fiscal {
class WireServer;
}

namespace orvo::test {

// The software printer serving a real pseudo-terminal from its own thread, as it would from its
// own process. Faults go through its control file, its memory is read back from its state file.
class RunningEmulator {
public:
    explicit RunningEmulator(int zBusyMs = 300);
    ~RunningEmulator();

    QString device() const { return m_device; }
    void fault(const QString& word) const;
    tools::fiscal::FiscalMemory memory() const;
    QString ticket(const QString& fileName) const;
    bool hasTicket(const QString& fileName) const;
    QString dir() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    QThread m_thread;
    QObject* m_context = nullptr;
    tools::fiscal::WireServer* m_server = nullptr;
    QString m_device;
};

// Short waits: a silent printer fails a test in well under a second.
pos::fiscal::LinkTiming fastTiming();

} // namespace orvo::test
