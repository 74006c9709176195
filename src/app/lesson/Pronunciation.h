#pragma once
// The recordings of the characters' pronunciation. The audio stack is loaded on the first play:
// it takes longer to load than everything else the window needs before it can be seen.

#include <QString>

class QObject;

namespace ki::qt {
class GSound;
class GSoundEffect;
}  // namespace ki::qt

namespace morvel::prog2 {

class Pronunciation {
public:
    /// `owner` owns the players once they are made.
    explicit Pronunciation(QObject* owner) : parent(owner) {}

    /// The character's recording (Recording::path), "" when it has none.
    static QString path(int unicode);
    static bool exists(int unicode);
    /// A recording is being heard.
    bool is_playing() const;
    /// Plays the recording of `unicode`; a character without one plays nothing.
    void play(int unicode);

private:
    QObject* parent;
    ki::qt::GSound* sound = nullptr;
    ki::qt::GSoundEffect* quietEffect = nullptr;
};

}  // namespace morvel::prog2
