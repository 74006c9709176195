#include "app/AppData.h"

#include <ki/log/GLog.h>

#include <QDir>
#include <QResource>

#include <limits>
#include <list>
#include <unordered_map>

namespace morvel::prog2 {

namespace {

AppObject appObjDummy;

}  // namespace

AppData::AppData(const QString& directory) : level(Level::shipped(1)) {
    level.directory = directory;
}

std::string AppObject::to_string() const { return ki::str::xprintF(0, "$,unicode:$,$", fileName, unicode, chinChar); }

namespace {

/// A listed file with the number its base name reads as, taken once instead of at every
/// comparison of the sort.
struct Listed {
    QString file;
    long long number = 0;
    bool numeric = false;
};

Listed listed_file(const QString& file) {
    Listed listed{file};
    const qsizetype dot = file.lastIndexOf(QLatin1Char('.'));
    listed.number = QStringView(file).left(dot < 0 ? file.size() : dot).toLongLong(&listed.numeric);
    return listed;
}

/// Gives access to the listing a resource directory keeps.
class ResourceDir : public QResource {
public:
    using QResource::QResource;
    using QResource::children;
    using QResource::isDir;
};

/// The file names in `directory`. A directory among the program's resources is read from its
/// own listing: QDir builds and checks a file info for each of up to a thousand entries, which
/// start-up with a large level would pay for before the first frame.
QStringList file_names(const QString& directory) {
    if (directory.startsWith(QLatin1Char(':'))) {
        const ResourceDir dir(directory);
        if (dir.isValid() && dir.isDir()) return dir.children();
    }
    return QDir(directory).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
}

bool less_listed(const Listed& a, const Listed& b) {
    if (a.numeric && b.numeric && a.number != b.number) return a.number < b.number;
    return a.file < b.file;
}

}  // namespace

bool AppData::less_file_name(const QString& a, const QString& b) {
    return less_listed(listed_file(a), listed_file(b));
}

int AppData::index_of(int code) const {
    for (size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].unicode == code) return static_cast<int>(i);
    }
    return -1;
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
    // The first row of each code point, as a linear search would find it: a level holds up to
    // a thousand rows, and start-up joins every one of them.
    std::unordered_map<int, const ChinChar*> rowOf;
    rowOf.reserve(table.size());
    for (const ChinChar& row : table) rowOf.emplace(row.unicode, &row);
    const QStringList listed = file_names(level.directory);
    // The order mixes numeric and text comparison, which is not transitive for every mix of
    // names ("2", "10", "1a"). std::list::sort is a plain merge sort that stays in bounds
    // with such an order, where std::sort may not.
    std::list<Listed> files;
    for (const QString& file : listed) files.push_back(listed_file(file));
    files.sort(&less_listed);

    entries.reserve(files.size());
    for (const Listed& each : files) {
        const QString& file = each.file;
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
        if (const auto row = rowOf.find(obj.unicode); row != rowOf.end()) obj.chinChar = *row->second;
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
