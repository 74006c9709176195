#include "app/search/CharacterSearch.h"

#include "app/Level.h"

#include <QRegularExpression>

#include <algorithm>

namespace morvel::search {

namespace {

const QString TONE_MARKED = QStringLiteral("āáǎàēéěèīíǐìōóǒòūúǔùǖǘǚǜ");
const QString VOWELS = QStringLiteral("aeiouv");  // TONE_MARKED holds four tones of each

int language_slot(QLocale::Language language) {
    switch (language) {
        case QLocale::German:
            return 1;
        case QLocale::Russian:
            return 2;
        default:
            return 0;
    }
}

// The words of a meaning, lower case; the notes "(in xuéxiào)" name a word, not the meaning.
QStringList meaning_words(const QString& meaning) {
    static const QRegularExpression note(QStringLiteral("\\((?:in|в) [^)]*\\)"));
    static const QRegularExpression gap(QStringLiteral("[^\\p{L}\\p{N}]+"));
    QString text = meaning;
    text.remove(note);
    return text.toLower().split(gap, Qt::SkipEmptyParts);
}

enum Rank { CHARACTER, WHOLE, PREFIX, NONE };

}  // namespace

QString CharacterSearch::numbered_pinyin(const QString& pinyin) {
    QString base;
    int tone = 0;
    for (const QChar q : pinyin.toLower()) {
        const qsizetype at = TONE_MARKED.indexOf(q);
        if (at >= 0) tone = static_cast<int>(at % 4) + 1;
        base += at >= 0 ? VOWELS[at / 4] : q == u'ü' ? QChar(u'v') : q;
    }
    return tone == 0 ? base : base + QString::number(tone);
}

void CharacterSearch::add_level(int level, const std::vector<ChinChar>& rows) {
    for (const ChinChar& row : rows) {
        if (row.unicode == 0) continue;
        Entry e;
        e.hit = {row, level};
        e.numbered = numbered_pinyin(row.pinyin);
        e.toneless = e.numbered;
        if (!e.toneless.isEmpty() && e.toneless.back().isDigit()) e.toneless.chop(1);
        e.words[0] = meaning_words(row.english);
        e.words[1] = meaning_words(row.german);
        e.words[2] = meaning_words(row.russian);
        entries.push_back(std::move(e));
    }
}

CharacterSearch CharacterSearch::of_shipped_levels() {
    CharacterSearch search;
    for (int n = 1; n <= prog2::Level::COUNT; ++n)
        search.add_level(n, basic_table_from_file(prog2::Level::shipped(n).file, -1));
    return search;
}

std::vector<Hit> CharacterSearch::find(const QString& query, QLocale::Language language, size_t limit) const {
    const QString q = query.trimmed().toLower();
    if (q.isEmpty() || limit == 0) return {};
    const int slot = language_slot(language);

    // Han characters in the query name themselves; anything else is pinyin or a meaning word.
    QString hanzi;
    for (const char32_t c : q.toUcs4())
        if (QChar::script(c) == QChar::Script_Han) hanzi += QString::fromUcs4(&c, 1);
    // A tone mark or number asks for that tone; "xue" and "lü" for any.
    const QString numbered = numbered_pinyin(q);
    const bool toned = !numbered.isEmpty() && numbered.back().isDigit() && numbered.size() > 1;
    const QString syllable = toned ? numbered.chopped(1) : numbered;

    const auto rank_of = [&](const Entry& e) {
        if (!hanzi.isEmpty()) return hanzi.contains(e.hit.row.character()) ? CHARACTER : NONE;
        if (toned ? e.numbered == numbered : e.toneless == syllable) return WHOLE;
        Rank best = NONE;
        for (const QString& word : e.words[slot]) {
            if (word == q) return WHOLE;
            if (word.startsWith(q)) best = PREFIX;
        }
        if (!toned && q.size() > 1 && e.toneless.startsWith(syllable)) best = PREFIX;
        return best;
    };

    std::vector<std::pair<Rank, const Entry*>> ranked;
    for (const Entry& e : entries)
        if (const Rank r = rank_of(e); r != NONE) ranked.emplace_back(r, &e);
    const auto before = [](const auto& a, const auto& b) {
        if (a.first != b.first) return a.first < b.first;
        if (a.second->hit.level != b.second->hit.level) return a.second->hit.level < b.second->hit.level;
        return a.second->hit.row.unicode < b.second->hit.row.unicode;
    };
    const size_t count = std::min(limit, ranked.size());
    std::partial_sort(ranked.begin(), ranked.begin() + static_cast<std::ptrdiff_t>(count), ranked.end(), before);
    std::vector<Hit> hits;
    hits.reserve(count);
    for (size_t i = 0; i < count; ++i) hits.push_back(ranked[i].second->hit);
    return hits;
}

}  // namespace morvel::search
