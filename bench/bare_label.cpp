// The start-up floor: a bare Qt Widgets program showing one label in a 1024x750 window. It
// prints the time from its launch to its first painted frame the way quenlo's start-up probe
// does ("quenlo-bench first-frame-ms:<ms>", launch time from QUENLO_BENCH_T0) and quits.
#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QTimer>
#include <chrono>
#include <cstdio>

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

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QLabel label(QStringLiteral("quenlo"));
    label.setAlignment(Qt::AlignCenter);
    label.resize(1024, 750);
    FirstFrameProbe probe;
    label.installEventFilter(&probe);
    label.show();
    return app.exec();
}
