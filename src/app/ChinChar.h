#pragma once
// One row of a level file: a character's code point with its pinyin and meanings.

#include <QLocale>
#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace morvel {

struct ChinChar {
    /// 0 marks an invalid or empty record. 16 bits: the level's characters are all in the BMP.
    uint16_t unicode = 0;
    QString pinyin;
    QString english;
    QString german;
    QString russian;

    /// Parses "20013 = { 中 | zhōng | middle; centre | Mitte; Zentrum | середина; центр }".
    /// The number alone decides the character; the first field is not checked. An invalid
    /// line gives a record with `unicode` 0.
    static ChinChar from_string(const QString& line);

    /// "中 | zhōng | ..." in the level-file field order, or "NO-VALID" for an empty record.
    std::string to_string() const;
    bool is_unicode(int code) const { return unicode == code; }
    bool is_valid() const { return unicode != 0; }
    /// The character itself, made from the code point.
    QString character() const;
    /// The meaning in `language`; empty for a language the level has no meanings in.
    QString meaning(QLocale::Language language) const;

    bool operator==(const ChinChar&) const = default;
};

/// Reads a level file; `maxLines` <= 0 reads all lines. Invalid lines are logged and skipped.
std::vector<ChinChar> basic_table_from_file(const QString& path, int maxLines);

/// A copy of the first row with that code point, or an empty record.
ChinChar from_unicode(const std::vector<ChinChar>& table, int code);

/// The level-1 table compiled into the program (the same rows as its level file).
std::vector<ChinChar> create_basic_table();

}  // namespace morvel
