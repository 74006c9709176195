#pragma once
// A player for short uncompressed effect sounds (WAV). A new sound cuts off the one before
// instead of overlapping it. The audio library behind it is loaded on the first `ini`.

#include <ki/Listener.h>

#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

namespace ki::qt {

class SoundPlayer;

class GSoundEffect : public QObject {
    Q_OBJECT
public:
    explicit GSoundEffect(QObject* parent = nullptr);
    ~GSoundEffect() override;

    void ini();
    bool is_initialized() const { return initialized; }

    /// Plays `path` (":/..." for a resource) once; a missing file is logged and nothing changes.
    void play_sound(const QString& path);
    /// Plays `path` over and over until stopped.
    void play_endless(const QString& path);
    /// Plays `path` once and fires `liFinished` when it has ended (or was cut off).
    void play_sound_with_listener(const QString& path);

    bool is_playing() const;
    /// The sample the player holds, empty before the first, in silent runs and without the
    /// audio library.
    QUrl source() const;

    Listener<NO_PAYLOAD> liFinished;

private:
    bool start(const QString& path, int loops);

    std::unique_ptr<SoundPlayer> player;
    bool initialized = false;
    bool reportEnd = false;
};

}  // namespace ki::qt
