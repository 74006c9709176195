#pragma once
// Finding a character among the rows of every level: by the character itself, by its pinyin
// with or without tone ("xue", "xué", "xue2") or by a word of its meaning in one language.
// No widgets: the window's search field shows what `find` returns.

#include "app/ChinChar.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <vector>

namespace morvel::search {

struct Hit {
    ChinChar row;
    int level = 0;
};

class CharacterSearch {
public:
    /// Adds the rows of one level; rows with code point 0 are left out.
    void add_level(int level, const std::vector<ChinChar>& rows);
    /// The rows of every shipped level, read from their level files.
    static CharacterSearch of_shipped_levels();

    /// The rows `query` names, best first: a character of the query, then a whole pinyin
    /// syllable or meaning word, then one that only starts with the query; within each, by
    /// level and code point. Meaning words are those of `language` (English for any language
    /// without its own meanings). At most `limit` hits; none for a blank query.
    std::vector<Hit> find(const QString& query, QLocale::Language language, size_t limit = 100) const;

    size_t size() const { return entries.size(); }

    /// "xué" -> "xue2", "lǜ" -> "lv4", "le" -> "le"; lower case, ü written as v.
    static QString numbered_pinyin(const QString& pinyin);

private:
    struct Entry {
        Hit hit;
        QString toneless;  ///< "xue"
        QString numbered;  ///< "xue2"
        QStringList words[3];  ///< lower-case meaning words: English, German, Russian
    };
    std::vector<Entry> entries;
};

}  // namespace morvel::search
