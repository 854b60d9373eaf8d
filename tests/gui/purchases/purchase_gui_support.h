#pragma once

#include "inventory/purchases/purchase_screens.h"
#include "inventory/purchases/purchase_support.h"
#include "shell/record_form/record_screen.h"
#include "shell/screens/screen_registry.h"
#include "support/scripted_dialogs.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <memory>

// Failures show texts as texts.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace orvo::test {

// Purchase screens made by the screen registry as the menu makes them, driven from the keyboard
// of the focused field. ORVO_HOME points at a fresh folder (the reception's local backup).
class PurchaseScreenTest : public PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        user("ANA");
    }

    // The screens the registry makes from now on belong to `code`.
    void user(const QString& code) {
        m_user = code;
        inventory::purchases::registerPurchaseScreens(
            {[this] { return db(); }, [this] { return m_user; }});
    }

    template <class T = shell::RecordScreen> std::unique_ptr<T> open(const char* form) {
        QWidget* w = shell::ScreenRegistry::instance().create(QString::fromLatin1(form), nullptr);
        EXPECT_NE(w, nullptr) << form;
        auto* screen = qobject_cast<T*>(w);
        EXPECT_NE(screen, nullptr) << form;
        screen->show();
        screen->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(screen));
        return std::unique_ptr<T>(screen);
    }

    template <class T> static T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }

    // Keys go where the user is: the focused field.
    static QWidget* focused() { return QApplication::focusWidget(); }
    static void type(const QString& text) {
        if (auto* e = qobject_cast<QLineEdit*>(focused()))
            e->selectAll();
        QTest::keyClicks(focused(), text);
    }
    static void press(Qt::Key key) { QTest::keyClick(focused(), key); }
    static void enter(const QString& text) {
        type(text);
        press(Qt::Key_Return);
    }
    static QString focusName() { return focused() ? focused()->objectName() : QString(); }
    // An F-key pressed on a screen: its window is the active one, as under the user's hands.
    static void pressOn(QWidget& screen, Qt::Key key) {
        screen.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&screen));
        QTest::keyClick(&screen, key);
    }

    QString m_user;

private:
    HomeFolder m_home;
};

} // namespace orvo::test
