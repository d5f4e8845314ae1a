// Turns the system's error numbers into the service's one error type.
#pragma once

#include <string>

#include "base/runtime_error.h"

namespace platform::posix {

/// The error for an errno value; `what` says what was being done, with the path.
[[nodiscard]] base::RuntimeError systemError(int error, const std::string& what);

/// The same under a number of the service's own, for a failure that its callers know by that number.
[[nodiscard]] base::RuntimeError systemError(base::ErrorNumber number, int error, const std::string& what);

}  // namespace platform::posix
