// Benchmark entry: the program's own application object, offscreen, with settings redirected
// to a temporary folder, and logging held at warnings so that the figures measure the work and
// not the console.
#include <benchmark/benchmark.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/tools/GSettings.h>

#include <QTemporaryDir>

int main(int argc, char** argv) {
    QTemporaryDir home;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8() + "/config");
    qputenv("XDG_DATA_HOME", home.path().toUtf8() + "/data");
    qputenv("XDG_CACHE_HOME", home.path().toUtf8() + "/cache");

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    ki::qt::GApp::prepare_settings(QStringLiteral("quenlo-bench.invalid"), 114, true,
                                   QStringLiteral("quenlo_bench"));
    // The application object sees the program name only: the benchmark's flags are not ours.
    int appArgc = 1;
    ki::qt::GApp app(appArgc, argv, nullptr);
    // The program's default level (debug) writes a console line per mouse move; that is I/O,
    // not the work measured here.
    ki::log::set_log_level(ki::log::LOG_WARN);

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ki::qt::GSettings::instance().sync();
    return 0;
}
