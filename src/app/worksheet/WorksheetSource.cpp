#include "app/worksheet/WorksheetSource.h"

#include <ki/log/GLog.h>

#include <QFile>
#include <map>

#include "app/AppData.h"
#include "app/Level.h"

namespace morvel {

namespace {

/// Level-file rows, read once per level and call.
class Tables {
public:
    ChinChar find(int level, int code) {
        auto it = tables.find(level);
        if (it == tables.end())
            it = tables.emplace(level, basic_table_from_file(prog2::Level::shipped(level).file, -1)).first;
        return from_unicode(it->second, code);
    }

private:
    std::map<int, std::vector<ChinChar>> tables;
};

/// The stroke model of a file, or nothing usable (logged).
bool load_anim(const QString& path, Anim& anim) {
    ki::GSysResult<Anim> result = Anim::build_from_file(path);
    if (!result.ok() || result.value.strokes.empty()) {
        ki::pp_warn("WorksheetSource, no strokes in '$': $", path, result.to_string());
        return false;
    }
    anim = result.take();
    return true;
}

}  // namespace

QString WorksheetSource::level_dir(int level) {
    return prog2::Level::shipped(level).directory;
}

WorksheetSource WorksheetSource::from_text(const QString& text) {
    WorksheetSource source;
    Tables tables;
    QList<char32_t> seen;
    for (const char32_t code : text.toUcs4()) {
        if (QChar::isSpace(code) || code == U',' || code == U'，' || seen.contains(code)) continue;
        seen.append(code);
        const QString character = QString::fromUcs4(&code, 1);
        WorksheetEntry entry;
        entry.character = character;
        bool found = false;
        for (int level = 1; level <= prog2::Level::COUNT; ++level) {
            const QString path =
                QStringLiteral("%1/%2.svg").arg(level_dir(level)).arg(static_cast<uint>(code));
            if (!QFile::exists(path) || !load_anim(path, entry.anim)) continue;
            entry.info = tables.find(level, static_cast<int>(code));
            found = true;
            break;
        }
        if (found)
            source.entries.push_back(std::move(entry));
        else
            source.missing.append(character);
    }
    return source;
}

WorksheetSource WorksheetSource::from_level(int level) {
    WorksheetSource source;
    const prog2::Level shipped = prog2::Level::shipped(level);
    if (!shipped.is_valid()) {
        source.ok = false;
        return source;
    }
    prog2::AppData data(shipped);
    data.load();
    if (data.empty()) {
        source.ok = false;
        return source;
    }
    for (unsigned int i = 0; i < data.size(); ++i) {
        const prog2::AppObject& obj = data.appObject_at(i);
        const char32_t code = static_cast<char32_t>(obj.unicode);
        WorksheetEntry entry;
        entry.character = QString::fromUcs4(&code, 1);
        if (!load_anim(data.svg_file_path_at(i), entry.anim)) {
            source.missing.append(entry.character);
            continue;
        }
        entry.info = obj.chinChar;
        source.entries.push_back(std::move(entry));
    }
    return source;
}

QString meaning_in(const ChinChar& info, QLocale::Language language) {
    return language == QLocale::German || language == QLocale::Russian ? info.meaning(language) : info.english;
}

}  // namespace morvel
