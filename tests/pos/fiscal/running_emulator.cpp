#include "running_emulator.h"

#include "tools/fiscal_emulator/wire_server.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace orvo::test {

using namespace tools::fiscal;

RunningEmulator::RunningEmulator(int zBusyMs) {
    m_context = new QObject;
    m_context->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    m_thread.start();
    EmulatorOptions o;
    o.statePath = m_dir.filePath(QStringLiteral("memoria.json"));
    o.ticketsFolder = m_dir.filePath(QStringLiteral("tickets"));
    o.controlFile = m_dir.filePath(QStringLiteral("control"));
    o.zBusyMs = zBusyMs;
    QString error;
    QMetaObject::invokeMethod(
        m_context,
        [&] {
            m_server = new WireServer;
            if (!m_server->start(o))
                error = m_server->error();
            m_device = m_server->devicePath();
        },
        Qt::BlockingQueuedConnection);
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
}

RunningEmulator::~RunningEmulator() {
    QMetaObject::invokeMethod(
        m_context, [this] { delete m_server; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void RunningEmulator::fault(const QString& word) const {
    QFile f(m_dir.filePath(QStringLiteral("control")));
    ASSERT_TRUE(f.open(QIODevice::Append));
    f.write((word + QLatin1Char('\n')).toUtf8());
}

FiscalMemory RunningEmulator::memory() const {
    FiscalMemory m;
    QString error;
    EXPECT_TRUE(m.load(m_dir.filePath(QStringLiteral("memoria.json")), &error));
    return m;
}

QString RunningEmulator::ticket(const QString& fileName) const {
    QFile f(QDir(m_dir.filePath(QStringLiteral("tickets"))).filePath(fileName));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll());
}

bool RunningEmulator::hasTicket(const QString& fileName) const {
    return QFile::exists(QDir(m_dir.filePath(QStringLiteral("tickets"))).filePath(fileName));
}

pos::fiscal::LinkTiming fastTiming() {
    pos::fiscal::LinkTiming t;
    t.ackTimeoutMs = 300;
    t.probeTimeoutMs = 150;
    t.replyTimeoutMs = 300;
    t.blockTimeoutMs = 300;
    return t;
}

} // namespace orvo::test
