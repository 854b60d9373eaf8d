#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // Per-user settings (the fiscal port among them) stay out of the user's own folder, and
    // only the tests set the port.
    QTemporaryDir settings;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    qunsetenv("ORVO_PUERTO_FISCAL");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
