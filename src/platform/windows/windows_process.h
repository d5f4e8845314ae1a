// WindowsProcess is the running program as the system sees it. The composition root owns it.
#pragma once

#include "platform/process.h"

namespace platform::windows {

class WindowsProcess : public Process {
  public:
    /// A handle that means the process itself wherever it is used.
    [[nodiscard]] ProcessHandle currentProcess() override;

    bool setPriorityClass(ProcessHandle process, PriorityClass priority) override;

    [[noreturn]] void endProcess(ExitStatus status) override;

    /// "." when the system does not tell.
    [[nodiscard]] std::string programDirectory() override;
};

}  // namespace platform::windows
