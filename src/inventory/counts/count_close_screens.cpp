#include "inventory/counts/count_close_screens.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/adjustments/adjustments.h"
#include "inventory/counts/counts.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/stock/job_progress.h"
#include "shell/startup/app_home.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::counts {

namespace {

QString units(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

QString passState(int status) {
    switch (status) {
    case kOpen:
        return QStringLiteral("ABIERTA");
    case kApproved:
        return QStringLiteral("APROBADA");
    case kProcessed:
        return QStringLiteral("PROCESADA");
    default:
        return QStringLiteral("-");
    }
}

QString finalState(int status) {
    if (status < 0)
        return QStringLiteral("-");
    return status == kFinalOpen ? QStringLiteral("NO APROBADA") : QStringLiteral("APROBADA");
}

void closeScreen(QWidget* screen) {
    if (auto* w = screen->parentWidget(); w && w->inherits("QMdiSubWindow"))
        w->close();
    else
        screen->close();
}

QPushButton* button(QWidget* screen, QHBoxLayout* row, const char* name, const QString& text,
                    int key, std::function<void()> slot) {
    QPushButton* b = purchases::screenButton(screen, QString::fromLatin1(name), text, key);
    QObject::connect(b, &QPushButton::clicked, screen,
                     [screen, slot = std::move(slot)] { guarded(screen, [&] { slot(); }); });
    row->addWidget(b);
    return b;
}

} // namespace

// --- Count 3 ---

FinalCountScreen::FinalCountScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(kFinalCountScreen);
    setWindowTitle(QStringLiteral("Toma física - Conteo 3"));
    auto* layout = new QVBoxLayout(this);
    m_browser = purchases::listTable(this, QStringLiteral("grdPaginas"),
                                     {QStringLiteral("Página"), QStringLiteral("Conteo 1"),
                                      QStringLiteral("Conteo 2"), QStringLiteral("Conteo 3"),
                                      QStringLiteral("Diferencias")},
                                     4);
    m_browser->installEventFilter(this);
    connect(m_browser, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (row >= 0 && row < m_pages.size())
            guarded(this, [&] { showPage(); });
    });
    layout->addWidget(m_browser, 1);
    m_state = new QLabel(this);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    QFont bold = m_state->font();
    bold.setBold(true);
    m_state->setFont(bold);
    layout->addWidget(m_state);
    auto* keying = new QHBoxLayout;
    m_code = new QLineEdit(this);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_code->setPlaceholderText(QStringLiteral("Código de barras"));
    m_code->installEventFilter(this);
    m_quantity = new QLineEdit(this);
    m_quantity->setObjectName(QStringLiteral("txtCantidad"));
    m_quantity->setAlignment(Qt::AlignRight);
    m_quantity->setMaximumWidth(100);
    m_quantity->installEventFilter(this);
    m_article = new QLabel(this);
    m_article->setObjectName(QStringLiteral("lblDescripcion"));
    keying->addWidget(new QLabel(QStringLiteral("Código:"), this));
    keying->addWidget(m_code, 2);
    keying->addWidget(new QLabel(QStringLiteral("Conteo 3:"), this));
    keying->addWidget(m_quantity);
    keying->addWidget(m_article, 3);
    layout->addLayout(keying);
    m_grid = purchases::listTable(this, QStringLiteral("SpreadToma"),
                                  {QStringLiteral("Código"), QStringLiteral("Descripción"),
                                   QStringLiteral("Conteo 1"), QStringLiteral("Conteo 2"),
                                   QStringLiteral("Conteo 3")},
                                  1);
    layout->addWidget(m_grid, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    button(this, buttons, "cmdPreparar", QStringLiteral("Preparar conteo 3"), Qt::Key_F3,
           [this] { prepare(); });
    button(this, buttons, "cmdAprobar", QStringLiteral("Aprobar conteo 3"), Qt::Key_F12,
           [this] { approve(); });
    button(this, buttons, "cmdImprimir", QStringLiteral("Imprimir"), Qt::Key_F7,
           [this] { print(); });
    button(this, buttons, "cmdPDF", QStringLiteral("PDF"), 0, [this] { exportPdf(); });
    button(this, buttons, "cmdActualizar", QStringLiteral("Actualizar"), Qt::Key_F5,
           [this] { refresh(); });
    button(this, buttons, "cmdSalir", QStringLiteral("Salir"), Qt::Key_Escape,
           [this] { closeScreen(this); });
    layout->addLayout(buttons);
    guarded(this, [&] { refresh(); });
    // The F-keys act where the focus is: the pages, ready for F3.
    m_browser->setFocus();
}

int FinalCountScreen::currentPage() const {
    const int row = m_browser->currentRow();
    return row >= 0 && row < m_pages.size() ? m_pages[row].number : 0;
}

void FinalCountScreen::refresh() {
    const int keep = currentPage();
    m_pages = pageProgress(m_db);
    const QSignalBlocker block(m_browser);
    m_browser->setRowCount(int(m_pages.size()));
    int row = m_pages.isEmpty() ? -1 : 0;
    for (int r = 0; r < m_pages.size(); ++r) {
        const PageProgress& p = m_pages[r];
        m_browser->setItem(r, 0, purchases::listCell(QString::number(p.number), true));
        m_browser->setItem(r, 1, purchases::listCell(passState(p.first)));
        m_browser->setItem(r, 2, purchases::listCell(passState(p.second)));
        m_browser->setItem(r, 3, purchases::listCell(finalState(p.final)));
        m_browser->setItem(
            r, 4,
            purchases::listCell(p.final < 0 ? QString() : QString::number(p.differences), true));
        if (p.number == keep)
            row = r;
    }
    if (row >= 0)
        m_browser->setCurrentCell(row, 0);
    showPage();
}

void FinalCountScreen::selectPage(int page) {
    for (int r = 0; r < m_pages.size(); ++r)
        if (m_pages[r].number == page)
            m_browser->setCurrentCell(r, 0);
}

void FinalCountScreen::showPage() {
    const int page = currentPage();
    m_final = page > 0 ? loadFinal(m_db, page) : std::nullopt;
    m_grid->setRowCount(0);
    m_keyed.clear();
    m_article->clear();
    m_code->clear();
    m_quantity->clear();
    if (!m_final) {
        m_state->setText(page > 0 ? QStringLiteral("Página ") + QString::number(page) +
                                        QStringLiteral(": conteo 3 sin preparar (F3)")
                                  : QString());
        m_code->setEnabled(false);
        m_quantity->setEnabled(false);
        return;
    }
    const bool open = m_final->status == kFinalOpen;
    m_state->setText(
        QStringLiteral("Página ") + QString::number(page) + QStringLiteral(": ") +
        (open ? QStringLiteral("PREPARADA POR CONTEO 3") : QStringLiteral("APROBADA")));
    m_grid->setRowCount(int(m_final->lines.size()));
    for (int r = 0; r < m_final->lines.size(); ++r) {
        const FinalLine& l = m_final->lines[r];
        m_grid->setItem(r, 0, purchases::listCell(l.barcode));
        m_grid->setItem(r, 1, purchases::listCell(l.name));
        m_grid->setItem(r, 2, purchases::listCell(units(l.first), true));
        m_grid->setItem(r, 3, purchases::listCell(units(l.second), true));
        m_grid->setItem(r, 4, purchases::listCell(units(l.final), true));
        if (l.differs())
            for (int c = 0; c < 5; ++c)
                m_grid->item(r, c)->setBackground(QColor(255, 236, 200));
    }
    m_code->setEnabled(open);
    m_quantity->setEnabled(open);
}

void FinalCountScreen::prepare() {
    const int page = currentPage();
    if (page == 0)
        return;
    if (!dialogs().question(this,
                            QStringLiteral("Desea preparar el conteo 3 de la pagina "
                                           "seleccionada?"),
                            QStringLiteral("Información"), true))
        return;
    prepareFinal(m_db, page);
    refresh();
    if (m_code->isEnabled())
        m_code->setFocus();
}

void FinalCountScreen::keyCode(const QString& text) {
    if (!m_final || m_final->status != kFinalOpen)
        return;
    const QString code = text.trimmed();
    if (code.isEmpty())
        return;
    try {
        adjustments::stockArticle(m_db, code);
    } catch (const UserError&) {
        m_code->selectAll();
        throw;
    }
    for (int r = 0; r < m_final->lines.size(); ++r)
        if (m_final->lines[r].barcode == code) {
            m_grid->selectRow(r);
            m_article->setText(m_final->lines[r].name);
            m_quantity->setText(units(m_final->lines[r].final));
        }
    m_keyed = code;
    m_quantity->setFocus();
    m_quantity->selectAll();
}

void FinalCountScreen::keyQuantity(const QString& text) {
    if (m_keyed.isEmpty()) {
        m_code->setFocus();
        return;
    }
    keyFinal(m_db, currentPage(), m_keyed, purchases::rules::headerNumber(text));
    const QString done = m_keyed;
    refresh();
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->item(r, 0)->text() == done)
            m_grid->selectRow(r);
    m_code->clear();
    m_code->setFocus();
}

void FinalCountScreen::approve() {
    if (!m_final || m_final->status != kFinalOpen)
        return;
    if (!dialogs().question(this, QStringLiteral("Desea Aprobar la Pagina ?"),
                            QStringLiteral("Información"), false))
        return;
    approveFinal(m_db, m_final->number);
    refresh();
}

void FinalCountScreen::print() {
    if (m_final)
        purchases::printDocument(this, finalSheet(m_db, m_final->number));
}

void FinalCountScreen::exportPdf() {
    if (m_final)
        purchases::writePdf(this, finalSheet(m_db, m_final->number));
}

bool FinalCountScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && watched == m_code) {
            guarded(this, [&] { keyCode(m_code->text()); });
            return true;
        }
        if (enter && watched == m_quantity) {
            guarded(this, [&] { keyQuantity(m_quantity->text()); });
            return true;
        }
        // The page's keys from the keying fields too.
        if (key->key() == Qt::Key_F12 && (watched == m_code || watched == m_quantity)) {
            guarded(this, [&] { approve(); });
            return true;
        }
        if (enter && watched == m_browser && m_code->isEnabled()) {
            m_code->setFocus();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// --- Approval in batches ---

BatchApprovalScreen::BatchApprovalScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    checkBatchApproval(m_db); // with two counts the screen does not open
    setObjectName(kBatchApprovalScreen);
    setWindowTitle(QStringLiteral("Aprobar conteos en lotes"));
    auto* layout = new QVBoxLayout(this);
    m_grid = purchases::listTable(this, QStringLiteral("grdPaginas"),
                                  {QStringLiteral("Aprobar"), QStringLiteral("Página"),
                                   QStringLiteral("Usuario"), QStringLiteral("Fecha"),
                                   QStringLiteral("Artículos"), QStringLiteral("Unidades"),
                                   QStringLiteral("Observación")},
                                  6);
    layout->addWidget(m_grid, 1);
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("lblMensaje"));
    layout->addWidget(m_message);
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("prbProgreso"));
    m_bar->setValue(0);
    layout->addWidget(m_bar);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    button(this, buttons, "cmdMarcar", QStringLiteral("Marcar todas"), Qt::Key_F3,
           [this] { tickAll(); });
    button(this, buttons, "cmdAprobar", QStringLiteral("Aprobar"), Qt::Key_F12,
           [this] { approve(); });
    button(this, buttons, "cmdSalir", QStringLiteral("Salir"), Qt::Key_Escape,
           [this] { closeScreen(this); });
    layout->addLayout(buttons);
    // Space ticks the page under the cursor.
    auto* space = new QShortcut(QKeySequence(Qt::Key_Space), m_grid);
    space->setContext(Qt::WidgetShortcut);
    connect(space, &QShortcut::activated, this, [this] {
        if (auto* item = m_grid->item(m_grid->currentRow(), 0))
            item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    });
    refresh();
}

void BatchApprovalScreen::refresh() {
    const QList<PageSummary> pages = pagesToApprove(m_db);
    m_grid->setRowCount(int(pages.size()));
    for (int r = 0; r < pages.size(); ++r) {
        const PageSummary& p = pages[r];
        auto* tick = purchases::listCell(QString());
        tick->setFlags(tick->flags() | Qt::ItemIsUserCheckable);
        tick->setCheckState(Qt::Unchecked);
        tick->setData(Qt::UserRole, p.number);
        m_grid->setItem(r, 0, tick);
        m_grid->setItem(r, 1, purchases::listCell(QString::number(p.number), true));
        m_grid->setItem(r, 2, purchases::listCell(p.user));
        m_grid->setItem(r, 3,
                        purchases::listCell(p.date.toString(QStringLiteral("dd/MM/yyyy HH:mm"))));
        m_grid->setItem(r, 4, purchases::listCell(QString::number(p.items), true));
        m_grid->setItem(r, 5, purchases::listCell(units(p.units), true));
        m_grid->setItem(r, 6, purchases::listCell(p.note));
    }
    if (!pages.isEmpty())
        m_grid->setCurrentCell(0, 0);
    m_grid->setFocus();
}

void BatchApprovalScreen::tickAll() {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        m_grid->item(r, 0)->setCheckState(Qt::Checked);
}

void BatchApprovalScreen::approve() {
    QList<int> pages;
    for (int r = 0; r < m_grid->rowCount(); ++r)
        if (m_grid->item(r, 0)->checkState() == Qt::Checked)
            pages << m_grid->item(r, 0)->data(Qt::UserRole).toInt();
    if (pages.isEmpty())
        throw UserError(QStringLiteral("Seleccione al menos una página...!"));
    if (!dialogs().question(this, QStringLiteral("Desea Aprobar las paginas seleccionadas ?"),
                            QStringLiteral("Información"), false))
        return;
    m_bar->setMaximum(int(pages.size()));
    try {
        approveInBatch(m_db, pages, [this](int done, int, const QString& label) {
            m_bar->setValue(done);
            if (!label.isEmpty())
                m_message->setText(label);
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        });
    } catch (...) {
        refresh(); // the pages approved before the failure stay approved
        throw;
    }
    m_message->setText(QString::number(pages.size()) + QStringLiteral(" página(s) aprobada(s)."));
    refresh();
}

// --- Physical-logical adjustments ---

PhysicalAdjustmentScreen::PhysicalAdjustmentScreen(QSqlDatabase db, QString userCode, bool partial,
                                                   QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)), m_partial(partial) {
    setObjectName(partial ? kPartialAdjustmentScreen : kPhysicalAdjustmentScreen);
    setWindowTitle(partial ? QStringLiteral("Ajuste físico lógico parcial")
                           : QStringLiteral("Ajuste físico lógico"));
    auto* layout = new QVBoxLayout(this);
    auto* note = new QLabel(
        partial ? QStringLiteral("Corrige solo los artículos contados en la toma parcial con dos "
                                 "ajustes (tipos 999 y 998). Los artículos no contados no "
                                 "cambian.")
                : QStringLiteral("Reemplaza la existencia de todos los artículos por lo contado "
                                 "en el conteo 3: los artículos no contados quedan en 0. Antes se "
                                 "respalda la base de datos. Nadie debe estar en el sistema."),
        this);
    note->setWordWrap(true);
    layout->addWidget(note);
    m_grid = purchases::listTable(this, QStringLiteral("grdDiferencias"),
                                  {QStringLiteral("Código"), QStringLiteral("Descripción"),
                                   QStringLiteral("Existencia"), QStringLiteral("Contado"),
                                   QStringLiteral("Diferencia"), QStringLiteral("Costo")},
                                  1);
    layout->addWidget(m_grid, 1);
    m_progress = new stock::JobProgress(this);
    layout->addWidget(m_progress);
    m_result = new QLabel(this);
    m_result->setObjectName(QStringLiteral("lblResultado"));
    layout->addWidget(m_result);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    m_process = button(this, buttons, "cmdProcesar", QStringLiteral("&Procesar"), Qt::Key_F5,
                       [this] { process(); });
    button(this, buttons, "cmdSalir", QStringLiteral("Salir"), Qt::Key_Escape, [this] {
        if (!isRunning())
            closeScreen(this);
    });
    layout->addLayout(buttons);
    connect(m_progress, &stock::JobProgress::runningChanged, this,
            [this](bool running) { m_process->setEnabled(!running); });
    guarded(this, [&] { refresh(); });
    m_grid->setFocus();
}

void PhysicalAdjustmentScreen::refresh() {
    const QList<store::Difference> rows =
        m_partial ? partialDifferences(m_db) : physicalDifferences(m_db);
    m_grid->setRowCount(int(rows.size()));
    Decimal value;
    for (int r = 0; r < rows.size(); ++r) {
        const store::Difference& d = rows[r];
        m_grid->setItem(r, 0, purchases::listCell(d.barcode));
        m_grid->setItem(r, 1, purchases::listCell(d.name));
        m_grid->setItem(r, 2, purchases::listCell(units(d.book), true));
        m_grid->setItem(r, 3, purchases::listCell(units(d.counted), true));
        m_grid->setItem(r, 4, purchases::listCell(units(d.counted - d.book), true));
        m_grid->setItem(r, 5, purchases::listCell(units(d.cost), true));
        value += (d.counted - d.book) * d.cost;
    }
    m_result->setText(QString::number(rows.size()) +
                      QStringLiteral(" artículo(s) con diferencia, valor ") + units(value));
}

bool PhysicalAdjustmentScreen::isRunning() const {
    return m_progress->isRunning();
}

void PhysicalAdjustmentScreen::process() {
    if (isRunning())
        return;
    if (m_partial)
        processPartial();
    else
        processAll();
}

void PhysicalAdjustmentScreen::processAll() {
    checkPhysicalAdjustment(m_db);
    dialogs().information(this,
                          QStringLiteral("Se inicia el respaldo de la base de datos. Notifique a "
                                         "todos los usuarios salir del Sistema. Presione el boton "
                                         "Aceptar para comenzar el proceso..."),
                          QStringLiteral("Respaldo"));
    PhysicalAdjustmentOptions options;
    options.user = m_userCode;
    if (dialogs().question(this,
                           QStringLiteral("Desea realizar respaldo en un dispositivo externo "
                                          "USB...?"),
                           QStringLiteral("Respaldo"), false)) {
        dialogs().information(this, QStringLiteral("Introduzca el dispositivo externo USB...!"),
                              QStringLiteral("Respaldo"));
        const QString file =
            dialogs().saveFileName(this, QStringLiteral("Respaldo externo"),
                                   QDir(QStringLiteral("/media")).exists()
                                       ? QStringLiteral("/media/TF.BAK")
                                       : QDir::home().filePath(QStringLiteral("TF.BAK")),
                                   QStringLiteral("Respaldo (*.BAK)"));
        if (file.isEmpty())
            dialogs().information(this, QStringLiteral("No se realizo respaldo externo...!"),
                                  QStringLiteral("Respaldo"));
        else
            options.externalFolder = QFileInfo(file).absolutePath();
    }
    m_progress->run(
        std::make_unique<PhysicalAdjustmentJob>(m_db, options),
        [this](jobs::Job& job, bool ok, const QString& error) {
            if (!ok) {
                m_progress->setMessage(error);
                dialogs().information(this, error, windowTitle());
                return;
            }
            const auto r = static_cast<PhysicalAdjustmentJob&>(job).result();
            if (r.externalFailed)
                dialogs().information(this, QStringLiteral("No se realizo respaldo externo...!"),
                                      QStringLiteral("Respaldo"));
            guarded(this, [&] { refresh(); });
            m_result->setText(QString::number(r.articles) +
                              QStringLiteral(" artículo(s) ajustados. Respaldo: ") + r.backupFile);
            dialogs().information(this,
                                  QStringLiteral("Ha finalizado Satisfactoriamente el "
                                                 "Proceso de Ajuste...!"),
                                  QStringLiteral("Finalizo Proceso Ajuste"));
        });
}

void PhysicalAdjustmentScreen::processPartial() {
    checkPartialAdjustment(m_db);
    dialogs().information(this, QStringLiteral("Realize un respaldo de la base de datos  antes de "
                                               "realizar el Ajuste Fisico-Logico Parcial...!"));
    if (!dialogs().question(this,
                            QStringLiteral("Desea realizar el Ajuste Físico Lógico parcial...?"),
                            windowTitle(), false))
        return;
    const PartialResult r = runPartialAdjustment(m_db, m_userCode);
    refresh();
    QStringList made;
    if (r.plusNumber)
        made << QStringLiteral("ajuste Nº ") + QString::number(r.plusNumber) +
                    QStringLiteral(" (+)");
    if (r.minusNumber)
        made << QStringLiteral("ajuste Nº ") + QString::number(r.minusNumber) +
                    QStringLiteral(" (-)");
    m_result->setText(made.isEmpty()
                          ? QStringLiteral("Sin diferencias: no se generó ajuste.")
                          : QStringLiteral("Generado: ") + made.join(QStringLiteral(", ")));
    dialogs().information(
        this, QStringLiteral("El Ajuste Físico Lógico parcial realizado con exito...!"));
}

void PhysicalAdjustmentScreen::closeEvent(QCloseEvent* event) {
    // The adjustment holds every article: it ends before the screen goes.
    if (isRunning()) {
        event->ignore();
        return;
    }
    QWidget::closeEvent(event);
}

} // namespace orvo::inventory::counts
