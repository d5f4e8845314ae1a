#include "platform/posix/signal_waiter.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>
#include <string>

#include "platform/posix/system_error.h"

namespace platform::posix {

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

}  // namespace

std::array<int, 2> WakeUpPipe::openEnds() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw systemError(errno, "cannot make the pipe that tells of signals");
    }
    return ends;
}

WakeUpPipe::WakeUpPipe(const std::array<int, 2>& ends) : readEnd_(ends[0]), writeEnd_(ends[1]) {
    wakeUpEnd = writeEnd_.number();
}

WakeUpPipe::~WakeUpPipe() {
    wakeUpEnd = -1;
}

TakenSignal::TakenSignal(int signal) : signal_(signal) {
    struct sigaction action {};
    action.sa_handler = onSignal;
    // Plug-ins, which are started while the handlers stand, get the usual handling back: a handler does not
    // live through the start of another program.
    action.sa_flags = static_cast<int>(static_cast<unsigned>(SA_RESTART) | SA_RESETHAND);
    if (sigaction(signal_, &action, &former_) != 0) {
        throw systemError(errno, "cannot take over signal " + std::to_string(signal_));
    }
}

TakenSignal::~TakenSignal() {
    // What the system itself gave out it takes back; were it not so, nothing could be done here.
    static_cast<void>(sigaction(signal_, &former_, nullptr));
}

Waiter::Milliseconds SignalWaiter::now() {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

void SignalWaiter::wait(std::optional<Milliseconds> until) {
    int timeout = -1;
    if (until) {
        // One more than the difference: now() is cut to whole milliseconds.
        const auto left = (*until - now()).count() + 1;
        timeout = static_cast<int>(std::clamp<Milliseconds::rep>(left, 0, std::numeric_limits<int>::max()));
    }
    pollfd end{pipe_.readEnd(), POLLIN, 0};
    if (poll(&end, 1, timeout) < 0 && errno != EINTR) {
        throw systemError(errno, "cannot wait for signals");
    }
    readSignals();
}

bool SignalWaiter::closeRequested() {
    readSignals();
    return closeRequested_;
}

void SignalWaiter::readSignals() {
    std::array<char, 16> bytes{};
    while (read(pipe_.readEnd(), bytes.data(), bytes.size()) > 0) {
        closeRequested_ = true;
    }
}

}  // namespace platform::posix
