// The one place where COM's errors become ours.
#pragma once

#include <string>

struct tagEXCEPINFO;

namespace platform::windows {

/// Raises a RuntimeError for a failed HRESULT. `details`, if any, is what the object told about its error:
/// its description is the error's as it stands. Without one the error says what was being done and what the
/// system calls the code.
[[noreturn]] void raiseComError(long status, const std::string& doing, const tagEXCEPINFO* details = nullptr);

/// What the system calls a code, with the code.
std::string statusText(long status);

}  // namespace platform::windows
