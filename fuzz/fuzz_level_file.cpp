// A whole level file on disk. Whatever it holds, the table keeps only valid rows, and reading
// fewer lines gives the start of the same table.
#include <QFile>

#include "app/ChinChar.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    static const QString path = fuzz::scratch_dir() + QStringLiteral("/level.txt");
    {
        QFile file(path);
        fuzz::require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the scratch file opens");
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    const std::vector<morvel::ChinChar> table = morvel::basic_table_from_file(path, -1);
    for (const morvel::ChinChar& row : table) fuzz::require(row.is_valid(), "only valid rows are kept");

    const int limit = size == 0 ? 1 : 1 + data[0] % 8;
    const std::vector<morvel::ChinChar> start = morvel::basic_table_from_file(path, limit);
    fuzz::require(start.size() <= static_cast<size_t>(limit), "the line limit holds");
    fuzz::require(start.size() <= table.size() && std::equal(start.begin(), start.end(), table.begin()),
                  "a limited read is the start of the full table");
    return 0;
}
