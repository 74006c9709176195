// The sound players without making a sound: sources, the cache of the last source, refused
// files, and a machine without any audio output.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundEffect.h>

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>
#include <QTemporaryDir>

#include "LoggedTest.h"

using ki::qt::GSound;
using ki::qt::GSoundEffect;

namespace {

const QString RECORDING = QStringLiteral(":/wb/shared-res/zh/fono/zhong1.mp3");
const QString MISSING = QStringLiteral(":/wb/shared-res/zh/fono/1.mp3");

class SoundTest : public LoggedTest {
protected:
    void SetUp() override {
        // As the players do, before this test's own look at the audio devices starts GStreamer.
        GSound::prepare_backend();
        LoggedTest::SetUp();
        ki::log::set_log_level(ki::log::LOG_TRACE);
        GSound::set_silent(true);
    }
};

}  // namespace

TEST_F(SoundTest, SourcesAreResourcesOrFilesAndTheLastOneIsKept) {
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("zhong.mp3"));
    ASSERT_TRUE(QFile::copy(RECORDING, file));
    struct Row {
        const char* name;
        QStringList plays;
        QString source;  // the player's source afterwards
        int fromCache;
        int refused;
    };
    const Row rows[] = {
        {"file path used unchanged", {file}, file, 0, 0},
        {"resource played from qrc, twice sets it once", {RECORDING, RECORDING}, "qrc" + RECORDING, 1, 0},
        {"missing file refused before any source", {MISSING}, QString(), 0, 1},
        {"missing file keeps the source before it", {RECORDING, MISSING}, "qrc" + RECORDING, 0, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        GSound sound;
        capture->clear();
        for (const QString& path : row.plays) sound.play_sound(path);
        EXPECT_TRUE(sound.is_initialized()) << "the first play initialises, even for a missing file";
        EXPECT_EQ(sound.source().toString(), row.source);
        EXPECT_EQ(capture->count("GSound::play_sound, from cache"), row.fromCache);
        EXPECT_EQ(capture->count("GSound::play_sound, does not exist '" + MISSING.toStdString() + "'"),
                  row.refused);
        EXPECT_EQ(sound.playbackState(), QMediaPlayer::StoppedState) << "silent runs never start";
    }
}

// CI machines have no audio output: the player must neither crash nor wait for one.
TEST_F(SoundTest, WithoutAnAudioDevicePlayingDoesNothing) {
    if (!QMediaDevices::defaultAudioOutput().isNull()) GTEST_SKIP() << "this machine has an audio output";
    GSound::set_silent(false);
    GSound sound;
    sound.play_sound(RECORDING);
    GSound::set_silent(true);
    EXPECT_TRUE(capture->contains("GSound::ini, no audio output device"));
    EXPECT_EQ(sound.playbackState(), QMediaPlayer::StoppedState);
    // GStreamer probes its fallback sinks here; JACK alone would map about 2 MB for nothing.
    QFile maps(QStringLiteral("/proc/self/maps"));
    ASSERT_TRUE(maps.open(QIODevice::ReadOnly));
    EXPECT_FALSE(maps.readAll().contains("libgstjack"));
}

// GStreamer applies the entries in order: what the user set comes last and wins.
TEST_F(SoundTest, TheUsersSinkRanksWinOverTheDemotion) {
    for (const QByteArray& user : {QByteArray(), QByteArray("jackaudiosink:PRIMARY,avdec_h264:256")}) {
        SCOPED_TRACE(user.constData());
        const QByteArray ranks = GSound::demote_unused_sinks(user);
        EXPECT_TRUE(ranks.startsWith("jackaudiosink:NONE,")) << ranks.constData();
        EXPECT_TRUE(user.isEmpty() ? !ranks.endsWith(',') : ranks.endsWith(',' + user)) << ranks.constData();
    }
    GSound::prepare_backend();
    EXPECT_EQ(qgetenv("GST_PLUGIN_FEATURE_RANK").count("jackaudiosink:NONE"), 1) << "set once per run";
}

TEST_F(SoundTest, EffectsRefuseMissingFilesAndReportTheirEnd) {
    GSoundEffect effect;
    int finished = 0;
    effect.liFinished += [&finished]() { ++finished; };
    effect.play_sound(MISSING);
    EXPECT_TRUE(effect.is_initialized());
    EXPECT_TRUE(capture->contains("GSoundEffect::play_sound, does not exist"));
    EXPECT_TRUE(effect.source().isEmpty());
    effect.play_sound_with_listener(MISSING);
    EXPECT_EQ(finished, 0) << "nothing played, nothing ended";
    effect.play_sound_with_listener(QStringLiteral(":/wb/shared-res/sounds/quiet.wav"));
    EXPECT_EQ(finished, 1);
    EXPECT_TRUE(effect.source().isEmpty()) << "a silent run loads no sample";
}
