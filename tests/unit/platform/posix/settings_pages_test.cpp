// The pages of a settings file, and the log into which they are written first.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "fakes/temporary_folder.h"
#include "platform/posix/settings_file.h"

namespace {

using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::ValueType;
using platform::posix::SettingsFile;
using platform::posix::SettingsValue;

constexpr const char* key = R"(software\maker\service)";
constexpr std::size_t smallPages = 1024;
constexpr std::size_t earlierPages = 4096;  // of files that were made before the pages were small

bool save(SettingsFile& file, const std::string& text) {
    KeyHandle handle = KeyHandle::none;
    return file.createKey(RootKey::currentUser, key, handle) == SettingsStatus::success &&
           file.setValue(handle, "name", ValueType::text, reinterpret_cast<const std::uint8_t*>(text.data()),
                         static_cast<std::uint32_t>(text.size())) == SettingsStatus::success;
}

std::string load(SettingsFile& file) {
    std::vector<SettingsValue> values;
    const SettingsStatus status = file.values(key, values);
    return status == SettingsStatus::success && values.size() == 1
               ? values.front().data
               : "(" + std::to_string(static_cast<int>(status)) + ")";
}

/// By the file's header. It is to be asked last: closing the file drops the locks of this process on it.
std::size_t pageSize(const fakes::TemporaryFolder& folder) {
    const std::string bytes = folder.read("settings.db");
    constexpr std::size_t place = 16;
    return bytes.size() < place + 2 ? 0
                                    : static_cast<unsigned char>(bytes[place]) * std::size_t{256} +
                                          static_cast<unsigned char>(bytes[place + 1]);
}

/// Gives a settings file that nobody has open pages of another size.
void repage(const std::string& path, std::size_t size) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open(path.c_str(), &opened);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, sqlite3_close);
    ASSERT_EQ(code, SQLITE_OK);
    const std::string statements =
        "PRAGMA journal_mode = DELETE; PRAGMA page_size = " + std::to_string(size) + "; VACUUM";
    ASSERT_EQ(sqlite3_exec(opened, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(opened);
}

TEST(SettingsPages, AreSmallInANewFile) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    ASSERT_TRUE(save(file, "text"));
    EXPECT_EQ(pageSize(folder), smallPages);
}

TEST(SettingsPages, AreSmallInAnEmptyFileThatIsFilled) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder.write("settings.db", ""));
    EXPECT_EQ(load(file), "(2)");
    ASSERT_TRUE(save(file, "text"));
    EXPECT_EQ(pageSize(folder), smallPages);
}

TEST(SettingsPages, AreSmallInAFileThatSeveralProcessesMakeAtTheSameTime) {
    const fakes::TemporaryFolder folder;
    std::vector<pid_t> children(4);
    for (pid_t& child : children) {
        child = fork();
        if (child == 0) {
            SettingsFile file(folder / "settings.db");
            _exit(save(file, "text") ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file), "text");
    EXPECT_EQ(pageSize(folder), smallPages);
}

TEST(SettingsPages, OfAFileThatHasLargerOnesStayAsTheyAre) {
    const fakes::TemporaryFolder folder;
    {
        SettingsFile file(folder / "settings.db");
        ASSERT_TRUE(save(file, "before"));
    }
    repage(folder / "settings.db", earlierPages);
    {
        SettingsFile file(folder / "settings.db");
        EXPECT_EQ(load(file), "before");
        ASSERT_TRUE(save(file, "after"));
        EXPECT_EQ(load(file), "after");
    }
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file), "after");
    EXPECT_EQ(pageSize(folder), earlierPages);
}

TEST(SettingsPages, HoldAValueOfManyOfThem) {
    const fakes::TemporaryFolder folder;
    const std::string text(100 * smallPages + 1, 't');
    {
        SettingsFile file(folder / "settings.db");
        ASSERT_TRUE(save(file, text));
        EXPECT_TRUE(load(file) == text);
    }
    SettingsFile file(folder / "settings.db");
    EXPECT_TRUE(load(file) == text);
}

class SettingsPagesOfSize : public testing::TestWithParam<std::size_t> {};

TEST_P(SettingsPagesOfSize, AreMissedAtTheEndOfTheFileWhereverItWasCut) {
    const fakes::TemporaryFolder folder;
    {
        SettingsFile file(folder / "settings.db");
        ASSERT_TRUE(save(file, "text"));
    }
    repage(folder / "settings.db", GetParam());
    const std::string whole = folder.read("settings.db");
    ASSERT_GT(whole.size(), 2 * GetParam());
    for (std::size_t size = GetParam() / 2; size < whole.size(); size += GetParam() / 2) {
        SettingsFile file(folder.write("settings.db", whole.substr(0, size)));
        EXPECT_EQ(load(file), "(1009)") << size;
        EXPECT_FALSE(save(file, "other")) << size;
        EXPECT_TRUE(folder.read("settings.db") == whole.substr(0, size)) << size;
    }
}

TEST_P(SettingsPagesOfSize, AreTakenOutOfTheLogWhenItHasFourMebibytes) {
    constexpr std::uintmax_t most = 5U * 1024 * 1024;
    const fakes::TemporaryFolder folder;
    {
        SettingsFile file(folder / "settings.db");
        ASSERT_TRUE(save(file, "text"));
    }
    repage(folder / "settings.db", GetParam());
    SettingsFile file(folder / "settings.db");
    const std::string log = folder / "settings.db-wal";
    std::uintmax_t written = 0;
    std::uintmax_t longest = 0;
    for (int turn = 0; written < 2 * most; ++turn) {
        const std::string text(std::size_t{100} * 1024, static_cast<char>('a' + turn % 26));
        ASSERT_TRUE(save(file, text));
        written += text.size();
        longest = std::max(longest, std::filesystem::file_size(log));
    }
    EXPECT_LT(longest, most);
    EXPECT_GT(longest, most / 2);
    EXPECT_EQ(load(file).size(), std::size_t{100} * 1024);
}

INSTANTIATE_TEST_SUITE_P(OfAllFiles, SettingsPagesOfSize, testing::Values(smallPages, earlierPages));

}  // namespace
