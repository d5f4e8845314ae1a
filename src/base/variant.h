// A Variant is a value whose type is known at run time only: a database field, a plug-in's argument or
// result. Its conversions are those of the automation world: halves round to even, what does not fit raises
// "Overflow", what does not convert raises "Type mismatch".
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "base/date_time.h"

namespace base {

struct Null {
    bool operator==(const Null&) const = default;
};

class Variant {
  public:
    using Value =
        std::variant<std::monostate, Null, bool, std::int16_t, std::int32_t, double, DateTime, std::string>;

    Variant() = default;
    Variant(Null value) : value_(value) {}                      // NOLINT(google-explicit-constructor)
    Variant(bool value) : value_(value) {}                      // NOLINT(google-explicit-constructor)
    Variant(std::int16_t value) : value_(value) {}              // NOLINT(google-explicit-constructor)
    Variant(std::int32_t value) : value_(value) {}              // NOLINT(google-explicit-constructor)
    Variant(double value) : value_(value) {}                    // NOLINT(google-explicit-constructor)
    Variant(DateTime value) : value_(value) {}                  // NOLINT(google-explicit-constructor)
    Variant(std::string value) : value_(std::move(value)) {}    // NOLINT(google-explicit-constructor)
    Variant(const char* value) : value_(std::string(value)) {}  // NOLINT(google-explicit-constructor)

    [[nodiscard]] const Value& value() const { return value_; }

    [[nodiscard]] bool isEmpty() const { return std::holds_alternative<std::monostate>(value_); }
    [[nodiscard]] bool isNull() const { return std::holds_alternative<Null>(value_); }

    /// A number, a boolean, an empty value, or a text that reads as a number. A date is none, and neither is
    /// a text whose number no double holds.
    [[nodiscard]] bool isNumeric() const;

    /// A date, or a text that reads as one.
    [[nodiscard]] bool isDate() const;

    /// Empty gives false, 0, 0.0 or the empty text; null raises "Invalid use of Null"; true is -1 as a
    /// number; a date is its days since the zero date as a number, and "yyyy-mm-dd hh:mm:ss" as text.
    [[nodiscard]] bool toBool() const;
    [[nodiscard]] std::int16_t toInt16() const;
    [[nodiscard]] std::int32_t toInt32() const;
    [[nodiscard]] double toDouble() const;
    [[nodiscard]] DateTime toDate() const;
    [[nodiscard]] std::string toText() const;

    bool operator==(const Variant&) const = default;

  private:
    Value value_;
};

/// Reads a whole text as a number: blanks around it, a sign, digits, a decimal point and an exponent are
/// allowed. False when it is none; raises Overflow for one too large for a double. One too near to zero is 0.
[[nodiscard]] bool parseNumber(std::string_view text, double& number);

/// The number as a text that reads back as the same number, without a fraction where there is none.
std::string numberText(double number);

}  // namespace base
