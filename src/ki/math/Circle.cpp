#include <ki/math/Circle.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace ki::math {

bool Circle::contains(glm::vec2 point, float tolerance) const {
    // In double, with a float step at this distance from the origin as slack: a point put on
    // the rim lands up to half a step off it in float, at most angles outwards.
    const double dx = double(point.x) - double(center.x);
    const double dy = double(point.y) - double(center.y);
    const double extent = std::max(std::abs(center.x), std::abs(center.y)) + std::abs(radius);
    const double reach = double(radius) + double(tolerance) + double(FLT_EPSILON) * extent;
    return reach >= 0.0 && dx * dx + dy * dy <= reach * reach;
}

std::string Circle::to_string() const {
    return str::xprintF(0, "center:$, radius:$", center, radius);
}

}  // namespace ki::math
