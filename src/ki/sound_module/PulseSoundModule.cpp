// The sound backend over PulseAudio (or PipeWire's PulseAudio server) and libmpg123. Each
// player decodes its source whole and feeds it to the server from a thread of its own in
// chunks of 20 ms, so that stopping takes effect within a chunk; the GUI thread never waits
// for the server except in has_output_device, which connects with a short time limit.
#include <ki/qt/GSoundBackend.h>
#include <pulse/error.h>
#include <pulse/pulseaudio.h>
#include <pulse/simple.h>

#include <QCoreApplication>
#include <QFile>
#include <QSet>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "PcmAudio.h"

namespace ki::qt {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int CHUNKS_PER_SECOND = 50;  // 20 ms
// The server holds at most this much ahead of what is heard, so a stop is heard at once.
constexpr int BUFFERED_CHUNKS = 3;

const char* const APP_NAME = "quenlo";

// What went wrong is said once per cause, not once per sound, and again after the module has
// been handed a log anew (each load of it). GUI thread only.
class Complaints {
public:
    void set_log(std::function<void(const QString&)> warn) {
        log = std::move(warn);
        said.clear();
    }
    void once(const QString& cause) {
        if (said.contains(cause)) return;
        said.insert(cause);
        const QString line = QStringLiteral("sound, %1").arg(cause);
        if (log)
            log(line);
        else
            qWarning("%s", qPrintable(line));
    }

private:
    std::function<void(const QString&)> log;
    QSet<QString> said;
};

QString local_path(const QUrl& url) {
    if (url.scheme() == QLatin1String("qrc")) return QLatin1Char(':') + url.path();
    if (url.isLocalFile()) return url.toLocalFile();
    return url.toString();
}

void scale(std::vector<int16_t>& chunk, float gain) {
    if (gain >= 1.0F) return;
    for (int16_t& s : chunk) s = int16_t(float(s) * std::max(gain, 0.0F));
}

// Where the workers' reports wait for the GUI thread. Made by the first player, on the GUI
// thread, and never destroyed: a worker that outlives its player may still post to it.
QObject* mailbox() {
    static QObject* const box = new QObject;
    return box;
}

class PulsePlayer;

// What a player shares with its worker thread. The worker holds it too, so that a player can
// go without waiting for a worker stuck in a write the server does not take.
struct Channel {
    explicit Channel(bool isEffect) : effect(isEffect) {}

    struct Job {
        quint64 generation;
        quint64 sourceId;
        QByteArray data;
        QString name;  // for the log
        int loops;
    };

    const bool effect;
    std::atomic<float> gain{1.0F};
    PulsePlayer* owner = nullptr;  // GUI thread only; nullptr once the player is gone

    // Under `mutex`.
    std::mutex mutex;
    std::condition_variable wake;
    std::optional<Job> job;
    quint64 generation = 0;
    bool quit = false;
    bool exited = false;

    // Worker thread only.
    quint64 decodedId = 0;
    PcmResult decoded;

    bool current(quint64 gen) {
        std::lock_guard lock(mutex);
        return gen == generation && !quit;
    }
};

void perform(const std::shared_ptr<Channel>& ch, const Channel::Job& j);

void run(const std::shared_ptr<Channel>& ch) {
    for (;;) {
        Channel::Job next;
        {
            std::unique_lock lock(ch->mutex);
            ch->wake.wait(lock, [&] { return ch->quit || ch->job.has_value(); });
            if (ch->quit) break;
            next = std::move(*ch->job);
            ch->job.reset();
        }
        perform(ch, next);
    }
    std::lock_guard lock(ch->mutex);
    ch->exited = true;
    ch->wake.notify_all();
}

class PulsePlayer final : public SoundPlayer {
public:
    PulsePlayer(bool isEffect, Complaints& complaints)
        : channel(std::make_shared<Channel>(isEffect)), complaints(complaints) {
        mailbox();
        channel->owner = this;
    }

    ~PulsePlayer() override {
        channel->owner = nullptr;
        std::unique_lock lock(channel->mutex);
        channel->quit = true;
        ++channel->generation;
        channel->wake.notify_all();
        if (!worker.joinable()) return;
        // The worker stops within a chunk, unless the server holds a write back; then it is
        // left to finish on its own.
        const bool exited = channel->wake.wait_for(lock, 100ms, [this] { return channel->exited; });
        lock.unlock();
        if (exited)
            worker.join();
        else
            worker.detach();
    }

    void set_source(const QUrl& url) override {
        if (playing) stop();
        src = url;
        data.clear();
        ++sourceId;
        if (url.isEmpty()) return;
        QFile file(local_path(url));
        if (file.open(QIODevice::ReadOnly))
            data = file.readAll();
        else
            complaints.once(QStringLiteral("'%1' not played, cannot read it: %2")
                                .arg(local_path(url), file.errorString()));
    }
    QUrl source() const override { return src; }
    void set_loops(int count) override { loops = count == ENDLESS ? ENDLESS : std::max(count, 1); }

    void play() override {
        if (playing) {
            // A recording carries on; an effect starts again from its beginning.
            if (!channel->effect) return;
            stop();
        }
        // An unreadable source plays too, to report its end like any other sound.
        if (src.isEmpty()) return;
        playing = true;
        if (!worker.joinable()) worker = std::thread([ch = channel] { run(ch); });
        {
            std::lock_guard lock(channel->mutex);
            channel->job = Channel::Job{++channel->generation, sourceId, data, local_path(src), loops};
        }
        channel->wake.notify_all();
    }

    void stop() override {
        if (!playing) return;
        playing = false;
        {
            std::lock_guard lock(channel->mutex);
            ++channel->generation;
            channel->job.reset();
        }
        channel->wake.notify_all();
        if (onStopped) onStopped();
    }

    bool is_playing() const override { return playing; }
    void set_volume(float value) override { channel->gain = std::clamp(value, 0.0F, 1.0F); }
    float volume() const override { return channel->gain; }
    void set_on_stopped(std::function<void()> callback) override { onStopped = std::move(callback); }

    // The worker's account of how a job ended, on the GUI thread.
    void finished(quint64 gen, const QString& cause) {
        if (!cause.isEmpty()) complaints.once(cause);
        {
            std::lock_guard lock(channel->mutex);
            // Stopped or started again meanwhile: that has been reported already.
            if (gen != channel->generation) return;
        }
        if (!playing) return;
        playing = false;
        if (onStopped) onStopped();
    }

private:
    const std::shared_ptr<Channel> channel;
    Complaints& complaints;
    QUrl src;
    QByteArray data;
    quint64 sourceId = 0;
    int loops = 1;
    bool playing = false;
    std::function<void()> onStopped;
    std::thread worker;
};

void report(const std::shared_ptr<Channel>& ch, quint64 gen, const QString& cause) {
    QMetaObject::invokeMethod(
        mailbox(),
        [ch, gen, cause] {
            if (ch->owner != nullptr) ch->owner->finished(gen, cause);
        },
        Qt::QueuedConnection);
}

// Waits, checking for a stop every 10 ms, until the server holds less than a chunk; the drain
// after it waits for that last bit only, where a drain alone would not return before the last
// sample and so could not be stopped.
void wait_until_heard(Channel& ch, pa_simple* s, quint64 gen) {
    constexpr pa_usec_t CHUNK_USEC = 1000000 / CHUNKS_PER_SECOND;
    int err = 0;
    const pa_usec_t first = pa_simple_get_latency(s, &err);
    if (first == pa_usec_t(-1)) return;
    const auto deadline = Clock::now() + std::chrono::microseconds(first) + 200ms;
    while (ch.current(gen) && Clock::now() < deadline) {
        const pa_usec_t left = pa_simple_get_latency(s, &err);
        if (left == pa_usec_t(-1) || left < CHUNK_USEC) return;
        std::this_thread::sleep_for(
            std::min(std::chrono::microseconds(left), std::chrono::microseconds(10000)));
    }
}

void perform(const std::shared_ptr<Channel>& ch, const Channel::Job& j) {
    if (j.data.isEmpty()) return report(ch, j.generation, QString());  // said when it was read
    if (j.sourceId != ch->decodedId) {
        ch->decoded = ch->effect || j.data.startsWith("RIFF") ? parse_wav(j.data) : decode_mp3(j.data);
        ch->decodedId = j.sourceId;
    }
    if (!ch->decoded.ok())
        return report(ch, j.generation, QStringLiteral("'%1' not played: %2").arg(j.name, ch->decoded.error));
    const PcmAudio& audio = ch->decoded.audio;
    const pa_sample_spec format{PA_SAMPLE_S16LE, uint32_t(audio.rate), uint8_t(audio.channels)};
    const size_t chunkSamples = size_t(std::max(1, audio.rate / CHUNKS_PER_SECOND) * audio.channels);
    const auto chunkBytes = uint32_t(chunkSamples * sizeof(int16_t));
    const uint32_t unset = uint32_t(-1);
    const pa_buffer_attr attr{unset, chunkBytes * BUFFERED_CHUNKS, chunkBytes, unset, unset};
    int err = 0;
    pa_simple* s = pa_simple_new(nullptr, APP_NAME, PA_STREAM_PLAYBACK, nullptr,
                                 ch->effect ? "effect" : "recording", &format, nullptr, &attr, &err);
    if (s == nullptr)
        return report(ch, j.generation,
                      QStringLiteral("no sound server, sounds stay silent: %1")
                          .arg(QString::fromUtf8(pa_strerror(err))));
    QString cause;
    std::vector<int16_t> chunk;
    bool stopped = false;
    for (int round = 0; !stopped && (j.loops == SoundPlayer::ENDLESS || round < j.loops); ++round) {
        for (size_t at = 0; at < audio.samples.size(); at += chunkSamples) {
            if (!ch->current(j.generation)) {
                stopped = true;
                break;
            }
            const size_t n = std::min(chunkSamples, audio.samples.size() - at);
            chunk.assign(audio.samples.begin() + qsizetype(at), audio.samples.begin() + qsizetype(at + n));
            scale(chunk, ch->gain);
            if (pa_simple_write(s, chunk.data(), n * sizeof(int16_t), &err) < 0) {
                cause = QStringLiteral("sound server failed: %1").arg(QString::fromUtf8(pa_strerror(err)));
                stopped = true;
                break;
            }
        }
    }
    if (!stopped) wait_until_heard(*ch, s, j.generation);
    // A stop drops what the server still holds; the end lets it play out.
    if (ch->current(j.generation) && cause.isEmpty())
        pa_simple_drain(s, &err);
    else
        pa_simple_flush(s, &err);
    pa_simple_free(s);
    if (ch->current(j.generation) || !cause.isEmpty()) report(ch, j.generation, cause);
}

// Whether a server accepts a playback stream, asked with PulseAudio's own main loop so that
// the wait has a limit. The stream is made corked and dropped at once: no device stays held.
bool server_accepts_playback(std::chrono::milliseconds limit) {
    pa_mainloop* loop = pa_mainloop_new();
    if (loop == nullptr) return false;
    pa_context* context = pa_context_new(pa_mainloop_get_api(loop), APP_NAME);
    pa_stream* stream = nullptr;
    bool accepted = false;
    if (context != nullptr && pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0) {
        const auto deadline = Clock::now() + limit;
        for (;;) {
            const pa_context_state_t cs = pa_context_get_state(context);
            if (!PA_CONTEXT_IS_GOOD(cs)) break;
            if (cs == PA_CONTEXT_READY && stream == nullptr) {
                const pa_sample_spec format{PA_SAMPLE_S16LE, 44100, 1};
                stream = pa_stream_new(context, "probe", &format, nullptr);
                if (stream == nullptr ||
                    pa_stream_connect_playback(stream, nullptr, nullptr, PA_STREAM_START_CORKED, nullptr,
                                               nullptr) < 0)
                    break;
            }
            if (stream != nullptr) {
                const pa_stream_state_t ss = pa_stream_get_state(stream);
                if (ss == PA_STREAM_READY) accepted = true;
                if (!PA_STREAM_IS_GOOD(ss) || accepted) break;
            }
            const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
            if (left.count() <= 0) break;
            if (pa_mainloop_prepare(loop, int(left.count())) < 0 || pa_mainloop_poll(loop) < 0 ||
                pa_mainloop_dispatch(loop) < 0)
                break;
        }
    }
    if (stream != nullptr) {
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
    if (context != nullptr) {
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
    pa_mainloop_free(loop);
    return accepted;
}

}  // namespace

class PulseSoundModule final : public QObject, public SoundBackend {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KI_SOUND_BACKEND_IID)
    Q_INTERFACES(ki::qt::SoundBackend)
public:
    bool has_output_device() override {
        // The players log the lack of an output themselves.
        return server_accepts_playback(500ms);
    }
    std::unique_ptr<SoundPlayer> make_player() override {
        return std::make_unique<PulsePlayer>(false, complaints);
    }
    std::unique_ptr<SoundPlayer> make_effect() override {
        return std::make_unique<PulsePlayer>(true, complaints);
    }
    void set_log(std::function<void(const QString&)> warn) override { complaints.set_log(std::move(warn)); }

private:
    Complaints complaints;
};

}  // namespace ki::qt

#include "PulseSoundModule.moc"
