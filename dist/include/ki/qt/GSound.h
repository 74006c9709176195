#pragma once
// A player for compressed sound files (MP3, OGG) from the file system or the resources. It
// keeps the last source, so playing the same file again starts at once. The audio library
// behind it is loaded on the first `ini` (see GSoundBackend.h).

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

namespace ki::qt {

class SoundPlayer;

class GSound : public QObject {
    Q_OBJECT
public:
    explicit GSound(QObject* parent = nullptr);
    ~GSound() override;

    /// Loads the audio library and connects the player to its audio output. Without an audio
    /// device the player still takes sources but never starts (logged once); without the
    /// library it keeps only the path.
    void ini();
    bool is_initialized() const { return initialized; }

    /// Plays `path` (":/..." for a resource); a missing file is logged and nothing changes.
    void play_sound(const QString& path);
    /// Repeats the source until stopped.
    void set_endless();

    /// 0.0 silent .. 1.0 full.
    void set_volume(double value);
    double get_volume() const;

    bool is_playing() const;
    /// The source the player holds, empty before the first or without the audio library.
    QUrl source() const;

    /// The path of the last source set, empty before the first.
    const QString& get_source_path() const { return sourcePath; }
    /// Whether an audio output device was there at `ini`.
    bool has_output_device() const { return outputDevice; }

    /// Settles how GStreamer picks its elements before Qt Multimedia starts it: the players
    /// and effects call it on construction. Only the first call does anything.
    static void prepare_backend();
    /// `ranks` (a GST_PLUGIN_FEATURE_RANK value) with the sinks a player never uses demoted.
    static QByteArray demote_unused_sinks(const QByteArray& ranks);

    /// ":/x.mp3" gives "qrc:/x.mp3"; any other path is taken as it is.
    static QUrl to_source_url(const QString& path);

    /// Process-wide: players set their sources as usual but never start. For automated runs,
    /// which must not make a sound.
    static void set_silent(bool on) { silent = on; }
    static bool is_silent() { return silent; }

private:
    std::unique_ptr<SoundPlayer> player;
    double volume = 0.8;
    bool endless = false;
    bool initialized = false;
    QString sourcePath;
    bool outputDevice = false;

    static inline bool silent = false;
};

}  // namespace ki::qt
