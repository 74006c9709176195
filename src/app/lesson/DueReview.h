#pragma once
// Review of due characters over the practice history: which due character Previous and Next
// lead to, and what the due label says. Switched off, or while the history is closed, it names
// no character and the label is hidden.

#include <QString>
#include <functional>
#include <vector>

namespace morvel::progress {
class LessonRecorder;
}

namespace morvel::prog2 {

class DueReview {
public:
    /// `recorder` must outlive this; `codePoints` answers the shown level's characters in order.
    DueReview(progress::LessonRecorder& recorder, std::function<std::vector<int>()> codePoints);

    void set_on(bool on) { reviewing = on; }
    /// Switched on and the history open.
    bool is_active() const;
    /// The index of the next due character after `from` going `step`, -1 for none.
    int next_due(int from, int step) const;
    /// "12 due", or when the next one falls due; empty while not active.
    QString label() const;
    /// The widest texts the label can show, so that it keeps one width.
    static std::vector<QString> widest_labels();

private:
    progress::LessonRecorder& recorder;
    std::function<std::vector<int>()> codePoints;
    bool reviewing = false;
};

}  // namespace morvel::prog2
