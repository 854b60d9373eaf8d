#pragma once

#include "pos/fiscal/fiscal_printer.h"

#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QThread>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>

namespace orvo::pos::fiscal {

// The printer's own thread. The printer (and its serial port) is created, used and destroyed on
// it; screens queue calls and get a QFuture, so a forced Z or a silent printer never blocks them:
//
//   m_printer->call([](FiscalPrinter& p) { return p.printXReport(); })
//       .then(this, [this](bool ok) { ... });
//
// Calls run one at a time in the order they were queued. An exception thrown by a call (a
// UserError) is rethrown by the future's result(). `prepare`, when given, runs on the thread
// before every call: the register's printer opens its port there (makeRegisterPrinter), so that
// no caller can forget to.
class FiscalPrinterThread : public QObject {
    Q_OBJECT
public:
    using Factory = std::function<std::unique_ptr<FiscalPrinter>()>;
    using Prepare = std::function<void(FiscalPrinter&)>;

    explicit FiscalPrinterThread(Factory factory, Prepare prepare = {}, QObject* parent = nullptr);
    // Waits for the call under way, closes the port and stops the thread.
    ~FiscalPrinterThread() override;

    template <class F> auto call(F fn) -> QFuture<std::invoke_result_t<F, FiscalPrinter&>> {
        using R = std::invoke_result_t<F, FiscalPrinter&>;
        auto promise = std::make_shared<QPromise<R>>();
        QFuture<R> future = promise->future();
        promise->start();
        QMetaObject::invokeMethod(
            m_worker,
            [this, promise, fn = std::move(fn)]() mutable {
                try {
                    if (m_prepare)
                        m_prepare(*m_printer);
                    if constexpr (std::is_void_v<R>)
                        fn(*m_printer);
                    else
                        promise->addResult(fn(*m_printer));
                } catch (...) {
                    promise->setException(std::current_exception());
                }
                promise->finish();
            },
            Qt::QueuedConnection);
        return future;
    }

    // For headless commands and tests: queues the call and waits for its result.
    template <class F> auto callAndWait(F fn) {
        auto future = call(std::move(fn));
        future.waitForFinished();
        if constexpr (!std::is_void_v<std::invoke_result_t<F, FiscalPrinter&>>)
            return future.result();
    }

private:
    QThread m_thread;
    QObject* m_worker = nullptr;
    const Prepare m_prepare; // set once, read only on the printer's thread
    std::unique_ptr<FiscalPrinter> m_printer;
};

} // namespace orvo::pos::fiscal
