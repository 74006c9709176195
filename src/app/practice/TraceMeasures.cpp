#include "app/practice/TraceMeasures.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace morvel::practice::measures {

namespace {

float cross(glm::vec2 a, glm::vec2 b) {
    return a.x * b.y - a.y * b.x;
}

/// Sum of the signed turns at points `from` .. `to` (inner points only).
float windowed_turn(std::span<const float> turnAt, int from, int to) {
    float sum = 0.0f;
    const int last = static_cast<int>(turnAt.size());
    for (int i = std::max(1, from); i <= std::min(last, to); ++i) sum += turnAt[static_cast<size_t>(i - 1)];
    return sum;
}

std::vector<glm::vec2> smoothed(std::span<const glm::vec2> points) {
    std::vector<glm::vec2> out(points.begin(), points.end());
    for (size_t i = 1; i + 1 < points.size(); ++i)
        out[i] = (points[i - 1] + 2.0f * points[i] + points[i + 1]) * 0.25f;
    return out;
}

}  // namespace

float polyline_length(std::span<const glm::vec2> points) {
    float length = 0.0f;
    for (size_t i = 1; i < points.size(); ++i) length += glm::distance(points[i - 1], points[i]);
    return length;
}

std::vector<glm::vec2> resample(std::span<const glm::vec2> points, int count) {
    if (points.empty() || count < 2) return {};
    const float length = polyline_length(points);
    std::vector<glm::vec2> out;
    out.reserve(static_cast<size_t>(count));
    if (length <= 0.0f) {
        out.assign(static_cast<size_t>(count), points.front());
        return out;
    }
    const float step = length / static_cast<float>(count - 1);
    out.push_back(points.front());
    size_t segment = 1;
    float before = 0.0f;  // length up to points[segment - 1]
    for (int k = 1; k < count - 1; ++k) {
        const float at = step * static_cast<float>(k);
        while (segment + 1 < points.size() &&
               before + glm::distance(points[segment - 1], points[segment]) < at) {
            before += glm::distance(points[segment - 1], points[segment]);
            ++segment;
        }
        const float piece = glm::distance(points[segment - 1], points[segment]);
        const float t = piece > 0.0f ? std::clamp((at - before) / piece, 0.0f, 1.0f) : 0.0f;
        out.push_back(points[segment - 1] + (points[segment] - points[segment - 1]) * t);
    }
    out.push_back(points.back());
    return out;
}

std::vector<glm::vec2> resample(const ki::math::Path& path, int count) {
    if (path.is_empty() || count < 2) return {};
    const float length = path.get_length();
    std::vector<glm::vec2> out;
    out.reserve(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k)
        out.push_back(path.point_at_length(length * static_cast<float>(k) / static_cast<float>(count - 1)));
    return out;
}

float frechet(std::span<const glm::vec2> a, std::span<const glm::vec2> b) {
    if (a.empty() || b.empty()) return 0.0f;
    // Two rows of the coupling table are enough.
    std::vector<float> previous(b.size()), current(b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        for (size_t j = 0; j < b.size(); ++j) {
            const float d = glm::distance(a[i], b[j]);
            float reach = 0.0f;
            if (i == 0 && j == 0)
                reach = d;
            else if (i == 0)
                reach = std::max(current[j - 1], d);
            else if (j == 0)
                reach = std::max(previous[0], d);
            else
                reach = std::max(std::min({previous[j], previous[j - 1], current[j - 1]}), d);
            current[j] = reach;
        }
        std::swap(previous, current);
    }
    return previous.back();
}

glm::vec2 centroid(std::span<const glm::vec2> points) {
    if (points.empty()) return {0.0f, 0.0f};
    glm::vec2 sum{0.0f, 0.0f};
    for (glm::vec2 p : points) sum += p;
    return sum / static_cast<float>(points.size());
}

float extent(std::span<const glm::vec2> points) {
    if (points.empty()) return EXTENT_FLOOR;
    glm::vec2 lo = points.front(), hi = points.front();
    for (glm::vec2 p : points) {
        lo = glm::min(lo, p);
        hi = glm::max(hi, p);
    }
    return std::max(EXTENT_FLOOR, glm::distance(lo, hi));
}

std::vector<float> turns(std::span<const glm::vec2> points) {
    std::vector<float> out;
    if (points.size() < 3) return out;
    out.reserve(points.size() - 2);
    for (size_t i = 1; i + 1 < points.size(); ++i) {
        const glm::vec2 in = points[i] - points[i - 1];
        const glm::vec2 on = points[i + 1] - points[i];
        const bool still = glm::dot(in, in) == 0.0f || glm::dot(on, on) == 0.0f;
        out.push_back(still ? 0.0f : std::atan2(cross(in, on), glm::dot(in, on)));
    }
    return out;
}

float total_turning(std::span<const glm::vec2> points, float side) {
    const float step = std::max(TURNING_STEP * side, 1e-3f);
    const int count = std::clamp(static_cast<int>(polyline_length(points) / step) + 1, 3, RESAMPLE_COUNT);
    float sum = 0.0f;
    for (float t : turns(smoothed(resample(points, count)))) sum += std::abs(t);
    return sum;
}

std::vector<Bend> bends(std::span<const glm::vec2> centre, float side) {
    std::vector<Bend> found;
    const std::vector<float> turnAt = turns(centre);
    const int inner = static_cast<int>(turnAt.size());
    if (inner == 0) return found;
    const float last = static_cast<float>(centre.size() - 1);
    const float length = polyline_length(centre);
    std::vector<float> window(static_cast<size_t>(inner) + 1, 0.0f);
    for (int i = 1; i <= inner; ++i)
        window[static_cast<size_t>(i)] = windowed_turn(turnAt, i - BEND_WINDOW, i + BEND_WINDOW);
    std::vector<bool> taken(window.size(), false);
    // Strongest first, each claiming its window, so one corner is one bend.
    for (;;) {
        int best = -1;
        for (int i = 1; i <= inner; ++i)
            if (!taken[static_cast<size_t>(i)] &&
                (best < 0 ||
                 std::abs(window[static_cast<size_t>(i)]) > std::abs(window[static_cast<size_t>(best)])))
                best = i;
        if (best < 0 || std::abs(window[static_cast<size_t>(best)]) < BEND_MIN_ANGLE) break;
        for (int i = best - 2 * BEND_WINDOW; i <= best + 2 * BEND_WINDOW; ++i)
            if (i >= 1 && i <= inner) taken[static_cast<size_t>(i)] = true;
        Bend bend;
        bend.at = static_cast<float>(best) / last;
        bend.angle = window[static_cast<size_t>(best)];
        bend.hook = bend.at >= HOOK_FROM;
        bend.point = centre[static_cast<size_t>(best)];
        bend.index = best;
        const float before = bend.at * length, after = (1.0f - bend.at) * length;
        const bool kept = bend.hook ? after >= MIN_HOOK_ARM * side && before >= MIN_TURN_ARM * side
                                    : std::min(before, after) >= MIN_TURN_ARM * side;
        if (kept) found.push_back(bend);
    }
    std::sort(found.begin(), found.end(), [](const Bend& a, const Bend& b) { return a.at < b.at; });
    return found;
}

std::vector<int> matching(std::span<const glm::vec2> a, std::span<const glm::vec2> b) {
    const size_t n = a.size(), m = b.size();
    if (n == 0 || m == 0) return {};
    // The whole table: the pairing is read back from it.
    std::vector<float> cost(n * m);
    const auto at = [&cost, m](size_t i, size_t j) -> float& { return cost[i * m + j]; };
    for (size_t i = 0; i < n; ++i) {
        for (size_t j = 0; j < m; ++j) {
            float before = 0.0f;
            if (i > 0 && j > 0)
                before = std::min({at(i - 1, j), at(i, j - 1), at(i - 1, j - 1)});
            else if (i > 0)
                before = at(i - 1, j);
            else if (j > 0)
                before = at(i, j - 1);
            at(i, j) = before + glm::distance(a[i], b[j]);
        }
    }
    std::vector<int> pairs(m, 0);
    size_t i = n - 1, j = m - 1;
    pairs[j] = static_cast<int>(i);
    while (i > 0 || j > 0) {
        if (i == 0)
            --j;
        else if (j == 0)
            --i;
        else {
            const float diagonal = at(i - 1, j - 1), up = at(i - 1, j), left = at(i, j - 1);
            if (diagonal <= up && diagonal <= left)
                --i, --j;
            else if (up < left)
                --i;
            else
                --j;
        }
        if (pairs[j] == 0) pairs[j] = static_cast<int>(i);
    }
    return pairs;
}

float bend_kept(std::span<const glm::vec2> trace, const Bend& bend, int near) {
    const std::vector<float> turnAt = turns(trace);
    const int inner = static_cast<int>(turnAt.size());
    if (inner == 0 || bend.angle == 0.0f) return 0.0f;
    const int from = std::max(1, near - BEND_SEARCH);
    const int to = std::min(inner, near + BEND_SEARCH);
    const float sign = bend.angle > 0.0f ? 1.0f : -1.0f;
    float best = 0.0f;
    // One point wider than the centre line's window: a hand rounds a corner.
    for (int i = from; i <= to; ++i)
        best = std::max(best, sign * windowed_turn(turnAt, i - BEND_WINDOW - 1, i + BEND_WINDOW + 1));
    return std::clamp(best / std::abs(bend.angle), 0.0f, 1.0f);
}

float hook_kept(std::span<const glm::vec2> trace, std::span<const glm::vec2> centre, const Bend& bend) {
    const size_t at = static_cast<size_t>(bend.index);
    if (trace.size() != centre.size() || at + 1 >= centre.size() || bend.angle == 0.0f) return 0.0f;
    const glm::vec2 want = centre.back() - centre[at];
    if (glm::dot(want, want) == 0.0f) return 0.0f;
    // The trace's last part as long as the hook, measured back from its end, whose end point
    // may be a little early or late: the best of a shorter, an equal and a longer chord counts.
    const float hook = glm::length(want);
    float kept = 0.0f;
    for (const float share : {0.6f, 0.85f, 1.1f}) {
        size_t k = trace.size() - 1;
        while (k > 0 && glm::distance(trace.back(), trace[k]) < share * hook) --k;
        const glm::vec2 got = trace.back() - trace[k];
        if (glm::dot(got, got) == 0.0f) continue;
        const float off = std::abs(std::atan2(cross(got, want), glm::dot(got, want)));
        kept = std::max(kept, 1.0f - off / std::abs(bend.angle));
    }
    return std::clamp(kept, 0.0f, 1.0f);
}

TraceMeasures measure(const ki::math::Path& centre, std::span<const glm::vec2> samples,
                      const ki::math::Rect& box) {
    TraceMeasures m;
    const float side = std::max({box.w, box.h, 1.0f});
    const std::vector<glm::vec2> line = resample(centre);
    const std::vector<glm::vec2> trace = resample(samples);
    if (line.empty() || trace.empty()) return m;
    m.frechet = frechet(trace, line) / side;
    m.centroid = centroid(trace);
    m.offset = m.centroid - centroid(line);
    m.offsetShare = glm::length(m.offset) / side;
    m.extentRatio = extent(trace) / extent(line);
    const float centreLength = centre.get_length();
    m.lengthRatio = centreLength > 0.0f ? polyline_length(samples) / centreLength : 1.0f;
    m.turningExcess = total_turning(samples, side) - total_turning(line, side);
    const std::vector<float> turnAt = turns(trace);
    size_t sharpest = 0;
    for (size_t i = 1; i < turnAt.size(); ++i)
        if (std::abs(turnAt[i]) > std::abs(turnAt[sharpest])) sharpest = i;
    m.sharpestTurn = trace[turnAt.empty() ? 0 : sharpest + 1];
    m.bends = bends(line, side);
    const bool turnsOnly = std::any_of(m.bends.begin(), m.bends.end(), [](const Bend& b) { return !b.hook; });
    const std::vector<int> pairs = turnsOnly ? matching(trace, line) : std::vector<int>{};
    for (size_t b = 0; b < m.bends.size(); ++b) {
        const Bend& bend = m.bends[b];
        const float kept = bend.hook ? hook_kept(trace, line, bend)
                                     : bend_kept(trace, bend, pairs[static_cast<size_t>(bend.index)]);
        if (m.weakestBend < 0 || kept < m.bendKept) {
            m.bendKept = kept;
            m.weakestBend = static_cast<int>(b);
        }
    }
    return m;
}

}  // namespace morvel::practice::measures
