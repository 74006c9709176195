#include "app/practice/ScoreCard.h"

#include <algorithm>
#include <cmath>

namespace morvel::practice {

void ScoreCard::reset(int strokeCount) {
    scores.assign(static_cast<size_t>(std::max(0, strokeCount)), -1);
    nMisses = 0;
    startMs = endMs = -1;
}

void ScoreCard::press(std::int64_t ms) {
    if (startMs < 0) startMs = ms;
}

void ScoreCard::accepted(int index, int score, std::int64_t ms) {
    if (index < 0 || index >= static_cast<int>(scores.size())) return;
    scores[static_cast<size_t>(index)] = std::clamp(score, 0, 100);
    if (startMs < 0) startMs = ms;
    endMs = ms;
}

bool ScoreCard::is_finished() const {
    return !scores.empty() && std::none_of(scores.begin(), scores.end(), [](int s) { return s < 0; });
}

bool ScoreCard::has_accepted() const {
    return std::any_of(scores.begin(), scores.end(), [](int s) { return s >= 0; });
}

int ScoreCard::character_score() const {
    int sum = 0, count = 0;
    for (int s : scores)
        if (s >= 0) sum += s, ++count;
    return count == 0 ? -1 : static_cast<int>(std::lround(static_cast<double>(sum) / count));
}

int ScoreCard::weakest_stroke() const {
    int weakest = -1;
    // One stroke is not weaker than anything: naming it would only repeat the score.
    if (scores.size() < 2) return weakest;
    for (size_t i = 0; i < scores.size(); ++i)
        if (scores[i] >= 0 && (weakest < 0 || scores[i] < scores[static_cast<size_t>(weakest)]))
            weakest = static_cast<int>(i);
    return weakest;
}

int ScoreCard::stroke_score(int index) const {
    return index >= 0 && index < static_cast<int>(scores.size()) ? scores[static_cast<size_t>(index)] : -1;
}

double ScoreCard::seconds() const {
    return startMs < 0 || endMs < startMs ? 0.0 : static_cast<double>(endMs - startMs) / 1000.0;
}

}  // namespace morvel::practice
