#pragma once
// Reads SVG path data (the `d` attribute) into a Path. Private to Path::from_svg_path_data.

#include <ki/GError.h>
#include <ki/math/Path.h>

#include <QChar>
#include <QString>
#include <glm/vec2.hpp>

namespace ki::math {

class SvgPathDataParser {
public:
    explicit SvgPathDataParser(const QString& data);

    /// The whole data as a path, or the first error as "<reason> at position <n>".
    GSysResult<Path> parse();

private:
    // Each step returns false after writing the finished message into `error`.
    bool parse_number(double& value, QString& error);
    bool parse_flag(bool& value, QString& error);
    bool require_contour(QString& error);
    bool expected_arguments(QChar command, QString& error);
    bool set_error(QString& error, const QString& message);

    bool parse_commands(QString& error);
    bool parse_argument_group(QChar command, bool firstGroup, QString& error);
    bool parse_coordinate(float& value, QString& error);
    bool parse_point(glm::vec2& point, bool relative, QString& error);
    void skip_separators();
    bool at_end() const { return pos >= data.size(); }
    bool at_number_start() const;

    const QString data;
    qsizetype pos = 0;
    Path path;
    bool contourOpen = false;
    glm::vec2 current{0.0f, 0.0f};
    glm::vec2 contourStart{0.0f, 0.0f};
    // The last control point of the previous curve command, reflected by S and T.
    glm::vec2 lastControl{0.0f, 0.0f};
    QChar lastCommand;
};

}  // namespace ki::math
