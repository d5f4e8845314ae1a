// A plain answer is one without dates, errors or anything unusual, as nearly all are, and those that hold a
// document's sentences above all. They are read in one pass, without the JSON library's tree of values
// between.
#pragma once

#include <optional>
#include <string_view>

#include "platform/posix/plugins/plugin_answer.h"

namespace platform::posix {

/// Reads a line; nothing when it is no plain answer. It may be a proper answer even so, and readAnswer tells.
std::optional<PluginAnswer> readPlainAnswer(std::string_view line);

}  // namespace platform::posix
