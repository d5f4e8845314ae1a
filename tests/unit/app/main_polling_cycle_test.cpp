#include "unit/app/window_fixture.h"

namespace {

using app::CycleOutcome;
using fakes::ProcessEnded;
using platform::ExitStatus;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using PollingCycle = Window;

INSTANTIATE_TEST_SUITE_P(Toolkits, PollingCycle, testing::Values(headlessToolkit, screenToolkit),
                         toolkitName);

TEST_P(PollingCycle, AnEmptyQueueIsLookedAtAndTheTimerGoesOn) {
    startQuietly();
    tick();
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.Timer Fire", "Crash Detect: Main.SetStatus",
                                   "Crash Detect: Main.Timer - Looking for queue entry",
                                   "Crash Detect: Main.Timer Action Complete"));
    EXPECT_THAT(engine.record.statements,
                ElementsAre("DELETE * FROM file_index_queue WHERE flag_dirty = true",
                            "0 1 -1: SELECT id FROM file_index_queue WHERE flag_dirty = false", "close"));
    EXPECT_EQ(status().front(), "Checking file index queue...");
    EXPECT_TRUE(timer().enabled());
    EXPECT_THAT(outcomes, ElementsAre(CycleOutcome::nothingToDo));
}

TEST_P(PollingCycle, AnEntryIsClaimedBeforeItIsProcessed) {
    library.queue(7);
    startQuietly();
    job = [this](std::int32_t) {
        EXPECT_THAT(library.entries(), ElementsAre("7 claimed"));
        EXPECT_FALSE(timer().enabled());
        EXPECT_THAT(log().back(), "Crash Detect: Main.Timer - Queue entry found");
        return true;
    };
    tick();
    EXPECT_THAT(jobs, ElementsAre(7));
    EXPECT_THAT(engine.record.statements,
                ElementsAre("DELETE * FROM file_index_queue WHERE flag_dirty = true",
                            "0 1 -1: SELECT id FROM file_index_queue WHERE flag_dirty = false",
                            "UPDATE file_index_queue SET flag_dirty = true WHERE id = 7", "close"));
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.Timer Fire", "Crash Detect: Main.SetStatus",
                                   "Crash Detect: Main.Timer - Looking for queue entry",
                                   "Crash Detect: Main.Timer - Queue entry found",
                                   "Crash Detect: Main.Timer Action Complete"));
    EXPECT_THAT(outcomes, ElementsAre(CycleOutcome::entryClaimed));
}

TEST_P(PollingCycle, OnlyOneEntryIsTakenPerCycle) {
    library.queue(1);
    library.queue(2);
    start();
    tick();
    EXPECT_EQ(jobs.size(), 1U);
    tick();
    EXPECT_THAT(jobs, ElementsAre(1, 2));
}

TEST_P(PollingCycle, LeftoversAreDroppedOnEveryTickUntilAnEntryIsClaimed) {
    library.queue(1, true);
    start();
    tick();
    EXPECT_TRUE(library.entries().empty());
    library.queue(2, true);
    library.queue(3);
    tick();
    EXPECT_THAT(jobs, ElementsAre(3));
    library.queue(4, true);
    tick();
    EXPECT_THAT(library.entries(), ElementsAre("3 claimed", "4 claimed"));
}

TEST_P(PollingCycle, AnIdOfZeroClaimsNothing) {
    library.run("INSERT INTO file_index_queue (id, flag_dirty) VALUES (0, 0)");
    startQuietly();
    tick();
    EXPECT_TRUE(jobs.empty());
    EXPECT_THAT(log(), Contains("Crash Detect: Main.Timer - Queue entry found"));
    EXPECT_THAT(library.entries(), ElementsAre("0"));
    EXPECT_THAT(outcomes, ElementsAre(CycleOutcome::nothingToDo));
}

TEST_P(PollingCycle, ANullIdClaimsNothing) {
    library.run(
        "DROP TABLE file_index_queue; CREATE TABLE file_index_queue (id LONG, flag_dirty BOOLEAN);"
        "INSERT INTO file_index_queue VALUES (NULL, 0)");
    startQuietly();
    tick();
    EXPECT_TRUE(jobs.empty());
    EXPECT_THAT(log(), Not(Contains("Crash Detect: Main.Timer - Queue entry found")));
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer Action Complete");
}

TEST_P(PollingCycle, AFailedJobLeavesAStatusAndTheCycleGoesOn) {
    library.queue(1);
    startQuietly();
    job = [](std::int32_t) { return false; };
    tick();
    EXPECT_EQ(status().front(), "ERROR while updating database.");
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer Action Complete");
    EXPECT_TRUE(timer().enabled());
    EXPECT_THAT(outcomes, ElementsAre(CycleOutcome::entryClaimed));
}

TEST_P(PollingCycle, AnErrorOfTheJobIsLoggedAndTheLibraryOpenedAnew) {
    library.queue(1);
    library.queue(2);
    startQuietly();
    job = [](std::int32_t id) -> bool {
        if (id == 1) {
            throw base::RuntimeError(13, "Type mismatch");
        }
        return true;
    };
    tick();
    EXPECT_THAT(log(), ElementsAre("Crash Detect: Main.Timer Fire", "Crash Detect: Main.SetStatus",
                                   "Crash Detect: Main.Timer - Looking for queue entry",
                                   "Crash Detect: Main.Timer - Queue entry found",
                                   "Error: Main.Timer - Failed to read queue: Type mismatch",
                                   "Crash Detect: Main.Timer Action Complete"));
    EXPECT_EQ(engine.record.connectionsClosed, 1);
    EXPECT_EQ(engine.record.connectionsOpened, 2);
    EXPECT_THAT(outcomes, ElementsAre(CycleOutcome::failed));
    tick();
    EXPECT_THAT(jobs, ElementsAre(1, 2));
    EXPECT_THAT(library.entries(), ElementsAre("1 claimed", "2 claimed"));
}

TEST_P(PollingCycle, AFailingStatementIsLoggedAndTheTimerGoesOn) {
    startQuietly();
    library.run("ALTER TABLE file_index_queue RENAME COLUMN flag_dirty TO gone");
    tick();
    EXPECT_THAT(log().front(), StartsWith("Error: Main.Timer - Failed to read queue: "));
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer Action Complete");
    EXPECT_TRUE(timer().enabled());
    library.run("ALTER TABLE file_index_queue RENAME COLUMN gone TO flag_dirty");
    library.queue(1);
    tick();
    EXPECT_THAT(jobs, ElementsAre(1));
}

TEST_P(PollingCycle, AnErrorWhileTheLibraryIsClosedEndsTheProgram) {
    library.queue(1);
    start();
    job = [this](std::int32_t) -> bool {
        engine.record.closeFails = true;
        throw base::RuntimeError(13, "Type mismatch");
    };
    EXPECT_THROW(tick(), base::RuntimeError);
    EXPECT_FALSE(timer().enabled());
}

TEST_P(PollingCycle, ALibraryThatCannotBeOpenedAgainEndsTheProcess) {
    library.queue(1);
    start();
    job = [this](std::int32_t) -> bool {
        settings.put(infra::serviceKey, "DataBasePath", folder / "nowhere.db");
        throw base::RuntimeError(13, "Type mismatch");
    };
    EXPECT_THROW(tick(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::failed);
    EXPECT_EQ(boxes.size(), 1U);
}

TEST_P(PollingCycle, WithALimitOfOneTheProcessEndsAfterTheSecondEntry) {
    settings.put(infra::indexerKey, "MaxDocsBeforeRestart", 1);
    library.queue(1);
    library.queue(2);
    startQuietly();
    tick();
    EXPECT_EQ(process.ended, std::nullopt);
    EXPECT_THROW(tick(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::stopped);
    EXPECT_THAT(jobs, ElementsAre(1, 2));
    EXPECT_EQ(log().back(), "Interest: Main.Timer - Restarting to synchronise Caches");
    EXPECT_EQ(engine.record.connectionsClosed, 0);
}

TEST_P(PollingCycle, WithoutALimitTheProcessNeverRestarts) {
    settings.put(infra::indexerKey, "MaxDocsBeforeRestart", 0);
    start();
    for (int id = 1; id <= 3; ++id) {
        library.queue(id);
        tick();
    }
    EXPECT_EQ(jobs.size(), 3U);
    EXPECT_EQ(process.ended, std::nullopt);
}

TEST_P(PollingCycle, ByDefaultTheProcessEndsAfterTheHundredAndFirstEntry) {
    for (int id = 1; id <= 102; ++id) {
        library.queue(id);
    }
    start();
    for (int i = 0; i < 100; ++i) {
        tick();
    }
    EXPECT_EQ(process.ended, std::nullopt);
    EXPECT_THROW(tick(), ProcessEnded);
    EXPECT_EQ(jobs.size(), 101U);
}

TEST_P(PollingCycle, TheLimitIsReadOnceAtStartUp) {
    library.queue(1);
    library.queue(2);
    start();
    settings.put(infra::indexerKey, "MaxDocsBeforeRestart", 1);
    tick();
    tick();
    EXPECT_EQ(process.ended, std::nullopt);
}

TEST_P(PollingCycle, FractionsOfASecondAreHonouredAtTheEndOfTheCycle) {
    start();
    operatorTypes("txtPollInterval", "2.5");
    EXPECT_EQ(timer().interval(), 1000);
    tick();
    EXPECT_EQ(timer().interval(), 2500);
}

TEST_P(PollingCycle, MillisecondsAreRoundedHalvesToEven) {
    start();
    operatorTypes("txtPollInterval", "0.0025");
    tick();
    EXPECT_EQ(timer().interval(), 2);
    operatorTypes("txtPollInterval", "0.0035");
    tick();
    EXPECT_EQ(timer().interval(), 4);
}

TEST_P(PollingCycle, APollIntervalThatIsNoNumberIsMetAgainUntilItIsMended) {
    library.queue(1);
    startQuietly();
    job = [this](std::int32_t) {
        EXPECT_THROW(textBox("txtPollInterval").setText("soon"), base::RuntimeError);
        return true;
    };
    clock.onPause = [this] {
        if (clock.pauses == 2) {
            textBox("txtPollInterval").setText("3");
        }
    };
    tick();
    EXPECT_EQ(clock.pauses, 2);
    EXPECT_EQ(engine.record.connectionsOpened, 3);
    const Lines lines = log();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                                return line.starts_with("Error: Main.Timer - Failed to read queue: Type mis");
                            }),
              2);
    EXPECT_EQ(timer().interval(), 3000);
    EXPECT_TRUE(timer().enabled());
}

TEST_P(PollingCycle, TheRestartCheckComesFirstAfterAnErrorToo) {
    settings.put(infra::indexerKey, "MaxDocsBeforeRestart", 1);
    library.queue(1);
    library.queue(2);
    startQuietly();
    tick();
    job = [](std::int32_t) -> bool { throw base::RuntimeError(13, "Type mismatch"); };
    EXPECT_THROW(tick(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::stopped);
    EXPECT_EQ(engine.record.connectionsOpened, 2);
}

TEST_P(PollingCycle, TheEndOfTheProcessInsideTheJobIsNotTrapped) {
    library.queue(1);
    startQuietly();
    job = [this](std::int32_t) -> bool { process.endProcess(ExitStatus::setupFailed); };
    EXPECT_THROW(tick(), ProcessEnded);
    EXPECT_EQ(process.ended, ExitStatus::setupFailed);
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer - Queue entry found");
}

TEST_P(PollingCycle, AStopInTheMiddleOfAJobIsUndoneByTheCycle) {
    library.queue(1);
    start();
    job = [this](std::int32_t) {
        operatorClicks("cmdStartStop");
        EXPECT_FALSE(timer().enabled());
        return true;
    };
    tick();
    EXPECT_TRUE(timer().enabled());
    EXPECT_EQ(startStop().caption(), "S&tart");
}

TEST_P(PollingCycle, AStopBetweenCyclesHoldsUntilTheStart) {
    start();
    library.queue(1);
    operatorClicks("cmdStartStop");
    driver->letTimePass(std::chrono::milliseconds(5000));
    EXPECT_TRUE(jobs.empty());
    operatorClicks("cmdStartStop");
    driver->letTimePass(std::chrono::milliseconds(1000));
    EXPECT_THAT(jobs, ElementsAre(1));
}

TEST_P(PollingCycle, CyclesNeverOverlapWhenTheOperatorStopsAndStartsDuringAJob) {
    library.queue(1);
    library.queue(2);
    startQuietly();
    job = [this](std::int32_t) {
        operatorClicks("cmdStartStop");
        operatorClicks("cmdStartStop");
        waiter.moment += std::chrono::milliseconds(5000);
        toolkit.processEvents();
        return true;
    };
    tick();
    EXPECT_THAT(jobs, ElementsAre(1));
    EXPECT_EQ(outcomes.size(), 1U);
}

TEST_P(PollingCycle, ANewIntervalTypedDuringAJobAppliesFromItsEnd) {
    library.queue(1);
    start();
    job = [this](std::int32_t) {
        operatorTypes("txtPollInterval", "4");
        return true;
    };
    tick();
    EXPECT_EQ(timer().interval(), 4000);
}

TEST_P(PollingCycle, ClosingDuringAJobFinishesTheDocumentAndThenShutsDown) {
    library.queue(1);
    library.queue(2);
    startQuietly();
    job = [this](std::int32_t) {
        operatorClicks("cmdExit");
        EXPECT_FALSE(visible());
        EXPECT_EQ(engine.record.connectionsClosed, 0);
        return true;
    };
    tick();
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer Action Complete");
    EXPECT_FALSE(timer().enabled());
    EXPECT_EQ(engine.record.connectionsClosed, 1);
    toolkit.run();
    EXPECT_THAT(jobs, ElementsAre(1));
}

TEST_P(PollingCycle, ASignalDuringAJobFinishesTheDocumentAndThenShutsDown) {
    library.queue(1);
    startQuietly();
    job = [this](std::int32_t) {
        waiter.close = true;
        toolkit.processEvents();
        return true;
    };
    tick();
    EXPECT_THAT(log(), Contains("Crash Detect: Main.Timer Action Complete"));
    EXPECT_EQ(engine.record.connectionsClosed, 1);
}

TEST_P(PollingCycle, ATextThatIsNoNumberTypedDuringAJobEndsTheProgramPastItsTraps) {
    library.queue(1);
    startQuietly();
    job = [this](std::int32_t) {
        try {
            operatorTypes("txtPollInterval", "");
        } catch (const std::exception&) {
            ADD_FAILURE() << "the job's trap caught the operator's error";
        }
        return true;
    };
    EXPECT_THROW(tick(), base::RuntimeError);
    EXPECT_EQ(log().back(), "Crash Detect: Main.Timer - Queue entry found");
}

}  // namespace
