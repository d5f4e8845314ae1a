#include "platform/posix/system_clock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

using platform::posix::SystemClock;

TEST(SystemClock, TellsLocalTime) {
    const auto local = [] {
        const std::time_t moment = std::time(nullptr);
        std::tm parts{};
        localtime_r(&moment, &parts);
        return *base::DateTime::fromCivil({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                                           parts.tm_hour, parts.tm_min, parts.tm_sec});
    };
    // The wall clock may be set back, or the hour change, while the test looks at it: then it looks again.
    base::DateTime now;
    base::DateTime before;
    base::DateTime after;
    do {
        before = local();
        now = SystemClock().now();
        after = local();
    } while (before > after);
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(SystemClock, ReturnsFromAPause) {
    SystemClock clock;
    clock.pause(std::chrono::milliseconds(0));
    clock.pause(std::chrono::milliseconds(-5));
    EXPECT_FALSE(clock.now().isZero());
}

}  // namespace
