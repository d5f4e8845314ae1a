#include "platform/windows/windows_clock.h"

#include <algorithm>

#include <windows.h>

namespace platform::windows {

base::DateTime WindowsClock::now() const {
    SYSTEMTIME parts{};
    ::GetLocalTime(&parts);
    constexpr int lastSecond = 59;
    const base::CivilTime civil{
        parts.wYear,   parts.wMonth,
        parts.wDay,    parts.wHour,
        parts.wMinute, std::min<int>(parts.wSecond, lastSecond)};  // a leap second has no text form
    return base::DateTime::fromCivil(civil).value_or(base::DateTime());
}

void WindowsClock::pause(std::chrono::milliseconds time) {
    ::Sleep(static_cast<DWORD>(std::max<std::chrono::milliseconds::rep>(time.count(), 0)));
}

}  // namespace platform::windows
