#pragma once
// The practice history as comma-separated values, for `--export-progress` and the progress
// panel's Export…: one row per judged trace and per completed character, oldest first, told
// apart by the first column, `kind`. Columns a kind does not have are empty.

#include <QString>

namespace morvel::progress {

class ProgressCsv {
public:
    static QString header();
    /// `text` as one field: quoted, with its double quotes doubled, when it holds a comma, a
    /// double quote or a line break.
    static QString field(const QString& text);

    /// Writes the history in the database file `history` to `target`; a missing history gives
    /// the header alone. Returns an empty text on success, else one sentence in the interface
    /// language naming the file and the reason. The target is only replaced by a complete file.
    static QString write(const QString& history, const QString& target);
};

}  // namespace morvel::progress
