#pragma once
// Reads SVG path data (the `d` attribute) into a Path. Private to Path::from_svg_path_data.

#include <ki/GError.h>
#include <ki/math/Path.h>

#include <QChar>
#include <QString>
#include <glm/vec2.hpp>

namespace ki::math {

/// Reads UTF-16 (`Char` char16_t) or Latin-1 (`Char` unsigned char) text in place: the text
/// must outlive the parser. Positions count characters in both.
template <typename Char>
class SvgPathDataParser {
public:
    SvgPathDataParser(const Char* data, qsizetype size) : begin(data), cur(data), end(data + size) {}

    /// The whole data as a path, or the first error as "<reason> at position <n>".
    GSysResult<Path> parse();

private:
    // Each step returns false after writing the finished message into `error`.
    bool fail(const QString& message);
    bool parse_commands();
    bool parse_argument_group(char kind, bool relative, bool firstGroup);
    bool read_numbers(float* values, int count);
    bool read_number(float& value);
    /// Any number the common form in read_number does not cover, scanned again from `cur`.
    bool read_number_in_full(float& value);
    bool read_flag(float& value);
    void skip_separators();
    bool at_number_start() const;
    bool at_letter() const { return cur != end && QChar(char16_t(*cur)).isLetter(); }

    const Char* const begin;
    const Char* cur;
    const Char* const end;
    QString error;
    Path path;
    bool contourOpen = false;
    glm::vec2 current{0.0f, 0.0f};
    glm::vec2 contourStart{0.0f, 0.0f};
    // The last control point of the previous curve command, reflected by S and T.
    glm::vec2 lastControl{0.0f, 0.0f};
    char lastCommand = 0;
};

}  // namespace ki::math
