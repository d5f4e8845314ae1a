#include "app/poll_interval.h"

#include <string>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "base/variant.h"
#include "platform/ui.h"

namespace app {

double pollSeconds(std::string_view text) {
    double seconds = 0;
    if (!base::parseNumber(text, seconds)) {
        throw base::RuntimeError(
            base::ErrorNumber::typeMismatch,
            "Type mismatch: the poll interval \"" + std::string(text) + "\" is not a number of seconds");
    }
    return seconds;
}

std::optional<int> pollMilliseconds(double seconds) {
    // Looked at before rounding, which raises for what 32 bits cannot hold.
    const double milliseconds = seconds * 1000;
    if (!(milliseconds >= 0 && milliseconds <= platform::Timer::longestInterval + 1)) {
        return std::nullopt;
    }
    const int rounded = base::round32(milliseconds);
    if (rounded < 1 || rounded > platform::Timer::longestInterval) {
        return std::nullopt;
    }
    return rounded;
}

}  // namespace app
