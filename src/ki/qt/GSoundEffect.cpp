#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundEffect.h>

#include <QFile>

namespace ki::qt {

namespace {

QObject* with_backend_prepared(QObject* parent) {
    GSound::prepare_backend();
    return parent;
}

}  // namespace

GSoundEffect::GSoundEffect(QObject* parent) : QSoundEffect(with_backend_prepared(parent)) {
    connect(this, &QSoundEffect::playingChanged, this, [this]() {
        if (isPlaying() || !reportEnd) return;
        reportEnd = false;
        if (liFinished.has_listener()) liFinished.fire_event({});
    });
}

void GSoundEffect::ini() {
    if (initialized) {
        pp_trace("GSoundEffect::ini, already done");
        return;
    }
    pp_trace("GSoundEffect::ini");
    initialized = true;
}

bool GSoundEffect::start(const QString& path, int loops) {
    if (!initialized) {
        pp_trace("GSoundEffect::play_sound, ini");
        ini();
    }
    if (!QFile::exists(path)) {
        pp_warn("GSoundEffect::play_sound, does not exist '$'", path);
        return false;
    }
    // Shares the players' switch, so automated runs stay quiet with either kind. A silent run
    // loads no sample either: Qt loads it on its own thread, and a process that ends while that
    // load is in flight leaves the loader's buffers behind.
    if (GSound::is_silent()) return true;
    setSource(GSound::to_source_url(path));
    setLoopCount(loops);
    if (isPlaying()) {
        pp_trace("GSoundEffect::play_sound, STOP");
        stop();
    }
    play();
    return true;
}

void GSoundEffect::play_sound(const QString& path) {
    start(path, 1);
}

void GSoundEffect::play_endless(const QString& path) {
    start(path, QSoundEffect::Infinite);
}

void GSoundEffect::play_sound_with_listener(const QString& path) {
    if (!start(path, 1)) return;
    if (!GSound::is_silent()) {
        reportEnd = true;
        return;
    }
    // Nothing started, so nothing will end: report it now.
    if (liFinished.has_listener()) liFinished.fire_event({});
}

}  // namespace ki::qt
