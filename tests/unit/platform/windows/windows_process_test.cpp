#include "platform/windows/windows_process.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <windows.h>

namespace {

using platform::ExitStatus;
using platform::PriorityClass;
using platform::windows::WindowsProcess;

TEST(WindowsProcess, SetsThePriorityOfTheProcessItself) {
    WindowsProcess process;
    for (const PriorityClass priority : {PriorityClass::idle, PriorityClass::high, PriorityClass::normal}) {
        EXPECT_TRUE(process.setPriorityClass(process.currentProcess(), priority));
        EXPECT_EQ(::GetPriorityClass(::GetCurrentProcess()), static_cast<DWORD>(priority));
    }
}

TEST(WindowsProcess, AnswersFalseForAProcessThatIsNone) {
    EXPECT_FALSE(WindowsProcess().setPriorityClass(platform::ProcessHandle{0x7FFF0}, PriorityClass::idle));
}

TEST(WindowsProcess, KnowsTheFolderOfTheProgram) {
    const std::string folder = WindowsProcess().programDirectory();
    EXPECT_TRUE(std::filesystem::exists(folder + "\\platform_windows_test.exe")) << folder;
    EXPECT_FALSE(folder.ends_with('\\'));
}

/// Exits otherwise than it should when it is cleaned up.
struct FailsWhenDestroyed {
    ~FailsWhenDestroyed() { ::ExitProcess(99); }
};

TEST(WindowsProcessDeathTest, EndsWithTheStatusAndWithoutCleanUp) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const ExitStatus status : {ExitStatus::stopped, ExitStatus::failed, ExitStatus::setupFailed}) {
        EXPECT_EXIT(
            {
                const FailsWhenDestroyed object;
                WindowsProcess().endProcess(status);
            },
            ::testing::ExitedWithCode(static_cast<int>(status)), "");
    }
}

}  // namespace
