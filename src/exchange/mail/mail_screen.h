#pragma once

#include "exchange/mail/mail_job.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QPlainTextEdit;
class QPushButton;

namespace orvo::exchange::mail {

// frmEnvioTraNet (and fmEnvioTraNet2, its XML twin with the fixed recipient): the log box
// (txtEstado) of the mailing of the packages in the export folder, and cmdEnviar / cmdSalir.
// The export screens open it over the program and start it at once; from the menu the user
// presses cmdEnviar. The mailing runs on a job's thread and ends with "Proceso finalizado...!".
class MailScreen : public QWidget {
    Q_OBJECT
public:
    MailScreen(QSqlDatabase db, bool xmlVariant, QWidget* parent = nullptr);
    ~MailScreen() override;

    // Sends every pending message; `closeWhenDone` closes the window after the final message.
    void send(const MailOptions& options, bool closeWhenDone = false);
    bool isSending() const;

signals:
    void mailFinished(bool sent);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void finished(bool ok, const QString& error);

    QSqlDatabase m_db;
    bool m_xml;
    bool m_closeWhenDone = false;
    std::unique_ptr<MailJob> m_job;
    QPlainTextEdit* m_estado;
    QPushButton* m_enviar;
    QPushButton* m_salir;
};

} // namespace orvo::exchange::mail
