#include <ki/log/GLog.h>
#include <ki/qt/GSoundBackend.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>
#include <vector>

// Set by the build: the modules' file names (separated by ':', in the order tried) and their
// folder relative to the program's folder once installed.
#ifndef KI_SOUND_MODULE_FILES
#define KI_SOUND_MODULE_FILES "libki_sound_pulse.so:libki_sound_qt.so"
#endif
#ifndef KI_SOUND_MODULE_RELDIR
#define KI_SOUND_MODULE_RELDIR "../lib/quenlo"
#endif

namespace ki::qt::sound_backend {

namespace {

struct State {
    SoundBackend* installed = nullptr;
    SoundBackend* loaded = nullptr;
    bool tried = false;
    QStringList dirs;
    // Never unloaded: players made by a module live until the program ends. Kept here so that
    // the loaders stay reachable instead of being dropped on the floor.
    std::vector<QPluginLoader*> loaders;
};

// Never destroyed: a player may still ask for the backend while the program exits.
State& state() {
    static State* const s = new State;
    return *s;
}

// The first module that loads, in the order of `module_file_names`; a module whose libraries
// are missing (libpulse on a machine without it) gives way to the next one.
SoundBackend* load() {
    QStringList errors;
    for (const QString& name : module_file_names()) {
        bool found = false;
        for (const QString& dir : module_dirs()) {
            const QString path = QDir(dir).filePath(name);
            if (!QFileInfo::exists(path)) continue;
            found = true;
            auto* loader = new QPluginLoader(path);
            QObject* instance = loader->instance();
            if (auto* backend = qobject_cast<SoundBackend*>(instance)) {
                if (!errors.isEmpty()) pp_info("sound_backend, skipped: $", errors.join(QStringLiteral("; ")));
                pp_info("sound_backend, loaded '$'", path);
                backend->set_log([](const QString& line) { pp_warn(line); });
                state().loaders.push_back(loader);
                return backend;
            }
            errors << (instance == nullptr ? loader->errorString()
                                           : path + QStringLiteral(": not a sound module"));
            delete loader;
        }
        if (!found)
            errors << QStringLiteral("%1 not found in %2").arg(name, module_dirs().join(QLatin1Char(':')));
    }
    pp_warn("sound_backend, no sound module, sounds stay silent: $", errors.join(QStringLiteral("; ")));
    return nullptr;
}

}  // namespace

SoundBackend* get() {
    State& s = state();
    if (s.installed != nullptr) return s.installed;
    if (!s.tried) {
        s.tried = true;
        s.loaded = load();
    }
    return s.loaded;
}

void use(SoundBackend* backend) {
    state().installed = backend;
}

QStringList module_dirs() {
    const State& s = state();
    if (!s.dirs.isEmpty()) return s.dirs;
    const QString programDir = QCoreApplication::applicationDirPath();
    return {programDir,
            QDir::cleanPath(programDir + QLatin1Char('/') + QLatin1String(KI_SOUND_MODULE_RELDIR))};
}

void set_module_dirs(const QStringList& dirs) {
    State& s = state();
    s.dirs = dirs;
    // A module loaded before stays mapped: players made from it keep working.
    s.loaded = nullptr;
    s.tried = false;
}

QStringList module_file_names() {
    return QStringLiteral(KI_SOUND_MODULE_FILES).split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

}  // namespace ki::qt::sound_backend
