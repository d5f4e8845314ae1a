#include "platform/posix/posix_process.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::ExitStatus;
using platform::PriorityClass;
using platform::posix::PosixProcess;

/// Runs a check in a child process, whose exit status is the answer.
template <class Check>
int inChild(Check check) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(check());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

TEST(PosixProcess, LowersThePriorityOfTheProcessItself) {
    const int niceValue = inChild([] {
        PosixProcess process;
        return process.setPriorityClass(process.currentProcess(), PriorityClass::idle)
                   ? getpriority(PRIO_PROCESS, 0)
                   : -1;
    });
    EXPECT_EQ(niceValue, 19);
}

TEST(PosixProcess, AnswersFalseWhereTheSystemRefusesAHigherPriority) {
    constexpr int noUser = 65534;
    const int answers = inChild([] {
        const rlimit none{0, 0};
        if (setrlimit(RLIMIT_NICE, &none) != 0 || (geteuid() == 0 && setuid(noUser) != 0)) {
            return 100;
        }
        PosixProcess process;
        const bool raised = process.setPriorityClass(process.currentProcess(), PriorityClass::high);
        return (raised ? 1 : 0) + (getpriority(PRIO_PROCESS, 0) < 0 ? 2 : 0);
    });
    EXPECT_EQ(answers, 0);
}

TEST(PosixProcess, EndsWithTheStatusAndWithoutCleanUp) {
    struct FailsWhenDestroyed {
        ~FailsWhenDestroyed() { _exit(99); }
    };
    for (const ExitStatus status : {ExitStatus::stopped, ExitStatus::failed, ExitStatus::setupFailed}) {
        EXPECT_EQ(inChild([status]() -> int {
                      const FailsWhenDestroyed object;
                      PosixProcess().endProcess(status);
                  }),
                  static_cast<int>(status));
    }
}

TEST(PosixProcess, RunsItsHookBeforeItEnds) {
    std::array<int, 2> tell{};
    ASSERT_EQ(pipe(tell.data()), 0);
    const int status = inChild([&tell]() -> int {
        PosixProcess([&tell] {
            static_cast<void>(write(tell[1], "x", 1) == 1);
        }).endProcess(ExitStatus::setupFailed);
    });
    close(tell[1]);
    char told = 0;
    EXPECT_EQ(read(tell[0], &told, 1), 1);
    EXPECT_EQ(status, static_cast<int>(ExitStatus::setupFailed));
    close(tell[0]);
}

TEST(PosixProcess, KnowsTheFolderOfTheProgram) {
    const std::string folder = PosixProcess().programDirectory();
    EXPECT_TRUE(std::filesystem::exists(folder + "/platform_posix_test")) << folder;
    EXPECT_FALSE(folder.ends_with('/'));
}

}  // namespace
