#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/log/LogCapture.h>
#include <ki/log/LogConsole.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "LoggedTest.h"

using namespace ki::log;
using testing::MatchesRegex;

namespace {

// Every case starts from a freshly configured log that writes into `capture` only.
using LogTest = LoggedTest;

using Numbered = std::vector<std::pair<unsigned, std::string>>;

Numbered numbered(const LogCapture& capture) {
    Numbered out;
    for (const auto& line : capture.lines()) out.emplace_back(line.number, line.text);
    return out;
}

}  // namespace

TEST_F(LogTest, LevelFilterAndLineCounter) {
    const struct Row {
        const char* name;
        bool switch_off;
        int level;
        std::vector<std::pair<LOG_LEVEL, const char*>> messages;
        Numbered expected;
    } rows[] = {
        {"dropped debug does not advance the counter", false, 2, {{LOG_DEBUG, "x"}, {LOG_INFO, "y"}}, {{1, "y"}}},
        {"default level keeps debug, drops trace", false, 3, {{LOG_TRACE, "t"}, {LOG_DEBUG, "d"}}, {{1, "d"}}},
        {"error level keeps errors only", false, 0, {{LOG_WARN, "w"}, {LOG_ERROR, "e"}}, {{1, "e"}}},
        {"trace level keeps everything", false, 4, {{LOG_TRACE, "t"}, {LOG_WARN, "w"}}, {{1, "t"}, {2, "w"}}},
        {"log switched off drops errors too", true, 0, {{LOG_ERROR, "e"}}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        reset_for_tests();
        configure_quietly();
        LogCapture capture;
        set_log_level(row.level);
        if (row.switch_off) set_log_off();
        for (const auto& [level, text] : row.messages) log_string(level, text);
        EXPECT_EQ(numbered(capture), row.expected);
    }
}

TEST_F(LogTest, FormattedMessages) {
    ki::pp_info("AppData::svg_file_path_at, index:$, size:$", 3, 87u);
    ki::pp_warn(2, "indented");
    ki::pp_error(QStringLiteral("qstring"));
    log_string(LOG_WARN, static_cast<const char*>(nullptr));
    const std::vector<LogCapture::Line> expected = {
        {1, LOG_INFO, "AppData::svg_file_path_at, index:3, size:87"},
        {2, LOG_WARN, "  indented"},
        {3, LOG_ERROR, "qstring"},
        {4, LOG_WARN, "nullptr"},
    };
    EXPECT_EQ(capture->lines(), expected);
}

TEST_F(LogTest, TraillerBits) {
    const struct Row {
        const char* name;
        unsigned bits;
        unsigned digits;
        unsigned level;
        const char* regex;
    } rows[] = {
        {"unknown level gives an empty tag", 0x80, 6, 9, R"(\[000042\] \[\] )"},
        {"three digits", 0x80, 3, 0, R"(\[042\] \[ERR\] )"},
        {"time since start with milliseconds", 0x130, 6, 2, R"(\[000042\] \[00:00:0[0-9]\.[0-9]{3}\] )"},
        {"time since start in whole seconds", 0x110, 6, 2, R"(\[000042\] \[00:00:0[0-9]\] )"},
        {"wall clock", 0x100, 6, 2, R"(\[000042\] \[[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\] )"},
        {"time form bits without the time bit write nothing", 0x30, 6, 2, R"(\[000042\] )"},
        {"thread id in four digits", 0x200, 6, 2, R"(\[000042\] \[[0-9]{4}\] )"},
        {"configured bits in order", TRAILLER_CONFIGURED, 6, 3,
         R"(\[000042\] \[DEB\] \[00:00:0[0-9]\.[0-9]{3}\] \[[0-9]{4}\] )"},
    };
    start_log_time();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        set_log_digits(row.digits);
        EXPECT_THAT(trailler(42, static_cast<LOG_LEVEL>(row.level), row.bits), MatchesRegex(row.regex));
    }
}

// A file or pipe is block-buffered: a line must be in it whole as soon as it is logged, not
// when the buffer fills or the program ends.
TEST_F(LogTest, ConsoleLineReachesAFileAtOnce) {
    reset_for_tests();  // unconfigured, a line carries its number alone
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    LogConsole console(file);
    console.log_string(7, LOG_INFO, "whole line");
    char bytes[256] = {};
    const ssize_t read = ::pread(fileno(file), bytes, sizeof bytes - 1, 0);
    std::fclose(file);
    EXPECT_EQ(std::string(bytes, size_t(std::max<ssize_t>(read, 0))), "[000007] whole line\n");
}

// Before configure, and from inside an appender (where taking the log mutex again used to
// deadlock), a line is written bare: warnings and errors to standard error, the rest to output.
TEST_F(LogTest, RawOutputBeforeConfigureAndFromInsideAnAppender) {
    struct Echo : LogAppender {
        void log_string(unsigned, LOG_LEVEL, const char* text) override { ki::pp_warn("echo:$", text); }
    } echo;
    const struct Row {
        const char* name;
        bool inside_appender;
        LOG_LEVEL level;
        const char* text;
        const char* expected_err;
        const char* expected_out;
    } rows[] = {
        {"appender that logs", true, LOG_INFO, "hello", "echo:hello\n", ""},
        {"warning to standard error", false, LOG_WARN, "w", "w\n", ""},
        {"trace, not filtered yet, to standard output", false, LOG_TRACE, "t", "", "t\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        reset_for_tests();
        if (row.inside_appender) {
            configure_quietly();
            add_log_appender(&echo);
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        log_string(row.level, row.text);
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.expected_out);
        EXPECT_EQ(err, row.expected_err);
    }
}

TEST_F(LogTest, ParseLogLevel) {
    const struct Row {
        const char* text;
        unsigned expected;
    } rows[] = {{"0", 0},  {"3", 3},     {"7", 4},   {"-1", 2},  {"Error", 0},   {"wrn", 1}, {"WARNING", 1},
                {"in", 2}, {"Debug", 3}, {"tra", 4}, {"NOP", 5}, {"verbose", 2}, {"", 2},    {"debugx", 2}};
    for (const Row& row : rows)
        EXPECT_EQ(parse_log_level(QString::fromUtf8(row.text), 2), row.expected) << row.text;
}

TEST_F(LogTest, CommandLineLevelRefusals) {
    const struct Row {
        const char* name;
        std::vector<const char*> argv;
        unsigned expected_level;
    } rows[] = {
        {"command line cannot switch off", {"quenlo", "-__log_level", "no"}, 3},
        {"command line name", {"quenlo", "--__log_level", "WARN"}, 1},
        {"command line unknown name falls back to info", {"quenlo", "-__log_level", "loud"}, 2},
        {"broken command line keeps defaults", {"quenlo", "stray"}, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        reset_for_tests();
        std::vector<char*> argv;
        for (const char* arg : row.argv) argv.push_back(const_cast<char*>(arg));
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        configure(static_cast<int>(argv.size()), argv.data(), true);
        testing::internal::GetCapturedStderr();
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(get_log_level(), row.expected_level);
    }
}

TEST_F(LogTest, AppenderRegistration) {
    LogCapture enabled;
    LogCapture disabled;
    disabled.set_enabled(false);
    ki::pp("one");
    {
        LogCapture removed;
        ki::pp("two");
        EXPECT_EQ(numbered(removed), (Numbered{{2, "two"}}));
    }
    ki::pp("three");
    EXPECT_EQ(numbered(enabled), (Numbered{{1, "one"}, {2, "two"}, {3, "three"}}));
    EXPECT_TRUE(disabled.lines().empty());
}

TEST_F(LogTest, ConcurrentLoggingKeepsEveryLineOnceInOrder) {
    constexpr int THREADS = 8;
    constexpr int LINES = 10000;
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < LINES; ++i) ki::pp("t$-$", t, i);
        });
    for (std::thread& thread : threads) thread.join();

    const auto lines = capture->lines();
    ASSERT_EQ(lines.size(), size_t(THREADS * LINES));
    std::set<std::string> texts;
    for (size_t i = 0; i < lines.size(); ++i) {
        texts.insert(lines[i].text);
        ASSERT_TRUE(i == 0 || lines[i - 1].number < lines[i].number) << "at " << i;
    }
    EXPECT_EQ(texts.size(), size_t(THREADS * LINES)) << "no line twice";
}

TEST_F(LogTest, ThreadIdsArePerThread) {
    std::pair<unsigned, bool> other;
    std::thread([&] { other = {ki::get_fast_thread_id(), ki::is_main_thread()}; }).join();
    EXPECT_TRUE(ki::is_main_thread()) << "the id taken at configure is still this thread's";
    EXPECT_FALSE(other.second);
    EXPECT_NE(other.first, ki::get_fast_thread_id());
}
