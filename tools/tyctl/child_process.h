// A ChildProcess runs one command in a process group of its own. Whoever starts it ends it: destroying it
// kills what still runs.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace tyctl {

/// How a process ended.
struct ProcessEnd {
    int status = 0;  // the exit status, when no signal ended it
    int signal = 0;  // the signal that ended it, or 0

    [[nodiscard]] bool failed() const { return status != 0 || signal != 0; }
    /// "status 2" or "signal 9 (Killed)".
    [[nodiscard]] std::string text() const;
};

class ChildProcess {
  public:
    /// Starts the command, looked up on the PATH, with standard input closed off and no signal blocked.
    /// Raises std::system_error when it cannot be started.
    explicit ChildProcess(const std::vector<std::string>& command);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    [[nodiscard]] pid_t id() const { return id_; }

    /// How it ended, once it has; never waits.
    std::optional<ProcessEnd> ended();

    /// Asks the process to end, as a system that shuts down does.
    void terminate() const;

    /// Ends the process and everything in its group at once, and waits until it has ended.
    ProcessEnd kill();

  private:
    pid_t id_ = -1;
    std::optional<ProcessEnd> end_;
};

}  // namespace tyctl
