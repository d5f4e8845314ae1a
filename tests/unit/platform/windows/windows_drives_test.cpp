#include "platform/windows/windows_drives.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "base/text.h"
#include "fakes/local_files.h"
#include "fakes/manual_clock.h"
#include "fakes/memory_settings_store.h"
#include "infra/tysSupport.h"

namespace {

using platform::DriveStatus;
using platform::windows::WindowsDrives;

/// What the service hands over: a buffer of blanks.
DriveStatus ask(const std::string& localName, std::string& share, std::uint32_t& size) {
    share.assign(size, ' ');
    return WindowsDrives().connection(localName, share.data(), size);
}

TEST(WindowsDrives, ConnectNoLocalDisk) {
    std::string share;
    std::uint32_t size = 260;
    EXPECT_EQ(ask("C:", share, size), DriveStatus::notConnected);
    EXPECT_EQ(size, 260U);
}

TEST(WindowsDrives, ConnectNoLetterWithoutADrive) {
    std::string share;
    std::uint32_t size = 260;
    EXPECT_NE(ask("Q:", share, size), DriveStatus::success);
    EXPECT_NE(ask("?:", share, size), DriveStatus::success);
}

/// A network drive, where the machine has one for the tests: the variable tells its letter and its share.
class NetworkDrive : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* told = std::getenv("TYINDEXER_TEST_SHARE");
        if (told == nullptr) {
            GTEST_SKIP() << "set TYINDEXER_TEST_SHARE to a drive and its share, such as N: \\\\server\\share";
        }
        const std::string text = told;
        const std::size_t blank = text.find(' ');
        letter = text.substr(0, blank);
        share = text.substr(blank + 1);
    }

    std::string letter;
    std::string share;
    WindowsDrives drives;
    fakes::MemorySettingsStore settings;
    fakes::LocalFiles files;
    fakes::ManualClock clock;
    infra::tysRegistry registry{settings, files, nullptr};
    infra::tysSupport support{registry, files, clock, drives};
};

TEST_F(NetworkDrive, IsConnectedToItsShare) {
    std::string found;
    std::uint32_t size = 260;
    EXPECT_EQ(ask(letter, found, size), DriveStatus::success);
    EXPECT_EQ(found.substr(0, found.find('\0')), share);
    EXPECT_EQ(size, 260U);
}

TEST_F(NetworkDrive, TellsTheRoomThatItsShareNeeds) {
    std::string found;
    std::uint32_t size = 5;
    EXPECT_EQ(ask(letter, found, size), DriveStatus::moreData);
    EXPECT_EQ(found, std::string(5, ' '));
    EXPECT_EQ(size, share.size() + 1);
    EXPECT_EQ(ask(letter, found, size), DriveStatus::success);
    EXPECT_EQ(found, share + std::string(1, '\0'));
}

TEST_F(NetworkDrive, LetsPathsBeSpelledEitherWay) {
    EXPECT_EQ(support.getNetworkConnection(letter), share);
    EXPECT_EQ(support.getNetworkConnection(base::toLower(letter) + "\\document.txt"), share);
    EXPECT_EQ(support.getMappedDrivePath(share + "\\a/b"), letter + "\\a\\b");
    EXPECT_EQ(support.getMappedDrivePath(base::toUpper(share) + "\\a"), letter + "\\a");
    EXPECT_EQ(support.getMappedDrivePath(share), "");
    EXPECT_EQ(support.getNetworkConnection("C:\\temp"), "");
}

}  // namespace
