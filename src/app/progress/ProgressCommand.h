#pragma once
// `quenlo --export-progress FILE.csv`: writes the practice history without opening a window or
// needing a display, then the program ends.

namespace morvel::progress {

class ProgressCommand {
public:
    static constexpr const char* OPTION = "--export-progress";

    /// -1 when the command line does not ask for an export. Otherwise exports from the
    /// application data folder (never changing it) and returns the exit code: 0 after writing,
    /// 1 with one sentence on standard error when the history cannot be read or the file cannot
    /// be written. Needs the organisation and program name set and no application object yet.
    static int run(int argc, char** argv);
};

}  // namespace morvel::progress
