// The sound backend over Qt Multimedia, built as a module of its own and loaded on the first
// sound. It depends on Qt only, so it shares no state with the program that loads it.
#include <ki/qt/GSoundBackend.h>

#include <QAudioDevice>
#include <QAudioOutput>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QSoundEffect>

namespace ki::qt {

namespace {

class MediaPlayer final : public SoundPlayer {
public:
    MediaPlayer() { player.setAudioOutput(&output); }
    ~MediaPlayer() override {
        QObject::disconnect(connection);
        // The output goes first: the player must not keep pointing at it.
        player.stop();
        // Without a source the GStreamer backend takes its decoder down now, while the player
        // is whole; left to the player's destructor, the decoder's last pad signal reached a
        // half-destroyed player and crashed.
        player.setSource(QUrl());
        player.setAudioOutput(nullptr);
    }
    void set_source(const QUrl& url) override { player.setSource(url); }
    QUrl source() const override { return player.source(); }
    void set_loops(int loops) override { player.setLoops(loops == ENDLESS ? QMediaPlayer::Infinite : loops); }
    void play() override { player.play(); }
    void stop() override { player.stop(); }
    bool is_playing() const override { return player.playbackState() == QMediaPlayer::PlayingState; }
    void set_volume(float volume) override { output.setVolume(volume); }
    float volume() const override { return output.volume(); }
    void set_on_stopped(std::function<void()> callback) override {
        QObject::disconnect(connection);
        connection = QObject::connect(&player, &QMediaPlayer::playbackStateChanged, &player,
                                      [callback = std::move(callback)](QMediaPlayer::PlaybackState state) {
                                          if (state != QMediaPlayer::PlayingState && callback) callback();
                                      });
    }

private:
    QAudioOutput output;
    QMediaPlayer player;
    QMetaObject::Connection connection;
};

class Effect final : public SoundPlayer {
public:
    ~Effect() override { QObject::disconnect(connection); }
    void set_source(const QUrl& url) override { effect.setSource(url); }
    QUrl source() const override { return effect.source(); }
    void set_loops(int loops) override {
        effect.setLoopCount(loops == ENDLESS ? QSoundEffect::Infinite : loops);
    }
    void play() override { effect.play(); }
    void stop() override { effect.stop(); }
    bool is_playing() const override { return effect.isPlaying(); }
    void set_volume(float volume) override { effect.setVolume(volume); }
    float volume() const override { return effect.volume(); }
    void set_on_stopped(std::function<void()> callback) override {
        QObject::disconnect(connection);
        connection = QObject::connect(&effect, &QSoundEffect::playingChanged, &effect,
                                      [this, callback = std::move(callback)]() {
                                          if (!effect.isPlaying() && callback) callback();
                                      });
    }

private:
    QSoundEffect effect;
    QMetaObject::Connection connection;
};

}  // namespace

class QtSoundModule final : public QObject, public SoundBackend {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KI_SOUND_BACKEND_IID)
    Q_INTERFACES(ki::qt::SoundBackend)
public:
    bool has_output_device() override { return !QMediaDevices::defaultAudioOutput().isNull(); }
    std::unique_ptr<SoundPlayer> make_player() override { return std::make_unique<MediaPlayer>(); }
    std::unique_ptr<SoundPlayer> make_effect() override { return std::make_unique<Effect>(); }
};

}  // namespace ki::qt

#include "QtSoundModule.moc"
