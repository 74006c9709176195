#include "app/AppData.h"

#include <ki/log/GLog.h>

#include <QDir>
#include <QFileInfo>

#include <limits>
#include <list>

namespace morvel::prog2 {

namespace {

AppObject appObjDummy;

}  // namespace

AppData::AppData(const QString& directory) : level(Level::shipped(1)) {
    level.directory = directory;
}

std::string AppObject::to_string() const { return ki::str::xprintF(0, "$,unicode:$,$", fileName, unicode, chinChar); }

bool AppData::less_file_name(const QString& a, const QString& b) {
    bool okA = false;
    bool okB = false;
    const long long na = QFileInfo(a).completeBaseName().toLongLong(&okA);
    const long long nb = QFileInfo(b).completeBaseName().toLongLong(&okB);
    if (okA && okB && na != nb) return na < nb;
    return a < b;
}

bool AppData::switch_to(const Level& next) {
    AppData other(next);
    if (next.is_valid()) other.load();
    if (other.empty()) {
        ki::pp_error("AppData::switch_to, level:$ has no characters", next.number);
        return false;
    }
    *this = std::move(other);
    return true;
}

std::vector<int> AppData::code_points() const {
    std::vector<int> codes;
    codes.reserve(entries.size());
    for (const AppObject& entry : entries) codes.push_back(entry.unicode);
    return codes;
}

void AppData::load() {
    if (!entries.empty()) {
        ki::pp_error("AppData::load, already called");
        return;
    }
    const std::vector<ChinChar> table = basic_table_from_file(level.file, -1);
    const QStringList listed =
        QDir(level.directory).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    // The order mixes numeric and text comparison, which is not transitive for every mix of
    // names ("2", "10", "1a"). std::list::sort is a plain merge sort that stays in bounds
    // with such an order, where std::sort may not.
    std::list<QString> files(listed.begin(), listed.end());
    files.sort(&AppData::less_file_name);

    entries.reserve(files.size());
    for (const QString& file : files) {
        QString name = file;
        if (name.endsWith(QStringLiteral(".svg"), Qt::CaseInsensitive)) name.chop(4);
        bool ok = false;
        const long long code = name.toLongLong(&ok, 10);
        if (!ok || code < std::numeric_limits<int32_t>::min() || code > std::numeric_limits<int32_t>::max()) {
            // Three times, indented a little more each time, so it stands out in a long log.
            ki::pp_error("AppData::load - unicode ?");
            ki::pp_error(" AppData::load - unicode ?");
            ki::pp_error("  AppData::load - unicode ?");
            ki::pp_error("sFile '$'", name);
            continue;
        }
        AppObject obj;
        obj.fileName = file;
        obj.unicode = static_cast<int32_t>(code);
        obj.chinChar = from_unicode(table, obj.unicode);
        entries.push_back(std::move(obj));
    }
    ki::pp("AppData::load, level $, $ symbols", level.number, size());
}

// The catalogue is never asked for an entry while it is empty (the window and the list check
// first), but guard it anyway: size() - 1 would wrap to the largest unsigned value.
bool AppData::index_ok(unsigned int index) const { return !entries.empty() && index <= size() - 1; }

AppObject& AppData::appObject_at(unsigned int index) {
    if (index < size()) return entries[index];
    appObjDummy = AppObject();
    return appObjDummy;
}

int AppData::unicode_at(unsigned int index) const {
    if (!index_ok(index)) {
        ki::pp_error("AppData::svg_file_path_at, index:$, size:$", index, size());
        return -1;
    }
    return entries[index].unicode;
}

QString AppData::svg_file_path_at(unsigned int index) const {
    if (!index_ok(index)) {
        ki::pp_error("AppData::svg_file_path_at, index:$, size:$", index, size());
        return {};
    }
    return ki::str::qprintF("$/$", level.directory, entries[index].fileName);
}

std::string AppData::to_string() const {
    return ki::str::xprintF(0, "AppData, level $, dir:'$', entries:$", level.number, level.directory, size());
}

void AppData::dump(unsigned int indent) const {
    ki::pp(ki::str::xprintF(indent, "AppData, '$', $ symbols", level.directory, size()));
    for (const AppObject& obj : entries) ki::pp(ki::str::xprintF(indent, "$", obj));
}

}  // namespace morvel::prog2
