#pragma once
// Connects writing from memory to the window's parts: the buttons and keys that start it, ask
// for a stroke and choose and accept a grade, and the list row and canvas that hide the
// character while it is written. What happens next is the lesson flow's to decide.

#include <vector>

class QAction;

namespace ki::qt::otf {
class GDataScroller;
}

namespace morvel {
class CanvasHanzi;
}

namespace morvel::prog2 {

class LessonControls;
class ModelAppData;
class Window;

class RecallView {
public:
    /// The key that turns writing from memory on and off, and the one for "Show me".
    static constexpr const char* KEY_RECALL = "Ctrl+M";
    static constexpr const char* KEY_SHOW_ME = "Ctrl+H";

    struct Parts {
        Window* window;
        CanvasHanzi* canvas;
        ModelAppData* model;
        ki::qt::otf::GDataScroller* scroller;
        LessonControls* controls;
    };

    /// The parts must outlive the view.
    explicit RecallView(const Parts& parts);

    /// Writing from memory on or off, with the prompt when on.
    void toggle();

private:
    /// List row, buttons, grade keys and canvas after the flow changed.
    void refresh();

    Parts parts;
    /// Keys 1 to 4, Space and Enter; they take their keys only while a grade waits.
    std::vector<QAction*> gradeKeys;
};

}  // namespace morvel::prog2
