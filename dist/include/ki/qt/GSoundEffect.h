#pragma once
// A player for short uncompressed effect sounds (WAV). A new sound cuts off the one before
// instead of overlapping it.

#include <ki/Listener.h>

#include <QSoundEffect>
#include <QString>

namespace ki::qt {

class GSoundEffect : public QSoundEffect {
    Q_OBJECT
public:
    explicit GSoundEffect(QObject* parent = nullptr);

    void ini();
    bool is_initialized() const { return initialized; }

    /// Plays `path` (":/..." for a resource) once; a missing file is logged and nothing changes.
    void play_sound(const QString& path);
    /// Plays `path` over and over until stopped.
    void play_endless(const QString& path);
    /// Plays `path` once and fires `liFinished` when it has ended (or was cut off).
    void play_sound_with_listener(const QString& path);

    Listener<NO_PAYLOAD> liFinished;

private:
    bool start(const QString& path, int loops);

    bool initialized = false;
    bool reportEnd = false;
};

}  // namespace ki::qt
