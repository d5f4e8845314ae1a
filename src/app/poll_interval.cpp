#include "app/poll_interval.h"

#include <limits>
#include <string>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "base/variant.h"
#include "platform/ui.h"

namespace app {

namespace {

bool readSeconds(std::string_view text, double& seconds) {
    try {
        return base::parseNumber(text, seconds);
    } catch (const base::RuntimeError&) {
        seconds = std::numeric_limits<double>::infinity();
        return true;
    }
}

/// True of zero itself, in any spelling. A number that is merely too near to zero for a double has digits.
bool isZeroAsWritten(std::string_view text) {
    return text.substr(0, text.find_first_of("eE")).find_first_of("123456789") == std::string_view::npos;
}

}  // namespace

double pollSeconds(std::string_view text) {
    double seconds = 0;
    if (!readSeconds(text, seconds)) {
        throw base::RuntimeError(
            base::ErrorNumber::typeMismatch,
            "Type mismatch: the poll interval \"" + std::string(text) + "\" is not a number of seconds");
    }
    if (seconds == 0 && !isZeroAsWritten(text)) {
        return std::numeric_limits<double>::denorm_min();
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
