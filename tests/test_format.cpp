#include <gtest/gtest.h>
#include <ki/GAtomic.h>
#include <ki/qt/event/EventFilter.h>
#include <ki/str/format.h>
#include <ki/str/xprintF.h>
#include <ki/tools/time.h>

#include <QMouseEvent>
#include <QPoint>
#include <QRect>
#include <QSize>

using ki::str::xprintF;

namespace {

struct Named {
    std::string to_string() const { return "named!"; }
};

struct QNamed {
    QString to_string() const { return QStringLiteral("q-named"); }
};

}  // namespace

TEST(Format, PlaceholdersAndEveryArgumentType) {
    const char* null_text = nullptr;
    const Named named;
    const Named* named_ptr = &named;
    const Named* null_named = nullptr;
    // Printed at once: Qt keeps the positions of a device's events in one shared place.
    auto mouse = [](QEvent::Type type, QPointF global, Qt::MouseButton button, Qt::MouseButtons held) {
        const QMouseEvent ev(type, QPointF(12, 5), global, button, held, Qt::NoModifier);
        return xprintF(0, "$|$", ev, &ev);
    };
    struct Row {
        const char* name;
        std::string got;
        std::string want;
    } rows[] = {
        {"placeholders in order", xprintF(0, "index:$, size:$", 3, 10), "index:3, size:10"},
        {"missing argument leaves the $", xprintF(0, "index:$, size:$", 3), "index:3, size:$"},
        {"surplus argument dropped", xprintF(0, "no placeholder", 42), "no placeholder"},
        {"adjacent placeholders", xprintF(0, "$$", 1, 2), "12"},
        {"a literal $ only through an argument", xprintF(0, "$", "$"), "$"},
        {"indent", xprintF(4, "x"), "    x"},
        {"null format", xprintF(4, nullptr), ""},
        {"QString result decoded from UTF-8", ki::str::qprintF("$ ok", QStringLiteral("中文")).toStdString(),
         "中文 ok"},
        {"int", xprintF(0, "$", -7), "-7"},
        {"unsigned long long", xprintF(0, "$", 18446744073709551615ULL), "18446744073709551615"},
        {"float two decimals", xprintF(0, "$", 1.0f), "1.00"},
        {"double six decimals", xprintF(0, "$", 1.0), "1.000000"},
        {"huge double", xprintF(0, "$", 1e30).substr(0, 5), "10000"},
        {"bool", xprintF(0, "$ $", true, false), "true false"},
        {"null char pointer", xprintF(0, "$", null_text), "nullptr"},
        {"std::string", xprintF(0, "$", std::string("abc")), "abc"},
        {"QString utf8", xprintF(0, "$", QStringLiteral("zhōng")), "zhōng"},
        {"QStringView", xprintF(0, "$", QStringView(u"ab")), "ab"},
        {"QChar", xprintF(0, "$", QChar(0x4E2D)), "中"},
        {"QPoint", xprintF(0, "$", QPoint(3, -4)), "3,-4"},
        {"QSize", xprintF(0, "$", QSize(640, 480)), "640,480"},
        {"QRect inclusive corners", xprintF(0, "$", QRect(QPoint(10, 20), QPoint(19, 39))), "10,20,10,20"},
        {"vec2", xprintF(0, "$", glm::vec2(1.5f, -2.0f)), "1.50, -2.00"},
        {"object with to_string", xprintF(0, "<$>", named), "<named!>"},
        {"object with QString to_string", xprintF(0, "$", QNamed()), "q-named"},
        {"pointer to object", xprintF(0, "$", named_ptr), "named!"},
        {"null pointer to object", xprintF(0, "$", null_named), "nullptr"},
        {"atomic flag", xprintF(0, "$", ki::GAtomic<bool>(true)), "true"},
        {"mouse event and its pointer",
         mouse(QEvent::MouseButtonPress, QPointF(112, 105), Qt::LeftButton, Qt::LeftButton | Qt::RightButton),
         "Press Left at 12,5 (global 112,105), buttons:Left|Right|Press Left at 12,5 (global 112,105), "
         "buttons:Left|Right"},
        {"released mouse button",
         mouse(QEvent::MouseButtonRelease, QPointF(3, 4), Qt::RightButton, Qt::NoButton),
         "Release Right at 12,5 (global 3,4), buttons:None|Release Right at 12,5 (global 3,4), buttons:None"},
    };
    for (const Row& r : rows) EXPECT_EQ(r.got, r.want) << r.name;
}

// The log's time column (LogTest.TraillerBits) covers the short forms and the sprintF calls of the
// log; a run of more than 99 hours widens the hour.
TEST(Format, CompactHourWidensPastNinetyNineHours) {
    EXPECT_EQ(ki::time::format_compact_hour(360000000000LL, ki::time::FORM_SECONDS), "100:00:00");
}
