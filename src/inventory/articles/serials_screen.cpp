#include "inventory/articles/serials_screen.h"

#include "common/dialogs/dialogs.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory {

namespace {

QTableWidget* table(QWidget* parent, const QString& name, const QStringList& captions) {
    auto* t = new QTableWidget(0, int(captions.size()), parent);
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(captions);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->horizontalHeader()->setStretchLastSection(true);
    t->verticalHeader()->hide();
    return t;
}

void addRow(QTableWidget* t, const QStringList& cells) {
    const int r = t->rowCount();
    t->insertRow(r);
    for (int c = 0; c < cells.size(); ++c)
        t->setItem(r, c, new QTableWidgetItem(cells[c]));
}

} // namespace

SerialsScreen::SerialsScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(serials::kSerialScreen);
    setWindowTitle(QStringLiteral("Entrada de seriales"));
    auto* layout = new QVBoxLayout(this);
    auto* head = new QFormLayout;
    m_type = new QComboBox(this);
    m_type->setObjectName(QStringLiteral("cboTipoMovimiento"));
    for (const serials::MovementType& t : serials::movementTypes())
        m_type->addItem(t.name, t.code);
    m_type->setCurrentIndex(-1);
    head->addRow(QStringLiteral("Tipo de movimiento"), m_type);
    m_document = new QLineEdit(this);
    m_document->setObjectName(QStringLiteral("txtDocumento"));
    m_document->setReadOnly(true);
    head->addRow(QStringLiteral("Documento"), m_document);
    m_party = new QLineEdit(this);
    m_party->setObjectName(QStringLiteral("txtTercero"));
    m_party->setReadOnly(true);
    head->addRow(QStringLiteral("Tercero"), m_party);
    m_note = new QLineEdit(this);
    m_note->setObjectName(QStringLiteral("txtObservacion"));
    m_note->setMaxLength(255);
    head->addRow(QStringLiteral("Observación"), m_note);
    m_state = new QLabel(this);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    head->addRow(QStringLiteral("Estatus"), m_state);
    layout->addLayout(head);

    m_documents =
        table(this, QStringLiteral("grdDocumentos"),
              {QStringLiteral("Documento"), QStringLiteral("Serie"), QStringLiteral("Código"),
               QStringLiteral("Nombre"), QStringLiteral("Fecha")});
    layout->addWidget(m_documents);
    m_sourceLines = table(
        this, QStringLiteral("SpreadLineas"),
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Cantidad")});
    layout->addWidget(m_sourceLines);

    auto* scan = new QHBoxLayout;
    m_barcode = new QLineEdit(this);
    m_barcode->setObjectName(QStringLiteral("txtCodigoBarra"));
    m_serial = new QLineEdit(this);
    m_serial->setObjectName(QStringLiteral("txtSerial"));
    scan->addWidget(new QLabel(QStringLiteral("Código"), this));
    scan->addWidget(m_barcode);
    scan->addWidget(new QLabel(QStringLiteral("Serial"), this));
    scan->addWidget(m_serial);
    layout->addLayout(scan);
    m_serials = table(this, QStringLiteral("SpreadSeriales"),
                      {QStringLiteral("Código"), QStringLiteral("Serial")});
    layout->addWidget(m_serials);

    auto* buttons = new QHBoxLayout;
    auto* fresh = new QPushButton(QStringLiteral("Nuevo"), this);
    fresh->setObjectName(QStringLiteral("cmdNuevo"));
    m_save = new QPushButton(QStringLiteral("Guardar"), this);
    m_save->setObjectName(QStringLiteral("cmdGuardar"));
    buttons->addStretch();
    buttons->addWidget(fresh);
    buttons->addWidget(m_save);
    layout->addLayout(buttons);

    connect(m_type, &QComboBox::activated, this,
            [this] { guarded(this, [&] { chooseType(m_type->currentData().toString()); }); });
    connect(m_documents, &QTableWidget::cellDoubleClicked, this,
            [this](int row) { guarded(this, [&] { chooseDocument(row); }); });
    connect(m_barcode, &QLineEdit::returnPressed, m_serial, qOverload<>(&QWidget::setFocus));
    connect(m_serial, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { scanSerial(); }); });
    connect(m_save, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { saveDocument(); }); });
    connect(fresh, &QPushButton::clicked, this, [this] { guarded(this, [&] { newDocument(); }); });
    newDocument();
}

void SerialsScreen::newDocument() {
    m_doc = serials::SerialDocument();
    m_type->setCurrentIndex(-1);
    m_document->clear();
    m_party->clear();
    m_note->clear();
    m_documents->setRowCount(0);
    m_sourceLines->setRowCount(0);
    m_sources.clear();
    showLines();
    setReadOnly(false);
}

void SerialsScreen::openDocument(int number) {
    const auto doc = serials::loadSerialDocument(m_db, number);
    if (!doc)
        return;
    m_doc = *doc;
    m_type->setCurrentIndex(m_type->findData(m_doc.type));
    m_document->setText(m_doc.document);
    m_party->setText(m_doc.party);
    m_note->setText(m_doc.note);
    showLines();
    setReadOnly(m_doc.status == 1);
}

void SerialsScreen::chooseType(const QString& code) {
    m_type->setCurrentIndex(m_type->findData(code));
    m_doc.type = code;
    loadDocuments();
}

void SerialsScreen::loadDocuments() {
    m_sources = serials::sourceDocuments(m_db, m_doc.type);
    m_documents->setRowCount(0);
    for (const serials::SourceDocument& d : m_sources)
        addRow(m_documents, {d.number, d.serie, d.party, d.partyName,
                             d.date.date().toString(QStringLiteral("dd/MM/yyyy"))});
}

void SerialsScreen::chooseDocument(int row) {
    if (row < 0 || row >= m_sources.size())
        return;
    const serials::SourceDocument& d = m_sources[row];
    m_doc.document = d.number;
    m_doc.party = d.party;
    m_document->setText(d.number);
    m_party->setText(d.party);
    m_sourceLines->setRowCount(0);
    for (const serials::SourceLine& l : serials::sourceLines(m_db, m_doc.type, d))
        addRow(m_sourceLines, {l.barcode, l.name, l.quantity.toString(2)});
}

void SerialsScreen::scanSerial() {
    if (m_serial->text().trimmed().isEmpty())
        return;
    try {
        serials::addScannedSerial(m_doc.lines, m_barcode->text(), m_serial->text());
    } catch (...) {
        m_serial->selectAll();
        throw;
    }
    m_serial->clear();
    showLines();
}

void SerialsScreen::showLines() {
    m_serials->setRowCount(0);
    for (const serials::SerialLine& l : m_doc.lines)
        addRow(m_serials, {l.barcode, l.serial});
    m_state->setText(m_doc.status == 1 ? QStringLiteral("APROBADA")
                                       : QStringLiteral("NO APROBADA"));
}

void SerialsScreen::setReadOnly(bool readOnly) {
    for (QWidget* w :
         std::initializer_list<QWidget*>{m_type, m_note, m_barcode, m_serial, m_save, m_documents})
        w->setEnabled(!readOnly);
}

void SerialsScreen::saveDocument() {
    if (m_doc.lines.isEmpty())
        throw UserError(QStringLiteral("La información debe contener al menos un item...!"));
    if (m_doc.type.isEmpty())
        return;
    const bool approve =
        dialogs().question(this, QStringLiteral("Desea Aprobar los seriales de la compra?"),
                           QStringLiteral("Aprobar seriales"), false);
    serials::SerialDocument doc = m_doc;
    doc.note = m_note->text();
    doc.user = m_userCode;
    const int number = serials::saveSerialDocument(m_db, doc, approve);
    openDocument(number);
}

} // namespace orvo::inventory
