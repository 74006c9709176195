#pragma once
// The colours of the character canvas for one theme. Ink and trace are chosen to stand apart
// from the outline and the grid in every theme, so a learner always sees which is which. The
// outline keeps at least 2:1 against the backgrounds; the circles keep 3:1 against the
// backgrounds, and over the green of traced strokes either they or a halo in the background
// colour keep 3:1.

#include <QColor>
#include <array>

namespace morvel {

struct CanvasColors {
    /// Normal and alternative background (`altBackground` picks the second).
    std::array<QColor, 2> colorBackground;
    QColor colorGrid;
    /// The whole character's shape, under the ink.
    QColor colorOutline;
    /// The ink of watch mode.
    QColor colorAnim;
    QColor colorHelperLines;
    QColor colorTraceGood;
    QColor colorTraceBad;
    QColor colorCircleStart;
    QColor colorCircleEnd;
    /// The fill of strokes already traced.
    QColor colorDone = QColor(Qt::green);

    static constexpr unsigned int THEME_NORMAL = 0;
    static constexpr unsigned int THEME_DARK = 1;
    static constexpr unsigned int THEME_GREEN = 2;
    static constexpr unsigned int THEME_AUTO = 3;

    /// The colours of theme 0 normal, 1 dark or 2 green; 3 auto follows `osDark`. Any other
    /// number gives the normal colours.
    static CanvasColors for_theme(unsigned int theme, bool osDark) {
        if (theme == THEME_AUTO) theme = osDark ? THEME_DARK : THEME_NORMAL;
        if (theme == THEME_DARK) return dark();
        if (theme == THEME_GREEN) return green();
        return normal();
    }

    // Rice paper, a soft red practice grid as in printed copybooks, black ink.
    static CanvasColors normal() {
        return {{QColor(252, 249, 240), QColor(255, 255, 255)},
                QColor(232, 196, 188),
                QColor(176, 170, 160),
                QColor(34, 34, 38),
                QColor(100, 108, 128),
                QColor(40, 110, 215, 190),
                QColor(215, 50, 40, 190),
                QColor(0, 120, 60),
                QColor(190, 80, 0)};
    }

    // Slate, a dim grid, chalk-white ink.
    static CanvasColors dark() {
        return {{QColor(40, 42, 46), QColor(30, 31, 34)},
                QColor(70, 74, 82),
                QColor(100, 104, 114),
                QColor(238, 236, 228),
                QColor(178, 182, 192),
                QColor(90, 165, 255, 190),
                QColor(255, 95, 80, 190),
                QColor(255, 120, 210),
                QColor(255, 175, 60)};
    }

    // A blackboard: dark green board, pale chalk.
    static CanvasColors green() {
        return {{QColor(28, 48, 34), QColor(36, 60, 42)},
                QColor(58, 90, 64),
                QColor(86, 128, 92),
                QColor(236, 242, 220),
                QColor(250, 220, 110),
                QColor(120, 190, 255, 190),
                QColor(255, 110, 90, 190),
                QColor(255, 130, 215),
                QColor(255, 160, 80)};
    }
};

}  // namespace morvel
