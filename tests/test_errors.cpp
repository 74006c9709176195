#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ki/GError.h>
#include <ki/qt/ext/ObjectName.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using testing::EndsWith;

TEST(GErrorTest, ToString) {
    // The class names come from one switch; its first and last case and the fall-through on
    // either side of a known class are enough to catch a slip.
    const struct Row {
        const char* name;
        ki::GError error;
        const char* expected;
    } rows[] = {
        {"no error", {}, "OK"},
        {"first class", {2, ki::EC_NO_CLASS, ""}, "ERR_NO_CLASS, err:2"},
        {"class, code and message", {2, ki::EC_IO, "no such file"}, "ERR_IO, err:2, no such file"},
        {"last class", {2, ki::EC_OTHER, ""}, "ERR_OTHER, err:2"},
        {"value between two classes", {2, 55, ""}, "ERR_UNKNOWN_CLASS, err:2"},
        {"value past the last class", {2, 1000, ""}, "ERR_UNKNOWN_CLASS, err:2"},
        {"message without a code", {0, ki::EC_NO_CLASS, "kept without a code"}, "OK, kept without a code"},
    };
    for (const Row& row : rows) EXPECT_EQ(row.error.to_string(), row.expected) << row.name;
}

namespace {

// The line of a source file holding `text`, counted from 1; 0 when it holds none.
int line_of(const char* path, const char* text) {
    std::ifstream file(std::string(QUENLO_SOURCE_DIR) + "/" + path);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.find(text) != std::string::npos) return number;
    }
    return 0;
}

}  // namespace

TEST(GErrorDeathTest, FatalHandlersReportAndExitWithOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ki::set_fatal_pause_for_tests(0);
    const int one = 1;
    struct Row {
        const char* name;
        std::function<void()> fail;
        int line;  // where a macro row's check sits; replaces the "@" of the expected text
        std::string expected;
    };
    struct NullNamed : ki::qt::ObjectName<QObject> {
        NullNamed() : ObjectName(nullptr, "NullNamed") {}
    };
    const std::vector<Row> rows = {
        // A null pointer report ends before the "program exit !" line.
        {"object name for no object", [] { NullNamed(); },
         line_of("dist/include/ki/qt/ext/ObjectName.h", "KI_CHECK_NULL"),
         "nullptr:dist/include/ki/qt/ext/ObjectName\nobj == NULL\nLINE:@\nprogram will exit in 5 sec\n"},
        {"false condition", [&] { KI_CHECK_BOOL(one > 2); }, __LINE__,
         "bool expression failure:\none > 2\nLINE:@\nprogram will exit in 5 sec\nprogram exit !\n"},
        {"fatal exit", [] { ki::exit_fatal(QStringLiteral("cannot go on")); }, 0,
         "cannot go on\nprogram will exit in 5 sec\nprogram exit !\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string expected = row.expected;
        if (const size_t at = expected.find('@'); at != std::string::npos)
            expected.replace(at, 1, std::to_string(row.line));
        // The report goes to standard output; the death test reads standard error.
        EXPECT_EXIT(
            {
                std::fflush(stdout);
                dup2(2, 1);
                row.fail();
            },
            testing::ExitedWithCode(1), EndsWith(expected));
    }
}
