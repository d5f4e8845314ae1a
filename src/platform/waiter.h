// A Waiter is the time that a window without a screen lives in, and the way in which it is told to close.
// The composition root owns it; the toolkit asks it.
#pragma once

#include <chrono>
#include <optional>

namespace platform {

class Waiter {
  public:
    using Milliseconds = std::chrono::milliseconds;

    Waiter() = default;
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;
    virtual ~Waiter() = default;

    /// Time since a moment of the waiter's own; it never goes back.
    [[nodiscard]] virtual Milliseconds now() = 0;

    /// Waits until the moment (without one: for ever), or until the window is told to close. It may return
    /// earlier.
    virtual void wait(std::optional<Milliseconds> until) = 0;

    /// True from the moment on when the window was told to close.
    [[nodiscard]] virtual bool closeRequested() = 0;
};

}  // namespace platform
