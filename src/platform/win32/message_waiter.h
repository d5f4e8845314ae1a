// A MessageWaiter is the time of a window on the screen: it waits until the system has a message for this
// thread's windows. The composition root owns it.
#pragma once

#include "platform/waiter.h"

namespace platform::win32 {

class MessageWaiter final : public Waiter {
  public:
    [[nodiscard]] Milliseconds now() override;
    void wait(std::optional<Milliseconds> until) override;
    /// Never: the system tells a window to close by a message.
    [[nodiscard]] bool closeRequested() override { return false; }
};

}  // namespace platform::win32
