#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundBackend.h>

#include <QFile>

namespace ki::qt {

namespace {

constexpr const char* RANK_VARIABLE = "GST_PLUGIN_FEATURE_RANK";

QObject* with_backend_prepared(QObject* parent) {
    GSound::prepare_backend();
    return parent;
}

}  // namespace

QByteArray GSound::demote_unused_sinks(const QByteArray& ranks) {
    // The player starts only when Qt reports an output device, and then plays through that
    // device's own sink. GStreamer's automatic sink is therefore only ever probed on a machine
    // without sound, where it loads JACK (with Berkeley DB, about 2 MB) and OSS in vain.
    const QByteArray demoted = QByteArrayLiteral("jackaudiosink:NONE,oss4sink:NONE,osssink:NONE");
    // Later entries win: ranks the user set keep their say.
    return ranks.isEmpty() ? demoted : demoted + ',' + ranks;
}

void GSound::prepare_backend() {
    static const bool prepared = [] {
        qputenv(RANK_VARIABLE, demote_unused_sinks(qgetenv(RANK_VARIABLE)));
        return true;
    }();
    (void)prepared;
}

GSound::GSound(QObject* parent) : QObject(with_backend_prepared(parent)) {}

GSound::~GSound() = default;

void GSound::ini() {
    if (initialized) {
        pp_trace("GSound::ini, already done");
        return;
    }
    initialized = true;
    SoundBackend* backend = sound_backend::get();
    if (backend == nullptr) return;  // logged by the loader
    outputDevice = backend->has_output_device();
    if (!outputDevice) pp_warn("GSound::ini, no audio output device, sounds stay silent");
    player = backend->make_player();
    player->set_volume(float(volume));
    if (endless) player->set_loops(SoundPlayer::ENDLESS);
}

QUrl GSound::to_source_url(const QString& path) {
    if (path.startsWith(QLatin1String(":/"))) return QUrl(QStringLiteral("qrc") + path);
    return QUrl(path);
}

void GSound::play_sound(const QString& path) {
    pp_trace("GSound::play_sound");
    if (!initialized) {
        pp_trace("GSound::play_sound, ini");
        ini();
    }
    if (!QFile::exists(path)) {
        pp_warn("GSound::play_sound, does not exist '$'", path);
        return;
    }
    pp_info("GSound::play_sound,  '$'", path);
    if (path == sourcePath) {
        pp_trace("GSound::play_sound, from cache");
    } else {
        if (player) player->set_source(to_source_url(path));
        sourcePath = path;
    }
    if (silent || !outputDevice || !player) return;
    player->play();
}

void GSound::set_endless() {
    pp_trace("GSound::set_endless");
    endless = true;
    if (player) player->set_loops(SoundPlayer::ENDLESS);
}

void GSound::set_volume(double value) {
    volume = value;
    if (player) player->set_volume(float(value));
}

double GSound::get_volume() const {
    return player ? double(player->volume()) : volume;
}

bool GSound::is_playing() const {
    return player && player->is_playing();
}

QUrl GSound::source() const {
    return player ? player->source() : QUrl();
}

}  // namespace ki::qt
