#include "platform/windows/windows_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include <windows.h>

#include "base/runtime_error.h"
#include "fakes/scripted_automation.h"
#include "fakes/temporary_folder.h"
#include "platform/windows/com_automation.h"

namespace {

using platform::windows::WindowsFiles;

bool raises(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const base::RuntimeError& error) {
        EXPECT_FALSE(error.description().empty());
        return true;
    }
    return false;
}

class Files : public ::testing::Test {
  protected:
    fakes::TemporaryFolder folder;
    platform::windows::ComApartment apartment;
    platform::windows::ComAutomationFactory automation;
    WindowsFiles files{automation};
};

TEST_F(Files, AreDeletedReadOnlyOnesIncluded) {
    const std::string path = folder.write("report.tmp", "text");
    ASSERT_NE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
    files.prepare();
    files.deleteFile(path);
    EXPECT_EQ(::GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Files, AreDeletedWithoutBeingReadiedFirst) {
    const std::string path = folder.write("report.tmp", "text");
    files.deleteFile(path);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Files, OfAnyNameAreDeleted) {
    const std::filesystem::path path = std::filesystem::path(folder.path()) / L"\u65E5\u672C.tmp";
    std::ofstream(path) << "text";
    ASSERT_TRUE(std::filesystem::exists(path));
    files.deleteFile(folder.path() + "\\\xE6\x97\xA5\xE6\x9C\xAC.tmp");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Files, ThatAreMissingOrFoldersOrInUseRaise) {
    EXPECT_TRUE(raises([&] { files.deleteFile(folder / "missing"); }));
    std::filesystem::create_directory(folder / "inner");
    EXPECT_TRUE(raises([&] { files.deleteFile(folder / "inner"); }));
    EXPECT_TRUE(std::filesystem::exists(folder / "inner"));
    const std::string path = folder.write("held.tmp", "text");
    const HANDLE held = ::CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(raises([&] { files.deleteFile(path); }));
    ::CloseHandle(held);
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(Files, AreNotDeletedByAPattern) {
    folder.write("one.tmp", "text");
    folder.write("two.tmp", "text");
    const std::string extended = R"(\\?\)" + folder.path();
    for (const std::string& path :
         {folder / "*.tmp", folder / "t?o.tmp", folder.path() + "/*", extended + "\\*.tmp"}) {
        try {
            files.deleteFile(path);
            ADD_FAILURE() << "nothing was raised for " << path;
        } catch (const base::RuntimeError& error) {
            EXPECT_EQ(error.number(), ERROR_INVALID_NAME) << path;
            EXPECT_NE(error.description().find(path), std::string::npos) << error.description();
        }
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "one.tmp"));
    EXPECT_TRUE(std::filesystem::exists(folder / "two.tmp"));
}

TEST_F(Files, AreAppendedToAsTheBytesAre) {
    files.append(folder / "service.log", "one\r\n");
    files.append(folder / "service.log", std::string("t\0o\r\n", 5));
    files.append(folder / "service.log", "");
    EXPECT_EQ(folder.read("service.log"), std::string("one\r\nt\0o\r\n", 10));
}

TEST_F(Files, AreAppendedToWhileAnotherProgramReadsThem) {
    const std::string path = folder.write("service.log", "one\r\n");
    const HANDLE reader = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, 0, nullptr);
    files.append(path, "two\r\n");
    ::CloseHandle(reader);
    EXPECT_EQ(folder.read("service.log"), "one\r\ntwo\r\n");
}

TEST_F(Files, ThatCannotBeAppendedToRaiseWithTheirPath) {
    EXPECT_TRUE(raises([&] { files.append(folder.path(), "line"); }));
    try {
        files.append(folder / "missing\\service.log", "line");
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), ERROR_PATH_NOT_FOUND);
        EXPECT_NE(error.description().find("service.log"), std::string::npos) << error.description();
    }
}

TEST_F(Files, TellTheTemporaryFolderWithASeparatorAtItsEnd) {
    std::string buffer(255, '?');
    const std::uint32_t length = files.temporaryFolder(255, buffer.data());
    ASSERT_LT(length, 255U);
    EXPECT_EQ(buffer[length], '\0');
    EXPECT_EQ(buffer[length - 1], '\\');
    std::string small(length, '?');
    EXPECT_GT(files.temporaryFolder(length, small.data()), length);
    EXPECT_EQ(small, std::string(length, '?'));
    EXPECT_EQ(files.temporaryFolder(length + 1, buffer.data()), length);
}

TEST(FilesWithoutAFileSystemObject, CannotBeReadied) {
    fakes::ScriptedAutomation none;
    WindowsFiles files(none);
    EXPECT_TRUE(raises([&] { files.prepare(); }));
    EXPECT_TRUE(raises([&] { files.deleteFile("C:\\report.tmp"); }));
}

}  // namespace
