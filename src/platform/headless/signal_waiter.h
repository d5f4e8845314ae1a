// A SignalWaiter is real time, and closes the window on SIGTERM and SIGINT. A program makes at most one.
//
// A signal closes the window as an operator would, so the document in work is finished first. The same signal
// a second time has its usual effect: it ends a service that hangs.
#pragma once

#include <csignal>

#include "platform/headless/waiter.h"

namespace platform::headless {

class SignalWaiter : public Waiter {
  public:
    /// Takes both signals over. Raises a base::RuntimeError when the system refuses.
    SignalWaiter();
    SignalWaiter(const SignalWaiter&) = delete;
    SignalWaiter& operator=(const SignalWaiter&) = delete;
    /// Gives both signals back.
    ~SignalWaiter() override;

    [[nodiscard]] Milliseconds now() override;
    void wait(std::optional<Milliseconds> until) override;
    [[nodiscard]] bool closeRequested() override;

  private:
    void takeSignals();
    void giveSignalsBack() noexcept;
    void readSignals();

    int readEnd_ = -1;
    bool closeRequested_ = false;
    struct sigaction formerTerminate_ {};
    struct sigaction formerInterrupt_ {};
};

}  // namespace platform::headless
