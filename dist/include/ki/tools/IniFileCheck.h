#pragma once
// Looks through a settings file in the INI form of QSettings (the native form on Linux) for the
// values that Qt decodes from a binary data stream, "@Variant(...)" and "@DateTime(...)", before
// Qt converts any of them. Qt's decoder believes the counts it reads: a damaged value that
// claims a list of four billion entries makes it reserve that much memory, and the program ends
// at its first read of the settings. Only types whose decoding stays bounded pass.
//
// The file is split into sections, lines, keys and values exactly as QSettings 6.4 splits it,
// so that every value Qt would decode is seen here first.

#include <ki/GError.h>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ki::io {

class IniFileCheck {
public:
    /// OK when Qt may convert every value of `data`; otherwise class EC_KIR, code 1, with a
    /// message naming the first refused value's key and type id.
    static GError check(QByteArrayView data);
    /// check() over a file's content. A missing file passes: there is nothing to convert.
    /// An unreadable one fails with class EC_IO.
    static GError check_file(const QString& path);

    /// Whether Qt reads a value of this stream type id with bounded memory: numbers,
    /// characters, texts, byte arrays, dates and times, geometry and colours. `qt4Ids`: the
    /// id is in the numbering of the Qt 4 streams that "@Variant(" values use.
    static bool is_bounded_type(quint32 typeId, bool qt4Ids);
    /// Whether one converted value text ("@Variant(\0\0\0\x2...)") is safe to hand to Qt.
    static bool is_safe_value(const QString& value);
};

}  // namespace ki::io
