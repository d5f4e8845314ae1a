#include "platform/headless/signal_waiter.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using platform::headless::SignalWaiter;

TEST(SignalWaiter, IsNotAskedToCloseBeforeASignal) {
    SignalWaiter waiter;
    EXPECT_FALSE(waiter.closeRequested());
}

TEST(SignalWaiter, BothSignalsAskToClose) {
    for (const int signal : {SIGTERM, SIGINT}) {
        SignalWaiter waiter;
        ASSERT_EQ(std::raise(signal), 0);
        EXPECT_TRUE(waiter.closeRequested());
        EXPECT_TRUE(waiter.closeRequested());
    }
}

TEST(SignalWaiter, AnUnlimitedWaitEndsWithASignal) {
    SignalWaiter waiter;
    ASSERT_EQ(std::raise(SIGTERM), 0);
    waiter.wait(std::nullopt);
    EXPECT_TRUE(waiter.closeRequested());
}

TEST(SignalWaiter, AWaitForAMomentEndsThere) {
    SignalWaiter waiter;
    const auto until = waiter.now() + std::chrono::milliseconds(2);
    waiter.wait(until);
    EXPECT_GE(waiter.now(), until);
    waiter.wait(until);  // a moment that has passed is not waited for
    EXPECT_FALSE(waiter.closeRequested());
}

TEST(SignalWaiter, ASecondSignalOfTheSameKindHasItsUsualEffect) {
    EXPECT_EXIT(
        {
            SignalWaiter waiter;
            std::raise(SIGTERM);
            std::raise(SIGTERM);
        },
        testing::KilledBySignal(SIGTERM), "");
}

TEST(SignalWaiter, GivesTheSignalsBack) {
    struct sigaction before {};
    sigaction(SIGTERM, nullptr, &before);
    { SignalWaiter waiter; }
    struct sigaction after {};
    sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
}

}  // namespace
