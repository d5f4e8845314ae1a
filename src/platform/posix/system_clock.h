// SystemClock is the machine's clock in local time. The composition root owns it.
#pragma once

#include "platform/clock.h"

namespace platform::posix {

class SystemClock : public Clock {
  public:
    [[nodiscard]] base::DateTime now() const override;

    /// Sleeps; a signal does not cut it short.
    void pause(std::chrono::milliseconds time) override;
};

}  // namespace platform::posix
