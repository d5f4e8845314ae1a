#include "platform/win32/message_waiter.h"

#include <windows.h>

#include <algorithm>

namespace platform::win32 {

using Milliseconds = Waiter::Milliseconds;

Milliseconds MessageWaiter::now() {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

void MessageWaiter::wait(std::optional<Milliseconds> until) {
    const DWORD time =
        until ? static_cast<DWORD>(std::max(Milliseconds(0), *until - now()).count()) : INFINITE;
    MsgWaitForMultipleObjectsEx(0, nullptr, time, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

}  // namespace platform::win32
