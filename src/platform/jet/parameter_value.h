// The value that a literal has for the column that it meets, in the form in which engines keep values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "platform/jet/column_finder.h"
#include "platform/jet/lexer.h"

namespace platform::jet {

/// A whole number, a number, a text of the statement itself, or a text that was made for the engine.
using ParameterValue = std::variant<std::int64_t, double, std::string_view, std::string>;

/// A date column gets "yyyy-mm-dd hh:mm:ss", a Yes/No column 0 or 1; a text column gets every text as it is.
/// Raises "Type mismatch" for a text that meets a date column and does not read as a date.
ParameterValue parameterValue(const Literal& literal, const MetColumn& column);

}  // namespace platform::jet
