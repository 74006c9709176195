#pragma once
// The practice history as comma-separated values, for `--export-progress` and the progress
// panel's Export…: one row per judged trace and per completed character, oldest first, told
// apart by the first column, `kind`. Columns a kind does not have are empty. Beside it, in
// `<name>-reviews.csv`, the review log: one row per graded review with the columns an FSRS
// optimizer reads (card id = code point, time in ms since the epoch, rating 1..4, state 0 new or
// 2 review, duration in ms); numbers only, so no field is ever quoted.

#include <QString>

namespace morvel::progress {

class ProgressCsv {
public:
    static QString header();
    static QString reviews_header();
    /// The review log's file beside `target`: "a.csv" gives "a-reviews.csv".
    static QString reviews_path(const QString& target);
    /// `text` as one field: quoted, with its double quotes doubled, when it holds a comma, a
    /// double quote or a line break.
    static QString field(const QString& text);

    /// Writes the history in the database file `history` to `target` and its review log beside
    /// it; a missing history gives the headers alone. Returns an empty text on success, else one
    /// sentence in the interface language naming the file and the reason. A target is only
    /// replaced by a complete file.
    static QString write(const QString& history, const QString& target);
};

}  // namespace morvel::progress
