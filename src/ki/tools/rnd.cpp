#include <ki/tools/rnd.h>

#include <QRandomGenerator>
#include <utility>

namespace ki::rnd {

QString next_QString(int length, bool letters_only) {
    static constexpr char LETTERS[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    static constexpr char ALNUM[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const char* alphabet = letters_only ? LETTERS : ALNUM;
    const int size = letters_only ? int(sizeof(LETTERS)) - 1 : int(sizeof(ALNUM)) - 1;
    QString out;
    if (length < 1) return out;
    out.reserve(length);
    for (int i = 0; i < length; ++i) out += QLatin1Char(alphabet[QRandomGenerator::global()->bounded(size)]);
    return out;
}

int next_int(int low, int high) {
    if (low > high) std::swap(low, high);
    return int(QRandomGenerator::global()->bounded(qint64(low), qint64(high) + 1));
}

}  // namespace ki::rnd
