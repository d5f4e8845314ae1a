#include "infra/Timer.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "base/runtime_error.h"
#include "unit/infra/parts.h"

namespace {

using infra::Timer;

/// A profiler that counts up a scripted time, in tenths of a millisecond, between two calls.
class ProfiledWork : public ::testing::Test {
  protected:
    void SetUp() override {
        parts.process.directory = parts.folder.path();
        profiler.answer("ProfileStart", base::Variant());
        profiler.methods["ProfileStop"] = [this](std::span<base::Variant>) {
            const base::Variant time = times.empty() ? base::Variant(0.0) : times.front();
            if (!times.empty()) {
                times.pop_front();
            }
            return time;
        };
    }

    [[nodiscard]] std::string log() const { return parts.folder.read("TYinxTest.log"); }

    Parts parts;
    fakes::ScriptedPlugin& profiler = parts.automation.plugins["Parvane.Profiler"];
    std::deque<base::Variant> times;
};

TEST_F(ProfiledWork, StartsBothProfilersAndWritesNothingAtFirst) {
    const Timer timer(parts.system());
    EXPECT_EQ(profiler.created, 2);
    EXPECT_EQ(profiler.calls, (std::vector<std::string>{"ProfileStart", "ProfileStart"}));
    EXPECT_EQ(log(), "");
}

TEST_F(ProfiledWork, WritesTheTimeSinceTheLastLine) {
    Timer timer(parts.system());
    times = {12.0, 3.5};
    timer.WriteLog("one");
    timer.WriteLog("two");
    EXPECT_EQ(log(), "12  in 0.1 ms   : one\r\n3.5  in 0.1 ms   : two\r\n");
}

TEST_F(ProfiledWork, WritesNoLinesWhileSwitchedOff) {
    Timer timer(parts.system());
    timer.setLoggin(false);
    timer.WriteLog("off");
    EXPECT_EQ(log(), "");
    EXPECT_EQ(profiler.calls.size(), 2U);
    timer.setLoggin(true);
    timer.WriteLog("on");
    EXPECT_EQ(log(), "0  in 0.1 ms   : on\r\n");
}

TEST_F(ProfiledWork, WritesASectionsTimeAndChargesItToTheSectionAround) {
    Timer timer(parts.system());
    times = {10.0, 20.0, 30.0, 40.0};
    timer.StartTimer();
    timer.StartTimer();
    timer.EndTimer("inner");
    timer.EndTimer("outer");
    EXPECT_EQ(log(), " -  -   Total time of inner: 3 ms \r\n -   Total time of outer: 9 ms \r\n");
    EXPECT_TRUE(parts.toolkit.boxes.empty());
}

TEST_F(ProfiledWork, RoundsTimesToWholeMilliseconds) {
    Timer timer(parts.system());
    times = {0.0, 26.0, 0.0, 25.0};
    timer.StartTimer();
    timer.EndTimer("up");
    timer.StartTimer();
    timer.EndTimer("even");
    EXPECT_EQ(log(), " -   Total time of up: 3 ms \r\n -   Total time of even: 2 ms \r\n");
}

TEST_F(ProfiledWork, StartsTheProfilerAnewAfterEachSectionsEdge) {
    Timer timer(parts.system());
    profiler.calls.clear();
    timer.StartTimer();
    timer.EndTimer("section");
    EXPECT_EQ(profiler.calls,
              (std::vector<std::string>{"ProfileStop", "ProfileStart", "ProfileStop", "ProfileStart"}));
}

TEST_F(ProfiledWork, RefusesAHundredAndFirstSection) {
    Timer timer(parts.system());
    for (int i = 0; i < 100; ++i) {
        timer.StartTimer();
    }
    EXPECT_TRUE(parts.toolkit.boxes.empty());
    timer.StartTimer();
    EXPECT_EQ(parts.toolkit.boxes, std::vector<std::string>{"StartTimer: Subscript out of range"});
    EXPECT_EQ(log(), "StartTimer: Subscript out of range\r\n");
    timer.EndTimer("too deep");
    EXPECT_EQ(parts.toolkit.boxes.back(), "EndTimer Subscript out of range");
}

TEST_F(ProfiledWork, ShowsThatNoSectionIsOpen) {
    Timer timer(parts.system());
    timer.EndTimer("nothing");
    EXPECT_EQ(parts.toolkit.boxes, std::vector<std::string>{"EndTimer Subscript out of range"});
    EXPECT_EQ(log(), "");
}

TEST_F(ProfiledWork, ShowsTheProfilersErrors) {
    Timer timer(parts.system());
    profiler.fail("ProfileStop", "profiler broke");
    timer.StartTimer();
    timer.EndTimer("section");
    timer.WriteLog("line");
    EXPECT_EQ(parts.toolkit.boxes,
              (std::vector<std::string>{"StartTimer: profiler broke", "EndTimer profiler broke",
                                        "WriteLog: profiler broke"}));
    EXPECT_EQ(log(), "StartTimer: profiler broke\r\n");
}

TEST_F(ProfiledWork, RaisesWhereThereIsNoProfiler) {
    parts.automation.plugins.clear();
    EXPECT_THROW(const Timer timer(parts.system()), base::RuntimeError);
}

TEST_F(ProfiledWork, WritesAndShowsAMessage) {
    Timer timer(parts.system(), "own.log");
    timer.MyMsgBox("look here");
    EXPECT_EQ(parts.folder.read("own.log"), "look here\r\n");
    EXPECT_EQ(parts.toolkit.boxes, std::vector<std::string>{"look here"});
}

TEST_F(ProfiledWork, RaisesWhereItsFileCannotBeWritten) {
    Timer timer(parts.system(), "missing/own.log");
    EXPECT_THROW(timer.RealWriteLog("line"), base::RuntimeError);
    EXPECT_THROW(timer.MyMsgBox("line"), base::RuntimeError);
    EXPECT_TRUE(parts.toolkit.boxes.empty());
    timer.WriteLog("line");
    ASSERT_EQ(parts.toolkit.boxes.size(), 1U);
    EXPECT_EQ(parts.toolkit.boxes.front().rfind("WriteLog: cannot open ", 0), 0U);
}

}  // namespace
