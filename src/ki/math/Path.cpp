#include <ki/log/GLog.h>
#include <ki/math/Path.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <type_traits>

#include "SvgPathDataParser.h"

namespace ki::math {

namespace {

// Room for the centre lines and most outlines: larger reservations leave the allocator's
// per-thread cache of small blocks and cost more than an occasional regrowth.
constexpr size_t CONTOUR_RESERVE = 16;

}  // namespace

float element_length(const Element& e) {
    return std::visit([](const auto& s) { return s.get_length(); }, e);
}

glm::vec2 element_start(const Element& e) {
    return std::visit([](const auto& s) { return s.point_start(); }, e);
}

glm::vec2 element_end(const Element& e) {
    return std::visit([](const auto& s) { return s.point_end(); }, e);
}

glm::vec2 element_point_at_length(const Element& e, float length) {
    return std::visit([length](const auto& s) { return s.point_at_length(length); }, e);
}

Element element_split_at_length(const Element& e, float length) {
    return std::visit([length](const auto& s) { return Element(s.split_at_length(length)); }, e);
}

float element_distance_to_point(const Element& e, glm::vec2 p) {
    return std::visit([p](const auto& s) { return s.distance_to_point(p); }, e);
}

GSysResult<Path> Path::from_svg_path_data(const QString& data) {
    return SvgPathDataParser(reinterpret_cast<const char16_t*>(data.constData()), data.size()).parse();
}

GSysResult<Path> Path::from_svg_path_data(QLatin1String data) {
    return SvgPathDataParser(reinterpret_cast<const unsigned char*>(data.data()), data.size()).parse();
}

size_t Path::element_count() const {
    size_t n = 0;
    for (const Contour& c : contours) n += c.elements.size();
    return n;
}

float distance_to_path(const Path& path, glm::vec2 p) {
    float best = FLT_MAX;
    for (const Contour& contour : path.get_contours())
        for (const Element& e : contour.elements) best = std::min(best, element_distance_to_point(e, p));
    return best;
}

float Path::distance_to_point(glm::vec2 p) const {
    return distance_to_path(*this, p);
}

glm::vec2 Path::point_start() const {
    if (contours.empty()) {
        pp_warn("Path::point_start, path is empty");
        return {0.0f, 0.0f};
    }
    return contours.front().start;
}

glm::vec2 Path::point_end() const {
    if (contours.empty()) {
        pp_warn("Path::point_end, path is empty");
        return {0.0f, 0.0f};
    }
    const Contour& last = contours.back();
    return last.closed ? last.start : last.point_end();
}

glm::vec2 Path::point_at_length(float l) const {
    if (contours.empty()) {
        pp_warn("Path::point_at_length, path is empty");
        return {0.0f, 0.0f};
    }
    if (!(l > 0.0f)) return point_start();
    for (const Contour& contour : contours) {
        for (size_t i = 0; i < contour.elements.size(); ++i) {
            if (l <= contour.lengths[i]) return element_point_at_length(contour.elements[i], l);
            l -= contour.lengths[i];
        }
    }
    const Contour& last = contours.back();
    return last.point_end();
}

// Measured through the element's own type where the caller knows it, not through a visit.
template <typename E>
void Path::push(Contour& contour, const E& e) {
    float l = 0.0f;
    if constexpr (std::is_same_v<E, Element>)
        l = element_length(e);
    else
        l = e.get_length();
    contour.elements.emplace_back(e);
    contour.lengths.push_back(l);
    contour.length += l;
    length += l;
}

Path Path::prefix_to_length(float l) const {
    Path prefix;
    if (!(l > 0.0f)) return prefix;
    if (l >= length) return *this;
    const Contour* source = nullptr;
    walk_prefix(l, [&](const Contour& contour, size_t i, float part) {
        if (&contour != source) {
            source = &contour;
            prefix.contours.emplace_back().start = contour.start;
        }
        Contour& target = prefix.contours.back();
        const bool whole = part >= contour.lengths[i];
        prefix.push(target, whole ? contour.elements[i] : element_split_at_length(contour.elements[i], part));
        if (whole && i + 1 == contour.elements.size()) target.closed = contour.closed;
    });
    return prefix;
}

void Path::clear() {
    contours.clear();
    length = 0.0f;
}

void Path::move_to(glm::vec2 p) {
    if (!contours.empty() && contours.back().elements.empty() && !contours.back().closed) {
        contours.back().start = p;
        return;
    }
    Contour& c = contours.emplace_back();
    c.start = p;
    c.elements.reserve(CONTOUR_RESERVE);
    c.lengths.reserve(CONTOUR_RESERVE);
}

Contour& Path::open_contour(const char* caller) {
    if (contours.empty()) {
        pp_warn("Path::$, no current point, starting at the origin", caller);
        contours.emplace_back();
    } else if (contours.back().closed) {
        // After a close the next element starts a new contour at the closed one's start.
        const glm::vec2 start = contours.back().start;
        contours.emplace_back().start = start;
    }
    return contours.back();
}

void Path::line_to(glm::vec2 p) {
    Contour& c = open_contour("line_to");
    push(c, Segment(c.point_end(), p));
}

void Path::quad_to(glm::vec2 control, glm::vec2 p) {
    Contour& c = open_contour("quad_to");
    push(c, QuadraticBezier(c.point_end(), control, p));
}

void Path::cubic_to(glm::vec2 control1, glm::vec2 control2, glm::vec2 p) {
    Contour& c = open_contour("cubic_to");
    push(c, CubicBezier(c.point_end(), control1, control2, p));
}

void Path::arc_to(glm::vec2 radii, float xAxisRotationDegrees, bool largeArc, bool sweep, glm::vec2 p) {
    Contour& c = open_contour("arc_to");
    push(c, EllipticArc(c.point_end(), radii, xAxisRotationDegrees, largeArc, sweep, p));
}

void Path::close() {
    if (contours.empty()) {
        pp_warn("Path::close, path is empty");
        return;
    }
    Contour& c = contours.back();
    if (c.closed) return;
    if (c.point_end() != c.start) push(c, Segment(c.point_end(), c.start));
    c.closed = true;
}

std::string Path::to_string() const {
    return str::xprintF(0, "contours:$, elements:$, length:$", contours.size(), element_count(), length);
}

}  // namespace ki::math
