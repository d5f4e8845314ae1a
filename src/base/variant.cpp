#include "base/variant.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <locale>
#include <sstream>
#include <system_error>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "base/text.h"

namespace base {
namespace {

constexpr double secondsPerDay = 86400;

[[noreturn]] void typeMismatch() {
    throw RuntimeError(ErrorNumber::typeMismatch, "Type mismatch");
}

[[noreturn]] void invalidUseOfNull() {
    throw RuntimeError(ErrorNumber::invalidUseOfNull, "Invalid use of Null");
}

template <class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

/// True of a number that no double holds because it is too large; the others are too near to zero.
bool isTooLarge(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double nearest = 0;
    stream >> nearest;
    return std::abs(nearest) > 1;
}

/// std::errc() with the number, which is 0 for one too near to zero for a double; result_out_of_range for one
/// too large; invalid_argument for what is no number.
std::errc readNumber(std::string_view text, double& number) {
    text = trim(text);
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    // from_chars also reads "inf" and "nan", which are no numbers here.
    const std::size_t digit = text.find_first_of("0123456789");
    if (digit == std::string_view::npos ||
        text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
        return std::errc::invalid_argument;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size()) {
        return std::errc::invalid_argument;
    }
    if (error == std::errc::result_out_of_range && !isTooLarge(text)) {
        number = 0;
        return {};
    }
    return error;
}

double textToDouble(const std::string& text) {
    double number = 0;
    if (!parseNumber(text, number)) {
        typeMismatch();
    }
    return number;
}

}  // namespace

bool parseNumber(std::string_view text, double& number) {
    const std::errc error = readNumber(text, number);
    if (error == std::errc::result_out_of_range) {
        throw RuntimeError(ErrorNumber::overflow, "Overflow");
    }
    return error == std::errc();
}

std::string numberText(double number) {
    std::array<char, 32> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), written.ptr};
}

bool Variant::isNumeric() const {
    return std::visit(Overloaded{[](Null) { return false; }, [](DateTime) { return false; },
                                 [](const std::string& text) {
                                     double number = 0;
                                     return readNumber(text, number) == std::errc();
                                 },
                                 [](auto) { return true; }},
                      value_);
}

bool Variant::isDate() const {
    const auto* text = std::get_if<std::string>(&value_);
    return std::holds_alternative<DateTime>(value_) ||
           (text != nullptr && DateTime::parse(*text).has_value());
}

bool Variant::toBool() const {
    if (const auto* text = std::get_if<std::string>(&value_)) {
        if (equalsIgnoringCase(*text, "true")) {
            return true;
        }
        if (equalsIgnoringCase(*text, "false")) {
            return false;
        }
    }
    return toDouble() != 0;
}

std::int16_t Variant::toInt16() const {
    return round16(toDouble());
}

std::int32_t Variant::toInt32() const {
    return round32(toDouble());
}

double Variant::toDouble() const {
    return std::visit(
        Overloaded{[](std::monostate) { return 0.0; }, [](Null) -> double { invalidUseOfNull(); },
                   [](bool value) { return value ? -1.0 : 0.0; },
                   [](DateTime value) { return static_cast<double>(value.seconds()) / secondsPerDay; },
                   [](const std::string& text) { return textToDouble(text); },
                   [](auto number) { return static_cast<double>(number); }},
        value_);
}

DateTime Variant::toDate() const {
    if (const auto* date = std::get_if<DateTime>(&value_)) {
        return *date;
    }
    if (const auto* text = std::get_if<std::string>(&value_)) {
        if (const auto date = DateTime::parse(*text)) {
            return *date;
        }
    }
    const double seconds = std::round(toDouble() * secondsPerDay);
    constexpr double firstSecond = -657434 * secondsPerDay;   // 1 January 100
    constexpr double afterTheLast = 2958466 * secondsPerDay;  // 1 January 10000
    if (!(seconds >= firstSecond && seconds < afterTheLast)) {
        throw RuntimeError(ErrorNumber::overflow, "Overflow");
    }
    return DateTime::fromSeconds(std::llround(seconds));
}

std::string Variant::toText() const {
    return std::visit(
        Overloaded{
            [](std::monostate) { return std::string(); }, [](Null) -> std::string { invalidUseOfNull(); },
            [](bool value) { return std::string(value ? "True" : "False"); },
            [](DateTime value) { return value.text(); }, [](double value) { return numberText(value); },
            [](const std::string& text) { return text; }, [](auto number) { return std::to_string(number); }},
        value_);
}

}  // namespace base
