#include "platform/posix/descriptor.h"

#include <unistd.h>

namespace platform::posix {

Descriptor::~Descriptor() {
    ::close(number_);
}

}  // namespace platform::posix
