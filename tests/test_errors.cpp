#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ki/GError.h>
#include <ki/qt/ext/ObjectName.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using testing::EndsWith;

TEST(GErrorTest, MessagesAndReset) {
    // The class names come from one switch; its first and last case and the fall-through on
    // either side of a known class are enough to catch a slip.
    const std::vector<std::pair<unsigned, const char*>> classes = {
        {0, "NO_CLASS"}, {20, "IO"}, {900, "OTHER"}, {55, "UNKNOWN_CLASS"}, {1000, "UNKNOWN_CLASS"}};
    for (const auto& [cls, name] : classes) {
        ki::GError coded;
        coded.set_error(cls, 2, QString());
        EXPECT_EQ(coded.to_string(), std::string("ERR_") + name + ", err:2") << cls;
    }

    ki::GError err;
    EXPECT_EQ(err.to_string(), "OK");
    err.set_error(ki::EC_IO, 2, "no such $", "file");
    EXPECT_EQ(err.to_string(), "ERR_IO, err:2, no such file");
    EXPECT_TRUE(err.is_class_IO());

    ki::GError copy;
    copy.copy_error(err);
    err.reset();
    EXPECT_FALSE(err.has_message());
    EXPECT_EQ(err.to_string(), "OK");
    EXPECT_EQ(copy.to_string(), "ERR_IO, err:2, no such file");

    err.set_message("kept without a code");
    EXPECT_EQ(err.to_string(), "OK, kept without a code");

    ki::GSysResult<int> failed(copy);
    EXPECT_FALSE(failed.ok());
    EXPECT_EQ(ki::str::xprintF(0, "result:$", failed), "result:ERR_IO, err:2, no such file");
    ki::GSysResult<std::string> good(std::string("value"));
    EXPECT_TRUE(good.ok());
    EXPECT_EQ(good.take(), "value");
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
    const char* nothing = nullptr;
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
        {"object name for no object", [] { NullNamed(); }, line_of("dist/include/ki/qt/ext/ObjectName.h", "KI_CHECK_NULL"),
         "nullptr:dist/include/ki/qt/ext/ObjectName\nobj == NULL\nLINE:@\nprogram will exit in 5 sec\n"},
        {"null pointer, no closing line", [&] { KI_CHECK_NULL(nothing, "src/ki/qt/GApp"); }, __LINE__,
         "nullptr:src/ki/qt/GApp\nnothing == NULL\nLINE:@\nprogram will exit in 5 sec\n"},
        {"false condition", [&] { KI_CHECK_BOOL(one > 2); }, __LINE__,
         "bool expression failure:\none > 2\nLINE:@\nprogram will exit in 5 sec\nprogram exit !\n"},
        {"direct null pointer report", [] { ki::nullPointerHandling("obj == NULL", 42, "src/ki/log/GLog"); },
         0, "nullptr:src/ki/log/GLog\nobj == NULL\nLINE:42\nprogram will exit in 5 sec\n"},
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
