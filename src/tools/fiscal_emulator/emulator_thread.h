#pragma once

#include "tools/fiscal_emulator/fiscal_memory.h"
#include "tools/fiscal_emulator/wire_server.h"

#include <QString>
#include <QTemporaryDir>
#include <QThread>
#include <memory>

namespace orvo::tools::fiscal {

// The software printer serving its pseudo-terminal from a thread of this process, as it would
// from its own: for tests of the driver and of the screens that print. Its files (memoria.json,
// tickets/, the control file) live in a temporary folder unless options name them. Faults go
// through the control file; the memory is read back from the state file.
class EmulatorThread {
public:
    explicit EmulatorThread(EmulatorOptions options = {});
    ~EmulatorThread();
    EmulatorThread(const EmulatorThread&) = delete;
    EmulatorThread& operator=(const EmulatorThread&) = delete;

    bool started() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    QString device() const { return m_device; }
    const EmulatorOptions& options() const { return m_options; }

    // A word of the control file ("paper-out", "silence", ...), taken at the next bytes received.
    void fault(const QString& word) const;
    FiscalMemory memory() const;
    QString ticketPath(const QString& fileName) const;
    QString ticket(const QString& fileName) const;
    bool hasTicket(const QString& fileName) const;

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    EmulatorOptions m_options;
    QThread m_thread;
    QObject* m_context = nullptr;
    WireServer* m_server = nullptr;
    QString m_device;
    QString m_error;
};

} // namespace orvo::tools::fiscal
