#include "tyctl/supervision.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tyctl::Heartbeat;
using tyctl::RunEnd;
using tyctl::Supervision;

constexpr RunEnd failure{true, false};
constexpr RunEnd idleEnd{false, false};
constexpr RunEnd selfRestart{false, true};

Heartbeat inWork(const std::string& lastTouch) {
    return {lastTouch, 60, 7};
}

TEST(Supervision, AJobThatShowsNoSignOfLifeForLongerThanAllowedIsStale) {
    Supervision supervision;
    supervision.started(100, {});
    EXPECT_FALSE(supervision.isStale(110, inWork("16 Nov 2026 01:47:03")));
    EXPECT_FALSE(supervision.isStale(170, inWork("16 Nov 2026 01:47:03")));
    EXPECT_TRUE(supervision.isStale(170.1, inWork("16 Nov 2026 01:47:03")));
}

TEST(Supervision, EachSignOfLifeCountsAfresh) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_FALSE(supervision.isStale(59, inWork("16 Nov 2026 01:47:03")));
    EXPECT_FALSE(supervision.isStale(100, inWork("16 Nov 2026 01:48:00")));
    EXPECT_FALSE(supervision.isStale(160, inWork("16 Nov 2026 01:48:00")));
    EXPECT_TRUE(supervision.isStale(161, inWork("16 Nov 2026 01:48:00")));
}

TEST(Supervision, AnIdleServiceIsNeverStale) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_FALSE(supervision.isStale(100000, {"16 Nov 2026 01:47:03", 60, 0}));
}

TEST(Supervision, ALongerAllowanceIsHonoured) {
    Supervision supervision;
    supervision.started(0, {});
    const Heartbeat commit{"16 Nov 2026 01:47:03", 120, 7};
    EXPECT_FALSE(supervision.isStale(1, commit));
    EXPECT_FALSE(supervision.isStale(121, commit));
    EXPECT_TRUE(supervision.isStale(122, commit));
}

TEST(Supervision, ASignOfLifeOfAnEarlierRunDoesNotCondemnANewOne) {
    Supervision supervision;
    const Heartbeat left = inWork("01 Jan 1999 00:00:00");
    supervision.started(1000, left);
    EXPECT_FALSE(supervision.isStale(1000, left));
    EXPECT_FALSE(supervision.isStale(1060, left));
    EXPECT_TRUE(supervision.isStale(1061, left));
}

TEST(Supervision, AClockThatIsSetBackOrForthEndsNoHealthyJob) {
    Supervision supervision;
    supervision.started(0, inWork("16 Nov 2026 03:00:00"));
    EXPECT_FALSE(supervision.isStale(50, inWork("16 Nov 2026 02:00:50")));
    EXPECT_FALSE(supervision.isStale(100, inWork("16 Nov 2026 05:01:40")));
}

TEST(Supervision, RunsThatEndAtOnceWaitTwiceAsLongEachTimeUpToAMinute) {
    Supervision supervision;
    std::vector<double> delays;
    for (int run = 0; run < 9; ++run) {
        supervision.started(0, {});
        delays.push_back(supervision.delayAfter(1, failure));
    }
    EXPECT_EQ(delays, (std::vector<double>{1, 2, 4, 8, 16, 32, 60, 60, 60}));
}

TEST(Supervision, AQuickEndWithoutAnyWorkDoneWaitsEvenWithoutAFailure) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_EQ(supervision.delayAfter(4.9, idleEnd), 1);
}

TEST(Supervision, ASelfRestartAfterWorkStartsAgainWithoutDelay) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_EQ(supervision.delayAfter(1, selfRestart), 0);
}

TEST(Supervision, AQuickFailureWaitsAlthoughWorkWasDone) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_EQ(supervision.delayAfter(1, {true, true}), 1);
}

TEST(Supervision, ALongRunStartsAgainWithoutDelayHoweverItEnded) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_EQ(supervision.delayAfter(5, failure), 0);
}

TEST(Supervision, ARunThatDidNotEndAtOnceForgetsEarlierDelays) {
    Supervision supervision;
    supervision.started(0, {});
    EXPECT_EQ(supervision.delayAfter(1, failure), 1);
    EXPECT_EQ(supervision.delayAfter(2, failure), 2);
    EXPECT_EQ(supervision.delayAfter(100, failure), 0);
    supervision.started(100, {});
    EXPECT_EQ(supervision.delayAfter(101, failure), 1);
}

}  // namespace
