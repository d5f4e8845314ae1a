// Arithmetic in the widths that the library's fields have. Whatever leaves its width raises "Overflow".
#pragma once

#include <cstdint>

namespace base {

/// Sum in 16 bits. Raises Overflow outside -32768..32767.
std::int16_t add16(std::int16_t left, std::int16_t right);

/// Sum in 32 bits. Raises Overflow outside the signed 32-bit range.
std::int32_t add32(std::int32_t left, std::int32_t right);

/// The value in 16 bits. Raises Overflow when it does not fit.
std::int16_t narrow16(std::int64_t value);

/// The value in 32 bits. Raises Overflow when it does not fit.
std::int32_t narrow32(std::int64_t value);

/// The nearest whole number, halves to even. Raises Overflow when it does not fit (NaN included).
std::int16_t round16(double value);
std::int32_t round32(double value);

/// left / right as doubles. Raises "Division by zero" when right is 0, also for 0 / 0.
double divide(double left, double right);

}  // namespace base
