#include "platform/posix/posix_process.h"

#include <filesystem>
#include <system_error>

#include <sys/resource.h>
#include <unistd.h>

namespace platform::posix {

namespace {

int niceValue(PriorityClass priority) {
    constexpr int idleNice = 19;
    constexpr int highNice = -10;
    switch (priority) {
        case PriorityClass::idle:
            return idleNice;
        case PriorityClass::high:
            return highNice;
        case PriorityClass::normal:
            break;
    }
    return 0;
}

}  // namespace

ProcessHandle PosixProcess::currentProcess() {
    return ProcessHandle{getpid()};
}

bool PosixProcess::setPriorityClass(ProcessHandle process, PriorityClass priority) {
    return setpriority(PRIO_PROCESS, static_cast<id_t>(process), niceValue(priority)) == 0;
}

void PosixProcess::endProcess(ExitStatus status) {
    if (beforeEnd_) {
        beforeEnd_();
    }
    // Without clean-up: destructors of a job in progress would touch a database in an unknown state.
    _exit(static_cast<int>(status));
}

std::string PosixProcess::programDirectory() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "." : program.parent_path().string();
}

}  // namespace platform::posix
