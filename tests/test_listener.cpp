#include <gtest/gtest.h>
#include <ki/Listener.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "LoggedTest.h"

using ki::Listener;

namespace {

class ListenerTest : public LoggedTest {
protected:
    auto record(const std::string& tag) {
        return [this, tag](const int& payload) { calls.push_back(tag + ":" + std::to_string(payload)); };
    }
    std::vector<std::string> sorted_calls() const {
        auto out = calls;
        std::sort(out.begin(), out.end());  // no call order is promised
        return out;
    }

    std::vector<std::string> calls;
};

}  // namespace

TEST_F(ListenerTest, RegistrationDecidesWhoIsCalled) {
    // a: append, s: set, r: remove, n: append without payload, +: +=
    struct Op {
        char kind;
        const char* name;
        const char* tag;
    };
    struct Row {
        const char* name;
        std::vector<Op> ops;
        std::vector<std::string> expected;
        int duplicate_messages;
    };
    const std::vector<Row> rows = {
        {"empty listener calls nothing", {}, {}, 0},
        {"duplicate append keeps the first callback", {{'a', "x", "1"}, {'a', "x", "2"}}, {"1:7"}, 1},
        {"set replaces the callback", {{'a', "x", "1"}, {'s', "x", "2"}}, {"2:7"}, 0},
        {"removed item is not called", {{'a', "x", "x"}, {'a', "y", "y"}, {'r', "x", ""}}, {"y:7"}, 0},
        {"callable without payload", {{'n', "x", "none"}}, {"none"}, 0},
        {"+= twice keeps the first default callback", {{'+', "", "1"}, {'+', "", "2"}}, {"1:7"}, 1},
    };
    using Action = std::function<void(Listener<int>&, const Op&)>;
    const std::map<char, Action> actions = {
        {'a', [this](auto& li, const Op& op) { li.append(op.name, record(op.tag)); }},
        {'s', [this](auto& li, const Op& op) { li.set(op.name, record(op.tag)); }},
        {'r', [](auto& li, const Op& op) { li.remove(op.name); }},
        {'n',
         [this](auto& li, const Op& op) {
             li.append(op.name, [this, t = std::string(op.tag)] { calls.push_back(t); });
         }},
        {'+', [this](auto& li, const Op& op) { li += record(op.tag); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        calls.clear();
        capture->clear();
        Listener<int> li;
        for (const Op& op : row.ops) actions.at(op.kind)(li, op);
        li.fire_event(7);
        EXPECT_EQ(sorted_calls(), row.expected);
        // The placeholder stays unfilled in this message on purpose.
        EXPECT_EQ(capture->count("Listener::append '$' already appended!"), row.duplicate_messages);
    }
}

TEST_F(ListenerTest, CallbacksMayChangeOrDestroyTheirListener) {
    auto li = std::make_unique<Listener<int>>();
    li->append("grow", [this, &li](const int& payload) {
        calls.push_back("grow:" + std::to_string(payload));
        li->append("late", record("late"));  // waits for the next event
    });
    li->fire_event(1);
    EXPECT_EQ(sorted_calls(), (std::vector<std::string>{"grow:1"}));
    li->fire_event(2);
    EXPECT_EQ(sorted_calls(), (std::vector<std::string>{"grow:1", "grow:2", "late:2"}));

    // Each callback removes the other one: whichever runs first, the other must not run.
    calls.clear();
    li->clear();
    for (const auto& [name, other] : {std::pair{"x", "y"}, std::pair{"y", "x"}}) {
        li->append(name, [this, &li, other = std::string(other)](const int&) {
            calls.push_back(other);
            li->remove(other);
        });
    }
    li->fire_event(3);
    EXPECT_EQ(calls.size(), 1u);

    // A closing window may destroy the listener that announced the close.
    calls.clear();
    li->clear();
    for (const char* name : {"a", "b", "c"}) {
        li->append(name, [this, &li](const int&) {
            calls.push_back("destroyed");
            li.reset();
        });
    }
    li->fire_event(4);
    EXPECT_EQ(calls.size(), 1u);
}
