#include "platform/posix/posix_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

#include <sys/stat.h>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"
#include "platform/posix/no_drives.h"
#include "unit/platform/posix/environment.h"

namespace {

using platform::posix::PosixFiles;

std::string temporaryFolder(std::uint32_t room) {
    std::string buffer(room, '?');
    const std::uint32_t length = PosixFiles().temporaryFolder(room, buffer.data());
    return buffer.substr(0, length);
}

int errorOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const base::RuntimeError& error) {
        EXPECT_FALSE(error.description().empty());
        return error.number();
    }
    return 0;
}

TEST(PosixFiles, DeletesAReadOnlyFile) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder.write("report.tmp", "text");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    PosixFiles files;
    files.prepare();
    files.deleteFile(path);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(PosixFiles, RaisesForAFileThatIsMissing) {
    const fakes::TemporaryFolder folder;
    PosixFiles files;
    EXPECT_EQ(errorOf([&] { files.deleteFile(folder / "missing"); }), ENOENT);
    EXPECT_EQ(errorOf([&] { files.deleteFile(""); }), ENOENT);
}

TEST(PosixFiles, NamesTheFileThatCannotBeDeleted) {
    const fakes::TemporaryFolder folder;
    try {
        PosixFiles().deleteFile(folder / "missing.tmp");
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_NE(error.description().find("missing.tmp"), std::string::npos) << error.description();
    }
}

TEST(PosixFiles, RefusesToDeleteAFolder) {
    const fakes::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "inner");
    PosixFiles files;
    EXPECT_NE(errorOf([&] { files.deleteFile(folder / "inner"); }), 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "inner"));
}

TEST(PosixFiles, TellsTheTemporaryFolderWithASeparatorAtItsEnd) {
    {
        const Environment variable("TMPDIR", "/var/scratch");
        EXPECT_EQ(temporaryFolder(255), "/var/scratch/");
    }
    {
        const Environment variable("TMPDIR", "/var/scratch/");
        EXPECT_EQ(temporaryFolder(255), "/var/scratch/");
    }
    const Environment variable("TMPDIR", nullptr);
    EXPECT_EQ(temporaryFolder(255), "/tmp/");
}

TEST(PosixFiles, AsksForMoreRoomForALongTemporaryFolder) {
    const Environment variable("TMPDIR", "/four");
    std::array<char, 7> room{'?', '?', '?', '?', '?', '?', '?'};
    EXPECT_EQ(PosixFiles().temporaryFolder(6, room.data()), 7U);
    EXPECT_EQ(room[0], '?');
    EXPECT_EQ(PosixFiles().temporaryFolder(7, room.data()), 6U);
    EXPECT_STREQ(room.data(), "/four/");
}

TEST(PosixFiles, MakesAFileAndAppendsToItAsTheBytesAre) {
    const fakes::TemporaryFolder folder;
    PosixFiles files;
    files.append(folder / "service.log", "one\r\n");
    files.append(folder / "service.log", std::string("t\0o\r\n", 5));
    files.append(folder / "service.log", "");
    EXPECT_EQ(folder.read("service.log"), std::string("one\r\nt\0o\r\n", 10));
}

TEST(PosixFiles, RaisesWhereNothingCanBeAppended) {
    const fakes::TemporaryFolder folder;
    PosixFiles files;
    EXPECT_EQ(errorOf([&] { files.append(folder.path(), "line"); }), EISDIR);
    EXPECT_EQ(errorOf([&] { files.append(folder / "missing/service.log", "line"); }), ENOENT);
    EXPECT_EQ(errorOf([&] { files.append("/dev/full", "line"); }), ENOSPC);
}

TEST(PosixFiles, DoesNotWaitForAReaderOfAPipe) {
    const fakes::TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf([&] { PosixFiles().append(folder / "pipe", "line"); }), ENXIO);
}

TEST(NoDrives, ConnectsNoDriveLetter) {
    platform::posix::NoDrives drives;
    std::array<char, 10> share{};
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        std::uint32_t size = share.size();
        EXPECT_EQ(drives.connection(std::string(1, letter) + ":", share.data(), size),
                  platform::DriveStatus::notConnected);
    }
}

}  // namespace
