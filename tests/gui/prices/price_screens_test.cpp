// The price screens as a user drives them: a brand on promotion for next week approved into the
// catalogue, a list keyed by hand, the repricing from costs.
#include "inventory/prices/price_support.h"

#include "inventory/prices/import_screen.h"
#include "inventory/prices/price_list_screen.h"
#include "inventory/prices/price_screens.h"
#include "inventory/prices/promotion_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "support/scoped_app_home.h"
#include "support/scripted_dialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace orvo;
using namespace orvo::inventory::prices;

namespace {

class PriceScreensTest : public test::PriceTest {
protected:
    void SetUp() override {
        PriceTest::SetUp();
        registerPriceScreens({[this] { return db(); }, [] { return QString("ANA"); }});
        // No session open: Recibe is the one under ORVO_HOME, whatever an earlier test left.
        m_sessionFolder = shell::session().appFolder;
        shell::session().appFolder.clear();
    }
    void TearDown() override {
        shell::session().appFolder = m_sessionFolder;
        PriceTest::TearDown();
    }
    QString m_sessionFolder;
    std::unique_ptr<QWidget> open(const char* name) {
        std::unique_ptr<QWidget> w(shell::ScreenRegistry::instance().create(name, nullptr));
        EXPECT_TRUE(w) << name;
        if (w) {
            EXPECT_EQ(w->objectName(), name);
            w->show();
        }
        return w;
    }
    template <class T> static T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
    static void type(QWidget& w, const char* name, const QString& text) {
        auto* e = child<QLineEdit>(w, name);
        e->selectAll();
        QTest::keyClicks(e, text);
    }
    static void click(QWidget& w, const char* name) {
        QTest::mouseClick(child<QPushButton>(w, name), Qt::LeftButton);
    }
    static void pickBrand(QWidget& w, const char* code) {
        auto* box = child<QComboBox>(w, "cboMarca");
        box->setCurrentIndex(box->findData(code));
    }
};

} // namespace

TEST_F(PriceScreensTest, ABrandOnPromotionForNextWeekIsApprovedIntoTheCatalogue) {
    test::ScriptedDialogs dialogs;
    const QDate nextMonday = QDate::currentDate().addDays(8 - QDate::currentDate().dayOfWeek());
    {
        auto screen = open("frmPreciosPromocion");
        auto* models = child<QTableWidget>(*screen, "lstModelos");
        EXPECT_EQ(models->rowCount(), 3);
        pickBrand(*screen, "N1");
        ASSERT_EQ(models->rowCount(), 2);
        EXPECT_EQ(models->item(0, 1)->text(), "R1");

        click(*screen, "cmdGenerar");
        EXPECT_EQ(dialogs.lastText(),
                  "Debe seleccionar una marca y una referencia para la promoción...!");

        // From the keys: Tab into the models and out again, Space marks the current one,
        // Enter runs down the terms; dates are typed whole whichever section was left last.
        screen->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(screen.get()));
        const auto key = [](Qt::Key k, Qt::KeyboardModifiers m = Qt::NoModifier) {
            QTest::keyClick(QApplication::focusWidget(), k, m);
        };
        child<QLineEdit>(*screen, "txtReferencia")->setFocus();
        key(Qt::Key_Return);
        ASSERT_EQ(QApplication::focusWidget(), models);
        models->setCurrentCell(1, 3);
        key(Qt::Key_Space);
        EXPECT_EQ(models->item(1, 0)->checkState(), Qt::Checked);
        EXPECT_EQ(models->item(0, 0)->checkState(), Qt::Unchecked);
        key(Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), child<QPushButton>(*screen, "cmdMarcarTodos"));
        key(Qt::Key_Space);
        EXPECT_EQ(models->item(0, 0)->checkState(), Qt::Checked);
        auto* start = child<QDateEdit>(*screen, "dtpFechaInicial");
        start->setCurrentSection(QDateTimeEdit::YearSection);
        child<QLineEdit>(*screen, "txtPorcentajePromocion")->setFocus();
        QTest::keyClicks(QApplication::focusWidget(), "30");
        key(Qt::Key_Return);
        key(Qt::Key_Return);
        key(Qt::Key_Return);
        QTRY_COMPARE(QApplication::focusWidget(), start);
        QTRY_COMPARE(start->currentSection(), QDateTimeEdit::DaySection);
        QTest::keyClicks(start, nextMonday.toString("ddMMyyyy"));
        EXPECT_EQ(start->date(), nextMonday);
        key(Qt::Key_Return);
        QTRY_COMPARE(QApplication::focusWidget(), child<QDateEdit>(*screen, "dtpFechaFinal"));
        QTest::keyClicks(QApplication::focusWidget(), nextMonday.addDays(6).toString("ddMMyyyy"));
        dialogs.expectQuestion("Esta seguro de generar la lista de precio...?", true);
        key(Qt::Key_Return);
        EXPECT_TRUE(dialogs.allAnswered());
        EXPECT_EQ(dialogs.lastText(), "Lista de precio generada con exito...!");
        EXPECT_TRUE(child<QLabel>(*screen, "lblResultado")->text().contains("Nº 1"));
    }
    EXPECT_EQ(count("MOVLISTAPRECIO", "Numero = 1 AND Promocion = 1"), 2);
    EXPECT_EQ(count("INVENTARIO", "Promocion = 1"), 0);

    auto screen = open("frmListaPrecios");
    auto& s = static_cast<PriceListScreen&>(*screen);
    s.openList(1);
    auto* lines = child<QTableWidget>(s, "SpreadListaPrecios");
    ASSERT_EQ(lines->rowCount(), 2);
    EXPECT_EQ(child<QLabel>(s, "lblStatus")->text(), "ABIERTA");
    EXPECT_EQ(lines->item(0, 12)->text(), "70,00");
    EXPECT_EQ(lines->item(1, 13)->text(), nextMonday.toString("dd/MM/yyyy"));

    dialogs.expectQuestion("Desea aprobar la lista de precio...?", true);
    dialogs.expectQuestion("Desea actualizar los valores del inventario con la lista de precio...?",
                           true);
    QTest::keyClick(&s, Qt::Key_F10);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(dialogs.lastText(),
              "Lista de precio Nº 1 guardada y aprobada: se actualizaron los precios de 5 "
              "artículos...!");
    EXPECT_EQ(child<QLabel>(s, "lblStatus")->text(), "APROBADA");
    EXPECT_FALSE(child<QPushButton>(s, "cmdGuardar")->isEnabled());
    EXPECT_EQ(
        count("INVENTARIO",
              "Promocion = 1 AND PrecioPromocion = 70 AND FechaInicial >= ? "
              "AND FechaInicial < ?",
              {QDateTime(nextMonday, QTime(0, 0)), QDateTime(nextMonday.addDays(1), QTime(0, 0))}),
        3);
    EXPECT_EQ(count("INVENTARIO", "Promocion = 1 AND PrecioPromocion = 28"), 2);
    EXPECT_EQ(count("INVENTARIO", "CodigoMarca = 'A1' AND Promocion = 0"), 1);
}

TEST_F(PriceScreensTest, AListKeyedByHandFromTheKeyboard) {
    test::ScriptedDialogs dialogs;
    auto screen = open("frmListaPrecios");
    auto& s = static_cast<PriceListScreen&>(*screen);
    auto* lines = child<QTableWidget>(s, "SpreadListaPrecios");

    // Reference, Enter, brand, Enter: the model is added.
    type(s, "txtReferencia", "R2");
    QTest::keyClick(child<QLineEdit>(s, "txtReferencia"), Qt::Key_Return);
    pickBrand(s, "N1");
    QTest::keyClick(child<QComboBox>(s, "cboMarca"), Qt::Key_Return);
    ASSERT_EQ(lines->rowCount(), 1);
    EXPECT_EQ(lines->item(0, 2)->text(), "ZAPATO R2");
    EXPECT_EQ(lines->item(0, 3)->text(), "20,00");
    guarded(&s, [&] { s.addModel("R2", "N1"); });
    EXPECT_EQ(dialogs.lastText(), "La referencia R2 ya esta en la lista...!");
    guarded(&s, [&] { s.addModel("R9", "N1"); });
    EXPECT_EQ(dialogs.lastText(), "No existe la referencia R9 de la marca N1...!");

    // The factor suggests from the cost; typed prices and the promotion.
    type(s, "txtFactorDetal", "2,5");
    QTest::keyClick(child<QLineEdit>(s, "txtFactorDetal"), Qt::Key_Return);
    EXPECT_EQ(lines->item(0, 4)->text(), "50,00");
    lines->item(0, 5)->setText("49,90");
    EXPECT_EQ(s.list().lines[0].retail, test::PriceTest::d("49.9"));
    lines->item(0, 11)->setText("10");
    EXPECT_EQ(lines->item(0, 12)->text(), "44,91");
    lines->item(0, 13)->setText("31/02/2026");
    EXPECT_EQ(dialogs.lastText(), "Escriba la fecha como dd/mm/aaaa...!");
    lines->item(0, 14)->setText("01/01/1999");
    EXPECT_EQ(dialogs.lastText(),
              "La fecha inicial no puede ser mayor a la fecha final de la promoción...!");
    EXPECT_EQ(lines->item(0, 14)->text(), "01/01/2000"); // back to what the line holds
    lines->item(0, 10)->setCheckState(Qt::Checked);
    EXPECT_TRUE(s.list().lines[0].promotion);
    EXPECT_EQ(s.list().lines[0].start, QDate::currentDate());

    // A zero price stops the save before any question.
    lines->item(0, 7)->setText("0");
    click(s, "cmdGuardar");
    EXPECT_EQ(dialogs.lastText(), "Existen precios mayor en cero...!");
    lines->item(0, 7)->setText("39");

    // Approved without the second Yes, the catalogue waits for "Actualizar inventario".
    dialogs.expectQuestion("Desea aprobar la lista de precio...?", true);
    dialogs.expectQuestion("Desea actualizar los valores del inventario", false);
    click(s, "cmdGuardar");
    EXPECT_EQ(dialogs.lastText(), "Lista de precio Nº 1 guardada y aprobada...!");
    EXPECT_EQ(inventory("PrecioDetal", "R2-S"), test::PriceTest::d("40"));
    ASSERT_TRUE(child<QPushButton>(s, "cmdActualizarInventario")->isEnabled());
    dialogs.expectQuestion("Desea actualizar los valores del inventario", true);
    click(s, "cmdActualizarInventario");
    EXPECT_EQ(dialogs.lastText(), "Se actualizaron los precios de 2 artículos...!");
    EXPECT_EQ(inventory("PrecioDetal", "R2-M"), test::PriceTest::d("49.9"));
    EXPECT_EQ(inventory("PrecioPromocion", "R2-M"), test::PriceTest::d("44.91"));
    EXPECT_EQ(inventory("PrecioMayor", "R2-M"), test::PriceTest::d("39"));

    // Nuevo starts an empty list; the next one takes number 2.
    click(s, "cmdNuevo");
    EXPECT_EQ(lines->rowCount(), 0);
    EXPECT_EQ(child<QLabel>(s, "lblStatus")->text(), "ABIERTA");
    s.loadFromList(1);
    EXPECT_EQ(lines->rowCount(), 1);
    type(s, "txtDescuento", "15");
    click(s, "cmdAplicarDescuento");
    EXPECT_EQ(dialogs.lastText(), "Se aplico un descuento de 15% a la lista actual.");
    EXPECT_EQ(s.list().lines[0].promotionPrice, test::PriceTest::d("42.415"));
    dialogs.expectQuestion("Desea aprobar la lista de precio...?", false);
    click(s, "cmdGuardar");
    EXPECT_EQ(dialogs.lastText(), "Lista de precio Nº 2 guardada...!");
}

TEST_F(PriceScreensTest, TheCatalogueRepricedFromCostsAndMargins) {
    test::ScriptedDialogs dialogs;
    auto screen = open("frmActualizarPrecios");
    type(*screen, "txtUtilidadDetal", "40");
    type(*screen, "txtUtilidadMayor", "20");
    click(*screen, "cmdActualizar");
    EXPECT_EQ(dialogs.lastText(),
              "Introduzca un porcentaje de utilidad para el precio afiliado...!");
    type(*screen, "txtUtilidadAfiliado", "30");
    dialogs.expectQuestion("Desea actualizar los precios de los articulos y servicion?...", true);
    QTest::keyClick(child<QLineEdit>(*screen, "txtUtilidadAfiliado"), Qt::Key_Return);
    EXPECT_EQ(dialogs.lastText(), "precios actualizados con exito...!");
    EXPECT_EQ(inventory("PrecioDetal", "R1-36"), test::PriceTest::d("70"));
    EXPECT_EQ(inventory("PrecioAfiliado", "R2-S"), test::PriceTest::d("26"));
}

TEST_F(PriceScreensTest, HeadOfficeListsAreLoadedFromRecibeOnceTheTransfersAreIn) {
    test::ScopedAppHome home;
    const QString templates = home.filePath("Estructura");
    exchange::package::installTemplates(templates);
    const QString recibe = home.filePath("Recibe");
    QDir().mkpath(recibe);
    exchange::package::writeZip(recibe + "/lista.zip",
                                test::writeHeadOfficeLists(templates, home.path(), "Resulist",
                                                           "Movilist", "RESULIST", "MOVILIST"));
    QFile transfers(recibe + "/Transfer.zip");
    ASSERT_TRUE(transfers.open(QIODevice::WriteOnly));
    transfers.close();

    test::ScriptedDialogs dialogs;
    {
        auto screen = open("frmImpListaPrecios");
        EXPECT_EQ(dialogs.lastText(), "Debe cargar las transferencias...!");
        EXPECT_FALSE(child<QPushButton>(*screen, "cmdCargar")->isEnabled());
    }
    QFile::remove(recibe + "/Transfer.zip");
    dialogs.clear();
    auto screen = open("frmImpListaPrecios");
    EXPECT_TRUE(dialogs.messages().isEmpty()) << dialogs.lastText().toStdString();
    EXPECT_EQ(child<QTableWidget>(*screen, "grdListas")->rowCount(), 2);
    EXPECT_EQ(child<QLabel>(*screen, "lblOrigen")->text(), "Recibido: lista.zip");
    dialogs.expectQuestion("Desea aprobar la lista de precio...?", true);
    dialogs.expectQuestion("Desea actualizar los valores del inventario", true);
    click(*screen, "cmdCargar");
    EXPECT_EQ(dialogs.lastText(), "Se cargaron 2 listas de precios (Nº 1, 2): se actualizaron los "
                                  "precios de 6 artículos...!");
    EXPECT_EQ(inventory("PrecioDetal", "R1-40"), test::PriceTest::d("150"));
    EXPECT_FALSE(QFile::exists(recibe + "/lista.zip"));

    // The price list screen takes the lines of a MoviList.dbf left in Recibe.
    test::writeHeadOfficeLists(templates, recibe, "ResuList", "MoviList", "RESULIST", "MOVILIST");
    auto lists = open("frmListaPrecios");
    click(*lists, "cmdCargarArchivo");
    EXPECT_EQ(dialogs.lastText(), "Se cargaron 3 referencias del archivo.");
    auto* grid = child<QTableWidget>(*lists, "SpreadListaPrecios");
    ASSERT_EQ(grid->rowCount(), 3);
    EXPECT_EQ(grid->item(2, 2)->text(), "ZAPATO R3");
    EXPECT_EQ(grid->item(2, 5)->text(), "66,50");
}
