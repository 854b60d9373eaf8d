#include "inventory/stock/rebuild_screen.h"

#include "common/dialogs/dialogs.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/stock/job_progress.h"
#include "inventory/stock/stock_rebuild.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::inventory::stock {

namespace {

const QString kTitle = QStringLiteral("Rekardear Inventario");

} // namespace

RebuildScreen::RebuildScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(kRebuildScreen);
    setWindowTitle(kTitle);
    m_from = new QLabel(this);
    m_from->setObjectName(QStringLiteral("lblDesde"));
    m_to = new QLabel(this);
    m_to->setObjectName(QStringLiteral("lblHasta"));
    m_result = new QLabel(this);
    m_result->setObjectName(QStringLiteral("lblResultado"));
    m_progress = new JobProgress(this);
    m_process = purchases::screenButton(this, QStringLiteral("cmdProcesar"),
                                        QStringLiteral("&Procesar"), Qt::Key_F5);
    m_cancel = purchases::screenButton(this, QStringLiteral("cmdCancelar"),
                                       QStringLiteral("&Cancelar"), Qt::Key_Escape);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Desde:"), m_from);
    form->addRow(QStringLiteral("Hasta:"), m_to);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_process);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    auto* note = new QLabel(QStringLiteral("Recalcula la existencia de todos los artículos desde "
                                           "el último ajuste físico-lógico con los documentos "
                                           "aprobados. Nadie debe estar facturando mientras "
                                           "tanto."),
                            this);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addLayout(form);
    layout->addWidget(m_progress);
    layout->addWidget(m_result);
    layout->addStretch();
    layout->addLayout(buttons);

    connect(m_process, &QPushButton::clicked, this, [this] { guarded(this, [&] { process(); }); });
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        if (m_progress->isRunning()) {
            m_progress->cancel();
            m_progress->setMessage(QStringLiteral("Cancelando..."));
        } else if (auto* w = parentWidget(); w && w->inherits("QMdiSubWindow")) {
            w->close();
        } else {
            close();
        }
    });
    connect(m_progress, &JobProgress::runningChanged, this,
            [this](bool running) { m_process->setEnabled(!running); });
    guarded(this, [&] { showPeriod(); });
}

void RebuildScreen::showPeriod() {
    const StockPeriod p = stockPeriod(m_db);
    const QString format = QStringLiteral("dd/MM/yyyy HH:mm:ss");
    m_from->setText(p.lastCount
                        ? p.from.toString(format) + QStringLiteral(" (último ajuste físico-lógico)")
                        : p.from.toString(format) + QStringLiteral(" (sin ajuste físico-lógico)"));
    m_to->setText(p.to.toString(format));
}

bool RebuildScreen::isRunning() const {
    return m_progress->isRunning();
}

void RebuildScreen::process() {
    if (m_progress->isRunning())
        return;
    if (!dialogs().question(this,
                            QStringLiteral("Desea recalcular la existencia de todos los "
                                           "artículos...?"),
                            kTitle, false))
        return;
    showPeriod();
    m_result->clear();
    m_progress->run(std::make_unique<StockRebuildJob>(m_db), [this](jobs::Job& job, bool ok,
                                                                    const QString& error) {
        if (!ok) {
            m_progress->setMessage(error);
            dialogs().information(this, error, kTitle);
            return;
        }
        const int changed = static_cast<StockRebuildJob&>(job).result().changed;
        m_result->setText(changed == 0
                              ? QStringLiteral("Ninguna existencia cambió.")
                              : QString::number(changed) + QStringLiteral(" artículo(s) con la "
                                                                          "existencia corregida."));
        dialogs().information(
            this, QStringLiteral("El proceso ha finalizado satisfactoriamente...!"), kTitle);
    });
}

void RebuildScreen::closeEvent(QCloseEvent* event) {
    // The rebuild holds every article: it ends (or is cancelled) before the screen goes.
    if (m_progress->isRunning()) {
        event->ignore();
        return;
    }
    QWidget::closeEvent(event);
}

} // namespace orvo::inventory::stock
