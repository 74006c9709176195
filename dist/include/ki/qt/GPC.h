#pragma once
// The painter context: a QPainter seen through the framework's geometry types, alive for one
// paint pass. It owns nothing; everything drawn by hand goes through it.

#include <ki/math/Circle.h>
#include <ki/math/CubicBezier.h>
#include <ki/math/EllipticArc.h>
#include <ki/math/Path.h>
#include <ki/math/QuadraticBezier.h>
#include <ki/math/Rect.h>
#include <ki/math/Segment.h>

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QPainterPath>
#include <QPen>
#include <QPoint>
#include <QString>
#include <QTransform>
#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <vector>

class QPainter;

namespace ki::qt {

/// How a pen's width is measured: 0 in device pixels whatever the transform (cosmetic), any
/// other value in logical units, scaling with the transform (geometric).
enum LINE_MODE : unsigned int { LINE_MODE_COSMETIC = 0, LINE_MODE_GEOMETRIC = 1 };

/// Where the given point sits on a line of text.
enum class TextAlignY { TOP, CENTER, BASELINE, BOTTOM };

/// Flags of draw_path(unsigned, ...).
enum PATH_FLAGS : unsigned int {
    PATH_PLAIN = 0,
    PATH_CLOSE_CONTOURS = 1,  ///< close open contours first, so an outline missing its Z still fills whole
};

/// Flags of draw_rect_special.
enum RECT_FLAGS : int {
    RECT_PLAIN = 0,
    RECT_ROUNDED = 1,     ///< corners rounded by an eighth of the shorter side
    RECT_DIAGONALS = 2,   ///< both diagonals drawn too, as on a practice square
    RECT_FILL_LIGHT = 4,  ///< filled with the colour at a quarter of its alpha
};

class GPC {
public:
    explicit GPC(QPainter& painter);
    GPC(const GPC&) = delete;
    GPC& operator=(const GPC&) = delete;

    QPainter& get_painter() { return painter; }

    /// QPen(QBrush(colour), width, style, Qt::SquareCap, Qt::BevelJoin), cosmetic for mode 0.
    static QPen make_pen(const QColor& color, float width, Qt::PenStyle style, LINE_MODE mode);
    static QTransform mat3_to_transform(const glm::mat3& m);

    void set_anti_alias(bool on);
    void set_pen(const QPen& pen);
    void set_pen(const QColor& color, float width, Qt::PenStyle style, LINE_MODE mode);
    void set_brush(const QBrush& brush);
    QFont font() const;
    void set_font_point_size(float size);
    void save();
    void restore();

    void translate(glm::vec2 v);
    void translate(float x, float y);
    void translate(QPoint p);
    void scale(float s);
    void scale(float sx, float sy);
    void shear(float sh, float sv);
    void rotate(float degrees);
    void set_transformation(const QTransform& transform, bool combine);
    /// A 2D affine matrix in glm's column-major convention (translation in m[2]).
    void set_matrix(const glm::mat3& m, bool combine);
    void reset_transform();
    QTransform get_transform() const;

    void fill_rect(float x, float y, float w, float h, const QColor& color);
    void fill_rect(const math::Rect& r, const QColor& color);
    void draw_rect(float x, float y, float w, float h, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode);
    void draw_rect(const math::Rect& r, const QColor& color, float width, Qt::PenStyle style, LINE_MODE mode);
    /// draw_rect with RECT_FLAGS.
    void draw_rect_special(const math::Rect& r, const QColor& color, int flags, float width,
                           Qt::PenStyle style, LINE_MODE mode);

    void draw_line(glm::vec2 a, glm::vec2 b, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode);
    void draw_line(glm::vec2 a, glm::vec2 b, const QPen& pen);
    void draw_line(float x1, float y1, float x2, float y2, const QColor& color, float width,
                   Qt::PenStyle style, LINE_MODE mode);
    void draw_line(const math::Segment& s, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode);
    void draw_line(const math::Segment& s, const QPen& pen);
    /// With the current pen.
    void draw_line_direct(glm::vec2 a, glm::vec2 b);

    void fill_circle(glm::vec2 c, float radius, const QColor& color);
    void fill_circle(float x, float y, float radius, const QColor& color);
    void draw_circle(glm::vec2 c, float radius, const QColor& color, float width, Qt::PenStyle style,
                     LINE_MODE mode);
    void draw_circle(float x, float y, float radius, const QColor& color, float width, Qt::PenStyle style,
                     LINE_MODE mode);
    void draw_circle(const math::Circle& circle, const QColor& color, float width, Qt::PenStyle style,
                     LINE_MODE mode);
    void fill_oval(glm::vec2 c, float rx, float ry, const QColor& color);
    void draw_oval(glm::vec2 c, float rx, float ry, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode);

    void fill_polygon(const std::vector<glm::vec2>& points, const QColor& color);
    /// The closed outline through `points`.
    void draw_polygon(const std::vector<glm::vec2>& points, const QColor& color, float width,
                      Qt::PenStyle style, LINE_MODE mode);

    void draw_bezier_quadratic(const math::QuadraticBezier& q, const QPen& pen);
    void draw_bezier_quadratic(const math::QuadraticBezier& q, const QColor& color, float width,
                               Qt::PenStyle style, LINE_MODE mode);
    /// The first `percent` of the curve's length.
    void draw_bezier_quadratic(const math::QuadraticBezier& q, const QPen& pen, const QBrush& brush,
                               float percent);
    void draw_bezier_cubic(const math::CubicBezier& c, const QPen& pen);
    void draw_bezier_cubic(const math::CubicBezier& c, const QColor& color, float width, Qt::PenStyle style,
                           LINE_MODE mode);
    void draw_bezier_cubic(const math::CubicBezier& c, const QPen& pen, const QBrush& brush, float percent);
    void draw_arc(const math::EllipticArc& a, const QPen& pen);
    void draw_arc(const math::EllipticArc& a, const QColor& color, float width, Qt::PenStyle style,
                  LINE_MODE mode);
    void draw_arc(const math::EllipticArc& a, const QPen& pen, const QBrush& brush, float percent);

    /// Contours become subpaths, closed ones closed; arcs become cubic pieces. Non-zero fill,
    /// as SVG fills by default.
    static QPainterPath math_path_to_painter_path(const math::Path& path);
    /// One element as an open subpath from its start.
    static QPainterPath element_to_painter_path(const math::Element& e);
    void draw_path(const math::Path& path, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode);
    void fill_path(const math::Path& path, const QColor& color);
    void fill_path(const QPainterPath& path, const QColor& color);
    void stroke_path(const QPainterPath& path, const QPen& pen);
    /// Intersects the current clip with the path.
    void clip_path(const math::Path& path);
    void clip_path(const QPainterPath& path);
    /// `flags` are PATH_FLAGS.
    void draw_path(unsigned int flags, const math::Path& path, const QPen& pen, const QBrush& brush);
    /// The first `percent` of the path's total length, element by element; 0 or less draws
    /// nothing, 100 or more the whole path.
    void draw_path(unsigned int flags, const math::Path& path, const QPen& pen, const QBrush& brush,
                   float percent);

    /// The first `percent` of the element's length.
    void draw_geometry_percent(const math::Segment& s, const QPen& pen, const QBrush& brush, float percent);
    void draw_geometry_percent(const math::QuadraticBezier& q, const QPen& pen, const QBrush& brush,
                               float percent);
    void draw_geometry_percent(const math::CubicBezier& c, const QPen& pen, const QBrush& brush,
                               float percent);
    void draw_geometry_percent(const math::EllipticArc& a, const QPen& pen, const QBrush& brush,
                               float percent);
    void draw_geometry_percent(const math::Element& e, const QPen& pen, const QBrush& brush, float percent);

    /// `size` in points (0 keeps the font), aligned vertically against `p` in a y-down frame.
    void draw_text(glm::vec2 p, const QString& text, int size, const QColor& color, TextAlignY align);
    void draw_text(float x, float y, const QString& text, int size, const QColor& color, TextAlignY align);
    /// At the baseline point `p` with the current pen and font.
    void draw_string(glm::vec2 p, const QString& text);
    void draw_string(glm::vec2 p, const char* text);
    /// Text at the pixel that logical `p` maps to, drawn without the transform, so it stays
    /// upright and unscaled in any coordinate system.
    void draw_text_screen(glm::vec2 p, const QString& text, int size, const QColor& color, TextAlignY align);
    /// Advance width and line height in pixels, for the current font.
    glm::vec2 measure_string(const QString& text) const;
    /// The tight bounding box of the text drawn at baseline origin.
    math::Rect measure_string_bounds(const QString& text) const;
    float line_height() const;

private:
    void draw_element(const math::Element& e, const QPen& pen, const QBrush& brush);

    QPainter& painter;
};

}  // namespace ki::qt
