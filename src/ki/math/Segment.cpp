#include <ki/math/Segment.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <glm/geometric.hpp>

namespace ki::math {

float distance_point_to_segment(glm::vec2 p, glm::vec2 a, glm::vec2 b) {
    const glm::vec2 ab = b - a;
    const float len2 = glm::dot(ab, ab);
    if (len2 <= 0.0f) return glm::distance(p, a);
    const float t = std::clamp(glm::dot(p - a, ab) / len2, 0.0f, 1.0f);
    return glm::distance(p, a + t * ab);
}

float Segment::get_length() const {
    return glm::distance(p0, p1);
}

glm::vec2 Segment::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    return p0 + t * (p1 - p0);
}

glm::vec2 Segment::point_at_length(float length) const {
    const float total = get_length();
    if (!(length > 0.0f) || total <= 0.0f) return p0;
    if (length >= total) return p1;
    return point_at(length / total);
}

Segment Segment::split_at_length(float length) const {
    return {p0, point_at_length(length)};
}

float Segment::distance_to_point(glm::vec2 p) const {
    return distance_point_to_segment(p, p0, p1);
}

std::string Segment::to_string() const {
    return str::xprintF(0, "Segment {$} - {$}", p0, p1);
}

}  // namespace ki::math
