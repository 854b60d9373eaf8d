#include "common/errors/errors.h"
#include "exchange/package/templates.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo::exchange::package;
using orvo::UserError;

inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

TEST(Templates, InstallReplacesOursInAnyCaseAndKeepsOthers) {
    QTemporaryDir dir;
    const QString folder = dir.filePath("Estructura");
    try {
        requireTemplateFolder(folder);
        ADD_FAILURE() << "a missing folder is refused";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("No se puede encontrar el directorio de estructuras en "
                                           "la ruta específicada."));
    }
    QDir().mkpath(folder);
    QFile old(folder + "/marcas.EST");
    old.open(QIODevice::WriteOnly);
    old.write("una estructura vieja");
    old.close();
    QFile own(folder + "/PROPIA.est");
    own.open(QIODevice::WriteOnly);
    own.write("de la casa matriz");
    own.close();

    const QStringList written = installTemplates(folder);
    EXPECT_EQ(written.size(), shippedTemplates().size());
    EXPECT_GE(written.size(), 80);
    EXPECT_FALSE(QFile::exists(folder + "/marcas.EST"));
    EXPECT_TRUE(QFile::exists(folder + "/PROPIA.est")) << "a template of another name stays";
    const DbfTable marcas(findTemplate("Marcas", folder));
    EXPECT_EQ(marcas.fields(), (QList<DbfField>{textField("Codigo", 10), textField("Nombre", 60),
                                                numericField("Status", 6)}));
    EXPECT_EQ(marcas.recordCount(), 0);
    EXPECT_EQ(findTemplate("propia", folder), folder + "/PROPIA.est");
    try {
        findTemplate("NOEXISTE", folder);
        ADD_FAILURE() << "a missing template is refused";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("No se encuentra la estructura NOEXISTE.est en %1...!")
                                .arg(QDir::toNativeSeparators(folder)));
    }
}

// The templates in the program are the layouts written out (scripts/make_templates.sh), within
// what dBase III readers take: 128 fields, 4000 bytes a record, ten-character unique names.
TEST(Templates, ShippedTemplatesAreTheLayoutsWithinDBaseLimits) {
    QTemporaryDir dir;
    installTemplates(dir.path());
    QSet<QString> shipped;
    for (const QString& name : shippedTemplates())
        shipped.insert(name.toUpper());
    const QList<TemplateLayout> layouts = templateLayouts();
    EXPECT_EQ(shipped.size(), layouts.size()) << "a template without a layout, or the reverse";
    for (const TemplateLayout& layout : layouts) {
        SCOPED_TRACE(layout.name.toStdString());
        ASSERT_TRUE(shipped.contains(layout.name.toUpper() + ".EST"))
            << "run scripts/make_templates.sh";
        const DbfTable t(findTemplate(layout.name, dir.path()));
        EXPECT_EQ(t.fields(), layout.fields) << "run scripts/make_templates.sh";
        EXPECT_EQ(t.languageDriver(), 0x03);
        EXPECT_LE(layout.fields.size(), 128);
        int record = 1;
        QSet<QString> names;
        for (const DbfField& f : layout.fields) {
            record += f.width;
            EXPECT_LE(f.name.size(), 10) << f.name.toStdString();
            EXPECT_FALSE(names.contains(f.name.toUpper())) << "twice: " << f.name.toStdString();
            names.insert(f.name.toUpper());
        }
        EXPECT_LE(record, 4000);
    }
}

TEST(Templates, LongColumnsTakeTheirHistoricShortNames) {
    const auto fieldsOf = [](const QString& name) {
        for (const TemplateLayout& l : templateLayouts())
            if (l.name == name) {
                QStringList names;
                for (const DbfField& f : l.fields)
                    names << f.name;
                return names;
            }
        return QStringList();
    };
    EXPECT_EQ(fieldsOf("MOVVENTA").mid(0, 5),
              (QStringList{"NumFac", "Serie", "Hora", "TipoLista", "CodBar"}));
    EXPECT_EQ(fieldsOf("USUARIO"), (QStringList{"Codigo", "Nombre", "Pasword", "Status"}));
    EXPECT_EQ(fieldsOf("TALLAS"), QStringList{"Talla"});
    EXPECT_EQ(fieldsOf("TABVAL"), (QStringList{"IdTabla", "Codigo", "Descrip"}));
    EXPECT_EQ(fieldsOf("IMPFISC"), (QStringList{"ID", "NombImpr", "Status", "IDProImp"}));
    EXPECT_TRUE(fieldsOf("TRANSFER").contains("CodRecib"));
    EXPECT_TRUE(fieldsOf("TRANSFER").contains("CodEnvia"));
    EXPECT_TRUE(fieldsOf("AJUSTEFL").contains("FecAju"));
    EXPECT_TRUE(fieldsOf("DEPOSITO").contains("NumDep"));
    EXPECT_TRUE(fieldsOf("CTACONTA").contains("ManejaDoc"));
    EXPECT_TRUE(fieldsOf("CTACONTA").contains("Acreedor"));
    EXPECT_TRUE(fieldsOf("SERVICIO").contains("Equipo"));
    EXPECT_TRUE(fieldsOf("SERVICIO").contains("Servidor"));
    EXPECT_TRUE(fieldsOf("SERVICIO").contains("BaseDato"));
    EXPECT_TRUE(fieldsOf("PTRANSF").contains("SegIntento"));
    EXPECT_TRUE(fieldsOf("COMPRAS").contains("Document"));
    EXPECT_TRUE(fieldsOf("COMPRAS").contains("Proveedo"));
    EXPECT_TRUE(fieldsOf("INVENTAR").contains("Referencia"));
    EXPECT_TRUE(fieldsOf("TIPCLIEN").contains("Descripcio"));
    EXPECT_TRUE(fieldsOf("AJUSTES").contains("TipoAjus"));
}
