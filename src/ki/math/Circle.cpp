#include <ki/math/Circle.h>
#include <ki/str/xprintF.h>

#include <glm/geometric.hpp>

namespace ki::math {

bool Circle::contains(glm::vec2 point, float tolerance) const {
    return glm::distance(point, center) <= radius + tolerance;
}

std::string Circle::to_string() const {
    return str::xprintF(0, "center:$, radius:$", center, radius);
}

}  // namespace ki::math
