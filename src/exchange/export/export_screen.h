#pragma once

#include "exchange/export/export_tables.h"

#include <QDate>
#include <QPointer>
#include <QSqlDatabase>
#include <QWidget>
#include <memory>

class QDateEdit;
class QLabel;
class QProgressBar;
class QPushButton;

namespace orvo::exchange::exporting {

class ExportJob;

// frmExpArchivosOrvo, frmExpArchivos and frmExpArchivosXML: the date range (DtpDesde, DtpHasta,
// today by default), the table being written (lblMensaje) with its rows (prbTerm) and the tables
// done (prbTablas), cmdExportar and cmdCancelar. The package is built on a job's thread; the
// screen stays responsive and cmdCancelar stops the run between tables. Once the package is
// made the mail window opens over the program with the export date.
//
// Started by the closing (origin "CierredeCaja") the range is the unattended one, pickers and
// buttons are disabled, the main window's menu and toolbars are locked until the mail is done,
// and the screen closes itself.
class ExportScreen : public QWidget {
    Q_OBJECT
public:
    static constexpr const char* kClosingOrigin = "CierredeCaja";

    ExportScreen(QSqlDatabase db, ExportFormat format, QWidget* parent = nullptr);
    ~ExportScreen() override;

    // export(from, to, origin) of the screens that start it; an empty origin is the user's own.
    void startExport(const QDate& from, const QDate& to, const QString& origin = {});
    bool isRunning() const;
    ExportFormat format() const { return m_format; }

    static QString formName(ExportFormat format);

signals:
    // The run is over (package and mail, or a failure): `ok` when the package was made.
    void runFinished(bool ok);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void exportClicked();
    void cancelClicked();
    void afterExport(bool ok, const QString& error);
    void afterMail();
    void setRunning(bool running);
    void lockMainWindow(bool lock);
    void closeScreen();

    QSqlDatabase m_db;
    ExportFormat m_format;
    QString m_origin;
    std::unique_ptr<ExportJob> m_job;
    bool m_templatesFound = true;
    bool m_running = false;
    QList<QPointer<QWidget>> m_locked;

    QDateEdit* m_desde;
    QDateEdit* m_hasta;
    QLabel* m_mensaje;
    QProgressBar* m_rows;
    QProgressBar* m_tables;
    QPushButton* m_exportar;
    QPushButton* m_cancelar;
};

} // namespace orvo::exchange::exporting
