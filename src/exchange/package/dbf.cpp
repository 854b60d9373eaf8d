#include "exchange/package/dbf.h"

#include "common/errors/errors.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <shapefil.h>
#include <stdexcept>

namespace orvo::exchange::package {

namespace {

// Windows ANSI (code page 1252), the Latin-1 code page dBase readers expect.
constexpr int kLanguageDriver = 0x03;
constexpr int kFileHeaderSize = 32;
constexpr int kFieldHeaderSize = 32;

// shapelib derives "<base>.dbf" from the name it is given and looks for a ".cpg" beside it.
// These hooks open exactly the file asked for (templates end in ".est", packages in ".DBF"),
// ignore code page side files (the header byte says it) and keep the library's error text.
//
// They also buffer: shapelib seeks before every record it writes or reads, which would cost
// a system call per record through stdio. Writes are kept back and written in large blocks;
// reads are served from a block read ahead.
thread_local QByteArray t_target;
thread_local QString t_error;

struct BufferedFile {
    FILE* file = nullptr;
    long long pos = 0;         // where the next read or write goes
    QByteArray pending;        // bytes not yet written ...
    long long pendingAt = 0;   // ... from this offset
    QByteArray readAhead;      // bytes read from the file ...
    long long readAheadAt = 0; // ... from this offset

    static constexpr qsizetype kBlock = 1 << 20;

    bool flush() {
        if (pending.isEmpty())
            return true;
        const bool ok = std::fseek(file, long(pendingAt), SEEK_SET) == 0 &&
                        std::fwrite(pending.constData(), 1, size_t(pending.size()), file) ==
                            size_t(pending.size());
        pending.clear();
        return ok;
    }
};

BufferedFile* bufferedOf(SAFile f) {
    return reinterpret_cast<BufferedFile*>(f);
}

SAFile openHook(const char* name, const char* access) {
    const QByteArray asked(name);
    if (asked.endsWith(".cpg") || asked.endsWith(".CPG"))
        return nullptr;
    FILE* file = std::fopen(t_target.constData(), access);
    if (!file)
        return nullptr;
    auto* b = new BufferedFile;
    b->file = file;
    return reinterpret_cast<SAFile>(b);
}

SAOffset readHook(void* p, SAOffset size, SAOffset count, SAFile f) {
    BufferedFile* b = bufferedOf(f);
    const long long wanted = (long long)(size * count);
    if (!b->flush())
        return 0;
    const long long end = b->readAheadAt + b->readAhead.size();
    if (b->pos < b->readAheadAt || b->pos + wanted > end) {
        b->readAhead.resize(std::max<qsizetype>(BufferedFile::kBlock, wanted));
        if (std::fseek(b->file, long(b->pos), SEEK_SET) != 0)
            return 0;
        const size_t got = std::fread(b->readAhead.data(), 1, size_t(b->readAhead.size()), b->file);
        b->readAhead.resize(qsizetype(got));
        b->readAheadAt = b->pos;
    }
    const long long available = b->readAheadAt + b->readAhead.size() - b->pos;
    const long long n = std::min(wanted, std::max(0LL, available));
    std::memcpy(p, b->readAhead.constData() + (b->pos - b->readAheadAt), size_t(n));
    b->pos += n;
    return size ? SAOffset(n) / size : 0;
}

SAOffset writeHook(void* p, SAOffset size, SAOffset count, SAFile f) {
    BufferedFile* b = bufferedOf(f);
    const qsizetype n = qsizetype(size * count);
    b->readAhead.clear();
    const long long pendingEnd = b->pendingAt + b->pending.size();
    // Contiguous with (or overlapping the end of) what is kept back: shapelib rewrites its
    // end-of-file mark with the next record.
    if (b->pending.isEmpty() || b->pos < b->pendingAt || b->pos > pendingEnd) {
        if (!b->flush())
            return 0;
        b->pendingAt = b->pos;
    }
    const qsizetype at = qsizetype(b->pos - b->pendingAt);
    if (at + n > b->pending.size())
        b->pending.resize(at + n);
    std::memcpy(b->pending.data() + at, p, size_t(n));
    b->pos += n;
    if (b->pending.size() >= BufferedFile::kBlock && !b->flush())
        return 0;
    return count;
}

SAOffset seekHook(SAFile f, SAOffset offset, int whence) {
    BufferedFile* b = bufferedOf(f);
    switch (whence) {
    case SEEK_SET:
        b->pos = (long long)offset;
        return 0;
    case SEEK_CUR:
        b->pos += (long long)offset;
        return 0;
    default:
        if (!b->flush() || std::fseek(b->file, long(offset), whence) != 0)
            return SAOffset(-1);
        b->pos = std::ftell(b->file);
        return 0;
    }
}

SAOffset tellHook(SAFile f) {
    return SAOffset(bufferedOf(f)->pos);
}

int flushHook(SAFile f) {
    BufferedFile* b = bufferedOf(f);
    return b->flush() && std::fflush(b->file) == 0 ? 0 : -1;
}

int closeHook(SAFile f) {
    BufferedFile* b = bufferedOf(f);
    const bool flushed = b->flush();
    const int rc = std::fclose(b->file);
    delete b;
    if (!flushed)
        t_error = QStringLiteral("write failed");
    return flushed ? rc : -1;
}

int removeHook(const char*) {
    return 0;
}
void errorHook(const char* message) {
    t_error = QString::fromLocal8Bit(message);
}

SAHooks hooksFor(const QString& path) {
    SAHooks hooks;
    SASetupDefaultHooks(&hooks);
    hooks.FOpen = openHook;
    hooks.FRead = readHook;
    hooks.FWrite = writeHook;
    hooks.FSeek = seekHook;
    hooks.FTell = tellHook;
    hooks.FFlush = flushHook;
    hooks.FClose = closeHook;
    hooks.Remove = removeHook;
    hooks.Error = errorHook;
    t_target = QFile::encodeName(path);
    t_error.clear();
    return hooks;
}

[[noreturn]] void missing(const QString& path) {
    throw UserError(QStringLiteral("No se encuentra el archivo %1...!").arg(shownName(path)));
}
[[noreturn]] void foreign(const QString& path) {
    throw UserError(
        QStringLiteral("El archivo %1 no es una tabla dBase válida...!").arg(shownName(path)));
}
[[noreturn]] void truncated(const QString& path) {
    throw UserError(
        QStringLiteral("El archivo %1 está incompleto o dañado...!").arg(shownName(path)));
}
[[noreturn]] void cannotWrite(const QString& path) {
    throw UserError(QStringLiteral("No se pudo escribir el archivo %1...!").arg(shownName(path)));
}

QHash<QString, int> indexFields(const QList<DbfField>& fields) {
    QHash<QString, int> index;
    for (int i = 0; i < fields.size(); ++i)
        index.insert(fields[i].name.toUpper(), i);
    return index;
}

bool validType(char t) {
    return t == 'C' || t == 'N' || t == 'F' || t == 'D' || t == 'L' || t == 'M';
}

// dBase III and the later writers that keep its record layout (dBase IV, FoxPro, Visual FoxPro).
bool knownVersion(unsigned char v) {
    switch (v) {
    case 0x03:
    case 0x04:
    case 0x05:
    case 0x30:
    case 0x31:
    case 0x83:
    case 0x8B:
    case 0xF5:
        return true;
    default:
        return false;
    }
}

struct Header {
    QList<DbfField> fields;
    QList<int> offsets;
    int languageDriver = 0;
    int recordLength = 0;
    qint64 records = 0;
};

// Reads and checks the header and size of a dBase file before shapelib sees it.
Header checkedHeader(const QString& path) {
    QFile file(path);
    if (!file.exists() || QFileInfo(path).isDir())
        missing(path);
    if (!file.open(QIODevice::ReadOnly))
        missing(path);
    const qint64 size = file.size();
    const QByteArray head = file.read(kFileHeaderSize);
    if (head.isEmpty())
        truncated(path);
    if (!knownVersion(static_cast<unsigned char>(head[0])))
        foreign(path);
    if (head.size() < kFileHeaderSize)
        truncated(path);
    const auto byte = [&head](int i) { return static_cast<unsigned char>(head[i]); };
    Header h;
    h.records = qint64(byte(4)) | (qint64(byte(5)) << 8) | (qint64(byte(6)) << 16) |
                (qint64(byte(7)) << 24);
    const int headerLength = byte(8) | (byte(9) << 8);
    h.recordLength = byte(10) | (byte(11) << 8);
    h.languageDriver = byte(29);
    if (headerLength < kFileHeaderSize + 1 || h.recordLength < 1)
        foreign(path);
    if (size < headerLength)
        truncated(path);
    const QByteArray descriptors = file.read(headerLength - kFileHeaderSize);
    int offset = 1; // the deletion flag comes first
    bool terminated = false;
    for (int at = 0; at + 1 <= descriptors.size(); at += kFieldHeaderSize) {
        if (descriptors[at] == '\x0D') {
            terminated = true;
            break;
        }
        if (at + kFieldHeaderSize > descriptors.size())
            break;
        const QByteArray d = descriptors.mid(at, kFieldHeaderSize);
        const char type = d[11];
        const QString name = QString::fromLatin1(d.left(11).constData()).trimmed();
        if (name.isEmpty() || !validType(type))
            foreign(path);
        DbfField f;
        f.name = name;
        f.type = type == 'F' ? FieldType::Numeric : static_cast<FieldType>(type);
        f.width = static_cast<unsigned char>(d[16]);
        f.decimals = f.type == FieldType::Numeric ? static_cast<unsigned char>(d[17]) : 0;
        if (f.width < 1)
            foreign(path);
        h.fields << f;
        h.offsets << offset;
        offset += f.width;
    }
    if (!terminated || h.fields.isEmpty() || offset != h.recordLength)
        foreign(path);
    if (size < headerLength + h.records * h.recordLength)
        truncated(path);
    return h;
}

QString numberText(const QVariant& value, const DbfField& f, const QString& path) {
    Decimal number;
    if (value.userType() == qMetaTypeId<Decimal>()) {
        number = value.value<Decimal>();
    } else if (value.typeId() == QMetaType::QString) {
        const auto parsed = Decimal::parse(value.toString().trimmed());
        if (!parsed)
            throw UserError(QStringLiteral("El valor %1 no es un número para el campo %2 del "
                                           "archivo %3...!")
                                .arg(value.toString(), f.name, shownName(path)));
        number = *parsed;
    } else {
        number = Decimal::fromVariant(value);
    }
    QString text = number.toString(f.decimals);
    if (text.size() > f.width)
        throw UserError(QStringLiteral("El valor %1 no cabe en el campo %2 del archivo %3...!")
                            .arg(text, f.name, shownName(path)));
    return text;
}

// "yyyy-mm-dd..." read without the general parser: the export hands every date of SQLite over
// in this form, and a package may hold hundreds of thousands of them.
QDate isoDate(const QString& t) {
    if (t.size() < 10 || t[4] != QLatin1Char('-') || t[7] != QLatin1Char('-'))
        return {};
    int parts[3] = {0, 0, 0};
    const int starts[3] = {0, 5, 8};
    const int lengths[3] = {4, 2, 2};
    for (int p = 0; p < 3; ++p)
        for (int i = 0; i < lengths[p]; ++i) {
            const QChar c = t[starts[p] + i];
            if (!c.isDigit())
                return {};
            parts[p] = parts[p] * 10 + c.digitValue();
        }
    return QDate(parts[0], parts[1], parts[2]);
}

QByteArray compactDate(const QDate& d) {
    char out[16];
    std::snprintf(out, sizeof out, "%04d%02d%02d", d.year(), d.month(), d.day());
    return QByteArray(out, 8);
}

QDate dateOf(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate();
    case QMetaType::QDateTime:
        return value.toDateTime().date();
    default:
        break;
    }
    const QString text = value.toString().trimmed();
    if (const QDate iso = isoDate(text); iso.isValid())
        return iso;
    for (const char* format : {"yyyyMMdd", "yyyy-MM-dd", "dd/MM/yyyy"}) {
        const QDate d = QDate::fromString(text, QString::fromLatin1(format));
        if (d.isValid())
            return d;
    }
    const QDateTime dt = QDateTime::fromString(text, Qt::ISODate);
    return dt.isValid() ? dt.date() : QDate();
}

QString plainText(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate().toString(QStringLiteral("yyyy-MM-dd"));
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    default:
        break;
    }
    if (value.userType() == qMetaTypeId<Decimal>())
        return value.value<Decimal>().toString();
    return value.toString();
}

// The bytes of one field, exactly `f.width` long.
QByteArray fieldBytes(const QVariant& value, const DbfField& f, const QString& path) {
    QByteArray out;
    if (value.isNull() || !value.isValid())
        return QByteArray(f.width, ' ');
    switch (f.type) {
    case FieldType::Numeric:
        if (f.decimals == 0 &&
            (value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong)) {
            out = QByteArray::number(value.toLongLong());
            if (out.size() > f.width)
                throw UserError(
                    QStringLiteral("El valor %1 no cabe en el campo %2 del archivo %3...!")
                        .arg(QString::fromLatin1(out), f.name, shownName(path)));
            out = out.rightJustified(f.width, ' ');
        } else {
            out = numberText(value, f, path).toLatin1().rightJustified(f.width, ' ');
        }
        break;
    case FieldType::Date: {
        const QDate d = dateOf(value);
        if (!d.isValid()) {
            if (value.toString().trimmed().isEmpty())
                return QByteArray(f.width, ' ');
            throw UserError(QStringLiteral("El valor %1 no es una fecha para el campo %2 del "
                                           "archivo %3...!")
                                .arg(value.toString(), f.name, shownName(path)));
        }
        out = compactDate(d).leftJustified(f.width, ' ', true);
        break;
    }
    case FieldType::Logical: {
        bool on = false;
        if (value.typeId() == QMetaType::QString) {
            const QString t = value.toString().trimmed().toUpper();
            on = t == QLatin1String("T") || t == QLatin1String("S") || t == QLatin1String("Y") ||
                 t == QLatin1String("1") || t == QLatin1String("TRUE");
        } else {
            on = value.toBool();
        }
        out = QByteArray(f.width, ' ');
        out[0] = on ? 'T' : 'F';
        break;
    }
    case FieldType::Text:
    case FieldType::Memo:
        // Characters outside Latin-1 become '?'; the text is cut to the field.
        out = plainText(value).toLatin1().leftJustified(f.width, ' ', true);
        break;
    }
    return out;
}

void checkField(const DbfField& f) {
    const auto bad = [&f](const char* why) {
        throw std::invalid_argument(QStringLiteral("campo dBase %1: %2")
                                        .arg(f.name, QString::fromLatin1(why))
                                        .toStdString());
    };
    if (f.name.isEmpty() || f.name.size() > 10)
        bad("el nombre debe tener de 1 a 10 caracteres");
    for (QChar c : f.name)
        if (c.unicode() > 127 || !(c.isLetterOrNumber() || c == QLatin1Char('_')))
            bad("el nombre solo admite letras, dígitos y _");
    switch (f.type) {
    case FieldType::Text:
        if (f.width < 1 || f.width > 254)
            bad("un texto tiene de 1 a 254 caracteres");
        break;
    case FieldType::Numeric:
        if (f.width < 1 || f.width > 20 || f.decimals < 0 || f.decimals > 15 ||
            (f.decimals > 0 && f.decimals > f.width - 2))
            bad("ancho o decimales no válidos");
        break;
    case FieldType::Date:
        if (f.width != 8)
            bad("una fecha tiene 8 caracteres");
        break;
    case FieldType::Logical:
        if (f.width != 1)
            bad("un lógico tiene 1 carácter");
        break;
    case FieldType::Memo:
        bad("los campos memo no se escriben");
    }
}

} // namespace

DbfField textField(const QString& name, int width) {
    return {name, FieldType::Text, width, 0};
}
DbfField numericField(const QString& name, int width, int decimals) {
    return {name, FieldType::Numeric, width, decimals};
}
DbfField dateField(const QString& name) {
    return {name, FieldType::Date, 8, 0};
}
DbfField logicalField(const QString& name) {
    return {name, FieldType::Logical, 1, 0};
}

QString shownName(const QString& path) {
    return QFileInfo(path).fileName();
}

// ---------------------------------------------------------------------------------------------

struct DbfWriter::Impl {
    QString path;
    QList<DbfField> fields;
    QHash<QString, int> index;
    DBFHandle handle = nullptr;
    QByteArray record; // the pending record, deletion flag first
    QList<int> offsets;
    int count = 0;

    void clearRecord() { record.fill(' '); }
};

DbfWriter::DbfWriter(const QString& path, const QList<DbfField>& fields) : d(new Impl) {
    d->path = path;
    d->fields = fields;
    d->index = indexFields(fields);
    if (fields.isEmpty())
        throw std::invalid_argument("una tabla dBase necesita al menos un campo");
    int length = 1;
    for (const DbfField& f : fields) {
        checkField(f);
        d->offsets << length;
        length += f.width;
    }
    d->record = QByteArray(length, ' ');
    QFile::remove(path);
    SAHooks hooks = hooksFor(path);
    const QByteArray codePage = QByteArrayLiteral("LDID/") + QByteArray::number(kLanguageDriver);
    d->handle = DBFCreateLL(t_target.constData(), codePage.constData(), &hooks);
    if (!d->handle)
        cannotWrite(path);
    const QDate today = QDate::currentDate();
    DBFSetLastModifiedDate(d->handle, today.year() - 1900, today.month(), today.day());
    for (const DbfField& f : fields) {
        if (DBFAddNativeFieldType(d->handle, f.name.toLatin1().constData(),
                                  static_cast<char>(f.type), f.width, f.decimals) < 0) {
            DBFClose(d->handle);
            d->handle = nullptr;
            QFile::remove(path);
            cannotWrite(path);
        }
    }
}

DbfWriter DbfWriter::fromTemplate(const QString& templatePath, const QString& path) {
    const DbfTable layout(templatePath);
    QList<DbfField> fields;
    for (DbfField f : layout.fields()) {
        if (f.type == FieldType::Memo) // no memo files: the text travels in a wide text field
            f = textField(f.name, 254);
        fields << f;
    }
    return DbfWriter(path, fields);
}

DbfWriter::DbfWriter(DbfWriter&&) noexcept = default;
DbfWriter& DbfWriter::operator=(DbfWriter&&) noexcept = default;

DbfWriter::~DbfWriter() {
    if (d && d->handle) {
        try {
            close();
        } catch (const std::exception&) {
            // Reported by an explicit close(); a destructor cannot.
        }
    }
}

const QList<DbfField>& DbfWriter::fields() const {
    return d->fields;
}
int DbfWriter::fieldIndex(const QString& name) const {
    return d->index.value(name.toUpper(), -1);
}
int DbfWriter::recordCount() const {
    return d->count;
}
const QString& DbfWriter::path() const {
    return d->path;
}

void DbfWriter::set(int field, const QVariant& value) {
    if (field < 0 || field >= d->fields.size())
        throw std::invalid_argument("campo dBase fuera de la tabla");
    const DbfField& f = d->fields[field];
    const QByteArray bytes = fieldBytes(value, f, d->path);
    d->record.replace(d->offsets[field], f.width, bytes);
}

void DbfWriter::addRecord() {
    if (!d->handle)
        throw std::logic_error("tabla dBase ya cerrada");
    if (!DBFWriteTuple(d->handle, d->count, d->record.data()))
        cannotWrite(d->path);
    ++d->count;
    d->clearRecord();
}

void DbfWriter::append(std::initializer_list<std::pair<QString, QVariant>> values) {
    d->clearRecord();
    for (const auto& [name, value] : values) {
        const int i = fieldIndex(name);
        if (i < 0)
            throw std::invalid_argument(QStringLiteral("%1 no tiene el campo %2")
                                            .arg(shownName(d->path), name)
                                            .toStdString());
        set(i, value);
    }
    addRecord();
}

void DbfWriter::append(const QVariantHash& values) {
    d->clearRecord();
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const int i = fieldIndex(it.key());
        if (i < 0)
            throw std::invalid_argument(QStringLiteral("%1 no tiene el campo %2")
                                            .arg(shownName(d->path), it.key())
                                            .toStdString());
        set(i, it.value());
    }
    addRecord();
}

void DbfWriter::close() {
    if (!d->handle)
        return;
    t_error.clear();
    DBFClose(d->handle);
    d->handle = nullptr;
    const qint64 expected = kFileHeaderSize + qint64(d->fields.size()) * kFieldHeaderSize + 1 +
                            qint64(d->count) * d->record.size();
    if (!t_error.isEmpty() || QFileInfo(d->path).size() < expected)
        cannotWrite(d->path);
}

// ---------------------------------------------------------------------------------------------

struct DbfTable::Impl {
    QString path;
    Header header;
    QHash<QString, int> index;
    DBFHandle handle = nullptr;

    ~Impl() {
        if (handle)
            DBFClose(handle);
    }

    // The raw bytes of a record, deletion flag first.
    const char* raw(int record) const {
        if (record < 0 || record >= header.records)
            throw std::out_of_range("registro fuera de la tabla dBase");
        const char* tuple = DBFReadTuple(handle, record);
        if (!tuple)
            truncated(path);
        return tuple;
    }
    int field(const QString& name) const {
        const int i = index.value(name.toUpper(), -1);
        if (i < 0)
            throw UserError(QStringLiteral("El archivo %1 no tiene el campo %2...!")
                                .arg(shownName(path), name));
        return i;
    }
    QString fieldText(int record, int i) const {
        const char* tuple = raw(record);
        return QString::fromLatin1(tuple + header.offsets[i], header.fields[i].width).trimmed();
    }
    [[noreturn]] void badValue(int record, int i) const {
        throw UserError(QStringLiteral("El archivo %1 tiene un valor no válido en el campo %2 "
                                       "del registro %3...!")
                            .arg(shownName(path), header.fields[i].name)
                            .arg(record + 1));
    }
};

DbfTable::DbfTable(const QString& path, const QStringList& requiredFields) : d(new Impl) {
    d->path = path;
    d->header = checkedHeader(path);
    d->index = indexFields(d->header.fields);
    for (const QString& name : requiredFields)
        if (!d->index.contains(name.toUpper()))
            throw UserError(QStringLiteral("El archivo %1 no tiene el campo %2...!")
                                .arg(shownName(path), name));
    SAHooks hooks = hooksFor(path);
    d->handle = DBFOpenLL(t_target.constData(), "rb", &hooks);
    if (!d->handle)
        foreign(path);
}

DbfTable::DbfTable(DbfTable&&) noexcept = default;
DbfTable& DbfTable::operator=(DbfTable&&) noexcept = default;
DbfTable::~DbfTable() = default;

const QString& DbfTable::path() const {
    return d->path;
}
const QList<DbfField>& DbfTable::fields() const {
    return d->header.fields;
}
int DbfTable::fieldIndex(const QString& name) const {
    return d->index.value(name.toUpper(), -1);
}
int DbfTable::languageDriver() const {
    return d->header.languageDriver;
}
int DbfTable::recordCount() const {
    return static_cast<int>(d->header.records);
}
bool DbfTable::isDeleted(int record) const {
    return d->raw(record)[0] == '*';
}

QString DbfTable::text(int record, const QString& field) const {
    return d->fieldText(record, d->field(field));
}

bool DbfTable::isNull(int record, const QString& field) const {
    const int i = d->field(field);
    const QString t = d->fieldText(record, i);
    switch (d->header.fields[i].type) {
    case FieldType::Date:
        return t.isEmpty() || t == QLatin1String("00000000");
    case FieldType::Logical:
        return t.isEmpty() || t == QLatin1String("?");
    case FieldType::Numeric:
        return t.isEmpty() || t.startsWith(QLatin1Char('*'));
    default:
        return t.isEmpty();
    }
}

Decimal DbfTable::decimal(int record, const QString& field) const {
    const int i = d->field(field);
    const QString t = d->fieldText(record, i);
    if (t.isEmpty())
        return Decimal();
    const auto n = Decimal::parse(t);
    if (!n)
        d->badValue(record, i);
    return *n;
}

long long DbfTable::integer(int record, const QString& field) const {
    return decimal(record, field).toLongLong();
}

QDate DbfTable::date(int record, const QString& field) const {
    const int i = d->field(field);
    const QString t = d->fieldText(record, i);
    if (t.isEmpty() || t == QLatin1String("00000000"))
        return {};
    const QDate day = QDate::fromString(t, QStringLiteral("yyyyMMdd"));
    if (!day.isValid())
        d->badValue(record, i);
    return day;
}

bool DbfTable::logical(int record, const QString& field) const {
    const int i = d->field(field);
    const QString t = d->fieldText(record, i).toUpper();
    if (t.isEmpty() || t == QLatin1String("?"))
        return false;
    if (t == QLatin1String("T") || t == QLatin1String("Y") || t == QLatin1String("S"))
        return true;
    if (t == QLatin1String("F") || t == QLatin1String("N"))
        return false;
    d->badValue(record, i);
}

QVariant DbfTable::value(int record, const QString& field) const {
    if (isNull(record, field))
        return {};
    switch (d->header.fields[d->field(field)].type) {
    case FieldType::Numeric:
        return QVariant::fromValue(decimal(record, field));
    case FieldType::Date:
        return date(record, field);
    case FieldType::Logical:
        return logical(record, field);
    default:
        return text(record, field);
    }
}

} // namespace orvo::exchange::package
