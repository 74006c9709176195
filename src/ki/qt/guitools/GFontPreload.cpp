#include <ki/qt/guitools/GFontPreload.h>

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

}  // namespace ki::qt
