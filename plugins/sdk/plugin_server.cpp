#include "sdk/plugin_server.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "platform/plugin_protocol.h"
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

/// Collects the results of several calls until they are enough for one answer.
class Results {
  public:
    void add(const base::Variant& value) { add(protocol::valueToJson<json>(value)); }
    void add(json value) {
        size_ += value.is_string() ? value.get_ref<const std::string&>().size() : 0;
        values_.push_back(std::move(value));
    }
    [[nodiscard]] bool full() const {
        return size_ >= answerSize || std::chrono::steady_clock::now() - start_ >= answerTime;
    }
    [[nodiscard]] json take() { return std::move(values_); }

  private:
    json values_ = json::array();
    std::size_t size_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

json call(Extractor& extractor, json& params) {
    std::vector<base::Variant> arguments;
    for (json& argument : params.at("arguments")) {
        auto value = protocol::valueFromJson(argument);
        if (!value) {
            throw ProtocolError(protocol::invalidParams, "an argument is no value");
        }
        arguments.push_back(std::move(*value));
    }
    const auto result = callByName(extractor, params.at("method").get<std::string>(), arguments);
    return {{"result", protocol::valueToJson<json>(result)}};
}

/// Several calls in one request. A call whose result is not the expected one is the last.
json sequence(Extractor& extractor, json& params) {
    json& calls = params.at("calls");
    Results results;
    json answer = json::object();
    try {
        for (json& step : calls) {
            json result = call(extractor, step)["result"];
            const auto expected = step.find("expect");
            const bool goesOn = expected == step.end() || result == *expected;
            results.add(std::move(result));
            if (!goesOn || results.full()) {
                break;
            }
        }
    } catch (const std::exception&) {
        answer["error"] = presentError();
    }
    answer["results"] = results.take();
    return answer;
}

json range(Extractor& extractor, const json& params) {
    const auto methods = params.at("methods").get<std::vector<std::string>>();
    const auto first = params.at("first").get<std::int32_t>();
    const auto last = params.at("last").get<std::int32_t>();
    Results results;
    json answer = json::object();
    try {
        for (std::int64_t index = first; index <= last && !results.full(); ++index) {
            for (const std::string& method : methods) {
                base::Variant argument(static_cast<std::int32_t>(index));
                results.add(callByName(extractor, method, {&argument, 1}));
            }
        }
    } catch (const std::exception&) {
        answer["error"] = presentError();
    }
    answer["results"] = results.take();
    return answer;
}

json whileMore(Extractor& extractor, const json& params) {
    const auto more = params.at("more").get<std::string>();
    const auto next = params.at("next").get<std::string>();
    const auto count = params.at("count").get<std::int32_t>();
    Results results;
    json answer = {{"more", true}};
    const std::string* method = &more;
    try {
        for (std::int32_t taken = 0; taken < count && !results.full(); ++taken) {
            method = &more;
            if (!callByName(extractor, more, {}).toBool()) {
                answer["more"] = false;
                break;
            }
            method = &next;
            results.add(callByName(extractor, next, {}));
        }
    } catch (const std::exception&) {
        answer["error"] = presentError();
        answer["error"]["method"] = *method;
    }
    answer["results"] = results.take();
    return answer;
}

}  // namespace

PluginServer::PluginServer(ExtractorFactory factory) : factory_(std::move(factory)) {}

std::string PluginServer::answer(std::string_view line) {
    json reply = {{"jsonrpc", "2.0"}, {"id", nullptr}};
    try {
        json request = json::parse(line, nullptr, false);
        if (request.is_discarded()) {
            throw ProtocolError(protocol::parseError, "the line is not JSON");
        }
        if (!request.is_object() || !request.contains("id") || !request["method"].is_string()) {
            throw ProtocolError(protocol::invalidRequest, "the line is not a JSON-RPC request");
        }
        reply["id"] = request["id"];
        json& params = request["params"];
        reply["result"] = perform(request["method"].get_ref<const std::string&>(), params);
    } catch (...) {
        reply["error"] = presentError();
    }
    // Bytes that are no UTF-8 become U+FFFD: a document in a strange encoding must not end the plug-in.
    return reply.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

json PluginServer::perform(const std::string& method, json& params) {
    if (method == protocol::createMethod) {
        return create();
    }
    if (method == protocol::callMethod) {
        return call(object(params.at("object")), params);
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
        return nullptr;
    }
    throw ProtocolError(protocol::methodNotFound, "there is no method \"" + method + "\"");
}

json PluginServer::create() {
    auto extractor = factory_();
    objects_[++lastHandle_] = std::move(extractor);
    return lastHandle_;
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
