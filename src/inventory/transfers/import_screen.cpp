#include "inventory/transfers/import_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/transfers/import_job.h"
#include "inventory/transfers/transfer_package.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::inventory::transfers {

ImportScreen::ImportScreen(Kind kind, QSqlDatabase db, QString userCode, QWidget* parent)
    : QWidget(parent), m_kind(kind), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    const bool transfer = kind == Kind::Transfer;
    setObjectName(transfer ? kImportTransfersScreen : kImportReturnsScreen);
    setWindowTitle(transfer ? QStringLiteral("Cargar transferencias")
                            : QStringLiteral("Cargar devoluciones de transferencias"));
    auto* layout = new QVBoxLayout(this);
    auto* row = new QHBoxLayout;
    m_folder =
        new QLineEdit(QDir::toNativeSeparators(shell::appHome() + QStringLiteral("/Recibe")), this);
    m_folder->setObjectName(QStringLiteral("txtCarpeta"));
    row->addWidget(new QLabel(QStringLiteral("Carpeta:"), this));
    row->addWidget(m_folder, 1);
    m_choose = purchases::screenButton(this, QStringLiteral("cmdCarpeta"),
                                       QStringLiteral("Carpeta..."), Qt::Key_F4);
    row->addWidget(m_choose);
    layout->addLayout(row);
    layout->addWidget(
        new QLabel((transfer ? QStringLiteral("Transfer.zip, o ResuTran.dbf y MoviTran.dbf")
                             : QStringLiteral("Devuelve.zip, o ResuDvTr.dbf y MoviDvTr.dbf")) +
                       QStringLiteral(", en la carpeta elegida."),
                   this));
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("lblMensaje"));
    layout->addWidget(m_message);
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("prbTerm"));
    m_progress->setRange(0, 100);
    m_progress->setValue(0);
    layout->addWidget(m_progress);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    m_load = purchases::screenButton(this, QStringLiteral("cmdCargar"), QStringLiteral("Cargar"),
                                     Qt::Key_F9);
    buttons->addWidget(m_load);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(m_choose, &QPushButton::clicked, this,
            [this] { guarded(this, [&] { chooseFolder(); }); });
    connect(m_load, &QPushButton::clicked, this, [this] { guarded(this, [&] { load(); }); });
    // Enter in the folder loads it.
    connect(m_folder, &QLineEdit::returnPressed, this, [this] { guarded(this, [&] { load(); }); });
    m_folder->setFocus();
}

ImportScreen::~ImportScreen() {
    if (m_job)
        m_job->wait();
}

bool ImportScreen::isRunning() const {
    return m_job && m_job->isRunning();
}

void ImportScreen::chooseFolder() {
    const PackageTables& t = packageTables(m_kind);
    const QString file = dialogs().openFileName(
        this, QStringLiteral("Seleccione una carpeta (MOVITRAN.DBF)"),
        QDir::fromNativeSeparators(m_folder->text()),
        QStringLiteral("Paquetes (%1 %2.dbf %2.DBF %3.dbf %3.DBF);;Todos (*)")
            .arg(packageFileName(m_kind), t.summary, t.lines));
    if (file.isEmpty())
        return;
    m_folder->setText(QDir::toNativeSeparators(QFileInfo(file).absolutePath()));
}

void ImportScreen::load() {
    if (isRunning())
        return;
    const QString folder = QDir::fromNativeSeparators(m_folder->text().trimmed());
    if (folder.isEmpty() || !QDir(folder).exists())
        throw UserError(QStringLiteral("No existe la carpeta ") + m_folder->text() +
                        QStringLiteral("...!"));
    m_job = std::make_unique<ImportJob>(m_db, m_kind, folder,
                                        ArticleWriter::here(m_userCode, objectName()));
    connect(m_job.get(), &jobs::Job::progress, this, [this](int percent, const QString& label) {
        m_progress->setValue(percent);
        if (!label.isEmpty())
            m_message->setText(label);
    });
    connect(m_job.get(), &jobs::Job::finished, this, &ImportScreen::finished);
    m_load->setEnabled(false);
    m_choose->setEnabled(false);
    m_message->setText(QStringLiteral("Verificando..."));
    m_job->start();
}

void ImportScreen::finished(bool ok, const QString& error) {
    m_load->setEnabled(true);
    m_choose->setEnabled(true);
    m_progress->setValue(0);
    m_message->clear();
    if (!ok) {
        dialogs().information(this, error);
        return;
    }
    const auto result = m_job->result();
    if (!result) {
        dialogs().information(this, (m_kind == Kind::Transfer
                                         ? QStringLiteral("No existen transferencias pendientes "
                                                          "por cargar en ")
                                         : QStringLiteral("No existen devoluciones de "
                                                          "transferencias pendientes por cargar "
                                                          "en ")) +
                                        m_folder->text() + QStringLiteral("...!"));
        return;
    }
    QStringList lines{endMessage(m_kind, *result)};
    lines << result->notes;
    dialogs().information(this, lines.join(u'\n'));
}

} // namespace orvo::inventory::transfers
