#pragma once

#include "tools/card_emulator/card_emulator.h"

#include <QThread>
#include <gtest/gtest.h>

namespace orvo::test {

// The card terminal emulator serving on a thread of its own, so the client under test waits on
// real sockets exactly as it does against a terminal.
class EmulatorThread {
public:
    explicit EmulatorThread(tools::card::CardEmulatorOptions options) {
        m_thread.start();
        m_emulator = new tools::card::CardEmulator(std::move(options));
        m_emulator->moveToThread(&m_thread);
        QString error;
        bool ok = false;
        QMetaObject::invokeMethod(
            m_emulator, [&] { ok = m_emulator->start(&error); }, Qt::BlockingQueuedConnection);
        EXPECT_TRUE(ok) << error.toStdString();
        m_url = m_emulator->url();
    }
    ~EmulatorThread() {
        QMetaObject::invokeMethod(
            m_emulator, [this] { delete m_emulator; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    QUrl url() const { return m_url; }
    void setDelayMs(int ms) {
        QMetaObject::invokeMethod(
            m_emulator, [this, ms] { m_emulator->setDelayMs(ms); }, Qt::BlockingQueuedConnection);
    }

private:
    QThread m_thread;
    tools::card::CardEmulator* m_emulator = nullptr;
    QUrl m_url;
};

} // namespace orvo::test
