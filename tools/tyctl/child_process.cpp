#include "tyctl/child_process.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill and sigset_t are not in <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace tyctl {
namespace {

/// Replaces the process by the command. Between fork and exec only what is safe there is called. What comes
/// back is the reason why the command cannot run.
int becomeCommand(char* const* arguments) {
    setpgid(0, 0);
    // A supervisor that is killed must not leave a service behind, beside which the next one starts another.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing >= 0) {
        dup2(nothing, STDIN_FILENO);
    }
    execvp(arguments[0], arguments);
    return errno;
}

ProcessEnd endOf(int waitStatus) {
    if (WIFSIGNALED(waitStatus)) {
        return {0, WTERMSIG(waitStatus)};
    }
    return {WEXITSTATUS(waitStatus), 0};
}

/// Waits until the other end of the pipe is closed, which a started command does by starting. A number in the
/// pipe is why it did not start.
int readFailure(int pipe) {
    int failure = 0;
    ssize_t count = 0;
    do {
        count = read(pipe, &failure, sizeof failure);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof failure) ? failure : 0;
}

}  // namespace

std::string ProcessEnd::text() const {
    if (signal == 0) {
        return "status " + std::to_string(status);
    }
    return "signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
}

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));  // execvp takes but does not change them
    }
    arguments.push_back(nullptr);
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    id_ = fork();
    if (id_ == 0) {
        const int failure = becomeCommand(arguments.data());
        const ssize_t told = write(pipe[1], &failure, sizeof failure);
        _exit(told < 0 ? 126 : 127);
    }
    const int forkFailure = id_ < 0 ? errno : 0;
    close(pipe[1]);
    const int failure = forkFailure != 0 ? forkFailure : readFailure(pipe[0]);
    close(pipe[0]);
    if (failure != 0) {
        if (id_ > 0) {
            waitpid(id_, nullptr, 0);
        }
        throw std::system_error(failure, std::generic_category(), "cannot start " + command.front());
    }
}

ChildProcess::~ChildProcess() {
    if (!end_) {
        kill();
    }
}

std::optional<ProcessEnd> ChildProcess::ended() {
    int status = 0;
    if (!end_ && waitpid(id_, &status, WNOHANG) == id_) {
        end_ = endOf(status);
    }
    return end_;
}

void ChildProcess::terminate() const {
    if (!end_) {
        ::kill(id_, SIGTERM);
    }
}

ProcessEnd ChildProcess::kill() {
    ::kill(-id_, SIGKILL);
    while (!end_) {
        int status = 0;
        const pid_t waited = waitpid(id_, &status, 0);
        if (waited == id_) {
            end_ = endOf(status);
        } else if (errno != EINTR) {
            end_ = ProcessEnd{0, SIGKILL};
        }
    }
    return *end_;
}

}  // namespace tyctl
