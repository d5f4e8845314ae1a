// PosixProcess is the running program as the system sees it. The composition root owns it.
#pragma once

#include "platform/process.h"

namespace platform::posix {

class PosixProcess : public Process {
  public:
    [[nodiscard]] ProcessHandle currentProcess() override;

    /// Normal, idle and high are the nice values 0, 19 and -10. The system refuses a value below the present
    /// one to a process without the right to raise its priority.
    bool setPriorityClass(ProcessHandle process, PriorityClass priority) override;

    [[noreturn]] void endProcess(ExitStatus status) override;

    /// "." when the system does not tell.
    [[nodiscard]] std::string programDirectory() override;
};

}  // namespace platform::posix
