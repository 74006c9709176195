// Test entry: one application object for the whole run, offscreen, with settings, data and
// cache redirected to a temporary folder so that no test ever touches the user's real
// configuration.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    // QStandardPaths' test mode stays off: it would move the settings to ~/.qttest in the
    // real home folder instead of these temporary ones.
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8() + "/config");
    qputenv("XDG_DATA_HOME", home.path().toUtf8() + "/data");
    qputenv("XDG_CACHE_HOME", home.path().toUtf8() + "/cache");
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("quenlo-tests.invalid"));
    QCoreApplication::setApplicationName(QStringLiteral("quenlo_tests"));
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
