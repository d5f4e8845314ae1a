#include "base/checked.h"

#include <cfenv>
#include <cmath>
#include <limits>

#include "base/runtime_error.h"

namespace base {
namespace {

[[noreturn]] void overflow() {
    throw RuntimeError(ErrorNumber::overflow, "Overflow");
}

template <class Narrow>
Narrow narrow(std::int64_t value) {
    if (value < std::numeric_limits<Narrow>::min() || value > std::numeric_limits<Narrow>::max()) {
        overflow();
    }
    return static_cast<Narrow>(value);
}

template <class Narrow>
Narrow rounded(double value) {
    // nearbyint rounds halves to even in the default rounding mode, which nothing here changes.
    const double whole = std::nearbyint(value);
    if (!(whole >= std::numeric_limits<Narrow>::min() && whole <= std::numeric_limits<Narrow>::max())) {
        overflow();
    }
    return static_cast<Narrow>(whole);
}

}  // namespace

std::int16_t add16(std::int16_t left, std::int16_t right) {
    return narrow<std::int16_t>(std::int64_t{left} + right);
}

std::int32_t add32(std::int32_t left, std::int32_t right) {
    return narrow<std::int32_t>(std::int64_t{left} + right);
}

std::int16_t narrow16(std::int64_t value) {
    return narrow<std::int16_t>(value);
}

std::int32_t narrow32(std::int64_t value) {
    return narrow<std::int32_t>(value);
}

std::int16_t round16(double value) {
    return rounded<std::int16_t>(value);
}

std::int32_t round32(double value) {
    return rounded<std::int32_t>(value);
}

double divide(double left, double right) {
    if (right == 0) {
        throw RuntimeError(ErrorNumber::divisionByZero, "Division by zero");
    }
    return left / right;
}

}  // namespace base
