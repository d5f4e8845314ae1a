// The service's own process: its priority and its end. The composition root owns it.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// The numbers are those of the Windows priority classes.
enum class PriorityClass : std::uint32_t { normal = 32, idle = 64, high = 128 };

/// A handle of the process itself, good for setPriorityClass.
enum class ProcessHandle : std::int64_t {};

/// Exit statuses of the service.
enum class ExitStatus : int {
    stopped = 0,      // Exit, or the restart that synchronises the caches
    failed = 1,       // start-up or the database failed
    setupFailed = 2,  // a document's records could not be set up, twice
};

class Process {
  public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    virtual ~Process() = default;

    [[nodiscard]] virtual ProcessHandle currentProcess() = 0;

    /// False when the system refuses (raising the priority needs rights); the process then runs on as it was.
    virtual bool setPriorityClass(ProcessHandle process, PriorityClass priority) = 0;

    /// Ends the process at once, without clean-up. Never returns: a test double throws a type of its own,
    /// which is not a std::exception, so that no trap catches it.
    [[noreturn]] virtual void endProcess(ExitStatus status) = 0;

    /// The folder of the running program, without a separator at its end.
    [[nodiscard]] virtual std::string programDirectory() = 0;
};

}  // namespace platform
