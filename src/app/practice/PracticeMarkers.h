#pragma once
// Painting the aids of practice over the character: the marker that shows why a trace was
// rejected, stroke numbers, helper circles with a halo, and a caption in a corner. The
// character-unit functions expect the canvas transform already set on the painter context.

#include <ki/math/Rect.h>

#include <QString>

#include "app/practice/Rejection.h"
#include "app/stroke/Anim.h"
#include "app/stroke/CanvasColors.h"

namespace ki::qt {
class GPC;
}

namespace morvel::practice {

class PracticeMarkers {
public:
    enum class Corner { TOP_LEFT, TOP_RIGHT, BOTTOM_LEFT, BOTTOM_RIGHT };

    /// Marker radius and pen width, in character units.
    static constexpr float MARK_SIZE = 36.0f;
    static constexpr float MARK_WIDTH = 14.0f;
    /// Radius of a stroke number's disc, in character units.
    static constexpr float NUMBER_RADIUS = 42.0f;

    /// The marker of `rejection` on `anim`, in character units: the matched stroke's outline
    /// and both numbers (wrong stroke), an arrow along the centre line (backwards, too short,
    /// too long), the press and the expected start (start), the faint centre line and the first
    /// sample outside (strayed), the release and the end ring (end), the first missed point
    /// (missed part); over the faint centre line, a cross where the trace turns most (not
    /// smooth), an arrow from the trace's centre to the stroke's (off place), a ring on the bend
    /// left out (hook or turn missing). Nothing for NONE or a stroke index out of range.
    static void paint_rejection(ki::qt::GPC& gpc, const Anim& anim, const Rejection& rejection,
                                const CanvasColors& colors, int rCircle);
    /// The numbers (from 1) of the first `count` strokes, each on a disc at its centre line's
    /// start, in character units.
    static void paint_stroke_numbers(ki::qt::GPC& gpc, const Anim& anim, const CanvasColors& colors,
                                     int count);
    /// The number of stroke `index` on a disc beside its start, `clearance` units from it, so
    /// that the start circle stays in view: before the start, else to one side, wherever the
    /// numbers of the strokes before it leave room. In character units.
    static void paint_number_beside(ki::qt::GPC& gpc, const Anim& anim, int index, const CanvasColors& colors,
                                    float clearance);
    /// The start and end circles of `stroke` as the canvas draws them (radius rCircle / 4,
    /// a dot of rCircle / 10 at the start), each ringed by a halo in the background colour so
    /// they stay visible over traced strokes. In character units.
    static void paint_helper_circles(ki::qt::GPC& gpc, const AnimStroke& stroke, const CanvasColors& colors,
                                     int rCircle, int widthCircle);
    /// `text` on a plate of the background colour in `corner` of `rect`, in widget pixels
    /// whatever the current transform. Nothing for an empty text.
    static void paint_caption(ki::qt::GPC& gpc, const ki::math::Rect& rect, const QString& text,
                              const CanvasColors& colors, Corner corner);
};

}  // namespace morvel::practice
