#pragma once
// Where the pronunciation of a character lives. Characters that read the same toned syllable
// share one recording ("zh/fono/zhong1.mp3"); the index "zh/fono/index.txt" leads from a code
// point to its syllable, one "20013 zhong1" line per character with a toned reading.

#include <QHash>
#include <QString>

namespace morvel::prog2 {

class Recording {
public:
    /// ":/wb/shared-res/zh/fono/zhong1.mp3" for 20013, "" when the index has no line for the
    /// code point (a neutral-tone reading). The index is read on the first call.
    static QString path(int unicode);
    /// Reads the index now instead of on the first call of `path`.
    static void read_index();

    /// The lines of an index text as code point -> syllable file name ("zhong1.mp3"). A line
    /// that is no "<code point> <letters><tone 1-4>" is skipped and counted in `badLines`.
    static QHash<int, QString> parse_index(const QString& text, int& badLines);
};

}  // namespace morvel::prog2
