#include "platform/windows/windows_drives.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

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

}  // namespace
