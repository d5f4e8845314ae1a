// PosixProcess is the running program as the system sees it. The composition root owns it.
#pragma once

#include <functional>
#include <utility>

#include "platform/process.h"

namespace platform::posix {

class PosixProcess : public Process {
  public:
    PosixProcess() = default;

    /// `beforeEnd` runs in endProcess, for what must not outlive the process; it must not raise anything.
    explicit PosixProcess(std::function<void()> beforeEnd) : beforeEnd_(std::move(beforeEnd)) {}

    [[nodiscard]] ProcessHandle currentProcess() override;

    /// Normal, idle and high are the nice values 0, 19 and -10. The system refuses a value below the present
    /// one to a process without the right to raise its priority.
    bool setPriorityClass(ProcessHandle process, PriorityClass priority) override;

    [[noreturn]] void endProcess(ExitStatus status) override;

    /// "." when the system does not tell.
    [[nodiscard]] std::string programDirectory() override;

  private:
    std::function<void()> beforeEnd_;
};

}  // namespace platform::posix
