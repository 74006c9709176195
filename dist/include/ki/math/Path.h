#pragma once
// Path data as a value: contours of line, quadratic, cubic and elliptic-arc elements, with
// their lengths measured once when an element is appended.

#include <ki/GError.h>
#include <ki/math/CubicBezier.h>
#include <ki/math/EllipticArc.h>
#include <ki/math/QuadraticBezier.h>
#include <ki/math/Segment.h>

#include <QLatin1String>
#include <QString>
#include <cstddef>
#include <glm/vec2.hpp>
#include <string>
#include <variant>
#include <vector>

namespace ki::math {

using Element = std::variant<Segment, QuadraticBezier, CubicBezier, EllipticArc>;

float element_length(const Element& e);
glm::vec2 element_start(const Element& e);
glm::vec2 element_end(const Element& e);
glm::vec2 element_point_at_length(const Element& e, float length);
/// The first `length` of the element, as an element of the same kind.
Element element_split_at_length(const Element& e, float length);
float element_distance_to_point(const Element& e, glm::vec2 p);

/// One run of connected elements. Only Path builds contours, so `lengths` (parallel to
/// `elements`) and `length` always match the elements of a contour obtained from a Path.
struct Contour {
    glm::vec2 start{0.0f, 0.0f};
    std::vector<Element> elements;
    std::vector<float> lengths;
    float length = 0.0f;
    /// Ended by a close (SVG Z): the closing line, if one was needed, is the last element.
    bool closed = false;

    glm::vec2 point_end() const { return elements.empty() ? start : element_end(elements.back()); }

    bool operator==(const Contour&) const = default;
};

class Path {
public:
    /// Parses SVG path data (the `d` attribute). The error text is "<reason> at position <n>",
    /// n counting the characters of `data` from 0 up to where reading stopped.
    static GSysResult<Path> from_svg_path_data(const QString& data);
    /// The same for Latin-1 text, read as it is, without a conversion to UTF-16.
    static GSysResult<Path> from_svg_path_data(QLatin1String data);

    /// True when the path has no contours.
    bool is_empty() const { return contours.empty(); }
    size_t contour_count() const { return contours.size(); }
    size_t element_count() const;
    const std::vector<Contour>& get_contours() const { return contours; }

    /// The summed length of every element, cached.
    float get_length() const { return length; }
    /// Distance to the nearest element, curves flattened (see distance_to_path). Allocates
    /// nothing, so it may run on every mouse move.
    float distance_to_point(glm::vec2 p) const;
    /// The start of the first contour; (0, 0) for an empty path.
    glm::vec2 point_start() const;
    /// The current point: the end of the last element, or the contour start after a close or
    /// a bare move_to; (0, 0) for an empty path.
    glm::vec2 point_end() const;
    /// The point `length` along the whole path (contours in order), clamped to its ends.
    glm::vec2 point_at_length(float length) const;
    /// The path up to `length`, spanning contours; the last element reached is cut to fit.
    /// A length of 0 or less gives an empty path.
    Path prefix_to_length(float length) const;
    /// Calls visit(contour, index, part) for each element that the first `length` of the path
    /// covers, in order; `part` is the element's whole length except for a cut last one. What
    /// is left after a whole element within rounding error of the path's length ends the walk:
    /// no sliver of the next element is visited.
    template <typename Visit>
    void walk_prefix(float l, Visit&& visit) const {
        const float slack = length * 1e-5f;
        for (const Contour& contour : contours) {
            for (size_t i = 0; i < contour.elements.size(); ++i) {
                if (!(l > slack)) return;
                visit(contour, i, l < contour.lengths[i] ? l : contour.lengths[i]);
                l -= contour.lengths[i];
            }
        }
    }

    void clear();
    /// Starts a new contour. A move_to right after another one just moves that contour's start.
    void move_to(glm::vec2 p);
    /// The drawing calls below continue from point_end(); on an empty path they log a warning
    /// and start at the origin.
    void line_to(glm::vec2 p);
    void quad_to(glm::vec2 control, glm::vec2 p);
    void cubic_to(glm::vec2 control1, glm::vec2 control2, glm::vec2 p);
    /// An SVG arc from the current point, see EllipticArc.
    void arc_to(glm::vec2 radii, float xAxisRotationDegrees, bool largeArc, bool sweep, glm::vec2 p);
    /// Closes the current contour with a line back to its start when the current point
    /// differs from it. The next drawing call opens a new contour at that start.
    void close();

    /// "contours:$, elements:$, length:$"
    std::string to_string() const;

    bool operator==(const Path&) const = default;

private:
    Contour& open_contour(const char* caller);
    /// Appends `e` (an Element or one of its kinds) with its length.
    template <typename E>
    void push(Contour& contour, const E& e);

    std::vector<Contour> contours;
    float length = 0.0f;
};

/// The smallest distance from `p` to any element of any contour; a line measures to its
/// closest point, a quadratic Bézier to its 32 chords, a cubic Bézier and an arc to their 48.
/// A path without elements gives FLT_MAX.
float distance_to_path(const Path& path, glm::vec2 p);

}  // namespace ki::math
