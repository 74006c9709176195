// The start-up floor: a bare Qt Widgets program showing one label in a 1024x750 window. It
// prints the time from its launch to its first painted frame the way quenlo's start-up probe
// does ("quenlo-bench first-frame-ms:<ms>", launch time from QUENLO_BENCH_T0) and quits.
//
// With --texts it also shows text in the other sizes of quenlo's first frame and a line of Han
// characters in the system's CJK family, with fontconfig loading on a thread of its own as in
// quenlo: the floor for a window that shows those texts, whatever else it does.
#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#ifdef BARE_HAVE_FONTCONFIG
#include <fontconfig/fontconfig.h>
#endif

namespace {

const std::chrono::steady_clock::time_point staticInitTime = std::chrono::steady_clock::now();

double ms_since_launch() {
    bool ok = false;
    const double t0 = qgetenv("QUENLO_BENCH_T0").toDouble(&ok);
    if (ok && t0 > 0.0) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration<double, std::milli>(now).count() - t0 * 1000.0;
    }
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - staticInitTime)
        .count();
}

class FirstFrameProbe : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* ev) override {
        if (!seen && ev->type() == QEvent::Paint) {
            seen = true;
            QTimer::singleShot(0, this, [] {
                std::printf("quenlo-bench first-frame-ms:%.1f\n", ms_since_launch());
                std::fflush(stdout);
                QCoreApplication::quit();
            });
        }
        return QObject::eventFilter(watched, ev);
    }

private:
    bool seen = false;
};

// quenlo's first frame: the window font, the pinyin and meaning lines, the canvas caption (pixels)
// and the list's characters, besides the application font of the label above them.
void add_first_frame_texts(QWidget& window, QVBoxLayout& column) {
    for (const int pixels : {15, 19, 27}) {
        auto* line = new QLabel(QStringLiteral("xu\u00e9x\u00ed \u00b7 to study"), &window);
        QFont font = line->font();
        font.setPixelSize(pixels);
        line->setFont(font);
        column.addWidget(line);
    }
    // The family the list takes: Noto Sans CJK SC where installed, else the first CJK family.
    const QString noto = QStringLiteral("Noto Sans CJK SC");
    const QStringList cjk = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
    QFont han(cjk.isEmpty() || cjk.contains(noto) ? noto : cjk.first());
    han.setPixelSize(35);
    han.setStyleStrategy(QFont::PreferNoShaping);
    auto* characters = new QLabel(QStringLiteral("\u5b66\u4e60\u4e2d\u6587"), &window);
    characters->setFont(han);
    column.addWidget(characters);
}

}  // namespace

int main(int argc, char** argv) {
    const bool texts = argc > 1 && std::strcmp(argv[1], "--texts") == 0;
    std::thread fonts;
#ifdef BARE_HAVE_FONTCONFIG
    if (texts) fonts = std::thread([] { FcInit(); });
#endif
    QApplication app(argc, argv);
    FirstFrameProbe probe;
    if (!texts) {
        QLabel label(QStringLiteral("quenlo"));
        label.setAlignment(Qt::AlignCenter);
        label.resize(1024, 750);
        label.installEventFilter(&probe);
        label.show();
        return app.exec();
    }
    if (fonts.joinable()) fonts.join();
    QWidget window;
    auto* column = new QVBoxLayout(&window);
    auto* label = new QLabel(QStringLiteral("quenlo"), &window);
    label->setAlignment(Qt::AlignCenter);
    column->addWidget(label, 1);
    add_first_frame_texts(window, *column);
    window.resize(1024, 750);
    window.installEventFilter(&probe);
    window.show();
    return app.exec();
}
