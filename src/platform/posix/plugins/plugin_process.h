// A PluginProcess is the service's end of the line to one plug-in process: it sends requests, matches answers
// to them, and turns everything that goes wrong with the process into a base::RuntimeError that names the
// ProgID, the method and the cause. The factory and the objects in the process share it. One thread uses it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/posix/plugins/child_process.h"
#include "platform/posix/plugins/plugin_answer.h"

namespace platform::posix {

class PluginProcess {
  public:
    using RequestId = std::int64_t;
    using Milliseconds = std::chrono::milliseconds;

    /// What the process turned out not to know; it is not asked again.
    struct Abilities {
        bool ranges = true;
        bool whiles = true;
        bool sequences = true;
        bool fetches = true;
    };

    /// Starts the program. An answer of more than `largestAnswer` bytes is a fault.
    PluginProcess(std::string progId, const std::string& file, std::size_t largestAnswer);
    PluginProcess(const PluginProcess&) = delete;
    PluginProcess& operator=(const PluginProcess&) = delete;
    ~PluginProcess() = default;

    /// Sends a request and does not wait, not even for the process to read it. `params` is JSON text.
    RequestId post(std::string_view method, std::string_view params);

    /// The answer to a request, be it an error or not. `called` is the method that the caller
    /// of the object waits for. Raises a fault when no proper answer comes within the limit.
    PluginAnswer await(RequestId request, std::string_view called, Milliseconds limit);

    /// As await; an error in the place of the answer is raised.
    PluginAnswer awaitResult(RequestId request, std::string_view called, Milliseconds limit);

    /// The answer to this request is of no interest any more.
    void abandon(RequestId request);

    /// Gives the handle of a new object, the one that was asked for ahead when there is one. Raises the error
    /// of its creation. What was refused ahead is asked for once more.
    ///
    /// What the process has been asked to fetch need not have been fetched, with two exceptions, so that a
    /// fault over it is no error of the object's calls: the first file that the process is asked for, which
    /// shows whether it can do that, and the file of a document before.
    std::int64_t createObject(Milliseconds limit);

    /// Asks for the object of the next document and does not wait.
    void createAhead() noexcept;

    /// Asks the process to have the system read the file of the document that comes next, and does not wait.
    /// Does nothing while the process is at the file of a document before: requests must not pile up where
    /// one is held up.
    void fetch(const std::string& path) noexcept;

    /// Takes note that another process was asked to fetch the file of the next document: what this one may be
    /// at is of a document before.
    void fetchElsewhere() { fetchIsDue_ = fetchIsDue_ || fetch_; }

    /// Releases an object. The request waits for the next one or for sendPending, so that it does not wake
    /// the process on its own.
    void releaseObject(std::int64_t object);

    /// Sends what the process has not been sent yet, as far as it takes it.
    void sendPending();

    /// Raises the error that an answer carries.
    [[noreturn]] void raiseError(std::string_view called, const PluginError& error) const;

    /// Kills the process and raises the cause.
    [[noreturn]] void fault(std::string_view called, const std::string& cause);

    /// Raises an error when the process has had a fault.
    void raiseIfGone(std::string_view called) const;

    /// True while the process can serve: it has had no fault, has not ended, and is not talking unasked.
    bool isGood() noexcept;
    [[nodiscard]] bool isGone() const { return cause_.has_value(); }

    /// Kills the process with everything that it has started, for a service that is about to end itself.
    void killAtEnd() noexcept { child_.sendKill(); }

    Abilities abilities;

  private:
    using Deadline = std::chrono::steady_clock::time_point;

    RequestId enqueue(std::string_view method, std::string_view params);
    void finishFetch(Milliseconds limit);
    void exchange(std::string_view called, Deadline deadline, Milliseconds limit);
    bool receive(std::string_view called);
    void takeLines(std::string_view called);
    void takeAnswer(std::string_view called, std::string_view line);
    [[noreturn]] void faultAtEnd(std::string_view called);

    std::string progId_;
    std::size_t largestAnswer_;
    ChildProcess child_;
    std::set<RequestId> expected_;
    std::set<RequestId> abandoned_;
    std::map<RequestId, PluginAnswer> arrived_;
    std::string outgoing_;
    std::size_t sent_ = 0;  // bytes of outgoing_ that are on their way
    std::string incoming_;
    std::size_t searched_ = 0;  // bytes of incoming_ without a line end
    RequestId lastRequest_ = 0;
    std::optional<RequestId> nextObject_;  // asked for ahead
    std::optional<RequestId> fetch_;       // whose answer nobody has looked at
    bool fetchIsDue_ = true;               // before there is an object
    std::optional<std::string> cause_;     // of the fault
};

}  // namespace platform::posix
