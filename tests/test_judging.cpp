// Shape measures of a trace against its stroke and the strict verdict built on them, over real
// level characters and over traces of the seeded generator: the measures row by row, the
// confusion matrix of strict judging on every level, the lenient judge's verdicts unchanged
// through the canvas (and the reasons found for exactly its rejections), and the score card of a
// character.
#include <gtest/gtest.h>

#include <QDir>
#include <cmath>
#include <glm/geometric.hpp>
#include <map>

#include "WindowTestKit.h"
#include "app/practice/ScoreCard.h"
#include "app/practice/TraceClassifier.h"
#include "app/practice/TraceGenerator.h"
#include "app/practice/TraceVerdict.h"
#include "app/stroke/StrokeJudge.h"

using namespace morvel::practice;
using morvel::Anim;
using morvel::AnimStroke;
using P = glm::vec2;

namespace {

constexpr int R = 140;

std::vector<Anim> level(int number) {
    const QDir dir(QString(":/wb/shared-res/zh/%1").arg(number));
    std::vector<Anim> all;
    for (const QString& file : dir.entryList({"*.svg"}, QDir::Files))
        all.push_back(character(file.chopped(4).toInt(), number));
    return all;
}

std::vector<P> straight(P a, P b) {
    std::vector<P> points;
    for (int i = 0; i <= 40; ++i) points.push_back(a + (b - a) * (i / 40.0f));
    return points;
}

bool lenient_accepts(const AnimStroke& stroke, const std::vector<P>& samples, int r = R) {
    morvel::StrokeJudge judge;
    judge.press(samples.front(), stroke, r);
    for (size_t i = 1; i + 1 < samples.size(); ++i) judge.move(samples[i], stroke, r);
    return judge.release(samples.back(), stroke, r) == morvel::StrokeJudge::Verdict::ACCEPTED;
}

}  // namespace

TEST(TraceMeasures, DistancePlacementAndSizeOfRealStrokes) {
    const Anim yi = character(19968), shi = character(21313), wo = character(25105);
    const AnimStroke &yiLine = yi.strokes[0], &shiDown = shi.strokes[1], &woHook = wo.strokes[4];
    const P lift(0, -110);
    std::vector<P> doubled = along(shiDown);
    for (P& p : doubled) p = doubled.front() + (p - doubled.front()) * 2.0f;
    std::vector<P> sparse;
    for (const std::vector<P> dense = along(yiLine); P p : dense)
        if (sparse.size() * 10 <= size_t(&p - dense.data()) || &p == &dense.back()) sparse.push_back(p);
    const struct {
        const char* name;
        const AnimStroke& stroke;
        std::vector<P> samples;
        float frechet, offset, extent;  // frechet and offset in character units
    } rows[] = {
        {"the centre line itself", woHook, along(woHook), 0, 0, 1},
        {"110 units above 一", yiLine, along(yiLine, 0, 1, lift), 110, 110, 1},
        {"reversed 一 is as far as its length", yiLine, along(yiLine, 1, 0), 799, 0, 1},
        {"the first half of 十's down stroke", shiDown, along(shiDown, 0, 0.5f), 441, 211, 0.5f},
        {"十's down stroke twice as long", shiDown, doubled, 844, 422, 2},
        {"一 sampled ten times as sparsely", yiLine, sparse, 0, 0, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TraceMeasures m = measures::measure(row.stroke.pathAnim, row.samples, {0, 0, 1024, 1024});
        EXPECT_NEAR(m.frechet * 1024, row.frechet, 6 + row.frechet * 0.02f);
        EXPECT_NEAR(m.offsetShare * 1024, row.offset, 6 + row.offset * 0.02f);
        EXPECT_NEAR(m.extentRatio, row.extent, 0.03f);
    }
}

TEST(TraceMeasures, SmoothnessHooksAndTurnsOfRealStrokes) {
    const Anim yi = character(19968), le = character(20102), xiao = character(23567), wo = character(25105),
               zhong = character(20013);
    const AnimStroke &yiLine = yi.strokes[0], &leHook = le.strokes[1], &xiaoHook = xiao.strokes[0],
                     &woHook = wo.strokes[4], &zhongTurn = zhong.strokes[1], &zhongDown = zhong.strokes[3];
    const auto wave = [](float share) { return P(0, 10 * std::sin(share * 6.2832f)); };
    // A hook left out: the stroke stops where its hook begins.
    const auto no_hook = [](const AnimStroke& s) {
        const TraceMeasures m = measures::measure(s.pathAnim, along(s), {0, 0, 1024, 1024});
        return along(s, 0, m.bends.at(0).at);
    };
    const struct {
        const char* name;
        const AnimStroke& stroke;
        std::vector<P> samples;
        bool smooth;
        int bends;      // found on the centre line
        bool hookKept;  // the weakest bend kept (true without bends)
        bool hook;      // the weakest bend is a hook
    } rows[] = {
        {"一 with a slow wave of 10 units", yiLine, along(yiLine, 0, 1, {}, wave), true, 0, true, false},
        {"一 as a zigzag of five peaks", yiLine, along(yiLine, 0, 1, {}, zigzag), false, 0, true, false},
        {"了's hook traced", leHook, along(leHook), true, 1, true, true},
        {"了's hook written straight", leHook, no_hook(leHook), true, 1, false, true},
        {"小's hook written straight", xiaoHook, no_hook(xiaoHook), true, 1, false, true},
        {"我's long hook written straight", woHook, no_hook(woHook), true, 1, false, true},
        {"中's 折 traced", zhongTurn, along(zhongTurn), true, 1, true, false},
        {"中's 折 as one straight line", zhongTurn,
         straight(zhongTurn.pathAnim.point_start(), zhongTurn.pathAnim.point_end()), true, 1, false, false},
        {"中's down stroke: the serif at its top is no turn", zhongDown,
         straight(zhongDown.pathAnim.point_start(), zhongDown.pathAnim.point_end()), true, 0, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TraceMeasures m = measures::measure(row.stroke.pathAnim, row.samples, {0, 0, 1024, 1024});
        EXPECT_EQ(m.turningExcess <= TraceVerdict::MAX_TURNING_EXCESS, row.smooth) << m.turningExcess;
        EXPECT_EQ(static_cast<int>(m.bends.size()), row.bends);
        EXPECT_EQ(m.bendKept >= TraceVerdict::MIN_BEND_KEPT, row.hookKept) << m.bendKept;
        EXPECT_EQ(m.weakest_is_hook(), row.hook);
    }
}

// The strict verdict on real characters: each new reason, its marker's points, and the exact
// threshold of placement, which passes.
TEST(TraceVerdict, StrictReasonsOnRealCharacters) {
    const Anim yi = character(19968), le = character(20102), shi = character(21313), zhong = character(20013);
    const AnimStroke &yiLine = yi.strokes[0], &leHook = le.strokes[1];
    const float limit = TraceVerdict::MAX_OFFSET * 1024;
    const Anim wo = character(25105);
    std::vector<P> bigDot =
        along(wo.strokes[6]);  // 我's last dot, 148 units: both ends stay in their circles
    const P middle = measures::centroid(bigDot);
    for (P& p : bigDot) p = middle + (p - middle) * 1.6f;
    const TraceMeasures leBends = measures::measure(leHook.pathAnim, along(leHook), {0, 0, 1024, 1024});
    const struct {
        const char* name;
        const Anim anim;
        int stroke;
        std::vector<P> samples;
        Reason reason;
        int r = R;
    } rows[] = {
        {"一 as a zigzag", yi, 0, along(yiLine, 0, 1, {}, zigzag), Reason::NOT_SMOOTH},
        {"一 half a unit inside the placement limit", yi, 0, along(yiLine, 0, 1, P(0, 0.5f - limit)),
         Reason::NONE},
        {"一 half a unit past the placement limit", yi, 0, along(yiLine, 0, 1, P(0, -0.5f - limit)),
         Reason::OFF_PLACE},
        // Left out, the hook's end is beyond the default tolerance; a wide one lets it through.
        {"了's hook left out, wide tolerance", le, 1, along(leHook, 0, leBends.bends.at(0).at),
         Reason::HOOK_MISSING, 200},
        {"我's dot far too long", wo, 6, bigDot, Reason::TOO_LONG},
        {"十 reversed stays backwards", shi, 0, along(shi.strokes[0], 1, 0), Reason::BACKWARDS},
        // Cutting the corner also moves the trace's centre: the corner is what to change.
        {"中's 折 as one straight line, wide tolerance", zhong, 1,
         straight(zhong.strokes[1].pathAnim.point_start(), zhong.strokes[1].pathAnim.point_end()),
         Reason::TURN_MISSING, 200},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const AnimStroke& stroke = row.anim.strokes[size_t(row.stroke)];
        const bool lenient = lenient_accepts(stroke, row.samples, row.r);
        ASSERT_TRUE(lenient || row.reason == Reason::BACKWARDS);
        const Judgement j = TraceVerdict::judge(row.anim, row.stroke, row.samples, row.r, true, lenient);
        EXPECT_EQ(j.rejection.reason, row.reason);
        EXPECT_EQ(j.accepted, row.reason == Reason::NONE);
        if (row.reason == Reason::OFF_PLACE) {
            EXPECT_LT(
                glm::distance(j.rejection.expected, measures::centroid(measures::resample(stroke.pathAnim))),
                1.0f)
                << "the arrow points at the stroke's centre";
        }
        if (row.reason == Reason::HOOK_MISSING) {
            EXPECT_EQ(j.rejection.expected, leBends.bends[0].point);
        }
        // The lenient judge's verdict is the same judgement without the strict rules.
        const Judgement off = TraceVerdict::judge(row.anim, row.stroke, row.samples, row.r, false, lenient);
        EXPECT_EQ(off.score, j.score);
        EXPECT_EQ(off.accepted, lenient);
    }
}

// The score of a trace: 100 on the centre line, lower with every fault the larger it is, never
// below 0.
TEST(TraceVerdict, ScoreFallsWithEveryFault) {
    const Anim yi = character(19968);
    const AnimStroke& line = yi.strokes[0];
    const auto score = [&](const std::vector<P>& samples) {
        return TraceVerdict::score(measures::measure(line.pathAnim, samples, {0, 0, 1024, 1024}));
    };
    const auto wave = [](float amplitude) {
        return [amplitude](float share) { return P(0, amplitude * std::sin(share * 18.85f)); };
    };
    const auto off = [&](float by) { return along(line, 0, 1, P(0, by)); };
    const struct {
        const char* name;
        std::vector<std::vector<P>> worse;  // each trace worse than the one before
    } rows[] = {
        {"further off", {off(10), off(30), off(50), off(70)}},
        {"wavier", {along(line, 0, 1, {}, wave(5)), along(line, 0, 1, {}, wave(20)), along(line, 0, 1, {}, wave(60))}},
    };
    EXPECT_EQ(score(along(line)), 100);
    for (const auto& row : rows) {
        int before = 100;
        for (const std::vector<P>& samples : row.worse) {
            EXPECT_LT(score(samples), before) << row.name << ", trace " << &samples - row.worse.data();
            before = score(samples);
        }
    }
    EXPECT_GE(score(off(200)), 0);
}

// The matrix the thresholds were chosen on: every stroke of every level, each kind of trace the
// generator makes, judged as the canvas judges with strict judging on.
TEST(TraceVerdict, ConfusionMatrixOfStrictJudgingOnEveryLevel) {
    for (int number = 1; number <= 4; ++number) {
        TraceGenerator generator(0x5EED0000u + static_cast<unsigned>(number));
        std::map<TraceKind, std::pair<int, int>> counts;  // accepted, all
        for (const Anim& anim : level(number)) {
            for (size_t s = 0; s < anim.strokes.size(); ++s) {
                for (TraceKind kind : TRACE_KINDS) {
                    const std::vector<P> samples = generator.trace(anim.strokes[s], kind);
                    if (samples.empty()) continue;
                    auto& [accepted, all] = counts[kind];
                    const bool lenient = lenient_accepts(anim.strokes[s], samples);
                    accepted += TraceVerdict::judge(anim, int(s), samples, R, true, lenient).accepted;
                    ++all;
                }
            }
        }
        for (const auto& [kind, count] : counts) {
            const double share = double(count.first) / count.second;
            // The share of the traces accepted with strict judging.
            EXPECT_TRUE(kind == TraceKind::CAREFUL ? share >= 0.97 : share <= 0.05)
                << "level " << number << ", " << kind_name(kind) << ": " << share << " of " << count.second;
        }
        EXPECT_GT(counts[TraceKind::HOOK_MISSING].second, 50);
        EXPECT_GT(counts[TraceKind::TURN_MISSING].second, 50);
    }
}

// Strict judging off: through the canvas's mouse handlers, every generated trace of every level
// stroke gets the verdict the judge alone gives.
TEST(TraceVerdict, LenientVerdictsThroughTheCanvasAreAsBefore) {
    morvel::CanvasHanzi canvas;
    canvas.resize(700, 700);
    canvas.set_r_circle(R);
    canvas.own_lesson().set_mode_flags(morvel::prog2::MODE_LEARN);
    int accepted = 0, rejected = 0;
    canvas.listenerStrokeLearned += [&accepted]() { ++accepted; };
    canvas.listenerStrokeRejected += [&rejected]() { ++rejected; };
    for (int number = 1; number <= 4; ++number) {
        TraceGenerator generator(0xC0FFEEu + static_cast<unsigned>(number));
        int k = 0;
        for (const Anim& anim : level(number)) {
            canvas.set_anim(anim);
            canvas.own_lesson().select(static_cast<int>(anim.strokes.size()));
            for (size_t s = 0; s < anim.strokes.size(); ++s, ++k) {
                const AnimStroke& stroke = anim.strokes[s];
                const std::vector<P> samples =
                    generator.trace(stroke, TRACE_KINDS[size_t(k) % std::size(TRACE_KINDS)]);
                if (samples.empty()) continue;
                canvas.own_lesson().set_strokes_learned(int(s));
                morvel::StrokeJudge judge;
                std::vector<P> traced;  // as the canvas sees the samples
                const auto send = [&](QEvent::Type type, size_t i) {
                    const QPoint at = to_pixel(&canvas, samples[i]);
                    const P mapped = canvas.map_mouse_point_to_anim(at);
                    traced.push_back(mapped);
                    if (type == QEvent::MouseButtonPress) judge.press(mapped, stroke, R);
                    if (type == QEvent::MouseMove) judge.move(mapped, stroke, R);
                    send_mouse(&canvas, type, at,
                               type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton);
                    return mapped;
                };
                const int before = accepted + rejected, acceptedBefore = accepted;
                send(QEvent::MouseButtonPress, 0);
                for (size_t i = 1; i + 1 < samples.size(); ++i) send(QEvent::MouseMove, i);
                const auto old =
                    judge.release(send(QEvent::MouseButtonRelease, samples.size() - 1), stroke, R);
                using V = morvel::StrokeJudge::Verdict;
                ASSERT_EQ(accepted + rejected - before, old == V::ACCEPTED || old == V::REJECTED ? 1 : 0);
                ASSERT_EQ(accepted - acceptedBefore, old == V::ACCEPTED ? 1 : 0)
                    << "level " << number << ", stroke " << s << ", "
                    << kind_name(TRACE_KINDS[size_t(k) % std::size(TRACE_KINDS)]);
                // A reason is found exactly for the traces the judge rejects.
                ASSERT_EQ(TraceClassifier::classify(anim, int(s), traced, R).is_rejected(), old == V::REJECTED);
            }
        }
    }
    EXPECT_GT(accepted, 1000);
    EXPECT_GT(rejected, 1000);
}

TEST(ScoreCard, CharacterScoreTimeMissesAndWeakestStroke) {
    const struct {
        const char* name;
        int strokes;
        std::vector<std::pair<int, int>> accepted;  // stroke, score
        int misses;
        bool finished;
        int score, weakest;
        double seconds;
    } rows[] = {
        {"nothing yet", 3, {}, 0, false, -1, -1, 0.0},
        {"two of three", 3, {{0, 90}, {1, 70}}, 1, false, 80, 1, 2.0},
        {"all three, the weakest first of equals", 3, {{0, 60}, {1, 90}, {2, 60}}, 2, true, 70, 0, 3.0},
        {"a stroke accepted again counts once", 2, {{0, 40}, {0, 100}, {1, 80}}, 0, true, 90, 1, 3.0},
        {"one stroke is nobody's weakest", 1, {{0, 55}}, 1, true, 55, -1, 1.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ScoreCard card;
        card.reset(row.strokes);
        card.press(1000);
        qint64 at = 1000;
        for (const auto& [stroke, score] : row.accepted) card.accepted(stroke, score, at += 1000);
        for (int i = 0; i < row.misses; ++i) card.missed();
        EXPECT_EQ(card.is_finished(), row.finished);
        EXPECT_EQ(card.character_score(), row.score);
        EXPECT_EQ(card.weakest_stroke(), row.weakest);
        EXPECT_EQ(card.misses(), row.misses);
        EXPECT_DOUBLE_EQ(card.seconds(), row.seconds);
    }
}
