#include "platform/posix/plugins/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "platform/posix/system_error.h"

namespace platform::posix {
namespace {

/// How long a program may take to end after its input was closed.
constexpr std::chrono::milliseconds timeToEnd{1000};
/// How long a program may take to end after it was killed.
constexpr std::chrono::milliseconds timeToDie{1000};
/// A pipe this large lets a plug-in finish a read-ahead while the engine is busy with the texts before it.
constexpr int outputBuffer = 1024 * 1024;

[[noreturn]] void raise(const std::string& what, int error) {
    throw systemError(base::ErrorNumber::cannotCreateObject, error, what);
}

struct Ends {
    FileDescriptor reading;
    FileDescriptor writing;
};

Ends makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        raise("cannot make a pipe", errno);
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Ends makeSocketPair() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        raise("cannot make a socket", errno);
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

void doNotBlock(const FileDescriptor& file) {
    const int flags = fcntl(file.get(), F_GETFL);
    if (flags < 0 || fcntl(file.get(), F_SETFL, flags | O_NONBLOCK) != 0) {
        raise("cannot set up the plug-in's streams", errno);
    }
}

/// What the new process needs to know; only system calls are safe between fork and exec.
struct Start {
    const char* file;
    int input;
    int output;
    int failure;  // takes the error number when the program cannot be run
    pid_t service;
};

void restoreSignals() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // An ignored signal would stay ignored in the program.
    signal(SIGPIPE, SIG_DFL);
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
}

[[noreturn]] void runProgram(const Start& start) {
    constexpr int cannotRun = 127;
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != start.service) {
        _exit(cannotRun);  // the service ended before the line above
    }
    restoreSignals();
    // The ends may themselves be standard streams of a service that was started without any.
    const int input = fcntl(start.input, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int output = fcntl(start.output, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
        close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        const std::array<char*, 2> arguments{const_cast<char*>(start.file), nullptr};
        execv(start.file, arguments.data());
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(start.failure, &error, sizeof error);
    _exit(cannotRun);
}

/// Takes notice of the end of a process, so that the system forgets it; false while it is still there.
bool tryReap(pid_t id) noexcept {
    pid_t answer = 0;
    do {
        answer = waitpid(id, nullptr, WNOHANG);
    } while (answer < 0 && errno == EINTR);
    return answer != 0;
}

/// Processes that were killed and had not ended a moment later.
std::vector<pid_t>& dyingProcesses() {
    static std::vector<pid_t> ids;
    return ids;
}

/// The error number that the new process told before it gave up; 0 when it runs the program.
int startFailure(const FileDescriptor& failure) {
    int error = 0;
    ssize_t count = 0;
    do {
        count = read(failure.get(), &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

}  // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        reset();
        number_ = other.release();
    }
    return *this;
}

void FileDescriptor::reset() noexcept {
    if (number_ >= 0) {
        close(number_);
        number_ = -1;
    }
}

int FileDescriptor::release() noexcept {
    return std::exchange(number_, -1);
}

ChildProcess::ChildProcess(const std::string& file) {
    std::erase_if(dyingProcesses(), tryReap);
    Ends inputEnds = makeSocketPair();
    Ends outputEnds = makePipe();
    Ends failureEnds = makePipe();
    doNotBlock(inputEnds.writing);
    doNotBlock(outputEnds.reading);
    fcntl(outputEnds.reading.get(), F_SETPIPE_SZ, outputBuffer);  // a refusal only makes it slower
    const Start start{file.c_str(), inputEnds.reading.get(), outputEnds.writing.get(),
                      failureEnds.writing.get(), getpid()};
    id_ = fork();
    if (id_ < 0) {
        raise("cannot start " + file, errno);
    }
    if (id_ == 0) {
        runProgram(start);
    }
    setpgid(id_, id_);  // also here, so that the group exists before anybody kills it
    failureEnds.writing.reset();
    input_ = std::move(inputEnds.writing);
    output_ = std::move(outputEnds.reading);
    if (const int error = startFailure(failureEnds.reading); error != 0) {
        kill();
        raise("cannot start " + file, error);
    }
}

ChildProcess::~ChildProcess() {
    if (id_ > 0) {
        letEnd();
        kill();
    }
}

/// Tells the program that nothing more comes, and takes what it still has to say, so that it can end in
/// peace.
void ChildProcess::letEnd() {
    using std::chrono::milliseconds;
    input_.reset();
    const auto deadline = std::chrono::steady_clock::now() + timeToEnd;
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd file{output_.get(), POLLIN, 0};
        if (left.count() <= 0 || poll(&file, 1, static_cast<int>(left.count())) == 0) {
            return;
        }
        std::array<char, 4096> unread{};
        if (read(output_.get(), unread.data(), unread.size()) == 0) {
            waitForEnd(left);
            return;
        }
    }
}

std::optional<std::string> ChildProcess::waitForEnd(std::chrono::milliseconds patience) {
    constexpr int step = 5;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        // The process stays a zombie here: its number must not be given to another before its group is
        // killed.
        siginfo_t info{};
        const int answer = waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT);
        if (answer != 0 && errno != EINTR) {
            return "cause unknown";
        }
        if (answer == 0 && info.si_pid == id_) {
            return (info.si_code == CLD_EXITED ? "exit status " : "signal ") + std::to_string(info.si_status);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return std::nullopt;
        }
        poll(nullptr, 0, step);
    }
}

void ChildProcess::kill() noexcept {
    if (id_ > 0) {
        sendKill();
        reap();
    }
    input_.reset();
    output_.reset();
}

void ChildProcess::sendKill() noexcept {
    if (id_ > 0) {
        ::kill(-id_, SIGKILL);
        ::kill(id_, SIGKILL);  // when the group could not be made
    }
}

void ChildProcess::reap() noexcept {
    constexpr int step = 2;
    const auto deadline = std::chrono::steady_clock::now() + timeToDie;
    while (!tryReap(id_)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            dyingProcesses().push_back(id_);
            break;
        }
        poll(nullptr, 0, step);
    }
    id_ = -1;
}

}  // namespace platform::posix
