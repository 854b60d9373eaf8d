#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace orvo::inventory::transfers {

class ImportJob;

// frmImpTransferencias and frmImpDevTransferencias: loads the transfers (returns) another store
// sent, lying in a folder (Recibe by default), on a job with its progress; the end message tells
// what was loaded and what was passed over.
class ImportScreen : public QWidget {
    Q_OBJECT
public:
    ImportScreen(Kind kind, QSqlDatabase db, QString userCode, QWidget* parent = nullptr);
    ~ImportScreen() override;
    QSize sizeHint() const override { return {720, 260}; }

    // Asks for the folder ("Seleccione una carpeta (MOVITRAN.DBF)").
    void chooseFolder();
    // Starts the load of what lies in the folder.
    void load();
    bool isRunning() const;

private:
    void finished(bool ok, const QString& error);

    Kind m_kind;
    QSqlDatabase m_db;
    QString m_userCode;
    QLineEdit* m_folder = nullptr;
    QPushButton* m_choose = nullptr;
    QPushButton* m_load = nullptr;
    QLabel* m_message = nullptr;
    QProgressBar* m_progress = nullptr;
    std::unique_ptr<ImportJob> m_job;
};

} // namespace orvo::inventory::transfers
