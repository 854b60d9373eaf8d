#include "common/errors/errors.h"
#include "exchange/package/dbf.h"

#include <QDate>
#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>

using namespace orvo::exchange::package;
using orvo::Decimal;
using orvo::UserError;

inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

QByteArray readFile(const QString& path) {
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return f.readAll();
}
void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}
int u16(const QByteArray& b, int at) {
    return quint8(b[at]) | (quint8(b[at + 1]) << 8);
}
int u32(const QByteArray& b, int at) {
    return u16(b, at) | (u16(b, at + 2) << 16);
}

// The text of the UserError `f` throws ("" when it throws none).
QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

// A dBase III table as an older writer leaves it: byte by byte, independent of shapelib.
QByteArray handMadeTable(const QList<QByteArray>& records, bool withEof = true) {
    struct F {
        const char* name;
        char type;
        int width;
        int decimals;
    };
    const QList<F> fields = {{"CODBAR", 'C', 13, 0}, {"CANTIDAD", 'F', 8, 2}, {"FECHA", 'D', 8, 0}};
    QByteArray h(32, '\0');
    h[0] = 0x03;
    h[1] = char(99);
    h[2] = 12;
    h[3] = 31;
    const int headerLength = 32 + 32 * fields.size() + 1;
    const int recordLength = 1 + 13 + 8 + 8;
    h[4] = char(records.size());
    h[8] = char(headerLength & 0xFF);
    h[9] = char(headerLength >> 8);
    h[10] = char(recordLength);
    for (const F& f : fields) {
        QByteArray d(32, '\0');
        d.replace(0, qstrlen(f.name), f.name);
        d[11] = f.type;
        d[16] = char(f.width);
        d[17] = char(f.decimals);
        h += d;
    }
    h += '\x0D';
    for (const QByteArray& r : records)
        h += r;
    if (withEof)
        h += '\x1A';
    return h;
}

class DbfTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return m_dir.filePath(QString::fromLatin1(name)); }
    QTemporaryDir m_dir;
};

} // namespace

// The file is checked byte by byte against the dBase III layout, so that any dBase reader opens
// it: header, field descriptors, records and end mark.
TEST_F(DbfTest, WritesATrueDBaseTableInLatin1) {
    const QString file = path("VENTAS.DBF");
    DbfWriter w(file,
                {textField("NumFac", 10), textField("Cliente", 12), numericField("Total", 12, 2),
                 numericField("Cantidad", 8, 3), dateField("Fecha"), logicalField("Impresa")});
    w.append({{"numfac", "0000012"},
              {"Cliente", QStringLiteral("PEÑA ÁLVAREZ")},
              {"Total", QVariant::fromValue(Decimal::fromString(u"1234.565"))},
              {"Cantidad", 3},
              {"Fecha", QDate(2024, 3, 9)},
              {"Impresa", true}});
    w.append({{"NumFac", "13"}, {"Total", QStringLiteral("-0.5")}});
    w.close();

    const QByteArray b = readFile(file);
    const int headerLength = 32 + 6 * 32 + 1;
    const int recordLength = 1 + 10 + 12 + 12 + 8 + 8 + 1;
    ASSERT_EQ(b.size(), headerLength + 2 * recordLength + 1);
    EXPECT_EQ(quint8(b[0]), 0x03) << "dBase III without memo";
    const QDate today = QDate::currentDate();
    EXPECT_EQ(quint8(b[1]) + 1900, today.year());
    EXPECT_EQ(quint8(b[2]), today.month());
    EXPECT_EQ(quint8(b[3]), today.day());
    EXPECT_EQ(u32(b, 4), 2) << "record count";
    EXPECT_EQ(u16(b, 8), headerLength);
    EXPECT_EQ(u16(b, 10), recordLength);
    EXPECT_EQ(quint8(b[29]), 0x03) << "language driver: Windows ANSI";

    const QByteArray total = b.mid(32 + 2 * 32, 32);
    EXPECT_EQ(total.left(11), QByteArray("Total\0\0\0\0\0\0", 11));
    EXPECT_EQ(total[11], 'N');
    EXPECT_EQ(quint8(total[16]), 12);
    EXPECT_EQ(quint8(total[17]), 2);
    EXPECT_EQ(b[32 + 4 * 32 + 11], 'D');
    EXPECT_EQ(b[32 + 5 * 32 + 11], 'L');
    EXPECT_EQ(b[headerLength - 1], '\x0D');

    const QByteArray first = b.mid(headerLength, recordLength);
    EXPECT_EQ(first, QByteArray(" 0000012   PE\xD1"
                                "A \xC1"
                                "LVAREZ     1234.57   3.00020240309T"));
    const QByteArray second = b.mid(headerLength + recordLength, recordLength);
    EXPECT_EQ(second.mid(1, 10), QByteArray("13        "));
    EXPECT_EQ(second.mid(23, 12), QByteArray("       -0.50"));
    EXPECT_EQ(second.mid(35), QByteArray(8 + 8 + 1, ' ')) << "fields not given stay blank";
    EXPECT_EQ(b.back(), '\x1A');
}

TEST_F(DbfTest, ReadsBackTypedValuesByName) {
    const QString file = path("MOVITRAN.DBF");
    {
        DbfWriter w(file,
                    {numericField("NumTra", 11), textField("CodBarra", 15), textField("Nombre", 30),
                     numericField("Cantidad", 19, 3), numericField("Valor", 19, 5),
                     dateField("Fecha"), logicalField("Activo")});
        w.append({{"NumTra", 7},
                  {"CodBarra", "7591234000018"},
                  {"Nombre", QStringLiteral("CAMISA NIÑO T:12 AÑIL")},
                  {"Cantidad", QVariant::fromValue(Decimal::fromString(u"12.5"))},
                  {"Valor", QVariant::fromValue(Decimal::fromString(u"99999999.12345"))},
                  {"Fecha", QDateTime(QDate(2025, 1, 31), QTime(23, 59, 30))},
                  {"Activo", false}});
        const int code = w.fieldIndex("codbarra");
        w.set(code, "7591234000025");
        w.addRecord();
    }
    const DbfTable t(file, {"NUMTRA", "codbarra"});
    EXPECT_EQ(t.languageDriver(), 0x03);
    ASSERT_EQ(t.recordCount(), 2);
    EXPECT_FALSE(t.isDeleted(0));
    EXPECT_EQ(t.integer(0, "numtra"), 7);
    EXPECT_EQ(t.text(0, "Nombre"), QStringLiteral("CAMISA NIÑO T:12 AÑIL"));
    EXPECT_EQ(t.decimal(0, "Cantidad"), Decimal::fromString(u"12.5"));
    EXPECT_EQ(t.decimal(0, "Valor"), Decimal::fromString(u"99999999.12345"));
    EXPECT_EQ(t.date(0, "Fecha"), QDate(2025, 1, 31));
    EXPECT_FALSE(t.logical(0, "Activo"));
    EXPECT_FALSE(t.isNull(0, "Activo"));
    EXPECT_EQ(t.value(0, "Cantidad").value<Decimal>(), Decimal::fromString(u"12.5"));

    EXPECT_EQ(t.text(1, "CodBarra"), QStringLiteral("7591234000025"));
    for (const char* blank : {"NumTra", "Nombre", "Cantidad", "Fecha", "Activo"}) {
        EXPECT_TRUE(t.isNull(1, blank)) << blank;
        EXPECT_FALSE(t.value(1, blank).isValid()) << blank;
    }
    EXPECT_EQ(t.decimal(1, "Cantidad"), Decimal());
    EXPECT_FALSE(t.date(1, "Fecha").isValid());
    EXPECT_EQ(refusal([&] { t.text(0, "Talla"); }),
              QStringLiteral("El archivo MOVITRAN.DBF no tiene el campo Talla...!"));
}

TEST_F(DbfTest, RefusesValuesThatDoNotFitAndCutsLongText) {
    DbfWriter w(path("X.DBF"),
                {textField("Nombre", 5), numericField("Monto", 6, 2), dateField("Fecha")});
    EXPECT_EQ(refusal([&] {
                  w.append({{"Monto", QVariant::fromValue(Decimal::fromString(u"1000.5"))}});
              }),
              QStringLiteral("El valor 1000.50 no cabe en el campo Monto del archivo X.DBF...!"));
    EXPECT_EQ(refusal([&] {
                  w.append({{"Monto", "doce"}});
              }),
              QStringLiteral("El valor doce no es un número para el campo Monto del archivo "
                             "X.DBF...!"));
    EXPECT_EQ(refusal([&] {
                  w.append({{"Fecha", "31/02/2024"}});
              }),
              QStringLiteral("El valor 31/02/2024 no es una fecha para el campo Fecha del "
                             "archivo X.DBF...!"));
    EXPECT_THROW(w.append({{"Talla", "M"}}), std::invalid_argument);
    w.append({{"Nombre", QStringLiteral("ABCDEFGH")}, {"Monto", 999}});
    w.close();
    const DbfTable t(path("X.DBF"));
    ASSERT_EQ(t.recordCount(), 1) << "refused records are not written";
    EXPECT_EQ(t.text(0, "Nombre"), QStringLiteral("ABCDE"));
    EXPECT_EQ(t.decimal(0, "Monto"), Decimal(999));
    EXPECT_THROW(DbfWriter(path("Y.DBF"), {textField("NombreMuyLargo", 5)}), std::invalid_argument);
}

// What another program writes: 'F' numbers, deleted records, no end mark.
TEST_F(DbfTest, ReadsTablesOfOtherWritersWithDeletedRecords) {
    const QString file = path("Movitran.dbf");
    writeFile(file, handMadeTable({QByteArray(" 7591234000018    3.501999123X"), // not a date
                                   QByteArray("*7591234000025   10.00        "),
                                   QByteArray(" 7591234000032   -2.2520000229")},
                                  false));
    // The first record's date is not a date: readable fields still read, the bad one is named.
    const DbfTable t(file, {"CodBar", "Cantidad"});
    ASSERT_EQ(t.recordCount(), 3);
    EXPECT_EQ(t.fields().at(1).type, FieldType::Numeric);
    EXPECT_EQ(t.decimal(0, "CANTIDAD"), Decimal::fromString(u"3.5"));
    EXPECT_EQ(refusal([&] { t.date(0, "Fecha"); }),
              QStringLiteral("El archivo Movitran.dbf tiene un valor no válido en el campo FECHA "
                             "del registro 1...!"));
    EXPECT_TRUE(t.isDeleted(1));
    EXPECT_FALSE(t.isDeleted(2));
    EXPECT_EQ(t.decimal(2, "Cantidad"), Decimal::fromString(u"-2.25"));
    EXPECT_EQ(t.date(2, "Fecha"), QDate(2000, 2, 29));
}

// Nothing but a whole dBase table is read: the message names the file.
TEST_F(DbfTest, RefusesMissingForeignAndTruncatedFiles) {
    const QByteArray good = handMadeTable({QByteArray(" 7591234000018    3.5020240101"),
                                           QByteArray(" 7591234000025    1.0020240101")});
    const auto refusedWith = [&](const QByteArray& bytes, const QStringList& required = {}) {
        const QString file = path("RESUTRAN.DBF");
        writeFile(file, bytes);
        const QString text = refusal([&] { DbfTable t(file, required); });
        EXPECT_EQ(readFile(file), bytes) << "reading never writes";
        return text;
    };
    EXPECT_EQ(refusal([&] { DbfTable t(path("NADA.DBF")); }),
              QStringLiteral("No se encuentra el archivo NADA.DBF...!"));
    EXPECT_EQ(refusal([&] { DbfTable t(m_dir.path()); }),
              QStringLiteral("No se encuentra el archivo %1...!")
                  .arg(QFileInfo(m_dir.path()).fileName()));

    const QString foreign =
        QStringLiteral("El archivo RESUTRAN.DBF no es una tabla dBase válida...!");
    const QString damaged = QStringLiteral("El archivo RESUTRAN.DBF está incompleto o dañado...!");
    EXPECT_EQ(refusedWith(QByteArray("Numero;Fecha\n1;2024-01-01\n")), foreign);
    EXPECT_EQ(refusedWith(QByteArray("PK\x03\x04 not a table")), foreign);
    QByteArray wrongLength = good;
    wrongLength[10] = char(40); // record length that the fields do not add up to
    EXPECT_EQ(refusedWith(wrongLength), foreign);
    QByteArray noTerminator = good;
    noTerminator[32 + 3 * 32] = 'X';
    EXPECT_EQ(refusedWith(noTerminator), foreign);
    QByteArray badType = good;
    badType[32 + 11] = 'Q';
    EXPECT_EQ(refusedWith(badType), foreign);

    EXPECT_EQ(refusedWith(QByteArray()), damaged);
    EXPECT_EQ(refusedWith(good.left(20)), damaged);
    EXPECT_EQ(refusedWith(good.left(32 + 40)), damaged) << "cut inside the field descriptors";
    EXPECT_EQ(refusedWith(good.left(good.size() - 12)), damaged) << "cut inside the last record";

    EXPECT_EQ(refusedWith(good, {"CodBar", "NumTra"}),
              QStringLiteral("El archivo RESUTRAN.DBF no tiene el campo NumTra...!"));
    EXPECT_EQ(refusedWith(good, {"codbar"}), QString());
}

TEST_F(DbfTest, TemplatesGiveTheirFieldsToNewTables) {
    const QString est = path("MOVITRAN.est");
    DbfWriter(est, {numericField("NumTra", 11), textField("CodBarra", 15),
                    numericField("Cantidad", 19, 3)})
        .close();
    DbfWriter out = DbfWriter::fromTemplate(est, path("MOVITRAN.DBF"));
    out.append({{"NumTra", 3}, {"CodBarra", "X1"}, {"Cantidad", 2}});
    out.close();
    const DbfTable layout(est);
    const DbfTable filled(path("MOVITRAN.DBF"));
    EXPECT_EQ(filled.fields(), layout.fields());
    EXPECT_EQ(layout.recordCount(), 0) << "the template stays empty";
    EXPECT_EQ(filled.recordCount(), 1);
    EXPECT_EQ(filled.decimal(0, "Cantidad"), Decimal(2));
    EXPECT_EQ(refusal([&] { DbfWriter::fromTemplate(path("NO.est"), path("NO.DBF")); }),
              QStringLiteral("No se encuentra el archivo NO.est...!"));
    EXPECT_FALSE(QFile::exists(path("NO.DBF")));
}
