#pragma once

#include "common/jobs/job.h"
#include "exchange/export/export_tables.h"

#include <QDate>
#include <QStringList>
#include <functional>
#include <optional>

// The export of a store package, on a job's thread with its own connection (the screens, the
// closing and `orvo export` all run this).
//
// DBF packages (store and head-office sets): the export folder is emptied of *.zip and *.dbf;
// each table with rows in the range becomes a DBF file made from its template (a table without
// rows leaves no file); the articles that moved are stamped after the third table; the DBF files
// are zipped as "<store code>.zip" and deleted. XML package: *.zip and *.xml are emptied, the
// articles stamped, each EXPORTACION query saved as "<NombreTabla>.xml" and the files zipped as
// "<store code>_XML_<yyyymmdd_hhmmss>.zip".
//
// progress(percent, label): the rows of the table being written, labelled with its message;
// tablesProgress(done, total): the tables. cancel() stops between tables; the files of the run are
// then removed and the job fails with "Exportación cancelada por el usuario...!".
namespace orvo::exchange::exporting {

struct ExportRequest {
    ExportFormat format = ExportFormat::Orvo;
    QDate from;
    QDate to;
};

class ExportJob : public jobs::Job {
    Q_OBJECT
public:
    ExportJob(const QSqlDatabase& db, const ExportRequest& request, QObject* parent = nullptr);

    const ExportRequest& request() const { return m_request; }
    // Once it has worked: the archive made ("" when no table had rows) and its folder.
    QString packagePath() const;
    QString folder() const;

signals:
    void tablesProgress(int done, int total);

protected:
    void run(const QSqlDatabase& db) override;

private:
    void runDbf(const QSqlDatabase& db, const QString& code);
    void runXml(const QSqlDatabase& db, const QString& code);
    void checkCancelled(const QStringList& written);

    ExportRequest m_request;
    QString m_folder;
    QString m_package;
};

// Runs an export and waits for it (commands, the headless closing), passing its progress on.
// Returns the package's path; throws UserError with the job's message when it fails.
QString exportNow(const QSqlDatabase& db, const ExportRequest& request,
                  const std::function<void(int, const QString&)>& progress = {});

// The name a format goes by in commands and settings ("orvo", "vandu", "xml"); nullopt when
// the text names none.
std::optional<ExportFormat> formatNamed(const QString& name);

} // namespace orvo::exchange::exporting
