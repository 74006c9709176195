#include <ki/log/GLog.h>
#include <ki/math/Rect.h>
#include <ki/str/xprintF.h>

#include <algorithm>

namespace ki::math {

std::string Rect::to_string() const {
    return str::xprintF(0, "x:$, y:$, w:$, h:$", x, y, w, h);
}

glm::mat3 matrix_fit_rect(const Rect& from, const Rect& to) {
    if (!from.is_valid() || to.w < 0.0f || to.h < 0.0f) {
        pp_warn("matrix_fit_rect, cannot fit from:{$} into to:{$}, using identity", from, to);
        return glm::mat3(1.0f);
    }
    const float scale = std::min(to.w / from.w, to.h / from.h);
    const glm::vec2 translation = to.center() - scale * from.center();
    glm::mat3 m(1.0f);
    m[0][0] = scale;
    m[1][1] = scale;
    m[2][0] = translation.x;
    m[2][1] = translation.y;
    return m;
}

glm::vec2 transform_point(const glm::mat3& m, glm::vec2 p) {
    const glm::vec3 r = m * glm::vec3(p, 1.0f);
    return {r.x, r.y};
}

}  // namespace ki::math
