// Time as the service sees it. The composition root owns the clock; tests own one that they move themselves.
#pragma once

#include <chrono>

#include "base/date_time.h"

namespace platform {

class Clock {
  public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// The present moment in local time.
    [[nodiscard]] virtual base::DateTime now() const = 0;

    /// Waits before something is tried once more.
    virtual void pause(std::chrono::milliseconds time) = 0;
};

}  // namespace platform
