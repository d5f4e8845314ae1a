#include "platform/windows/windows_drives.h"

#include <windows.h>
// windows.h stands first: the networking library needs its types.
#include <winnetwk.h>

#include <algorithm>
#include <string>

#include "platform/windows/ansi_text.h"

namespace platform::windows {

DriveStatus WindowsDrives::connection(std::string_view localName, char* share, std::uint32_t& size) {
    // The networking library writes the caller's room, no more; the share goes into it in the service's own
    // encoding, which may need more room than the code page did.
    std::string ansi(share, size);
    DWORD room = size;
    const DWORD status = ::WNetGetConnectionA(toAnsi(localName).c_str(), ansi.data(), &room);
    if (status == ERROR_MORE_DATA) {
        size = room;
    }
    if (status != NO_ERROR) {
        return DriveStatus{status};
    }
    const std::string name = fromAnsi(std::string_view(ansi).substr(0, ansi.find('\0')));
    const auto needed = static_cast<std::uint32_t>(name.size() + 1);
    if (needed > size) {
        size = needed;
        return DriveStatus::moreData;
    }
    std::copy(name.c_str(), name.c_str() + needed, share);
    return DriveStatus::success;
}

}  // namespace platform::windows
