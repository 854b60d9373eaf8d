#include "exchange/export/export_job.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/schema/schema.h"
#include "exchange/export/export_store.h"
#include "exchange/package/dbf.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSqlField>
#include <QSqlRecord>
#include <QXmlStreamWriter>

Q_LOGGING_CATEGORY(lcExport, "orvo.exchange.export", QtInfoMsg)

namespace orvo::exchange::exporting {

namespace {

const QString kCancelled = QStringLiteral("Exportación cancelada por el usuario...!");

// The store's columns by name, for what a value is when the engine does not say (SQLite hands
// date-times and numbers back as text).
const QHash<QString, schema::Column>& knownColumns() {
    static const QHash<QString, schema::Column> columns = [] {
        QHash<QString, schema::Column> out;
        for (const schema::Table& t : schema::storeTables())
            for (const schema::Column& c : t.columns)
                if (!out.contains(c.name.toUpper()))
                    out.insert(c.name.toUpper(), c);
        return out;
    }();
    return columns;
}

// A date-time as the DBF writer takes it: PostgreSQL's QDateTime as it is; SQLite's ISO text
// ("2024-06-14T10:15:30.000") as "2024-06-14 10:15:30", without the cost of parsing it.
QVariant dateTimeForFile(const QVariant& v) {
    if (v.isNull() || v.typeId() != QMetaType::QString)
        return v.isNull() ? v : QVariant(db::dateTimeValue(v));
    QString t = v.toString();
    if (t.size() >= 19 && t[10] == QLatin1Char('T')) {
        t[10] = QLatin1Char(' ');
        t.truncate(19);
        return t;
    }
    return QVariant(db::dateTimeValue(v));
}

bool isDateTimeColumn(const QString& name) {
    const auto it = knownColumns().constFind(name.toUpper());
    return it != knownColumns().cend() && it->type == schema::Type::DateTime;
}

// Removes the files of `folder` that match `patterns`, ignoring case.
void removeFiles(const QString& folder, const QStringList& patterns) {
    QDir dir(folder);
    for (const QString& f : dir.entryList(patterns, QDir::Files))
        if (!dir.remove(f))
            throw UserError(QStringLiteral("No se pudo borrar el archivo %1...!").arg(f));
}

QStringList filesMatching(const QString& folder, const QString& pattern) {
    QDir dir(folder);
    QStringList out;
    for (const QString& f : dir.entryList({pattern}, QDir::Files, QDir::Name))
        out << dir.filePath(f);
    return out;
}

void bindRange(db::Sql& q, const ExportRange& range, int pairs) {
    for (int i = 0; i < pairs; ++i)
        q.bind(range.from).bind(range.to);
}

// "?"s in place of :desde and :hasta, and the values they stand for, in order.
QString bindNamedRange(const QString& query, const ExportRange& range, QVariantList* values) {
    static const QRegularExpression marker(QStringLiteral(":(desde|hasta)\\b"),
                                           QRegularExpression::CaseInsensitiveOption);
    QString out;
    qsizetype last = 0;
    auto it = marker.globalMatch(query);
    while (it.hasNext()) {
        const auto m = it.next();
        out += query.mid(last, m.capturedStart() - last) + QLatin1Char('?');
        last = m.capturedEnd();
        *values << (m.captured(1).compare(QLatin1String("desde"), Qt::CaseInsensitive) == 0
                        ? range.from
                        : range.to);
    }
    return out + query.mid(last);
}

QString xmlType(const QString& column, const QSqlField& field, int* maxLength) {
    const auto it = knownColumns().constFind(column.toUpper());
    if (it != knownColumns().cend()) {
        switch (it->type) {
        case schema::Type::Text:
            *maxLength = it->size;
            return QStringLiteral("string");
        case schema::Type::Memo:
            *maxLength = 2147483647;
            return QStringLiteral("string");
        case schema::Type::SmallInt:
            return QStringLiteral("i2");
        case schema::Type::Int:
        case schema::Type::Identity:
            return QStringLiteral("int");
        case schema::Type::BigInt:
            return QStringLiteral("i8");
        case schema::Type::Numeric:
            return QStringLiteral("number");
        case schema::Type::DateTime:
            return QStringLiteral("dateTime");
        }
    }
    switch (field.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return QStringLiteral("int");
    case QMetaType::Double:
        return QStringLiteral("float");
    case QMetaType::QDateTime:
    case QMetaType::QDate:
        return QStringLiteral("dateTime");
    default:
        *maxLength = 255;
        return QStringLiteral("string");
    }
}

// One query saved in the rowset format of the older exchange tools: a schema of the columns
// and one z:row per row, its values as attributes (nulls left out).
void writeXml(const QSqlDatabase& db, const XmlExportDefinition& def, const ExportRange& range,
              const QString& path) {
    QVariantList values;
    const QString sql = bindNamedRange(def.query, range, &values);
    db::Sql q(db, sql);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    const QSqlRecord record = q.raw().record();

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw UserError(
            QStringLiteral("No se pudo escribir el archivo %1...!").arg(package::shownName(path)));
    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartElement(QStringLiteral("xml"));
    xml.writeAttribute(QStringLiteral("xmlns:s"),
                       QStringLiteral("uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882"));
    xml.writeAttribute(QStringLiteral("xmlns:dt"),
                       QStringLiteral("uuid:C2F41010-65B3-11d1-A29F-00AA00C14882"));
    xml.writeAttribute(QStringLiteral("xmlns:rs"),
                       QStringLiteral("urn:schemas-microsoft-com:rowset"));
    xml.writeAttribute(QStringLiteral("xmlns:z"), QStringLiteral("#RowsetSchema"));
    xml.writeStartElement(QStringLiteral("s:Schema"));
    xml.writeAttribute(QStringLiteral("id"), QStringLiteral("RowsetSchema"));
    xml.writeStartElement(QStringLiteral("s:ElementType"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("row"));
    xml.writeAttribute(QStringLiteral("content"), QStringLiteral("eltOnly"));
    QStringList names;
    QList<bool> dates;
    for (int i = 0; i < record.count(); ++i) {
        const QString name = record.fieldName(i);
        names << name;
        dates << isDateTimeColumn(name);
        int maxLength = 0;
        const QString type = xmlType(name, record.field(i), &maxLength);
        xml.writeStartElement(QStringLiteral("s:AttributeType"));
        xml.writeAttribute(QStringLiteral("name"), name);
        xml.writeAttribute(QStringLiteral("rs:number"), QString::number(i + 1));
        xml.writeAttribute(QStringLiteral("rs:nullable"), QStringLiteral("true"));
        xml.writeEmptyElement(QStringLiteral("s:datatype"));
        xml.writeAttribute(QStringLiteral("dt:type"), type);
        if (maxLength > 0)
            xml.writeAttribute(QStringLiteral("dt:maxLength"), QString::number(maxLength));
        xml.writeEndElement();
    }
    xml.writeEmptyElement(QStringLiteral("s:extends"));
    xml.writeAttribute(QStringLiteral("type"), QStringLiteral("rs:rowbase"));
    xml.writeEndElement(); // s:ElementType
    xml.writeEndElement(); // s:Schema
    xml.writeStartElement(QStringLiteral("rs:data"));
    while (q.next()) {
        xml.writeEmptyElement(QStringLiteral("z:row"));
        for (int i = 0; i < names.size(); ++i) {
            const QVariant v = q.value(i);
            if (v.isNull())
                continue;
            QString text;
            if (dates[i] || v.typeId() == QMetaType::QDateTime)
                text = db::dateTimeValue(v).toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
            else if (v.typeId() == QMetaType::Double)
                text = Decimal::fromVariant(v).toString();
            else
                text = v.toString();
            xml.writeAttribute(names[i], text);
        }
    }
    xml.writeEndElement(); // rs:data
    xml.writeEndElement(); // xml
    if (xml.hasError() || !file.commit())
        throw UserError(
            QStringLiteral("No se pudo escribir el archivo %1...!").arg(package::shownName(path)));
}

} // namespace

ExportJob::ExportJob(const QSqlDatabase& db, const ExportRequest& request, QObject* parent)
    : jobs::Job(db, parent), m_request(request) {}

QString ExportJob::packagePath() const {
    return m_package;
}

QString ExportJob::folder() const {
    return m_folder;
}

void ExportJob::checkCancelled(const QStringList& written) {
    if (!isCancelled())
        return;
    for (const QString& f : written)
        QFile::remove(f);
    throw UserError(kCancelled);
}

void ExportJob::run(const QSqlDatabase& db) {
    if (!m_request.from.isValid() || !m_request.to.isValid() || m_request.from > m_request.to)
        throw UserError(QStringLiteral("La fecha inicial debe ser menor o igual a la fecha "
                                       "final...!"));
    // Nothing is touched, not even the folder, when the templates are not there.
    if (m_request.format != ExportFormat::Xml)
        package::requireTemplateFolder();
    const QString code = storeCode(db);
    if (code.isEmpty())
        throw UserError(QStringLiteral("La tienda no tiene código en los parámetros: no se puede "
                                       "nombrar el paquete...!"));
    m_folder = exportFolder(db);
    if (!QDir().mkpath(m_folder))
        throw UserError(QStringLiteral("No se pudo crear la carpeta %1...!")
                            .arg(QDir::toNativeSeparators(m_folder)));
    if (m_request.format == ExportFormat::Xml)
        runXml(db, code);
    else
        runDbf(db, code);
}

void ExportJob::runDbf(const QSqlDatabase& db, const QString& code) {
    const ExportRange range = exportRange(m_request.format, m_request.from, m_request.to);
    const QList<ExportTable> tables =
        m_request.format == ExportFormat::Orvo ? storeTables() : headOfficeTables();
    // Every template is checked before the folder is touched: a bad one leaves the last package
    // where it was.
    QHash<QString, QString> templates;
    for (const ExportTable& t : tables) {
        const QString path = package::findTemplate(t.file);
        package::DbfTable check(path);
        templates.insert(t.file, path);
    }
    removeFiles(m_folder, {QStringLiteral("*.zip"), QStringLiteral("*.dbf")});

    QStringList written;
    QString label;
    for (int t = 0; t < tables.size(); ++t) {
        checkCancelled(written);
        if (t == kStampAfter) {
            label = QStringLiteral("Actualizando fechas del INVENTARIO");
            report(0, label);
            db::Transaction tx(db);
            stampMovedArticles(db, range);
            tx.commit();
        }
        const ExportTable& table = tables[t];
        if (!table.message.isEmpty())
            label = table.message;
        report(0, label);

        QList<QVariantHash> made;
        int total = 0;
        if (table.rows) {
            made = table.rows(db, range);
            total = int(made.size());
        } else {
            db::Sql count(db, QStringLiteral("SELECT COUNT(*) FROM (%1) t").arg(table.sql));
            bindRange(count, range, table.rangePairs);
            count.exec();
            total = count.next() ? count.value(0).toInt() : 0;
        }
        if (total > 0) {
            const QString path = QDir(m_folder).filePath(table.output());
            written << path;
            package::DbfWriter out =
                package::DbfWriter::fromTemplate(templates.value(table.file), path);
            int done = 0;
            if (table.rows) {
                for (const QVariantHash& row : made) {
                    for (auto it = row.cbegin(); it != row.cend(); ++it)
                        if (const int f = out.fieldIndex(it.key()); f >= 0)
                            out.set(f, it.value());
                    out.addRecord();
                    report(++done * 100 / total, label);
                }
            } else {
                db::Sql q(db, table.sql);
                bindRange(q, range, table.rangePairs);
                q.exec();
                // Each column goes to the template field of its dBase name; columns the template
                // does not have stay behind.
                const QSqlRecord record = q.raw().record();
                struct Mapped {
                    int column;
                    int field;
                    bool dateTime;
                };
                QList<Mapped> mapped;
                for (int c = 0; c < record.count(); ++c) {
                    const QString name = record.fieldName(c);
                    const int f = out.fieldIndex(package::dbfName(name));
                    if (f >= 0)
                        mapped.append({c, f, isDateTimeColumn(name)});
                }
                while (q.next()) {
                    for (const Mapped& m : mapped) {
                        const QVariant v = q.value(m.column);
                        out.set(m.field, m.dateTime ? dateTimeForFile(v) : v);
                    }
                    out.addRecord();
                    ++done;
                    if (done % 256 == 0 || done == total)
                        report(qMin(100, done * 100 / total), label);
                }
            }
            out.close();
            qCDebug(lcExport) << table.output() << done << "registros";
        }
        emit tablesProgress(t + 1, int(tables.size()));
    }
    checkCancelled(written);

    const QStringList dbfs = filesMatching(m_folder, QStringLiteral("*.dbf"));
    if (!dbfs.isEmpty()) {
        report(100, QStringLiteral("Comprimiendo Informacion"));
        m_package = QDir(m_folder).filePath(code + QStringLiteral(".zip"));
        package::writeZip(m_package, dbfs);
        for (const QString& f : dbfs)
            QFile::remove(f);
    }
    report(100, QStringLiteral("Transfiriendo la información..."));
}

void ExportJob::runXml(const QSqlDatabase& db, const QString& code) {
    const ExportRange range = exportRange(m_request.format, m_request.from, m_request.to);
    removeFiles(m_folder, {QStringLiteral("*.zip"), QStringLiteral("*.xml")});
    {
        report(0, QStringLiteral("Actualizando fechas del INVENTARIO"));
        db::Transaction tx(db);
        stampMovedArticles(db, range);
        tx.commit();
    }
    const QList<XmlExportDefinition> defs = xmlExportDefinitions(db);
    QStringList written;
    for (int i = 0; i < defs.size(); ++i) {
        checkCancelled(written);
        const XmlExportDefinition& def = defs[i];
        report(i * 100 / defs.size(), def.message);
        const QString path = QDir(m_folder).filePath(def.table + QStringLiteral(".xml"));
        written << path;
        writeXml(db, def, range, path);
        emit tablesProgress(i + 1, int(defs.size()));
    }
    checkCancelled(written);
    const QStringList xmls = filesMatching(m_folder, QStringLiteral("*.xml"));
    if (!xmls.isEmpty()) {
        report(100, QStringLiteral("Comprimiendo Informacion"));
        m_package = QDir(m_folder).filePath(QStringLiteral("%1_XML_%2.zip")
                                                .arg(code, QDateTime::currentDateTime().toString(
                                                               QStringLiteral("yyyyMMdd_hhmmss"))));
        package::writeZip(m_package, xmls);
    }
    report(100, QStringLiteral("Transfiriendo la información..."));
}

QString exportNow(const QSqlDatabase& db, const ExportRequest& request,
                  const std::function<void(int, const QString&)>& progress) {
    ExportJob job(db, request);
    if (progress)
        QObject::connect(&job, &jobs::Job::progress, &job, progress, Qt::DirectConnection);
    job.start();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
    return job.packagePath();
}

std::optional<ExportFormat> formatNamed(const QString& name) {
    const QString n = name.trimmed().toLower();
    if (n == QLatin1String("orvo"))
        return ExportFormat::Orvo;
    if (n == QLatin1String("vandu"))
        return ExportFormat::Vandu;
    if (n == QLatin1String("xml"))
        return ExportFormat::Xml;
    return std::nullopt;
}

} // namespace orvo::exchange::exporting
