#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundBackend.h>
#include <ki/qt/GSoundEffect.h>

#include <QFile>

namespace ki::qt {

namespace {

QObject* with_backend_prepared(QObject* parent) {
    GSound::prepare_backend();
    return parent;
}

}  // namespace

GSoundEffect::GSoundEffect(QObject* parent) : QObject(with_backend_prepared(parent)) {}

GSoundEffect::~GSoundEffect() = default;

void GSoundEffect::ini() {
    if (initialized) {
        pp_trace("GSoundEffect::ini, already done");
        return;
    }
    pp_trace("GSoundEffect::ini");
    initialized = true;
    SoundBackend* backend = sound_backend::get();
    if (backend == nullptr) return;  // logged by the loader
    player = backend->make_effect();
    player->set_on_stopped([this]() {
        if (!reportEnd) return;
        reportEnd = false;
        if (liFinished.has_listener()) liFinished.fire_event({});
    });
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
    // Without the audio library nothing starts either, and nothing will end.
    if (GSound::is_silent() || !player) return true;
    player->set_source(GSound::to_source_url(path));
    player->set_loops(loops);
    if (player->is_playing()) {
        pp_trace("GSoundEffect::play_sound, STOP");
        player->stop();
    }
    player->play();
    return true;
}

void GSoundEffect::play_sound(const QString& path) {
    start(path, 1);
}

void GSoundEffect::play_endless(const QString& path) {
    start(path, SoundPlayer::ENDLESS);
}

void GSoundEffect::play_sound_with_listener(const QString& path) {
    if (!start(path, 1)) return;
    if (!GSound::is_silent() && player) {
        reportEnd = true;
        return;
    }
    // Nothing started, so nothing will end: report it now.
    if (liFinished.has_listener()) liFinished.fire_event({});
}

bool GSoundEffect::is_playing() const {
    return player && player->is_playing();
}

QUrl GSoundEffect::source() const {
    return player ? player->source() : QUrl();
}

}  // namespace ki::qt
