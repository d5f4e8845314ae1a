#include "unit/app/window_fixture.h"

namespace {

using platform::WindowState;
using testing::Contains;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using OperatorWindow = Window;

constexpr const char* refusal = "Poll interval must be between 0.001 and 65.535 seconds.";

INSTANTIATE_TEST_SUITE_P(Toolkits, OperatorWindow, testing::Values(headlessToolkit, screenToolkit),
                         toolkitName);

TEST_P(OperatorWindow, StopDisablesTheTimerAndChangesTheCaption) {
    start();
    operatorClicks("cmdStartStop");
    EXPECT_FALSE(timer().enabled());
    EXPECT_EQ(startStop().caption(), "S&tart");
    EXPECT_EQ(status().front(), "Indexing stopped.");
}

TEST_P(OperatorWindow, StartEnablesTheTimerWithTheSameInterval) {
    start();
    operatorClicks("cmdStartStop");
    operatorTypes("txtPollInterval", "9");
    operatorClicks("cmdStartStop");
    EXPECT_TRUE(timer().enabled());
    EXPECT_EQ(timer().interval(), 1000);
    EXPECT_EQ(startStop().caption(), "S&top");
    EXPECT_EQ(status().front(), "Indexing started.");
}

TEST_P(OperatorWindow, StatusLinesCarryTheTime) {
    start();
    clock.moment = *base::DateTime::parse("2026-11-16 09:05:01");
    window->SetStatus("Working");
    EXPECT_EQ(driver->find<platform::ListBox>("lstStatus").line(0), "09:05:01: Working");
}

TEST_P(OperatorWindow, TheFiftyFirstLinePushesOutTheOldest) {
    create();
    for (int i = 1; i <= 51; ++i) {
        window->SetStatus("line " + std::to_string(i));
        EXPECT_LE(status().size(), 50U);
    }
    EXPECT_EQ(status().size(), 50U);
    EXPECT_EQ(status().front(), "line 51");
    EXPECT_EQ(status().back(), "line 2");
}

TEST_P(OperatorWindow, LinesSentWhileMinimisedNeverAppear) {
    create();
    window->SetStatus("before");
    operatorSets(WindowState::minimised);
    window->SetStatus("meanwhile");
    operatorSets(WindowState::normal);
    EXPECT_THAT(status(), ElementsAre("before"));
    window->SetStatus("after");
    EXPECT_THAT(status(), ElementsAre("after", "before"));
}

TEST_P(OperatorWindow, LinesSentWhileMaximisedNeverAppear) {
    create();
    operatorSets(WindowState::maximised);
    window->SetStatus("meanwhile");
    EXPECT_TRUE(status().empty());
}

TEST_P(OperatorWindow, StatusIsEchoedToTheLogOnlyWhenTheBoxIsChecked) {
    startQuietly();
    window->SetStatus("silent");
    logIt().setValue(1);
    window->SetStatus("echoed");
    logIt().setValue(2);
    window->SetStatus("greyed");
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.SetStatus", "Crash Detect: Main.SetStatus",
                                   "UI: echoed", "Crash Detect: Main.SetStatus"));
}

TEST_P(OperatorWindow, StatusIsEchoedWhileMinimised) {
    startQuietly();
    logIt().setValue(1);
    operatorSets(WindowState::minimised);
    window->SetStatus("echoed");
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.SetStatus", "UI: echoed"));
}

TEST_P(OperatorWindow, StatusIsNotEchoedWhenTheLevelIsOff) {
    settings.put(infra::indexerKey, "LogLevelUIOutput", 0);
    startQuietly();
    logIt().setValue(1);
    window->SetStatus("silent");
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.SetStatus"));
}

TEST_P(OperatorWindow, LoggingNeedsALogFileFirst) {
    settings.put(infra::indexerKey, "LogFilePath", "");
    start();
    operatorPresses("chkLogit");
    EXPECT_THAT(boxes, ElementsAre("Logging cannot be enabled until you choose a log file."));
    EXPECT_EQ(logIt().value(), 0);
    EXPECT_EQ(settings.number(infra::indexerKey, "LoggingOn"), 0);
    EXPECT_THAT(settings.writes, ElementsAre("LoggingOn=0"));
}

TEST_P(OperatorWindow, ClearingTheBoxWithoutALogFileAsksNothing) {
    startQuietly();
    logIt().setValue(1);
    operatorTypes("txtLogFile", "");
    operatorPresses("chkLogit");
    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(settings.number(infra::indexerKey, "LoggingOn"), 0);
}

TEST_P(OperatorWindow, TheLoggingSwitchIsSavedAtOnce) {
    startQuietly();
    operatorPresses("chkLogit");
    operatorPresses("chkLogit");
    logIt().setValue(2);
    EXPECT_THAT(settings.writes, ElementsAre("LoggingOn=1", "LoggingOn=0", "LoggingOn=2"));
}

TEST_P(OperatorWindow, ANewLogFileIsSavedAndUsedAtOnce) {
    start();
    operatorTypes("txtLogFile", folder / "other.log");
    EXPECT_EQ(settings.text(infra::indexerKey, "LogFilePath"), folder / "other.log");
    window->SetStatus("after");
    EXPECT_THAT(folder.read("other.log"), HasSubstr("Crash Detect: Main.SetStatus\r\n"));
}

TEST_P(OperatorWindow, TypingZeroBecomesOneAndIsSaved) {
    startQuietly();
    operatorTypes("txtPollInterval", "5");
    operatorTypes("txtPollInterval", "0");
    EXPECT_EQ(textBox("txtPollInterval").text(), "1");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 1);
    EXPECT_THAT(status(), Not(Contains(refusal)));
}

TEST_P(OperatorWindow, ZeroInAnySpellingBecomesOne) {
    start();
    for (const char* zero : {"0.0", "-0", "0e5"}) {
        operatorTypes("txtPollInterval", zero);
        EXPECT_EQ(textBox("txtPollInterval").text(), "1") << zero;
    }
}

TEST_P(OperatorWindow, ThePollIntervalIsSavedRoundedHalvesToEven) {
    startQuietly();
    operatorTypes("txtPollInterval", "2.5");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 2);
    operatorTypes("txtPollInterval", "3.5");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 4);
    EXPECT_EQ(textBox("txtPollInterval").text(), "3.5");
}

TEST_P(OperatorWindow, AnIntervalThatTheTimerCannotTakeIsRefused) {
    startQuietly();
    operatorTypes("txtPollInterval", "7");
    for (const char* text : {"65.536", "-1", "0.0004", "1e300", "-1e300", "1e400", "1e-400"}) {
        operatorTypes("txtPollInterval", text);
        EXPECT_EQ(textBox("txtPollInterval").text(), "7") << text;
        EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 7) << text;
        EXPECT_EQ(status().front(), refusal) << text;
    }
}

TEST_P(OperatorWindow, TheLimitsThemselvesAreAccepted) {
    startQuietly();
    for (const char* text : {"65.535", "0.001"}) {
        operatorTypes("txtPollInterval", text);
        EXPECT_EQ(textBox("txtPollInterval").text(), text);
    }
    EXPECT_THAT(status(), Not(Contains(refusal)));
}

TEST_P(OperatorWindow, ATextThatIsNoNumberEndsTheProgram) {
    for (const char* text : {"soon", "", "1 s"}) {
        start();
        driver->typeText("txtPollInterval", text);
        EXPECT_THROW(toolkit.run(), base::RuntimeError) << text;
    }
}

TEST_P(OperatorWindow, AnIntervalGivenByTheProgramCountsAsTyped) {
    startQuietly();
    window->takePollInterval("2.5");
    EXPECT_EQ(textBox("txtPollInterval").text(), "2.5");
    EXPECT_EQ(settings.number(infra::indexerKey, "PollInterval"), 2);
}

TEST_P(OperatorWindow, TheProgramCanCloseTheWindowAsItsExitButtonDoes) {
    startQuietly();
    window->close();
    EXPECT_FALSE(visible());
    EXPECT_EQ(engine.record.connectionsClosed, 1);
    toolkit.run();
}

TEST_P(OperatorWindow, BrowseOffersLogFilesAndAllFiles) {
    start();
    operatorClicks("btnBrowse");
    // Where files need no extension, the toolkit shows those without one among all files, too. On Windows the
    // descriptions are all that is seen from outside.
    EXPECT_THAT(
        driver->offered,
        testing::AnyOf(ElementsAre("Log Files (*.log)|*.log",
                                   testing::AnyOf("All Files (*.*)|*.*", "All Files (*.*)|*"), ".log"),
                       ElementsAre("Log Files (*.log)", "All Files (*.*)")));
}

TEST_P(OperatorWindow, TheFileChosenBecomesTheLogFile) {
    start();
    driver->answerFileDialogs(folder / "chosen.log");
    operatorClicks("btnBrowse");
    EXPECT_EQ(textBox("txtLogFile").text(), folder / "chosen.log");
    EXPECT_EQ(settings.text(infra::indexerKey, "LogFilePath"), folder / "chosen.log");
    window->SetStatus("after");
    EXPECT_FALSE(folder.read("chosen.log").empty());
}

TEST_P(OperatorWindow, CancellingTheFileDialogChangesNothing) {
    startQuietly();
    operatorClicks("btnBrowse");
    EXPECT_EQ(textBox("txtLogFile").text(), folder / "service.log");
    EXPECT_TRUE(settings.writes.empty());
}

TEST_P(OperatorWindow, UnderASupervisorAMinimisedWindowIsHiddenAndARestoredOneShown) {
    settings.put(infra::masterKey, "", "present");
    start();
    operatorSets(WindowState::maximised);
    EXPECT_TRUE(visible());
    operatorSets(WindowState::minimised);
    EXPECT_FALSE(visible());
    operatorSets(WindowState::normal);
    EXPECT_TRUE(visible());
}

TEST_P(OperatorWindow, WithoutASupervisorResizingDoesNothing) {
    start();
    operatorSets(WindowState::minimised);
    EXPECT_TRUE(visible());
}

TEST_P(OperatorWindow, ErrorsInsideSetStatusAreSwallowed) {
    create();
    settings.conversionFails = true;
    EXPECT_NO_THROW(window->SetStatus("line"));
}

TEST_P(OperatorWindow, TheControlsStandWhereOperatorsKnowThem) {
    struct Placed {
        const char* name;
        platform::Bounds bounds;
        int tab;
    };
    create();
    for (const auto& [name, expected, tab] : {Placed{"lblPoll", {120, 240, 1695, 255}, 5},
                                              {"txtPollInterval", {1920, 210, 735, 285}, 6},
                                              {"lblSeconds", {2760, 240, 855, 255}, 7},
                                              {"lstStatus", {120, 720, 5535, 1230}, 1},
                                              {"chkLogit", {120, 2160, 855, 255}, 3},
                                              {"txtLogFile", {1080, 2160, 3495, 285}, 4},
                                              {"btnBrowse", {4800, 2115, 855, 375}, 8},
                                              {"cmdStartStop", {360, 2760, 1095, 375}, 0},
                                              {"cmdExit", {4320, 2760, 1095, 375}, 2}}) {
        const auto [shown, shownTab, caption] = driver->see(name);
        EXPECT_EQ(shownTab, tab) << name;
        EXPECT_EQ(shown.left, expected.left) << name;
        EXPECT_EQ(shown.top, expected.top) << name;
        EXPECT_EQ(shown.width, expected.width) << name;
        EXPECT_EQ(shown.height, expected.height) << name;
    }
}

TEST_P(OperatorWindow, TheControlsBeginWithTheirCaptions) {
    create();
    EXPECT_EQ(driver->title(), "orlentbar indexer");
    EXPECT_EQ(driver->see("lblPoll").caption, "Poll Index Queue every");
    EXPECT_EQ(driver->see("lblSeconds").caption, "seconds");
    EXPECT_EQ(driver->see("btnBrowse").caption, "Browse...");
    EXPECT_EQ(driver->see("cmdExit").caption, "E&xit");
    EXPECT_EQ(driver->see("cmdStartStop").caption, "S&top");
    EXPECT_EQ(driver->see("chkLogit").caption, "Log it");
    EXPECT_EQ(textBox("txtPollInterval").text(), "1");
    EXPECT_EQ(textBox("txtLogFile").text(), "");
    EXPECT_EQ(timer().interval(), 1000);
}

}  // namespace
