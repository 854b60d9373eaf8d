#include "inventory/dispatch/file_orders_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/orders.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/order_screen.h"
#include "pos/sale/sale.h"
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

namespace orvo::inventory::dispatch {

FileOrdersScreen::FileOrdersScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_ctx(std::move(ctx)) {
    setObjectName(kFileOrdersScreen);
    setWindowTitle(QStringLiteral("Generar órdenes de despacho desde DBF"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    m_supplier = purchases::supplierCombo(this, m_db);
    form->addRow(QStringLiteral("Proveedor"), m_supplier);
    auto* clientRow = new QHBoxLayout;
    m_clientCode = new QLineEdit(this);
    m_clientCode->setObjectName(QStringLiteral("txtCliente"));
    m_clientName = new QLabel(this);
    m_clientName->setObjectName(QStringLiteral("lblNombreCliente"));
    clientRow->addWidget(m_clientCode);
    clientRow->addWidget(m_clientName, 1);
    form->addRow(QStringLiteral("Cliente"), clientRow);
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
    lists->addWidget(new QLabel(QStringLiteral("Documentos del archivo"), this), 0, 0);
    lists->addWidget(new QLabel(QStringLiteral("Documentos a convertir"), this), 0, 2);
    m_fileList = new QListWidget(this);
    m_fileList->setObjectName(QStringLiteral("lstDocumentosArchivo"));
    m_chosenList = new QListWidget(this);
    m_chosenList->setObjectName(QStringLiteral("lstDocumentosGenerar"));
    lists->addWidget(m_fileList, 1, 0);
    lists->addWidget(m_chosenList, 1, 2);
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

    connect(m_clientCode, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { setClient(m_clientCode->text()); }); });
    connect(choose, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            const QString file = dialogs().openFileName(
                this, QStringLiteral("Seleccione una carpeta."),
                m_folder->text().isEmpty() ? shell::appHome() + QStringLiteral("/Recibe")
                                           : QDir::fromNativeSeparators(m_folder->text()),
                QStringLiteral("Movitran.dbf (*.dbf *.DBF)"));
            if (file.isEmpty())
                return;
            m_folder->setText(QDir::toNativeSeparators(QFileInfo(file).absolutePath()));
            readFolder();
        });
    });
    connect(m_folder, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { readFolder(); }); });
    connect(generateButton, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { generate(); }); });
    connect(m_supplier, &QComboBox::currentIndexChanged, this, [this] {
        if (m_file)
            guarded(this, [&] { fillLists(); });
    });
    connect(m_fileList, &QListWidget::itemActivated, this, [this] { pass(false); });
    connect(m_chosenList, &QListWidget::itemActivated, this, [this] { takeBack(false); });
    try {
        checkOrderRegister(m_ctx);
    } catch (const UserError& e) {
        setEnabled(false);
        dialogs().information(this, e.text());
        return;
    }
    m_supplier->setFocus();
}

QString FileOrdersScreen::supplier() const {
    return m_supplier->currentData().toString();
}

void FileOrdersScreen::setClient(const QString& code) {
    m_client = orderClient(m_db, m_ctx, code);
    m_clientName->setText(m_client.nombre);
    m_folder->setFocus();
}

void FileOrdersScreen::readFolder() {
    m_file.reset();
    m_chosen.clear();
    fillLists();
    m_file = transfers::readSupplierFile(QDir::fromNativeSeparators(m_folder->text().trimmed()));
    fillLists();
    m_fileList->setFocus();
    m_fileList->setCurrentRow(0);
}

void FileOrdersScreen::fillLists() {
    m_fileList->clear();
    m_chosenList->clear();
    m_documents.clear();
    if (!m_file)
        return;
    m_documents = fileDocuments(m_db, supplier(), *m_file);
    const auto text = [](const FileDocument& d) {
        return QStringLiteral("Documento %1 - %2 caja(s)%3")
            .arg(d.document)
            .arg(d.boxes)
            .arg(d.converted ? QStringLiteral(" (convertido)") : QString());
    };
    for (const FileDocument& d : m_documents)
        (m_chosen.contains(d.document) ? m_chosenList : m_fileList)->addItem(text(d));
}

void FileOrdersScreen::pass(bool all) {
    QList<long long> left;
    for (const FileDocument& d : m_documents)
        if (!m_chosen.contains(d.document))
            left.append(d.document);
    const int row = m_fileList->currentRow();
    if (all)
        m_chosen.append(left);
    else if (row >= 0 && row < left.size())
        m_chosen.append(left[row]);
    fillLists();
    m_fileList->setCurrentRow(qMin(row, m_fileList->count() - 1));
}

void FileOrdersScreen::takeBack(bool all) {
    QList<long long> chosen;
    for (const FileDocument& d : m_documents)
        if (m_chosen.contains(d.document))
            chosen.append(d.document);
    const int row = m_chosenList->currentRow();
    if (all)
        m_chosen.clear();
    else if (row >= 0 && row < chosen.size())
        m_chosen.removeAll(chosen[row]);
    fillLists();
}

void FileOrdersScreen::generate() {
    FileOrdersRequest r;
    r.supplier = supplier();
    r.client = m_client;
    for (const FileDocument& d : m_documents)
        if (m_chosen.contains(d.document))
            r.documents.append(d.document);
    if (m_file && !r.supplier.isEmpty() && m_client.isSet() && !r.documents.isEmpty() &&
        !dialogs().question(this, QStringLiteral("Desea generar la orden de despacho?"),
                            QStringLiteral("Traslados")))
        return;
    const FileOrdersResult done = generateOrders(m_db, m_ctx, m_file ? &*m_file : nullptr, r);
    m_chosen.clear();
    fillLists();
    if (done.wholeFile)
        dialogs().information(
            this, QStringLiteral("El archivo del proveedor seleccionado fue cargado en su "
                                 "totalidad!"));
    if (done.orders.isEmpty())
        return;
    if (!dialogs().question(this, QStringLiteral("Compra convertida con exito, Desea Imprimir "
                                                 "la(s) Orden(es) de Despacho?")))
        return;
    purchases::printDocument(
        this, purchases::joinedDocuments(QStringLiteral("Órdenes de despacho"), done.orders,
                                         [this](long long n) { return orderDocument(m_db, n); }));
}

} // namespace orvo::inventory::dispatch
