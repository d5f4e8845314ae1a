// WindowsDrives tell the network shares that drive letters are connected to. The composition root owns it.
#pragma once

#include "platform/drives.h"

namespace platform::windows {

class WindowsDrives : public Drives {
  public:
    DriveStatus connection(std::string_view localName, char* share, std::uint32_t& size) override;
};

}  // namespace platform::windows
