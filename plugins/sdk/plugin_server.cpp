#include "sdk/plugin_server.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "platform/plugin_protocol.h"
#include "sdk/file_fetch.h"
#include "sdk/json_text.h"
#include "sdk/method_table.h"

namespace sdk {
namespace {

using nlohmann::json;
namespace protocol = platform::plugin_protocol;

/// A range or while answer ends early beyond these, so that one answer neither fills the memory nor outlasts
/// the time that the service gives to a call.
constexpr std::size_t answerSize = 1024UL * 1024;
constexpr std::chrono::milliseconds answerTime{500};

/// A request that cannot be carried out as it stands.
struct ProtocolError : std::runtime_error {
    ProtocolError(int errorCode, const std::string& text) : std::runtime_error(text), code(errorCode) {}
    int code;
};

json errorOf(int code, const std::string& text) {
    return {{"code", code}, {"message", text}};
}

/// The error object of an exception that is being handled.
json presentError() {
    try {
        throw;
    } catch (const ProtocolError& error) {
        return errorOf(error.code, error.what());
    } catch (const ExtractionError& error) {
        return errorOf(error.number(), error.what());
    } catch (const base::RuntimeError& error) {
        return errorOf(error.number(), error.what());
    } catch (const json::exception& error) {
        return errorOf(protocol::invalidParams, error.what());
    } catch (const std::exception& error) {
        return errorOf(static_cast<int>(base::ErrorNumber::automationError), error.what());
    } catch (...) {
        return errorOf(static_cast<int>(base::ErrorNumber::automationError), "unknown error");
    }
}

std::string textOf(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

/// The answer to a request for several calls: their results, as long as they are not too many for one answer,
/// and whatever else is to be said.
class Results {
  public:
    void add(const base::Variant& value) {
        const auto* text = std::get_if<std::string>(&value.value());
        size_ += text == nullptr ? 0 : text->size();
        answer_ += empty_ ? "" : ",";
        empty_ = false;
        appendJson(answer_, value);
    }
    [[nodiscard]] bool full() const {
        return size_ >= answerSize || std::chrono::steady_clock::now() - start_ >= answerTime;
    }
    /// Adds a member beside the results.
    void say(std::string_view name, const json& value) {
        others_.append(",\"").append(name).append("\":").append(textOf(value));
    }
    [[nodiscard]] std::string take() { return std::move(answer_) + "]" + others_ + "}"; }

  private:
    std::string answer_ = R"({"results":[)";
    std::string others_;
    bool empty_ = true;
    std::size_t size_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

base::Variant call(Extractor& extractor, json& params) {
    std::vector<base::Variant> arguments;
    for (json& argument : params.at("arguments")) {
        auto value = protocol::valueFromJson(argument);
        if (!value) {
            throw ProtocolError(protocol::invalidParams, "an argument is no value");
        }
        arguments.push_back(std::move(*value));
    }
    return callByName(extractor, params.at("method").get_ref<const std::string&>(), arguments);
}

std::string plainCall(Extractor& extractor, json& params) {
    std::string answer = R"({"result":)";
    appendJson(answer, call(extractor, params));
    return answer + "}";
}

void addRange(Results& results, Extractor& extractor, const json& params, std::int64_t first,
              std::int64_t last) {
    const auto methods = params.at("methods").get<std::vector<std::string>>();
    try {
        for (std::int64_t index = first; index <= last && (index == first || !results.full()); ++index) {
            for (const std::string& method : methods) {
                base::Variant argument(static_cast<std::int32_t>(index));
                results.add(callByName(extractor, method, {&argument, 1}));
            }
        }
    } catch (const std::exception&) {
        results.say("error", presentError());
    }
}

void addWhile(Results& results, Extractor& extractor, const json& params) {
    const auto more = params.at("more").get<std::string>();
    const auto next = params.at("next").get<std::string>();
    const auto count = params.at("count").get<std::int32_t>();
    bool goesOn = true;
    const std::string* method = &more;
    try {
        for (std::int32_t taken = 0; taken < count && (taken == 0 || !results.full()); ++taken) {
            method = &more;
            goesOn = callByName(extractor, more, {}).toBool();
            if (!goesOn) {
                break;
            }
            method = &next;
            results.add(callByName(extractor, next, {}));
        }
    } catch (const std::exception&) {
        json error = presentError();
        error["method"] = *method;
        results.say("error", error);
    }
    results.say("more", goesOn);
}

/// The first of the items whose number the last call of a sequence gave.
void addItems(Results& results, Extractor& extractor, const json& params, const base::Variant& number) {
    const std::int32_t count = number.toInt32();
    if (count == -1) {
        addWhile(results, extractor, params);
    } else {
        addRange(results, extractor, params, 1, std::min(count, params.at("count").get<std::int32_t>()));
    }
}

/// Several calls in one request. A call whose result is not the expected one is the last.
std::string sequence(Extractor& extractor, json& params) {
    json& calls = params.at("calls");
    const auto items = params.find("items");
    Results results;
    base::Variant result;
    try {
        for (json& step : calls) {
            result = call(extractor, step);
            results.add(result);
            const auto expected = step.find("expect");
            const bool goesOn = expected == step.end() || protocol::valueToJson<json>(result) == *expected;
            if (!goesOn || results.full()) {
                return results.take();
            }
        }
        if (items != params.end()) {
            addItems(results, extractor, *items, result);
        }
    } catch (const std::exception&) {
        results.say("error", presentError());
    }
    return results.take();
}

std::string range(Extractor& extractor, const json& params) {
    Results results;
    addRange(results, extractor, params, params.at("first").get<std::int32_t>(),
             params.at("last").get<std::int32_t>());
    return results.take();
}

std::string whileMore(Extractor& extractor, const json& params) {
    Results results;
    addWhile(results, extractor, params);
    return results.take();
}

}  // namespace

PluginServer::PluginServer(ExtractorFactory factory) : factory_(std::move(factory)) {}

std::string PluginServer::answer(std::string_view line) {
    json id = nullptr;
    std::string outcome;
    try {
        json request = json::parse(line, nullptr, false);
        if (request.is_discarded()) {
            throw ProtocolError(protocol::parseError, "the line is not JSON");
        }
        if (!request.is_object() || !request.contains("id") || !request["method"].is_string()) {
            throw ProtocolError(protocol::invalidRequest, "the line is not a JSON-RPC request");
        }
        id = request["id"];
        outcome =
            R"("result":)" + perform(request["method"].get_ref<const std::string&>(), request["params"]);
    } catch (...) {
        outcome = R"("error":)" + textOf(presentError());
    }
    return R"({"jsonrpc":"2.0","id":)" + textOf(id) + "," + outcome + "}\n";
}

/// Gives the result as JSON text.
std::string PluginServer::perform(const std::string& method, json& params) {
    if (method == protocol::createMethod) {
        return create();
    }
    if (method == protocol::callMethod) {
        return plainCall(object(params.at("object")), params);
    }
    if (method == protocol::sequenceMethod) {
        return sequence(object(params.at("object")), params);
    }
    if (method == protocol::rangeMethod) {
        return range(object(params.at("object")), params);
    }
    if (method == protocol::whileMethod) {
        return whileMore(object(params.at("object")), params);
    }
    if (method == protocol::releaseMethod) {
        release(params.at("object"));
        return "null";
    }
    if (method == protocol::fetchMethod) {
        fetchFile(params.at("path").get_ref<const std::string&>());
        return "null";
    }
    throw ProtocolError(protocol::methodNotFound, "there is no method \"" + method + "\"");
}

std::string PluginServer::create() {
    auto extractor = factory_();
    objects_[++lastHandle_] = std::move(extractor);
    return std::to_string(lastHandle_);
}

void PluginServer::release(std::int64_t handle) {
    if (objects_.erase(handle) == 0) {
        throw ProtocolError(protocol::invalidParams, "there is no object " + std::to_string(handle));
    }
}

Extractor& PluginServer::object(std::int64_t handle) const {
    const auto found = objects_.find(handle);
    if (found == objects_.end()) {
        throw ProtocolError(protocol::invalidParams, "there is no object " + std::to_string(handle));
    }
    return *found->second;
}

}  // namespace sdk
