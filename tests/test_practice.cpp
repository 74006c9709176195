// Practice aids over real level characters: why a trace was rejected, strict judging, the
// marker painted for each reason, and the canvas colours and texts they rely on.
#include <gtest/gtest.h>
#include <ki/qt/GPC.h>
#include <ki/qt/lang.h>

#include <QImage>
#include <QPainter>
#include <glm/geometric.hpp>

#include "LoggedTest.h"
#include "WindowTestKit.h"
#include "app/practice/PracticeMarkers.h"
#include "app/practice/PracticeTexts.h"
#include "app/practice/TraceClassifier.h"

using namespace morvel::practice;
using morvel::Anim;
using morvel::CanvasColors;
using P = glm::vec2;

namespace {

std::vector<P> with(std::vector<P> points, size_t index, P point) {
    points[index] = point;
    return points;
}

// An image of `fill` painted by `paint`, with the painter context's final transform.
template <typename Paint>
std::pair<QImage, QTransform> painted(int w, int h, const QColor& fill, Paint paint) {
    std::pair<QImage, QTransform> result{QImage(w, h, QImage::Format_RGB32), {}};
    result.first.fill(fill);
    QPainter painter(&result.first);
    ki::qt::GPC gpc(painter);
    paint(gpc);
    result.second = gpc.get_transform();
    return result;
}

// Where the marker of `r` must show which colour, in character units; rCircle 140 draws rings
// of radius 35. Crosses mark the learner's own points.
std::vector<std::pair<P, QColor>> probes(const Anim& anim, const Rejection& r, const CanvasColors& c) {
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(r.indexStroke)].pathAnim;
    const auto ring = [&r] { return r.expected + glm::normalize(r.expected - r.point) * 35.0f; };
    switch (r.reason) {
        case Reason::WRONG_STROKE: {
            const P number = anim.strokes[static_cast<size_t>(r.otherStroke)].pathAnim.point_start();
            return {{number + P(PracticeMarkers::NUMBER_RADIUS, 0), c.colorTraceBad}};
        }
        case Reason::START:
            return {{r.point, c.colorTraceBad}, {ring(), c.colorCircleStart}};
        case Reason::END:
            return {{r.point, c.colorTraceBad}, {ring(), c.colorCircleEnd}};
        case Reason::STRAYED:
            return {{r.point, c.colorTraceBad}};
        case Reason::MISSED_PART:
            return {{r.expected + P(35, 0), c.colorCircleEnd}};
        default:
            return {{centre.point_at_length(centre.get_length() / 2), c.colorTraceGood}};  // the arrow
    }
}

}  // namespace

TEST(PracticeClassifier, ReasonsOfRejectedTracesAndTheirMarkers) {
    const Anim yi = character(19968), san = character(19977), shi = character(21313), liu = character(20845),
               da = character(22823);
    // 一 runs from (121,507) to (920,499); these offsets of length exactly 140 point away from its
    // first and last segments, so they measure to the end points.
    const P start(121, 507), end(920, 499), behind(-84, -112), ahead(84, -112), up(0, -1);
    const std::vector<P> line = along(yi.strokes[0]);
    const size_t last = line.size() - 1;
    std::vector<P> strayToEnd = line;
    for (size_t i = 10; i < strayToEnd.size(); ++i) strayToEnd[i] += P(0, -200);
    // The first 30 % of 大's falling stroke, then released at its end: the judge sees only the
    // samples, strict judging also the straight jump, 106 units off the curve.
    std::vector<P> jump = along(da.strokes[1], 0, 0.3f);
    jump.push_back(da.strokes[1].pathAnim.point_end());
    const std::vector<P> liuFlickBack{P(514, 203), P(494, 187), P(494, 187)};
    std::vector<P> liuBackToStart = along(liu.strokes[0]);
    liuBackToStart.back() = liuBackToStart.front();
    const struct {
        const char* name;
        const Anim& anim;
        int stroke;
        std::vector<P> samples;
        Reason reason;
        int sample = -1, other = -1;
        bool strict = false;
        int rCircle = 140;
    } rows[] = {
        {"click stays silent", yi, 0, {line[30], line[31], line[31]}, Reason::NONE},
        {"press exactly on the start circle", yi, 0, with(line, 0, start + behind), Reason::NONE},
        {"press just outside the start circle", yi, 0, with(line, 0, start + behind + up), Reason::START, 0},
        {"move exactly at tolerance stays clean", yi, 0, with(line, 1, start + behind), Reason::NONE},
        {"move just past tolerance strays", yi, 0, with(line, 1, start + behind + up), Reason::STRAYED, 1},
        {"release exactly on the end circle", yi, 0, with(line, last, end + ahead), Reason::NONE},
        {"release outside the end circle", yi, 0, with(line, last, end + ahead + up), Reason::END, int(last)},
        {"first sample outside the corridor reported", yi, 0,
         with(with(line, 3, line[3] + P(0, -200)), 5, line[5] + P(0, -300)), Reason::STRAYED, 3},
        {"a later stroke is the wrong stroke", san, 0, along(san.strokes[2]), Reason::WRONG_STROKE, -1, 2},
        {"stroke already traced is a bad start", san, 1, along(san.strokes[0]), Reason::START, 0},
        {"reversed (also a bad start) is backwards", shi, 0, along(shi.strokes[0], 1, 0), Reason::BACKWARDS},
        {"bad start wins over straying", shi, 1, along(shi.strokes[1], 0, 1, P(200, 0)), Reason::START, 0},
        {"straying wins over a bad end", yi, 0, strayToEnd, Reason::STRAYED, 10},
        {"short backwards flick passes the lenient judge", liu, 0, liuFlickBack, Reason::NONE},
        {"strict: whole centre line passes", liu, 1, along(liu.strokes[1]), Reason::NONE, -1, -1, true},
        {"strict: short backwards flick", liu, 0, liuFlickBack, Reason::TOO_SHORT, -1, -1, true},
        {"strict: just inside both circles, half the length", yi, 0, {start + P(190, 0), end - P(190, 0)},
         Reason::TOO_SHORT, -1, -1, true, 200},
        {"strict: reversed, wide circles", liu, 0, along(liu.strokes[0], 1, 0), Reason::BACKWARDS, -1, -1, true, 200},
        {"strict: released back at the start", liu, 0, liuBackToStart, Reason::BACKWARDS, -1, -1, true, 200},
        {"strict: jump leaves the curve uncovered", da, 1, jump, Reason::MISSED_PART, -1, -1, true, 100},
        {"strict: jump covered at a wider tolerance", da, 1, jump, Reason::NONE, -1, -1, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Rejection r = TraceClassifier::classify(row.anim, row.stroke, row.samples, row.rCircle);
        if (row.strict) {
            ASSERT_FALSE(r.is_rejected());
            r = TraceClassifier::judge_strict(row.anim, row.stroke, row.samples, row.rCircle);
        }
        EXPECT_EQ(r.reason, row.reason);
        EXPECT_EQ(r.otherStroke, row.other);
        EXPECT_EQ(r.indexSample, row.sample);
        EXPECT_EQ(r.point, row.sample < 0 ? P(0, 0) : row.samples.at(static_cast<size_t>(row.sample)));
        if (!r.is_rejected()) continue;
        for (unsigned int theme :
             {CanvasColors::THEME_NORMAL, CanvasColors::THEME_DARK, CanvasColors::THEME_GREEN}) {
            const CanvasColors colors = CanvasColors::for_theme(theme, false);
            const auto [image, toPixel] = painted(800, 800, colors.colorBackground[0], [&](ki::qt::GPC& gpc) {
                gpc.set_matrix(ki::math::matrix_fit_rect(row.anim.viewBox, {0, 0, 800, 800}), false);
                PracticeMarkers::paint_rejection(gpc, row.anim, r, colors, 140);
            });
            for (auto [p, color] : probes(row.anim, r, colors)) {
                color.setAlpha(255);
                EXPECT_TRUE(near_colour(image.pixelColor(toPixel.map(QPointF(p.x, p.y)).toPoint()), color))
                    << "theme " << theme;
            }
            EXPECT_TRUE(near_colour(image.pixelColor(4, 4), colors.colorBackground[0])) << "theme " << theme;
        }
    }
}

TEST(PracticeMarkers, ColoursKeepOutlineAndCirclesReadable) {
    for (unsigned int theme :
         {CanvasColors::THEME_NORMAL, CanvasColors::THEME_DARK, CanvasColors::THEME_GREEN}) {
        SCOPED_TRACE(theme);
        const CanvasColors c = CanvasColors::for_theme(theme, false);
        for (const QColor& background : c.colorBackground) {
            EXPECT_GE(contrast_ratio(c.colorOutline, background), 2.0);
            // Over a traced stroke the circle itself or its halo in the background stands out.
            const double halo = contrast_ratio(background, c.colorDone);
            for (const QColor& circle : {c.colorCircleStart, c.colorCircleEnd}) {
                EXPECT_GE(contrast_ratio(circle, background), 3.0);
                EXPECT_GE(std::max(contrast_ratio(circle, c.colorDone), halo), 3.0);
            }
        }
    }
}

TEST(PracticeMarkers, CaptionStaysInItsCornerAndTextsFollowTheLanguage) {
    const CanvasColors colors = CanvasColors::dark();
    const QImage image = painted(600, 400, Qt::black, [&](ki::qt::GPC& gpc) {
                             gpc.scale(3.0f);  // a canvas transform, which the caption must ignore
                             PracticeMarkers::paint_caption(gpc, {0, 0, 600, 400}, counter_stroke_text(2, 7),
                                                            colors, PracticeMarkers::Corner::TOP_RIGHT);
                         }).first;
    const auto ink = [&](QRect half) {
        return count_pixels(half,
                            [&](QPoint p) { return near_colour(image.pixelColor(p), colors.colorAnim); });
    };
    EXPECT_EQ(ink({0, 0, 300, 400}), 0);
    EXPECT_GT(ink({300, 0, 300, 400}), 20);
    const char* keys[] = {"wrong_stroke", "backwards",    "start",        "strayed",
                          "end",          "too_short",    "missed_part",  "not_smooth",
                          "off_place",    "hook_missing", "turn_missing", "too_long"};
    for (QLocale::Language language : {QLocale::English, QLocale::German, QLocale::Russian}) {
        ki::qt::lang::set_lang(language);
        QStringList sentences;
        for (int i = 0; i < int(std::size(keys)); ++i) {
            const Rejection r{static_cast<Reason>(static_cast<int>(Reason::WRONG_STROKE) + i), 2, 4};
            EXPECT_EQ(reason_key(r.reason), keys[i]);
            EXPECT_FALSE(reason_text(r).isEmpty() || sentences.contains(reason_text(r))) << keys[i];
            sentences << reason_text(r);
        }
        // "That is stroke 5. Stroke 3 comes first.": the stroke traced, then the one due.
        EXPECT_TRUE(sentences[0].indexOf('5') >= 0 && sentences[0].indexOf('5') < sentences[0].indexOf('3'));
    }
    ki::qt::lang::set_lang(QLocale::English);
    EXPECT_EQ(reason_text(Rejection{Reason::WRONG_STROKE, 2, 4}), "That is stroke 5. Stroke 3 comes first.");
}
