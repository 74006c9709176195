#pragma once
// Tells when the primary screen turns between landscape and portrait.

#include <ki/Listener.h>

#include <QMetaObject>
#include <Qt>

namespace ki::qt {

class GOrientationDetector {
public:
    /// Follows the primary screen when there is one; without a screen it stays silent.
    GOrientationDetector();
    ~GOrientationDetector();
    GOrientationDetector(const GOrientationDetector&) = delete;
    GOrientationDetector& operator=(const GOrientationDetector&) = delete;

    /// Landscape or portrait of the primary screen now (landscape without a screen).
    static Qt::Orientation get_orientation();

    /// Fired when the orientation flips, with the new one.
    Listener<Qt::Orientation> liOrientation;

private:
    void on_screen_changed();

    QMetaObject::Connection connection;
    Qt::Orientation last = Qt::Horizontal;
};

}  // namespace ki::qt
