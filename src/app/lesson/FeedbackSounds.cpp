#include "app/lesson/FeedbackSounds.h"

#include <ki/qt/GSoundEffect.h>

#include <utility>

namespace morvel::prog2 {

namespace {
QString path_of(Feedback what) {
    switch (what) {
        case Feedback::ACCEPTED:
            return QStringLiteral(":/wb/shared-res/sounds/Blop1.wav");
        case Feedback::COMPLETE:
            return QStringLiteral(":/wb/shared-res/sounds/complete.wav");
        case Feedback::REJECTED:
            break;
    }
    return QStringLiteral(":/wb/shared-res/sounds/error.wav");
}
}  // namespace

FeedbackSounds::FeedbackSounds(QObject* owner, std::function<bool()> playing)
    : parent(owner), recordingPlaying(std::move(playing)) {}

void FeedbackSounds::play(Feedback what) {
    if (!enabled || (recordingPlaying && recordingPlaying())) return;
    if (effect == nullptr) {
        effect = new ki::qt::GSoundEffect(parent);
        effect->ini();
    }
    // GSoundEffect cuts the sound before off; without an audio device it stays silent.
    effect->play_sound(path_of(what));
    if (liPlayed.has_listener()) liPlayed.fire_event(what);
}

}  // namespace morvel::prog2
