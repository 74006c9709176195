#include "SvgPathDataParser.h"

#include <QStringView>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <system_error>

namespace ki::math {

namespace {

constexpr int PARSE_ERROR = 1;
constexpr int MAX_EXACT_DIGITS = 15;
constexpr int MAX_EXACT_POWER = 22;
constexpr double POW10[MAX_EXACT_POWER + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                               1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                               1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// QChar::toUpper is an out-of-line table lookup; path data is almost always ASCII.
QChar to_upper(QChar c) {
    if (c.unicode() >= 0x80) return c.toUpper();
    return c >= QLatin1Char('a') && c <= QLatin1Char('z') ? QChar(c.unicode() - ('a' - 'A')) : c;
}

bool is_command(QChar upper) {
    switch (upper.unicode()) {
        case 'A':
        case 'C':
        case 'H':
        case 'L':
        case 'M':
        case 'Q':
        case 'S':
        case 'T':
        case 'V':
        case 'Z':
            return true;
        default:
            return false;
    }
}

// The numbers of one argument group of an (upper-case) command.
int argument_count(char kind) {
    switch (kind) {
        case 'H':
        case 'V':
            return 1;
        case 'M':
        case 'L':
        case 'T':
            return 2;
        case 'Q':
        case 'S':
            return 4;
        case 'C':
            return 6;
        default:  // 'A'
            return 7;
    }
}

inline bool is_digit(char32_t c) {
    return c - U'0' <= 9u;
}

// Digits, signs, points and letters lie between ',' and 0x80: one comparison tells them apart.
inline bool is_separator(char32_t c) {
    if (c <= U',') return c == U' ' || c == U',' || (c >= U'\t' && c <= U'\r');
    return c >= 0x80 && QChar::isSpace(c);
}

template <typename Char>
QString text_of(const Char* first, const Char* last) {
    if constexpr (sizeof(Char) == 1)
        return QString::fromLatin1(reinterpret_cast<const char*>(first), last - first);
    else
        return QString(reinterpret_cast<const QChar*>(first), last - first);
}

// The text was scanned as [sign] digits [. digits] [e [sign] digits], all ASCII. Correctly
// rounded like QString::toDouble, which fails the same inputs (out of range, lone sign or dot)
// but goes through the locale machinery and allocates.
template <typename Char>
double to_double(const Char* first, const Char* last, bool& ok) {
    double value = 0.0;
    if (first != last && *first == '+') ++first;
    const auto size = size_t(last - first);
    char small[64];
    std::string large;
    char* chars = small;
    if (size > sizeof(small)) {
        large.resize(size);
        chars = large.data();
    }
    for (size_t i = 0; i < size; ++i) chars[i] = char(first[i]);
    const std::from_chars_result result = std::from_chars(chars, chars + size, value);
    ok = result.ec == std::errc() && result.ptr == chars + size;
    return value;
}

}  // namespace

template <typename Char>
GSysResult<Path> SvgPathDataParser<Char>::parse() {
    if (!parse_commands()) return GSysResult<Path>::from_error(EC_SVG, PARSE_ERROR, error);
    return GSysResult<Path>(std::move(path));
}

template <typename Char>
bool SvgPathDataParser<Char>::fail(const QString& message) {
    error = QStringLiteral("%1 at position %2").arg(message, QString::number(cur - begin));
    return false;
}

template <typename Char>
inline void SvgPathDataParser<Char>::skip_separators() {
    while (cur != end && is_separator(*cur)) ++cur;
}

template <typename Char>
inline bool SvgPathDataParser<Char>::at_number_start() const {
    if (cur == end) return false;
    const char32_t c = *cur;
    return is_digit(c) || c == u'+' || c == u'-' || c == u'.';
}

// Almost every number in path data is a plain decimal of a few digits: it is read here in one
// pass, and anything else (an exponent, many digits, a lone sign or dot) is read again in full.
template <typename Char>
inline bool SvgPathDataParser<Char>::read_number(float& value) {
    // Scanned through a local pointer, which the compiler keeps in a register, and stored back
    // once.
    const Char* p = cur;
    while (p != end && is_separator(*p)) ++p;
    cur = p;
    if (p == end) return fail(QStringLiteral("Unexpected end of SVG path data"));
    bool negative = false;
    if (*p == u'-' || *p == u'+')
        negative = *p++ == u'-';
    else if (!is_digit(*p) && *p != u'.')
        return fail(QStringLiteral("Expected number"));
    // The digits as one integer and the count of those after the point, gathered while
    // scanning.
    std::uint64_t mantissa = 0;
    const Char* const integerStart = p;
    while (p != end && is_digit(*p)) mantissa = mantissa * 10 + (*p++ - u'0');
    qsizetype fraction = 0;
    qsizetype digits = p - integerStart;
    // A second '.' ends the number: ".5.5" is two numbers.
    if (p != end && *p == u'.') {
        const Char* const fractionStart = ++p;
        while (p != end && is_digit(*p)) mantissa = mantissa * 10 + (*p++ - u'0');
        fraction = p - fractionStart;
        digits += fraction;
    }
    if (digits == 0 || digits > MAX_EXACT_DIGITS || fraction > MAX_EXACT_POWER ||
        (p != end && (*p == u'e' || *p == u'E')))
        return read_number_in_full(value);
    // Up to 15 digits form an exact double and so does a power of ten up to 1e22: one division
    // rounds correctly, to the very double of a full conversion. Whole numbers, the most
    // common, need none.
    const double magnitude = fraction == 0 ? double(mantissa) : double(mantissa) / POW10[fraction];
    value = float(negative ? -magnitude : magnitude);
    cur = p;
    return true;
}

template <typename Char>
bool SvgPathDataParser<Char>::read_number_in_full(float& value) {
    const Char* const start = cur;
    bool negative = false;
    if (*cur == u'+' || *cur == u'-') negative = *cur++ == u'-';
    std::uint64_t mantissa = 0;
    int digits = 0;
    int power = 0;
    while (cur != end && is_digit(*cur)) {
        mantissa = mantissa * 10 + (*cur++ - u'0');
        ++digits;
    }
    if (cur != end && *cur == u'.') {
        ++cur;
        while (cur != end && is_digit(*cur)) {
            mantissa = mantissa * 10 + (*cur++ - u'0');
            ++digits;
            --power;
        }
    }
    bool exponentFits = true;
    if (digits > 0 && cur != end && (*cur == u'e' || *cur == u'E')) {
        ++cur;
        bool negativeExponent = false;
        if (cur != end && (*cur == u'+' || *cur == u'-')) negativeExponent = *cur++ == u'-';
        if (cur == end || !is_digit(*cur)) return fail(QStringLiteral("Invalid exponent"));
        int exponent = 0;
        for (int exponentDigits = 1; cur != end && is_digit(*cur); ++exponentDigits) {
            if (exponentDigits > 3)
                exponentFits = false;
            else
                exponent = exponent * 10 + (*cur - u'0');
            ++cur;
        }
        power += negativeExponent ? -exponent : exponent;
    }

    double v = 0.0;
    bool ok = false;
    if (digits > 0 && digits <= MAX_EXACT_DIGITS && exponentFits && power >= -MAX_EXACT_POWER &&
        power <= MAX_EXACT_POWER) {
        v = power < 0 ? double(mantissa) / POW10[-power] : double(mantissa) * POW10[power];
        if (negative) v = -v;
        ok = true;
    } else {
        v = to_double(start, cur, ok);
    }
    // Values are stored as float: one that does not fit would poison every length with inf.
    if (!ok || !std::isfinite(v) || std::abs(v) > double(FLT_MAX))
        return fail(QStringLiteral("Invalid number '%1'").arg(text_of(start, cur)));
    value = float(v);
    return true;
}

template <typename Char>
bool SvgPathDataParser<Char>::read_flag(float& value) {
    skip_separators();
    if (cur == end) return fail(QStringLiteral("Unexpected end while reading arc flag"));
    const char32_t c = *cur;
    if (c != u'0' && c != u'1')
        return fail(QStringLiteral("Arc flag must be 0 or 1, found '%1'").arg(QChar(char16_t(c))));
    ++cur;
    value = c == u'1' ? 1.0f : 0.0f;
    return true;
}

template <typename Char>
bool SvgPathDataParser<Char>::read_numbers(float* values, int count) {
    for (int i = 0; i < count; ++i)
        if (!read_number(values[i])) return false;
    return true;
}

template <typename Char>
bool SvgPathDataParser<Char>::parse_commands() {
    skip_separators();
    if (!at_letter()) return fail(QStringLiteral("SVG path must begin with a command"));

    while (true) {
        skip_separators();
        if (cur == end) return true;
        const QChar command{char16_t(*cur)};
        const QChar upper = to_upper(command);
        if (!is_command(upper)) return fail(QStringLiteral("Unsupported SVG path command '%1'").arg(command));
        if (upper != QLatin1Char('M') && !contourOpen)
            return fail(QStringLiteral("Path segment encountered before M/m"));
        ++cur;
        const char kind = char(upper.unicode());

        if (kind == 'Z') {
            path.close();
            current = contourStart;
            lastCommand = kind;
            skip_separators();
            if (cur != end && !at_letter()) return fail(QStringLiteral("Expected command after Z"));
            continue;
        }

        skip_separators();
        if (!at_number_start())
            return fail(QStringLiteral("Expected arguments for command '%1'").arg(command));
        const bool relative = command.isLower();
        bool firstGroup = true;
        do {
            if (!parse_argument_group(kind, relative, firstGroup)) return false;
            firstGroup = false;
            skip_separators();
        } while (at_number_start());
    }
}

template <typename Char>
bool SvgPathDataParser<Char>::parse_argument_group(char kind, bool relative, bool firstGroup) {
    float v[7];
    // An arc's fourth and fifth arguments are its flags.
    const bool read = kind == 'A'
                          ? read_numbers(v, 3) && read_flag(v[3]) && read_flag(v[4]) && read_numbers(v + 5, 2)
                          : read_numbers(v, argument_count(kind));
    if (!read) return false;
    // Written as a choice, not as the sum with a zero origin, which would turn -0 into +0.
    const auto point = [&](int i) {
        const glm::vec2 given{v[i], v[i + 1]};
        return relative ? given + current : given;
    };
    glm::vec2 p{0.0f, 0.0f};
    switch (kind) {
        case 'M':
            p = point(0);
            // Further pairs after a move are lines, relative when the move was.
            if (firstGroup) {
                path.move_to(p);
                contourStart = p;
                contourOpen = true;
            } else {
                path.line_to(p);
            }
            break;
        case 'L':
            p = point(0);
            path.line_to(p);
            break;
        case 'H':
            p = {relative ? current.x + v[0] : v[0], current.y};
            path.line_to(p);
            break;
        case 'V':
            p = {current.x, relative ? current.y + v[0] : v[0]};
            path.line_to(p);
            break;
        case 'C': {
            const glm::vec2 c2 = point(2);
            p = point(4);
            path.cubic_to(point(0), c2, p);
            lastControl = c2;
            break;
        }
        case 'S': {
            const bool follows = lastCommand == 'C' || lastCommand == 'S';
            const glm::vec2 c2 = point(0);
            p = point(2);
            path.cubic_to(follows ? 2.0f * current - lastControl : current, c2, p);
            lastControl = c2;
            break;
        }
        case 'Q': {
            const glm::vec2 c = point(0);
            p = point(2);
            path.quad_to(c, p);
            lastControl = c;
            break;
        }
        case 'T': {
            const bool follows = lastCommand == 'Q' || lastCommand == 'T';
            const glm::vec2 c = follows ? 2.0f * current - lastControl : current;
            p = point(0);
            path.quad_to(c, p);
            lastControl = c;
            break;
        }
        default:  // 'A', the only command left
            p = point(5);
            path.arc_to({v[0], v[1]}, v[2], v[3] != 0.0f, v[4] != 0.0f, p);
            break;
    }
    current = p;
    lastCommand = kind;
    return true;
}

template class SvgPathDataParser<char16_t>;
template class SvgPathDataParser<unsigned char>;

}  // namespace ki::math
