#include "unit/app/window_fixture.h"

namespace {

using fakes::ProcessEnded;
using platform::ExitStatus;
using platform::PriorityClass;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class StartUp : public Window {
  protected:
    PriorityClass priorityFor(std::string_view setting) {
        settings.put(infra::indexerKey, "Priority", setting);
        start();
        return process.priority.value();
    }
};

INSTANTIATE_TEST_SUITE_P(Toolkits, StartUp, testing::Values(headlessToolkit, screenToolkit), toolkitName);

TEST_P(StartUp, LogsEachStepInOrder) {
    settings.put(infra::indexerKey, "LoggingOn", 1);
    start();
    EXPECT_THAT(
        log(), ElementsAre("Logic: Attempting to start Indexer.", "Interest: Setting priority class to IDLE.",
                           "Crash Detect: Main.SetStatus", "UI: Starting...", "Crash Detect: Main.SetStatus",
                           "UI: Checking for zombies...", "Crash Detect: Main.SetStatus",
                           "UI: Connecting to database...", "Crash Detect: Main.SetStatus", "UI: Connected.",
                           "Crash Detect: Main.SetStatus", "UI: Starting timers...",
                           "Crash Detect: Main.SetStatus", "UI: Running.", "Interest: Indexer started."));
}

TEST_P(StartUp, ShowsEachStepWithTheNewestOnTop) {
    start();
    EXPECT_THAT(status(), ElementsAre("Running.", "Starting timers...", "Connected.",
                                      "Connecting to database...", "Checking for zombies...", "Starting..."));
}

TEST_P(StartUp, EnablesTheTimerWithOneSecond) {
    create();
    EXPECT_FALSE(timer().enabled());
    window->start();
    EXPECT_TRUE(timer().enabled());
    EXPECT_EQ(timer().interval(), 1000);
}

TEST_P(StartUp, LeavesThePriorityAtIdleByDefault) {
    start();
    EXPECT_EQ(process.priority, PriorityClass::idle);
    EXPECT_EQ(process.handle, platform::ProcessHandle{-1});
}

TEST_P(StartUp, HonoursHighInAnyLetterCase) {
    EXPECT_EQ(priorityFor("High"), PriorityClass::high);
    EXPECT_THAT(log(), Contains("Interest: Setting priority class to HIGH."));
}

TEST_P(StartUp, HonoursNormalInAnyLetterCase) {
    EXPECT_EQ(priorityFor("NORMAL"), PriorityClass::normal);
    EXPECT_THAT(log(), Contains("Interest: Setting priority class to NORMAL."));
}

TEST_P(StartUp, TakesAPriorityWithALeadingBlankAsIdle) {
    EXPECT_EQ(priorityFor(" high"), PriorityClass::idle);
}

TEST_P(StartUp, TakesIdleAndLowAsIdle) {
    EXPECT_EQ(priorityFor("idle"), PriorityClass::idle);
    EXPECT_EQ(priorityFor("low"), PriorityClass::idle);
}

TEST_P(StartUp, GoesOnWhenThePriorityIsRefused) {
    process.priorityIsGranted = false;
    start();
    EXPECT_THAT(status(), Contains("Running."));
}

TEST_P(StartUp, APollIntervalOfZeroBecomesOneInTheBoxAndInTheSettings) {
    settings.put(infra::indexerKey, "PollInterval", 0);
    start();
    EXPECT_EQ(textBox("txtPollInterval").text(), "1");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 1);
}

TEST_P(StartUp, APollIntervalThatTheTimerCannotTakeBecomesTheInitialOne) {
    settings.put(infra::indexerKey, "PollInterval", 66);
    start();
    EXPECT_EQ(textBox("txtPollInterval").text(), "1");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 1);
    EXPECT_THAT(status(), Contains("Poll interval must be between 0.001 and 65.535 seconds."));
}

TEST_P(StartUp, WhatDiffersFromTheControlsIsSavedBackUnchanged) {
    settings.put(infra::indexerKey, "PollInterval", 5);
    settings.put(infra::indexerKey, "LoggingOn", 1);
    start();
    EXPECT_THAT(settings.writes,
                ElementsAre("LogFilePath=" + (folder / "service.log"), "LoggingOn=1", "PollInterval=5"));
}

TEST_P(StartUp, DefaultsWriteNothing) {
    settings.put(infra::indexerKey, "LogFilePath", "");
    start();
    EXPECT_TRUE(settings.writes.empty());
}

TEST_P(StartUp, WithoutALogFileLoggingStaysOff) {
    settings.put(infra::indexerKey, "LogFilePath", "");
    settings.put(infra::indexerKey, "LoggingOn", 1);
    start();
    EXPECT_EQ(logIt().value(), 0);
    EXPECT_TRUE(boxes.empty());
}

TEST_P(StartUp, TakesAGreyedLoggingSwitch) {
    settings.put(infra::indexerKey, "LoggingOn", 2);
    start();
    EXPECT_EQ(logIt().value(), 2);
    EXPECT_THAT(log(), Not(Contains("UI: Starting...")));
}

TEST_P(StartUp, AbortsOnALoggingSwitchThatTheCheckBoxCannotTake) {
    settings.put(infra::indexerKey, "LoggingOn", 3);
    std::string reason;
    create();
    window->onStartUpError([&reason](std::string_view error) { reason = error; });
    EXPECT_THROW(window->start(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::failed);
    EXPECT_THAT(status(), ElementsAre("ERROR on startup. ABORTING."));
    EXPECT_THAT(
        log(), ElementsAre("Logic: Attempting to start Indexer.", "Interest: Setting priority class to IDLE.",
                           "Crash Detect: Main.SetStatus", "Error: Indexer failed to start."));
    EXPECT_THAT(reason, testing::HasSubstr("chkLogit"));
    EXPECT_EQ(engine.record.connectionsOpened, 0);
    EXPECT_EQ(engine.record.connectionsClosed, 0);
}

TEST_P(StartUp, WithoutASupervisorTheWindowIsVisible) {
    start();
    EXPECT_TRUE(visible());
}

TEST_P(StartUp, UnderASupervisorTheWindowIsHiddenAndPollsAsUsual) {
    settings.put(infra::masterKey, "", "present");
    library.queue(1);
    start();
    EXPECT_FALSE(visible());
    tick();
    EXPECT_THAT(jobs, ElementsAre(1));
    EXPECT_FALSE(visible());
}

TEST_P(StartUp, AnUnreachableLibraryEndsTheProcessBeforeItIsConnected) {
    settings.put(infra::serviceKey, "DataBasePath", folder / "nowhere.db");
    EXPECT_THROW(start(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::failed);
    EXPECT_FALSE(timer().enabled());
    EXPECT_THAT(status(), ElementsAre("Connecting to database...", "Checking for zombies...", "Starting..."));
    EXPECT_THAT(log().back(), testing::StartsWith("Error: db:init: "));
    EXPECT_THAT(boxes, ElementsAre("Unable to connect to database: \n" + (folder / "nowhere.db") +
                                   "\n\nPlease contact your Tessaly system administrator."));
}

TEST_P(StartUp, ClosingTheWindowUnderTheMessageOfAnUnreachableLibraryIsNoFurtherError) {
    settings.put(infra::serviceKey, "DataBasePath", folder / "nowhere.db");
    driver->beforeAnswer = [this] { driver->closeWindow(); };
    std::string reason;
    create();
    window->onStartUpError([&reason](std::string_view error) { reason = error; });
    EXPECT_THROW(window->start(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::failed);
    EXPECT_EQ(reason, "");
    EXPECT_EQ(boxes.size(), 1U);
    EXPECT_THAT(log().back(), testing::StartsWith("Error: db:init: "));
    EXPECT_THAT(log(), Not(Contains("Error: Indexer failed to start.")));
}

TEST_P(StartUp, ClosingTheWindowClosesTheDatabaseAndLogsNothing) {
    startQuietly();
    driver->closeWindow();
    toolkit.run();
    EXPECT_EQ(engine.record.connectionsClosed, 1);
    EXPECT_TRUE(log().empty());
}

TEST_P(StartUp, ExitClosesTheWindowWithoutAQuestion) {
    startQuietly();
    driver->click("cmdExit");
    toolkit.run();
    EXPECT_EQ(engine.record.connectionsClosed, 1);
    EXPECT_TRUE(boxes.empty());
    EXPECT_TRUE(log().empty());
    EXPECT_EQ(process.ended, std::nullopt);
}

TEST_P(StartUp, AConnectionThatIsGoneAtShutdownIsAnErrorOfRun) {
    start();
    engine.record.closeFails = true;
    driver->closeWindow();
    EXPECT_THROW(toolkit.run(), base::RuntimeError);
}

}  // namespace
