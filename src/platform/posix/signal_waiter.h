// A SignalWaiter is real time, and closes the window on SIGTERM, SIGINT and SIGHUP. The composition root owns
// the one that a program makes.
//
// A signal closes the window as an operator would, so the document in work is finished first. The same signal
// a second time has its usual effect: it ends a service that hangs.
#pragma once

#include <array>
#include <csignal>
#include <optional>

#include "platform/posix/descriptor.h"
#include "platform/waiter.h"

namespace platform::posix {

/// The pipe through which a signal handler wakes the waiter up.
class WakeUpPipe {
  public:
    /// Raises a base::RuntimeError when the system refuses.
    WakeUpPipe() : WakeUpPipe(openEnds()) {}
    WakeUpPipe(const WakeUpPipe&) = delete;
    WakeUpPipe& operator=(const WakeUpPipe&) = delete;
    ~WakeUpPipe();

    [[nodiscard]] int readEnd() const { return readEnd_.number(); }

  private:
    explicit WakeUpPipe(const std::array<int, 2>& ends);
    static std::array<int, 2> openEnds();

    Descriptor readEnd_;
    Descriptor writeEnd_;
};

/// A signal that wakes the waiter up for as long as this lives.
class TakenSignal {
  public:
    /// Raises a base::RuntimeError when the system refuses.
    explicit TakenSignal(int signal);
    TakenSignal(const TakenSignal&) = delete;
    TakenSignal& operator=(const TakenSignal&) = delete;
    ~TakenSignal();

  private:
    int signal_;
    struct sigaction former_ {};
};

class SignalWaiter : public Waiter {
  public:
    /// Leaves SIGHUP alone where whoever started the program has it ignored, as nohup does.
    SignalWaiter();

    [[nodiscard]] Milliseconds now() override;
    void wait(std::optional<Milliseconds> until) override;
    [[nodiscard]] bool closeRequested() override;

    /// Can be read from as soon as a signal has come, for a toolkit that waits for other events too.
    [[nodiscard]] int descriptor() const { return pipe_.readEnd(); }

  private:
    void readSignals();

    // In this order: no signal is taken before the pipe is there, nor kept when it goes.
    WakeUpPipe pipe_;
    TakenSignal terminate_{SIGTERM};
    TakenSignal interrupt_{SIGINT};
    std::optional<TakenSignal> hangUp_;
    bool closeRequested_ = false;
};

}  // namespace platform::posix
