#include "platform/posix/plugins/expected_calls.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "platform/plugin_protocol.h"

namespace platform::posix {
namespace {

using nlohmann::json;
namespace protocol = plugin_protocol;

bool isThatCall(const ExpectedCall& call, std::string_view method, std::span<const base::Variant> arguments) {
    if (method != call.method || arguments.size() != (call.argument.empty() ? 0U : 1U)) {
        return false;
    }
    const auto* text = arguments.empty() ? nullptr : std::get_if<std::string>(&arguments[0].value());
    return arguments.empty() || (text != nullptr && *text == call.argument);
}

json toJson(const ExpectedCall& call) {
    json presented = {{"method", call.method}, {"arguments", json::array()}};
    if (!call.argument.empty()) {
        presented["arguments"].push_back(call.argument);
    }
    if (call.expected) {
        presented["expect"] = *call.expected;
    }
    return presented;
}

json toJson(const ExpectedItems& items) {
    return {{"methods", {items.method}}, {"more", items.more}, {"next", items.next}, {"count", items.most}};
}

}  // namespace

void ExpectedCalls::ask(std::span<const ExpectedSequence> sequences) {
    reset();
    sequences_ = sequences;
    post();
}

std::optional<base::Variant> ExpectedCalls::serve(std::string_view method,
                                                  std::span<const base::Variant> arguments) {
    if (calls_.empty()) {
        return std::nullopt;
    }
    if (!isThatCall(calls_.front(), method, arguments)) {
        reset();
        return std::nullopt;
    }
    if (results_.empty() && pending_ && !receive(method)) {
        reset();
        return std::nullopt;
    }
    if (results_.empty()) {
        const auto error = std::exchange(error_, std::nullopt);
        reset();
        if (error) {
            target_.process.raiseError(method, *error);
        }
        return std::nullopt;  // an earlier result was not what was expected, or the process stopped there
    }
    base::Variant result = std::move(results_.front());
    results_.pop_front();
    calls_.pop_front();
    return result;
}

void ExpectedCalls::reset() {
    if (pending_) {
        target_.process.abandon(*std::exchange(pending_, std::nullopt));
    }
    sequences_ = {};
    calls_.clear();
    results_.clear();
    error_.reset();
    items_.reset();
}

void ExpectedCalls::post() {
    if (sequences_.empty() || !target_.process.abilities.sequences) {
        return;
    }
    json calls = json::array();
    for (const ExpectedCall& call : sequences_.front().calls) {
        calls.push_back(toJson(call));
        calls_.push_back(call);
    }
    json params = {{"object", target_.object}, {"calls", std::move(calls)}};
    if (const ExpectedItems* items = sequences_.front().items) {
        params["items"] = toJson(*items);
    }
    pending_ = target_.process.post(protocol::sequenceMethod, params.dump());
}

/// False when the calls have to be made as they are.
bool ExpectedCalls::receive(std::string_view called) {
    PluginAnswer answer =
        target_.process.await(*std::exchange(pending_, std::nullopt), called, target_.limit);
    if (isUnknownMethod(answer)) {
        target_.process.abilities.sequences = false;
    }
    if (answer.error) {
        return false;  // of the request as a whole: nothing has been called
    }
    takeResults(called, answer);
    return true;
}

void ExpectedCalls::takeResults(std::string_view called, PluginAnswer& answer) {
    const std::size_t most = sequences_.front().calls.size();
    const bool mayHaveItems = sequences_.front().items != nullptr;
    if (!answer.results) {
        target_.process.fault(called, "the plug-in answered without a list of results");
    }
    if (answer.results->size() > most && !mayHaveItems) {
        target_.process.fault(called, "the plug-in answered more calls than it was asked for");
    }
    if (answer.results->empty() && !answer.itemError) {
        target_.process.fault(called, "the plug-in answered a sequence without a result");
    }
    const std::size_t calls = std::min(answer.results->size(), most);
    const auto items = answer.results->begin() + static_cast<std::ptrdiff_t>(calls);
    std::move(answer.results->begin(), items, std::back_inserter(results_));
    if (mayHaveItems && calls == most) {
        answer.results->erase(answer.results->begin(), items);
        items_ = std::move(answer);
    } else {
        error_ = answer.itemError;
    }
    if (!error_ && results_.size() == most && endedAsExpected()) {
        sequences_ = sequences_.subspan(1);
        post();  // the process works on these while the engine works on the others
    }
}

/// Whether the last call of the sequence gave what the calls behind it depend on.
bool ExpectedCalls::endedAsExpected() const {
    const auto& expected = sequences_.front().calls.back().expected;
    return !expected || results_.back() == base::Variant(*expected);
}

}  // namespace platform::posix
