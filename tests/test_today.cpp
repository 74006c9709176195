// Today's session: without a window, its order and steps over a real history file, with
// restarts in the middle; in the window, the button's key and the progress line.
#include <gtest/gtest.h>

#include <ki/qt/lang.h>

#include <QApplication>
#include <QDateTime>
#include <QLabel>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/AppData.h"
#include "app/Window.h"
#include "app/lesson/LessonOptions.h"
#include "app/lesson/TodaySession.h"
#include "app/progress/ProgressStore.h"
#include "app/stroke/ControlAnim.h"
#include "app/today/TodayView.h"

using namespace morvel::prog2;
using morvel::progress::ProgressStore;
using morvel::review::PlanProgress;
using morvel::review::Rating;

namespace {

constexpr int STROKES = 2;
constexpr qint64 DAY_MS = 86'400'000;
const qint64 NOON_MS = QDateTime(QDate(2026, 5, 12), QTime(12, 0)).toMSecsSinceEpoch();

// Six characters in level order: a, b and d were last reviewed 5, 30 and 12 days ago and are
// due (b the least likely recalled, then d, then a); c was learnt yesterday and is not due;
// e and f are new.
const std::map<char, int> CODE = {{'a', 0x4E00}, {'b', 0x4E01}, {'c', 0x4E03},
                                  {'d', 0x4E07}, {'e', 0x4E08}, {'f', 0x4E09}};

char name_of(int code) {
    for (const auto& [name, c] : CODE)
        if (c == code) return name;
    return '?';
}

// One run of the program: the flow and the session as the window wires them, recording into
// the history as the window's recorder does.
struct Launch {
    explicit Launch(ProgressStore& history, std::vector<std::string>& stepLog) : store(history), log(stepLog) {
        session.liShow += [this](const int& code) {
            control.select(STROKES);
            flow.shown(0, code);
        };
        session.liChanged += [this]() {
            static const char* const names[] = {"", "watch ", "trace ", "recall "};
            const std::string entry = names[static_cast<int>(session.step())] + std::string(1, name_of(session.code_point()));
            if (session.is_active() && (log.empty() || log.back() != entry)) log.push_back(entry);
        };
        session.liFinished += [this](const TodaySummary& s) { summary = s; };
        flow.liGraded += [this](const GradedRecall& g) {
            store.record_review({0, g.codePoint, g.rating, g.durationMs});
            log.push_back(std::string("graded ") + name_of(g.codePoint) + std::to_string(static_cast<int>(g.rating)));
        };
        flow.liFinished += [this](const int& round) {
            morvel::progress::CompletionRecord done;
            done.codePoint = flow.recall().codePoint;
            done.round = round;
            store.record_completion(done);
        };
        session.set_clock([this]() { return steadyMs; });
    }
    bool start() {
        std::vector<int> characters;
        for (const char c : std::string("abcdef")) characters.push_back(CODE.at(c));
        return session.start(store, characters, 5);
    }
    // Lets every pause run out and the watched character draw itself.
    void settle() {
        for (int guard = 0; guard < 50; ++guard) {
            for (int i = 0; i < 40; ++i) control.tick();
            if (waiting.empty()) return;
            const std::function<void()> then = waiting.front();
            waiting.erase(waiting.begin());
            then();
        }
    }
    void act(char what) {
        steadyMs += 1000;
        switch (what) {
            case 'w':  // every stroke left written right
                for (int i = control.state().strokesLearned; i < STROKES; ++i) flow.stroke_accepted();
                break;
            case 'x':
                flow.stroke_rejected();
                break;
            case 's':
                flow.show_me();
                break;
            case 'E':
                flow.choose_grade(Rating::EASY);
                break;
            case 'k':
                flow.accept_grade();
                break;
        }
        settle();
    }

    ProgressStore& store;
    std::vector<std::string>& log;
    std::vector<std::function<void()>> waiting;
    LessonFlow::Delay delay = [this](int, std::function<void()> then) { waiting.push_back(std::move(then)); };
    ControlAnim control;
    LessonFlow flow{control, delay};
    TodaySession session{flow, control, delay};
    TodaySummary summary;
    long long steadyMs = 0;
};

TEST(TodaySession, DueReviewsThenNewCharactersThroughMissesGradesAndRestarts) {
    const struct Row {
        const char* name;
        // What the learner does; '|' is a restart of the program.
        const char* script;
        std::vector<std::string> steps;
        int lastRunReviewed, lastRunFresh, graded, notAgain;
        bool dueTomorrow;  // an AGAIN comes back the next day
    } rows[] = {
        {"every stroke right, grades as proposed", "wk wk wk w wk w wk",
         {"recall b", "graded b3", "recall d", "graded d3", "recall a", "graded a3", "watch e", "trace e",
          "recall e", "graded e3", "watch f", "trace f", "recall f", "graded f3"},
         3, 2, 5, 5, false},
        {"misses, Show me, a chosen grade, misses while tracing", "xwk swk wEk xxxw wk w xxwk",
         {"recall b", "graded b2", "recall d", "graded d1", "recall a", "graded a4", "watch e", "trace e",
          "recall e", "graded e3", "watch f", "trace f", "recall f", "graded f1"},
         3, 2, 5, 3, true},
        {"restarts after two reviews, while tracing and after a new one", "wk wk | wk | w wk | w wk",
         {"recall b", "graded b3", "recall d", "graded d3", "recall a", "restart", "recall a", "graded a3", "watch e",
          "trace e", "restart", "watch e", "trace e", "recall e", "graded e3", "watch f", "trace f", "restart",
          "watch f", "trace f", "recall f", "graded f3"},
         0, 1, 1, 1, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir dir;
        qint64 nowMs = NOON_MS;
        auto open = [&]() {
            auto store = std::make_unique<ProgressStore>([&nowMs]() { return nowMs; });
            EXPECT_EQ(store->open(dir.path()), ProgressStore::Status::WRITABLE);
            return store;
        };
        std::unique_ptr<ProgressStore> store = open();
        for (const auto& [name, daysAgo, rating] : {std::tuple{'a', 5, Rating::GOOD}, {'b', 30, Rating::GOOD},
                                                    {'c', 1, Rating::EASY}, {'d', 12, Rating::GOOD}})
            ASSERT_TRUE(store->record_review({NOON_MS - daysAgo * DAY_MS, CODE.at(name), rating, 3000}));

        std::vector<std::string> steps;
        auto run = std::make_unique<Launch>(*store, steps);
        ASSERT_TRUE(run->start());
        run->settle();
        PlanProgress before = run->session.progress();
        EXPECT_EQ(before, (PlanProgress{0, 0, 5}));
        for (const char c : std::string(row.script)) {
            if (c == ' ') continue;
            if (c != '|') {
                run->act(c);
                continue;
            }
            // The program ends and starts again with the same file: nothing is lost and the
            // session carries on where it was.
            before = run->session.progress();
            run.reset();
            steps.push_back("restart");
            store = open();
            run = std::make_unique<Launch>(*store, steps);
            ASSERT_TRUE(run->start());
            EXPECT_EQ(run->session.progress(), before);
            run->settle();
            nowMs += 60'000;
        }
        EXPECT_EQ(steps, row.steps);
        EXPECT_FALSE(run->session.is_active());
        const TodaySummary& s = run->summary;
        EXPECT_EQ(s.reviewed, row.lastRunReviewed);
        EXPECT_EQ(s.fresh, row.lastRunFresh);
        EXPECT_EQ(std::pair(s.graded, s.notAgain), std::pair(row.graded, row.notAgain));
        EXPECT_GT(s.elapsedMs, 0);
        // Everything was graded today: nothing is due before tomorrow.
        if (row.dueTomorrow)
            EXPECT_EQ(s.nextDueDay, store->local_today() + 1);
        else
            EXPECT_GT(s.nextDueDay, store->local_today());
        EXPECT_EQ(s.streak, 1);
        // Done for today: every character has its card and nothing is left.
        EXPECT_FALSE(run->start());
        for (const auto& [name, code] : CODE)
            EXPECT_NE(store->card(code).state, morvel::review::CardState::NEW) << name;
    }
}

}  // namespace
