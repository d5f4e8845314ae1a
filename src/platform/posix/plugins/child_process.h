// A ChildProcess is a program started with its standard input and output tied to the service. A PluginProcess
// owns one; destroying it ends the program, whatever the program thinks of it.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace platform::posix {

/// Owns a file descriptor.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    [[nodiscard]] int get() const { return number_; }
    void reset() noexcept;

  private:
    int release() noexcept;

    int number_ = -1;
};

class ChildProcess {
  public:
    /// Starts an executable file without arguments, in a process group of its own. It dies with the service,
    /// but what it has started does not when the service itself is killed.
    /// Raises a base::RuntimeError with the system's reason when it cannot be started.
    explicit ChildProcess(const std::string& file);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Closes the program's input, gives it a moment to end, then kills it.
    ~ChildProcess();

    /// What the service writes to: a socket, so that a write to a program that is gone is an error and not a
    /// signal. It does not block.
    [[nodiscard]] int input() const { return input_.get(); }
    /// What the service reads from. It does not block.
    [[nodiscard]] int output() const { return output_.get(); }

    /// Waits until the program has ended by itself; how it ended ("exit status 3", "signal 11"), or nothing
    /// when it is still there after that time.
    std::optional<std::string> waitForEnd(std::chrono::milliseconds patience);

    /// Kills the program with everything that it has started. Does nothing when that has been done. A process
    /// that does not end even so, because the system waits for a device on its behalf, is left alone after a
    /// moment; the next start of a program takes notice of its end.
    void kill() noexcept;

    /// Sends the kill and does not wait for its effect: for a service that is about to end itself.
    void sendKill() noexcept;

  private:
    void letEnd();
    void reap() noexcept;

    FileDescriptor input_;
    FileDescriptor output_;
    int id_ = -1;  // -1 once there is nothing left of the program
};

}  // namespace platform::posix
