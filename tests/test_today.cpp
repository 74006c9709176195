// Today's session: without a window, its order and steps over a real history file, with
// restarts in the middle; in the window, the button's key and the progress line.
#include <QApplication>
#include <QDateTime>
#include <QLabel>
#include <QTest>
#include <string>

#include "WindowTestKit.h"
#include "app/ChinChar.h"
#include "app/Level.h"
#include "app/lesson/TodaySession.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressStore.h"
#include "app/stroke/ControlAnim.h"

using namespace morvel::prog2;
using morvel::progress::ProgressStore;
using morvel::review::PlanProgress;
using morvel::review::Rating;

namespace {

constexpr int STROKES = 2;
constexpr qint64 DAY_MS = 86'400'000;
const qint64 NOON_MS = QDateTime(QDate(2026, 5, 12), QTime(12, 0)).toMSecsSinceEpoch();

// Six characters a .. f in level order: a, b and d were last reviewed 5, 30 and 12 days ago and
// are due (b the least likely recalled, then d, then a); c was learnt yesterday; e and f are new.
int code_of(char name) {
    return 0x4E00 + (name - 'a');
}
char name_of(int code) {
    return static_cast<char>('a' + code - 0x4E00);
}

// One run of the program: the flow and the session as the window wires them, recording into
// the history as the window's recorder does.
struct Launch {
    explicit Launch(ProgressStore& history, std::string& stepLog) : store(history), log(stepLog) {
        session.liShow += [this](const int& code) {
            control.select(STROKES);
            flow.shown(0, code);
        };
        session.liChanged += [this]() {
            static const char* const names[] = {"", "watch ", "trace ", "recall "};
            const std::string entry =
                names[static_cast<int>(session.step())] + std::string(1, name_of(session.code_point()));
            if (session.is_active() && entry != last) log += (last = entry) + ", ";
        };
        session.liFinished += [this](const TodaySummary& s) { summary = s; };
        flow.liGraded += [this](const GradedRecall& g) {
            store.record_review({0, g.codePoint, g.rating, g.durationMs});
            log += std::string("graded ") + name_of(g.codePoint) +
                   std::to_string(static_cast<int>(g.rating)) + ", ";
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
        return session.start(
            store, {code_of('a'), code_of('b'), code_of('c'), code_of('d'), code_of('e'), code_of('f')}, 5);
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
        // w: every stroke left written right, x: a miss, s: Show me, E: Easy chosen, k: accepted
        if (what == 'w')
            for (int i = control.state().strokesLearned; i < STROKES; ++i) flow.stroke_accepted();
        if (what == 'x') flow.stroke_rejected();
        if (what == 's') flow.show_me();
        if (what == 'E') flow.choose_grade(Rating::EASY);
        if (what == 'k') flow.accept_grade();
        settle();
    }

    ProgressStore& store;
    std::string& log;
    std::string last;
    std::vector<std::function<void()>> waiting;
    LessonFlow::Delay delay = [this](int, std::function<void()> then) { waiting.push_back(std::move(then)); };
    ControlAnim control;
    LessonFlow flow{control, delay};
    TodaySession session{flow, control, delay};
    TodaySummary summary;
    long long steadyMs = 0;
};

TEST(TodaySession, DueReviewsThenNewCharactersThroughMissesGradesAndRestarts) {
    // clang-format off
    const struct Row {
        const char* name;
        // What the learner does; '|' is a restart of the program.
        const char* script;
        const char* steps;
        // Of the last run: reviews, new characters, graded, not AGAIN.
        std::vector<int> counts;
        bool dueTomorrow;
    } rows[] = {
        {"misses, Show me, a chosen grade, misses while tracing", "xwk swk wEk xxxw wk w xxwk",
         "recall b, graded b2, recall d, graded d1, recall a, graded a4, watch e, trace e, recall e, "
         "graded e3, watch f, trace f, recall f, graded f1, ",
         {3, 2, 5, 3}, true},
        {"restarts after two reviews, while tracing and after a new one", "wk wk | wk | w wk | w wk",
         "recall b, graded b3, recall d, graded d3, recall a, restart, recall a, graded a3, watch e, "
         "trace e, restart, watch e, trace e, recall e, graded e3, watch f, trace f, restart, watch f, "
         "trace f, recall f, graded f3, ",
         {0, 1, 1, 1}, false},
    };
    // clang-format on
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
        for (const auto& [name, daysAgo, rating] : {std::tuple{'a', 5, Rating::GOOD},
                                                    {'b', 30, Rating::GOOD},
                                                    {'c', 1, Rating::EASY},
                                                    {'d', 12, Rating::GOOD}})
            ASSERT_TRUE(store->record_review({NOON_MS - daysAgo * DAY_MS, code_of(name), rating, 3000}));

        std::string steps;
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
            steps += "restart, ";
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
        EXPECT_EQ(std::vector({s.reviewed, s.fresh, s.graded, s.notAgain}), row.counts);
        EXPECT_GT(s.elapsedMs, 0);
        // Everything was graded today: nothing is due before tomorrow, an AGAIN comes back then.
        EXPECT_GT(s.nextDueDay, store->local_today());
        if (row.dueTomorrow) {
            EXPECT_EQ(s.nextDueDay, store->local_today() + 1);
        }
        EXPECT_EQ(s.streak, 1);
        EXPECT_FALSE(run->start()) << "done for today";
    }
}

class TodayWindow : public WindowTest {};

TEST_F(TodayWindow, TheKeyStartsTheSessionAndTheProgressLineReadsItsCounts) {
    // A history of its own, empty, and the options' defaults (ten new characters a day).
    private_history();
    open();
    QApplication::setActiveWindow(win.get());
    ASSERT_TRUE(win->get_recorder().is_open());
    const unsigned int flags = win->get_control().get_mode_flags();
    auto* line = win->findChild<QLabel*>(QStringLiteral("today"));
    ASSERT_NE(line, nullptr);
    EXPECT_FALSE(line->isVisible());

    QTest::keyClick(win.get(), Qt::Key_T, Qt::ControlModifier);
    // Nothing is due: the first character of the first level is watched first.
    const morvel::ChinChar first = morvel::basic_table_from_file(Level::shipped(1).file, 1).at(0);
    EXPECT_EQ(catalogue().unicode_at(static_cast<unsigned int>(win->get_selected_index())), first.unicode);
    EXPECT_FALSE(win->get_control().is_mode_bit(MODE_LEARN));
    const struct {
        QLocale::Language language;
        const char* text;
    } rows[] = {
        {QLocale::English, "0 reviews · 1 new · 10 left"},
        {QLocale::German, "0 wiederholt · 1 neu · 10 übrig"},
        {QLocale::Russian, "повторено: 0 · новых: 1 · осталось: 10"},
    };
    for (const auto& row : rows) {
        ki::qt::lang::set_lang(row.language);
        EXPECT_TRUE(line->isVisible());
        EXPECT_EQ(line->text(), QString::fromUtf8(row.text));
    }
    ki::qt::lang::set_lang(QLocale::English);

    // Pressed again, the session ends: the lesson is as it was and Next moves through the level.
    QTest::keyClick(win.get(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_FALSE(line->isVisible());
    EXPECT_EQ(win->get_control().get_mode_flags(), flags);
    const long long shown = win->get_selected_index();
    QTest::keyClick(win.get(), Qt::Key_Right);
    EXPECT_EQ(win->get_selected_index(), shown + 1);

    // With "Start with today's session" on and a review due, the next start opens the session
    // with that review, written from memory.
    change_options(*win, [](LessonOptions& o) { o.startWithToday = true; });
    win->close();
    win.reset();
    {
        ProgressStore history;
        ASSERT_EQ(history.open(ProgressStore::default_folder()), ProgressStore::Status::WRITABLE);
        const qint64 tenDaysAgo = QDateTime::currentMSecsSinceEpoch() - 10 * DAY_MS;
        ASSERT_TRUE(history.record_review({tenDaysAgo, first.unicode, Rating::HARD, 5000}));
    }
    open();
    EXPECT_TRUE(win->findChild<QLabel*>(QStringLiteral("today"))->isVisible());
    EXPECT_TRUE(win->get_flow().is_recall());
    EXPECT_EQ(catalogue().unicode_at(static_cast<unsigned int>(win->get_selected_index())), first.unicode);
}

}  // namespace
