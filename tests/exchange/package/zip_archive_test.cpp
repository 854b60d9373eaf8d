#include "common/errors/errors.h"
#include "exchange/package/zip_archive.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <zip.h>

using namespace orvo::exchange::package;
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
QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

class ZipTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    // A folder with one file the failed extractions must leave as it was.
    QString receivingFolder() {
        const QString folder = path("Recibe");
        QDir().mkpath(folder);
        writeFile(folder + "/ResuTran.DBF", "el anterior");
        return folder;
    }
    void expectUntouched(const QString& folder) {
        EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList{"ResuTran.DBF"});
        EXPECT_EQ(readFile(folder + "/ResuTran.DBF"), QByteArray("el anterior"));
    }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ZipTest, PacksAndUnpacksFilesUnderTheirNames) {
    QDir().mkpath(path("Envia"));
    QByteArray big;
    for (int i = 0; i < 20000; ++i)
        big += QByteArray::number(i) + ' ';
    writeFile(path("Envia/VENTAS.DBF"), big);
    writeFile(path("Envia/MOVVENTA.DBF"), QByteArray("\x03\x00\x1A\xFF", 4));
    const QString zip = path("Envia/01.zip");
    writeZip(zip, {path("Envia/VENTAS.DBF"), path("Envia/MOVVENTA.DBF")});
    EXPECT_EQ(zipEntries(zip), (QStringList{"VENTAS.DBF", "MOVVENTA.DBF"}));
    EXPECT_LT(QFileInfo(zip).size(), big.size() / 2) << "entries are compressed";

    const QString folder = receivingFolder();
    writeFile(folder + "/VENTAS.DBF", "viejo");
    const QStringList written = extractZip(zip, folder);
    EXPECT_EQ(written.size(), 2);
    EXPECT_EQ(readFile(folder + "/VENTAS.DBF"), big) << "a file of the same name is replaced";
    EXPECT_EQ(readFile(folder + "/MOVVENTA.DBF"), QByteArray("\x03\x00\x1A\xFF", 4));
    EXPECT_EQ(readFile(folder + "/ResuTran.DBF"), QByteArray("el anterior"));

    // A second package of the same name replaces the first.
    writeZip(zip, {path("Envia/MOVVENTA.DBF")});
    EXPECT_EQ(zipEntries(zip), QStringList{"MOVVENTA.DBF"});
    EXPECT_EQ(refusal([&] { writeZip(zip, {path("Envia/NADA.DBF")}); }),
              QStringLiteral("No se encuentra el archivo NADA.DBF...!"));
    EXPECT_EQ(zipEntries(zip), QStringList{"MOVVENTA.DBF"}) << "the old package stays";
}

TEST_F(ZipTest, RefusesBadArchivesAndWritesNothing) {
    writeFile(path("a.DBF"), QByteArray(5000, 'a'));
    writeFile(path("b.DBF"), QByteArray("segundo archivo del paquete"));
    const QString good = path("Transfer.zip");
    writeZip(good, {path("a.DBF"), path("b.DBF")});
    const QByteArray bytes = readFile(good);
    const QString folder = receivingFolder();
    const auto refused = [&](const QByteArray& archive) {
        writeFile(path("Transfer.zip"), archive);
        const QString text = refusal([&] { extractZip(path("Transfer.zip"), folder); });
        expectUntouched(folder);
        return text;
    };

    EXPECT_EQ(refusal([&] { extractZip(path("Devuelve.zip"), folder); }),
              QStringLiteral("No se encuentra el archivo Devuelve.zip...!"));
    EXPECT_EQ(refused(QByteArray("esto no es un zip, es texto")),
              QStringLiteral("El archivo Transfer.zip no es un archivo comprimido (zip) "
                             "válido...!"));
    EXPECT_EQ(refused(bytes.left(bytes.size() - 30)),
              QStringLiteral("El archivo Transfer.zip está incompleto o dañado...!"))
        << "cut before its end";
    // A flipped byte in the second entry's data: the first entry is fine, the CRC of the second
    // fails, and neither is written.
    QByteArray flipped = bytes;
    const int second = flipped.indexOf("b.DBF", 30) + 5;
    flipped[second + 3] = char(flipped[second + 3] ^ 0x55);
    EXPECT_EQ(refused(flipped),
              QStringLiteral("El archivo Transfer.zip está incompleto o dañado...!"));
    EXPECT_EQ(refusal([&] { zipEntries(path("Transfer.zip")); }), QString())
        << "the index itself is intact";
}

TEST_F(ZipTest, RefusesEntriesThatLeaveTheFolder) {
    const QString zip = path("lista.zip");
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(zip).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    ASSERT_NE(z, nullptr);
    static const char ok[] = "bien";
    static const char evil[] = "mal";
    zip_file_add(z, "ResuList.DBF", zip_source_buffer(z, ok, sizeof ok, 0), 0);
    zip_file_add(z, "../MovLista.DBF", zip_source_buffer(z, evil, sizeof evil, 0), 0);
    ASSERT_EQ(zip_close(z), 0);

    const QString folder = receivingFolder();
    EXPECT_EQ(refusal([&] { extractZip(zip, folder); }),
              QStringLiteral("El archivo lista.zip contiene la ruta ../MovLista.DBF, que no se "
                             "acepta...!"));
    expectUntouched(folder);
    EXPECT_FALSE(QFile::exists(path("MovLista.DBF")));
}
