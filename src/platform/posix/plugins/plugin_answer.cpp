#include "platform/posix/plugins/plugin_answer.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "base/runtime_error.h"
#include "platform/plugin_protocol.h"
#include "platform/posix/plugins/plain_answer.h"

namespace platform::posix {
namespace {

using nlohmann::json;

bool isAnswer(const json& message) {
    return message.is_object() && message.contains("id") && message["id"].is_number_integer() &&
           (message.contains("result") || (message.contains("error") && message["error"].is_object()));
}

std::string textOf(const json& object, const char* name, const char* otherwise) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string(otherwise);
}

std::optional<PluginError> readError(const json& error) {
    if (!error.is_object()) {
        return std::nullopt;
    }
    const auto code = error.find("code");
    const bool numbered = code != error.end() && code->is_number_integer();
    return PluginError{numbered ? code->get<int>() : static_cast<int>(base::ErrorNumber::automationError),
                       textOf(error, "message", "unknown error"), textOf(error, "method", "")};
}

std::optional<base::Variant> readValue(json& value, PluginAnswer& answer) {
    auto read = plugin_protocol::valueFromJson(value);
    answer.hasBadValue = answer.hasBadValue || !read;
    return read;
}

std::optional<std::vector<base::Variant>> readValues(json& list, PluginAnswer& answer) {
    if (!list.is_array()) {
        answer.hasBadValue = answer.hasBadValue || !list.is_null();
        return std::nullopt;
    }
    std::vector<base::Variant> values;
    values.reserve(list.size());
    for (json& item : list) {
        if (auto value = readValue(item, answer)) {
            values.push_back(std::move(*value));
        }
    }
    return values;
}

void readResult(json& result, PluginAnswer& answer) {
    if (result.is_number_integer()) {
        answer.handle = result.get<std::int64_t>();
    }
    if (!result.is_object()) {
        return;
    }
    if (result.contains("result")) {
        answer.result = readValue(result["result"], answer);
    }
    answer.arguments = readValues(result["arguments"], answer);
    answer.results = readValues(result["results"], answer);
    if (const json& more = result["more"]; more.is_boolean()) {
        answer.more = more.get<bool>();
    }
    answer.itemError = readError(result["error"]);
}

}  // namespace

std::optional<PluginAnswer> readAnswer(std::string_view line) {
    if (auto plain = readPlainAnswer(line)) {
        return plain;
    }
    json message = json::parse(line, nullptr, false);
    if (!isAnswer(message)) {
        return std::nullopt;
    }
    PluginAnswer answer;
    answer.request = message["id"].get<std::int64_t>();
    answer.error = readError(message["error"]);
    if (!answer.error) {
        readResult(message["result"], answer);
    }
    return answer;
}

}  // namespace platform::posix
