#include "platform/posix/plugins/read_ahead.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/plugin_protocol.h"

namespace platform::posix {
namespace {

using nlohmann::json;
namespace protocol = plugin_protocol;

/// Items in one request: enough to make the exchange cheap, few enough to start the work early.
constexpr std::int64_t itemsPerRequest = 256;

constexpr std::string_view sentenceCount = "GetNumberOfSentences";
constexpr std::string_view moreSentences = "MoreSentences";
constexpr std::string_view nextSentence = "GetNextSentence";

/// The index that a call asks for; 0 when its arguments are not one whole number.
std::int64_t indexOf(std::span<const base::Variant> arguments) {
    if (arguments.size() != 1) {
        return 0;
    }
    const auto& value = arguments[0].value();
    const bool whole =
        std::holds_alternative<std::int16_t>(value) || std::holds_alternative<std::int32_t>(value);
    return whole ? arguments[0].toInt32() : 0;
}

std::int64_t countOf(const base::Variant& result) {
    return result.isNumeric() ? static_cast<std::int64_t>(std::clamp(result.toDouble(), -2.0, 1e9)) : 0;
}

/// Moves the results of a range or while answer to the items. Raises a fault when there are none or too many.
void takeValues(PluginProcess& process, std::string_view called, PluginAnswer& answer,
                std::deque<base::Variant>& items, std::int64_t most) {
    if (!answer.results) {
        process.fault(called, "the plug-in answered without a list of results");
    }
    if (static_cast<std::int64_t>(answer.results->size()) > most) {
        process.fault(called, "the plug-in answered more items than it was asked for");
    }
    std::move(answer.results->begin(), answer.results->end(), std::back_inserter(items));
}

}  // namespace

RangeReader::RangeReader(PluginTarget target, std::string_view countMethod,
                         std::vector<std::string_view> methods)
    : target_(target), countMethod_(countMethod), methods_(std::move(methods)) {}

void RangeReader::learn(std::string_view method, const base::Variant& result) {
    if (method == countMethod_) {
        reset();
        count_ = countOf(result);
    }
}

std::optional<base::Variant> RangeReader::serve(std::string_view method,
                                                std::span<const base::Variant> arguments) {
    if (!isNext(method, arguments)) {
        return std::nullopt;
    }
    if (items_.empty() && pending_ && !receive(method)) {
        nextIndex_ = 0;
        return std::nullopt;
    }
    if (items_.empty()) {
        nextIndex_ = 0;
        if (!error_) {
            return std::nullopt;  // past the count
        }
        target_.process.raiseError(method, *error_);
    }
    base::Variant item = std::move(items_.front());
    items_.pop_front();
    nextMethod_ = (nextMethod_ + 1) % methods_.size();
    nextIndex_ += nextMethod_ == 0 ? 1 : 0;
    return item;
}

void RangeReader::reset() {
    if (pending_) {
        target_.process.abandon(*std::exchange(pending_, std::nullopt));
    }
    count_ = 0;
    nextIndex_ = 0;
    items_.clear();
    error_.reset();
    ended_ = false;
}

bool RangeReader::isNext(std::string_view method, std::span<const base::Variant> arguments) {
    const std::int64_t index = indexOf(arguments);
    if (index == 0 || std::find(methods_.begin(), methods_.end(), method) == methods_.end()) {
        return false;
    }
    if (nextIndex_ != 0 && index == nextIndex_ && method == methods_[nextMethod_]) {
        return true;
    }
    if (index != 1 || method != methods_.front()) {
        return false;
    }
    return start();
}

bool RangeReader::start() {
    if (count_ < 1 || !target_.process.abilities.ranges) {
        return false;
    }
    begin();
    ask();
    return true;
}

void RangeReader::start(std::string_view called, PluginAnswer& arrived, std::int64_t most) {
    const bool none = arrived.results && arrived.results->empty() && !arrived.itemError;
    if (count_ < 1 || none) {
        start();
        return;
    }
    begin();
    asked_ = std::min(most, count_);
    takeResults(called, arrived);
}

void RangeReader::begin() {
    const std::int64_t count = count_;
    reset();
    count_ = count;
    nextIndex_ = 1;
    nextMethod_ = 0;
    fetched_ = 0;
}

void RangeReader::ask() {
    asked_ = std::min(fetched_ + itemsPerRequest, count_);
    pending_ = target_.process.post(
        protocol::rangeMethod,
        json({{"object", target_.object}, {"methods", methods_}, {"first", fetched_ + 1}, {"last", asked_}})
            .dump());
}

bool RangeReader::receive(std::string_view called) {
    PluginAnswer answer =
        target_.process.await(*std::exchange(pending_, std::nullopt), called, target_.limit);
    if (isUnknownMethod(answer)) {
        target_.process.abilities.ranges = false;
        return false;
    }
    if (answer.error) {
        error_ = answer.error;
        error_->method = called;
        return true;
    }
    takeResults(called, answer);
    return true;
}

void RangeReader::takeResults(std::string_view called, PluginAnswer& answer) {
    const auto methods = static_cast<std::int64_t>(methods_.size());
    takeValues(target_.process, called, answer, items_, (asked_ - fetched_) * methods);
    if (answer.itemError) {
        error_ = answer.itemError;
        return;
    }
    const auto results = static_cast<std::int64_t>(items_.size());
    if (results == 0 || results % methods != 0) {
        target_.process.fault(called, "the plug-in answered a range without a whole item");
    }
    fetched_ += results / methods;
    if (fetched_ == count_) {
        ended_ = true;
    } else if (target_.process.abilities.ranges) {
        ask();  // the process works on these while the engine works on the others
    }
}

void WhileReader::learn(std::string_view method, const base::Variant& result) {
    if (method == sentenceCount) {
        reset();
        reading_ = countOf(result) == -1;
        more_ = reading_;
    }
}

void WhileReader::start() {
    if (reading_ && !pending_ && target_.process.abilities.whiles) {
        ask();
    }
}

void WhileReader::start(std::string_view called, PluginAnswer& arrived, std::int64_t most) {
    const bool none = arrived.results && arrived.results->empty() && !arrived.itemError && !arrived.more;
    if (none) {
        start();
    } else if (reading_) {
        takeResults(called, arrived, most);
    }
}

std::optional<base::Variant> WhileReader::serve(std::string_view method,
                                                std::span<const base::Variant> arguments) {
    const bool asksMore = method == moreSentences;
    if (!reading_ || !arguments.empty() || (!asksMore && method != nextSentence) || !fill(method)) {
        return std::nullopt;
    }
    if (!items_.empty()) {
        if (asksMore) {
            return true;
        }
        base::Variant item = std::move(items_.front());
        items_.pop_front();
        return item;
    }
    if (error_) {
        if (asksMore && error_->method != moreSentences) {
            return true;  // there was a sentence, but it cannot be had
        }
        reading_ = false;
        target_.process.raiseError(method, *error_);
    }
    if (asksMore) {
        return false;
    }
    return std::nullopt;  // past the end: the plug-in's own affair
}

void WhileReader::reset() {
    if (pending_) {
        target_.process.abandon(*std::exchange(pending_, std::nullopt));
    }
    reading_ = false;
    more_ = false;
    items_.clear();
    error_.reset();
    ended_ = false;
}

/// Makes sure that there is an item, an error or the end. False when the process knows no such request.
bool WhileReader::fill(std::string_view called) {
    if (!items_.empty() || error_ || !more_) {
        return true;
    }
    if (!pending_) {
        if (!target_.process.abilities.whiles) {
            reading_ = false;
            return false;
        }
        ask();
    }
    return receive(called);
}

void WhileReader::ask() {
    const json params = {{"object", target_.object},
                         {"more", moreSentences},
                         {"next", nextSentence},
                         {"count", itemsPerRequest}};
    pending_ = target_.process.post(protocol::whileMethod, params.dump());
}

bool WhileReader::receive(std::string_view called) {
    PluginAnswer answer =
        target_.process.await(*std::exchange(pending_, std::nullopt), called, target_.limit);
    if (isUnknownMethod(answer)) {
        target_.process.abilities.whiles = false;
        reading_ = false;
        return false;
    }
    if (answer.error) {
        error_ = answer.error;
        error_->method = called;
        return true;
    }
    takeResults(called, answer, itemsPerRequest);
    return true;
}

void WhileReader::takeResults(std::string_view called, PluginAnswer& answer, std::int64_t most) {
    takeValues(target_.process, called, answer, items_, most);
    if (answer.itemError) {
        error_ = answer.itemError;
        return;
    }
    more_ = answer.more.value_or(false);
    if (!answer.more || (more_ && items_.empty())) {
        target_.process.fault(called, "the plug-in answered neither a sentence nor the end of them");
    }
    if (!more_) {
        ended_ = true;
    } else if (target_.process.abilities.whiles) {
        ask();  // the process works on the next sentences while the engine works on these
    }
}

}  // namespace platform::posix
