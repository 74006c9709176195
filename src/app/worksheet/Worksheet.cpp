#include "app/worksheet/Worksheet.h"

#include <ki/log/GLog.h>
#include <ki/qt/GPC.h>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include "app/files/SafeSave.h"
#include "app/morvel.h"

namespace morvel {

namespace {

// Printed on white paper whatever the screen's theme.
const QColor INK(28, 28, 32);
const QColor ACCENT(208, 52, 30);
const QColor PENDING(228, 228, 228);
const QColor TRACE(208, 208, 208);
const QColor TEXT_SOFT(96, 96, 96);

constexpr int RESOLUTION = 1200;
constexpr float MM_PER_INCH = 25.4f;
// Keeps the strokes off the frame of their square.
constexpr float BOX_PADDING = 0.06f;
constexpr float NUMBER_RADIUS = 1.3f;

ki::math::Rect inset(const ki::math::Rect& r, float share) {
    const float dx = r.w * share;
    const float dy = r.h * share;
    return {r.x + dx, r.y + dy, r.w - 2.0f * dx, r.h - 2.0f * dy};
}

ki::math::Rect view_box(const Anim& anim) {
    return anim.viewBox.is_valid() ? anim.viewBox : ki::math::Rect(0.0f, 0.0f, 1024.0f, 1024.0f);
}

void set_font(ki::qt::GPC& gpc, const QString& family, int points) {
    QFont font(family);
    font.setPointSize(points);
    gpc.get_painter().setFont(font);
}

QString sans_family() {
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
}

/// Text width in millimetres for the current font: GPC measures in device units.
float text_width(const ki::qt::GPC& gpc, const QString& text) {
    return gpc.measure_string(text).x / static_cast<float>(gpc.get_transform().m11());
}

/// The fit of a character into a square: the scale of its frame, centred on its ink, so that
/// every character sits in the middle of the guide lines.
glm::mat3 character_matrix(const Anim& anim, const ki::math::Rect& box) {
    const ki::math::Rect target = inset(box, BOX_PADDING);
    glm::mat3 m = ki::math::matrix_fit_rect(view_box(anim), target);
    QRectF ink;
    for (const AnimStroke& stroke : anim.strokes)
        ink = ink.united(ki::qt::GPC::math_path_to_painter_path(stroke.pathOutline).boundingRect());
    if (ink.isEmpty()) return m;
    const glm::vec2 centre = ki::math::transform_point(
        m, {static_cast<float>(ink.center().x()), static_cast<float>(ink.center().y())});
    m[2][0] += target.center().x - centre.x;
    m[2][1] += target.center().y - centre.y;
    return m;
}

/// Fills the outlines of strokes [0, count) with `before`, the stroke `count` with `current`
/// and the later ones with `after`; a colour that is not valid leaves those strokes out.
void fill_strokes(ki::qt::GPC& gpc, const Anim& anim, const glm::mat3& m, int count, const QColor& before,
                  const QColor& current, const QColor& after) {
    gpc.save();
    gpc.set_matrix(m, true);
    for (int i = 0; i < static_cast<int>(anim.strokes.size()); ++i) {
        const QColor& color = i < count ? before : (i == count ? current : after);
        if (color.isValid()) gpc.fill_path(anim.strokes[static_cast<size_t>(i)].pathOutline, color);
    }
    gpc.restore();
}

/// The stroke's number in a small disc just before its start, against its direction, so that
/// it does not hide where the stroke begins.
void draw_stroke_number(ki::qt::GPC& gpc, const Anim& anim, const glm::mat3& m, const ki::math::Rect& box,
                        int stroke) {
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(stroke)].pathAnim;
    const glm::vec2 start = ki::math::transform_point(m, centre.point_start());
    const glm::vec2 ahead =
        ki::math::transform_point(m, centre.point_at_length(std::min(40.0f, centre.get_length())));
    const glm::vec2 direction = ahead - start;
    const float length = std::hypot(direction.x, direction.y);
    glm::vec2 at = length > 0.0f ? start - direction / length * NUMBER_RADIUS : start;
    at.x = std::clamp(at.x, box.left() + NUMBER_RADIUS, box.right() - NUMBER_RADIUS);
    at.y = std::clamp(at.y, box.top() + NUMBER_RADIUS, box.bottom() - NUMBER_RADIUS);
    gpc.fill_circle(at, NUMBER_RADIUS, Qt::white);
    gpc.draw_circle(at, NUMBER_RADIUS, ACCENT, 0.15f, Qt::SolidLine, ki::qt::LINE_MODE_GEOMETRIC);
    const QString number = QString::number(stroke + 1);
    const float w = text_width(gpc, number);
    gpc.draw_text_screen({at.x - w / 2.0f, at.y}, number, 0, ACCENT, ki::qt::TextAlignY::CENTER);
}

void draw_heading(ki::qt::GPC& gpc, const ki::math::Rect& r, const WorksheetEntry& entry,
                  QLocale::Language language) {
    const glm::vec2 base{r.x, r.bottom() - 2.0f};
    const QString writing = Worksheet::writing_font();
    set_font(gpc, writing.isEmpty() ? sans_family() : writing, 18);
    gpc.draw_text_screen(base, entry.character, 0, INK, ki::qt::TextAlignY::BASELINE);
    float x = base.x + text_width(gpc, entry.character) + 4.0f;
    set_font(gpc, sans_family(), 12);
    if (!entry.info.pinyin.isEmpty()) {
        gpc.draw_text_screen({x, base.y}, entry.info.pinyin, 0, INK, ki::qt::TextAlignY::BASELINE);
        x += text_width(gpc, entry.info.pinyin) + 4.0f;
    }
    set_font(gpc, sans_family(), 10);
    // A long meaning is cut short rather than run off the paper.
    const QPainter& painter = gpc.get_painter();
    const float room = (r.right() - x) * static_cast<float>(painter.transform().m11());
    const QString meaning = QFontMetricsF(painter.font(), painter.device())
                                .elidedText(meaning_in(entry.info, language), Qt::ElideRight, room);
    gpc.draw_text_screen({x, base.y}, meaning, 0, TEXT_SOFT, ki::qt::TextAlignY::BASELINE);
}

void draw_block(ki::qt::GPC& gpc, const SheetBlock& block, const WorksheetEntry& entry,
                const WorksheetOptions& options) {
    draw_heading(gpc, block.heading, entry, options.language);
    const GuideGridStyle grid;
    // Squares of one size differ only by an offset: one fit per row of them, moved along.
    const auto moved = [](glm::mat3 m, const ki::math::Rect& from, const ki::math::Rect& to) {
        m[2][0] += to.x - from.x;
        m[2][1] += to.y - from.y;
        return m;
    };
    if (!block.strip.empty()) {
        const glm::mat3 first = character_matrix(entry.anim, block.strip.front());
        for (size_t i = 0; i < block.strip.size(); ++i) {
            draw_guide_grid(gpc, block.strip[i], options.grid, grid);
            fill_strokes(gpc, entry.anim, moved(first, block.strip.front(), block.strip[i]),
                         static_cast<int>(i), INK, ACCENT, PENDING);
        }
        set_font(gpc, sans_family(), 5);
        for (size_t i = 0; i < block.strip.size(); ++i)
            draw_stroke_number(gpc, entry.anim, moved(first, block.strip.front(), block.strip[i]),
                               block.strip[i], static_cast<int>(i));
    }
    if (!block.practice.empty()) {
        const glm::mat3 first = character_matrix(entry.anim, block.practice.front());
        for (size_t i = 0; i < block.practice.size(); ++i) {
            draw_guide_grid(gpc, block.practice[i], options.grid, grid);
            if (static_cast<int>(i) < block.traced)
                fill_strokes(gpc, entry.anim, moved(first, block.practice.front(), block.practice[i]), 0,
                             QColor(), TRACE, TRACE);
        }
    }
}

}  // namespace

QString Worksheet::writing_font() {
    static const QString family = [] {
        if (!sChinFont1.isEmpty()) return sChinFont1;
        return reg_ttf_file(QStringLiteral(":/wb/shared-res/fonts/LXGWWenKai-Regular.ttf"));
    }();
    return family;
}

void Worksheet::draw_page(ki::qt::GPC& gpc, const WorksheetLayout& layout, int page,
                          const std::vector<WorksheetEntry>& entries, const WorksheetOptions& options) {
    if (page < 0 || page >= static_cast<int>(layout.pages.size())) {
        ki::pp_error("Worksheet::draw_page, page:$, pages:$", page, layout.pages.size());
        return;
    }
    gpc.set_anti_alias(true);
    for (const SheetBlock& block : layout.pages[static_cast<size_t>(page)].blocks) {
        if (block.entry < 0 || block.entry >= static_cast<int>(entries.size())) continue;
        draw_block(gpc, block, entries[static_cast<size_t>(block.entry)], options);
    }
    const QString number = QStringLiteral("%1 / %2").arg(page + 1).arg(layout.pages.size());
    set_font(gpc, sans_family(), 9);
    const ki::math::Rect footer = layout.footer();
    gpc.draw_text_screen({footer.center().x - text_width(gpc, number) / 2.0f, footer.center().y}, number, 0,
                         TEXT_SOFT, ki::qt::TextAlignY::CENTER);
}

ki::GSysResult<int> Worksheet::write(QIODevice& device, const std::vector<WorksheetEntry>& entries,
                                     const WorksheetOptions& options) {
    if (entries.empty())
        return ki::GSysResult<int>::from_error(ki::EC_APPLICATION, 1,
                                               QStringLiteral("no characters to print"));
    std::vector<int> strokeCounts;
    strokeCounts.reserve(entries.size());
    for (const WorksheetEntry& entry : entries)
        strokeCounts.push_back(static_cast<int>(entry.anim.strokes.size()));
    const WorksheetLayout layout = WorksheetLayout::build(strokeCounts, options);

    QPdfWriter writer(&device);
    writer.setResolution(RESOLUTION);
    writer.setCreator(QStringLiteral("quenlo"));
    writer.setTitle(QStringLiteral("quenlo"));
    const QPageSize size(options.paper == Paper::LETTER ? QPageSize::Letter : QPageSize::A4);
    writer.setPageLayout(QPageLayout(size, QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter));
    QPainter painter;
    if (!painter.begin(&writer))
        return ki::GSysResult<int>::from_error(ki::EC_IO, 2, QStringLiteral("cannot start the PDF"));
    ki::qt::GPC gpc(painter);
    const float dotsPerMm = static_cast<float>(RESOLUTION) / MM_PER_INCH;
    for (int page = 0; page < static_cast<int>(layout.pages.size()); ++page) {
        if (page > 0) writer.newPage();
        gpc.reset_transform();
        gpc.scale(dotsPerMm);
        draw_page(gpc, layout, page, entries, options);
    }
    painter.end();
    return static_cast<int>(layout.pages.size());
}

ki::GSysResult<int> Worksheet::write_file(const QString& fileName, const std::vector<WorksheetEntry>& entries,
                                          const WorksheetOptions& options) {
    SafeSave file(fileName);
    if (!file.open()) return ki::GSysResult<int>::from_error(ki::EC_IO, 3, file.reason());
    ki::GSysResult<int> result = write(file.device(), entries, options);
    if (!result.ok()) {
        file.cancel();
        return result;
    }
    if (!file.commit()) return ki::GSysResult<int>::from_error(ki::EC_IO, 4, file.reason());
    ki::pp("Worksheet::write_file, '$', characters:$, pages:$", fileName, entries.size(), result.value);
    return result;
}

}  // namespace morvel
