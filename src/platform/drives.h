// Which network share lies behind a drive letter. The composition root owns it.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// The statuses that callers tell apart; any other means "no network drive". The numbers are the networking
/// library's.
enum class DriveStatus : std::uint32_t { success = 0, moreData = 234, notConnected = 2250 };

class Drives {
  public:
    Drives() = default;
    Drives(const Drives&) = delete;
    Drives& operator=(const Drives&) = delete;
    virtual ~Drives() = default;

    /// Writes the NUL-ended share name of a local name such as "X:". In: `size` is the room at `share` in
    /// bytes. Out, with moreData: the room that is needed.
    virtual DriveStatus connection(std::string_view localName, char* share, std::uint32_t& size) = 0;
};

}  // namespace platform
