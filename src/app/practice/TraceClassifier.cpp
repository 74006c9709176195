#include "app/practice/TraceClassifier.h"

#include <ki/math/Circle.h>

#include <algorithm>
#include <glm/geometric.hpp>

#include "app/stroke/StrokeJudge.h"

namespace morvel::practice {

namespace {

bool in_circle(glm::vec2 center, float radius, glm::vec2 point) {
    return ki::math::Circle{center, radius}.contains(point, StrokeJudge::CIRCLE_TOLERANCE);
}

float polyline_length(std::span<const glm::vec2> points) {
    float length = 0.0f;
    for (size_t i = 1; i < points.size(); ++i) length += glm::distance(points[i - 1], points[i]);
    return length;
}

float distance_to_polyline(std::span<const glm::vec2> points, glm::vec2 p) {
    if (points.size() == 1) return glm::distance(points[0], p);
    float best = glm::distance(points[0], p);
    for (size_t i = 1; i < points.size(); ++i)
        best = std::min(best, ki::math::distance_point_to_segment(p, points[i - 1], points[i]));
    return best;
}

/// The moves of a trace: every sample but the press and the release.
std::span<const glm::vec2> moves_of(std::span<const glm::vec2> samples) {
    return samples.size() < 2 ? std::span<const glm::vec2>{} : samples.subspan(1, samples.size() - 2);
}

Rejection rejection(Reason reason, int indexStroke) {
    Rejection r;
    r.reason = reason;
    r.indexStroke = indexStroke;
    return r;
}

}  // namespace

std::vector<glm::vec2> TraceClassifier::samples_of(const ki::math::Path& trace, glm::vec2 release) {
    std::vector<glm::vec2> samples;
    samples.reserve(trace.element_count() + trace.contour_count() + 1);
    for (const ki::math::Contour& contour : trace.get_contours()) {
        samples.push_back(contour.start);
        for (const ki::math::Element& e : contour.elements) samples.push_back(ki::math::element_end(e));
    }
    samples.push_back(release);
    return samples;
}

bool TraceClassifier::fits(const AnimStroke& stroke, std::span<const glm::vec2> samples, float rCircle,
                           bool needStart) {
    if (samples.size() < 2) return false;
    const ki::math::Path& centre = stroke.pathAnim;
    // The circles first: they are cheap and rule out most strokes of a character.
    if (needStart && !in_circle(centre.point_start(), rCircle, samples.front())) return false;
    if (!in_circle(centre.point_end(), rCircle, samples.back())) return false;
    for (glm::vec2 p : moves_of(samples))
        if (centre.distance_to_point(p) > rCircle) return false;
    return true;
}

Rejection TraceClassifier::classify(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples,
                                    int rCircle, bool needStart) {
    const int count = static_cast<int>(anim.strokes.size());
    if (indexStroke < 0 || indexStroke >= count || samples.size() < 2) return {};
    // The judge measures the trace it keeps, which ends at the last move, not at the release.
    if (polyline_length(samples.first(samples.size() - 1)) < StrokeJudge::MIN_TRACE_LENGTH) return {};
    const float r = static_cast<float>(rCircle);
    const AnimStroke& stroke = anim.strokes[static_cast<size_t>(indexStroke)];
    if (fits(stroke, samples, r, needStart)) return {};

    for (int other = indexStroke + 1; other < count; ++other) {
        if (fits(anim.strokes[static_cast<size_t>(other)], samples, r, needStart)) {
            Rejection result = rejection(Reason::WRONG_STROKE, indexStroke);
            result.otherStroke = other;
            return result;
        }
    }

    const glm::vec2 start = stroke.pathAnim.point_start();
    const glm::vec2 end = stroke.pathAnim.point_end();
    const glm::vec2 press = samples.front();
    const glm::vec2 release = samples.back();
    if (in_circle(end, r, press) && in_circle(start, r, release))
        return rejection(Reason::BACKWARDS, indexStroke);

    if (needStart && !in_circle(start, r, press)) {
        Rejection result = rejection(Reason::START, indexStroke);
        result.indexSample = 0;
        result.point = press;
        result.expected = start;
        return result;
    }
    for (size_t i = 1; i + 1 < samples.size(); ++i) {
        if (stroke.pathAnim.distance_to_point(samples[i]) > r) {
            Rejection result = rejection(Reason::STRAYED, indexStroke);
            result.indexSample = static_cast<int>(i);
            result.point = samples[i];
            return result;
        }
    }
    Rejection result = rejection(Reason::END, indexStroke);
    result.indexSample = static_cast<int>(samples.size() - 1);
    result.point = release;
    result.expected = end;
    return result;
}

Rejection TraceClassifier::judge_strict(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples,
                                        int rCircle) {
    if (indexStroke < 0 || indexStroke >= static_cast<int>(anim.strokes.size()) || samples.empty()) return {};
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(indexStroke)].pathAnim;
    const float length = centre.get_length();
    // Length first: a short flick near one end is "nearer" that end at both press and
    // release, and calling it backwards would be wrong half of the time.
    if (polyline_length(samples) < MIN_SHARE_OF_LENGTH * length)
        return rejection(Reason::TOO_SHORT, indexStroke);

    const glm::vec2 start = centre.point_start();
    const glm::vec2 end = centre.point_end();
    const glm::vec2 press = samples.front();
    const glm::vec2 release = samples.back();
    if (glm::distance(press, start) > glm::distance(press, end) ||
        glm::distance(release, end) > glm::distance(release, start))
        return rejection(Reason::BACKWARDS, indexStroke);

    const float r = static_cast<float>(rCircle);
    for (float at = 0.0f;; at += COVER_STEP) {
        const bool last = at >= length;
        const glm::vec2 p = centre.point_at_length(last ? length : at);
        if (distance_to_polyline(samples, p) > r) {
            Rejection result = rejection(Reason::MISSED_PART, indexStroke);
            result.expected = p;
            return result;
        }
        if (last) break;
    }
    return {};
}

}  // namespace morvel::practice
