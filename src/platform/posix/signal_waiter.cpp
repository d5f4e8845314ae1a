#include "platform/posix/signal_waiter.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
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

bool isIgnored(int signal) {
    struct sigaction present {};
    return sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

std::chrono::nanoseconds steadyTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
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

SignalWaiter::SignalWaiter() {
    // Linux lets waits run over by 50 microseconds so as to wake a sleeping machine less often. A backlog is
    // worked off with one wait per document, and when there is none the waits are seconds long. Plug-ins
    // inherit it; they wait for the service only. A system that knows no such thing only waits longer.
    static_cast<void>(prctl(PR_SET_TIMERSLACK, 1UL));
    if (!isIgnored(SIGHUP)) {
        hangUp_.emplace(SIGHUP);
    }
}

Waiter::Milliseconds SignalWaiter::now() {
    return std::chrono::duration_cast<Milliseconds>(steadyTime());
}

void SignalWaiter::wait(std::optional<Milliseconds> until) {
    timespec left{};
    if (until) {
        // To the nanosecond: whole milliseconds would add up to one to each wait, and a service that works a
        // backlog off waits once per document.
        const auto time =
            std::max(std::chrono::nanoseconds(*until - steadyTime()), std::chrono::nanoseconds(0));
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        left.tv_sec = seconds.count();
        left.tv_nsec = (time - seconds).count();
    }
    pollfd end{pipe_.readEnd(), POLLIN, 0};
    if (ppoll(&end, 1, until ? &left : nullptr, nullptr) < 0 && errno != EINTR) {
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
