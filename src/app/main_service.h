// What the programs that run the service have in common: the options, one of each part of the system, and the
// way the service ends. A program adds the window toolkit.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {
class Toolkit;
}
namespace platform::posix {
class SignalWaiter;
}

namespace app {

struct Program {
    std::string name;
    std::string purpose;  // a sentence for --help
    /// Called once, before anything else of the service is made. An error ends the program with status 1. The
    /// waiter lives longer than the toolkit.
    std::function<std::unique_ptr<platform::Toolkit>(platform::posix::SignalWaiter& waiter)> makeToolkit;
};

/// Runs the service until its window is closed. The result is the exit status.
[[nodiscard]] int runService(int argc, char** argv, const Program& program);

}  // namespace app
