#include "app/morvel.h"

#include <ki/log/GLog.h>
#include <ki/str/format.h>
#include <ki/tools/os.h>

#include <QFontDatabase>
#include <QStringList>

namespace morvel {

QString sChinFont1;

std::string get_morvel_version() { return ki::str::xprintF(0, "$.$.$", 0, 9, 8); }

void ini() {
    if (!sChinFont1.isEmpty()) {
        ki::pp_error("morvel::ini already called");
        return;
    }
    if (ki::os::is_wasm()) {
        sChinFont1 = reg_ttf_file(QStringLiteral(":/wb/shared-res/fonts/LXGWWenKai-Regular.ttf"));
    }
}

QString reg_ttf_file(const QString& path) {
    const int id = QFontDatabase::addApplicationFont(path);
    if (id < 0) {
        ki::pp_error("Could not load application font '$'", path);
        return {};
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (families.isEmpty()) {
        ki::pp_error("Font '$' has no font family", path);
        return {};
    }
    ki::pp("morvel::reg_ttf_file '$', family '$'", path, families.first());
    return families.first();
}

}  // namespace morvel
