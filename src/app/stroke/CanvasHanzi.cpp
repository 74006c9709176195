#include "app/stroke/CanvasHanzi.h"

#include <ki/log/GLog.h>
#include <ki/store/GNode.h>
#include <ki/str/xprintF.h>

#include <QMouseEvent>
#include <QPainter>
#include <QTabletEvent>
#include <QTimer>
#include <QTouchEvent>
#include <QVariant>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>

#include "app/practice/PracticeMarkers.h"
#include "app/practice/PracticeTexts.h"
#include "app/practice/TraceClassifier.h"
#include "app/practice/TraceVerdict.h"
#include "app/recall/RecallLayer.h"
#include "app/worksheet/GuideGrid.h"

namespace morvel {

using practice::PracticeMarkers;

namespace {

QPen round_pen(const QColor& color, float width) {
    return QPen(QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// Qt makes mouse events of touch and pen input the canvas did not take; the canvas judged
// those strokes already, or left them to the window on purpose.
bool is_synthesised(const QMouseEvent* ev) {
    if (ev->source() != Qt::MouseEventNotSynthesized) return true;
    const QPointingDevice* device = ev->pointingDevice();
    if (device == nullptr) return false;
    using Type = QInputDevice::DeviceType;
    const Type type = device->type();
    return type == Type::TouchScreen || type == Type::Stylus || type == Type::Airbrush || type == Type::Puck;
}

std::int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string mouse_event_to_string(const QMouseEvent* ev) {
    return ki::str::xprintF(0, "type:$, pos:$, button:$, buttons:$", static_cast<int>(ev->type()),
                            ev->position().toPoint(), static_cast<int>(ev->button()), ev->buttons().toInt());
}

}  // namespace

CanvasHanzi::CanvasHanzi(QWidget* parent) : GCanvas(parent) {
    set_name("CanvasHanzi");
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_AcceptTouchEvents);
    ownLesson.set_mode_flags(0);
    ownLesson.set_progress(0.0f);
}

void CanvasHanzi::set_lesson(const prog2::ControlAnim* model) {
    lesson = model != nullptr ? model : &ownLesson;
    update();
}

void CanvasHanzi::set_anim(Anim newAnim) {
    anim = std::move(newAnim);
    if (!anim.viewBox.is_valid() && !anim.strokes.empty())
        ki::pp_warn("CanvasHanzi::set_anim, invalid viewBox:{$}, using $", anim.viewBox, VIEW_BOX_FALLBACK);
    outlines.clear();
    centreLines.clear();
    outlines.reserve(anim.strokes.size());
    centreLines.reserve(anim.strokes.size());
    totalLength = 0.0f;
    for (const AnimStroke& stroke : anim.strokes) {
        outlines.push_back(ki::qt::GPC::math_path_to_painter_path(stroke.pathOutline));
        centreLines.push_back(ki::qt::GPC::math_path_to_painter_path(stroke.pathAnim));
        totalLength += stroke.pathAnim.get_length();
    }
    judge.clear();
    rejection = {};
    markerShown = false;
    ink.clear();
    scoreCard.reset(static_cast<int>(anim.strokes.size()));
    update();
}

void CanvasHanzi::set_show_my_strokes(bool on) {
    showMyStrokes = on;
    update();
}

void CanvasHanzi::set_stroke_numbers(bool on) {
    strokeNumbers = on;
    update();
}

void CanvasHanzi::set_captions(bool on) {
    captions = on;
    update();
}

void CanvasHanzi::set_guide_grid(int grid) {
    guideGrid = grid;
    update();
}

ki::math::Rect CanvasHanzi::get_view_box() const {
    return anim.viewBox.is_valid() ? anim.viewBox : VIEW_BOX_FALLBACK;
}

void CanvasHanzi::set_grid_on(bool on) {
    gridOn = on;
    update();
}

void CanvasHanzi::set_alt_background(bool on) {
    altBackground = on;
    update();
}

void CanvasHanzi::on_change_theme(unsigned int theme, bool osDark) {
    if (theme > CanvasColors::THEME_AUTO)
        ki::pp("CanvasHanzi::on_change_theme, theme:$ has no colours, using normal", theme);
    colors = CanvasColors::for_theme(theme, osDark);
    update();
}

void CanvasHanzi::set_draw_config(unsigned int config) {
    drawConfig = config;
    update();
}

void CanvasHanzi::set_draw_config_bits(unsigned int bits, bool on) {
    set_draw_config(on ? (drawConfig | bits) : (drawConfig & ~bits));
}

void CanvasHanzi::set_r_circle(int radius) {
    if (radius < 1) {
        ki::pp_warn("CanvasHanzi::set_r_circle, invalid radius:$, keeping $", radius, rCircle);
        return;
    }
    rCircle = radius;
    update();
}

bool CanvasHanzi::is_hieroglyphe_drawn() const {
    const int learned = get_strokes_learned();
    return learned >= 1 && learned == static_cast<int>(anim.strokes.size());
}

void CanvasHanzi::clear_path_mouse() {
    judge.clear();
    rejection = {};
    markerShown = false;
    update();
}

const AnimStroke* CanvasHanzi::current_stroke() const {
    const int index = get_strokes_learned();
    if (index < 0 || index >= static_cast<int>(anim.strokes.size())) return nullptr;
    return &anim.strokes[static_cast<size_t>(index)];
}

glm::mat3 CanvasHanzi::anim_matrix(const ki::math::Rect& view) const {
    return ki::math::matrix_fit_rect(get_view_box(), view);
}

glm::vec2 CanvasHanzi::map_point_to_anim(glm::vec2 p) const {
    // Widget rect sides counted inclusively (right - left + 1), as Qt's QRect reports them.
    const QRect r = rect();
    const ki::math::Rect view(0.0f, 0.0f, static_cast<float>(r.right() - r.left() + 1),
                              static_cast<float>(r.bottom() - r.top() + 1));
    const glm::mat3 m = anim_matrix(view);
    if (m[0][0] * m[1][1] - m[0][1] * m[1][0] == 0.0f) {
        ki::pp_warn("CanvasHanzi::map_point_to_anim, transform not invertible");
        return p;
    }
    const glm::vec3 q = glm::inverse(m) * glm::vec3(p, 1.0f);
    return {q.x, q.y};
}

glm::vec2 CanvasHanzi::map_mouse_point_to_anim(QPoint p) const {
    return map_point_to_anim({static_cast<float>(p.x()), static_cast<float>(p.y())});
}

void CanvasHanzi::config_load(const ki::store::GNode& node) {
    ki::pp("CanvasHanzi::config_load");
    const prog2::LessonOptions options = prog2::LessonOptions::load(node);
    drawConfig = options.drawConfig;
    rCircle = options.rCircle;
    update();
}

void CanvasHanzi::config_save(ki::store::GNode& node) const {
    ki::pp("CanvasHanzi::config_save");
    node.set(QStringLiteral("DRAW_CONFIG"), QVariant::fromValue(drawConfig));
    node.set(QStringLiteral("rCircle"), QVariant::fromValue(rCircle));
}

void CanvasHanzi::draw(ki::qt::GPC& gpc, const ki::math::Rect& rect) {
    ki::pp("CanvasHanzi::draw, unicode:$", unicode);
    draw_background(gpc, rect);
    if (anim.strokes.empty()) return;
    gpc.save();
    gpc.set_anti_alias(true);
    gpc.set_matrix(anim_matrix(rect), true);
    if (guideGrid != prog2::LessonOptions::GRID_SQUARES) {
        GuideGridStyle style;
        style.color = colors.colorGrid;
        style.frameWidth = 4.0f;
        style.lineWidth = 3.0f;
        draw_guide_grid(gpc, get_view_box(), guideGrid == prog2::LessonOptions::GRID_MI ? GuideGrid::MI : GuideGrid::TIAN,
                        style);
    }
    if (is_learn_mode()) {
        draw_learning(gpc);
    } else {
        draw_standard(gpc);
        if (strokeNumbers)
            PracticeMarkers::paint_stroke_numbers(gpc, anim, colors, static_cast<int>(anim.strokes.size()));
    }
    gpc.restore();
    if (captions) draw_captions(gpc, rect);
}

QString CanvasHanzi::counter_text() const {
    return practice::counter_text(lesson->state(), is_learn_mode(), is_recall());
}

void CanvasHanzi::draw_captions(ki::qt::GPC& gpc, const ki::math::Rect& rect) const {
    using Corner = PracticeMarkers::Corner;
    PracticeMarkers::paint_caption(gpc, rect, counter_text(), colors, Corner::TOP_LEFT);
    if (!is_learn_mode()) return;
    const QString below =
        lesson->state().is_complete() ? practice::result_text(scoreCard) : practice::reason_text(rejection);
    // From memory, the grade choice takes the bottom.
    const Corner corner = is_recall() && recall->grading ? Corner::TOP_RIGHT : Corner::BOTTOM_LEFT;
    PracticeMarkers::paint_caption(gpc, rect, below, colors, corner);
    if (corner == Corner::TOP_RIGHT) recall::RecallLayer::paint_grades(gpc, rect, *recall, colors);
}

void CanvasHanzi::draw_background(ki::qt::GPC& gpc, const ki::math::Rect& rect) {
    // Painted every frame rather than cached in a pixmap: a fill and some thirty thin rectangles
    // cost less than a frame's worth of memory.
    gpc.fill_rect(rect.x, rect.y, rect.w, rect.h, colors.colorBackground[altBackground ? 1 : 0]);
    if (!gridOn || guideGrid != prog2::LessonOptions::GRID_SQUARES) return;
    // Widget pixels from 0, not scaled with the character: a steady practice paper. One pixel
    // wide rectangles, not lines: a vertical line is rasterised a pixel per row and made the
    // grid a good part of the first frame.
    const QColor& color = colors.colorGrid;
    for (float y = 0.0f; y <= rect.h; y += GRID_SPACING) gpc.fill_rect(rect.x, rect.y + y, rect.w + 1.0f, 1.0f, color);
    for (float x = 0.0f; x <= rect.w; x += GRID_SPACING) gpc.fill_rect(rect.x + x, rect.y, 1.0f, rect.h + 1.0f, color);
}

void CanvasHanzi::fill_outlines(ki::qt::GPC& gpc, int count, const QColor& color) const {
    const int n = std::min(count, static_cast<int>(outlines.size()));
    for (int i = 0; i < n; ++i) gpc.fill_path(outlines[static_cast<size_t>(i)], color);
}

void CanvasHanzi::ink_stroke(ki::qt::GPC& gpc, size_t index, float length, const QPen& ink) const {
    const ki::math::Path& centre = anim.strokes[index].pathAnim;
    // The wide pen clipped by the outline paints the stroke inside its own shape.
    gpc.save();
    gpc.clip_path(outlines[index]);
    if (length >= centre.get_length())
        gpc.stroke_path(centreLines[index], ink);
    else
        gpc.stroke_path(ki::qt::GPC::math_path_to_painter_path(centre.prefix_to_length(length)), ink);
    gpc.restore();
}

void CanvasHanzi::draw_standard(ki::qt::GPC& gpc) const {
    if (anim.strokes.empty()) return;
    const float drawn = totalLength * std::clamp(get_progress(), 0.0f, 100.0f) / 100.0f;
    fill_outlines(gpc, static_cast<int>(outlines.size()), colors.colorOutline);
    const QPen ink = round_pen(colors.colorAnim, WIDTH_INK);
    float acc = 0.0f;
    for (size_t i = 0; i < anim.strokes.size(); ++i) {
        const float length = anim.strokes[i].pathAnim.get_length();
        if (length <= 0.0f) continue;
        const float part = drawn - acc;
        acc += length;
        if (part > 0.0f) ink_stroke(gpc, i, part, ink);
    }
}

unsigned int CanvasHanzi::aids_shown() const {
    // From memory nothing shows the character but what the learner was shown.
    if (is_recall()) return 0;
    const int round = lesson->state().round;
    unsigned int hidden = 0;
    if (round >= 2) hidden |= DRAW_OUTLINE | DRAW_HELPER_LINES;
    if (round >= 3) hidden |= DRAW_HELPER_CIRCLES;
    return drawConfig & ~hidden;
}

void CanvasHanzi::draw_learning(ki::qt::GPC& gpc) const {
    const int count = static_cast<int>(anim.strokes.size());
    if (count == 0) return;
    const bool fromMemory = is_recall();
    const unsigned int aids = aids_shown();
    if ((aids & DRAW_OUTLINE) != 0) fill_outlines(gpc, count, colors.colorOutline);
    if ((aids & DRAW_HELPER_LINES) != 0) {
        const QPen pen = round_pen(colors.colorHelperLines, WIDTH_HELPER_LINES);
        for (const QPainterPath& line : centreLines) gpc.stroke_path(line, pen);
    }
    const int learned = get_strokes_learned();
    if (!fromMemory && learned > 0 && learned <= count) fill_outlines(gpc, learned, colors.colorDone);
    if (fromMemory) recall::RecallLayer::paint_character(gpc, outlines, *recall, learned == count, colors);
    // One stroke is no weakest.
    const bool finished = learned == count && count > 1 && scoreCard.is_finished() && !fromMemory;
    ink.paint(gpc, anim, learned, showMyStrokes || fromMemory, finished ? scoreCard.weakest_stroke() : -1);
    const ki::math::Path& trace = judge.get_path();
    if (!trace.is_empty()) {
        const bool clean = judge.get_errors() == 0 && !rejection.is_rejected();
        const QColor& color = clean ? colors.colorTraceGood : colors.colorTraceBad;
        gpc.stroke_path(ki::qt::GPC::math_path_to_painter_path(trace), round_pen(color, WIDTH_INK));
    }
    // Its markers would point at the hidden strokes.
    if (markerShown && !fromMemory) PracticeMarkers::paint_rejection(gpc, anim, rejection, colors, rCircle);
    // The hint goes over the rejected trace and the marker it answers.
    const float hint = lesson->state().hint;
    if (hint >= 0.0f && learned < count) {
        const size_t index = static_cast<size_t>(learned);
        ink_stroke(gpc, index, anim.strokes[index].pathAnim.get_length() * hint / 100.0f,
                   round_pen(colors.colorAnim, WIDTH_INK));
    }
    const AnimStroke* stroke = current_stroke();
    const bool circles = (aids & DRAW_HELPER_CIRCLES) != 0 && stroke != nullptr;
    if (circles) PracticeMarkers::paint_helper_circles(gpc, *stroke, colors, rCircle, widthCircle);
    if (!strokeNumbers || fromMemory) return;
    PracticeMarkers::paint_stroke_numbers(gpc, anim, colors, learned);
    if (stroke != nullptr)
        PracticeMarkers::paint_number_beside(gpc, anim, learned, colors,
                                             circles ? static_cast<float>(rCircle / 4 + widthCircle) : 0.0f);
}

void CanvasHanzi::mousePressEvent(QMouseEvent* ev) {
    GCanvas::mousePressEvent(ev);
    if (!is_learn_mode() || ev->button() != Qt::LeftButton || is_synthesised(ev)) return;
    // A trace belongs to the canvas; it must not reach the window's swipe handling too.
    if (trace_press(ev->position().toPoint())) ev->accept();
}

void CanvasHanzi::mouseMoveEvent(QMouseEvent* ev) {
    GCanvas::mouseMoveEvent(ev);
    if (!is_learn_mode() || (ev->buttons() & Qt::LeftButton) == 0 || is_synthesised(ev)) return;
    if (trace_move(ev->position().toPoint())) ev->accept();
}

void CanvasHanzi::mouseReleaseEvent(QMouseEvent* ev) {
    GCanvas::mouseReleaseEvent(ev);
    if (!is_learn_mode()) return;
    ki::pp("CanvasHanzi::mouseReleaseEvent, ev:$", mouse_event_to_string(ev));
    if (ev->button() != Qt::LeftButton || is_synthesised(ev)) return;
    if (trace_release(ev->position().toPoint())) ev->accept();
}

void CanvasHanzi::tabletEvent(QTabletEvent* ev) {
    // Ignored, Qt turns the pen into mouse events, which watch mode leaves to the window.
    if (!is_learn_mode()) {
        ev->ignore();
        return;
    }
    const QPoint pixel = ev->position().toPoint();
    if (ev->type() == QEvent::TabletPress && ev->button() == Qt::LeftButton)
        trace_press(pixel);
    else if (ev->type() == QEvent::TabletMove && (ev->buttons() & Qt::LeftButton) != 0)
        trace_move(pixel);
    else if (ev->type() == QEvent::TabletRelease && ev->button() == Qt::LeftButton)
        trace_release(pixel);
    // Accepted, so no mouse event is made from it; hovering moves included.
    ev->accept();
}

bool CanvasHanzi::event(QEvent* ev) {
    switch (ev->type()) {
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TouchCancel:
            touch_event(static_cast<QTouchEvent*>(ev));
            return true;
        default:
            return GCanvas::event(ev);
    }
}

void CanvasHanzi::touch_event(QTouchEvent* ev) {
    if (!is_learn_mode()) {
        touchId = -1;
        ev->ignore();
        return;
    }
    ev->accept();
    const QList<QEventPoint>& points = ev->points();
    if (ev->type() == QEvent::TouchBegin) {
        touchId = -1;
        // Two fingers at once never start an attempt.
        if (points.size() != 1) return;
        touchId = points.front().id();
        trace_press(points.front().position().toPoint());
        return;
    }
    if (touchId < 0) return;
    if (ev->type() == QEvent::TouchCancel || points.size() != 1) {
        ki::pp("CanvasHanzi::touch_event, attempt cancelled, points:$", points.size());
        touchId = -1;
        clear_path_mouse();
        return;
    }
    const QEventPoint& point = points.front();
    if (point.id() != touchId) return;
    if (ev->type() == QEvent::TouchEnd || point.state() == QEventPoint::Released) {
        touchId = -1;
        trace_release(point.position().toPoint());
    } else if (point.state() == QEventPoint::Updated) {
        trace_move(point.position().toPoint());
    }
}

bool CanvasHanzi::trace_press(QPoint pixel) {
    if (get_strokes_learned() < 0) return false;
    const AnimStroke* stroke = current_stroke();
    if (stroke == nullptr) {
        ki::pp("CanvasHanzi::trace_press, no stroke left, indexStroke:$, strokes:$", get_strokes_learned(),
               anim.strokes.size());
        return false;
    }
    // From memory the start is not shown, so the press may be anywhere.
    judge.press(map_mouse_point_to_anim(pixel), *stroke, rCircle, !is_recall());
    // The first stroke again (Again, a further round): a new pass with its own scores and ink.
    if (get_strokes_learned() == 0 && scoreCard.has_accepted()) {
        scoreCard.reset(static_cast<int>(anim.strokes.size()));
        ink.clear();
    }
    scoreCard.press(now_ms());
    rejection = {};
    markerShown = false;
    update();
    return true;
}

bool CanvasHanzi::trace_move(QPoint pixel) {
    const AnimStroke* stroke = current_stroke();
    if (stroke == nullptr) return false;
    judge.move(map_mouse_point_to_anim(pixel), *stroke, rCircle);
    update();
    return true;
}

bool CanvasHanzi::trace_release(QPoint pixel) {
    const AnimStroke* stroke = current_stroke();
    if (stroke == nullptr) return false;
    const glm::vec2 point = map_mouse_point_to_anim(pixel);
    StrokeJudge::Verdict verdict = judge.release(point, *stroke, rCircle);
    const int index = get_strokes_learned();
    if (verdict == StrokeJudge::Verdict::ACCEPTED || verdict == StrokeJudge::Verdict::REJECTED) {
        // From memory the judging is strict whatever the option says.
        const practice::Judgement j = practice::TraceVerdict::judge(
            anim, index, practice::TraceClassifier::samples_of(judge.get_path(), point), rCircle,
            strict || is_recall(), verdict == StrokeJudge::Verdict::ACCEPTED, !is_recall());
        rejection = j.rejection;
        lastScore = j.score;
        if (verdict == StrokeJudge::Verdict::ACCEPTED && !j.accepted)
            verdict = StrokeJudge::Verdict::REJECTED;
        if (verdict == StrokeJudge::Verdict::ACCEPTED) {
            ink.keep(index, judge.get_path());
            scoreCard.accepted(index, j.score, now_ms());
        } else {
            scoreCard.missed();
        }
    }
    markerShown = rejection.is_rejected();
    if (rejection.reason == practice::Reason::WRONG_STROKE) {
        const int count = ++rejectionCount;
        QTimer::singleShot(WRONG_STROKE_MARK_MS, this, [this, count]() {
            if (count != rejectionCount) return;
            markerShown = false;
            update();
        });
    }
    if (verdict == StrokeJudge::Verdict::ACCEPTED && listenerStrokeLearned.has_listener())
        listenerStrokeLearned.fire_event();
    if (verdict == StrokeJudge::Verdict::REJECTED && listenerStrokeRejected.has_listener())
        listenerStrokeRejected.fire_event();
    update();
    return true;
}

}  // namespace morvel
