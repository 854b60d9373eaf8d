#include "inventory/transfers/generate_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/order_screen.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/transfers/transfer_print.h"
#include "inventory/transfers/transfer_screen.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"
#include "shell/startup/app_home.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::inventory::transfers {

namespace {

QString boxText(const SupplierBox& b) {
    return QStringLiteral("Documento %1 - Caja %2%3")
        .arg(b.document)
        .arg(b.box)
        .arg(b.converted ? QStringLiteral(" (convertida)") : QString());
}

bool sameBox(const SupplierBox& a, const SupplierBox& b) {
    return a.document == b.document && a.box == b.box;
}

} // namespace

GenerateScreen::GenerateScreen(QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(kGenerateScreen);
    setWindowTitle(QStringLiteral("Generar transferencias desde DBF"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    m_supplier = purchases::supplierCombo(this, m_db);
    form->addRow(QStringLiteral("Proveedor"), m_supplier);
    m_branch = branchCombo(this, m_db);
    form->addRow(QStringLiteral("Sucursal"), m_branch);
    auto* folderRow = new QHBoxLayout;
    m_folder = new QLineEdit(this);
    m_folder->setObjectName(QStringLiteral("txtCarpeta"));
    folderRow->addWidget(m_folder, 1);
    QPushButton* choose = purchases::screenButton(this, QStringLiteral("cmdCarpeta"),
                                                  QStringLiteral("Carpeta..."), Qt::Key_F4);
    folderRow->addWidget(choose);
    form->addRow(QStringLiteral("Carpeta"), folderRow);
    layout->addLayout(form);

    auto* lists = new QGridLayout;
    lists->addWidget(new QLabel(QStringLiteral("Cajas del archivo"), this), 0, 0);
    lists->addWidget(new QLabel(QStringLiteral("Cajas a convertir"), this), 0, 2);
    m_fileBoxes = new QListWidget(this);
    m_fileBoxes->setObjectName(QStringLiteral("lstCajasArchivo"));
    m_chosenBoxes = new QListWidget(this);
    m_chosenBoxes->setObjectName(QStringLiteral("lstCajasGenerar"));
    lists->addWidget(m_fileBoxes, 1, 0);
    lists->addWidget(m_chosenBoxes, 1, 2);
    auto* moves = new QVBoxLayout;
    const auto add = [&](const char* name, const char* text, auto action) {
        auto* b = new QPushButton(QString::fromUtf8(text), this);
        b->setObjectName(QString::fromLatin1(name));
        connect(b, &QPushButton::clicked, this, [this, action] { guarded(this, action); });
        moves->addWidget(b);
    };
    moves->addStretch();
    add("cmdPasarCaja", ">", [this] { pass(false); });
    add("cmdPasarTodas", ">>", [this] { pass(true); });
    add("cmdQuitarCaja", "<", [this] { takeBack(false); });
    add("cmdQuitarTodas", "<<", [this] { takeBack(true); });
    moves->addStretch();
    lists->addLayout(moves, 1, 1);
    layout->addLayout(lists, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    QPushButton* generateButton = purchases::screenButton(this, QStringLiteral("cmdGenerar"),
                                                          QStringLiteral("Generar"), Qt::Key_F9);
    bottom->addWidget(generateButton);
    layout->addLayout(bottom);

    connect(choose, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { chooseFolder(); }); });
    connect(m_folder, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { readFolder(); }); });
    connect(generateButton, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { generate(); }); });
    connect(m_supplier, &QComboBox::currentIndexChanged, this, [this] {
        if (m_file)
            guarded(this, [&] {
                markConverted(m_db, supplier(), *m_file);
                fillLists();
            });
    });
    connect(m_fileBoxes, &QListWidget::itemDoubleClicked, this, [this] { pass(false); });
    connect(m_chosenBoxes, &QListWidget::itemDoubleClicked, this, [this] { takeBack(false); });
}

QString GenerateScreen::supplier() const {
    return m_supplier->currentData().toString();
}

void GenerateScreen::chooseFolder() {
    const QString file = dialogs().openFileName(this, QStringLiteral("Seleccione una carpeta."),
                                                m_folder->text().isEmpty()
                                                    ? shell::appHome() + QStringLiteral("/Recibe")
                                                    : QDir::fromNativeSeparators(m_folder->text()),
                                                QStringLiteral("Movitran.dbf (*.dbf *.DBF)"));
    if (file.isEmpty())
        return;
    m_folder->setText(QDir::toNativeSeparators(QFileInfo(file).absolutePath()));
    readFolder();
}

void GenerateScreen::readFolder() {
    m_file.reset();
    m_chosen.clear();
    fillLists();
    SupplierFile file = readSupplierFile(QDir::fromNativeSeparators(m_folder->text().trimmed()));
    markConverted(m_db, supplier(), file);
    m_file = std::move(file);
    fillLists();
}

void GenerateScreen::fillLists() {
    m_fileBoxes->clear();
    m_chosenBoxes->clear();
    if (!m_file)
        return;
    for (SupplierBox& c : m_chosen)
        for (const SupplierBox& b : m_file->boxes)
            if (sameBox(b, c))
                c.converted = b.converted;
    for (const SupplierBox& b : m_file->boxes) {
        const bool chosen = std::any_of(m_chosen.cbegin(), m_chosen.cend(),
                                        [&](const SupplierBox& c) { return sameBox(b, c); });
        if (!chosen)
            m_fileBoxes->addItem(boxText(b));
    }
    for (const SupplierBox& c : m_chosen)
        m_chosenBoxes->addItem(boxText(c));
}

void GenerateScreen::pass(bool all) {
    if (!m_file)
        return;
    QList<SupplierBox> left;
    for (const SupplierBox& b : m_file->boxes)
        if (std::none_of(m_chosen.cbegin(), m_chosen.cend(),
                         [&](const SupplierBox& c) { return sameBox(b, c); }))
            left.append(b);
    const int row = m_fileBoxes->currentRow();
    if (all)
        m_chosen.append(left);
    else if (row >= 0 && row < left.size())
        m_chosen.append(left[row]);
    fillLists();
}

void GenerateScreen::takeBack(bool all) {
    const int row = m_chosenBoxes->currentRow();
    if (all)
        m_chosen.clear();
    else if (row >= 0 && row < m_chosen.size())
        m_chosen.removeAt(row);
    fillLists();
}

void GenerateScreen::generate() {
    GenerateRequest r;
    r.supplier = supplier();
    r.branch = m_branch->currentData().toString();
    r.boxes = m_chosen;
    r.user = m_userCode;
    checkRequest(m_file ? &*m_file : nullptr, r);
    if (!dialogs().question(this, QStringLiteral("Desea generar la transferencia?"),
                            QStringLiteral("Traslados")))
        return;
    // Refused, naming the two lists it wrote, while the file has articles it cannot send.
    const GenerateResult done = generateTransfers(m_db, *m_file, r);
    markConverted(m_db, r.supplier, *m_file);
    m_chosen.clear();
    fillLists();
    if (done.wholeFile)
        dialogs().information(
            this, QStringLiteral("El archivo del proveedor seleccionado fue cargado en su "
                                 "totalidad!"));
    if (done.transfers.isEmpty())
        return;
    if (!dialogs().question(this, QStringLiteral("Compra convertida con exito, Desea Imprimir "
                                                 "la(s) Transferencia(s)?")))
        return;
    purchases::printDocument(
        this, purchases::joinedDocuments(
                  QStringLiteral("Transferencias"), done.transfers,
                  [this](long long n) { return transferDocument(m_db, Kind::Transfer, n); }));
}

} // namespace orvo::inventory::transfers
