#pragma once
// The stroke model of one character: its drawing frame and, in writing order, the outline and
// the centre line of every stroke, built from the character's SVG document.

#include <ki/GError.h>
#include <ki/math/Path.h>
#include <ki/math/Rect.h>

#include <QString>
#include <cstdint>
#include <string>
#include <vector>

namespace ki::xml {
class XNode;
}

namespace morvel {

/// One stroke: the filled shape that bounds it and the centre line drawn along its length.
struct AnimStroke {
    ki::math::Path pathOutline;
    ki::math::Path pathAnim;

    /// Both paths hold at least one contour.
    bool is_valid() const { return !pathOutline.is_empty() && !pathAnim.is_empty(); }
    /// "NO_VALID", or the contour count and length of both paths.
    std::string to_string() const;

    bool operator==(const AnimStroke&) const = default;
};

class Anim {
public:
    /// Stroke files larger than this are refused unread: the shipped ones are a few KB.
    static constexpr std::int64_t MAX_FILE_BYTES = 4 * 1024 * 1024;

    /// The model of `fileName`, built once per name and then served from a process-wide cache.
    /// A document that parses but fails to build is cached empty: its error is reported on the
    /// first load only, later loads succeed with no strokes. Files that cannot be read or
    /// parsed are not cached. Thread-safe.
    static ki::GSysResult<Anim> build_from_file(const QString& fileName);
    /// The model of a parsed document (its root element). Any structural fault fails the whole
    /// build with class EC_KIR, code 30; only a bad viewBox is tolerated (logged, left zero).
    static ki::GSysResult<Anim> build_from_svg(const ki::xml::XNode* xmlSvgDocument);
    /// Empties the cache of build_from_file. For tests, which need loads to start afresh.
    static void clear_cache();

    /// Logs the stroke count and viewBox, then one line per stroke, at debug level.
    void dump(unsigned indent) const;

    bool operator==(const Anim&) const = default;

    std::vector<AnimStroke> strokes;
    /// The SVG coordinate frame of the strokes; all zero when the document has no valid one.
    ki::math::Rect viewBox;
    /// Free for the model's users (the canvas); the builder never sets them.
    int userIndex = -1;
    int userValue = 0;
};

}  // namespace morvel
