#pragma once
// The worksheet from the command line, without a window:
// quenlo --worksheet CHARS|level:N --out FILE.pdf [--grid tian|mi|none] [--paper a4|letter] [--rows N]

#include <QLocale>
#include <QString>
#include <QStringList>

namespace morvel {

struct WorksheetCliResult {
    int exitCode = 0;
    /// What to tell the user: the pages written, or what went wrong.
    QString message;
};

class WorksheetCli {
public:
    enum EXIT_CODE : int {
        EXIT_OK = 0,
        EXIT_WRITE_FAILED = 1,
        EXIT_BAD_ARGUMENTS = 2,
        /// Some characters had no stroke file; the others were written, if there were any.
        EXIT_CHARS_MISSING = 3,
    };

    /// Writes the worksheet the arguments ask for, with meanings in `language`.
    static WorksheetCliResult run(const QStringList& arguments, QLocale::Language language);
    /// run in the interface language; prints the message (errors to stderr) and returns the
    /// exit code.
    static int main(const QStringList& arguments);

    static QString usage();
};

}  // namespace morvel
