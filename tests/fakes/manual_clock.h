// A clock that stands still until a test moves it; pauses are counted instead of waited for.
#pragma once

#include <chrono>
#include <functional>

#include "base/date_time.h"
#include "platform/clock.h"

namespace fakes {

class ManualClock : public platform::Clock {
  public:
    [[nodiscard]] base::DateTime now() const override { return moment; }

    void pause(std::chrono::milliseconds time) override {
        ++pauses;
        paused += time;
        if (onPause) {
            onPause();
        }
    }

    void advance(std::int64_t seconds) { moment = base::DateTime::fromSeconds(moment.seconds() + seconds); }

    base::DateTime moment = *base::DateTime::parse("2026-11-16 01:47:03");
    int pauses = 0;
    std::chrono::milliseconds paused{0};
    std::function<void()> onPause;  // where a test mends what is being retried, or throws to end it
};

}  // namespace fakes
