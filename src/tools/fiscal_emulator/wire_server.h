#pragma once

#include "tools/fiscal_emulator/emulated_printer.h"
#include "tools/fiscal_emulator/pty.h"

#include <QObject>
#include <QStringList>
#include <memory>

class QSocketNotifier;
class QTimer;

namespace orvo::tools::fiscal {

struct EmulatorOptions {
    QString statePath;
    QString ticketsFolder;
    QString controlFile;
    int zBusyMs = 3000;
    QStringList faults; // words as in the control file
    QString serial;     // for a new state file: the printer's serial (its register's Serie)
    QString rif;        // for a new state file: the taxpayer's RIF
    QStringList header; // for a new state file: header lines 1..8 of its documents
};

// The emulated printer on the master side of a pseudo-terminal. Lives on the thread that
// created it and serves the line from that thread's event loop.
class WireServer : public QObject {
    Q_OBJECT
public:
    explicit WireServer(QObject* parent = nullptr);
    ~WireServer() override;

    // Loads the state file and opens the terminal; false with error() otherwise.
    bool start(const EmulatorOptions& options);
    QString devicePath() const { return m_pty.slavePath(); }
    QString error() const { return m_error; }
    EmulatedPrinter* printer() const { return m_printer.get(); }

private:
    void onReadable();
    void write(const QByteArray& out);
    // Sends a held-back answer (a slow ACK) when it is due.
    void scheduleDelayed();

    Pty m_pty;
    std::unique_ptr<EmulatedPrinter> m_printer;
    QSocketNotifier* m_notifier = nullptr;
    QTimer* m_delayTimer = nullptr;
    QString m_error;
};

} // namespace orvo::tools::fiscal
