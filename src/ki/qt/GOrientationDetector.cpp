#include <ki/qt/GOrientationDetector.h>

#include <QGuiApplication>
#include <QScreen>

namespace ki::qt {

GOrientationDetector::GOrientationDetector() : last(get_orientation()) {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return;
    connection =
        QObject::connect(screen, &QScreen::geometryChanged, [this](const QRect&) { on_screen_changed(); });
}

GOrientationDetector::~GOrientationDetector() {
    QObject::disconnect(connection);
}

Qt::Orientation GOrientationDetector::get_orientation() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return Qt::Horizontal;
    const QSize size = screen->size();
    return size.height() > size.width() ? Qt::Vertical : Qt::Horizontal;
}

void GOrientationDetector::on_screen_changed() {
    const Qt::Orientation now = get_orientation();
    if (now == last) return;
    last = now;
    if (liOrientation.has_listener()) liOrientation.fire_event(now);
}

}  // namespace ki::qt
