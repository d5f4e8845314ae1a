// Turns the system's error codes into the service's one error type.
#pragma once

#include <string>

#include "base/runtime_error.h"

namespace platform::windows {

/// The error for a code of GetLastError; `what` says what was being done, with the path.
[[nodiscard]] base::RuntimeError windowsError(unsigned long code, const std::string& what);

}  // namespace platform::windows
