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

bool is_command(QChar c) {
    switch (to_upper(c).unicode()) {
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

bool is_digit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool is_separator(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char(',') || c.isSpace();
}

// The text was scanned as [sign] digits [. digits] [e [sign] digits], all ASCII. Correctly
// rounded like QString::toDouble, which fails the same inputs (out of range, lone sign or dot)
// but goes through the locale machinery and allocates.
double to_double(QStringView text, bool& ok) {
    double value = 0.0;
    if (text.startsWith(QLatin1Char('+'))) text = text.mid(1);
    char small[64];
    std::string large;
    char* chars = small;
    if (text.size() > qsizetype(sizeof(small))) {
        large.resize(size_t(text.size()));
        chars = large.data();
    }
    for (qsizetype i = 0; i < text.size(); ++i) chars[i] = char(text[i].unicode());
    const std::from_chars_result result = std::from_chars(chars, chars + text.size(), value);
    ok = result.ec == std::errc() && result.ptr == chars + text.size();
    return value;
}

}  // namespace

SvgPathDataParser::SvgPathDataParser(const QString& data_) : data(data_) {}

GSysResult<Path> SvgPathDataParser::parse() {
    QString error;
    if (!parse_commands(error)) return GSysResult<Path>::from_error(EC_SVG, PARSE_ERROR, error);
    return GSysResult<Path>(std::move(path));
}

bool SvgPathDataParser::set_error(QString& error, const QString& message) {
    error = QStringLiteral("%1 at position %2").arg(message, QString::number(pos));
    return false;
}

void SvgPathDataParser::skip_separators() {
    while (!at_end() && is_separator(data[pos])) ++pos;
}

bool SvgPathDataParser::at_number_start() const {
    if (at_end()) return false;
    const QChar c = data[pos];
    return is_digit(c) || c == QLatin1Char('+') || c == QLatin1Char('-') || c == QLatin1Char('.');
}

bool SvgPathDataParser::require_contour(QString& error) {
    if (contourOpen) return true;
    return set_error(error, QStringLiteral("Path segment encountered before M/m"));
}

bool SvgPathDataParser::expected_arguments(QChar command, QString& error) {
    skip_separators();
    if (at_number_start()) return true;
    return set_error(error, QStringLiteral("Expected arguments for command '%1'").arg(command));
}

bool SvgPathDataParser::parse_number(double& value, QString& error) {
    skip_separators();
    if (at_end()) return set_error(error, QStringLiteral("Unexpected end of SVG path data"));
    if (!at_number_start()) return set_error(error, QStringLiteral("Expected number"));

    const qsizetype start = pos;
    bool negative = false;
    if (data[pos] == QLatin1Char('+') || data[pos] == QLatin1Char('-'))
        negative = data[pos++] == QLatin1Char('-');
    // The digits as one integer and the power of ten that scales it, gathered while scanning.
    std::uint64_t mantissa = 0;
    int digits = 0;
    int power = 0;
    while (!at_end() && is_digit(data[pos])) {
        mantissa = mantissa * 10 + (data[pos++].unicode() - '0');
        ++digits;
    }
    // A second '.' ends the number: ".5.5" is two numbers.
    if (!at_end() && data[pos] == QLatin1Char('.')) {
        ++pos;
        while (!at_end() && is_digit(data[pos])) {
            mantissa = mantissa * 10 + (data[pos++].unicode() - '0');
            ++digits;
            --power;
        }
    }
    bool exponentFits = true;
    if (digits > 0 && !at_end() && (data[pos] == QLatin1Char('e') || data[pos] == QLatin1Char('E'))) {
        ++pos;
        bool negativeExponent = false;
        if (!at_end() && (data[pos] == QLatin1Char('+') || data[pos] == QLatin1Char('-')))
            negativeExponent = data[pos++] == QLatin1Char('-');
        if (at_end() || !is_digit(data[pos])) return set_error(error, QStringLiteral("Invalid exponent"));
        int exponent = 0;
        for (int exponentDigits = 1; !at_end() && is_digit(data[pos]); ++exponentDigits) {
            if (exponentDigits > 3)
                exponentFits = false;
            else
                exponent = exponent * 10 + (data[pos].unicode() - '0');
            ++pos;
        }
        power += negativeExponent ? -exponent : exponent;
    }

    double v = 0.0;
    bool ok = false;
    if (digits > 0 && digits <= MAX_EXACT_DIGITS && exponentFits && power >= -MAX_EXACT_POWER &&
        power <= MAX_EXACT_POWER) {
        // Up to 15 digits form an exact double and so does a power of ten up to 1e22: one
        // multiplication or division rounds correctly, to the very double of a full conversion.
        v = power < 0 ? double(mantissa) / POW10[-power] : double(mantissa) * POW10[power];
        if (negative) v = -v;
        ok = true;
    } else {
        v = to_double(QStringView(data).mid(start, pos - start), ok);
    }
    // Values are stored as float: one that does not fit would poison every length with inf.
    if (!ok || !std::isfinite(v) || std::abs(v) > double(FLT_MAX))
        return set_error(error, QStringLiteral("Invalid number '%1'").arg(data.mid(start, pos - start)));
    value = v;
    return true;
}

bool SvgPathDataParser::parse_flag(bool& value, QString& error) {
    skip_separators();
    if (at_end()) return set_error(error, QStringLiteral("Unexpected end while reading arc flag"));
    const QChar c = data[pos];
    if (c != QLatin1Char('0') && c != QLatin1Char('1'))
        return set_error(error, QStringLiteral("Arc flag must be 0 or 1, found '%1'").arg(c));
    ++pos;
    value = c == QLatin1Char('1');
    return true;
}

bool SvgPathDataParser::parse_coordinate(float& value, QString& error) {
    double v = 0.0;
    if (!parse_number(v, error)) return false;
    value = float(v);
    return true;
}

bool SvgPathDataParser::parse_point(glm::vec2& point, bool relative, QString& error) {
    if (!parse_coordinate(point.x, error) || !parse_coordinate(point.y, error)) return false;
    if (relative) point += current;
    return true;
}

bool SvgPathDataParser::parse_commands(QString& error) {
    skip_separators();
    if (at_end() || !data[pos].isLetter())
        return set_error(error, QStringLiteral("SVG path must begin with a command"));

    while (true) {
        skip_separators();
        if (at_end()) return true;
        const QChar command = data[pos];
        if (!is_command(command))
            return set_error(error, QStringLiteral("Unsupported SVG path command '%1'").arg(command));
        const QChar upper = to_upper(command);
        if (upper != QLatin1Char('M') && !require_contour(error)) return false;
        ++pos;

        if (upper == QLatin1Char('Z')) {
            path.close();
            current = contourStart;
            lastCommand = upper;
            skip_separators();
            if (!at_end() && !data[pos].isLetter())
                return set_error(error, QStringLiteral("Expected command after Z"));
            continue;
        }

        if (!expected_arguments(command, error)) return false;
        bool firstGroup = true;
        do {
            if (!parse_argument_group(command, firstGroup, error)) return false;
            firstGroup = false;
            skip_separators();
        } while (at_number_start());
    }
}

bool SvgPathDataParser::parse_argument_group(QChar command, bool firstGroup, QString& error) {
    const bool relative = command.isLower();
    const char kind = char(to_upper(command).unicode());
    glm::vec2 p{0.0f, 0.0f};

    switch (kind) {
        case 'M':
            if (!parse_point(p, relative, error)) return false;
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
            if (!parse_point(p, relative, error)) return false;
            path.line_to(p);
            break;
        case 'H':
            if (!parse_coordinate(p.x, error)) return false;
            p = {relative ? current.x + p.x : p.x, current.y};
            path.line_to(p);
            break;
        case 'V':
            if (!parse_coordinate(p.y, error)) return false;
            p = {current.x, relative ? current.y + p.y : p.y};
            path.line_to(p);
            break;
        case 'C': {
            glm::vec2 c1, c2;
            if (!parse_point(c1, relative, error) || !parse_point(c2, relative, error) ||
                !parse_point(p, relative, error))
                return false;
            path.cubic_to(c1, c2, p);
            lastControl = c2;
            break;
        }
        case 'S': {
            const bool follows = lastCommand == QLatin1Char('C') || lastCommand == QLatin1Char('S');
            const glm::vec2 c1 = follows ? 2.0f * current - lastControl : current;
            glm::vec2 c2;
            if (!parse_point(c2, relative, error) || !parse_point(p, relative, error)) return false;
            path.cubic_to(c1, c2, p);
            lastControl = c2;
            break;
        }
        case 'Q': {
            glm::vec2 c;
            if (!parse_point(c, relative, error) || !parse_point(p, relative, error)) return false;
            path.quad_to(c, p);
            lastControl = c;
            break;
        }
        case 'T': {
            const bool follows = lastCommand == QLatin1Char('Q') || lastCommand == QLatin1Char('T');
            const glm::vec2 c = follows ? 2.0f * current - lastControl : current;
            if (!parse_point(p, relative, error)) return false;
            path.quad_to(c, p);
            lastControl = c;
            break;
        }
        case 'A': {
            glm::vec2 radii;
            float rotation = 0.0f;
            bool largeArc = false;
            bool sweep = false;
            if (!parse_coordinate(radii.x, error) || !parse_coordinate(radii.y, error) ||
                !parse_coordinate(rotation, error) || !parse_flag(largeArc, error) ||
                !parse_flag(sweep, error) || !parse_point(p, relative, error))
                return false;
            path.arc_to(radii, rotation, largeArc, sweep, p);
            break;
        }
        default:
            return set_error(error, QStringLiteral("Unsupported SVG path command '%1'").arg(command));
    }
    current = p;
    lastCommand = QChar(QLatin1Char(kind));
    return true;
}

}  // namespace ki::math
