#pragma once
// Arguments shown back in the messages of the headless commands: control characters escaped so
// that a hostile argument cannot move the terminal's cursor or hide text, and long lists cut.

#include <QString>
#include <QStringList>

namespace morvel::cli {

/// `text` with control characters (and the bidirectional overrides) written as \n, \t, \r, \xHH
/// or \uHHHH.
QString printable(const QString& text);

/// The items quoted and joined by commas, at most `shown` of them, then "… and 39,472 more"
/// (the count in the interface language's digits).
QString capped_list(const QStringList& items, int shown);

}  // namespace morvel::cli
