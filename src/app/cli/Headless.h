#pragma once
// The commands that run without a window (`--worksheet`, `--export-progress`, `--help`,
// `--version`): which one the command line asks for, a quiet console while they run, and their
// result.

#include <QString>
#include <QStringList>
#include <iosfwd>

namespace morvel {

class Headless {
public:
    enum class Command { NONE, WORKSHEET, EXPORT_PROGRESS, UNKNOWN_OPTION, HELP, VERSION };
    enum EXIT_CODE : int { EXIT_BAD_ARGUMENTS = 2 };

    static QStringList arguments_of(int argc, char** argv);
    /// What `arguments` (program name first) ask for. A long option that is not the program's
    /// but looks like one of the headless ones ("--worksheets", "--output") is UNKNOWN_OPTION:
    /// a typo must not open the window instead.
    static Command command_of(const QStringList& arguments);
    /// The first such look-alike option, "" when there is none.
    static QString unknown_option(const QStringList& arguments);
    /// The options the window does not know (neither the program's nor Qt's), which it ignores:
    /// said on the console, so that "--levle 3" does not pass unnoticed.
    static QStringList ignored_options(const QStringList& arguments);

    /// Call before anything logs. For a headless command the log and Qt's own messages stay
    /// silent unless `-__log_level` is given, and no display is needed. Returns the command.
    static Command prepare(int argc, char** argv);
    /// While alive, standard output written through std::cout is dropped for a headless
    /// command without `-__log_level`: the settings report a first start there.
    class QuietStdout {
    public:
        explicit QuietStdout(Command command);
        ~QuietStdout();
        QuietStdout(const QuietStdout&) = delete;
        QuietStdout& operator=(const QuietStdout&) = delete;

    private:
        std::streambuf* saved = nullptr;
        bool quiet = false;
    };

    /// Answers what needs neither settings nor files: the usage (`--help`, `-h`), the version and
    /// the refusal of an unknown option. Returns the exit code, or -1 when the program goes on.
    static int answer(Command command, int argc, char** argv);
    /// Runs what needs the settings but no application object: the export. Returns the exit
    /// code, or -1 when the program goes on.
    static int run_early(Command command, int argc, char** argv);

    /// The result line: on standard output for exit code 0, else on standard error.
    static void print(int exitCode, const QString& message);
    static QString usage();
};

}  // namespace morvel
