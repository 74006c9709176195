#include <ki/qt/guitools/GWindowPalette.h>

#include <QAbstractItemView>
#include <QEvent>
#include <QWidget>

namespace ki::qt {

namespace {
// Marks a palette this filter gave, so that the next show takes the current theme again.
constexpr char PROPERTY_TAKEN[] = "kiPaletteFromParent";

// A combo box's popup: Qt sets it the palette of a new menu, the application's, whenever the
// box's palette changes (set, but chosen by no one), and its items take every colour their
// view does not set from the application's menu palette.
bool is_combo_popup(const QWidget& window) {
    return window.inherits("QComboBoxPrivateContainer");
}

bool has_own_palette(const QWidget& window) {
    return window.testAttribute(Qt::WA_SetPalette) && !is_combo_popup(window) &&
           !window.property(PROPERTY_TAKEN).toBool();
}
}  // namespace

bool WindowPaletteFilter::eventFilter(QObject* watched, QEvent* ev) {
    // Show comes before every first paint of a window, and after Qt has set a popup's palette.
    if (ev->type() == QEvent::Show && watched->isWidgetType()) {
        auto* widget = static_cast<QWidget*>(watched);
        if (widget->isWindow() && widget->parentWidget() != nullptr && !has_own_palette(*widget)) {
            const QWidget* over = widget->parentWidget()->window();
            if (over->testAttribute(Qt::WA_SetPalette)) {
                const QPalette palette = over->palette();
                // A menu shown again in the same theme keeps what it has; a combo box's popup
                // has been reset by Qt in between.
                if (widget->property(PROPERTY_TAKEN).toBool() && !is_combo_popup(*widget) &&
                    widget->palette() == palette)
                    return QObject::eventFilter(watched, ev);
                widget->setPalette(palette);
                widget->setProperty(PROPERTY_TAKEN, true);
                if (is_combo_popup(*widget)) {
                    for (QAbstractItemView* view :
                         widget->findChildren<QAbstractItemView*>(Qt::FindDirectChildrenOnly))
                        view->setPalette(palette);
                }
            }
        }
    }
    return QObject::eventFilter(watched, ev);
}

}  // namespace ki::qt
