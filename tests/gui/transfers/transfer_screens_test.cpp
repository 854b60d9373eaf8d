#include "inventory/transfers/transfer_screens.h"
#include "inventory/transfers/transfer_support.h"
#include "shell/record_form/record_screen.h"
#include "shell/screens/screen_registry.h"
#include "support/scripted_dialogs.h"

#include <QApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <memory>

using namespace orvo;
using Action = shell::RecordScreen::Action;
using test::d;

namespace {

// The transfer screen made by the screen registry as the menu makes it, driven from the keyboard
// of the focused field.
class TransferScreensTest : public test::TransferTest {
protected:
    void SetUp() override {
        TransferTest::SetUp();
        inventory::transfers::registerTransferScreens(
            {[this] { return db(); }, [] { return QStringLiteral("ANA"); }});
        article("A1", "CAMISA-A", "20", "10");
        article("A2", "CAMISA-A", "3", "12");
    }

    std::unique_ptr<shell::RecordScreen> open(const char* form) {
        QWidget* w = shell::ScreenRegistry::instance().create(QString::fromLatin1(form), nullptr);
        auto* screen = qobject_cast<shell::RecordScreen*>(w);
        EXPECT_NE(screen, nullptr) << form;
        screen->show();
        screen->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(screen));
        return std::unique_ptr<shell::RecordScreen>(screen);
    }

    static QWidget* focused() { return QApplication::focusWidget(); }
    static QString focusName() { return focused() ? focused()->objectName() : QString(); }
    static void press(Qt::Key key) { QTest::keyClick(focused(), key); }
    static void enter(const QString& text) {
        if (auto* e = qobject_cast<QLineEdit*>(focused()))
            e->selectAll();
        QTest::keyClicks(focused(), text);
        press(Qt::Key_Return);
    }
    void keyLine(const QString& code, const QString& quantity) {
        ASSERT_EQ(focusName(), "txtCodigo");
        enter(code);
        ASSERT_EQ(focusName(), "txtCantidad") << dialogs.lastText().toStdString();
        enter(quantity);
        ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    }

    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(TransferScreensTest, TwoBoxesKeyedApprovedAndSentFromTheKeyboard) {
    auto s = open("frmTransferencias");
    ASSERT_TRUE(s->perform(Action::New));
    ASSERT_EQ(focusName(), "cboSucursal");
    QTest::keyClicks(focused(), "02");
    press(Qt::Key_Return);
    for (int i = 0; i < 8 && focusName() != "txtCaja"; ++i) // date, origin, dispatch, note
        press(Qt::Key_Return);
    ASSERT_EQ(focusName(), "txtCaja");
    enter("1");
    keyLine("A1", "6");
    keyLine("A2", "2");
    press(Qt::Key_F5); // the next box
    keyLine("A1", "4");
    const auto* lines = s->findChild<QTableWidget*>("SpreadTransferencias");
    ASSERT_NE(lines, nullptr);
    EXPECT_EQ(lines->rowCount(), 3);

    dialogs.expectQuestion("Desea Aprobar la Transferencia ?", true);
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(count("MOVTRANSFERENCIAS"), 3);
    EXPECT_EQ(stock("A1"), d("10")); // out once: 20 - 6 - 4
    EXPECT_EQ(stock("A2"), d("1"));
    EXPECT_EQ(dec("SELECT TotalValor FROM TRANSFERENCIAS"), d("124")); // 10 × 10 + 2 × 12

    // The screen keeps the keyboard after the save: F9 packs the transfer for branch 02.
    ASSERT_TRUE(focused() && s->isAncestorOf(focused())) << focusName().toStdString();
    press(Qt::Key_F9);
    EXPECT_TRUE(QFileInfo::exists(home() + "/Envia/02/Transfer.zip"))
        << dialogs.lastText().toStdString();
    EXPECT_EQ(scalar("SELECT Status FROM TRANSFERENCIAS").toInt(), 2);
    EXPECT_FALSE(s->offers(Action::Modify));
    EXPECT_FALSE(s->offers(Action::Delete));
}
