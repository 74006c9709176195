#include <ki/qt/guitools/GFontPreload.h>

#include <QFont>
#include <QGuiApplication>
#include <thread>

#ifdef KI_HAVE_FONTCONFIG
#include <fontconfig/fontconfig.h>
#endif

namespace ki::qt {

struct FontPreload::Impl {
    std::thread worker;
};

FontPreload::FontPreload() : impl(std::make_unique<Impl>()) {
#ifdef KI_HAVE_FONTCONFIG
    impl->worker = std::thread([] { FcInit(); });
#endif
}

FontPreload::~FontPreload() {
    wait();
}

void FontPreload::wait() {
    if (impl->worker.joinable()) impl->worker.join();
}

AppFontScope::AppFontScope(const QFont& font) {
    if (QGuiApplication::font() == font) return;
    previous = std::make_unique<QFont>(QGuiApplication::font());
    QGuiApplication::setFont(font);
}

AppFontScope::~AppFontScope() {
    if (previous) QGuiApplication::setFont(*previous);
}

}  // namespace ki::qt
