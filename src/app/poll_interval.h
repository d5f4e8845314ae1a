// The rules for the text that says how often the queue is polled.
#pragma once

#include <optional>
#include <string_view>

namespace app {

/// The number of seconds that the text names, fractions included; for a number that no double holds, one as
/// far outside the limits. Raises "Type mismatch" when it is no number.
[[nodiscard]] double pollSeconds(std::string_view text);

/// The seconds in whole milliseconds, halves to even; nothing when the window's timer cannot wait that long
/// or that briefly.
[[nodiscard]] std::optional<int> pollMilliseconds(double seconds);

}  // namespace app
