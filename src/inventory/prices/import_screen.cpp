#include "inventory/prices/import_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/screen_widgets.h"
#include "common/errors/errors.h"

#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::prices {

ImportListsScreen::ImportListsScreen(QSqlDatabase db, QString userCode, QString recibeFolder,
                                     QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)),
      m_recibe(std::move(recibeFolder)) {
    setObjectName(kImportListsScreen);
    setWindowTitle(QStringLiteral("Cargar listas de precios"));
    m_source = new QLabel(this);
    m_source->setObjectName(QStringLiteral("lblOrigen"));
    m_lists = listTable(this, "grdListas",
                        {QStringLiteral("Nº casa matriz"), QStringLiteral("Fecha"),
                         QStringLiteral("Observación"), QStringLiteral("Referencias")});
    m_load = actionButton(this, "cmdCargar", QStringLiteral("Cargar"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_load);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_source);
    layout->addWidget(m_lists, 1);
    layout->addLayout(buttons);
    connect(m_load, &QPushButton::clicked, this, [this] { guarded(this, [this] { load(); }); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });
    setFocusProxy(m_load);
    refresh();
}

bool ImportListsScreen::refresh() {
    m_received.reset();
    m_lists->setRowCount(0);
    m_load->setEnabled(false);
    m_source->setText(QStringLiteral("Carpeta: ") + QDir::toNativeSeparators(m_recibe));
    return guarded(this, [this] {
        checkNothingPendingBeforeLists(m_db, m_recibe);
        m_received = readReceivedLists(m_recibe);
        if (!m_received)
            throw UserError(
                QStringLiteral("No existen listas de precios pendientes por cargar...!"));
        m_source->setText(QStringLiteral("Recibido: ") + m_received->source);
        m_lists->setRowCount(int(m_received->lists.size()));
        for (int r = 0; r < m_received->lists.size(); ++r) {
            const ReceivedList& l = m_received->lists[r];
            const QStringList cells = {QString::number(l.sourceNumber),
                                       l.list.date.toString(QStringLiteral("dd/MM/yyyy")),
                                       l.list.note, QString::number(l.list.lines.size())};
            for (int c = 0; c < cells.size(); ++c)
                m_lists->setItem(r, c, new QTableWidgetItem(cells[c]));
        }
        m_load->setEnabled(true);
    });
}

void ImportListsScreen::load() {
    if (!m_received)
        return;
    checkNothingPendingBeforeLists(m_db, m_recibe);
    SaveOptions options;
    options.approve =
        dialogs().question(this, QStringLiteral("Desea aprobar la lista de precio...?"),
                           QStringLiteral("Aprobar lista de precio"), true);
    if (options.approve)
        options.applyToInventory = dialogs().question(
            this,
            QStringLiteral("Desea actualizar los valores del inventario con la lista de "
                           "precio...?"),
            QStringLiteral("Actualizar inventario"), true);
    const ReceivedLoad r = loadReceivedLists(m_db, *m_received, options,
                                             ArticleWriter::here(m_userCode, kImportListsScreen));
    QStringList numbers;
    for (int n : r.numbers)
        numbers << QString::number(n);
    QString text = QStringLiteral("Se cargaron %1 listas de precios").arg(r.numbers.size());
    if (!numbers.isEmpty())
        text += QStringLiteral(" (Nº ") + numbers.join(QStringLiteral(", ")) + QLatin1Char(')');
    if (options.applyToInventory)
        text +=
            QStringLiteral(": se actualizaron los precios de %1 artículos").arg(r.articlesUpdated);
    text += QStringLiteral("...!");
    if (r.alreadyLoaded > 0)
        text += QStringLiteral("\n%1 lista(s) ya estaban cargadas.").arg(r.alreadyLoaded);
    m_received.reset();
    m_lists->setRowCount(0);
    m_load->setEnabled(false);
    dialogs().information(this, text);
}

} // namespace orvo::inventory::prices
