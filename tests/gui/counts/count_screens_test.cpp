#include "common/errors/errors.h"
#include "inventory/counts/count_close_screens.h"
#include "inventory/counts/count_page_screen.h"
#include "inventory/counts/count_screens.h"
#include "shell/screens/screen_registry.h"
#include "support/app_home_guard.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <memory>

using namespace orvo;
using namespace orvo::inventory::counts;
using Action = shell::RecordScreen::Action;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

// The count screens as the menu makes them, driven from the keyboard of the focused field.
class CountScreensTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO PARAMETROS (Nombre, NumeroConteos) VALUES ('TIENDA', 2)");
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
             "16)");
        for (const auto& [code, stock] :
             std::initializer_list<std::pair<const char*, int>>{{"A", 10}, {"B", 5}, {"C", 7}})
            exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, "
                 "Existencia, ExistenciaInicial, CostoPromedio, PrecioDetal, TipoImpuesto, Tipo, "
                 "Status) VALUES (?, ?, 'R', 'N1', ?, ?, 3, 5, 1, 0, 1)",
                 {code, QString("ART ") + code, stock, stock});
        registerCountScreens({[this] { return db(); }, [] { return QString("ANA"); }});
    }

    template <class T> std::unique_ptr<T> open(const char* form) {
        QWidget* w = shell::ScreenRegistry::instance().create(QString::fromLatin1(form), nullptr);
        EXPECT_NE(w, nullptr) << form;
        auto* screen = qobject_cast<T*>(w);
        EXPECT_NE(screen, nullptr) << form;
        screen->show();
        screen->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(screen));
        return std::unique_ptr<T>(screen);
    }
    static QWidget* focused() { return QApplication::focusWidget(); }
    static QString focusName() { return focused() ? focused()->objectName() : QString(); }
    static void enter(const QString& text) {
        if (auto* e = qobject_cast<QLineEdit*>(focused()))
            e->selectAll();
        QTest::keyClicks(focused(), text);
        QTest::keyClick(focused(), Qt::Key_Return);
    }
    static void pressOn(QWidget& screen, Qt::Key key) {
        screen.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&screen));
        QTest::keyClick(&screen, key);
    }
    Decimal stock(const QString& code) const {
        return Decimal::fromVariant(
            scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code}));
    }

    // A team counts page 1 in its pass: Nuevo proposes the page, Guardar, then the scanner.
    void countPage(const char* form, const QStringList& scans,
                   const QString& approved = "APROBADA") {
        auto s = open<CountPageScreen>(form);
        ASSERT_TRUE(s->perform(Action::New));
        ASSERT_EQ(focusName(), "txtPagina");
        EXPECT_EQ(qobject_cast<QLineEdit*>(focused())->text(), "1");
        ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
        ASSERT_EQ(focusName(), "txtCodigo");
        for (const QString& code : scans) {
            enter(code);
            ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
        }
        dialogs.expectQuestion("Desea Aprobar la Pagina ?", true);
        pressOn(*s, Qt::Key_F12);
        EXPECT_TRUE(dialogs.allAnswered());
        EXPECT_EQ(s->findChild<QLabel*>("lblStatus")->text(), approved);
    }

    test::AppHomeGuard home;
    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(CountScreensTest, TwoTeamsCountAThirdSettlesAndTheAdjustmentMovesTheStockOnce) {
    countPage("frmTomaFisica1", {"A", "A", "3*B", "A"});
    EXPECT_EQ(count("MOVTOMAFISICA1"), 2);
    countPage("frmTomaFisica2", {"A", "A", "A", "4*B"});

    // Batches are for one counting pass only: the screen does not open.
    try {
        delete shell::ScreenRegistry::instance().create("frmAprobarConteosEnLotes", nullptr);
        ADD_FAILURE() << "opened with two counts";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "El sistema esta parametrizado para 2 conteos físicos. Este "
                            "módulo no esta disponible...");
    }

    auto third = open<FinalCountScreen>("frmTomaFisica3");
    dialogs.expectQuestion("Desea preparar el conteo 3 de la pagina seleccionada?", true);
    pressOn(*third, Qt::Key_F3);
    EXPECT_TRUE(dialogs.allAnswered());
    auto* grid = third->findChild<QTableWidget*>("SpreadToma");
    ASSERT_EQ(grid->rowCount(), 2);
    EXPECT_EQ(grid->item(0, 4)->text(), QLocale().toString(3.0, 'f', 2)); // A agreed
    EXPECT_EQ(grid->item(1, 4)->text(), QLocale().toString(0.0, 'f', 2)); // B waits
    ASSERT_EQ(focusName(), "txtCodigo");
    enter("B");
    ASSERT_EQ(focusName(), "txtCantidad");
    enter("4");
    ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    EXPECT_EQ(grid->item(1, 4)->text(), QLocale().toString(4.0, 'f', 2));
    // F12 from where the keying left the cursor.
    dialogs.expectQuestion("Desea Aprobar la Pagina ?", true);
    QTest::keyClick(focused(), Qt::Key_F12);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(third->findChild<QTableWidget*>("grdPaginas")->item(0, 3)->text(), "APROBADA");

    auto adjust = open<PhysicalAdjustmentScreen>("frmAjusteFisicoLogico");
    auto* differences = adjust->findChild<QTableWidget*>("grdDiferencias");
    ASSERT_EQ(differences->rowCount(), 3); // A 10→3, B 5→4, C 7→0 (not counted)
    dialogs.expectQuestion("Desea realizar respaldo en un dispositivo externo USB...?", true);
    const QString usb = home.filePath("USB");
    QDir().mkpath(usb);
    dialogs.expectFileName(usb + "/TF.BAK");
    pressOn(*adjust, Qt::Key_F5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !adjust->isRunning(); }, 60000));
    EXPECT_EQ(dialogs.lastText(), "Ha finalizado Satisfactoriamente el Proceso de Ajuste...!")
        << dialogs.texts().join(" | ").toStdString();
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(stock("A"), d("3"));
    EXPECT_EQ(stock("B"), d("4"));
    EXPECT_EQ(stock("C"), d("0"));
    EXPECT_EQ(differences->rowCount(), 0);
    EXPECT_EQ(QDir(home.filePath("Respaldos")).entryList({"TF_*.BAK"}).size(), 1);
    EXPECT_EQ(QDir(usb).entryList({"TF_*.BAK"}).size(), 1);

    // Once a day: the second run is refused before anything.
    dialogs.clear();
    pressOn(*adjust, Qt::Key_F5);
    EXPECT_TRUE(dialogs.lastText().startsWith("el Ajuste Físico Lógico ya se Realizo..."))
        << dialogs.lastText().toStdString();
    EXPECT_EQ(stock("A"), d("3"));
}

TEST_F(CountScreensTest, APartialCountCorrectsTheCountedArticlesFromItsScreen) {
    // A above its stock, B as booked
    countPage("frmTomaParcial", {"12*A", "B", "B", "B", "B", "B"}, "PREPARADA POR AJUSTE PARCIAL");
    auto partial = open<PhysicalAdjustmentScreen>("frmAjusteFisicoLogicoParcial");
    ASSERT_EQ(partial->findChild<QTableWidget*>("grdDiferencias")->rowCount(), 1);
    dialogs.expectQuestion("Desea realizar el Ajuste Físico Lógico parcial...?", true);
    pressOn(*partial, Qt::Key_F5);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(dialogs.lastText(), "El Ajuste Físico Lógico parcial realizado con exito...!");
    EXPECT_EQ(stock("A"), d("12"));
    EXPECT_EQ(stock("B"), d("5"));
    EXPECT_EQ(stock("C"), d("7"));
    EXPECT_EQ(count("AJUSTES"), 1);
    EXPECT_EQ(scalar("SELECT TipoAjuste FROM AJUSTES").toInt(), 999);
}
