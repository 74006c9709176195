// Practice aids: why a trace of a real level character was rejected, strict judging, the
// markers painted for each reason, and the canvas colours they rely on.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GPC.h>
#include <ki/qt/lang.h>

#include <QDir>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <glm/geometric.hpp>
#include <iostream>

#include "app/practice/PracticeMarkers.h"
#include "app/practice/PracticeTexts.h"
#include "app/practice/TraceClassifier.h"
#include "app/stroke/StrokeJudge.h"

using namespace morvel::practice;
using morvel::Anim;
using morvel::CanvasColors;
using P = glm::vec2;

namespace {

Anim character(int unicode) {
    auto result = Anim::build_from_file(QString(":/wb/shared-res/zh/1/%1.svg").arg(unicode));
    EXPECT_TRUE(result.ok()) << result.to_string();
    return result.value;
}

// Samples along the centre line of `stroke` from `from` to `to` (shares of its length), every
// 10 units, shifted by `shift`.
std::vector<P> along(const Anim& anim, int stroke, float from = 0.0f, float to = 1.0f, P shift = {}) {
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(stroke)].pathAnim;
    const float length = centre.get_length();
    const int steps = std::max(2, static_cast<int>(std::abs(to - from) * length / 10.0f));
    std::vector<P> points;
    for (int i = 0; i <= steps; ++i) points.push_back(centre.point_at_length(length * (from + (to - from) * i / steps)) + shift);
    return points;
}

std::vector<P> with(std::vector<P> points, size_t index, P point) {
    points[index] = point;
    return points;
}

const int YI = 19968, SAN = 19977, SHI = 21313, LIU = 20845, DA = 22823;
// 一's centre line starts at (121,507) and ends at (920,499); its first and last segments run
// so that these offsets of length exactly 140 point away from the line.
const P YI_START(121, 507), YI_END(920, 499), BEHIND(-84, -112), AHEAD(84, -112);

struct ClassifyRow {
    const char* name;
    int unicode;
    int stroke;
    std::vector<P> samples;
    Reason reason;
    int other = -1;
    int sample = -1;
    int rCircle = 140;
};

}  // namespace

TEST(PracticeClassifier, ReasonsOfRejectedTracesOfLevelCharacters) {
    const Anim yi = character(YI), san = character(SAN), shi = character(SHI), liu = character(LIU);
    std::vector<P> strayTwice = along(yi, 0);
    strayTwice[3] += P(0, -200);
    strayTwice[5] += P(0, -300);
    std::vector<P> strayToEnd = along(yi, 0);
    for (size_t i = 10; i < strayToEnd.size(); ++i) strayToEnd[i] += P(0, -200);
    const ClassifyRow rows[] = {
        {"clean trace accepted", YI, 0, along(yi, 0), Reason::NONE},
        {"click stays silent", YI, 0, {YI_START + P(200, 0), YI_START + P(210, 10), YI_START + P(212, 10)}, Reason::NONE},
        {"press exactly on the start circle", YI, 0, with(along(yi, 0), 0, YI_START + BEHIND), Reason::NONE},
        {"press just outside the start circle", YI, 0, with(along(yi, 0), 0, YI_START + BEHIND + P(0, -1)), Reason::START, -1, 0},
        {"move exactly at tolerance stays clean", YI, 0, with(along(yi, 0), 1, YI_START + BEHIND), Reason::NONE},
        {"move just past tolerance strays", YI, 0, with(along(yi, 0), 1, YI_START + BEHIND + P(0, -1)), Reason::STRAYED, -1, 1},
        {"release exactly on the end circle", YI, 0, with(along(yi, 0), along(yi, 0).size() - 1, YI_END + AHEAD), Reason::NONE},
        {"release just outside the end circle", YI, 0, with(along(yi, 0), along(yi, 0).size() - 1, YI_END + AHEAD + P(0, -1)), Reason::END, -1, static_cast<int>(along(yi, 0).size() - 1)},
        {"first sample outside the corridor reported", YI, 0, strayTwice, Reason::STRAYED, -1, 3},
        {"trace of a later stroke (also a bad start) is the wrong stroke", SAN, 0, along(san, 2), Reason::WRONG_STROKE, 2},
        {"trace of a stroke already traced is a bad start", SAN, 1, along(san, 0), Reason::START, -1, 0},
        {"reversed trace (also a bad start) is backwards", SHI, 0, along(shi, 0, 1, 0), Reason::BACKWARDS},
        {"reversed vertical stroke is backwards", SHI, 1, along(shi, 1, 1, 0), Reason::BACKWARDS},
        {"bad start wins over straying", SHI, 1, along(shi, 1, 0, 1, P(200, 0)), Reason::START, -1, 0},
        {"straying wins over a bad end", YI, 0, strayToEnd, Reason::STRAYED, -1, 10},
        {"reversed short stroke accepted by the lenient judge", LIU, 0, {P(514, 203), P(494, 187), P(494, 187)}, Reason::NONE},
    };
    for (const ClassifyRow& row : rows) {
        SCOPED_TRACE(row.name);
        const Anim anim = character(row.unicode);
        const Rejection r = TraceClassifier::classify(anim, row.stroke, row.samples, row.rCircle);
        EXPECT_EQ(r.reason, row.reason);
        EXPECT_EQ(r.otherStroke, row.other);
        EXPECT_EQ(r.indexSample, row.sample);
        if (row.sample >= 0) {
            EXPECT_EQ(r.point, row.samples[static_cast<size_t>(row.sample)]);
        }
    }
}

TEST(PracticeClassifier, StrictJudgingOfTracesTheJudgeAccepts) {
    const Anim liu = character(LIU), da = character(DA);
    // Along the first 30 % of 大's long falling stroke, then released at its end: the judge
    // sees only the samples, strict judging also the straight jump, 106 units off the curve.
    std::vector<P> jump = along(da, 1, 0.0f, 0.3f);
    jump.push_back(da.strokes[1].pathAnim.point_end());
    const struct {
        const char* name;
        const Anim& anim;
        int stroke;
        std::vector<P> samples;
        int rCircle;
        Reason reason;
    } rows[] = {
        {"whole centre line passes", liu, 1, along(liu, 1), 140, Reason::NONE},
        {"short backwards flick between the circles", liu, 0, {P(514, 203), P(494, 187), P(494, 187)}, 140, Reason::BACKWARDS},
        {"short forward flick between the circles", liu, 0, {P(494, 187), P(514, 203), P(514, 203)}, 140, Reason::TOO_SHORT},
        {"jump to the end leaves the curve uncovered", da, 1, jump, 100, Reason::MISSED_PART},
        {"the same jump is covered at a wider tolerance", da, 1, jump, 140, Reason::NONE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(TraceClassifier::classify(row.anim, row.stroke, row.samples, row.rCircle).reason, Reason::NONE);
        const Rejection r = TraceClassifier::judge_strict(row.anim, row.stroke, row.samples, row.rCircle);
        EXPECT_EQ(r.reason, row.reason);
        // The point reported missed lies on the centre line, for the marker to sit on it.
        if (r.reason == Reason::MISSED_PART) {
            EXPECT_LT(row.anim.strokes[1].pathAnim.distance_to_point(r.expected), 1.0f);
        }
    }
}

// Over every stroke of the level: a trace is classified as rejected exactly when the judge
// rejects it. Prints how many straight flicks from start to end pass with and without strict
// judging, and of 20-unit flicks halfway, which strict judging must all turn down.
TEST(PracticeClassifier, AgreesWithTheJudgeOnEveryLevelStroke) {
    const unsigned int level = ki::log::get_log_level();
    ki::log::set_log_level(ki::log::LOG_WARN);
    const QDir dir(":/wb/shared-res/zh/1");
    int strokes = 0, lenient[2] = {}, strict[2] = {};
    for (const QString& file : dir.entryList({"*.svg"}, QDir::Files)) {
        const Anim anim = Anim::build_from_file(dir.filePath(file)).value;
        for (int s = 0; s < static_cast<int>(anim.strokes.size()); ++s, ++strokes) {
            const ki::math::Path& centre = anim.strokes[static_cast<size_t>(s)].pathAnim;
            const P start = centre.point_start(), end = centre.point_end();
            std::vector<P> flick;
            for (int i = 0; i <= 20; ++i) flick.push_back(start + (end - start) * (i / 20.0f));
            // 20 units in the stroke's direction, halfway between its ends.
            const P half = (start + end) * 0.5f, step = glm::length(end - start) > 0 ? glm::normalize(end - start) * 10.0f : P(10, 0);
            const std::vector<P> traces[] = {flick, {half - step, half + step, half + step}, along(anim, s, 1, 0),
                                             along(anim, s, 0, 1, P(90, 90)), along(anim, s, 0.2f, 1),
                                             along(anim, (s + 1) % anim.strokes.size())};
            for (const std::vector<P>& trace : traces) {
                morvel::StrokeJudge judge;
                judge.press(trace.front(), anim.strokes[static_cast<size_t>(s)], 140);
                for (size_t i = 1; i + 1 < trace.size(); ++i) judge.move(trace[i], anim.strokes[static_cast<size_t>(s)], 140);
                const auto verdict = judge.release(trace.back(), anim.strokes[static_cast<size_t>(s)], 140);
                const Rejection r = TraceClassifier::classify(anim, s, trace, 140);
                ASSERT_EQ(r.is_rejected(), verdict == morvel::StrokeJudge::Verdict::REJECTED) << file.toStdString() << " stroke " << s;
                const size_t kind = static_cast<size_t>(&trace - traces);
                if (kind > 1 || verdict != morvel::StrokeJudge::Verdict::ACCEPTED) continue;
                ++lenient[kind];
                strict[kind] += !TraceClassifier::judge_strict(anim, s, trace, 140).is_rejected();
            }
        }
    }
    ki::log::set_log_level(static_cast<int>(level));
    std::cout << "of " << strokes << " strokes, flicks from start to end accepted: " << lenient[0] << " lenient, "
              << strict[0] << " strict; 20-unit flicks: " << lenient[1] << " lenient, " << strict[1] << " strict\n";
    EXPECT_EQ(strokes, 521);
    EXPECT_LT(strict[0], lenient[0]);
    EXPECT_EQ(strict[1], 0);
}

namespace {

double luminance(const QColor& c) {
    const auto channel = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

bool near(const QImage& image, QPointF p, QColor color) {
    const QColor got = image.pixelColor(p.toPoint());
    return std::abs(got.red() - color.red()) + std::abs(got.green() - color.green()) +
               std::abs(got.blue() - color.blue()) < 60;
}

QColor opaque(QColor c) {
    c.setAlpha(255);
    return c;
}

}  // namespace

TEST(PracticeMarkers, EachReasonIsMarkedWhereItHappenedInEveryTheme) {
    const Anim yi = character(YI), san = character(SAN), shi = character(SHI), da = character(DA);
    std::vector<P> jump = along(da, 1, 0.0f, 0.3f);
    jump.push_back(da.strokes[1].pathAnim.point_end());
    const ki::math::Path& shiLine = shi.strokes[0].pathAnim;
    const struct {
        const char* name;
        const Anim& anim;
        Rejection rejection;
        // Probes in character units and the colour each must show.
        std::vector<std::pair<P, QColor CanvasColors::*>> probes;
    } rows[] = {
        {"start: press crossed, start ringed", yi, TraceClassifier::classify(yi, 0, with(along(yi, 0), 0, YI_START + P(0, -150)), 140),
         {{YI_START + P(0, -150), &CanvasColors::colorTraceBad}, {YI_START + P(35, 0), &CanvasColors::colorCircleStart}}},
        {"end: release crossed, end ringed", yi, TraceClassifier::classify(yi, 0, with(along(yi, 0), along(yi, 0).size() - 1, YI_END + P(0, -150)), 140),
         {{YI_END + P(0, -150), &CanvasColors::colorTraceBad}, {YI_END + P(0, 35), &CanvasColors::colorCircleEnd}}},
        {"strayed: first sample outside crossed", yi, TraceClassifier::classify(yi, 0, with(along(yi, 0), 5, along(yi, 0)[5] + P(0, -200)), 140),
         {{along(yi, 0)[5] + P(0, -200), &CanvasColors::colorTraceBad}}},
        {"backwards: arrow along the centre line", shi, TraceClassifier::classify(shi, 0, along(shi, 0, 1, 0), 140),
         {{shiLine.point_at_length(shiLine.get_length() / 2), &CanvasColors::colorTraceGood}}},
        {"wrong stroke: both numbers ringed", san, TraceClassifier::classify(san, 0, along(san, 2), 140),
         {{san.strokes[2].pathAnim.point_start() + P(PracticeMarkers::NUMBER_RADIUS, 0), &CanvasColors::colorTraceBad},
          {san.strokes[0].pathAnim.point_start() + P(PracticeMarkers::NUMBER_RADIUS, 0), &CanvasColors::colorCircleStart}}},
        {"missed part: missed point ringed", da, TraceClassifier::judge_strict(da, 1, jump, 100),
         {{TraceClassifier::judge_strict(da, 1, jump, 100).expected + P(0, 35), &CanvasColors::colorCircleEnd}}},
    };
    for (unsigned int theme : {CanvasColors::THEME_NORMAL, CanvasColors::THEME_DARK, CanvasColors::THEME_GREEN}) {
        const CanvasColors colors = CanvasColors::for_theme(theme, false);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.name) + ", theme " + std::to_string(theme));
            ASSERT_TRUE(row.rejection.is_rejected());
            QImage image(800, 800, QImage::Format_RGB32);
            image.fill(colors.colorBackground[0]);
            QPainter painter(&image);
            ki::qt::GPC gpc(painter);
            gpc.set_matrix(ki::math::matrix_fit_rect(row.anim.viewBox, {0, 0, 800, 800}), false);
            PracticeMarkers::paint_rejection(gpc, row.anim, row.rejection, colors, 140);
            const QTransform toPixel = gpc.get_transform();
            painter.end();
            for (const auto& [p, color] : row.probes)
                EXPECT_TRUE(near(image, toPixel.map(QPointF(p.x, p.y)), opaque(colors.*color))) << p.x << "," << p.y;
            EXPECT_TRUE(near(image, {4, 4}, colors.colorBackground[0]));
        }
        // The counter stays in its corner: ink in the top right, none in the left half.
        QImage image(600, 400, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        ki::qt::GPC gpc(painter);
        gpc.scale(3.0f);
        PracticeMarkers::paint_caption(gpc, {0, 0, 600, 400}, counter_stroke_text(2, 7), colors,
                                       PracticeMarkers::Corner::TOP_RIGHT);
        painter.end();
        int inkRight = 0, inkLeft = 0;
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 600; ++x)
                if (near(image, QPointF(x, y), colors.colorAnim)) ++(x < 300 ? inkLeft : inkRight);
        EXPECT_GT(inkRight, 20) << "theme " << theme;
        EXPECT_EQ(inkLeft, 0) << "theme " << theme;
    }
}

TEST(PracticeMarkers, CanvasColoursKeepOutlineAndCirclesReadable) {
    for (unsigned int theme : {CanvasColors::THEME_NORMAL, CanvasColors::THEME_DARK, CanvasColors::THEME_GREEN}) {
        SCOPED_TRACE(theme);
        const CanvasColors c = CanvasColors::for_theme(theme, false);
        for (const QColor& background : c.colorBackground) {
            EXPECT_GE(contrast(c.colorOutline, background), 2.0);
            for (const QColor& circle : {c.colorCircleStart, c.colorCircleEnd}) {
                EXPECT_GE(contrast(circle, background), 3.0);
                // Over a traced stroke the circle itself or its halo in the background stands out.
                EXPECT_GE(std::max(contrast(circle, c.colorDone), contrast(background, c.colorDone)), 3.0);
            }
        }
        EXPECT_EQ(c.colorDone, QColor(Qt::green));
    }
}

TEST(PracticeTexts, EveryReasonHasItsOwnSentenceAndKeyInEachLanguage) {
    const Reason reasons[] = {Reason::WRONG_STROKE, Reason::BACKWARDS, Reason::START, Reason::STRAYED,
                              Reason::END, Reason::TOO_SHORT, Reason::MISSED_PART};
    const char* keys[] = {"wrong_stroke", "backwards", "start", "strayed", "end", "too_short", "missed_part"};
    for (QLocale::Language language : {QLocale::English, QLocale::German, QLocale::Russian}) {
        ki::qt::lang::set_lang(language);
        QStringList sentences;
        for (size_t i = 0; i < std::size(reasons); ++i) {
            EXPECT_EQ(reason_key(reasons[i]), keys[i]);
            EXPECT_EQ(reason_from_key(keys[i]), reasons[i]);
            Rejection r{reasons[i], 2, 4};
            const QString sentence = reason_text(r);
            EXPECT_FALSE(sentence.isEmpty() || sentences.contains(sentence)) << keys[i];
            sentences << sentence;
        }
        EXPECT_TRUE(sentences[0].contains('5') && sentences[0].indexOf('5') < sentences[0].indexOf('3'));
        EXPECT_TRUE(counter_stroke_text(2, 7).contains('3') && counter_round_text(2, 3).contains('2'));
        EXPECT_FALSE(label_text(PracticeLabel::AGAIN).isEmpty());
    }
    ki::qt::lang::set_lang(QLocale::English);
    EXPECT_EQ(reason_text(Rejection{Reason::WRONG_STROKE, 2, 4}), "That is stroke 5. Stroke 3 comes first.");
    EXPECT_EQ(counter_stroke_text(2, 7), "Stroke 3 of 7");
    EXPECT_EQ(reason_from_key("unknown"), Reason::NONE);
}
