#include "tools/fiscal_emulator/emulator_thread.h"

#include <QDir>
#include <QFile>

namespace orvo::tools::fiscal {

EmulatorThread::EmulatorThread(EmulatorOptions options) : m_options(std::move(options)) {
    if (m_options.statePath.isEmpty() || m_options.ticketsFolder.isEmpty() ||
        m_options.controlFile.isEmpty()) {
        m_dir = std::make_unique<QTemporaryDir>();
        if (m_options.statePath.isEmpty())
            m_options.statePath = m_dir->filePath(QStringLiteral("memoria.json"));
        if (m_options.ticketsFolder.isEmpty())
            m_options.ticketsFolder = m_dir->filePath(QStringLiteral("tickets"));
        if (m_options.controlFile.isEmpty())
            m_options.controlFile = m_dir->filePath(QStringLiteral("control"));
    }
    m_context = new QObject;
    m_context->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    m_thread.setObjectName(QStringLiteral("EmuladorFiscal"));
    m_thread.start();
    QMetaObject::invokeMethod(
        m_context,
        [this] {
            m_server = new WireServer;
            if (!m_server->start(m_options))
                m_error = m_server->error();
            m_device = m_server->devicePath();
        },
        Qt::BlockingQueuedConnection);
}

EmulatorThread::~EmulatorThread() {
    QMetaObject::invokeMethod(
        m_context, [this] { delete m_server; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void EmulatorThread::fault(const QString& word) const {
    QFile f(m_options.controlFile);
    if (f.open(QIODevice::Append))
        f.write((word + QLatin1Char('\n')).toUtf8());
}

FiscalMemory EmulatorThread::memory() const {
    FiscalMemory m;
    QString error;
    m.load(m_options.statePath, &error);
    return m;
}

QString EmulatorThread::ticketPath(const QString& fileName) const {
    return QDir(m_options.ticketsFolder).filePath(fileName);
}

QString EmulatorThread::ticket(const QString& fileName) const {
    QFile f(ticketPath(fileName));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll());
}

bool EmulatorThread::hasTicket(const QString& fileName) const {
    return QFile::exists(ticketPath(fileName));
}

} // namespace orvo::tools::fiscal
