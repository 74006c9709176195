#include <ki/qt/LayoutEvent.h>
#include <ki/str/xprintF.h>

namespace ki::qt {

std::string LayoutEvent::to_string() const {
    return str::xprintF(0, "LayoutEvent{kind:$, $x$, font:$->$}", kind, width, height, font_size_old,
                        font_size_new);
}

}  // namespace ki::qt
