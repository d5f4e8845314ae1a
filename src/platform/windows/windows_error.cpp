#include "platform/windows/windows_error.h"

#include "platform/windows/com_error.h"

namespace platform::windows {

base::RuntimeError windowsError(unsigned long code, const std::string& what) {
    return {static_cast<int>(code), what + ": " + statusText(static_cast<long>(code))};
}

}  // namespace platform::windows
