#include "platform/windows/windows_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace {

using platform::windows::WindowsClock;

TEST(WindowsClock, TellsLocalTime) {
    const auto local = [] {
        const std::time_t moment = std::time(nullptr);
        const std::tm parts = *std::localtime(&moment);
        return *base::DateTime::fromCivil({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                                           parts.tm_hour, parts.tm_min, parts.tm_sec});
    };
    // The wall clock may be set back, or the hour change, while the test looks at it: then it looks again.
    base::DateTime now;
    base::DateTime before;
    base::DateTime after;
    do {
        before = local();
        now = WindowsClock().now();
        after = local();
    } while (before > after);
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(WindowsClock, ReturnsFromAPause) {
    WindowsClock clock;
    clock.pause(std::chrono::milliseconds(0));
    clock.pause(std::chrono::milliseconds(-5));
    EXPECT_FALSE(clock.now().isZero());
}

}  // namespace
