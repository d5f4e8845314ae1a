#include "infra/retryFailing.h"

#include <gtest/gtest.h>

#include <string>

#include "base/runtime_error.h"
#include "unit/infra/parts.h"

namespace {

class RetryFailing : public ::testing::Test {
  protected:
    void SetUp() override { services.support.setLogFilePath(parts.folder / "service.log"); }

    [[nodiscard]] std::string log() const { return parts.folder.read("service.log"); }

    Parts parts;
    infra::Services services{parts.system()};
};

TEST_F(RetryFailing, GivesTheResultOfAStatementThatSucceedsAtOnce) {
    EXPECT_EQ(infra::retryFailing(services, "label: ", [] { return 7; }), 7);
    EXPECT_EQ(parts.clock.pauses, 0);
    EXPECT_EQ(log(), "");
}

TEST_F(RetryFailing, LogsEveryFailureAndRunsAgainUntilTheStatementSucceeds) {
    int runs = 0;
    infra::retryFailing(services, "Error in commitWords: ", [&runs] {
        if (++runs < 4) {
            throw base::RuntimeError(5, "fault " + std::to_string(runs));
        }
    });
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(log(),
              "16 Nov 2026 01:47:03: Error: Error in commitWords: fault 1\r\n"
              "16 Nov 2026 01:47:03: Error: Error in commitWords: fault 2\r\n"
              "16 Nov 2026 01:47:03: Error: Error in commitWords: fault 3\r\n");
}

TEST_F(RetryFailing, WaitsFiftyMillisecondsBeforeEachFurtherRun) {
    int runs = 0;
    infra::retryFailing(services, "label: ", [&runs] {
        if (++runs < 1001) {
            throw base::RuntimeError(5, "fault");
        }
    });
    EXPECT_EQ(parts.clock.pauses, 1000);
    EXPECT_EQ(parts.clock.paused, std::chrono::seconds(50));
}

// A supervisor that watches the heartbeat shall notice a job that hangs here.
TEST_F(RetryFailing, LeavesTheHeartbeatAlone) {
    parts.settings.put(infra::indexerKey, "LastTouch", "before");
    int runs = 0;
    infra::retryFailing(services, "label: ", [&runs] {
        if (++runs < 3) {
            throw base::RuntimeError(5, "fault");
        }
    });
    EXPECT_EQ(parts.settings.text(infra::indexerKey, "LastTouch"), "before");
    EXPECT_TRUE(parts.settings.writes.empty());
}

TEST_F(RetryFailing, LetsTheEndOfTheProcessPass) {
    EXPECT_THROW(infra::retryFailing(
                     services, "label: ", [this] { parts.process.endProcess(platform::ExitStatus::failed); }),
                 fakes::ProcessEnded);
    EXPECT_EQ(parts.clock.pauses, 0);
}

}  // namespace
