#include "pos/cash/foreign_closing_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/cash/cash_closing.h"
#include "pos/cash/cash_widgets.h"
#include "pos/cash/closing_screen.h"
#include "shell/session/session_context.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::pos::cash {

namespace {
QTableWidgetItem* cell(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    return item;
}
} // namespace

ForeignClosingScreen::ForeignClosingScreen(QSqlDatabase db, shell::SessionContext& session,
                                           fiscal::FiscalPrinterThread& printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_session(session), m_printer(printer) {
    setObjectName(QStringLiteral("frmCierreCajaForanea"));
    setWindowTitle(QStringLiteral("Cierre de Caja Foránea"));

    m_registers =
        listTable(this, "grdCajas",
                  {QStringLiteral("Serie"), QStringLiteral("Caja Nº"), QStringLiteral("Fecha"),
                   QStringLiteral("Factura final"), QStringLiteral("Estado")});
    m_registers->setSelectionMode(QAbstractItemView::SingleSelection);
    m_registers->verticalHeader()->setVisible(false);
    m_registers->setMaximumHeight(160); // a few registers; the closing panel below needs the room
    setFocusProxy(m_registers);

    m_choose = actionButton(this, "cmdSeleccionar", QStringLiteral("Cerrar caja seleccionada"));
    auto* update = actionButton(this, "cmdActualizar", QStringLiteral("Actualizar"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_choose);
    buttons->addWidget(update);
    m_layout = new QVBoxLayout(this);
    m_layout->addWidget(new QLabel(
        QStringLiteral("Cajas de otros equipos con el cierre pendiente. Conecte a este equipo la "
                       "impresora fiscal de la caja que va a cerrar."),
        this));
    m_layout->addWidget(m_registers);
    m_layout->addLayout(buttons);

    connect(m_choose, &QPushButton::clicked, this, [this] { guarded(this, [this] { choose(); }); });
    connect(m_registers, &QTableWidget::cellActivated, this,
            [this] { guarded(this, [this] { choose(); }); });
    connect(update, &QPushButton::clicked, this, [this] { guarded(this, [this] { refresh(); }); });
    guarded(this, [this] { refresh(); });
}

void ForeignClosingScreen::refresh() {
    const QList<CashDay> days = foreignRegistersToClose(m_db, m_session.serial);
    m_registers->setRowCount(int(days.size()));
    for (int i = 0; i < days.size(); ++i) {
        const CashDay& d = days.at(i);
        m_registers->setItem(i, 0, cell(d.serie));
        m_registers->setItem(i, 1, cell(QString::number(d.numero)));
        m_registers->setItem(i, 2, cell(dayText(d.fecha)));
        m_registers->setItem(i, 3, cell(QString::number(d.facturaFinal)));
        m_registers->setItem(i, 4, cell(dayStatusText(d.status)));
    }
    if (!days.isEmpty() && m_registers->currentRow() < 0)
        m_registers->selectRow(0);
}

void ForeignClosingScreen::choose() {
    if (m_closing && m_closing->busy())
        return;
    const int row = m_registers->currentRow();
    if (row < 0 || !m_registers->item(row, 0))
        throw UserError(QStringLiteral("Seleccione la caja que desea cerrar...!"));
    const QString serial = m_registers->item(row, 0)->text();
    const auto key =
        dialogs().authorisation(this, QStringLiteral("Clave para el cierre de la caja ") + serial,
                                QStringLiteral("frmClaveCierreForaneo"));
    if (!key)
        return;
    authoriseForeignClosing(m_db, key->user, key->password);

    delete m_closing;
    m_closing = new ClosingScreen(m_db, m_session, m_printer, serial, this);
    m_layout->addWidget(m_closing);
    connect(m_closing, &ClosingScreen::closingFinished, this, [this](bool closed) {
        if (closed)
            guarded(this, [this] { refresh(); });
    });
    m_closing->show();
    // The window grows to show the closing panel whole (an MDI child keeps its opening size).
    QWidget* frame = this;
    while (frame->parentWidget() && !frame->isWindow() && !frame->inherits("QMdiSubWindow"))
        frame = frame->parentWidget();
    frame->resize(frame->size().expandedTo(frame->sizeHint()));
}

} // namespace orvo::pos::cash
