#include "inventory/articles/article_screens.h"
#include "inventory/articles/article_support.h"
#include "inventory/articles/articles_screen.h"
#include "inventory/articles/barcode_change_screen.h"
#include "inventory/articles/lots_screen.h"
#include "inventory/articles/serials_screen.h"
#include "shell/screens/screen_registry.h"
#include "support/scripted_dialogs.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

using namespace orvo;
using namespace orvo::inventory;
using Action = shell::RecordScreen::Action;

namespace {

class ArticlesScreenTest : public test::ArticleTest {
protected:
    void SetUp() override {
        ArticleTest::SetUp();
        member("ANA", "SISTEMAS", "SISTEMAS");
    }

    template <class T> static T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
    static void tick(QListWidget* list, const QString& text) {
        const auto items = list->findItems(text, Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1) << text.toStdString();
        items.first()->setCheckState(Qt::Checked);
    }
    static void typeInto(QLineEdit* e, const QString& text) {
        e->selectAll();
        QTest::keyClicks(e, text);
    }
    // Types into a grid cell through its editor and presses Enter, as the user does.
    static void typeCell(QTableWidget* cells, int row, int column, const QString& text,
                         Qt::Key leave = Qt::Key_Return) {
        // Entering a cell opens its editor; an editor left behind is hidden until deleted.
        cells->setCurrentCell(row, column);
        const auto editor = [cells]() -> QLineEdit* {
            for (QLineEdit* e : cells->viewport()->findChildren<QLineEdit*>())
                if (e->isVisible())
                    return e;
            return nullptr;
        };
        if (!editor())
            cells->editItem(cells->item(row, column));
        ASSERT_NE(editor(), nullptr);
        editor()->selectAll();
        QTest::keyClicks(editor(), text);
        QTest::keyClick(editor(), leave);
    }
    static QStringList sizesDown(QTableWidget* cells) {
        QStringList out;
        for (int r = 0; r < cells->rowCount(); ++r)
            out << cells->verticalHeaderItem(r)->text();
        return out;
    }
};

} // namespace

TEST_F(ArticlesScreenTest, BarcodesTypedInTheGridBecomeVariants) {
    saveModel(db(), model("OTRA"), grid("X"), true, writer()); // owns X00 ... X21
    test::ScriptedDialogs dialogs;
    ArticlesScreen s(db(), "ANA");
    s.show();
    ASSERT_EQ(s.recordCount(), 1);
    ASSERT_TRUE(s.perform(Action::New));

    typeInto(child<QLineEdit>(s, "txtReferencia"), "REF-G");
    auto* brand = child<QComboBox>(s, "cboMarca");
    brand->setCurrentIndex(brand->findData("N1"));
    typeInto(child<QLineEdit>(s, "txtNombre"), "BOTA");
    auto* tree = child<QTreeWidget>(s, "tvwCategorias");
    const auto found = tree->findItems("TROTE", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(found.size(), 1);
    tree->setCurrentItem(found.first());
    typeInto(child<QLineEdit>(s, "txtPrecioDetal"), "50");
    EXPECT_EQ(child<QLineEdit>(s, "txtPrecioDetalImp")->text(), "58.00");
    typeInto(child<QLineEdit>(s, "txtPrecioMayorImp"), "116");
    EXPECT_EQ(child<QLineEdit>(s, "txtPrecioMayor")->text(), "100.00");

    tick(child<QListWidget>(s, "lstTallas"), "36");
    tick(child<QListWidget>(s, "lstTallas"), "38");
    tick(child<QListWidget>(s, "lstColores"), "AZUL MARINO OSCURO");
    auto* cells = child<QTableWidget>(s, "SpreadArticulos");
    ASSERT_EQ(cells->rowCount(), 2);
    ASSERT_EQ(cells->columnCount(), 1);

    // A refused code leaves its cell, and only its cell, once the edit is over.
    typeCell(cells, 0, 0, "G1");
    typeCell(cells, 1, 0, "G1");
    QTRY_COMPARE(dialogs.lastText(), "El codigo ya existe en esta referencia...!");
    EXPECT_EQ(cells->item(1, 0)->text(), "");
    EXPECT_EQ(cells->item(0, 0)->text(), "G1");
    typeCell(cells, 1, 0, "X10");
    QTRY_COMPARE(dialogs.lastText(), "El codigo ya existe en otra referencia...!");
    EXPECT_EQ(cells->item(1, 0)->text(), "");
    typeCell(cells, 1, 0, "7591234000017");
    QTRY_COMPARE(dialogs.lastText(), "El código EAN-13 7591234000017 no es válido: su dígito de "
                                     "control debe ser 8...!");
    EXPECT_EQ(cells->item(1, 0)->text(), "");
    typeCell(cells, 1, 0, "G2");
    QTRY_COMPARE(child<QLabel>(s, "lblVariaciones")->text(),
                 "Existe(n) 2 variacion(es) por talla y color");

    // A size inserted from the grid's menu gets its own row, kept where it was put after a
    // refusal.
    s.insertSizeRow(0, "40");
    ASSERT_EQ(cells->rowCount(), 3);
    typeCell(cells, 0, 0, "G2", Qt::Key_Tab);
    QTRY_COMPARE(dialogs.texts().size(), 4);
    EXPECT_EQ(sizesDown(cells), (QStringList{"40", "36", "38"}));
    EXPECT_EQ(cells->item(0, 0)->text(), "");
    EXPECT_EQ(cells->item(1, 0)->text(), "G1");
    EXPECT_EQ(cells->item(2, 0)->text(), "G2");
    typeCell(cells, 0, 0, "G0");

    dialogs.clear();
    ASSERT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-G'"), 3);
    EXPECT_EQ(scalar("SELECT Nombre FROM INVENTARIO WHERE CodigoBarra = 'G2'").toString(),
              "BOTA T:38 AZUL MARINO O");
    EXPECT_EQ(scalar("SELECT Talla FROM INVENTARIO WHERE CodigoBarra = 'G0'").toString(), "40");
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-G' AND PrecioDetal = 50 AND PrecioMayor = "
                                  "100 AND Categoria = '010101' AND CodigoMarca = 'N1'"),
              3);
    EXPECT_EQ(count("LOG_ARTICULOS", "Referencia = 'REF-G' AND Formulario = 'frmArticulos'"), 3);
    EXPECT_EQ(s.recordCount(), 2);

    // Modifying and saving again updates the same rows.
    ASSERT_TRUE(s.perform(Action::Modify));
    typeInto(child<QLineEdit>(s, "txtPrecioDetal"), "60");
    ASSERT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-G'"), 3);
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-G' AND PrecioDetal = 60"), 3);
    EXPECT_EQ(child<QLineEdit>(s, "txtReferencia")->text(), "REF-G");
    EXPECT_EQ(cells->item(0, 0)->text(), "G1"); // sizes come down in code order once loaded

    // A variant's barcode typed over is that variant's new barcode: no second variant.
    exec("UPDATE INVENTARIO SET Existencia = 4 WHERE CodigoBarra = 'G2'");
    ASSERT_TRUE(s.perform(Action::Modify));
    typeCell(cells, 1, 0, "7591234000018");
    ASSERT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-G'"), 3);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = 'G2'"), 0);
    // Stock is read as a decimal, as PostgreSQL returns it.
    EXPECT_EQ(Decimal::fromVariant(scalar(
                  "SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = '7591234000018' AND "
                  "Talla = '38'")),
              Decimal(4));
    EXPECT_EQ(count("LOG_ARTICULOS",
                    "Formulario = 'frmArticulos' AND CodigoBarra = "
                    "'7591234000018' AND SQL LIKE 'UPDATE INVENTARIO SET "
                    "CodigoBarra = ''7591234000018'' WHERE CodigoBarra = ''G2''%'"),
              1);
    EXPECT_EQ(cells->item(1, 0)->text(), "7591234000018");
}

TEST_F(ArticlesScreenTest, SaveRefusalsKeepTheFormAndScreensAreRegistered) {
    test::ScriptedDialogs dialogs;
    registerArticleScreens({[this] { return db(); }, [] { return QString("ANA"); }});
    auto& registry = shell::ScreenRegistry::instance();
    for (const char* name : {"frmArticulos", "frmEntradaSeriales", "frmLotes", "frmAsignarLote",
                             "frmCambiarCodigos"}) {
        std::unique_ptr<QWidget> w(registry.create(name, nullptr));
        ASSERT_TRUE(w) << name;
        EXPECT_EQ(w->objectName(), name);
    }

    std::unique_ptr<QWidget> w(registry.create("frmArticulos", nullptr));
    auto& s = static_cast<ArticlesScreen&>(*w);
    s.show();
    ASSERT_TRUE(s.perform(Action::New));
    typeInto(child<QLineEdit>(s, "txtReferencia"), "R");
    auto* brand = child<QComboBox>(s, "cboMarca");
    brand->setCurrentIndex(brand->findData("N1"));
    typeInto(child<QLineEdit>(s, "txtNombre"), "GORRA");
    EXPECT_FALSE(s.perform(Action::Save));
    EXPECT_EQ(dialogs.lastText(), "Debe específicar alguna talla...!");
    tick(child<QListWidget>(s, "lstTallas"), "36");
    tick(child<QListWidget>(s, "lstColores"), "NEGRO");
    typeCell(child<QTableWidget>(s, "SpreadArticulos"), 0, 0, "GR1");
    EXPECT_FALSE(s.perform(Action::Save));
    EXPECT_EQ(dialogs.lastText(), "Seleccione una categoria de detalle...!");
    EXPECT_EQ(s.mode(), shell::RecordScreen::Mode::Adding);
    EXPECT_EQ(count("INVENTARIO"), 0);
}

TEST_F(ArticlesScreenTest, SerialScreenScansAndApproves) {
    test::ScriptedDialogs dialogs;
    SerialsScreen s(db(), "ANA");
    s.show();
    s.chooseType("CO");
    auto* barcode = child<QLineEdit>(s, "txtCodigoBarra");
    auto* serial = child<QLineEdit>(s, "txtSerial");
    barcode->setText("100");
    for (const char* sn : {"S1", "S2", "S1"}) {
        serial->setText(sn);
        QTest::keyClick(serial, Qt::Key_Return);
    }
    EXPECT_EQ(dialogs.lastText(), "Ya el serial esta incluido...!");
    EXPECT_EQ(child<QTableWidget>(s, "SpreadSeriales")->rowCount(), 2);
    dialogs.expectQuestion("Desea Aprobar los seriales de la compra?", true);
    s.saveDocument();
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(count("CODIGOSERIAL", "Status = 1"), 2);
    EXPECT_EQ(child<QLabel>(s, "lblStatus")->text(), "APROBADA");
}

TEST_F(ArticlesScreenTest, BarcodeChangeScreenChangesTypedCodes) {
    saveModel(db(), model("REF-1"), grid("77"), true, writer());
    test::ScriptedDialogs dialogs;
    BarcodeChangeScreen s(db(), "ANA");
    s.show();
    auto* brand = child<QComboBox>(s, "cboMarca");
    brand->setCurrentIndex(brand->findData("A1"));
    typeInto(child<QLineEdit>(s, "txtReferencia"), "REF-1");
    QTest::keyClick(child<QLineEdit>(s, "txtReferencia"), Qt::Key_Return);
    EXPECT_EQ(dialogs.lastText(),
              "No existen codigos con esta Referencia con la marca seleccionada...!");
    auto* codes = child<QTableWidget>(s, "SpreadCodigos");
    EXPECT_EQ(codes->rowCount(), 0);
    brand->setCurrentIndex(brand->findData("N1"));
    QTest::keyClick(child<QLineEdit>(s, "txtReferencia"), Qt::Key_Return);
    ASSERT_EQ(codes->rowCount(), 6);
    ASSERT_EQ(codes->item(0, 2)->text(), "7701");
    codes->item(0, 4)->setText("7710"); // taken
    EXPECT_EQ(dialogs.lastText(), " El Código: 7710 ya existe...!");
    EXPECT_EQ(codes->item(0, 4)->text(), "");
    codes->item(0, 4)->setText("NUEVO1");
    child<QPushButton>(s, "cmdGuardar")->click();
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = 'NUEVO1' AND CodigoBarraAnt = '7701'"), 1);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7701'"), 0);
    EXPECT_EQ(count("LOG_ARTICULOS", "Formulario = 'frmCambiarCodigos'"), 1);
}

TEST_F(ArticlesScreenTest, LotsAreKeptThroughTheRecordToolbarActions) {
    test::ScriptedDialogs dialogs;
    LotsScreen s(db(), "ANA");
    s.show();
    ASSERT_TRUE(s.perform(Action::New));
    typeInto(child<QLineEdit>(s, "txtLote"), "L-01");
    typeInto(child<QLineEdit>(s, "txtDescripcion"), "Temporada");
    ASSERT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("LOTES", "Lote = 'L-01' AND Estado = 1 AND UsuarioCreacion = 'ANA'"), 1);
    ASSERT_EQ(s.recordCount(), 1);
    ASSERT_TRUE(s.perform(Action::Modify));
    EXPECT_FALSE(child<QLineEdit>(s, "txtLote")->isEnabled());
    child<QRadioButton>(s, "optEstado_0")->setChecked(true);
    ASSERT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("LOTES", "Estado = 0"), 1);
    AssignLotDialog none(db());
    EXPECT_EQ(none.findChild<QListWidget*>("lstLotes")->count(), 0); // closed lots are not offered

    dialogs.expectQuestion("¿Desea eliminar el registro actual?", true);
    ASSERT_TRUE(s.perform(Action::Delete));
    EXPECT_EQ(dialogs.lastText(), "Registro eliminado con exito!");
    EXPECT_EQ(count("LOTES"), 0);
}
