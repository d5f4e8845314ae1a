#include "platform/posix/signal_waiter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

#include <unistd.h>

#include "base/runtime_error.h"

namespace {

using platform::posix::SignalWaiter;

/// What the system would give the next file that is opened.
int lowestFreeDescriptor() {
    const int number = dup(STDERR_FILENO);
    close(number);
    return number;
}

TEST(SignalWaiter, IsNotAskedToCloseBeforeASignal) {
    SignalWaiter waiter;
    EXPECT_FALSE(waiter.closeRequested());
}

TEST(SignalWaiter, EachOfItsSignalsAsksToClose) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
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
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction before {};
        ASSERT_EQ(sigaction(signal, nullptr, &before), 0);
        { SignalWaiter waiter; }
        struct sigaction after {};
        ASSERT_EQ(sigaction(signal, nullptr, &after), 0);
        EXPECT_EQ(before.sa_handler, after.sa_handler);
    }
}

TEST(SignalWaiter, RaisesForASignalThatCannotBeTaken) {
    try {
        const platform::posix::TakenSignal taken(SIGKILL);
        FAIL() << "nobody can take this signal over";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), EINVAL);
        EXPECT_THAT(error.description(), testing::StartsWith("cannot take over signal 9: "));
    }
}

TEST(SignalWaiter, LeavesNoFileOpenWhenItGoes) {
    const int before = lowestFreeDescriptor();
    { SignalWaiter waiter; }
    EXPECT_EQ(lowestFreeDescriptor(), before);
}

TEST(SignalWaiter, LeavesAHangUpThatIsIgnoredAlone) {
    const auto former = std::signal(SIGHUP, SIG_IGN);
    {
        SignalWaiter waiter;
        ASSERT_EQ(std::raise(SIGHUP), 0);
        EXPECT_FALSE(waiter.closeRequested());
    }
    std::signal(SIGHUP, former);
}

}  // namespace
