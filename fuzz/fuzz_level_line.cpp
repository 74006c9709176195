// One line of a level file. A line that is accepted must mean the same record when written
// back in the file's own form, whatever the fields hold.
#include "app/ChinChar.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    const morvel::ChinChar record = morvel::ChinChar::from_string(fuzz::text(data, size));
    (void)record.to_string();
    if (!record.is_valid()) return 0;
    // The first field is a placeholder: the character itself could be a separator.
    const QString line = QStringLiteral("%1 = { X | %2 | %3 | %4 | %5 }")
                             .arg(QString::number(record.unicode), record.pinyin, record.english,
                                  record.german, record.russian);
    fuzz::require(morvel::ChinChar::from_string(line) == record, "a record reads back from its own line");
    return 0;
}
