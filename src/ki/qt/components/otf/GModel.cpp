#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GModel.h>

namespace ki::qt::otf {

GModel::GModel(QObject* parent) : QObject(parent) {}

int GModel::get_row_height(int) const {
    return rowHeight;
}

GPanel* GModel::gen_panel_row(long long, PanelData* data) {
    auto* panel = new GPanel(data != nullptr ? data->parent : nullptr, GLAYOUT::VERT);
    panel->setAutoFillBackground(true);
    if (data != nullptr && data->selected) {
        panel->setBackgroundRole(QPalette::Highlight);
        QPalette pal = panel->palette();
        pal.setColor(QPalette::WindowText, pal.color(QPalette::HighlightedText));
        panel->setPalette(pal);
    } else {
        panel->setBackgroundRole(QPalette::Base);
    }
    return panel;
}

void GModel::set_selected_index(long long index) {
    selIndex = index >= 0 && index < row_count() ? index : -1;
}

void GModel::update_model() {
    if (liModelChanged.has_listener()) liModelChanged.fire_event();
}

void GModel::clear_data() {
    selIndex = -1;
    update_model();
}

}  // namespace ki::qt::otf
