#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/tools/GArgv.h>

#include <vector>

#include "LoggedTest.h"
#include "app/cli/Headless.h"

using ArgvTest = LoggedTest;

TEST_F(ArgvTest, Parse) {
    const QVariant flag(true);
    struct Row {
        const char* name;
        QString source;
        QMap<QString, QVariant> expected;  // empty for a refused line
        const char* error;                 // the one logged error, or nullptr
    };
    const std::vector<Row> rows = {
        {"empty command line", "", {}, nullptr},
        {"flag then value", "--verbose --x 3", {{"verbose", flag}, {"x", "3"}}, nullptr},
        {"quoted value keeps its spaces",
         "--title \"two  words\" -n 1",
         {{"title", "two  words"}, {"n", "1"}},
         nullptr},
        {"quote touching its key is the value", "--a\"b c\" --d", {{"a", "b c"}, {"d", flag}}, nullptr},
        {"value-less last key becomes a flag", "--a 1 --last", {{"a", "1"}, {"last", flag}}, nullptr},
        {"value starting with a dash is the next key", "--n -5", {{"n", flag}, {"5", flag}}, nullptr},
        {"no-break space separates", QStringLiteral("--a\u00A0b"), {{"a", "b"}}, nullptr},
        {"lone dash", "-", {}, "GArgv::parse, empty key"},
        {"word without dash", "--a 1 foo", {}, "GArgv::parse, expected key, got 'foo'"},
        {"unterminated quote", "--t \"abc", {}, "GArgv::parse, unterminated quote in argument string"},
        {"quote where a key belongs", "\"abc\" --x", {}, "GArgv::parse, unexpected token type"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        capture->clear();
        ki::GArgv args(row.source);
        EXPECT_EQ(args.parse(), row.error == nullptr);
        EXPECT_EQ(args.get_options(), row.expected);
        const auto lines = capture->lines();
        if (row.error == nullptr) {
            EXPECT_TRUE(lines.empty());
        } else {
            ASSERT_EQ(lines.size(), 1u);
            EXPECT_EQ(lines[0].text, row.error);
            EXPECT_EQ(lines[0].level, ki::log::LOG_ERROR);
        }
    }
}

TEST_F(ArgvTest, ArgumentsSurviveJoiningAndSplitting) {
    std::vector<const char*> argv = {"quenlo", "--title", "two words", "--empty",
                                     "",       "-x",      "--quoted",  "say \"hi\""};
    ki::GArgv args;
    args.set_arguments(static_cast<int>(argv.size()), const_cast<char**>(argv.data()));
    EXPECT_EQ(args.source(), "--title \"two words\" --empty \"\" -x --quoted \"say hi\"");
    ASSERT_TRUE(args.parse());
    const QMap<QString, QVariant> expected = {
        {"title", "two words"}, {"empty", ""}, {"x", true}, {"quoted", "say hi"}};
    EXPECT_EQ(args.get_options(), expected);
}

// A typo in a headless option must not open the window silently instead, and one in the
// window's options is named.
TEST(HeadlessCommand, LookAlikeOptionsAreRefusedOthersPass) {
    using C = morvel::Headless::Command;
    const struct {
        const char* name;
        const char* line;
        C command;
        const char* ignored;  // what the window would ignore
    } rows[] = {
        {"no options open the window", "", C::NONE, ""},
        {"the window's own options", "--level 3 -__log_level debug --__bounds 0,0,800,600", C::NONE, ""},
        {"Qt's options", "--platform offscreen --style fusion --reverse -qwindowtitle x", C::NONE, ""},
        {"a negative value is no option", "--level -1", C::NONE, ""},
        {"a window's option mistyped", "--levle 3 -x", C::NONE, "--levle -x"},
        {"a worksheet", "--worksheet 中 --out x.pdf --grid mi --paper a4 --rows 2", C::WORKSHEET, ""},
        {"an export", "--export-progress x.csv", C::EXPORT_PROGRESS, ""},
        {"a plural", "--worksheets 中", C::UNKNOWN_OPTION, "--worksheets"},
        {"a longer name", "--worksheet 中 --output x.pdf", C::UNKNOWN_OPTION, "--output"},
        {"an underscore", "--export_progress x.csv", C::UNKNOWN_OPTION, "--export_progress"},
        {"a shortened name", "--expo x.csv", C::UNKNOWN_OPTION, "--expo"},
        {"one letter off", "--worksheet 中 --out x.pdf --rowz 2", C::UNKNOWN_OPTION, "--rowz"},
        {"the usage", "--help", C::HELP, ""},
        {"the usage, short", "-h", C::HELP, ""},
        {"the usage before a window's option", "--level 2 --help", C::HELP, ""},
        {"the version", "--version", C::VERSION, ""},
        {"the version, mistyped", "--verison", C::UNKNOWN_OPTION, "--verison"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QStringList arguments{QStringLiteral("quenlo")};
        arguments << QString::fromUtf8(row.line).split(' ', Qt::SkipEmptyParts);
        EXPECT_EQ(morvel::Headless::command_of(arguments), row.command);
        EXPECT_EQ(morvel::Headless::ignored_options(arguments).join(' '), QString::fromUtf8(row.ignored));
    }
}
