#include "base/checked.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "base/runtime_error.h"

namespace {

constexpr std::int16_t most16 = std::numeric_limits<std::int16_t>::max();
constexpr std::int16_t least16 = std::numeric_limits<std::int16_t>::min();
constexpr std::int32_t most32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least32 = std::numeric_limits<std::int32_t>::min();

/// The description of the error that the action raises, with its number in front.
std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        return std::to_string(error.number()) + " " + error.description();
    }
    return "none";
}

TEST(Checked, AddsUpToTheEndsOfSixteenBits) {
    EXPECT_EQ(base::add16(32766, 1), most16);
    EXPECT_EQ(base::add16(-32767, -1), least16);
    EXPECT_EQ(errorOf([] { base::add16(most16, 1); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { base::add16(least16, -1); }), "6 Overflow");
}

TEST(Checked, AddsUpToTheEndsOfThirtyTwoBits) {
    EXPECT_EQ(base::add32(2147483646, 1), most32);
    EXPECT_EQ(base::add32(-2147483647, -1), least32);
    EXPECT_EQ(errorOf([] { base::add32(most32, 1); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { base::add32(least32, -1); }), "6 Overflow");
}

TEST(Checked, NarrowsOnlyWhatFits) {
    EXPECT_EQ(base::narrow16(32767), most16);
    EXPECT_EQ(base::narrow16(-32768), least16);
    EXPECT_EQ(errorOf([] { base::narrow16(32768); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { base::narrow16(-32769); }), "6 Overflow");
    EXPECT_EQ(base::narrow32(2147483647), most32);
    EXPECT_EQ(errorOf([] { base::narrow32(2147483648); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { base::narrow32(-2147483649); }), "6 Overflow");
}

TEST(Checked, RoundsHalvesToEven) {
    EXPECT_EQ(base::round32(0.5), 0);
    EXPECT_EQ(base::round32(1.5), 2);
    EXPECT_EQ(base::round32(2.5), 2);
    EXPECT_EQ(base::round32(-0.5), 0);
    EXPECT_EQ(base::round32(-1.5), -2);
    EXPECT_EQ(base::round32(-2.5), -2);
    EXPECT_EQ(base::round32(44.6), 45);
    EXPECT_EQ(base::round16(2.5), 2);
    EXPECT_EQ(base::round16(3.5), 4);
}

TEST(Checked, RoundsBeforeItLooksWhetherTheNumberFits) {
    EXPECT_EQ(base::round16(32767.4), most16);
    EXPECT_EQ(base::round16(-32768.5), least16);
    EXPECT_EQ(errorOf([] { base::round16(32767.5); }), "6 Overflow");
    EXPECT_EQ(base::round32(2147483647.4), most32);
    EXPECT_EQ(errorOf([] { base::round32(2147483647.5); }), "6 Overflow");
}

TEST(Checked, RefusesToRoundWhatIsNoNumber) {
    EXPECT_EQ(errorOf([] { base::round32(std::nan("")); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { base::round16(std::numeric_limits<double>::infinity()); }), "6 Overflow");
}

TEST(Checked, DividesUnlessTheDivisorIsZero) {
    EXPECT_DOUBLE_EQ(base::divide(1, 4), 0.25);
    EXPECT_DOUBLE_EQ(base::divide(0, 4), 0);
    EXPECT_EQ(errorOf([] { base::divide(1, 0); }), "11 Division by zero");
    EXPECT_EQ(errorOf([] { base::divide(0, 0); }), "11 Division by zero");
}

}  // namespace
