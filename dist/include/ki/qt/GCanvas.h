#pragma once
// The widget base of every drawing surface: it chooses the coordinate system, sets the
// painter's transform for it and hands painting to one virtual draw().

#include <ki/math/Rect.h>
#include <ki/qt/GPC.h>
#include <ki/qt/GWidget.h>

#include <QColor>
#include <QString>
#include <QTransform>
#include <glm/vec2.hpp>
#include <optional>
#include <string>

class QMouseEvent;
class QPainter;

namespace ki::qt {

namespace coord_system {

/// SCREEN: pixels, y down. CARTESIAN: origin in the centre, y up, the view size fitted whole.
/// NDC: -1..1 across the shorter side, y up. UV: 0..1 across each side, y down.
enum Type : int { SCREEN = 0, CARTESIAN = 1, NDC = 2, UV = 3 };

/// "SCREEN", "CARTESIAN", "NDC", "UV", or "COORDINATE_SYSTEM:<n>" for any other value.
std::string to_string(Type type);

}  // namespace coord_system

/// The pixel size of the surface being painted.
struct ViewPort {
    float width = 0.0f;
    float height = 0.0f;

    std::string to_string() const;
    bool operator==(const ViewPort&) const = default;
};

class GCanvas : public GWidget {
    Q_OBJECT
public:
    explicit GCanvas(QWidget* parent = nullptr);

    /// Paints in the coordinate system's units; `view` is the visible part of that system.
    virtual void draw(GPC& gpc, const math::Rect& view);
    void do_layout(LayoutEvent& ev) override;

    /// Everything paintEvent does, onto any painter whose device is `viewport` big: for
    /// rendering into images.
    void paint_to(QPainter& painter, const ViewPort& viewport);

    void set_coord_system(coord_system::Type type) { coordSystem = type; }
    coord_system::Type get_coord_system() const { return coordSystem; }
    bool is_coord_SCREEN() const { return coordSystem == coord_system::SCREEN; }
    bool is_coord_CARTESIAN() const { return coordSystem == coord_system::CARTESIAN; }
    bool is_coord_NDC() const { return coordSystem == coord_system::NDC; }
    bool is_coord_UV() const { return coordSystem == coord_system::UV; }

    /// The logical size fitted into the widget; CARTESIAN only, both sides above 0.
    void set_view_size(float w, float h);
    glm::vec2 get_view_size() const { return {viewWidth, viewHeight}; }

    void set_clip_enabled(bool on) { clipEnabled = on; }
    bool is_clip_enabled() const { return clipEnabled; }
    /// Logs every paint's viewport and view rectangle.
    void set_debug(bool on) { debug = on; }
    bool is_debug() const { return debug; }

    /// The widget's size in pixels.
    ViewPort get_viewport() const;
    /// The visible rectangle in the current coordinate system (its lowest corner in x, y).
    math::Rect get_view_rect(const ViewPort& viewport) const;
    /// Widget pixels to logical coordinates, and back.
    glm::vec2 convert_to_coord_system(glm::vec2 pixel) const;
    glm::vec2 convert_from_coord_system(glm::vec2 logical) const;
    glm::vec2 pos_from_mouse_event(const QMouseEvent* ev) const;
    /// 1 to 4 counter-clockwise from x >= 0, y >= 0 (points on an axis belong to the quadrant
    /// the axis starts); 0 for a point that is not a number.
    int quadrant_from_point(glm::vec2 p) const;

    void draw_string_screen(GPC& gpc, glm::vec2 p, const QString& text, int size, const QColor& color,
                            TextAlignY align = TextAlignY::BASELINE) const;
    /// A text line's height in logical units.
    float line_height_logical(const GPC& gpc) const;

protected:
    void paintEvent(QPaintEvent* ev) override;

    /// Resets the painter's transform, then sets the one of the coordinate system.
    void setup_transform(GPC& gpc, const ViewPort& viewport) const;

private:
    /// The pixel transform of the coordinate system; nothing for an unknown system.
    std::optional<QTransform> transform_for(const ViewPort& viewport) const;
    /// The logical-to-pixel scale; 1 for SCREEN and when it cannot be told.
    float logical_scale(const ViewPort& viewport) const;

    coord_system::Type coordSystem = coord_system::SCREEN;
    float viewWidth = 2.0f;
    float viewHeight = 2.0f;
    bool clipEnabled = false;
    bool debug = false;
};

}  // namespace ki::qt
