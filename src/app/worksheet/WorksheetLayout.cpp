#include "app/worksheet/WorksheetLayout.h"

#include <algorithm>

namespace morvel {

ki::math::Rect WorksheetLayout::paper_rect(Paper paper) {
    return paper == Paper::LETTER ? ki::math::Rect(0.0f, 0.0f, 215.9f, 279.4f)
                                  : ki::math::Rect(0.0f, 0.0f, 210.0f, 297.0f);
}

ki::math::Rect WorksheetLayout::footer() const {
    return {MARGIN, paper.h - MARGIN, paper.w - 2.0f * MARGIN, FOOTER_HEIGHT};
}

WorksheetLayout WorksheetLayout::build(const std::vector<int>& strokeCounts,
                                       const WorksheetOptions& options) {
    WorksheetLayout layout;
    layout.paper = paper_rect(options.paper);
    const float width = layout.paper.w - 2.0f * MARGIN;
    const float top = MARGIN;
    // The footer sits in the bottom margin; blocks may use everything above it.
    const float bottom = layout.paper.h - MARGIN;
    const int stripColumns = std::max(1, static_cast<int>((width + STRIP_GAP) / (STRIP_BOX + STRIP_GAP)));
    const int practiceColumns = std::max(1, static_cast<int>(width / PRACTICE_BOX));
    const int rows = std::clamp(options.rows, WorksheetOptions::ROWS_MIN, WorksheetOptions::ROWS_MAX);

    float y = top;
    for (size_t i = 0; i < strokeCounts.size(); ++i) {
        const int strokes = std::max(0, strokeCounts[i]);
        const int stripLines = (strokes + stripColumns - 1) / stripColumns;
        const float height = HEADING_HEIGHT + static_cast<float>(stripLines) * (STRIP_BOX + STRIP_GAP) +
                             static_cast<float>(rows) * PRACTICE_BOX;
        // A block taller than a whole page still gets a page of its own.
        if (layout.pages.empty() || (y + height > bottom && y > top)) {
            layout.pages.emplace_back();
            y = top;
        }
        SheetBlock block;
        block.entry = static_cast<int>(i);
        block.heading = {MARGIN, y, width, HEADING_HEIGHT};
        float rowY = y + HEADING_HEIGHT;
        for (int s = 0; s < strokes; ++s) {
            const int column = s % stripColumns;
            if (s > 0 && column == 0) rowY += STRIP_BOX + STRIP_GAP;
            block.strip.emplace_back(MARGIN + static_cast<float>(column) * (STRIP_BOX + STRIP_GAP), rowY,
                                     STRIP_BOX, STRIP_BOX);
        }
        rowY = y + HEADING_HEIGHT + static_cast<float>(stripLines) * (STRIP_BOX + STRIP_GAP);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < practiceColumns; ++c)
                block.practice.emplace_back(MARGIN + static_cast<float>(c) * PRACTICE_BOX,
                                            rowY + static_cast<float>(r) * PRACTICE_BOX, PRACTICE_BOX,
                                            PRACTICE_BOX);
        block.traced = std::clamp(options.traced, 0, static_cast<int>(block.practice.size()));
        layout.pages.back().blocks.push_back(std::move(block));
        y += height + BLOCK_GAP;
    }
    return layout;
}

}  // namespace morvel
