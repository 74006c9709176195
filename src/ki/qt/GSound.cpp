#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>

namespace ki::qt {

GSound::GSound(QObject* parent) : QMediaPlayer(parent) {}

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
