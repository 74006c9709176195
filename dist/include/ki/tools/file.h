#pragma once
// Small file helpers over QFile; they see Qt resources (":/...") as well as real files.

#include <ki/GError.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ki::io::file {

bool exists(const QString& path);

/// The whole file. Fails with class IO when the file is missing or cannot be opened.
ki::GSysResult<QByteArray> read_all(const QString& path);

/// The file's lines as UTF-8 text, line ends ("\n" or "\r\n") removed and a leading byte
/// order mark dropped. With `maxLines` > 0 at most that many lines are read. A missing or
/// unreadable file is a failure whose message names the path and the cause.
ki::GSysResult<QStringList> read_lines(const QString& path, int maxLines = -1);

}  // namespace ki::io::file
