// The words of the protocol between the service and a plug-in process, and how values travel in it. Both
// sides include it, so that they cannot drift apart; docs/plugin-authors.md tells it to everybody else.
//
// The value functions take the JSON type as a parameter: this header knows no JSON library.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "base/variant.h"

namespace platform::plugin_protocol {

/// Methods of the process.
inline constexpr std::string_view createMethod = "create";
inline constexpr std::string_view callMethod = "call";
inline constexpr std::string_view rangeMethod = "range";
inline constexpr std::string_view whileMethod = "while";
inline constexpr std::string_view sequenceMethod = "sequence";
inline constexpr std::string_view releaseMethod = "release";
inline constexpr std::string_view fetchMethod = "fetch";

/// JSON-RPC's own error codes.
inline constexpr int parseError = -32700;
inline constexpr int invalidRequest = -32600;
inline constexpr int methodNotFound = -32601;
inline constexpr int invalidParams = -32602;

/// A value as JSON: an empty value and null are both null, a date is {"date": "yyyy-mm-dd hh:mm:ss"}.
template <class Json>
Json valueToJson(const base::Variant& variant) {
    struct Writer {
        Json operator()(std::monostate) const { return nullptr; }
        Json operator()(base::Null) const { return nullptr; }
        Json operator()(base::DateTime date) const { return {{"date", date.text()}}; }
        Json operator()(bool value) const { return value; }
        Json operator()(std::int16_t value) const { return value; }
        Json operator()(std::int32_t value) const { return value; }
        Json operator()(double value) const { return value; }
        Json operator()(const std::string& value) const { return value; }
    };
    return std::visit(Writer{}, variant.value());
}

/// A number of the protocol: 32 bits where it is whole and fits, a double otherwise.
inline base::Variant numberFromJson(double number) {
    const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                      number <= std::numeric_limits<std::int32_t>::max();
    if (fits && std::trunc(number) == number) {
        return static_cast<std::int32_t>(number);
    }
    return number;
}

/// The value that a JSON text stands for; nothing when it stands for none (a list, an unknown object). A text
/// is moved out of the JSON.
template <class Json>
std::optional<base::Variant> valueFromJson(Json& json) {
    if (json.is_string()) {
        return base::Variant(std::move(json.template get_ref<std::string&>()));
    }
    if (json.is_boolean()) {
        return base::Variant(json.template get<bool>());
    }
    if (json.is_number()) {
        return numberFromJson(json.template get<double>());
    }
    if (json.is_null()) {
        return base::Variant();
    }
    if (json.is_object() && json.size() == 1 && json.contains("date") && json["date"].is_string()) {
        if (const auto date = base::DateTime::parse(json["date"].template get_ref<std::string&>())) {
            return base::Variant(*date);
        }
    }
    return std::nullopt;
}

}  // namespace platform::plugin_protocol
