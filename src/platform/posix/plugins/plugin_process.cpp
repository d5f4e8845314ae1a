#include "platform/posix/plugins/plugin_process.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/runtime_error.h"
#include "base/text.h"
#include "base/variant.h"
#include "platform/plugin_protocol.h"
#include "platform/posix/plugins/plugin_target.h"

namespace platform::posix {
namespace {

using nlohmann::json;
namespace protocol = plugin_protocol;
using std::chrono::milliseconds;

/// How long the service waits for a process that has closed its output to end, so as to tell how.
constexpr milliseconds patienceAtEnd{500};

/// "50", "0.2".
std::string secondsText(milliseconds limit) {
    return base::numberText(static_cast<double>(limit.count()) / 1000);
}

/// The beginning of what a process said, fit for one line of a log.
std::string excerpt(std::string_view said) {
    constexpr std::size_t most = 60;
    std::string text(base::left(said, most));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return "\"" + text + (text.size() < said.size() ? "...\"" : "\"");
}

}  // namespace

PluginProcess::PluginProcess(std::string progId, const std::string& file, std::size_t largestAnswer)
    : progId_(std::move(progId)), largestAnswer_(largestAnswer), child_(file) {}

PluginProcess::RequestId PluginProcess::post(std::string_view method, std::string_view params) {
    const RequestId request = enqueue(method, params);
    sendPending();
    return request;
}

PluginProcess::RequestId PluginProcess::enqueue(std::string_view method, std::string_view params) {
    outgoing_.append(R"({"jsonrpc":"2.0","id":)").append(std::to_string(++lastRequest_));
    outgoing_.append(R"(,"method":")").append(method).append(R"(","params":)").append(params).append("}\n");
    expected_.insert(lastRequest_);
    return lastRequest_;
}

PluginAnswer PluginProcess::await(RequestId request, std::string_view called, milliseconds limit) {
    raiseIfGone(called);
    const Deadline deadline = std::chrono::steady_clock::now() + limit;
    auto found = arrived_.find(request);
    while (found == arrived_.end()) {
        exchange(called, deadline, limit);
        found = arrived_.find(request);
    }
    PluginAnswer answer = std::move(found->second);
    arrived_.erase(found);
    if (answer.hasBadValue) {
        fault(called, "the plug-in answered with something that is not a value");
    }
    return answer;
}

PluginAnswer PluginProcess::awaitResult(RequestId request, std::string_view called, milliseconds limit) {
    PluginAnswer answer = await(request, called, limit);
    if (answer.error) {
        raiseError(called, *answer.error);
    }
    return answer;
}

void PluginProcess::abandon(RequestId request) {
    arrived_.erase(request);
    if (expected_.erase(request) != 0) {
        abandoned_.insert(request);
    }
}

std::int64_t PluginProcess::createObject(milliseconds limit) {
    const auto ahead = std::exchange(nextObject_, std::nullopt);
    PluginAnswer answer = ahead ? await(*ahead, protocol::createMethod, limit) : PluginAnswer();
    if (!ahead || answer.error) {  // what was refused long ago may be granted now
        answer = awaitResult(post(protocol::createMethod, "{}"), protocol::createMethod, limit);
    }
    if (!answer.handle) {
        fault(protocol::createMethod, "the plug-in answered without the number of an object");
    }
    if (fetchIsDue_) {
        finishFetch(limit);
    }
    return *answer.handle;
}

void PluginProcess::createAhead() noexcept {
    try {
        nextObject_ = post(protocol::createMethod, "{}");
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): then it is asked for when it is needed
    }
}

void PluginProcess::fetch(const std::string& path) noexcept {
    try {
        if (fetch_ && arrived_.contains(*fetch_)) {
            finishFetch({});
        }
        if (fetch_) {
            fetchIsDue_ = true;
        } else if (abilities.fetches) {
            const json params = {{"path", path}};
            // A path with bytes that are no UTF-8 leads nowhere then; that is told when it is opened.
            fetch_ = post(protocol::fetchMethod, params.dump(-1, ' ', false, json::error_handler_t::replace));
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): it only saves time
    }
}

/// Waits for the answer. What became of the file is told by whoever opens it.
void PluginProcess::finishFetch(milliseconds limit) {
    if (const auto request = std::exchange(fetch_, std::nullopt)) {
        abilities.fetches = !isUnknownMethod(await(*request, protocol::fetchMethod, limit));
        fetchIsDue_ = false;
    }
}

void PluginProcess::releaseObject(std::int64_t object) {
    abandon(enqueue(protocol::releaseMethod, R"({"object":)" + std::to_string(object) + "}"));
}

void PluginProcess::raiseError(std::string_view called, const PluginError& error) const {
    throw base::RuntimeError(error.code, progId_ + ": " + std::string(called) + ": " + error.message);
}

void PluginProcess::fault(std::string_view called, const std::string& cause) {
    child_.kill();
    outgoing_.clear();
    incoming_.clear();
    cause_ = std::string(called) + ": " + cause;
    throw base::RuntimeError(base::ErrorNumber::automationError, progId_ + ": " + *cause_);
}

void PluginProcess::raiseIfGone(std::string_view called) const {
    if (cause_) {
        throw base::RuntimeError(
            base::ErrorNumber::automationError,
            progId_ + ": " + std::string(called) + ": the plug-in process is gone since " + *cause_);
    }
}

bool PluginProcess::isGood() noexcept {
    if (isGone()) {
        return false;
    }
    try {
        // To the last word: the end of a process stands behind the answer that it gave before.
        while (receive("idle")) {
        }
        return true;
    } catch (const std::exception&) {
        return false;  // the fault has killed it; nobody was waiting for an answer
    }
}

void PluginProcess::sendPending() {
    while (!isGone() && sent_ < outgoing_.size()) {
        const ssize_t count = send(child_.input(), outgoing_.data() + sent_, outgoing_.size() - sent_,
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            sent_ += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return;
        } else if (errno != EINTR) {
            break;  // it reads no more; what it has still to say tells why
        }
    }
    outgoing_.clear();
    sent_ = 0;
}

void PluginProcess::exchange(std::string_view called, Deadline deadline, milliseconds limit) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) {  // also when it says a lot, but not the answer
        fault(called, "the plug-in did not answer within " + secondsText(limit) + " seconds");
    }
    std::array<pollfd, 2> files{{{child_.output(), POLLIN, 0}, {child_.input(), POLLOUT, 0}}};
    const nfds_t count = outgoing_.empty() ? 1 : 2;
    const int ready = poll(files.data(), count, static_cast<int>(std::min<long long>(left, 1 << 30)));
    if (ready < 0 && errno != EINTR) {
        fault(called, "the service cannot wait for the plug-in process");
    }
    if (ready > 0 && files[1].revents != 0) {
        sendPending();
    }
    if (ready > 0 && files[0].revents != 0) {
        receive(called);
    }
}

/// False when there is nothing to read for now.
bool PluginProcess::receive(std::string_view called) {
    std::array<char, 65536> block;  // filled by the system
    const ssize_t count = read(child_.output(), block.data(), block.size());
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
        return false;
    }
    if (count <= 0) {
        faultAtEnd(called);
    }
    incoming_.append(block.data(), static_cast<std::size_t>(count));
    takeLines(called);
    if (incoming_.size() > largestAnswer_) {
        fault(called, "the plug-in answered more than " + std::to_string(largestAnswer_) + " bytes");
    }
    return true;
}

void PluginProcess::takeLines(std::string_view called) {
    std::size_t start = 0;
    std::size_t end = incoming_.find('\n', searched_);
    while (end != std::string::npos) {
        takeAnswer(called, std::string_view(incoming_).substr(start, end - start));
        start = end + 1;
        end = incoming_.find('\n', start);
    }
    incoming_.erase(0, start);
    searched_ = incoming_.size();
}

void PluginProcess::takeAnswer(std::string_view called, std::string_view line) {
    auto answer = readAnswer(line);
    if (!answer) {
        fault(called, "the plug-in answered something that is not JSON-RPC: " + excerpt(line));
    }
    if (abandoned_.erase(answer->request) != 0) {
        return;
    }
    if (expected_.erase(answer->request) == 0) {
        fault(called, "the plug-in answered a request that was not made: " + excerpt(line));
    }
    arrived_.emplace(answer->request, std::move(*answer));
}

void PluginProcess::faultAtEnd(std::string_view called) {
    const auto end = child_.waitForEnd(patienceAtEnd);
    if (!end) {
        fault(called, "the plug-in process closed its output");
    }
    const std::string unfinished =
        incoming_.empty() ? std::string() : " in the middle of the answer " + excerpt(incoming_);
    fault(called, "the plug-in process ended (" + *end + ")" + unfinished);
}

}  // namespace platform::posix
