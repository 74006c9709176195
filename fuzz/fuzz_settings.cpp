// The settings store holding garbage: the program's own .conf file overwritten with the input
// and checked the way start-up checks it, or the input written as values under the keys the
// program reads. Either way every typed read ends in the stored value or the caller's default,
// and the store keeps working. A value the start-up check lets through that Qt's own reader
// cannot take shows up here as a crash or an out-of-memory report.
#include <fuzzer/FuzzedDataProvider.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/tools/GSettings.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "fuzz_support.h"

using ki::qt::GSettings;

namespace {

const char* const KEYS[] = {
    "Window/WinHanzi", "GApplication/app", "ui/theme",       "config/version", "log/level", "geometry",
    "splitter/main",   "fontSize",         "rCircle@canvas", "color",          "lang",      "Window/"};

void read_everything(GSettings& settings) {
    QStringList keys = settings.allKeys();
    for (const char* key : KEYS) keys << QString::fromLatin1(key);
    for (const QString& key : keys) {
        (void)settings.get_int(key, 1);
        (void)settings.get_uint(key, 2);
        (void)settings.get_float(key, 3.0f);
        (void)settings.get_double(key, 4.0);
        (void)settings.get<QString>(key, {});
        (void)settings.get_color(key, Qt::red);
        (void)settings.get_rect(key, {1, 2, 3, 4});
        (void)settings.get_point(key, {5, 6});
        (void)settings.get_size(key, {7, 8});
        (void)settings.get_node(key);
    }
    (void)settings.get_app_node();
    (void)settings.get_window_node(QStringLiteral("WinHanzi"));
    (void)settings.get_theme();
    (void)settings.get_log_level();
    settings.dump_it(0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The store must never be the user's own: point the configuration folder at a scratch one
    // before the store is first built.
    qputenv("XDG_CONFIG_HOME", (fuzz::scratch_dir() + QStringLiteral("/config")).toUtf8());
    // QSettings posts itself a request to write after every change; the event loop that the
    // program has must deliver them here too, or they pile up.
    static int argc = 1;
    static char name[] = "fuzz_settings";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("quenlo-fuzz.invalid"));
    QCoreApplication::setApplicationName(QStringLiteral("fuzz_settings"));
    ki::store::register_builtin_types();
    fuzz::quiet_log();
    const QFileInfo file(GSettings::instance().fileName());
    fuzz::require(file.filePath().startsWith(fuzz::scratch_dir()), "settings in the scratch folder");
    QDir().mkpath(file.path());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    GSettings& settings = GSettings::instance();
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        const std::vector<uint8_t> content = input.ConsumeRemainingBytes<uint8_t>();
        {
            QFile file(settings.fileName());
            fuzz::require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the settings file opens");
            file.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
            // QSettings skips re-reading a file whose size and time stamp it has seen already.
            static qint64 tick = 0;
            file.setFileTime(QDateTime::fromMSecsSinceEpoch(1'000'000'000'000 + 1000 * ++tick, Qt::UTC),
                             QFileDevice::FileModificationTime);
        }
        // What start-up does before the store reads a file.
        GSettings::set_aside_damaged_file(settings.fileName());
        settings.sync();
        // A damaged file is never moved over an older copy: without this the copies would pile
        // up until none could be made and the file stayed in place.
        const QFileInfo store(settings.fileName());
        for (const QString& copy : store.dir().entryList({store.fileName() + QStringLiteral(".damaged*")}))
            QFile::remove(store.dir().filePath(copy));
    } else {
        settings.clear();
        while (input.remaining_bytes() > 0) {
            const QString key = QString::fromLatin1(input.PickValueInArray(KEYS));
            const std::string value = input.ConsumeRandomLengthString(256);
            if (input.ConsumeBool())
                settings.setValue(key, QString::fromStdString(value));
            else
                settings.setValue(key, QByteArray::fromStdString(value));
        }
    }
    read_everything(settings);

    // The store still takes and gives back a value after whatever it was fed.
    settings.set_theme(2);
    fuzz::require(settings.get_theme() == 2, "the store keeps working");
    // Written out empty, so that the next input starts from its own bytes alone.
    settings.clear();
    settings.sync();
    QCoreApplication::sendPostedEvents();
    return 0;
}
