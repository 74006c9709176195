#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>

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

GSound::GSound(QObject* parent) : QMediaPlayer(with_backend_prepared(parent)) {}

GSound::~GSound() {
    // The output is a member and goes first: the player must not keep pointing at it.
    stop();
    setAudioOutput(nullptr);
}

void GSound::ini() {
    if (initialized) {
        pp_trace("GSound::ini, already done");
        return;
    }
    outputDevice = !QMediaDevices::defaultAudioOutput().isNull();
    if (!outputDevice) pp_warn("GSound::ini, no audio output device, sounds stay silent");
    setAudioOutput(&audioOutput);
    audioOutput.setVolume(float(volume));
    initialized = true;
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
        setSource(to_source_url(path));
        sourcePath = path;
    }
    if (silent || !outputDevice) return;
    play();
}

void GSound::set_endless() {
    pp_trace("GSound::set_endless");
    setLoops(QMediaPlayer::Infinite);
}

void GSound::set_volume(double value) {
    volume = value;
    audioOutput.setVolume(float(value));
}

double GSound::get_volume() const {
    return double(audioOutput.volume());
}

}  // namespace ki::qt
