#include "inventory/adjustments/adjustment_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "common/grid_ui/catalog_dialog.h"
#include "inventory/adjustments/adjustment_store.h"
#include "inventory/adjustments/adjustments.h"
#include "inventory/articles/lots_screen.h"
#include "inventory/stock/date_guard_edit.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDesktopServices>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>

namespace orvo::inventory::adjustments {

AdjustmentScreen::AdjustmentScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : DocumentScreen(std::move(db), std::move(userCode), kAdjustmentScreen,
                     QStringLiteral("Ajustes de inventario"), QStringLiteral("SpreadAjustes"),
                     false, parent) {
    m_number = textField(QStringLiteral("txtNumero"), 12);
    m_number->setReadOnly(true);
    markKey(m_number);
    header()->addRow(QStringLiteral("Número"), m_number);
    m_type = new QComboBox(this);
    m_type->setObjectName(QStringLiteral("cboTipoAjuste"));
    for (const AdjustmentType& t : adjustmentTypes(m_db))
        m_type->addItem(QString::number(t.code) + QStringLiteral(" - ") + t.name, t.code);
    m_type->setCurrentIndex(-1);
    markRequired(m_type, QStringLiteral("el tipo de ajuste"));
    connect(m_type, &QComboBox::currentIndexChanged, this, [this] { showSign(); });
    header()->addRow(QStringLiteral("Tipo de ajuste"), m_type);
    m_sign = new QLabel(this);
    m_sign->setObjectName(QStringLiteral("lblSigno"));
    header()->addRow(QStringLiteral("Movimiento"), m_sign);
    m_date = dateField(QStringLiteral("dtpFecha"));
    stock::guardDocumentDate(m_date, m_db);
    headerRight()->addRow(QStringLiteral("Fecha"), m_date);
    m_note = textField(QStringLiteral("txtObservacion"), 255);
    headerRight()->addRow(QStringLiteral("Observación"), m_note);
    auto* lotRow = new QHBoxLayout;
    m_lot = new QLabel(this);
    m_lot->setObjectName(QStringLiteral("lblLote"));
    QPushButton* lot = button(QStringLiteral("cmdLote"), QStringLiteral("Lote..."), Qt::Key_F4);
    connect(lot, &QPushButton::clicked, this, [this] { guarded(this, [&] { chooseLot(); }); });
    lotRow->addWidget(m_lot, 1);
    lotRow->addWidget(lot);
    headerRight()->addRow(QStringLiteral("Lote"), lotRow);

    auto* buttons = new QHBoxLayout;
    QPushButton* transfer = button(QStringLiteral("cmdCargarTransferencia"),
                                   QStringLiteral("Cargar transferencia"), Qt::Key_F5);
    connect(transfer, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromTransfer(); }); });
    QPushButton* transferReturn =
        button(QStringLiteral("cmdCargarDevolucion"),
               QStringLiteral("Cargar devolución de transferencia"), Qt::Key_F6);
    connect(transferReturn, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromTransferReturn(); }); });
    QPushButton* packing = button(QStringLiteral("cmdCargarArchivo"),
                                  QStringLiteral("Cargar MOVITRAN.DBF"), Qt::Key_F8);
    connect(packing, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { loadFromPackingList(); }); });
    m_editButtons = {lot, transfer, transferReturn, packing};
    for (QPushButton* b : {transfer, transferReturn, packing})
        buttons->addWidget(b);
    valueLinesAtCost();
    finish(buttons);
    connect(this, &RecordScreen::recordStateChanged, this, &AdjustmentScreen::updateButtons);
    updateButtons();
}

void AdjustmentScreen::updateButtons() {
    for (QPushButton* b : std::as_const(m_editButtons))
        b->setEnabled(isEditing());
}

void AdjustmentScreen::showSign() {
    const int code = m_type->currentData().toInt();
    QString text;
    for (const AdjustmentType& t : adjustmentTypes(m_db))
        if (t.code == code)
            text = t.sign < 0 ? QStringLiteral("SALIDA (-)") : QStringLiteral("ENTRADA (+)");
    m_sign->setText(text);
}

QList<purchases::DocumentSummary> AdjustmentScreen::listDocuments() {
    return listAdjustments(m_db);
}

void AdjustmentScreen::showDocument(const purchases::DocumentSummary& summary) {
    const auto a = loadAdjustment(m_db, summary.number.toLongLong());
    if (!a)
        return;
    m_number->setText(QString::number(a->number));
    int at = m_type->findData(a->type);
    if (at < 0) { // an inactive type still shows on its old adjustments
        m_type->addItem(QString::number(a->type) + QStringLiteral(" - ") + summary.supplierName,
                        a->type);
        at = m_type->count() - 1;
    }
    m_type->setCurrentIndex(at);
    m_sign->setText(a->sign < 0 ? QStringLiteral("SALIDA (-)") : QStringLiteral("ENTRADA (+)"));
    m_date->setDate(a->date.date());
    m_note->setText(a->note);
    m_lotId = a->lotId;
    m_lot->setText(m_lotId > 0 ? QString::number(m_lotId) : QString());
    setLines(a->lines);
    setStatus(a->status);
}

purchases::DocumentLine AdjustmentScreen::lineFor(const QString& barcode, const Decimal& quantity,
                                                  const Decimal&) {
    return adjustmentLine(m_db, barcode, quantity);
}

void AdjustmentScreen::newRecord() {
    DocumentScreen::newRecord();
    m_type->setCurrentIndex(-1);
    m_sign->clear();
    m_lotId = 0;
    m_lot->clear();
}

void AdjustmentScreen::saveDocument() {
    Adjustment a;
    a.number = mode() == Mode::Adding ? 0 : m_number->text().toLongLong();
    a.type = m_type->currentIndex() < 0 ? 0 : m_type->currentData().toInt();
    a.date = QDateTime(m_date->date(), QTime(0, 0));
    a.note = m_note->text();
    a.user = m_userCode;
    a.lotId = m_lotId;
    a.lines = keyedLines();
    checkAdjustment(a);
    const bool approve = dialogs().question(this, QStringLiteral("Desea Aprobar el ajuste ?"),
                                            QStringLiteral("Aprobar transferencia"), false);
    selectAfterRequery(QString::number(saveAdjustment(m_db, a, approve)));
}

void AdjustmentScreen::deleteDocument(const purchases::DocumentSummary& summary) {
    deleteAdjustment(m_db, summary.number.toLongLong());
}

purchases::PrintedDocument
AdjustmentScreen::printedDocument(const purchases::DocumentSummary& summary) {
    return adjustmentDocument(m_db, summary.number.toLongLong());
}

void AdjustmentScreen::appendLines(const QList<AdjustmentLine>& lines,
                                   const QList<purchases::PackingList::Missing>& missing) {
    QList<AdjustmentLine> all = keyedLines();
    all.append(lines);
    setLines(all);
    if (missing.isEmpty())
        return;
    const QString file = purchases::writeMissingArticles(missing);
    if (dialogs().question(this,
                           QStringLiteral("No se cargaron ") + QString::number(missing.size()) +
                               QStringLiteral(" articulos...! Desea visualizarlos...?"),
                           QStringLiteral("Información"), false))
        QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

void AdjustmentScreen::loadFromTransfer() {
    if (!isEditing())
        return;
    const auto row = grid::CatalogDialog::choose(this, QStringLiteral("Transferencias"), m_db,
                                                 store::transfersCatalogSql());
    if (!row)
        return;
    const LoadedLines loaded = linesFromTransfer(
        m_db, grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong());
    appendLines(loaded.lines, loaded.missing);
}

void AdjustmentScreen::loadFromTransferReturn() {
    if (!isEditing())
        return;
    const auto row =
        grid::CatalogDialog::choose(this, QStringLiteral("Devoluciones de transferencia"), m_db,
                                    store::transferReturnsCatalogSql());
    if (!row)
        return;
    const LoadedLines loaded = linesFromTransferReturn(
        m_db, grid::CatalogDialog::valueOf(*row, QStringLiteral("Numero")).toLongLong());
    appendLines(loaded.lines, loaded.missing);
}

void AdjustmentScreen::loadFromPackingList() {
    if (!isEditing())
        return;
    appendLines(atAverageCost(
        m_db, purchases::loadPackingList(this, m_db, purchases::PackingCheck::Exists)));
}

void AdjustmentScreen::chooseLot() {
    if (const auto id = AssignLotDialog::choose(m_db, this)) {
        m_lotId = *id;
        m_lot->setText(QString::number(*id));
    }
}

} // namespace orvo::inventory::adjustments
