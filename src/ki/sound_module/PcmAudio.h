#pragma once
// Decoded sound: interleaved signed 16-bit samples at the file's own rate and channel count.
// The PulseAudio module plays these; both readers take the whole file in memory.

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

namespace ki::qt {

struct PcmAudio {
    int rate = 0;
    int channels = 0;
    std::vector<int16_t> samples;

    qint64 frames() const { return channels > 0 ? qint64(samples.size()) / channels : 0; }
    double seconds() const { return rate > 0 ? double(frames()) / rate : 0.0; }
};

/// Either the audio or, when `error` is not empty, why there is none.
struct PcmResult {
    PcmAudio audio;
    QString error;
    bool ok() const { return error.isEmpty(); }
};

/// An MP3 (MPEG audio) file; the frames before a cut-off are kept, a file without any is refused.
PcmResult decode_mp3(const QByteArray& data);
/// A RIFF/WAVE file with 16-bit PCM; other encodings are refused with a reason naming them.
PcmResult parse_wav(const QByteArray& data);

}  // namespace ki::qt
