#include <gtest/gtest.h>
#include <ki/qt/GPC.h>
#include <ki/xml/XNode.h>

#include <QBuffer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainterPath>
#include <QTemporaryDir>
#include <utility>

#include "LoggedTest.h"
#include "app/Level.h"
#include "app/stroke/Anim.h"

using morvel::Anim;

namespace {

const QString OUTLINE = R"~(<path id="a" d="M 0 0 L 10 0 L 10 10 Z"/>)~";
const QString CLIP = R"~(<clipPath id="c"><use href="#a"/></clipPath>)~";
const QString CENTRE = R"~(<path clip-path="url(#c)" d="M 1 1 L 9 9"/>)~";

ki::GSysResult<Anim> build_text(const QString& svg) {
    QByteArray data = svg.toUtf8();
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    const ki::xml::XNodeResult doc = ki::xml::XNode::parse(buffer);
    EXPECT_TRUE(doc.ok()) << doc.to_string();
    return Anim::build_from_svg(doc.value.get());
}

QString svg(const QString& body, const QString& rootAttributes = R"~(viewBox="0 0 1024 1024")~") {
    return "<svg xmlns='http://www.w3.org/2000/svg' " + rootAttributes + ">" + body + "</svg>";
}

}  // namespace

// Every structural fault fails the whole character; a bad viewBox only leaves the box zero.
TEST(AnimBuild, StructuralFaultsFailTheWholeCharacterAViewBoxNever) {
    const QString badOutline = "M 0 0 L 10", badCentre = "M 1 1 Q 9", good = OUTLINE + CLIP + CENTRE;
    const auto clip = [](const QString& inner) {
        return OUTLINE + "<clipPath id='c'>" + inner + "</clipPath>" + CENTRE;
    };
    const auto centre = [](const QString& attributes) {
        return OUTLINE + CLIP + "<path " + attributes + "/>";
    };
    const struct {
        const char* name;
        QString body;
        QString message;  ///< empty when the document builds
        QString rootAttributes = R"~(viewBox="0 0 1024 1024")~";
    } rows[] = {
        {"duplicate outline id", OUTLINE + OUTLINE + CLIP + CENTRE, "duplicate outline id 'a'"},
        {"centre line reuses an outline id", centre(R"~(id="a" clip-path="url(#c)" d="M 1 1 L 2 2")~"),
         "duplicate outline id 'a'"},
        {"clipPath without id", OUTLINE + R"~(<clipPath><use href="#a"/></clipPath>)~" + CENTRE,
         "clipPath without id"},
        {"use nested below a group is not found", clip("<g><use href='#a'/></g>"),
         "clipPath 'c' contains no use node"},
        {"clipPath with two uses", clip("<use href='#a'/><use href='#a'/>"),
         "clipPath 'c' contains multiple use nodes"},
        {"bare hash href", clip("<use href='#'/>"), "clipPath 'c' has invalid href '#'"},
        {"prefixed xlink:href is not read",
         clip("<use xmlns:xlink='http://www.w3.org/1999/xlink' xlink:href='#a'/>"),
         "clipPath 'c' has invalid href ''"},
        {"duplicate clipPath id", OUTLINE + CLIP + CLIP + CENTRE, "duplicate clipPath id 'c'"},
        {"clip-path without closing parenthesis", centre(R"~(clip-path="url(#c" d="M 1 1 L 2 2")~"),
         "invalid clip-path 'url(#c'"},
        {"clipPath not found", centre(R"~(clip-path="url(#x)" d="M 1 1 L 2 2")~"), "clipPath 'x' not found"},
        {"outline not found", clip("<use href='#zz'/>"), "outline path 'zz' not found"},
        {"outline without d", R"~(<path id="a"/>)~" + CLIP + CENTRE, "outline path 'a' has no d attribute"},
        {"centre line without d", centre(R"~(clip-path="url(#c)" d="")~"),
         "animation path for clip 'c' has no d attribute"},
        {"unparsable outline", "<path id='a' d='" + badOutline + "'/>" + CLIP + CENTRE,
         "cannot parse outline path 'a': " + ki::math::Path::from_svg_path_data(badOutline).get_message()},
        {"unparsable centre line", centre("clip-path='url(#c)' d='" + badCentre + "'"),
         "cannot parse animation path for clip 'c': " +
             ki::math::Path::from_svg_path_data(badCentre).get_message()},
        {"no strokes", OUTLINE + CLIP, "Anim::build_from_svg, no animation strokes found"},
        {"first fault in document order wins",
         centre(R"~(clip-path="bad" d="M 1 1 L 2 2"/><path clip-path="url(#x)" d="M 1 1 L 2 2")~"),
         "invalid clip-path 'bad'"},
        {"reference faults are found before stroke faults",
         centre(R"~(clip-path="bad" d="M 1 1 L 2 2")~") + CLIP, "duplicate clipPath id 'c'"},
        {"no viewBox", good, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ki::GSysResult<Anim> result = build_text(svg(row.body, row.rootAttributes));
        EXPECT_EQ(result.get_message(), row.message);
        ASSERT_EQ(result.ok(), row.message.isEmpty());
        if (result.ok()) {
            EXPECT_EQ(result.value.viewBox, ki::math::Rect()) << result.value.viewBox.to_string();
            continue;
        }
        EXPECT_EQ(result.error_class, ki::EC_KIR);
        EXPECT_EQ(result.error, 30);
        EXPECT_TRUE(result.value.strokes.empty());
    }
    EXPECT_EQ(Anim::build_from_svg(nullptr).error, 20);
}

// Strokes follow their centre lines, whatever the order of outlines and clip ids; a declaration,
// groups, definitions, foreign attributes and an unused outline change nothing.
TEST(AnimBuild, RichDocumentYieldsStrokesInCentreLineOrder) {
    const QString rich = svg(
        "<g><defs><path id='late' d='M 300 300 L 500 300 L 500 500 Z'/>"
        "<path id='early' d='M 90 90 C 150 80 220 150 210 210 L 90 210 Z'/><path id='unused' d='M 0 0 L 1 1'/></defs>"
        "<clipPath id='z-clip'><use href='#early' xlink:title='x'/></clipPath>"
        "<clipPath id='a-clip'><use href='#late'/></clipPath><clipPath id='spare'><use href='#unused'/></clipPath></g>"
        "<g><path clip-path='url(#z-clip)' fill='none' d='M 100 100 C 150 100 200 150 200 200'/>"
        "<path clip-path='url(#a-clip)' d='M 320 310 L 490 490'/><path clip-path='url(#a-clip)' d='M 330 310 L 480 480'/></g>",
        "xmlns:xlink='http://www.w3.org/1999/xlink' viewBox='0 0 1024 1024'");
    const ki::GSysResult<Anim> result = build_text("<?xml version='1.0'?>" + rich);
    ASSERT_TRUE(result.ok()) << result.to_string();
    EXPECT_EQ(result.value.viewBox, ki::math::Rect(0, 0, 1024, 1024));
    std::vector<glm::vec2> starts;  // centre line, then outline, per stroke
    for (const morvel::AnimStroke& stroke : result.value.strokes)
        starts.insert(starts.end(), {stroke.pathAnim.point_start(), stroke.pathOutline.point_start()});
    const std::vector<glm::vec2> expected = {{100, 100}, {90, 90},   {320, 310},
                                             {300, 300}, {330, 310}, {300, 300}};
    EXPECT_EQ(starts, expected);
}

TEST(AnimCache, LoadsAreServedByNameAndFailuresReportedOnce) {
    Anim::clear_cache();
    QTemporaryDir dir;
    const QString good = dir.filePath("good.svg"), noStrokes = dir.filePath("nostrokes.svg"),
                  missing = dir.filePath("missing.svg");
    write_file(good, svg(OUTLINE + CLIP + CENTRE + CENTRE).toUtf8());
    write_file(noStrokes, svg(OUTLINE + CLIP).toUtf8());

    const ki::GSysResult<Anim> first = Anim::build_from_file(good);
    ASSERT_EQ(first.value.strokes.size(), 2u) << first.to_string();
    write_file(good, "not xml at all");
    const ki::GSysResult<Anim> again = Anim::build_from_file(good);
    EXPECT_TRUE(again.ok() && again.value == first.value) << "a cached name is not read again";

    EXPECT_EQ(Anim::build_from_file(noStrokes).error, 30);
    const ki::GSysResult<Anim> secondLoad = Anim::build_from_file(noStrokes);
    EXPECT_TRUE(secondLoad.ok() && secondLoad.value.strokes.empty()) << "a failed build is reported once";

    const ki::GSysResult<Anim> gone = Anim::build_from_file(missing);
    EXPECT_TRUE(gone.error_class == ki::EC_IO && gone.get_message().contains(missing)) << gone.message;
    write_file(missing, svg(OUTLINE + CLIP + CENTRE).toUtf8());
    EXPECT_EQ(Anim::build_from_file(missing).value.strokes.size(), 1u) << "an unreadable file is not cached";

    // A resource reads like the same bytes on disk; a resource folder fails like a folder.
    const QString resource = ":/wb/shared-res/zh/1/19968.svg", copy = dir.filePath("19968.svg");
    write_file(copy, read_file(resource));
    ASSERT_TRUE(Anim::build_from_file(resource).ok());
    EXPECT_EQ(Anim::build_from_file(resource).value, Anim::build_from_file(copy).value);
    const ki::GSysResult<Anim> folder = Anim::build_from_file(":/wb/shared-res/zh/1");
    const ki::xml::XNodeResult asDocument = ki::xml::XNode::parse_file(":/wb/shared-res/zh/1");
    EXPECT_EQ(std::pair(folder.error_class, folder.message),
              std::pair(asDocument.error_class, asDocument.message));

    Anim::clear_cache();
}

// Every stroke file of every level builds with its centre lines inside their outlines, and with as
// many strokes as the package it is made from (when that is installed: `npm ci` in tools/resgen).
TEST(AnimShipped, EveryStrokeFileBuildsWithThePackagesStrokesCentreLinesInsideTheirOutlines) {
    const QDir package(QStringLiteral(QUENLO_SOURCE_DIR "/tools/resgen/node_modules/hanzi-writer-data"));
    int compared = 0;
    for (int level = 1; level <= morvel::prog2::Level::COUNT; ++level) {
        const QDir folder(morvel::prog2::Level::shipped(level).directory);
        const QStringList names = folder.entryList({"*.svg"}, QDir::Files);
        for (const QString& name : names) {
            SCOPED_TRACE(folder.filePath(name).toStdString());
            const ki::GSysResult<Anim> result = Anim::build_from_file(folder.filePath(name));
            ASSERT_TRUE(result.ok()) << result.to_string();
            EXPECT_EQ(result.value.viewBox, ki::math::Rect(0, 0, 1024, 1024));
            if (package.exists()) {
                const char32_t unicode = name.chopped(4).toUInt();
                QFile json(package.filePath(QString::fromUcs4(&unicode, 1) + QStringLiteral(".json")));
                ASSERT_TRUE(json.open(QIODevice::ReadOnly)) << json.fileName().toStdString();
                const QJsonArray strokes = QJsonDocument::fromJson(json.readAll()).object().value("strokes").toArray();
                EXPECT_EQ(result.value.strokes.size(), size_t(strokes.size()));
                ++compared;
            }
            for (size_t i = 0; i < result.value.strokes.size(); ++i) {
                const morvel::AnimStroke& stroke = result.value.strokes[i];
                SCOPED_TRACE(i);
                ASSERT_TRUE(stroke.is_valid());
                // Filled as the canvas draws it.
                QPainterPath outline = ki::qt::GPC::math_path_to_painter_path(stroke.pathOutline);
                outline.setFillRule(Qt::WindingFill);
                for (const glm::vec2 p : {stroke.pathAnim.point_start(), stroke.pathAnim.point_end()})
                    EXPECT_TRUE(outline.contains(QPointF(p.x, p.y))) << p.x << "," << p.y;
            }
        }
    }
    EXPECT_TRUE(!package.exists() || compared == 2663) << compared;
}
