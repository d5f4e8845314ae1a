// A RunningProgram is the service as its operator runs it: a process with a window.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace job_tests {

class RunningProgram {
  public:
    /// Starts a program that lies beside the test's own, with arguments in UTF-8. Raises a std::runtime_error
    /// when it does not start. Nobody reads what it prints, as when it is started from the desktop.
    explicit RunningProgram(const std::string& name, const std::string& arguments = {});
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    /// Kills what still runs.
    ~RunningProgram();

    /// Waits until the condition holds. False when the program ends before or the deadline passes.
    bool runsUntil(const std::function<bool()>& condition);

    /// Closes its window as its operator does; false when it shows none.
    bool closeWindow();

    /// Answers the message box that it shows with OK; false when it shows none.
    bool answerMessage();

    /// What that message box says; empty when it shows none.
    std::string message();

    /// Its exit status; empty when it does not end before the deadline.
    std::optional<unsigned long> waitForEnd();

  private:
    void* process_ = nullptr;
    unsigned long id_ = 0;
};

/// What a console command prints.
std::string outputOf(const std::string& command);

}  // namespace job_tests
