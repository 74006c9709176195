// The program's entry: brings the program up in a fixed order and tears it down in reverse.
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/guitools/GFontPreload.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/themes.h>
#include <ki/tools/os.h>

#include <QTextStream>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <optional>

#include "app/AppData.h"
#include "app/BenchHooks.h"
#include "app/Diagnostics.h"
#include "app/Recording.h"
#include "app/SingleInstance.h"
#include "app/Window.h"
#include "app/cli/CliText.h"
#include "app/cli/Headless.h"
#include "app/morvel.h"
#include "app/progress/ProgressStore.h"
#include "app/worksheet/WorksheetCli.h"

namespace {

constexpr unsigned int CONFIG_VERSION = 114;
// Touch friendly: a tap on a list row that wobbles a few pixels is still a click.
constexpr int START_DRAG_DISTANCE = 13;

// For the start-up profile of scripts/bench.sh: the time since launch after each step.
void bench_step(const char* step) {
    if (morvel::BenchHooks::is_startup_requested())
        std::printf("quenlo-bench step:%s ms:%.1f\n", step, morvel::BenchHooks::ms_since_launch());
}

}  // namespace

int qMain(int argc, char** argv) {
    bench_step("main");
    ki::qt::themes::set_theme_default(ki::qt::themes::THEME_DARK);
    // Before anything logs: a headless command keeps the console to its result line.
    const morvel::Headless::Command headless = morvel::Headless::prepare(argc, argv);
    // The usage, the version and a mistyped option are answered before any file is touched.
    if (const int code = morvel::Headless::answer(headless, argc, argv); code >= 0) return code;
    // Declared before fontconfig's thread, so that it goes after the thread is done: Qt's font
    // database destroys fontconfig's configuration with the application object, and a second
    // start that hands over at once would otherwise do so while the thread still loads it.
    std::unique_ptr<ki::qt::GApp> app;
    // Fontconfig loads while the settings, the application and the level come up, until the
    // first text of the window or of a worksheet; the other commands draw nothing.
    std::optional<ki::qt::FontPreload> fonts;
    if (headless == morvel::Headless::Command::NONE || headless == morvel::Headless::Command::WORKSHEET)
        fonts.emplace();
    const QString organisation = QStringLiteral("qlo.de");
    const QString programName = ki::os::get_program_name_qs();
    {
        const morvel::Headless::QuietStdout quiet(headless);
        ki::qt::GApp::prepare_settings(organisation, CONFIG_VERSION, true, programName);
    }
    if (const int code = morvel::Headless::run_early(headless, argc, argv); code >= 0) return code;
    bench_step("settings");
    app = std::make_unique<ki::qt::GApp>(argc, argv, nullptr);
    bench_step("application");
    if (ki::os::is_android()) ki::qt::GApp::set_icon_size_percent_default(220);
    app->setStartDragDistance(START_DRAG_DISTANCE);
    ki::qt::set_res_prefix(QStringLiteral(":/wb/shared-res"));
    morvel::ini();
    // A worksheet from the command line is written without a window.
    if (headless == morvel::Headless::Command::WORKSHEET) {
        if (fonts) fonts->wait();
        return morvel::WorksheetCli::main(QCoreApplication::arguments());
    }

    // What the command line asks of the window is said before a second start hands over, and
    // its level goes to the running window.
    const auto complain = [](const QString& message) {
        QTextStream(stderr) << "quenlo: " << message << '\n';
        ki::pp_warn("main, $", message);
    };
    QString levelError;
    const int level = morvel::prog2::Level::from_arguments(QCoreApplication::arguments(), levelError);
    if (!levelError.isEmpty()) complain(levelError);
    for (const QString& option : morvel::Headless::ignored_options(QCoreApplication::arguments()))
        complain(QStringLiteral("unknown option '%1' is ignored").arg(morvel::cli::printable(option)));

    // One window per user: a second start brings the running one's window forward instead.
    morvel::SingleInstance instance(morvel::progress::ProgressStore::default_folder());
    const bool diagnostics = ki::qt::GApp::get_argv().has_key(QStringLiteral("__screenshots"));
    if (!diagnostics && !instance.claim()) return instance.hand_over(level);

    // The first selection asks for its recording; the index needs no font, so it is read while
    // fontconfig still loads.
    morvel::prog2::Recording::read_index();
    // Loaded by the window's set-up, with the level stored there.
    auto data = std::make_unique<morvel::prog2::AppData>(morvel::prog2::Level::shipped(1));
    bench_step("ini");
    auto win = std::make_unique<morvel::prog2::Window>(*data);
    win->beforeFirstText = [&fonts]() {
        if (fonts) fonts->wait();
        bench_step("fonts");
    };
    if (level > 0) win->start_in_level(level);
    win->resize(1024, 750);
    win->setup();
    bench_step("window");
    morvel::prog2::Window* window = win.get();
    instance.onRaise = [window]() { morvel::SingleInstance::raise(*window); };
    instance.onLevel = [window](int number) {
        if (number <= morvel::prog2::Level::COUNT) window->on_level(number);
    };
    win->afterFirstFrame = [&instance]() { instance.name_holder(); };
    morvel::BenchHooks::arm_startup(*win, static_cast<int>(data->size()),
                                    [window](int index) { window->on_index(index); });
    const QString screenshots = ki::qt::GApp::get_argv().value_string(QStringLiteral("__screenshots"));
    if (!screenshots.isEmpty()) {
        QTimer::singleShot(500, window, [window, screenshots]() {
            morvel::prog2::Diagnostics::save_screenshots(*window, screenshots);
            QCoreApplication::quit();
        });
    }
    win->show();
    bench_step("shown");
    const int code = app->exec();

    win.reset();
    data.reset();
    app.reset();
    return code;
}

int main(int argc, char** argv) {
    return qMain(argc, argv);
}
