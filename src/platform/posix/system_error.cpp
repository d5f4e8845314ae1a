#include "platform/posix/system_error.h"

#include <system_error>

namespace platform::posix {

base::RuntimeError systemError(int error, const std::string& what) {
    return {error, what + ": " + std::generic_category().message(error)};
}

base::RuntimeError systemError(base::ErrorNumber number, int error, const std::string& what) {
    return {number, systemError(error, what).description()};
}

}  // namespace platform::posix
