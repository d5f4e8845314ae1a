// The profiling class with its profiler as an automation object that is registered under its ProgID.
#include "infra/Timer.h"

#include <gtest/gtest.h>

#include <optional>

#include "base/runtime_error.h"
#include "fakes/manual_clock.h"
#include "fakes/manual_waiter.h"
#include "fakes/memory_settings_store.h"
#include "fakes/recording_process.h"
#include "fakes/scripted_drives.h"
#include "fakes/temporary_folder.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/windows/ado_engine.h"
#include "platform/windows/com_automation.h"
#include "platform/windows/windows_files.h"
#include "windows/com_server/live_objects.h"
#include "windows/com_server/server_module.h"

namespace {

class ProfilerOverCom : public testing::Test {
  protected:
    void SetUp() override {
        if (!com_server::isWine()) {
            GTEST_SKIP()
                << "the stand-in for the profiler is registered in the suite's own Wine session only";
        }
        ledger_ = automation_.create("Parvane.Profiler");
        ledger_->call("Forget");
        process_.directory = folder_.path();
    }

    /// What profilers were asked since the last time.
    std::string takeRecord() {
        const std::string all = ledger_->call("Record").toText();
        std::string fresh = all.substr(taken_);
        taken_ = all.size() + 1;  // and the blank behind it
        return fresh;
    }

    [[nodiscard]] std::string log() const { return folder_.read("TYinxTest.log"); }

    platform::windows::ComApartment apartment_;
    platform::windows::ComAutomationFactory automation_;
    std::unique_ptr<platform::AutomationObject> ledger_;  // takes no time and is asked for none
    std::size_t taken_ = 0;
    fakes::TemporaryFolder folder_;
    fakes::MemorySettingsStore settings_;
    platform::windows::AdoEngine engine_;
    fakes::ManualWaiter waiter_;
    std::vector<std::string> messages_;
    platform::headless::HeadlessToolkit toolkit_{
        waiter_, [this](std::string_view text) { messages_.emplace_back(text); }};
    platform::windows::WindowsFiles files_{automation_};
    fakes::RecordingProcess process_;
    fakes::ScriptedDrives drives_;
    fakes::ManualClock clock_;
    platform::System system_{settings_, engine_, automation_, toolkit_, files_, process_, drives_, clock_};
};

TEST_F(ProfilerOverCom, IsStartedTwiceAtFirst) {
    const infra::Timer timer(system_);
    EXPECT_EQ(takeRecord(), "1.ProfileStart 2.ProfileStart");
    EXPECT_EQ(messages_, std::vector<std::string>{});
}

TEST_F(ProfilerOverCom, MeasuresSectionsWithTheOneObject) {
    infra::Timer timer(system_);
    takeRecord();
    timer.StartTimer();
    EXPECT_EQ(takeRecord(), "1.ProfileStop 1.ProfileStart");
    timer.StartTimer();
    timer.EndTimer("inner");
    EXPECT_EQ(takeRecord(), "1.ProfileStop 1.ProfileStart 1.ProfileStop 1.ProfileStart");
    timer.EndTimer("outer");
    // 75 tenths of a millisecond inside, and 50 and 100 more outside.
    EXPECT_EQ(log(), " -  -   Total time of inner: 8 ms \r\n -   Total time of outer: 22 ms \r\n");
    EXPECT_EQ(messages_, std::vector<std::string>{});
}

TEST_F(ProfilerOverCom, MeasuresLinesWithTheOther) {
    infra::Timer timer(system_);
    takeRecord();
    timer.WriteLog("one");
    timer.WriteLog("two");
    EXPECT_EQ(takeRecord(), "2.ProfileStop 2.ProfileStart 2.ProfileStop 2.ProfileStart");
    EXPECT_EQ(log(), "25  in 0.1 ms   : one\r\n50  in 0.1 ms   : two\r\n");
}

TEST_F(ProfilerOverCom, TellsItsErrors) {
    infra::Timer timer(system_);
    ledger_->call("Break");
    timer.StartTimer();
    timer.EndTimer("section");
    timer.WriteLog("line");
    EXPECT_EQ(messages_, (std::vector<std::string>{"StartTimer: The profiler's clock has stopped",
                                                   "EndTimer The profiler's clock has stopped",
                                                   "WriteLog: The profiler's clock has stopped"}));
}

TEST_F(ProfilerOverCom, IsGivenBackWithTheTimer) {
    {
        const infra::Timer timer(system_);
        EXPECT_EQ(com_server::liveObjectsOf(L"test_profiler.dll"), 3);
    }
    EXPECT_EQ(com_server::liveObjectsOf(L"test_profiler.dll"), 1);
}

}  // namespace
