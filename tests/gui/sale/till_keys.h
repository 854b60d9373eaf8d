#pragma once

// Keys as a cashier presses them: to whatever has the focus, on screens of the program.
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace orvo::test {

struct TillKeys {
    template <class T> static T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
    // Types into a field and presses Enter.
    static void typeEnter(QWidget& screen, const char* field, const QString& text) {
        auto* edit = child<QLineEdit>(screen, field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    // A key to whatever has the focus (the screen's own window when nothing does).
    static void key(Qt::Key k, QWidget* fallback = nullptr) {
        QWidget* target = QApplication::focusWidget();
        if (!target)
            target = fallback ? fallback : QApplication::activeWindow();
        ASSERT_NE(target, nullptr);
        QTest::keyClick(target, k);
    }
    static void keys(const QString& text) {
        QWidget* target = QApplication::focusWidget();
        ASSERT_NE(target, nullptr);
        QTest::keyClicks(target, text);
    }
    // Runs `f` once the modal dialog `T` is up (for a key that opens it and waits).
    template <class T> static void whenModal(std::function<void(T&)> f) {
        QTimer::singleShot(0, [f] {
            QTRY_VERIFY(qobject_cast<T*>(QApplication::activeModalWidget()));
            f(*qobject_cast<T*>(QApplication::activeModalWidget()));
        });
    }

    // In frmPagosVenta: waits for the way's list, picks `way` by typing it, Enter, and waits for
    // the amount.
    static void chooseWay(QWidget& payments, const QString& way) {
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        keys(way);
        auto* combo = qobject_cast<QComboBox*>(QApplication::focusWidget());
        ASSERT_NE(combo, nullptr);
        EXPECT_EQ(combo->currentText(), way);
        key(Qt::Key_Return, &payments);
        QTRY_VERIFY(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
    }
    // `key` on a screen, with its payment all in cash as proposed, from the keys.
    template <class Payments> static void payInCash(QWidget& screen, Qt::Key k = Qt::Key_F10) {
        whenModal<Payments>([](Payments& p) {
            chooseWay(p, QStringLiteral("EFECTIVO"));
            key(Qt::Key_Return, &p);
        });
        key(k, &screen);
    }
};

} // namespace orvo::test
