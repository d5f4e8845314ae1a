#include "base/brief_spin.h"

#include <gtest/gtest.h>

namespace {

using base::BriefSpin;
constexpr std::chrono::hours forEver{1};
constexpr std::chrono::microseconds noTime{0};

TEST(BriefSpin, EndsAsSoonAsItIsReady) {
    BriefSpin spin(forEver, 2);
    int asked = 0;
    EXPECT_TRUE(spin.until([&] { return ++asked == 5; }));
    EXPECT_EQ(asked, 5);
}

TEST(BriefSpin, EndsWhenItsTimeIsOver) {
    BriefSpin spin(noTime, 2);
    int asked = 0;
    EXPECT_FALSE(spin.until([&] { return ++asked > 1000000000; }));
    EXPECT_GE(asked, 1);
}

TEST(BriefSpin, IsNotDoneOnASingleProcessor) {
    BriefSpin spin(forEver, 1);
    EXPECT_FALSE(spin.until([] { return true; }));
}

TEST(BriefSpin, IsRareWhereItIsInVain) {
    BriefSpin spin(noTime, 2);
    int spins = 0;
    for (int i = 0; i < 1000; ++i) {
        bool spun = false;
        spin.until([&] {
            spun = true;
            return false;
        });
        spins += spun ? 1 : 0;
    }
    EXPECT_GT(spins, 8);
    EXPECT_LT(spins, 100);
}

TEST(BriefSpin, IsTrustedAgainOnceItWasNotInVain) {
    BriefSpin spin(noTime, 2);
    for (int i = 0; i < 1000; ++i) {
        spin.until([] { return false; });
    }
    int tries = 0;
    while (!spin.until([] { return true; })) {
        ASSERT_LT(++tries, 100);
    }
    EXPECT_TRUE(spin.until([] { return true; }));
}

}  // namespace
