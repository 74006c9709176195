#include "app/progress/WriteQueue.h"

namespace morvel::progress {

WriteQueue::WriteQueue(std::function<Outcome(const Item&)> writeFn, std::function<void(Change)> changedFn)
    : write(std::move(writeFn)), changed(std::move(changedFn)) {
    retry.setSingleShot(true);
    QObject::connect(&retry, &QTimer::timeout, &retry, [this]() { drain(); });
}

void WriteQueue::push(Item item) {
    items.push_back(std::move(item));
    // A waiting retry keeps its pace: a full disk is not asked again at every stroke.
    if (!retry.isActive()) drain();
}

void WriteQueue::hold(bool on) {
    held = on;
    if (held)
        retry.stop();
    else
        drain();
}

void WriteQueue::set_failing() {
    if (failing) return;
    failing = true;
    changed(Change::FAILING);
}

void WriteQueue::drain() {
    // A listener that reacts to a change may record again; the running loop takes that along.
    if (held || draining) return;
    draining = true;
    while (!items.empty()) {
        const Outcome outcome = write(items.front());
        if (outcome == Outcome::WRITTEN) {
            items.pop_front();
            busySince.invalidate();
            continue;
        }
        if (outcome == Outcome::BUSY) {
            if (!busySince.isValid())
                busySince.start();
            else if (busySince.elapsed() >= BUSY_NOTICE_MS)
                set_failing();
        } else {
            set_failing();
        }
        retry.start(outcome == Outcome::BUSY ? BUSY_RETRY_MS : FAILED_RETRY_MS);
        draining = false;
        return;
    }
    retry.stop();
    draining = false;
    if (failing) {
        failing = false;
        changed(Change::CAUGHT_UP);
    }
}

}  // namespace morvel::progress
