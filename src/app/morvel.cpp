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

QString create_chin_block_simple() {
    return QString::fromUtf16(
        u"一 七 三 上 不 东 两 中 么 也\n"
        u"了 二 五 些 人 什 他 们 你 做\n"
        u"儿 八 六 几 出 分 十 去 友 叫\n"
        u"吃 名 后 吗 吧 听 呀 呢 和 啊\n"
        u"四 国 在 多 大 天 太 她 好 妈\n"
        u"字 学 家 小 少 年 很 得 怎 我\n"
        u"日 明 是 月 有 朋 来 水 没 点\n"
        u"爱 爸 生 电 的 看 着 老 能 见\n"
        u"说 谁 谢 这 那 都 饭");
}

QString create_chin_line_simple() {
    return QString::fromUtf16(
        u"一七三上不东两中么也了二五些人什他们你做儿八六几出分十去友叫吃名后吗吧听呀呢和啊"
        u"四国在多大天太她好妈字学家小少年很得怎我日明是月有朋来水没点爱爸生电的看着老能见"
        u"说谁谢这那都饭");
}

void show_unicode(unsigned int indent, const QString& text) {
    for (const QChar c : text) {
        const unsigned code = c.unicode();
        ki::pp("$'$'  $  $", std::string(indent, ' '), c, ki::str::sprintF("%04X", code),
               ki::str::format_fill_zero(5, code));
    }
}

}  // namespace morvel
