#include "inventory/articles/barcode_change_screen.h"

#include "common/dialogs/dialogs.h"
#include "inventory/articles/articles.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory {

namespace {
enum Column { kSize, kColour, kBarcode, kName, kNewBarcode };
}

BarcodeChangeScreen::BarcodeChangeScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(barcodes::kBarcodeScreen);
    setWindowTitle(QStringLiteral("Cambiar códigos"));
    auto* layout = new QVBoxLayout(this);
    auto* head = new QFormLayout;
    m_brand = new QComboBox(this);
    m_brand->setObjectName(QStringLiteral("cboMarca"));
    for (const CodeName& b : brands(m_db))
        m_brand->addItem(b.name, b.code);
    m_brand->setCurrentIndex(-1);
    head->addRow(QStringLiteral("Marca"), m_brand);
    m_reference = new QLineEdit(this);
    m_reference->setObjectName(QStringLiteral("txtReferencia"));
    head->addRow(QStringLiteral("Referencia"), m_reference);
    layout->addLayout(head);
    m_codes = new QTableWidget(0, 5, this);
    m_codes->setObjectName(QStringLiteral("SpreadCodigos"));
    m_codes->setHorizontalHeaderLabels({QStringLiteral("Talla"), QStringLiteral("color"),
                                        QStringLiteral("Código"), QStringLiteral("Descripción"),
                                        QStringLiteral("Código nuevo")});
    m_codes->verticalHeader()->hide();
    m_codes->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_codes);
    auto* buttons = new QHBoxLayout;
    auto* find = new QPushButton(QStringLiteral("Buscar"), this);
    find->setObjectName(QStringLiteral("cmdBuscar"));
    auto* save = new QPushButton(QStringLiteral("Guardar"), this);
    save->setObjectName(QStringLiteral("cmdGuardar"));
    buttons->addStretch();
    buttons->addWidget(find);
    buttons->addWidget(save);
    layout->addLayout(buttons);
    connect(find, &QPushButton::clicked, this, [this] { guarded(this, [&] { search(); }); });
    connect(m_reference, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { search(); }); });
    connect(save, &QPushButton::clicked, this, [this] { guarded(this, [&] { saveChanges(); }); });
    connect(m_codes, &QTableWidget::cellChanged, this, [this](int r, int c) {
        if (!m_filling)
            newCodeTyped(r, c);
    });
}

void BarcodeChangeScreen::search() {
    m_filling = true;
    m_codes->setRowCount(0);
    m_filling = false;
    const QString brand = m_brand->currentData().toString();
    const auto variants = barcodes::variantsOf(m_db, brand, m_reference->text());
    m_brandShown = brand;
    m_referenceShown = m_reference->text().trimmed();
    m_filling = true;
    for (const barcodes::VariantCode& v : variants) {
        const int r = m_codes->rowCount();
        m_codes->insertRow(r);
        const QStringList cells = {v.size, v.colour, v.barcode, v.name, QString()};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (c != kNewBarcode)
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            m_codes->setItem(r, c, item);
        }
    }
    m_filling = false;
}

void BarcodeChangeScreen::newCodeTyped(int row, int column) {
    if (column != kNewBarcode)
        return;
    QTableWidgetItem* item = m_codes->item(row, column);
    const QString code = item ? item->text().trimmed() : QString();
    if (!guarded(this, [&] { barcodes::checkNewBarcode(m_db, code); })) {
        m_filling = true;
        item->setText(QString());
        m_filling = false;
    }
}

void BarcodeChangeScreen::saveChanges() {
    QList<barcodes::BarcodeChange> changes;
    for (int r = 0; r < m_codes->rowCount(); ++r) {
        const QString now = m_codes->item(r, kNewBarcode)->text().trimmed();
        if (!now.isEmpty())
            changes.append({m_codes->item(r, kBarcode)->text(), now});
    }
    if (changes.isEmpty())
        return;
    barcodes::changeBarcodes(m_db, m_brandShown, m_referenceShown, changes,
                             ArticleWriter::here(m_userCode, objectName()));
    search();
}

} // namespace orvo::inventory
