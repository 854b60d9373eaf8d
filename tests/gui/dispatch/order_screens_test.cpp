#include "inventory/dispatch/dispatch_screens.h"
#include "pos/sale/till_fixture.h"
#include "shell/screens/screen_registry.h"
#include "support/scripted_dialogs.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <memory>

using namespace orvo;
using test::d;

namespace {

// frmOrdenDespacho made by the registry for the demo store's register, keyed from the keyboard.
class OrderScreensTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.trousers = true});
        inventory::dispatch::registerDispatchScreens(
            {[this] { return db(); }, [this] { return ctx.userCode; }, [this] { return ctx; }});
    }
    std::unique_ptr<QWidget> open(const char* form) {
        QWidget* w = shell::ScreenRegistry::instance().create(QString::fromLatin1(form), nullptr);
        EXPECT_NE(w, nullptr);
        w->show();
        w->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(w));
        return std::unique_ptr<QWidget>(w);
    }
    static void enter(QWidget& screen, const char* field, const QString& text) {
        auto* e = screen.findChild<QLineEdit*>(QString::fromLatin1(field));
        ASSERT_NE(e, nullptr) << field;
        e->setFocus();
        e->selectAll();
        QTest::keyClicks(e, text);
        QTest::keyClick(e, Qt::Key_Return);
    }
    static QString focusName() {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
    }

    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(OrderScreensTest, AnOrderIsKeyedForAWholesaleClientAndApproved) {
    auto s = open("frmOrdenDespacho");
    enter(*s, "txtCliente", "J301234567");
    EXPECT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    enter(*s, "txtCodigo", "T0002");
    ASSERT_EQ(focusName(), "txtCantidad");
    enter(*s, "txtCantidad", "2");
    // More than the stock is refused with the order's words, and the line is not added.
    enter(*s, "txtCodigo", "T0002");
    enter(*s, "txtCantidad", "9");
    EXPECT_EQ(dialogs.lastText(), "Artículo con existencia comprometida...!");
    auto* grid = s->findChild<QTableWidget*>("SpreadOrden");
    ASSERT_EQ(grid->rowCount(), 1);
    EXPECT_EQ(grid->item(0, 2)->text(), "M");

    dialogs.expectQuestion("Desea aprobar la orden de despacho...?", true);
    QTest::keyClick(s.get(), Qt::Key_F10);
    EXPECT_TRUE(dialogs.allAnswered()) << dialogs.lastText().toStdString();
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO").toInt(), 1);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVORDENDESPACHO"), d("2"));
    EXPECT_TRUE(s->findChild<QLabel*>("lblStatus")->text().endsWith("APROBADA"));

    // A workstation without a register keys no orders.
    ctx.registerConfigured = false;
    auto bare = open("frmOrdenDespacho");
    EXPECT_EQ(dialogs.lastText(), "Debe configurar la caja...!");
    EXPECT_FALSE(bare->findChild<QLineEdit*>("txtCodigo")->isEnabled());
}
