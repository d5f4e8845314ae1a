#include "app/poll_interval.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "base/runtime_error.h"

namespace {

using app::pollMilliseconds;
using app::pollSeconds;

TEST(PollInterval, ReadsSecondsWithFractions) {
    EXPECT_EQ(pollSeconds("5"), 5);
    EXPECT_EQ(pollSeconds(" 0.25 "), 0.25);
    EXPECT_EQ(pollSeconds("-0"), 0);
}

TEST(PollInterval, RaisesForATextThatIsNoNumber) {
    for (const char* text : {"", "soon", "1 s", "1,5"}) {
        EXPECT_THROW(static_cast<void>(pollSeconds(text)), base::RuntimeError) << text;
    }
}

TEST(PollInterval, LiesBetweenAMillisecondAndTheTimersLongestInterval) {
    EXPECT_EQ(pollMilliseconds(0.001), 1);
    EXPECT_EQ(pollMilliseconds(65.535), 65535);
    EXPECT_EQ(pollMilliseconds(0), std::nullopt);
    EXPECT_EQ(pollMilliseconds(-0.001), std::nullopt);
    EXPECT_EQ(pollMilliseconds(65.536), std::nullopt);
    EXPECT_EQ(pollMilliseconds(std::nan("")), std::nullopt);
}

TEST(PollInterval, IsRoundedHalvesToEvenBeforeItIsCompared) {
    EXPECT_EQ(pollMilliseconds(0.0005), std::nullopt);
    EXPECT_EQ(pollMilliseconds(0.0015), 2);
    EXPECT_EQ(pollMilliseconds(0.0025), 2);
    EXPECT_EQ(pollMilliseconds(65.5354), 65535);
    EXPECT_EQ(pollMilliseconds(65.5355), std::nullopt);
}

TEST(PollInterval, ANumberThatNoDoubleHoldsIsOutOfTheLimits) {
    for (const char* text : {"1e400", "-1e400", "1e-400", "-0.01e-400"}) {
        EXPECT_NE(pollSeconds(text), 0) << text;
        EXPECT_EQ(pollMilliseconds(pollSeconds(text)), std::nullopt) << text;
    }
    EXPECT_EQ(pollSeconds("0e-400"), 0);
}

}  // namespace
