#pragma once
// The row model of the row scroller: it knows how many rows there are and builds the widget of
// one row when the scroller needs it. Only rows on screen ever exist as widgets.

#include <ki/Listener.h>

#include <QObject>

class QWidget;

namespace ki::qt {
class GPanel;
}

namespace ki::qt::otf {

/// What the scroller tells the model about the row it asks for.
struct PanelData {
    QWidget* parent = nullptr;  ///< the scroller's viewport, the row's Qt parent
    int width = 0;              ///< the row's width in pixels
    bool selected = false;      ///< the row is the model's selected row
};

class GModel : public QObject {
public:
    explicit GModel(QObject* parent = nullptr);

    virtual long long row_count() const { return 0; }
    /// The least height of a row in pixels; a row whose content needs more gets more.
    virtual int get_row_height(int row) const;
    /// Builds the widget of `row` inside `data->parent`. The base makes an empty vertical
    /// panel, filled with the theme's base colour, or its highlight colour when selected.
    virtual GPanel* gen_panel_row(long long row, PanelData* data);

    /// -1 for none.
    long long get_selected_index() const { return selIndex; }
    /// Values outside 0..row_count()-1 clear the selection.
    void set_selected_index(long long index);

    /// Tells the scrollers to build their rows again (data or flags changed).
    void update_model();
    /// Clears the selection and tells the scrollers the rows are gone.
    void clear_data();

    /// Fired by update_model and clear_data; the scrollers showing this model listen.
    Listener<NO_PAYLOAD> liModelChanged;

protected:
    long long selIndex = -1;
    int rowHeight = 24;
};

}  // namespace ki::qt::otf
