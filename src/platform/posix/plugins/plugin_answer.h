// A PluginAnswer is what a plug-in process said in answer to a request, taken out of its JSON. It tells what
// is there; whether that answers the request is for the asker to judge.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/variant.h"

namespace platform::posix {

/// An error that a plug-in raised.
struct PluginError {
    int code = 0;
    std::string message;
    std::string method;  // of a while answer: the method that raised it
};

struct PluginAnswer {
    std::int64_t request = 0;
    std::optional<PluginError> error;  // in the place of everything below

    std::optional<std::int64_t> handle;                   // of create
    std::optional<base::Variant> result;                  // of call
    std::optional<std::vector<base::Variant>> arguments;  // of call, when they have changed
    std::optional<std::vector<base::Variant>> results;    // of range, while and sequence
    std::optional<bool> more;                             // of while
    std::optional<PluginError> itemError;                 // of the same, after the results
    bool hasBadValue = false;                             // one of the above is there, but is no value
};

/// Reads a line; nothing when it is no JSON-RPC answer.
std::optional<PluginAnswer> readAnswer(std::string_view line);

}  // namespace platform::posix
