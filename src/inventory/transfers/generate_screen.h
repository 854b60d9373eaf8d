#pragma once

#include "inventory/transfers/generate_transfers.h"

#include <QSqlDatabase>
#include <QWidget>
#include <optional>

class QComboBox;
class QLineEdit;
class QListWidget;

namespace orvo::inventory::transfers {

// frmGenerarTransferenciasDeDBF: the supplier, the branch the goods go to and the folder of the
// supplier's Movitran.dbf; its boxes are moved to the list to convert (cmdPasarCaja,
// cmdPasarTodas, cmdQuitarCaja, cmdQuitarTodas) and cmdGenerar makes one transfer per box.
class GenerateScreen : public QWidget {
    Q_OBJECT
public:
    GenerateScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {900, 560}; }

    void chooseFolder();
    // Reads the folder typed in txtCarpeta.
    void readFolder();
    void pass(bool all);
    void takeBack(bool all);
    void generate();

private:
    void fillLists();
    QString supplier() const;

    QSqlDatabase m_db;
    QString m_userCode;
    QComboBox* m_supplier = nullptr;
    QComboBox* m_branch = nullptr;
    QLineEdit* m_folder = nullptr;
    QListWidget* m_fileBoxes = nullptr;
    QListWidget* m_chosenBoxes = nullptr;
    std::optional<SupplierFile> m_file;
    QList<SupplierBox> m_chosen;
};

} // namespace orvo::inventory::transfers
