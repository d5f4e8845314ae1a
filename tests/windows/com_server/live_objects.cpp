#include "windows/com_server/live_objects.h"

#include <windows.h>

#include <stdexcept>

namespace com_server {

long liveObjectsOf(const wchar_t* module) {
    const HMODULE loaded = ::GetModuleHandleW(module);
    if (loaded == nullptr) {
        return 0;
    }
    // Functions of every type come as one type; this is the type that servers export.
    using Count = long(__stdcall*)();
    const auto count =
        reinterpret_cast<Count>(reinterpret_cast<void*>(::GetProcAddress(loaded, "LiveObjects")));
    if (count == nullptr) {
        throw std::runtime_error("the server does not tell how many objects of its own there are");
    }
    return count();
}

}  // namespace com_server
