// The d attribute of a stroke file: any text either becomes a path that can be measured, cut
// and searched the way the canvas and the tracing check use it, or is refused with a message
// that names a position inside the text.
#include <ki/math/Path.h>

#include <QRegularExpression>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    const QString d = fuzz::text(data, size);
    ki::GSysResult<ki::math::Path> parsed = ki::math::Path::from_svg_path_data(d);
    if (!parsed.ok()) {
        static const QRegularExpression tail(QStringLiteral(" at position (\\d+)$"));
        const QRegularExpressionMatch match = tail.match(parsed.get_message());
        fuzz::require(match.hasMatch(), "a refusal names the position");
        fuzz::require(match.captured(1).toLongLong() <= d.size(), "the position lies within the text");
        fuzz::require(parsed.value.is_empty(), "a refusal carries no partial path");
        return 0;
    }
    const ki::math::Path& path = parsed.value;
    const float length = path.get_length();
    (void)path.distance_to_point({0.0f, 0.0f});
    (void)path.distance_to_point(path.point_end());
    (void)path.point_start();
    (void)path.point_at_length(length * 0.5f);
    const ki::math::Path half = path.prefix_to_length(length * 0.5f);
    (void)half.get_length();
    (void)path.to_string();
    return 0;
}
