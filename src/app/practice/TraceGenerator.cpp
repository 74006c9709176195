#include "app/practice/TraceGenerator.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <numbers>

#include "app/practice/TraceMeasures.h"

namespace morvel::practice {

namespace {

using V = glm::vec2;
constexpr float TAU = 2.0f * std::numbers::pi_v<float>;

/// Centre-line points about this far apart carry every shape the distortions need.
constexpr float DENSE_STEP = 6.0f;
/// A pixel of a canvas about 700 pixels high, in character units.
constexpr float PIXEL = 1.46f;

std::vector<V> dense(const ki::math::Path& path) {
    return measures::resample(path, std::max(16, static_cast<int>(path.get_length() / DENSE_STEP)));
}

std::vector<V> dense_line(V a, V b) {
    return measures::resample(std::vector<V>{a, b},
                              std::max(16, static_cast<int>(glm::distance(a, b) / DENSE_STEP)));
}

/// The first `length` units of `line`.
std::vector<V> prefix(const std::vector<V>& line, float length) {
    std::vector<V> out{line.front()};
    float walked = 0.0f;
    for (size_t i = 1; i < line.size(); ++i) {
        const float piece = glm::distance(line[i - 1], line[i]);
        if (walked + piece >= length) {
            if (piece > 0.0f)
                out.push_back(line[i - 1] + (line[i] - line[i - 1]) * ((length - walked) / piece));
            return out;
        }
        walked += piece;
        out.push_back(line[i]);
    }
    return out;
}

V direction(V from, V to) {
    const V d = to - from;
    return glm::dot(d, d) > 0.0f ? glm::normalize(d) : V(1.0f, 0.0f);
}

/// Longer by `by` units at the end along its last direction, or shorter by -`by`.
std::vector<V> change_end(std::vector<V> line, float by) {
    if (line.size() < 2) return line;
    if (by < 0.0f)
        return prefix(line,
                      std::max(measures::polyline_length(line) + by, 0.5f * measures::polyline_length(line)));
    const V d = direction(line[line.size() - 2], line.back());
    line.push_back(line.back() + d * by);
    return line;
}

std::vector<V> reversed(std::vector<V> line) {
    std::reverse(line.begin(), line.end());
    return line;
}

/// The unit normal at each point, from its neighbours.
std::vector<V> normals(const std::vector<V>& line) {
    std::vector<V> out(line.size());
    for (size_t i = 0; i < line.size(); ++i) {
        const V d = direction(line[i == 0 ? 0 : i - 1], line[std::min(i + 1, line.size() - 1)]);
        out[i] = V(-d.y, d.x);
    }
    return out;
}

/// The share of the length at each point.
std::vector<float> shares(const std::vector<V>& line) {
    std::vector<float> out(line.size(), 0.0f);
    for (size_t i = 1; i < line.size(); ++i) out[i] = out[i - 1] + glm::distance(line[i - 1], line[i]);
    const float total = out.back();
    for (float& s : out) s = total > 0.0f ? s / total : 0.0f;
    return out;
}

}  // namespace

const char* kind_name(TraceKind kind) {
    switch (kind) {
        case TraceKind::CAREFUL:
            return "careful";
        case TraceKind::ZIGZAG:
            return "zigzag";
        case TraceKind::SCRIBBLE:
            return "scribble";
        case TraceKind::OFF_PLACE:
            return "off place";
        case TraceKind::HOOK_MISSING:
            return "hook missing";
        case TraceKind::TURN_MISSING:
            return "turn missing";
        case TraceKind::REVERSED:
            return "reversed";
        case TraceKind::HALF_LENGTH:
            return "half length";
        case TraceKind::TOO_LONG:
            return "too long";
    }
    return "";
}

float TraceGenerator::uniform(float lo, float hi) {
    state += 0x9E3779B97F4A7C15ull;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return lo + (hi - lo) * static_cast<float>(z >> 40) / static_cast<float>(1ull << 24);
}

bool TraceGenerator::applies(TraceKind kind, const AnimStroke& stroke, float side) {
    if (kind != TraceKind::HOOK_MISSING && kind != TraceKind::TURN_MISSING)
        return !stroke.pathAnim.is_empty();
    const std::vector<Bend> bends = measures::bends(measures::resample(stroke.pathAnim), side);
    return std::any_of(bends.begin(), bends.end(),
                       [kind](const Bend& b) { return b.hook == (kind == TraceKind::HOOK_MISSING); });
}

std::vector<glm::vec2> TraceGenerator::trace(const AnimStroke& stroke, TraceKind kind, float side) {
    if (!applies(kind, stroke, side)) return {};
    const ki::math::Path& centre = stroke.pathAnim;
    const float length = centre.get_length();
    std::vector<V> line = dense(centre);
    switch (kind) {
        case TraceKind::HOOK_MISSING: {
            const std::vector<Bend> bends = measures::bends(measures::resample(centre), side);
            const auto hook = std::find_if(bends.begin(), bends.end(), [](const Bend& b) { return b.hook; });
            line = change_end(prefix(line, hook->at * length), uniform(0.0f, 25.0f));
            break;
        }
        case TraceKind::TURN_MISSING:
            line = dense_line(centre.point_start(), centre.point_end());
            break;
        case TraceKind::HALF_LENGTH:
            line = prefix(line, uniform(0.4f, 0.55f) * length);
            break;
        case TraceKind::TOO_LONG: {
            const float scale = uniform(1.8f, 2.2f);
            for (V& p : line) p = line.front() + (p - line.front()) * scale;
            break;
        }
        default:
            break;
    }

    // A hand rounds corners a little.
    for (int pass = 0; pass < 2; ++pass)
        for (size_t i = 1; i + 1 < line.size(); ++i)
            line[i] = (line[i - 1] + 2.0f * line[i] + line[i + 1]) * 0.25f;

    // Ends a little early or late (a trace stopped half way keeps where it stopped).
    const float endError = uniform(-22.0f, 22.0f);
    if (kind != TraceKind::HALF_LENGTH) line = change_end(line, endError);
    line = reversed(change_end(reversed(line), uniform(-18.0f, 18.0f)));

    // Size and place.
    const V middle = measures::centroid(line);
    const float scale = uniform(0.88f, 1.12f);
    const V stretch(scale * uniform(0.96f, 1.04f), scale * uniform(0.96f, 1.04f));
    const float angle = uniform(0.0f, TAU);
    const float away = kind == TraceKind::OFF_PLACE ? uniform(0.105f, 0.125f) : uniform(0.0f, 0.03f);
    const V shift = V(std::cos(angle), std::sin(angle)) * away * side;
    for (V& p : line) p = middle + (p - middle) * stretch + shift;

    // Across the line: a slow wobble always, a zigzag or loops for those kinds.
    const std::vector<V> across = normals(line);
    const std::vector<float> at = shares(line);
    const float wobble = uniform(0.0f, 0.010f) * side;
    const float cycles = uniform(0.3f, 1.5f);
    const float phase = uniform(0.0f, TAU);
    const float zigzag = uniform(0.04f, 0.07f) * side;
    const float peaks = std::floor(uniform(4.0f, 8.0f));
    const float loop = uniform(0.03f, 0.05f) * side;
    const float loops = std::floor(uniform(3.0f, 7.0f));
    std::vector<V> shaped;
    shaped.reserve(line.size() * 4);
    const int substeps = kind == TraceKind::ZIGZAG || kind == TraceKind::SCRIBBLE ? 4 : 1;
    for (size_t i = 0; i < line.size(); ++i) {
        for (int k = 0; k < substeps && (k == 0 || i + 1 < line.size()); ++k) {
            const float f = static_cast<float>(k) / static_cast<float>(substeps);
            const size_t j = std::min(i + 1, line.size() - 1);
            const V base = line[i] + (line[j] - line[i]) * f;
            const float t = at[i] + (at[j] - at[i]) * f;
            const V n = across[i];
            V p = base + n * (wobble * std::sin(TAU * cycles * t + phase));
            if (kind == TraceKind::ZIGZAG) {
                // A triangle wave with `peaks` peaks, zero at both ends.
                const float u = std::fmod(t * peaks, 2.0f);
                p += n * (zigzag * (u < 1.0f ? (u < 0.5f ? 2.0f * u : 2.0f - 2.0f * u)
                                             : (u < 1.5f ? -2.0f * (u - 1.0f) : -2.0f + 2.0f * (u - 1.0f))));
            } else if (kind == TraceKind::SCRIBBLE) {
                const float a = TAU * loops * t;
                const V d(n.y, -n.x);
                p += n * (loop * std::sin(a)) + d * (loop * (std::cos(a) - 1.0f) * 0.8f);
            }
            shaped.push_back(p);
        }
    }

    // Sampled at a varying speed: slow at the ends or in the middle.
    const int count =
        std::max(substeps > 1 ? static_cast<int>(peaks * 10.0f) : 0, static_cast<int>(uniform(25.0f, 70.0f)));
    const float ease = uniform(-0.8f, 0.8f);
    const std::vector<V> even = measures::resample(shaped, 4 * count);
    std::vector<V> samples;
    samples.reserve(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k) {
        const float u = static_cast<float>(k) / static_cast<float>(count - 1);
        const float w = std::clamp(u - ease * std::sin(TAU * u) / TAU, 0.0f, 1.0f);
        V p = even[static_cast<size_t>(std::lround(w * static_cast<float>(even.size() - 1)))];
        p += V(uniform(-0.8f, 0.8f), uniform(-0.8f, 0.8f));
        samples.push_back(glm::round(p / PIXEL) * PIXEL);
    }
    return kind == TraceKind::REVERSED ? reversed(samples) : samples;
}

}  // namespace morvel::practice
