#include "app/recall/RecallView.h"

#include <ki/math/Rect.h>
#include <ki/qt/components/otf/GDataScroller.h>

#include <QAction>
#include <QMouseEvent>

#include "app/ModelAppData.h"
#include "app/Window.h"
#include "app/controls/LessonControls.h"
#include "app/lesson/LessonFlow.h"
#include "app/recall/RecallLayer.h"
#include "app/stroke/CanvasHanzi.h"

namespace morvel::prog2 {

namespace {

// A click on one of the grades painted on the canvas gives that grade.
class GradeClicks : public QObject {
public:
    GradeClicks(CanvasHanzi* canvas, LessonFlow& lesson) : QObject(canvas), flow(lesson) {
        canvas->installEventFilter(this);
    }
    bool eventFilter(QObject* target, QEvent* ev) override {
        if (ev->type() != QEvent::MouseButtonPress || !flow.recall().grading) return false;
        const auto* widget = static_cast<QWidget*>(target);
        const QPointF at = static_cast<QMouseEvent*>(ev)->position();
        const ki::math::Rect rect(0.0f, 0.0f, static_cast<float>(widget->width()),
                                  static_cast<float>(widget->height()));
        for (const review::Rating rating :
             {review::Rating::AGAIN, review::Rating::HARD, review::Rating::GOOD, review::Rating::EASY}) {
            if (!recall::RecallLayer::grade_box(rect, rating).contains(at)) continue;
            flow.choose_grade(rating);
            flow.accept_grade();
            return true;
        }
        return false;
    }

private:
    LessonFlow& flow;
};

}  // namespace

RecallView::RecallView(const Parts& p) : parts(p) {
    LessonFlow& flow = parts.window->get_flow();
    parts.canvas->set_recall(&flow.recall());
    flow.set_score([canvas = parts.canvas]() { return canvas->get_score_card().character_score(); });
    flow.liRecall += [this]() { refresh(); };
    parts.controls->on_recall([this]() { toggle(); }, [&flow]() { flow.show_me(); });
    new GradeClicks(parts.canvas, flow);

    QObject* window = parts.window;
    QObject::connect(parts.window->gen_action(QString::fromLatin1(KEY_RECALL)), &QAction::triggered, window,
                     [this]() { toggle(); });
    QObject::connect(parts.window->gen_action(QString::fromLatin1(KEY_SHOW_ME)), &QAction::triggered, window,
                     [&flow]() { flow.show_me(); });
    for (const review::Rating rating :
         {review::Rating::AGAIN, review::Rating::HARD, review::Rating::GOOD, review::Rating::EASY}) {
        QAction* key = parts.window->gen_action(QKeySequence(Qt::Key_0 + static_cast<int>(rating)));
        QObject::connect(key, &QAction::triggered, window, [&flow, rating]() { flow.choose_grade(rating); });
        gradeKeys.push_back(key);
    }
    QAction* accept = parts.window->gen_action(QKeySequence(Qt::Key_Space));
    accept->setShortcuts(
        {QKeySequence(Qt::Key_Space), QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    QObject::connect(accept, &QAction::triggered, window, [&flow]() { flow.accept_grade(); });
    gradeKeys.push_back(accept);
    refresh();
}

void RecallView::toggle() {
    LessonFlow& flow = parts.window->get_flow();
    flow.set_recall(!flow.is_recall());
    // The meaning and the recording are the prompt; the meaning line follows the mode.
    parts.window->on_mode_changed();
    if (flow.is_recall()) parts.window->on_play_sound();
}

void RecallView::refresh() {
    const RecallState& state = parts.window->get_flow().recall();
    // The character comes back everywhere once it is written.
    const long long hidden = state.active && !state.grading ? parts.model->get_selected_index() : -1;
    if (hidden != parts.model->get_hidden_row()) {
        parts.model->set_hidden_row(hidden);
        parts.scroller->update_model();
    }
    parts.controls->show_recall(state.active);
    for (QAction* key : gradeKeys) key->setEnabled(state.grading);
    parts.canvas->update();
}

}  // namespace morvel::prog2
