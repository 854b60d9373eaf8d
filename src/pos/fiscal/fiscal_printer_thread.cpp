#include "pos/fiscal/fiscal_printer_thread.h"

namespace orvo::pos::fiscal {

FiscalPrinterThread::FiscalPrinterThread(Factory factory, Prepare prepare, QObject* parent)
    : QObject(parent), m_prepare(std::move(prepare)) {
    m_thread.setObjectName(QStringLiteral("ImpresoraFiscal"));
    m_worker = new QObject;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(
        m_worker, [this, factory = std::move(factory)] { m_printer = factory(); },
        Qt::QueuedConnection);
}

FiscalPrinterThread::~FiscalPrinterThread() {
    QMetaObject::invokeMethod(
        m_worker,
        [this] {
            if (m_printer)
                m_printer->close();
            m_printer.reset();
        },
        Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

} // namespace orvo::pos::fiscal
