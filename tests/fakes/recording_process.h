// A process whose end is an exception that no trap of the service catches.
#pragma once

#include <optional>
#include <string>

#include "platform/process.h"

namespace fakes {

/// Thrown by endProcess; not a std::exception on purpose.
struct ProcessEnded {
    platform::ExitStatus status;
};

class RecordingProcess : public platform::Process {
  public:
    [[nodiscard]] platform::ProcessHandle currentProcess() override { return platform::ProcessHandle{-1}; }

    bool setPriorityClass(platform::ProcessHandle process, platform::PriorityClass chosen) override {
        handle = process;
        priority = chosen;
        return priorityIsGranted;
    }

    [[noreturn]] void endProcess(platform::ExitStatus status) override {
        ended = status;
        throw ProcessEnded{status};
    }

    [[nodiscard]] std::string programDirectory() override { return directory; }

    std::optional<platform::ProcessHandle> handle;
    std::optional<platform::PriorityClass> priority;
    std::optional<platform::ExitStatus> ended;
    bool priorityIsGranted = true;
    std::string directory = ".";
};

}  // namespace fakes
