#include "inventory/articles/lots_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace orvo::inventory {

LotsScreen::LotsScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(QStringLiteral("frmLotes"));
    setWindowTitle(QStringLiteral("Lotes"));
    auto* layout = new QVBoxLayout(this);
    m_browser = new QTableWidget(0, 4, this);
    m_browser->setObjectName(QStringLiteral("grdConsulta"));
    m_browser->setHorizontalHeaderLabels({QStringLiteral("Lote"), QStringLiteral("Descripción"),
                                          QStringLiteral("Estado"), QStringLiteral("Registro")});
    m_browser->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_browser->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_browser->verticalHeader()->hide();
    m_browser->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_browser);
    connect(m_browser, &QTableWidget::cellClicked, this, [this](int row) {
        if (!isEditing())
            navigateTo(row);
    });
    auto* form = new QFormLayout;
    m_code = new QLineEdit(this);
    m_code->setObjectName(QStringLiteral("txtLote"));
    m_code->setMaxLength(30);
    markKey(m_code);
    markRequired(m_code, QStringLiteral("el lote"));
    form->addRow(QStringLiteral("Lote"), m_code);
    m_description = new QLineEdit(this);
    m_description->setObjectName(QStringLiteral("txtDescripcion"));
    m_description->setMaxLength(100);
    form->addRow(QStringLiteral("Descripción"), m_description);
    auto* states = new QHBoxLayout;
    m_state = new QButtonGroup(this);
    m_state->setObjectName(QStringLiteral("optEstado"));
    const QStringList captions = {QStringLiteral("Cerrado"), QStringLiteral("Abierto")};
    for (int i = 0; i < 2; ++i) {
        auto* b = new QRadioButton(captions[i], this);
        b->setObjectName(QStringLiteral("optEstado_") + QString::number(i));
        m_state->addButton(b, i);
        states->addWidget(b);
    }
    form->addRow(QStringLiteral("Estado"), states);
    layout->addLayout(form);
    installFieldBehaviour();
    enableInputs(false, true);
    requery();
    if (recordCount() > 0)
        navigateTo(0);
}

void LotsScreen::requery() {
    const QString current =
        m_current >= 0 && m_current < m_lots.size() ? m_lots[m_current].code : m_code->text();
    m_lots = lots::listLots(m_db);
    m_browser->setRowCount(0);
    m_current = m_lots.isEmpty() ? -1 : 0;
    for (int i = 0; i < m_lots.size(); ++i) {
        const lots::Lot& l = m_lots[i];
        m_browser->insertRow(i);
        m_browser->setItem(i, 0, new QTableWidgetItem(l.code));
        m_browser->setItem(i, 1, new QTableWidgetItem(l.description));
        m_browser->setItem(i, 2,
                           new QTableWidgetItem(l.state == 0 ? QStringLiteral("Cerrado")
                                                             : QStringLiteral("Abierto")));
        m_browser->setItem(
            i, 3, new QTableWidgetItem(l.registered.toString(QStringLiteral("dd/MM/yyyy"))));
        if (l.code == current)
            m_current = i;
    }
}

void LotsScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    m_current = row;
    m_browser->selectRow(row);
    afterNavigate();
}

void LotsScreen::afterNavigate() {
    if (m_current < 0 || m_current >= recordCount())
        return;
    const lots::Lot& l = m_lots[m_current];
    m_code->setText(l.code);
    m_description->setText(l.description);
    m_state->button(l.state == 0 ? 0 : 1)->setChecked(true);
}

void LotsScreen::newRecord() {
    RecordScreen::newRecord();
    m_state->button(1)->setChecked(true);
}

void LotsScreen::save() {
    lots::Lot l;
    l.code = m_code->text().trimmed();
    l.description = m_description->text();
    l.state = m_state->checkedId() == 0 ? 0 : 1;
    lots::saveLot(m_db, l, mode() == Mode::Adding, m_userCode);
    m_current = -1;
    m_code->setText(l.code);
}

void LotsScreen::remove() {
    if (m_current < 0 || !lots::deleteLot(m_db, m_lots[m_current].code))
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    m_current = -1;
}

void LotsScreen::print() {
    QString html = QStringLiteral("<h2>Lotes</h2><table border=\"1\" cellspacing=\"0\" "
                                  "cellpadding=\"3\"><tr><th>Lote</th><th>Descripción</th>"
                                  "<th>Estado</th></tr>");
    for (const lots::Lot& l : m_lots)
        html += QStringLiteral("<tr><td>") + l.code.toHtmlEscaped() + QStringLiteral("</td><td>") +
                l.description.toHtmlEscaped() + QStringLiteral("</td><td>") +
                (l.state == 0 ? QStringLiteral("Cerrado") : QStringLiteral("Abierto")) +
                QStringLiteral("</td></tr>");
    QTextDocument doc;
    doc.setHtml(html + QStringLiteral("</table>"));
    QPrinter printer;
    if (choosePrinter(this, printer, windowTitle()))
        doc.print(&printer);
}

AssignLotDialog::AssignLotDialog(QSqlDatabase db, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAsignarLote"));
    setWindowTitle(QStringLiteral("Asignar lote"));
    auto* layout = new QVBoxLayout(this);
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("lstLotes"));
    m_lots = lots::openLots(db);
    for (const lots::Lot& l : m_lots)
        m_list->addItem(l.code + QStringLiteral(" - ") + l.description);
    layout->addWidget(m_list);
    auto* buttons = new QHBoxLayout;
    auto* ok = new QPushButton(QStringLiteral("Aceptar"), this);
    ok->setObjectName(QStringLiteral("cmdAceptar"));
    auto* cancel = new QPushButton(QStringLiteral("Cancelar"), this);
    cancel->setObjectName(QStringLiteral("cmdCancelar"));
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, [this] { choose(m_list->currentRow()); });
    connect(m_list, &QListWidget::itemDoubleClicked, this,
            [this] { choose(m_list->currentRow()); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void AssignLotDialog::choose(int row) {
    if (row < 0 || row >= m_lots.size())
        return;
    m_chosen = m_lots[row].id;
    accept();
}

std::optional<long long> AssignLotDialog::choose(QSqlDatabase db, QWidget* parent) {
    AssignLotDialog d(std::move(db), parent);
    if (d.exec() != QDialog::Accepted)
        return std::nullopt;
    return d.chosenId();
}

} // namespace orvo::inventory
