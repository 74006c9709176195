#pragma once
// The seam between the sound players and the library that actually plays. The players
// (GSound, GSoundEffect) only see these interfaces; the implementations (over PulseAudio, and
// over Qt Multimedia as the fallback) live in modules of their own, loaded on the first sound,
// so a start-up that plays nothing maps no audio library.

#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtPlugin>
#include <functional>
#include <memory>

namespace ki::qt {

/// One player: a compressed recording (MP3) or an uncompressed effect (WAV).
class SoundPlayer {
public:
    /// Loop count meaning "until stopped".
    static constexpr int ENDLESS = -1;

    virtual ~SoundPlayer() = default;
    virtual void set_source(const QUrl& url) = 0;
    virtual QUrl source() const = 0;
    /// ENDLESS or a count of 1 and more.
    virtual void set_loops(int loops) = 0;
    virtual void play() = 0;
    virtual void stop() = 0;
    virtual bool is_playing() const = 0;
    /// 0.0 silent .. 1.0 full.
    virtual void set_volume(float volume) = 0;
    virtual float volume() const = 0;
    /// Called whenever the player goes from playing to not playing.
    virtual void set_on_stopped(std::function<void()> callback) = 0;
};

class SoundBackend {
public:
    virtual ~SoundBackend() = default;
    /// Whether the machine has an audio output now.
    virtual bool has_output_device() = 0;
    /// A player for compressed recordings, streamed.
    virtual std::unique_ptr<SoundPlayer> make_player() = 0;
    /// A player for short effects, loaded whole.
    virtual std::unique_ptr<SoundPlayer> make_effect() = 0;
    /// Where the module's warnings go (GUI thread); without one they go to qWarning.
    virtual void set_log(std::function<void(const QString&)> warn) { (void)warn; }
};

/// Finds the backend: one installed with `use`, else the module, loaded on the first call.
namespace sound_backend {

/// The backend, or nullptr when the module is missing or broken (logged once per load).
SoundBackend* get();
/// Replaces the module by `backend` (not owned) until called with nullptr.
void use(SoundBackend* backend);
/// Where the modules are looked for, first match wins: beside the program (a build tree), then
/// the program's library folder of an installed package.
QStringList module_dirs();
/// Looks in `dirs` instead (an empty list restores the default); the next `get` loads again.
void set_module_dirs(const QStringList& dirs);
/// The modules' file names, without folder, in the order they are tried: the first that
/// loads is used.
QStringList module_file_names();

}  // namespace sound_backend

}  // namespace ki::qt

#define KI_SOUND_BACKEND_IID "de.qlo.ki.SoundBackend/2"
Q_DECLARE_INTERFACE(ki::qt::SoundBackend, KI_SOUND_BACKEND_IID)
