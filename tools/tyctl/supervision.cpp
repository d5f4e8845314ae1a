#include "tyctl/supervision.h"

#include <algorithm>

namespace tyctl {

void Supervision::started(double now, const Heartbeat& heartbeat) {
    startedAt_ = now;
    touchedAt_ = now;
    lastTouch_ = heartbeat.lastTouch;
}

bool Supervision::isStale(double now, const Heartbeat& heartbeat) {
    if (heartbeat.lastTouch != lastTouch_) {
        lastTouch_ = heartbeat.lastTouch;
        touchedAt_ = now;
    }
    return heartbeat.queueNumber != 0 && now - touchedAt_ > heartbeat.deadMansSwitchSeconds;
}

double Supervision::delayAfter(double now, const RunEnd& end) {
    const bool endedAtOnce = now - startedAt_ < atOnceSeconds && (end.failed || !end.finishedWork);
    if (!endedAtOnce) {
        nextDelay_ = firstDelay;
        return 0;
    }
    const double delay = nextDelay_;
    nextDelay_ = std::min(nextDelay_ * 2, longestDelay);
    return delay;
}

}  // namespace tyctl
