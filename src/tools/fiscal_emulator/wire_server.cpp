#include "tools/fiscal_emulator/wire_server.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <unistd.h>

namespace orvo::tools::fiscal {

WireServer::WireServer(QObject* parent) : QObject(parent) {}

WireServer::~WireServer() = default;

bool WireServer::start(const EmulatorOptions& options) {
    FiscalMemory memory;
    if (!QFile::exists(options.statePath)) {
        if (!options.serial.isEmpty())
            memory.serial = options.serial.left(10);
        if (!options.rif.isEmpty())
            memory.rif = options.rif.left(11);
        for (int i = 0; i < options.header.size() && i < 8; ++i)
            memory.lines.insert(i + 1, options.header[i]);
    }
    if (!memory.load(options.statePath, &m_error)) {
        m_error = QStringLiteral("No se pudo leer %1: %2").arg(options.statePath, m_error);
        return false;
    }
    // A new state file records the printer as it starts.
    if (!options.statePath.isEmpty() && !memory.save(options.statePath, &m_error)) {
        m_error = QStringLiteral("No se pudo escribir %1: %2").arg(options.statePath, m_error);
        return false;
    }
    if (!m_pty.open()) {
        m_error = QStringLiteral("No se pudo abrir un pseudo-terminal: ") + m_pty.error();
        return false;
    }
    m_printer = std::make_unique<EmulatedPrinter>(std::move(memory), options.statePath,
                                                  TicketWriter(options.ticketsFolder),
                                                  FaultControl(options.controlFile));
    m_printer->setZBusyMs(options.zBusyMs);
    for (const QString& f : options.faults) {
        if (!m_printer->faults().apply(f)) {
            m_error = QStringLiteral("Falla desconocida: ") + f;
            return false;
        }
    }
    m_delayTimer = new QTimer(this);
    m_delayTimer->setSingleShot(true);
    connect(m_delayTimer, &QTimer::timeout, this, [this] {
        write(m_printer->takeDue());
        scheduleDelayed();
    });
    m_notifier = new QSocketNotifier(m_pty.masterFd(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &WireServer::onReadable);
    return true;
}

void WireServer::onReadable() {
    char buf[512];
    for (;;) {
        const ssize_t n = ::read(m_pty.masterFd(), buf, sizeof buf);
        if (n <= 0)
            break;
        write(m_printer->receive(QByteArrayView(buf, n)));
    }
    scheduleDelayed();
}

void WireServer::scheduleDelayed() {
    const int ms = m_printer->msUntilDue();
    if (ms >= 0)
        m_delayTimer->start(ms);
}

void WireServer::write(const QByteArray& out) {
    qsizetype done = 0;
    while (done < out.size()) {
        const ssize_t w = ::write(m_pty.masterFd(), out.constData() + done, out.size() - done);
        if (w < 0 && errno != EAGAIN && errno != EINTR)
            break;
        if (w > 0)
            done += w;
    }
}

} // namespace orvo::tools::fiscal
