#pragma once
// The catalogue of one level: a stroke file per character, ordered by code point, each joined
// with its row of the level file. Built once at start-up, then only read.

#include "app/ChinChar.h"
#include "app/Level.h"

#include <QString>

#include <string>
#include <vector>

namespace morvel::prog2 {

struct AppObject {
    QString fileName;  ///< as listed in the directory, extension included ("20013.svg")
    int32_t unicode = 0;
    bool flag = false;
    ChinChar chinChar;

    /// "20013.svg,unicode:20013,中 | zhōng | ..."
    std::string to_string() const;
    bool is_empty() const { return fileName.isEmpty(); }
};

class AppData {
public:
    /// The catalogue of one level: stroke files from its directory, rows from its level file.
    explicit AppData(const Level& level) : level(level) {}
    /// Stroke files from `directory`, rows from the level file of level 1.
    explicit AppData(const QString& directory);

    /// Lists the directory and joins every stroke file with its level row. Called once.
    void load();
    /// Replaces the catalogue by `next`'s; false (logged, nothing changed) when that level has
    /// no characters.
    bool switch_to(const Level& next);
    /// The code points in catalogue order.
    std::vector<int> code_points() const;
    /// The index of the entry of `code`, -1 when the level has none.
    int index_of(int code) const;

    unsigned int size() const { return static_cast<unsigned int>(entries.size()); }
    bool empty() const { return entries.empty(); }
    /// The entry at `index`, or the empty dummy entry when out of range.
    AppObject& appObject_at(unsigned int index);
    /// The entry's code point, or -1 (logged) when out of range.
    int unicode_at(unsigned int index) const;
    /// ":/wb/shared-res/zh/1/20013.svg", or "" (logged) when out of range.
    QString svg_file_path_at(unsigned int index) const;
    const QString& get_directory() const { return level.directory; }
    const Level& get_level() const { return level; }

    std::string to_string() const;
    void dump(unsigned int indent) const;

    /// Catalogue order: numeric base names by value, any other names as text among themselves.
    static bool less_file_name(const QString& a, const QString& b);

private:
    bool index_ok(unsigned int index) const;

    Level level;
    std::vector<AppObject> entries;
};

}  // namespace morvel::prog2
