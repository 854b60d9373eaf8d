#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

// dBase tables of the exchange packages, through shapelib's DBF API.
//
// The files are plain dBase III tables that any dBase reader opens: text in Latin-1 (the header's
// language driver byte says Windows ANSI), names of at most ten characters, numbers right-aligned
// with their decimals, dates as YYYYMMDD. Failures are UserErrors with the system's Spanish text.
//
// Writing, from a template of ORVO_HOME/Estructura (see templates.h):
//
//   DbfWriter out = DbfWriter::fromTemplate(findTemplate("MOVITRAN"), folder + "/MOVITRAN.DBF");
//   out.append({{"NumTra", 12}, {"CodBar", "7591234000018"}, {"Cantidad", Decimal(3)}});
//   out.close(); // also done by the destructor, which cannot report a failure
//
// Field names match ignoring case. A name the table does not have is a programming error
// (std::invalid_argument); a field not given is left blank (dBase's null).
//
// Reading, checked before anything is returned:
//
//   DbfTable in(path, {"NumTra", "CodBar", "Cantidad"}); // missing, truncated or foreign:
//   UserError for (int i = 0; i < in.recordCount(); ++i) {
//       if (in.isDeleted(i)) continue;
//       long long number = in.integer(i, "NumTra");
//       Decimal qty = in.decimal(i, "Cantidad");
//   }
namespace orvo::exchange::package {

enum class FieldType : char {
    Text = 'C',    // width up to 254, Latin-1, blank-padded
    Numeric = 'N', // width up to 20, right-aligned, `decimals` after the point
    Date = 'D',    // YYYYMMDD (blank when null)
    Logical = 'L', // T / F (blank when null)
    Memo = 'M',    // read as its block number only: never written by this program
};

struct DbfField {
    QString name; // at most ten characters
    FieldType type = FieldType::Text;
    int width = 0;
    int decimals = 0;
    friend bool operator==(const DbfField&, const DbfField&) = default;
};

// A field of the given type with the usual width: text(n), numeric(w, d), date(), logical().
DbfField textField(const QString& name, int width);
DbfField numericField(const QString& name, int width, int decimals = 0);
DbfField dateField(const QString& name);
DbfField logicalField(const QString& name);

// The file name shown in messages: the file's own name, without its folder.
QString shownName(const QString& path);

class DbfWriter {
public:
    // A new table at `path` with these fields; an existing file is replaced.
    DbfWriter(const QString& path, const QList<DbfField>& fields);
    // A new table at `path` with the fields of the template (a checked read of the template).
    static DbfWriter fromTemplate(const QString& templatePath, const QString& path);
    DbfWriter(DbfWriter&&) noexcept;
    DbfWriter& operator=(DbfWriter&&) noexcept;
    ~DbfWriter();

    const QList<DbfField>& fields() const;
    // Index of a field by name ignoring case; -1 when the table has no such field.
    int fieldIndex(const QString& name) const;
    bool hasField(const QString& name) const { return fieldIndex(name) >= 0; }
    int recordCount() const;
    const QString& path() const;

    // Appends one record, values by field name. Values: QString, numbers, Decimal, QDate,
    // QDateTime, bool; a null QVariant leaves the field blank. A value that does not fit its
    // field (a number too wide, a date that is not one) is a UserError; text is cut to the width.
    void append(std::initializer_list<std::pair<QString, QVariant>> values);
    void append(const QVariantHash& values);

    // The same for bulk work: set fields of the pending record by index, then add it.
    void set(int field, const QVariant& value);
    void addRecord();

    // Writes the header and closes the file. UserError when the disk refuses.
    void close();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

class DbfTable {
public:
    // Opens and checks `path`: a missing file, a file that is not a dBase table, a truncated one
    // or one without every field of `requiredFields` is a UserError naming the file.
    explicit DbfTable(const QString& path, const QStringList& requiredFields = {});
    DbfTable(DbfTable&&) noexcept;
    DbfTable& operator=(DbfTable&&) noexcept;
    ~DbfTable();

    const QString& path() const;
    const QList<DbfField>& fields() const;
    int fieldIndex(const QString& name) const; // ignoring case; -1 when absent
    bool hasField(const QString& name) const { return fieldIndex(name) >= 0; }
    // The language driver byte of the header (0x03: Windows ANSI / Latin-1).
    int languageDriver() const;

    int recordCount() const; // deleted records included
    bool isDeleted(int record) const;

    // Typed reads by field name (ignoring case). Text comes trimmed of the padding; a blank
    // number reads 0, a blank date a null QDate. A value that is not what its field says is a
    // UserError naming the file, the field and the record.
    QString text(int record, const QString& field) const;
    Decimal decimal(int record, const QString& field) const;
    long long integer(int record, const QString& field) const;
    QDate date(int record, const QString& field) const;
    bool logical(int record, const QString& field) const;
    bool isNull(int record, const QString& field) const;
    // By the field's type: QString, Decimal, QDate or bool; a null QVariant when blank.
    QVariant value(int record, const QString& field) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace orvo::exchange::package
