// The program's real message boxes (not the scripted ones of the other screen tests).
#include "common/dialogs/qt_dialogs.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace orvo;

namespace {

QMessageBox* openBox() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

} // namespace

// The mail that ends while the closing says it is done: the second box waits for the first
// instead of stacking on it, and both are seen and answered in turn. The answers come from
// events, as a person's keys do, so that they reach whichever loop is running.
TEST(MessageBoxes, ASecondBoxWaitsForTheFirst) {
    QtDialogs boxes;
    QStringList shown;
    bool secondAsked = false;
    bool secondReturned = false;
    int ticks = 0;
    QTimer person;
    QObject::connect(&person, &QTimer::timeout, [&] {
        QMessageBox* box = openBox();
        if (!box)
            return;
        if (!secondAsked) {
            // Something finishing in the background while the first box is open.
            secondAsked = true;
            QTimer::singleShot(0, [&] {
                boxes.information(nullptr, QStringLiteral("Proceso finalizado...!"),
                                  QStringLiteral("Orvo"));
                secondReturned = true;
            });
            return;
        }
        // Give the second one time to stack, if it were going to.
        if (++ticks < 5)
            return;
        if (QApplication::topLevelWidgets().count(box) == 1) {
            int boxesOpen = 0;
            for (QWidget* w : QApplication::topLevelWidgets())
                boxesOpen += qobject_cast<QMessageBox*>(w) && w->isVisible();
            EXPECT_EQ(boxesOpen, 1) << box->text().toStdString();
        }
        shown << box->text();
        ticks = 0;
        box->accept();
    });
    person.start(10);
    boxes.information(nullptr,
                      QStringLiteral("El proceso de cierre de caja finalizo con exito...!"),
                      QStringLiteral("Información"));
    QTRY_VERIFY(secondReturned);
    EXPECT_EQ(shown,
              (QStringList{QStringLiteral("El proceso de cierre de caja finalizo con exito...!"),
                           QStringLiteral("Proceso finalizado...!")}));
}
