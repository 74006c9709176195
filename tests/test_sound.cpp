// The sound players and modules: sources and the cache of the last source, the audio library
// made on first use or missing, the decoders, and playing to a sound server of the test's own.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundBackend.h>
#include <ki/qt/GSoundEffect.h>
#include <ki/sound_module/PcmAudio.h>
#include <pulse/simple.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>
#include <functional>
#include <map>
#include <thread>

#include "LoggedTest.h"

using ki::qt::GSound;
using ki::qt::GSoundEffect;
using ki::qt::SoundBackend;
using ki::qt::SoundPlayer;
namespace sound_backend = ki::qt::sound_backend;

namespace {

const QString RECORDING = QStringLiteral(":/wb/shared-res/zh/fono/zhong1.mp3");
const QString MISSING = QStringLiteral(":/wb/shared-res/zh/fono/1.mp3");

class SoundTest : public LoggedTest {
protected:
    void SetUp() override {
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
        int refused;
    };
    const Row rows[] = {
        {"file path used unchanged", {file}, file, 0},
        {"missing file keeps the qrc source before it", {RECORDING, MISSING}, "qrc" + RECORDING, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        GSound sound;
        capture->clear();
        for (const QString& path : row.plays) sound.play_sound(path);
        EXPECT_TRUE(sound.is_initialized()) << "the first play initialises, even for a missing file";
        EXPECT_EQ(sound.source().toString(), row.source);
        EXPECT_EQ(capture->count("GSound::play_sound, does not exist '" + MISSING.toStdString() + "'"),
                  row.refused);
        EXPECT_FALSE(sound.is_playing()) << "silent runs never start";
    }
}

namespace {

// Counts what the players ask of the audio library.
struct Calls {
    int players = 0;
    int effects = 0;
    int sources = 0;
    int plays = 0;
    int stops = 0;
    int endless = 0;
    bool operator==(const Calls&) const = default;
};

void PrintTo(const Calls& c, std::ostream* os) {
    *os << c.players << " players, " << c.effects << " effects, " << c.sources << " sources, " << c.plays
        << " plays, " << c.stops << " stops, " << c.endless << " endless";
}

class FakePlayer : public SoundPlayer {
public:
    explicit FakePlayer(Calls& c) : calls(c) {}
    void set_source(const QUrl& url) override {
        src = url;
        ++calls.sources;
    }
    QUrl source() const override { return src; }
    void set_loops(int loops) override { calls.endless += loops == ENDLESS ? 1 : 0; }
    void play() override {
        playing = true;
        ++calls.plays;
    }
    void stop() override {
        ++calls.stops;
        if (!playing) return;
        playing = false;
        if (onStopped) onStopped();
    }
    bool is_playing() const override { return playing; }
    void set_volume(float v) override { vol = v; }
    float volume() const override { return vol; }
    void set_on_stopped(std::function<void()> callback) override { onStopped = std::move(callback); }

private:
    Calls& calls;
    QUrl src;
    bool playing = false;
    float vol = 1.0F;
    std::function<void()> onStopped;
};

class FakeBackend : public SoundBackend {
public:
    bool device = true;
    Calls calls;
    FakePlayer* last = nullptr;
    bool has_output_device() override { return device; }
    std::unique_ptr<SoundPlayer> make_player() override {
        ++calls.players;
        return remember();
    }
    std::unique_ptr<SoundPlayer> make_effect() override {
        ++calls.effects;
        return remember();
    }

private:
    std::unique_ptr<SoundPlayer> remember() {
        auto p = std::make_unique<FakePlayer>(calls);
        last = p.get();
        return p;
    }
};

const QString EFFECT = QStringLiteral(":/wb/shared-res/sounds/quiet.wav");

}  // namespace

// Nothing of the audio library is made before the first sound; what the players then ask of it.
TEST_F(SoundTest, TheAudioLibraryIsMadeOnFirstUseAndPlaysWhatIsAsked) {
    struct Row {
        const char* name;
        bool device;
        bool silent;
        const char* steps;  // what the players are asked, in order, separated by blanks
        Calls expected;
        int finished;  // liFinished of the effect
    };
    const Row rows[] = {
        {"same recording twice: one source, two starts", true, false, "play play", {1, 0, 1, 2, 0, 0}, 0},
        {"no output device: source kept, never started", false, false, "play", {1, 0, 1, 0, 0, 0}, 0},
        {"silent run: source kept, never started", true, true, "play", {1, 0, 1, 0, 0, 0}, 0},
        {"endless set before the first sound", true, false, "endless play", {1, 0, 1, 1, 0, 1}, 0},
        {"missing recording: library made, nothing set", true, false, "missing", {1, 0, 0, 0, 0, 0}, 0},
        {"missing effect: nothing set, nothing ended", true, false, "effect-missing", {0, 1, 0, 0, 0, 0}, 0},
        {"effect ends and reports it", true, false, "effect stop", {0, 1, 1, 1, 1, 0}, 1},
        {"effect cut off by the next reports its end", true, false, "effect again", {0, 1, 2, 2, 1, 0}, 1},
        {"endless effect", true, false, "effect-endless", {0, 1, 1, 1, 0, 1}, 0},
        {"silent effect loads no sample and reports at once", true, true, "effect", {0, 1, 0, 0, 0, 0}, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeBackend backend;
        backend.device = row.device;
        sound_backend::use(&backend);
        GSound::set_silent(row.silent);
        GSound s;
        GSoundEffect e;
        int finished = 0;
        e.liFinished += [&finished]() { ++finished; };
        EXPECT_EQ(backend.calls.players + backend.calls.effects, 0) << "nothing made before the first sound";
        const std::map<QString, std::function<void()>> act = {
            {"play", [&] { s.play_sound(RECORDING); }},
            {"missing", [&] { s.play_sound(MISSING); }},
            {"endless", [&] { s.set_endless(); }},
            {"effect", [&] { e.play_sound_with_listener(EFFECT); }},
            {"effect-missing", [&] { e.play_sound_with_listener(MISSING); }},
            {"again", [&] { e.play_sound(EFFECT); }},
            {"effect-endless", [&] { e.play_endless(EFFECT); }},
            {"stop", [&] { backend.last->stop(); }},
        };
        for (const QString& step : QString::fromLatin1(row.steps).split(' ')) {
            ASSERT_TRUE(act.count(step)) << "unknown step " << step.toStdString();
            act.at(step)();
        }
        EXPECT_EQ(backend.calls, row.expected);
        EXPECT_EQ(finished, row.finished);
        GSound::set_silent(true);
        sound_backend::use(nullptr);
    }
}

// A program installed without its sound module keeps running, silently, and says so once.
TEST_F(SoundTest, WithoutTheModuleEverySoundIsSilentAndLoggedOnce) {
    QTemporaryDir empty;
    sound_backend::set_module_dirs({empty.path()});
    GSound::set_silent(false);
    GSound first;
    GSound second;
    GSoundEffect effect;
    int finished = 0;
    effect.liFinished += [&finished]() { ++finished; };
    first.play_sound(RECORDING);
    second.play_sound(RECORDING);
    effect.play_sound_with_listener(EFFECT);
    GSound::set_silent(true);
    sound_backend::set_module_dirs({});
    EXPECT_EQ(capture->count("sound_backend, no sound module"), 1);
    EXPECT_EQ(second.get_source_path(), RECORDING) << "the path is kept for the program to show";
    EXPECT_FALSE(first.is_playing() || second.is_playing() || effect.is_playing());
    EXPECT_FALSE(first.has_output_device());
    EXPECT_EQ(finished, 1) << "nothing started, so the end is reported at once";
}

// PulseAudio's module comes first; when it cannot load (its libraries missing, a broken file)
// the Qt Multimedia module takes over.
TEST_F(SoundTest, TheFirstModuleThatLoadsIsUsed) {
    const QString buildDir = QCoreApplication::applicationDirPath();
    QTemporaryDir fallback;
    const QStringList names = sound_backend::module_file_names();
    ASSERT_EQ(names.size(), 2);
    QFile broken(fallback.filePath(names[0]));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write("not a shared object") > 0 && broken.flush());
    ASSERT_TRUE(QFile::copy(QDir(buildDir).filePath(names[1]), fallback.filePath(names[1])));
    struct Row {
        const char* name;
        QStringList dirs;
        const char* backend;
    };
    const Row rows[] = {
        {"build tree: PulseAudio", {}, "ki::qt::PulseSoundModule"},
        {"PulseAudio module broken: Qt Multimedia", {fallback.path()}, "ki::qt::QtSoundModule"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        sound_backend::set_module_dirs(row.dirs);
        auto* backend = dynamic_cast<QObject*>(sound_backend::get());
        ASSERT_NE(backend, nullptr) << sound_backend::module_dirs().join(':').toStdString();
        EXPECT_STREQ(backend->metaObject()->className(), row.backend);
    }
    sound_backend::set_module_dirs({});
}

namespace {

QByteArray resource(const QString& name) {
    QFile file(QStringLiteral(":/wb/shared-res/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Samples louder than a whisper: what a listener would hear.
qint64 audible(const std::vector<int16_t>& samples, int channels) {
    qint64 n = 0;
    for (int16_t s : samples) n += std::abs(int(s)) > 200 ? 1 : 0;
    return n / std::max(channels, 1);
}

}  // namespace

// The effects exist as WAVE and as MP3: both decodings of one sound must last as long.
TEST(SoundDecoders, FilesDecodeToTheirLengthAndBadOnesAreRefused) {
    for (const char* name : {"sounds/Blop1", "sounds/complete", "sounds/error"}) {
        SCOPED_TRACE(name);
        const ki::qt::PcmResult wav = ki::qt::parse_wav(resource(QString::fromLatin1(name) + ".wav"));
        const ki::qt::PcmResult mp3 = ki::qt::decode_mp3(resource(QString::fromLatin1(name) + ".mp3"));
        ASSERT_TRUE(wav.ok() && mp3.ok()) << wav.error.toStdString() << mp3.error.toStdString();
        EXPECT_NEAR(mp3.audio.seconds(), wav.audio.seconds(), 0.05 * wav.audio.seconds());
        EXPECT_NEAR(double(audible(mp3.audio.samples, mp3.audio.channels)) / mp3.audio.rate,
                    double(audible(wav.audio.samples, wav.audio.channels)) / wav.audio.rate, 0.05 * wav.audio.seconds());
    }
    const QByteArray mp3 = resource(QStringLiteral("zh/fono/zhong1.mp3"));
    const QByteArray wav = resource(QStringLiteral("sounds/complete.wav"));
    const double mp3Seconds = ki::qt::decode_mp3(mp3).audio.seconds();
    const double wavSeconds = ki::qt::parse_wav(wav).audio.seconds();
    auto patched = [&wav](int at, QByteArray bytes) { return QByteArray(wav).replace(at, bytes.size(), bytes); };
    struct Row {
        const char* name;
        bool isMp3;
        QByteArray data;
        double seconds;  // 0: refused
        const char* reason;
        double tolerance = 0.05;
    };
    const Row rows[] = {
        {"empty MP3", true, QByteArray(), 0, "empty"},
        {"text instead of MP3", true, QByteArray("not a sound at all, only words").repeated(100), 0, "MP3"},
        {"MP3 cut inside its first frame", true, mp3.left(300), 0, "frames"},
        {"MP3 cut in half keeps the frames before the cut", true, mp3.left(mp3.size() / 2), mp3Seconds / 2, "", 0.25},
        {"MP3 handed to the WAVE reader", false, mp3, 0, "RIFF"},
        {"8-bit WAVE", false, patched(34, QByteArray("\x08\x00", 2)), 0, "8-bit"},
        {"float WAVE", false, patched(20, QByteArray("\x03\x00", 2)), 0, "float"},
        {"WAVE data chunk longer than the file", false, patched(40, QByteArray("\xf0\xff\xff\xff", 4)), wavSeconds, ""},
        {"WAVE format chunk longer than the file", false, patched(16, QByteArray("\xf0\xff\xff\xff", 4)), 0, "data"},
        {"WAVE cut before its data", false, wav.left(36), 0, "data"},
        {"WAVE cut in its data keeps whole frames", false, wav.left(wav.size() / 2 + 1), wavSeconds / 2, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ki::qt::PcmResult r = row.isMp3 ? ki::qt::decode_mp3(row.data) : ki::qt::parse_wav(row.data);
        EXPECT_EQ(r.ok(), row.seconds > 0) << r.error.toStdString();
        EXPECT_NEAR(r.audio.seconds(), row.seconds, row.tolerance * row.seconds);
        EXPECT_TRUE(r.error.contains(QLatin1String(row.reason))) << r.error.toStdString();
    }
}

namespace {

// A PulseAudio server of the test's own, with a null sink whose monitor the test records; or,
// not run, an address where no server listens.
class NullSinkServer {
public:
    explicit NullSinkServer(bool run = true) {
        if (!run) {
            use(("unix:" + dir.filePath(QStringLiteral("none"))).toUtf8());
            return;
        }
        const QString socket = dir.filePath(QStringLiteral("native"));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), dir.path());
        env.insert(QStringLiteral("PULSE_RUNTIME_PATH"), dir.path());
        server.setProcessEnvironment(env);
        server.setStandardOutputFile(QProcess::nullDevice());
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(QStandardPaths::findExecutable(QStringLiteral("pulseaudio")),
                     {"-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes",
                      "--load=module-null-sink sink_name=quenlo_test",
                      "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket});
        const QByteArray address = "unix:" + socket.toUtf8();
        use(address);
        // Ready once it serves a client, not when its socket appears.
        ready = QTest::qWaitFor(
            [&] {
                const pa_sample_spec format{PA_SAMPLE_S16LE, 44100, 1};
                pa_simple* probe = QFileInfo::exists(socket) ? pa_simple_new(address.constData(), "quenlo_tests",
                                                                             PA_STREAM_RECORD, nullptr, "probe",
                                                                             &format, nullptr, nullptr, nullptr)
                                                             : nullptr;
                if (probe != nullptr) pa_simple_free(probe);
                return probe != nullptr;
            },
            10000);
    }
    ~NullSinkServer() {
        qputenv("PULSE_SERVER", savedServer);
        if (savedServer.isNull()) qunsetenv("PULSE_SERVER");
        qunsetenv("PULSE_COOKIE");
        if (server.state() == QProcess::NotRunning) return;
        server.terminate();
        if (!server.waitForFinished(3000)) server.kill();
        server.waitForFinished(1000);
    }
    // Points the clients of this process at `address`; the cookie a client writes stays here.
    void use(const QByteArray& address) {
        qputenv("PULSE_SERVER", address);
        qputenv("PULSE_COOKIE", dir.filePath(QStringLiteral("cookie")).toUtf8());
    }

    QTemporaryDir dir;
    QProcess server;
    const QByteArray savedServer = qgetenv("PULSE_SERVER");
    bool ready = false;
};

// Records the null sink's monitor, mono at 44.1 kHz, from construction to `finish`.
class MonitorRecorder {
public:
    MonitorRecorder() {
        const pa_sample_spec format{PA_SAMPLE_S16LE, RATE, 1};
        const pa_buffer_attr attr{uint32_t(-1), uint32_t(-1), uint32_t(-1), uint32_t(-1), BLOCK * 2};
        stream = pa_simple_new(nullptr, "quenlo_tests", PA_STREAM_RECORD, "quenlo_test.monitor", "monitor", &format,
                               nullptr, &attr, nullptr);
        if (stream != nullptr) reader = std::thread([this] {
            std::vector<int16_t> block(BLOCK);
            while (!done && pa_simple_read(stream, block.data(), block.size() * 2, nullptr) >= 0)
                loud += audible(block, 1);
        });
    }
    ~MonitorRecorder() { finish(); }
    bool ok() const { return stream != nullptr; }
    // Seconds of audible sound recorded so far.
    double heard() const { return double(loud) / RATE; }
    double finish() {
        done = true;
        if (reader.joinable()) reader.join();
        if (stream != nullptr) pa_simple_free(stream);
        stream = nullptr;
        return heard();
    }

    static constexpr uint32_t RATE = 44100;
    static constexpr uint32_t BLOCK = RATE / 100;

private:
    pa_simple* stream = nullptr;
    std::atomic<bool> done{false};
    std::atomic<qint64> loud{0};
    std::thread reader;
};

ki::qt::PcmAudio decoded(const QString& name) {
    const QByteArray data = resource(name);
    return (name.endsWith(".wav") ? ki::qt::parse_wav(data) : ki::qt::decode_mp3(data)).audio;
}

}  // namespace

// Through the seam to a real server: what is heard, how long, and one report of the end.
TEST_F(SoundTest, PlayersReachARealServerAndReportTheirEndOnce) {
    if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty()) GTEST_SKIP() << "no pulseaudio";
    NullSinkServer server;
    ASSERT_TRUE(server.ready);
    sound_backend::set_module_dirs({});
    SoundBackend* backend = sound_backend::get();
    ASSERT_NE(backend, nullptr);
    ASSERT_TRUE(backend->has_output_device());
    struct Row {
        const char* name;
        const char* source;
        bool effect;
        int loops;
        bool stopWhenHeard;  // else plays to its end
    };
    const Row rows[] = {
        {"recording plays whole", "zh/fono/ai1.mp3", false, 1, false},
        {"stop silences within 50 ms", "zh/fono/zhong3.mp3", false, 1, true},
        {"effect once", "sounds/complete.wav", true, 1, false},
        {"effect with two loops plays twice", "sounds/complete.wav", true, 2, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QString name = QString::fromLatin1(row.source);
        const ki::qt::PcmAudio file = decoded(name);
        const double expected = double(audible(file.samples, file.channels)) / file.rate * row.loops;
        MonitorRecorder recorder;
        ASSERT_TRUE(recorder.ok());
        std::unique_ptr<SoundPlayer> player = row.effect ? backend->make_effect() : backend->make_player();
        int ended = 0;
        player->set_on_stopped([&ended] { ++ended; });
        player->set_source(QUrl(QStringLiteral("qrc:/wb/shared-res/") + name));
        player->set_loops(row.loops);
        QElapsedTimer clock;
        clock.start();
        player->play();
        EXPECT_TRUE(player->is_playing());
        qint64 endedAfter = 0;
        double heardAtStop = 0;
        if (row.stopWhenHeard) {
            EXPECT_TRUE(QTest::qWaitFor([&] { return recorder.heard() > 0.1; }, 3000));
            player->stop();
            heardAtStop = recorder.heard();
        } else {
            EXPECT_TRUE(QTest::qWaitFor([&] { return ended > 0; }, 5000));
            endedAfter = clock.elapsed();
        }
        QTest::qWait(150);  // for a second report that must not come, and the last samples
        const double heard = recorder.finish();
        EXPECT_EQ(ended, 1);
        EXPECT_FALSE(player->is_playing());
        if (row.stopWhenHeard) {
            EXPECT_LE(heard - heardAtStop, 0.05) << "sound went on after the stop";
            EXPECT_LT(heard, 0.5 * expected);
        } else {
            EXPECT_NEAR(heard, expected, 0.15 * expected);
            EXPECT_GE(double(endedAfter) / 1000, 0.95 * file.seconds() * row.loops) << "end reported too early";
        }
    }
}

// Without a server, or with a broken file, the program goes on quietly: a quick answer, every
// end reported, one line for each cause however often it recurs.
TEST_F(SoundTest, WithoutAServerOrWithABrokenFileNothingPlaysAndItIsSaidOnce) {
    NullSinkServer nowhere(false);
    QFile broken(nowhere.dir.filePath(QStringLiteral("broken.mp3")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write(QByteArray(4000, 'x')) > 0 && broken.flush());
    sound_backend::set_module_dirs({});
    SoundBackend* backend = sound_backend::get();
    ASSERT_NE(backend, nullptr);
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(backend->has_output_device());
    EXPECT_LT(clock.elapsed(), 1000);
    const std::pair<std::unique_ptr<SoundPlayer>, QUrl> players[] = {
        {backend->make_effect(), QUrl(QStringLiteral("qrc") + EFFECT)},
        {backend->make_player(), QUrl::fromLocalFile(broken.fileName())},
    };
    for (const auto& [player, source] : players) {
        int ended = 0;
        player->set_on_stopped([&ended] { ++ended; });
        player->set_source(source);
        for (int i = 0; i < 2; ++i) {
            player->play();
            EXPECT_TRUE(QTest::qWaitFor([&] { return ended == i + 1; }, 2000));
        }
        EXPECT_FALSE(player->is_playing());
        player->set_on_stopped({});  // `ended` goes now
    }
    EXPECT_EQ(capture->count("sound, no sound server"), 1);
    EXPECT_EQ(capture->count("sound, '" + broken.fileName().toStdString() + "' not played: not an MP3 file"), 1);
}
