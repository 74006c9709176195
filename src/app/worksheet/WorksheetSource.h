#pragma once
// The characters a worksheet is made of: each with its stroke model and its level-file row,
// looked up in the level folders of the resource tree.

#include <QLocale>
#include <QString>
#include <QStringList>
#include <vector>

#include "app/ChinChar.h"
#include "app/stroke/Anim.h"

namespace morvel {

struct WorksheetEntry {
    /// The character itself (one code point).
    QString character;
    /// Pinyin and meanings; empty fields when no level file lists the character.
    ChinChar info;
    Anim anim;
};

struct WorksheetSource {
    /// ":/wb/shared-res/zh/<level>", the folder of a level's stroke files.
    static QString level_dir(int level);

    /// Every character of `text` in order. White space and commas separate and are dropped;
    /// a character repeated is printed once. Characters without a usable stroke file in any
    /// level folder go to `missing`.
    static WorksheetSource from_text(const QString& text);
    /// The characters of a level in catalogue order; `ok` is false when the level has no
    /// folder (or no stroke files).
    static WorksheetSource from_level(int level);

    std::vector<WorksheetEntry> entries;
    QStringList missing;
    bool ok = true;
};

/// The meaning of `info` in `language`: German, Russian, or English for every other language.
QString meaning_in(const ChinChar& info, QLocale::Language language);

}  // namespace morvel
