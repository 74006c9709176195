// Test entry: the real application object, built the way the program builds it, offscreen,
// with settings, data and cache redirected to a temporary folder so that no test ever touches
// the user's real configuration.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/tools/GSettings.h>

#include <QTemporaryDir>
#include <memory>

namespace {

// Every test starts with the suite's log: configured, on the console, at warnings unless the
// command line asked for another level (-__log_level). Tests that read the log configure their
// own and reset it when done; without this the tests after them would print every debug line.
class SuiteLog : public testing::EmptyTestEventListener {
public:
    explicit SuiteLog(unsigned int level) : level(level) {}
    void OnTestStart(const testing::TestInfo&) override {
        if (!ki::log::is_configured()) ki::log::configure();
        ki::log::set_log_level(static_cast<int>(level));
    }

private:
    unsigned int level;
};

// Run as a child process by a test: the window outlives the application object and must
// not touch it when it goes.
int window_after_app(int argc, char** argv) {
    std::unique_ptr<ki::qt::GMainWindow> win;
    {
        ki::qt::GApp app(argc, argv, nullptr);
        win = std::make_unique<ki::qt::GMainWindow>();
        win->setup();
        app.add_window(win.get());
    }
    win.reset();
    return ki::qt::gApp == nullptr ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv) {
    QTemporaryDir home;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // No sound server here: every player would warn that it cannot connect.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES")) qputenv("QT_LOGGING_RULES", "qt.multimedia.*.warning=false");
    // QStandardPaths' test mode is deliberately off: it would move the settings to
    // ~/.qttest in the real home folder instead of these temporary ones.
    for (const QByteArray folder : {"config", "data", "cache"})
        qputenv("XDG_" + folder.toUpper() + "_HOME", home.path().toUtf8() + '/' + folder);
    ::testing::InitGoogleTest(&argc, argv);
    ki::qt::GApp::prepare_settings(QStringLiteral("quenlo-tests.invalid"), 114, true,
                                   QStringLiteral("quenlo_tests"));
    if (argc > 1 && qstrcmp(argv[1], "--window-after-app") == 0) return window_after_app(argc, argv);
    // Before the application object configures the log: a -__log_level on the command line wins.
    ki::log::set_log_level(ki::log::LOG_WARN);
    ki::qt::GApp app(argc, argv, nullptr);
    testing::UnitTest::GetInstance()->listeners().Append(new SuiteLog(ki::log::get_log_level()));
    const int result = RUN_ALL_TESTS();
    // Written now, while the temporary folder still exists; the store's own destructor runs
    // after it is gone and would create it again.
    ki::qt::GSettings::instance().sync();
    return result;
}
