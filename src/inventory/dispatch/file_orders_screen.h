#pragma once

#include "inventory/dispatch/file_orders.h"

#include <QSqlDatabase>
#include <QWidget>
#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace orvo::inventory::dispatch {

// frmGenerarOrdenDespDesdeDBF: cboProveedor, txtCliente + Enter, txtCarpeta + Enter (or F4 to
// choose it); the file's documents are moved to the list to convert (cmdPasarCaja,
// cmdPasarTodas, cmdQuitarCaja, cmdQuitarTodas) and cmdGenerar (F9) makes one order per document.
class FileOrdersScreen : public QWidget {
    Q_OBJECT
public:
    FileOrdersScreen(QSqlDatabase db, shell::SessionContext ctx, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {900, 560}; }

    void setClient(const QString& code);
    void readFolder();
    void pass(bool all);
    void takeBack(bool all);
    void generate();

private:
    void fillLists();
    QString supplier() const;

    QSqlDatabase m_db;
    shell::SessionContext m_ctx;
    pos::sale::SaleClient m_client;
    QComboBox* m_supplier = nullptr;
    QLineEdit* m_clientCode = nullptr;
    QLabel* m_clientName = nullptr;
    QLineEdit* m_folder = nullptr;
    QListWidget* m_fileList = nullptr;
    QListWidget* m_chosenList = nullptr;
    std::optional<transfers::SupplierFile> m_file;
    QList<FileDocument> m_documents;
    QList<long long> m_chosen;
};

} // namespace orvo::inventory::dispatch
