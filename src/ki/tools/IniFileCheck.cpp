#include <ki/tools/IniFileCheck.h>

#include <QFile>
#include <QMap>
#include <QStringDecoder>
#include <QStringList>
#include <QtEndian>

namespace ki::io {

namespace {

// The reading below follows QSettings' own INI reader (Qt 6.4) step by step: where the two
// split a file differently, a value Qt decodes could slip past unseen.

enum : unsigned char { SPACE = 0x1, SPECIAL = 0x2 };

unsigned char traits(char c) {
    switch (c) {
        case '\n':
        case '\r':
            return SPACE | SPECIAL;
        case '\t':
        case ' ':
            return SPACE;
        case '"':
        case ';':
        case '=':
        case '\\':
            return SPECIAL;
        default:
            return 0;
    }
}

struct Line {
    qsizetype start = 0;
    qsizetype length = 0;
    qsizetype equals = -1;  ///< position of the first unquoted "=", or -1
};

// The next logical line from `pos` on: leading blanks and comment lines skipped, quoted text and
// backslash-escaped line ends kept inside. False when no line is left.
bool read_line(QByteArrayView data, qsizetype& pos, Line& line) {
    const qsizetype size = data.size();
    bool inQuotes = false;
    line.equals = -1;
    line.start = pos;
    while (line.start < size && (traits(data[line.start]) & SPACE)) ++line.start;

    qsizetype i = line.start;
    bool done = false;
    while (i < size && !done) {
        char ch = data[i];
        while (!(traits(ch) & SPECIAL)) {
            if (++i == size) {
                done = true;
                break;
            }
            ch = data[i];
        }
        if (done) break;
        ++i;
        if (ch == '=') {
            if (!inQuotes && line.equals == -1) line.equals = i - 1;
        } else if (ch == '\n' || ch == '\r') {
            if (i == line.start + 1) {
                ++line.start;
            } else if (!inQuotes) {
                --i;
                done = true;
            }
        } else if (ch == '\\') {
            if (i < size) {
                const char escaped = data[i++];
                if (i < size) {
                    const char next = data[i];
                    if ((escaped == '\n' && next == '\r') || (escaped == '\r' && next == '\n')) ++i;
                }
            }
        } else if (ch == '"') {
            inQuotes = !inQuotes;
        } else if (i == line.start + 1) {  // ';' opening a comment line
            while (i < size && data[i] != '\n' && data[i] != '\r') ++i;
            while (i < size && (traits(data[i]) & SPACE)) ++i;
            line.start = i;
        } else if (!inQuotes) {  // ';' ending the line
            --i;
            done = true;
        }
    }
    pos = i;
    line.length = i - line.start;
    return line.length > 0;
}

// A section name as QSettings keys it: "%XX" and "%UXXXX" decoded, a backslash read as "/".
QString unescaped_key(QByteArrayView key) {
    const QString decoded = QString::fromUtf8(key);
    const qsizetype size = decoded.size();
    QString result;
    qsizetype i = 0;
    while (i < size) {
        const QChar ch = decoded.at(i);
        if (ch == u'\\') {
            result += u'/';
            ++i;
            continue;
        }
        if (ch != u'%' || i == size - 1) {
            result += ch;
            ++i;
            continue;
        }
        qsizetype first = i + 1;
        qsizetype digits = 2;
        if (decoded.at(i + 1) == u'U') {
            ++first;
            digits = 4;
        }
        bool ok = false;
        const ushort code =
            first + digits > size ? 0 : QStringView(decoded).sliced(first, digits).toUShort(&ok, 16);
        if (!ok) {
            result += u'%';
            ++i;
            continue;
        }
        result += QChar(code);
        i = first + digits;
    }
    return result;
}

// The text of every section, keyed by name; a name that appears twice gets both parts, joined
// by a line end.
QMap<QString, QByteArray> split_sections(QByteArrayView data) {
    QMap<QString, QByteArray> sections;
    QString current;
    qsizetype currentStart = 0;
    qsizetype pos = 0;
    if (data.size() >= 3 && uchar(data[0]) == 0xef && uchar(data[1]) == 0xbb && uchar(data[2]) == 0xbf)
        pos = 3;

    const auto flush = [&](qsizetype end) {
        QByteArray& text = sections[current];
        if (!text.isEmpty()) text.append('\n');
        if (end > currentStart) text += data.first(end).sliced(currentStart);
    };
    Line line;
    while (read_line(data, pos, line)) {
        const QByteArrayView text = data.sliced(line.start, line.length);
        if (!text.startsWith('[')) continue;
        flush(line.start);
        qsizetype close = text.indexOf(']');
        if (close < 0) close = line.length;
        const QByteArrayView name = text.first(close).sliced(1).trimmed();
        if (name.compare("general", Qt::CaseInsensitive) == 0) {
            current.clear();
        } else {
            current = name.compare("%general", Qt::CaseInsensitive) == 0 ? QString::fromLatin1(name.sliced(1))
                                                                         : unescaped_key(name);
            current += u'/';
        }
        currentStart = pos;
    }
    flush(line.start);
    return sections;
}

void chop_trailing_blanks(QString& text, qsizetype limit) {
    qsizetype n = text.size() - 1;
    while (n >= limit && (text.at(n) == u' ' || text.at(n) == u'\t')) text.truncate(n--);
}

int hex_value(char ch) {
    if (ch >= '0' && ch <= '9') return ch - '0';
    if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
    return -1;
}

// A value as QSettings reads it: quotes dropped, escapes resolved, and split at commas outside
// quotes into a list. Returns whether it is a list (then in `list`, else in `text`).
bool unescape_value(QByteArrayView str, QString& text, QStringList& list) {
    static const char codes[][2] = {{'a', '\a'}, {'b', '\b'},  {'f', '\f'}, {'n', '\n'},
                                    {'r', '\r'}, {'t', '\t'},  {'v', '\v'}, {'"', '"'},
                                    {'?', '?'},  {'\'', '\''}, {'\\', '\\'}};
    enum class State { SKIP_SPACES, NORMAL, HEX, OCTAL, END };

    bool isList = false;
    bool inQuotes = false;
    bool quoted = false;
    char16_t escapeVal = 0;
    qsizetype i = 0;
    const qsizetype size = str.size();
    QStringDecoder fromUtf8(QStringDecoder::Utf8);
    State state = State::SKIP_SPACES;
    while (state != State::END) {
        switch (state) {
            case State::SKIP_SPACES:
                while (i < size && (str[i] == ' ' || str[i] == '\t')) ++i;
                state = State::NORMAL;
                break;
            case State::NORMAL: {
                qsizetype chopLimit = text.size();
                state = State::END;
                bool leave = false;
                while (i < size && !leave) {
                    const char ch = str[i];
                    if (ch == '\\') {
                        ++i;
                        if (i >= size) {
                            leave = true;  // straight to the end, nothing chopped
                            break;
                        }
                        const char escaped = str[i++];
                        bool named = false;
                        for (const auto& code : codes) {
                            if (escaped == code[0]) {
                                text += QLatin1Char(code[1]);
                                named = true;
                                break;
                            }
                        }
                        if (named) {
                            chopLimit = text.size();
                            continue;
                        }
                        if (escaped == 'x') {
                            escapeVal = 0;
                            if (i >= size) {
                                leave = true;
                                break;
                            }
                            if (hex_value(str[i] >= 'a' ? char(str[i] - ('a' - 'A')) : str[i]) >= 0) {
                                state = State::HEX;
                                leave = true;
                                break;
                            }
                        } else if (escaped >= '0' && escaped <= '7') {
                            escapeVal = char16_t(escaped - '0');
                            state = State::OCTAL;
                            leave = true;
                            break;
                        } else if ((escaped == '\n' || escaped == '\r') && i < size) {
                            const char next = str[i];
                            if ((next == '\n' || next == '\r') && next != escaped) ++i;
                        }
                        chopLimit = text.size();
                    } else if (ch == '"') {
                        ++i;
                        quoted = true;
                        inQuotes = !inQuotes;
                        if (!inQuotes) {
                            state = State::SKIP_SPACES;
                            leave = true;
                        }
                    } else if (ch == ',' && !inQuotes) {
                        if (!quoted) chop_trailing_blanks(text, chopLimit);
                        if (!isList) {
                            isList = true;
                            list.clear();
                        }
                        list.append(text);
                        text.clear();
                        quoted = false;
                        ++i;
                        state = State::SKIP_SPACES;
                        leave = true;
                    } else {
                        qsizetype j = i + 1;
                        while (j < size && str[j] != '\\' && str[j] != '"' && str[j] != ',') ++j;
                        text += QString(fromUtf8(str.first(j).sliced(i)));
                        i = j;
                    }
                }
                // Ran off the end of the value (not left through an escape or a quote).
                if (!leave && !quoted) chop_trailing_blanks(text, chopLimit);
                break;
            }
            case State::HEX: {
                if (i >= size) {
                    text += QChar(escapeVal);
                    state = State::END;
                    break;
                }
                char ch = str[i];
                if (ch >= 'a') ch = char(ch - ('a' - 'A'));
                const int digit = hex_value(ch);
                if (digit >= 0) {
                    escapeVal = char16_t((escapeVal << 4) + digit);
                    ++i;
                } else {
                    text += QChar(escapeVal);
                    state = State::NORMAL;
                }
                break;
            }
            case State::OCTAL: {
                if (i >= size) {
                    text += QChar(escapeVal);
                    state = State::END;
                    break;
                }
                const char ch = str[i];
                if (ch >= '0' && ch <= '7') {
                    escapeVal = char16_t((escapeVal << 3) + (ch - '0'));
                    ++i;
                } else {
                    text += QChar(escapeVal);
                    state = State::NORMAL;
                }
                break;
            }
            case State::END:
                break;
        }
    }
    if (isList) list.append(text);
    return isList;
}

constexpr quint32 TYPE_DATE_TIME = 16;
constexpr char SPEC_TIME_ZONE = 3;

// The stream of a "@Variant(" (Qt 4 ids) or "@DateTime(" (Qt 5.6) value; empty for any other.
QByteArray binary_payload(const QString& value, bool& qt4Ids) {
    if (!value.startsWith(u'@') || !value.endsWith(u')')) return {};
    qsizetype offset = 0;
    if (value.startsWith(QLatin1String("@Variant("))) {
        qt4Ids = true;
        offset = 9;
    } else if (value.startsWith(QLatin1String("@DateTime("))) {
        qt4Ids = false;
        offset = 10;
    } else {
        return {};
    }
    return QStringView(value).sliced(offset).toLatin1();
}

}  // namespace

bool IniFileCheck::is_bounded_type(quint32 typeId, bool qt4Ids) {
    switch (typeId) {
        case 0:   // nothing, or in Qt 4 streams an unused text
        case 1:   // bool
        case 2:   // int
        case 3:   // unsigned int
        case 4:   // long long
        case 5:   // unsigned long long
        case 6:   // double
        case 7:   // QChar
        case 10:  // QString, read in bounded steps
        case 12:  // QByteArray, read in bounded steps
        case 14:  // QDate
        case 15:  // QTime
        case TYPE_DATE_TIME:
        case 19:  // QRect
        case 20:  // QRectF
        case 21:  // QSize
        case 22:  // QSizeF
        case 23:  // QLine
        case 24:  // QLineF
        case 25:  // QPoint
        case 26:  // QPointF
        case 67:  // QColor
            return true;
        case 38:  // float in Qt 5 numbering
            return !qt4Ids;
        case 135:  // float in Qt 4 numbering
            return qt4Ids;
        default:  // lists, maps, images, regions, user types: sizes read from the stream
            return false;
    }
}

bool IniFileCheck::is_safe_value(const QString& value) {
    bool qt4Ids = true;
    const QByteArray payload = binary_payload(value, qt4Ids);
    // Shorter than a type id: Qt reads type 0 and nothing after it.
    if (payload.size() < 4) return true;
    const quint32 typeId = qFromBigEndian<quint32>(payload.constData());
    if (!is_bounded_type(typeId, qt4Ids)) return false;
    // Type id, null flag, day, milliseconds, then the kind of time: a named zone would be looked
    // up by a name from the file. The program never stores one.
    constexpr qsizetype specAt = 4 + 1 + 8 + 4;
    return qt4Ids || typeId != TYPE_DATE_TIME || payload.size() <= specAt ||
           payload[specAt] != SPEC_TIME_ZONE;
}

GError IniFileCheck::check(QByteArrayView data) {
    GError result;
    const QMap<QString, QByteArray> sections = split_sections(data);
    for (auto section = sections.cbegin(); section != sections.cend(); ++section) {
        const QByteArrayView text(section.value());
        qsizetype pos = 0;
        Line line;
        while (read_line(text, pos, line)) {
            if (line.equals < 0) continue;
            const QByteArrayView whole = text.sliced(line.start, line.length);
            const qsizetype equals = line.equals - line.start;
            QString single;
            QStringList list;
            const bool isList = unescape_value(whole.sliced(equals + 1), single, list);
            for (const QString& value : isList ? list : QStringList{single}) {
                if (is_safe_value(value)) continue;
                bool qt4Ids = true;
                const QByteArray payload = binary_payload(value, qt4Ids);
                result.set_error(
                    EC_KIR, 1, "IniFileCheck, '$$' holds a binary value of type $ that cannot be read safely",
                    section.key(), QString::fromUtf8(whole.first(equals).trimmed()),
                    qFromBigEndian<quint32>(payload.constData()));
                return result;
            }
        }
    }
    return result;
}

GError IniFileCheck::check_file(const QString& path) {
    GError result;
    QFile file(path);
    if (!file.exists()) return result;
    if (!file.open(QIODevice::ReadOnly)) {
        result.set_error(EC_IO, 20, "IniFileCheck, cannot read '$': $", path, file.errorString());
        return result;
    }
    return check(file.readAll());
}

}  // namespace ki::io
