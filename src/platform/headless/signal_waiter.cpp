#include "platform/headless/signal_waiter.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <limits>
#include <string>
#include <system_error>

#include "base/runtime_error.h"

namespace platform::headless {

namespace {

// The one thing that a signal handler can reach: the end of the pipe that wakes the waiter up.
std::atomic<int> wakeUpEnd{-1};

void onSignal(int /*signal*/) {
    const int formerError = errno;
    const char byte = 1;
    // A full pipe already says what there is to say.
    [[maybe_unused]] const ssize_t written = write(wakeUpEnd.load(), &byte, 1);
    errno = formerError;
}

[[noreturn]] void raiseSystemError(const char* call) {
    const int number = errno;
    throw base::RuntimeError(number, std::string(call) + " failed while the service took over its signals: " +
                                         std::generic_category().message(number));
}

}  // namespace

SignalWaiter::SignalWaiter() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        raiseSystemError("pipe2");
    }
    readEnd_ = ends[0];
    wakeUpEnd = ends[1];
    takeSignals();
}

void SignalWaiter::takeSignals() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    // Plug-ins, which are started while the handlers stand, get the usual handling back: a handler does not
    // live through the start of another program.
    action.sa_flags = static_cast<int>(static_cast<unsigned>(SA_RESTART) | SA_RESETHAND);
    if (sigaction(SIGTERM, &action, &formerTerminate_) != 0 ||
        sigaction(SIGINT, &action, &formerInterrupt_) != 0) {
        raiseSystemError("sigaction");
    }
}

SignalWaiter::~SignalWaiter() {
    giveSignalsBack();
}

void SignalWaiter::giveSignalsBack() noexcept {
    sigaction(SIGTERM, &formerTerminate_, nullptr);
    sigaction(SIGINT, &formerInterrupt_, nullptr);
    close(wakeUpEnd.exchange(-1));
    close(readEnd_);
}

Milliseconds SignalWaiter::now() {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

void SignalWaiter::wait(std::optional<Milliseconds> until) {
    int timeout = -1;
    if (until) {
        // One more than the difference: now() is cut to whole milliseconds.
        const auto left = (*until - now()).count() + 1;
        timeout = static_cast<int>(std::clamp<Milliseconds::rep>(left, 0, std::numeric_limits<int>::max()));
    }
    pollfd end{readEnd_, POLLIN, 0};
    if (poll(&end, 1, timeout) < 0 && errno != EINTR) {
        raiseSystemError("poll");
    }
    readSignals();
}

bool SignalWaiter::closeRequested() {
    readSignals();
    return closeRequested_;
}

void SignalWaiter::readSignals() {
    std::array<char, 16> bytes{};
    while (read(readEnd_, bytes.data(), bytes.size()) > 0) {
        closeRequested_ = true;
    }
}

}  // namespace platform::headless
