// The value that a literal has for the column that it meets, in the form in which engines keep values.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <variant>

#include "platform/jet/column_finder.h"
#include "platform/jet/lexer.h"

namespace platform::jet {

/// A whole number, a number, a text of the statement itself, or a text that was made for the engine.
using ParameterValue = std::variant<std::int64_t, double, std::string_view, std::string>;

/// The whole number that a literal is for a column that takes it as it stands, as nearly all numbers are;
/// nothing for any other literal.
inline std::optional<std::int64_t> plainWholeNumber(const Literal& literal, const MetColumn& column) {
    if (literal.kind != Literal::Kind::number || column.type == ColumnType::date ||
        column.type == ColumnType::boolean) {
        return std::nullopt;
    }
    std::int64_t whole = 0;
    const char* end = literal.value.data() + literal.value.size();
    const auto read = std::from_chars(literal.value.data(), end, whole);
    return read.ec == std::errc() && read.ptr == end ? std::optional(whole) : std::nullopt;
}

/// A date column gets "yyyy-mm-dd hh:mm:ss", a Yes/No column 0 or 1; a text column gets every text as it is.
/// Raises "Type mismatch" for a text that meets a date column and does not read as a date.
ParameterValue parameterValue(const Literal& literal, const MetColumn& column);

}  // namespace platform::jet
