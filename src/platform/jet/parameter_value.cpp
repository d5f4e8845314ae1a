#include "platform/jet/parameter_value.h"

#include <charconv>

#include "base/date_time.h"
#include "base/runtime_error.h"
#include "base/text.h"
#include "base/variant.h"

namespace platform::jet {
namespace {

ParameterValue number(std::string_view text) {
    std::int64_t whole = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, whole);
    if (read.ec == std::errc() && read.ptr == end) {
        return whole;
    }
    double value = 0;
    if (!base::parseNumber(text, value)) {
        throw base::RuntimeError(base::ErrorNumber::typeMismatch,
                                 "Type mismatch: " + std::string(text) + " is not a number");
    }
    return value;
}

ParameterValue date(const Literal& literal, const std::string& column) {
    if (literal.kind == Literal::Kind::number) {
        return base::Variant(std::string(literal.value)).toDate().text();
    }
    const auto moment = base::DateTime::parse(literal.value);
    if (!moment) {
        constexpr std::size_t shown = 60;
        throw base::RuntimeError(base::ErrorNumber::typeMismatch,
                                 "Type mismatch: the column " + column + " holds dates, and '" +
                                     std::string(base::left(literal.value, shown)) +
                                     "' does not read as a date");
    }
    return moment->text();
}

ParameterValue boolean(const Literal& literal) {
    if (literal.kind == Literal::Kind::text) {
        return literal.value;
    }
    const ParameterValue value = number(literal.value);
    const auto* whole = std::get_if<std::int64_t>(&value);
    return std::int64_t{whole != nullptr ? *whole != 0 : std::get<double>(value) != 0};
}

}  // namespace

ParameterValue parameterValue(const Literal& literal, const MetColumn& column) {
    if (column.type == ColumnType::date) {
        return date(literal, column.name);
    }
    if (column.type == ColumnType::boolean) {
        return boolean(literal);
    }
    if (literal.kind == Literal::Kind::number) {
        return number(literal.value);
    }
    return literal.value;
}

}  // namespace platform::jet
