#include "app/lesson/Pronunciation.h"

#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundEffect.h>
#include <ki/tools/file.h>
#include <ki/tools/os.h>

#include "app/Recording.h"

namespace morvel::prog2 {

namespace {

constexpr const char* QUIET_CLIP = ":/wb/shared-res/sounds/quiet.wav";

}  // namespace

QString Pronunciation::path(int unicode) {
    return Recording::path(unicode);
}

bool Pronunciation::exists(int unicode) {
    return ki::io::file::exists(path(unicode));
}

bool Pronunciation::is_playing() const {
    return sound != nullptr && sound->is_playing();
}

void Pronunciation::play(int code) {
    if (sound == nullptr) {
        sound = new ki::qt::GSound(parent);
        sound->ini();
    }
    if (ki::os::is_android() && quietEffect == nullptr) {
        // Kept looping for the whole run: the audio output then stays open between recordings,
        // so their first syllable is not cut off.
        quietEffect = new ki::qt::GSoundEffect(parent);
        quietEffect->ini();
        quietEffect->play_endless(QString::fromLatin1(QUIET_CLIP));
    }
    if (!exists(code)) {
        ki::pp("Pronunciation::play, unicode:$ sound ?", code);
        return;
    }
    ki::pp("Pronunciation::play, unicode:$", code);
    const QString file = path(code);
    ki::pp("Pronunciation::play '$'", file);
    sound->play_sound(file);
}

}  // namespace morvel::prog2
