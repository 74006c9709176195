// A whole stroke file, read and built the way the window loads a character: any document either
// gives strokes or fails the character as a whole with a message; nothing half-built.
#include <ki/xml/XNode.h>


#include "app/stroke/Anim.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    const ki::xml::XNodeResult parsed = fuzz::parse_xml(data, size);
    if (!parsed.ok()) return 0;

    const ki::GSysResult<morvel::Anim> built = morvel::Anim::build_from_svg(parsed.value.get());
    if (!built.ok()) {
        fuzz::require(built.is_class_KIR() && built.has_message(), "a refused character says why");
        fuzz::require(built.value.strokes.empty(), "a refused character has no strokes");
        return 0;
    }
    const morvel::Anim& anim = built.value;
    fuzz::require(!anim.strokes.empty(), "a built character has strokes");
    const ki::math::Rect& box = anim.viewBox;
    fuzz::require(
        (box.width() > 0.0f && box.height() > 0.0f) || (box.width() == 0.0f && box.height() == 0.0f),
        "a viewBox is either usable or all zero");
    for (const morvel::AnimStroke& stroke : anim.strokes) {
        (void)stroke.to_string();
        const float length = stroke.pathAnim.get_length();
        (void)stroke.pathAnim.prefix_to_length(length * 0.25f);
        (void)stroke.pathOutline.distance_to_point(stroke.pathAnim.point_start());
    }
    anim.dump(0);
    return 0;
}
