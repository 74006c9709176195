#include "PcmAudio.h"

#include <mpg123.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace ki::qt {

namespace {

PcmResult failed(const QString& reason) {
    PcmResult r;
    r.error = reason;
    return r;
}

quint32 le32(const char* p) {
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return quint32(u[0]) | quint32(u[1]) << 8 | quint32(u[2]) << 16 | quint32(u[3]) << 24;
}

quint16 le16(const char* p) {
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return quint16(u[0] | u[1] << 8);
}

QString wav_format_name(quint16 tag) {
    switch (tag) {
        case 2:
            return QStringLiteral("MS ADPCM");
        case 3:
            return QStringLiteral("32-bit float");
        case 6:
            return QStringLiteral("A-law");
        case 7:
            return QStringLiteral("mu-law");
        case 0x11:
            return QStringLiteral("IMA ADPCM");
        case 0x55:
            return QStringLiteral("MP3");
        default:
            return QStringLiteral("format tag %1").arg(tag);
    }
}

struct Mpg123Deleter {
    void operator()(mpg123_handle* h) const {
        mpg123_close(h);
        mpg123_delete(h);
    }
};

}  // namespace

PcmResult decode_mp3(const QByteArray& data) {
    // Needed by libmpg123 before 1.27, a no-op since; safe to call again.
    static const int initialised = mpg123_init();
    if (initialised != MPG123_OK) return failed(QStringLiteral("MP3 decoder unavailable"));
    int err = MPG123_OK;
    std::unique_ptr<mpg123_handle, Mpg123Deleter> h(mpg123_new(nullptr, &err));
    if (!h) return failed(QStringLiteral("MP3 decoder unavailable: %1").arg(mpg123_plain_strerror(err)));
    // Garbage must not reach stderr; the caller reports what went wrong.
    mpg123_param(h.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0.0);
    // Signed 16-bit only, at whatever rate and channel count the file has.
    mpg123_format_none(h.get());
    const long* rates = nullptr;
    size_t count = 0;
    mpg123_rates(&rates, &count);
    for (size_t i = 0; i < count; ++i)
        mpg123_format(h.get(), rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16);
    if (mpg123_open_feed(h.get()) != MPG123_OK || data.isEmpty())
        return failed(data.isEmpty() ? QStringLiteral("empty file")
                                     : QStringLiteral("MP3 decoder unavailable"));

    PcmResult result;
    PcmAudio& audio = result.audio;
    std::vector<unsigned char> buffer(16384);
    const auto* in = reinterpret_cast<const unsigned char*>(data.constData());
    size_t inSize = size_t(data.size());
    for (;;) {
        size_t done = 0;
        const int ret = mpg123_decode(h.get(), in, inSize, buffer.data(), buffer.size(), &done);
        in = nullptr;  // fed whole at the first call
        inSize = 0;
        if (done > 0) {
            const size_t before = audio.samples.size();
            audio.samples.resize(before + done / sizeof(int16_t));
            std::memcpy(audio.samples.data() + before, buffer.data(), done - done % sizeof(int16_t));
        }
        if (ret == MPG123_NEW_FORMAT) {
            long rate = 0;
            int channels = 0;
            int encoding = 0;
            mpg123_getformat(h.get(), &rate, &channels, &encoding);
            if (audio.rate != 0 && (rate != audio.rate || channels != audio.channels))
                return failed(QStringLiteral("MP3 changes its format midway"));
            audio.rate = int(rate);
            audio.channels = channels;
        } else if (ret == MPG123_NEED_MORE || ret == MPG123_DONE) {
            break;  // everything fed has been decoded
        } else if (ret != MPG123_OK) {
            // A broken frame after good ones ends the sound there, as players do.
            if (!audio.samples.empty()) break;
            return failed(QStringLiteral("not an MP3 file (%1)").arg(mpg123_plain_strerror(ret)));
        }
    }
    if (audio.rate <= 0 || audio.channels <= 0 || audio.frames() == 0)
        return failed(QStringLiteral("not an MP3 file: no MPEG audio frames"));
    audio.samples.resize(size_t(audio.frames() * audio.channels));
    return result;
}

PcmResult parse_wav(const QByteArray& data) {
    const char* p = data.constData();
    const qsizetype size = data.size();
    if (size < 12 || std::memcmp(p, "RIFF", 4) != 0 || std::memcmp(p + 8, "WAVE", 4) != 0)
        return failed(QStringLiteral("not a RIFF/WAVE file"));
    quint16 tag = 0;
    int channels = 0;
    int rate = 0;
    int bits = 0;
    bool haveFormat = false;
    for (qsizetype at = 12; at + 8 <= size;) {
        const QByteArray id(p + at, 4);
        const qint64 length = le32(p + at + 4);
        const qsizetype body = at + 8;
        const qint64 available = size - body;
        if (id == "fmt ") {
            if (length < 16 || available < 16) return failed(QStringLiteral("WAVE format chunk too short"));
            tag = le16(p + body);
            channels = le16(p + body + 2);
            rate = int(le32(p + body + 4));
            bits = le16(p + body + 14);
            // WAVE_FORMAT_EXTENSIBLE names the real format in the first two bytes of its GUID.
            if (tag == 0xFFFE && length >= 26 && available >= 26) tag = le16(p + body + 24);
            haveFormat = true;
        } else if (id == "data") {
            if (!haveFormat) return failed(QStringLiteral("WAVE data before its format"));
            if (tag != 1)
                return failed(
                    QStringLiteral("WAVE in %1, only 16-bit PCM is played").arg(wav_format_name(tag)));
            if (bits != 16) return failed(QStringLiteral("%1-bit WAVE, only 16-bit PCM is played").arg(bits));
            if (channels < 1 || channels > 8 || rate < 1000 || rate > 384000)
                return failed(QStringLiteral("WAVE with %1 channels at %2 Hz").arg(channels).arg(rate));
            // A file cut short keeps its whole frames.
            const qint64 bytes = std::min(length, available);
            const qint64 frames = bytes / (2 * channels);
            if (frames == 0) return failed(QStringLiteral("WAVE without samples"));
            PcmResult result;
            result.audio.rate = rate;
            result.audio.channels = channels;
            result.audio.samples.resize(size_t(frames * channels));
            for (size_t i = 0; i < result.audio.samples.size(); ++i)
                result.audio.samples[i] = int16_t(le16(p + body + qsizetype(2 * i)));
            return result;
        }
        at = body + length + (length & 1);  // chunks are padded to even sizes
    }
    return failed(QStringLiteral("WAVE without a data chunk"));
}

}  // namespace ki::qt
