#include "app/worksheet/GuideGrid.h"

#include <ki/qt/GPC.h>

#include <array>
#include <utility>

namespace morvel {

namespace {

constexpr std::array<std::pair<GuideGrid, const char*>, 3> NAMES{{
    {GuideGrid::NONE, "none"},
    {GuideGrid::TIAN, "tian"},
    {GuideGrid::MI, "mi"},
}};

}  // namespace

QString guide_grid_to_string(GuideGrid grid) {
    for (const auto& [value, name] : NAMES)
        if (value == grid) return QString::fromLatin1(name);
    return {};
}

std::optional<GuideGrid> guide_grid_from_string(const QString& name) {
    for (const auto& [value, text] : NAMES)
        if (name == QLatin1String(text)) return value;
    return std::nullopt;
}

void draw_guide_grid(ki::qt::GPC& gpc, const ki::math::Rect& box, GuideGrid grid,
                     const GuideGridStyle& style) {
    const QPen line =
        ki::qt::GPC::make_pen(style.color, style.lineWidth, style.lineStyle, ki::qt::LINE_MODE_GEOMETRIC);
    const glm::vec2 c = box.center();
    if (grid == GuideGrid::TIAN || grid == GuideGrid::MI) {
        gpc.draw_line({box.left(), c.y}, {box.right(), c.y}, line);
        gpc.draw_line({c.x, box.top()}, {c.x, box.bottom()}, line);
    }
    if (grid == GuideGrid::MI) {
        gpc.draw_line({box.left(), box.top()}, {box.right(), box.bottom()}, line);
        gpc.draw_line({box.left(), box.bottom()}, {box.right(), box.top()}, line);
    }
    // The frame last, so the dashes end under a solid edge.
    gpc.draw_rect(box, style.color, style.frameWidth, Qt::SolidLine, ki::qt::LINE_MODE_GEOMETRIC);
}

}  // namespace morvel
