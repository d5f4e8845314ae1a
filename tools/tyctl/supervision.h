// A Supervision decides when a supervised service is started, killed and how long a new start waits. It knows
// no process and no clock: whoever runs the service tells it what happened, at which second, and does what it
// answers.
#pragma once

#include <cstdint>
#include <string>

namespace tyctl {

/// The heartbeat as the service leaves it in the settings.
struct Heartbeat {
    std::string lastTouch;
    std::int32_t deadMansSwitchSeconds = 60;
    std::int32_t queueNumber = 0;  // the entry in work; 0 when idle

    bool operator==(const Heartbeat&) const = default;
};

/// How a run of the service ended.
struct RunEnd {
    bool failed = false;        // a status other than 0, or a signal
    bool finishedWork = false;  // at least one document was finished meanwhile
};

class Supervision {
  public:
    /// A run that ends within this many seconds, having failed or having finished nothing, ended at once.
    static constexpr double atOnceSeconds = 5;
    static constexpr double firstDelay = 1;
    static constexpr double longestDelay = 60;

    /// The service was started. `now` is in seconds of a clock that never jumps, here and below.
    void started(double now, const Heartbeat& heartbeat);

    /// True when a job is in work and its last sign of life is older than it may be. A sign of life counts
    /// from when it was seen first, and at the earliest from the start: one that an earlier run left behind
    /// says nothing about this run, and a clock that is set meanwhile ends no healthy job.
    [[nodiscard]] bool isStale(double now, const Heartbeat& heartbeat);

    /// The seconds to wait before the next start: none, unless the service ends at once again and again;
    /// then 1, doubled each time up to 60.
    [[nodiscard]] double delayAfter(double now, const RunEnd& end);

  private:
    double startedAt_ = 0;
    double touchedAt_ = 0;
    std::string lastTouch_;
    double nextDelay_ = firstDelay;
};

}  // namespace tyctl
