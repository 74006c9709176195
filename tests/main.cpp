// Test entry: one QApplication for the whole run, offscreen, with settings and the home
// folder redirected so that no test ever touches the user's real configuration.
#include <gtest/gtest.h>

#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdlib>

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8() + "/config");
    qputenv("XDG_DATA_HOME", home.path().toUtf8() + "/data");
    qputenv("XDG_CACHE_HOME", home.path().toUtf8() + "/cache");
    QStandardPaths::setTestModeEnabled(true);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
