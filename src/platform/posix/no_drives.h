// NoDrives answers for systems without drive letters: none is connected to a share. The composition root owns
// it.
#pragma once

#include "platform/drives.h"

namespace platform::posix {

class NoDrives : public Drives {
  public:
    DriveStatus connection(std::string_view /*localName*/, char* /*share*/,
                           std::uint32_t& /*size*/) override {
        return DriveStatus::notConnected;
    }
};

}  // namespace platform::posix
