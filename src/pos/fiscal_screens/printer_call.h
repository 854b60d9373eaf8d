#pragma once

#include "common/dialogs/dialogs.h"
#include "pos/fiscal/fiscal_printer_thread.h"

#include <QFuture>
#include <QLabel>
#include <QList>
#include <QPointer>
#include <QWidget>
#include <type_traits>

namespace orvo::pos::fiscal_screens {

// A screen whose actions run on the register's printer thread. While a call is under way the
// screen shows what it is doing in lblEstado and its buttons are disabled; it never waits for the
// printer itself, so a silent printer does not freeze it. A refusal is shown with the printer's
// message when the call comes back.
class PrinterScreen : public QWidget {
    Q_OBJECT
public:
    PrinterScreen(fiscal::FiscalPrinterThread& printer, QWidget* parent)
        : QWidget(parent), m_printer(printer) {
        m_status = new QLabel(this);
        m_status->setObjectName(QStringLiteral("lblEstado"));
    }

    bool isBusy() const { return m_busy; }

signals:
    // A printer call came back (successfully or not).
    void printerCallFinished();

protected:
    QLabel* statusLabel() const { return m_status; }
    // Controls disabled while the printer works.
    void addActionControl(QWidget* w) { m_controls.append(w); }

    // Runs fn(printer) on the printer's thread (which opens the port first), then done(result)
    // here.
    template <class F, class Done> void runOnPrinter(const QString& busyText, F fn, Done done) {
        if (m_busy)
            return;
        setBusy(true, busyText);
        using R = std::invoke_result_t<F, fiscal::FiscalPrinter&>;
        QPointer<PrinterScreen> self(this);
        m_printer.call(std::move(fn))
            .then(this, [self, done = std::move(done)](QFuture<R> future) mutable {
                if (!self)
                    return;
                self->setBusy(false, {});
                guarded(self, [&] {
                    if constexpr (std::is_void_v<R>) {
                        future.waitForFinished(); // rethrows the call's refusal
                        done();
                    } else {
                        done(future.result());
                    }
                });
                emit self->printerCallFinished();
            });
    }

private:
    void setBusy(bool busy, const QString& text) {
        m_busy = busy;
        m_status->setText(text);
        for (QWidget* w : m_controls)
            w->setEnabled(!busy);
        setCursor(busy ? Qt::BusyCursor : Qt::ArrowCursor);
    }

    fiscal::FiscalPrinterThread& m_printer;
    QLabel* m_status;
    QList<QWidget*> m_controls;
    bool m_busy = false;
};

} // namespace orvo::pos::fiscal_screens
