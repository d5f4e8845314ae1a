#include "platform/win32/events.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using platform::win32::Events;
using Seen = std::vector<std::string>;

class Win32Events : public testing::Test {
  protected:
    platform::Handler note(std::string what) {
        return [this, what] { seen.push_back(what); };
    }

    Seen seen;
    Events events{[this] { seen.emplace_back("closed"); }};
};

TEST_F(Win32Events, WaitWhileTheGateIsClosed) {
    events.take(note("click"));
    EXPECT_TRUE(seen.empty());
    const Events::Gate open(events);
    events.take(note("later"));
    events.handleDeferred();
    EXPECT_EQ(seen, (Seen{"later", "click"}));
}

TEST_F(Win32Events, AHandlerAtWorkClosesTheGate) {
    const Events::Gate open(events);
    events.take([this] {
        events.take(note("inner"));
        seen.emplace_back("outer");
    });
    EXPECT_EQ(seen, Seen{"outer"});
    events.handleDeferred();
    EXPECT_EQ(seen, (Seen{"outer", "inner"}));
}

TEST_F(Win32Events, AnErrorIsKeptAndRaisedOnce) {
    const Events::Gate open(events);
    events.take([] { throw std::runtime_error("first"); });
    EXPECT_TRUE(events.over());
    EXPECT_THROW(events.rethrow(), std::runtime_error);
    EXPECT_NO_THROW(events.rethrow());
}

TEST_F(Win32Events, TheFirstErrorIsTheOneThatIsRaised) {
    events.fail(std::make_exception_ptr(std::logic_error("first")));
    events.fail(std::make_exception_ptr(std::runtime_error("second")));
    EXPECT_THROW(events.rethrow(), std::logic_error);
}

TEST_F(Win32Events, AnErrorPassesTheTrapsOfTheHandlerThatItArisesIn) {
    const Events::Gate open(events);
    events.take([this] {
        const Events::Gate again(events);
        try {
            events.take([] { throw std::runtime_error("nested"); });
            events.rethrow();
        } catch (const std::exception&) {
            seen.emplace_back("trapped");
        }
    });
    EXPECT_THROW(events.rethrow(), std::runtime_error);
    EXPECT_TRUE(seen.empty());
}

TEST_F(Win32Events, AreDroppedAfterAnError) {
    const Events::Gate open(events);
    events.take([] { throw std::runtime_error("first"); });
    events.take(note("click"));
    EXPECT_TRUE(seen.empty());
}

TEST_F(Win32Events, ThoseThatWaitAreDroppedWhenTheWindowCloses) {
    events.take(note("click"));
    events.startClosing();
    const Events::Gate open(events);
    events.handleDeferred();
    EXPECT_EQ(seen, Seen{"closed"});
}

TEST_F(Win32Events, ClosingWaitsForTheOutermostHandler) {
    const Events::Gate open(events);
    events.take([this] {
        const Events::Gate again(events);
        events.take([this] { events.startClosing(); });
        seen.emplace_back(events.closed() ? "too early" : "job goes on");
    });
    EXPECT_EQ(seen, (Seen{"job goes on", "closed"}));
    EXPECT_TRUE(events.closed());
}

}  // namespace
