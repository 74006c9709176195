#pragma once
// Short effect sounds for learn mode: a stroke accepted, a character finished, a trace
// rejected. A new sound cuts the previous one off, and none plays over a pronunciation
// recording: the recording wins.

#include <ki/Listener.h>

#include <functional>

class QObject;

namespace ki::qt {
class GSoundEffect;
}

namespace morvel::prog2 {

enum class Feedback { ACCEPTED, COMPLETE, REJECTED };

class FeedbackSounds {
public:
    /// `parent` owns the player, created on first use; `recordingPlaying` tells whether a
    /// pronunciation is being heard.
    FeedbackSounds(QObject* parent, std::function<bool()> recordingPlaying);

    void set_enabled(bool on) { enabled = on; }
    bool is_enabled() const { return enabled; }
    /// Plays the sound of `what` unless switched off or a recording is playing.
    void play(Feedback what);

    /// Fired with every sound that is started: what tests and other observers see.
    ki::Listener<Feedback> liPlayed;

private:
    QObject* parent;
    std::function<bool()> recordingPlaying;
    ki::qt::GSoundEffect* effect = nullptr;
    bool enabled = true;
};

}  // namespace morvel::prog2
