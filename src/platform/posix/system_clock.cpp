#include "platform/posix/system_clock.h"

#include <algorithm>
#include <ctime>
#include <thread>

namespace platform::posix {

base::DateTime SystemClock::now() const {
    const std::time_t moment = std::time(nullptr);
    std::tm parts{};
    if (localtime_r(&moment, &parts) == nullptr) {
        return {};
    }
    constexpr int firstYear = 1900;
    constexpr int lastSecond = 59;
    const base::CivilTime civil{
        parts.tm_year + firstYear,         parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
        std::min(parts.tm_sec, lastSecond)};  // a leap second has no text form
    return base::DateTime::fromCivil(civil).value_or(base::DateTime());
}

void SystemClock::pause(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace platform::posix
