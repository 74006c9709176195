#pragma once
// Where everything of a worksheet goes, in millimetres from the paper's top left corner:
// pages of character blocks, each a heading line, the stroke-order strip and the practice
// squares. Pure arithmetic, so what is printed can be checked without printing.

#include <ki/math/Rect.h>

#include <QLocale>
#include <vector>

#include "app/worksheet/GuideGrid.h"

namespace morvel {

enum class Paper { A4, LETTER };

struct WorksheetOptions {
    static constexpr int ROWS_MIN = 1;
    /// The most practice rows that still fit one character with a long strip on a page.
    static constexpr int ROWS_MAX = 10;

    GuideGrid grid = GuideGrid::TIAN;
    Paper paper = Paper::A4;
    /// Rows of practice squares per character.
    int rows = 2;
    /// Practice squares that show the whole character lightly, to trace over.
    int traced = 3;
    /// Picks the meaning shown in each heading.
    QLocale::Language language = QLocale::English;
};

/// One character's part of a page.
struct SheetBlock {
    /// Index into the characters the layout was built for.
    int entry = 0;
    ki::math::Rect heading;
    /// Square i shows strokes 1 to i + 1.
    std::vector<ki::math::Rect> strip;
    /// The first `traced` carry the light character, the rest are empty.
    std::vector<ki::math::Rect> practice;
    int traced = 0;
};

struct SheetPage {
    std::vector<SheetBlock> blocks;
};

class WorksheetLayout {
public:
    static constexpr float MARGIN = 15.0f;
    static constexpr float HEADING_HEIGHT = 9.0f;
    static constexpr float STRIP_BOX = 12.0f;
    static constexpr float STRIP_GAP = 1.5f;
    static constexpr float PRACTICE_BOX = 18.0f;
    static constexpr float BLOCK_GAP = 6.0f;
    static constexpr float FOOTER_HEIGHT = 8.0f;

    /// Blocks for characters with these stroke counts, in order; a block never splits across
    /// pages. No characters give no pages.
    static WorksheetLayout build(const std::vector<int>& strokeCounts, const WorksheetOptions& options);

    /// Width and height of the paper.
    static ki::math::Rect paper_rect(Paper paper);
    /// The line the page number is centred in.
    ki::math::Rect footer() const;

    ki::math::Rect paper;
    std::vector<SheetPage> pages;
};

}  // namespace morvel
