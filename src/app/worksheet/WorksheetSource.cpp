#include "app/worksheet/WorksheetSource.h"

#include <ki/log/GLog.h>

#include <QDir>
#include <QFile>
#include <algorithm>
#include <map>

#include "app/AppData.h"

namespace morvel {

namespace {

const QString ZH_DIR = QStringLiteral(":/wb/shared-res/zh");

QString level_file(int level) {
    return QStringLiteral("%1/level_%2.txt").arg(ZH_DIR).arg(level);
}

/// The level folders present, in ascending order.
std::vector<int> levels() {
    std::vector<int> found;
    for (const QString& name : QDir(ZH_DIR).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool ok = false;
        const int level = name.toInt(&ok);
        if (ok && level > 0) found.push_back(level);
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// Level-file rows, read once per level and call.
class Tables {
public:
    ChinChar find(int level, int code) {
        auto it = tables.find(level);
        if (it == tables.end())
            it = tables.emplace(level, basic_table_from_file(level_file(level), -1)).first;
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
    return QStringLiteral("%1/%2").arg(ZH_DIR).arg(level);
}

WorksheetSource WorksheetSource::from_text(const QString& text) {
    WorksheetSource source;
    Tables tables;
    const std::vector<int> present = levels();
    QList<char32_t> seen;
    for (const char32_t code : text.toUcs4()) {
        if (QChar::isSpace(code) || code == U',' || code == U'，' || seen.contains(code)) continue;
        seen.append(code);
        const QString character = QString::fromUcs4(&code, 1);
        WorksheetEntry entry;
        entry.character = character;
        bool found = false;
        for (const int level : present) {
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
    prog2::AppData data(level_dir(level));
    data.load();
    if (data.empty()) {
        source.ok = false;
        return source;
    }
    Tables tables;
    for (unsigned int i = 0; i < data.size(); ++i) {
        const prog2::AppObject& obj = data.appObject_at(i);
        const char32_t code = static_cast<char32_t>(obj.unicode);
        WorksheetEntry entry;
        entry.character = QString::fromUcs4(&code, 1);
        if (!load_anim(data.svg_file_path_at(i), entry.anim)) {
            source.missing.append(entry.character);
            continue;
        }
        // The catalogue joins its own level file; fall back to reading it when it did not.
        entry.info = obj.chinChar.is_valid() ? obj.chinChar : tables.find(level, obj.unicode);
        source.entries.push_back(std::move(entry));
    }
    return source;
}

QString meaning_in(const ChinChar& info, QLocale::Language language) {
    switch (language) {
        case QLocale::German:
            return info.german;
        case QLocale::Russian:
            return info.russian;
        default:
            return info.english;
    }
}

}  // namespace morvel
