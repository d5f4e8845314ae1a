// WindowsClock tells local time as the system shows it. The composition root owns it.
#pragma once

#include "platform/clock.h"

namespace platform::windows {

class WindowsClock : public Clock {
  public:
    [[nodiscard]] base::DateTime now() const override;
    void pause(std::chrono::milliseconds time) override;
};

}  // namespace platform::windows
