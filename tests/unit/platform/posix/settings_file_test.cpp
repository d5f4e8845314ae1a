#include "platform/posix/settings_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/posix/environment.h"

namespace {

using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::ValueType;
using platform::posix::SettingsFile;
using platform::posix::settingsPath;
using platform::posix::SettingsValue;

constexpr const char* key = R"(software\maker\service)";

SettingsStatus save(SettingsFile& file, const std::string& name, const std::string& text,
                    const std::string& path = key) {
    KeyHandle handle = KeyHandle::none;
    SettingsStatus status = file.createKey(RootKey::currentUser, path, handle);
    if (status == SettingsStatus::success) {
        status =
            file.setValue(handle, name, ValueType::text, reinterpret_cast<const std::uint8_t*>(text.data()),
                          static_cast<std::uint32_t>(text.size()));
        file.closeKey(handle);
    }
    return status;
}

/// The text under a name, or "(status)".
std::string load(SettingsFile& file, const std::string& name) {
    std::vector<SettingsValue> values;
    const SettingsStatus status = file.values(key, values);
    if (status != SettingsStatus::success) {
        return "(" + std::to_string(static_cast<int>(status)) + ")";
    }
    for (const SettingsValue& value : values) {
        if (value.name == name) {
            return value.data;
        }
    }
    return "(none)";
}

/// A settings file that another program wrote and closed.
void writeSettings(const std::string& path, const std::string& text) {
    SettingsFile file(path);
    ASSERT_EQ(save(file, "name", text), SettingsStatus::success);
}

/// File permissions do not bind root: while it lives, this process has no rights of its own.
class WithoutRights {
  public:
    WithoutRights() {
        constexpr uid_t nobody = 65534;
        given_ = geteuid() == 0 && seteuid(nobody) == 0;
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;
    ~WithoutRights() {
        if (given_) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }

    /// False where the system does not let root give up its rights.
    [[nodiscard]] static bool bind() { return geteuid() != 0; }

  private:
    bool given_ = false;
};

/// The operations of one round, as tysRegistry makes them; each must answer the status.
void expectEveryOperationAnswers(SettingsFile& file, SettingsStatus status) {
    KeyHandle handle = KeyHandle::none;
    EXPECT_EQ(file.openKey(RootKey::currentUser, key, handle), status);
    EXPECT_EQ(file.createKey(RootKey::currentUser, key, handle), status);
    EXPECT_EQ(file.deleteKey(key), status);
    std::vector<std::string> names;
    EXPECT_EQ(file.subKeys("", names), status);
    std::vector<SettingsValue> values;
    EXPECT_EQ(file.values(key, values), status);
}

TEST(SettingsPath, IsNamedByTheEnvironmentOrLiesInTheConfigurationFolder) {
    const Environment home("HOME", "/home/someone");
    {
        const Environment named("TYINDEXER_SETTINGS", "/srv/settings.db");
        EXPECT_EQ(settingsPath(), "/srv/settings.db");
    }
    const Environment unnamed("TYINDEXER_SETTINGS", nullptr);
    {
        const Environment configuration("XDG_CONFIG_HOME", "/home/someone/etc");
        EXPECT_EQ(settingsPath(), "/home/someone/etc/tessaly/settings.db");
    }
    const Environment configuration("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(settingsPath(), "/home/someone/.config/tessaly/settings.db");
}

TEST(SettingsFile, ThatIsMissingHoldsNothingAndIsNotMadeByReading) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "below/settings.db");
    KeyHandle handle = KeyHandle::none;
    EXPECT_EQ(file.openKey(RootKey::currentUser, key, handle), SettingsStatus::notFound);
    EXPECT_EQ(file.deleteKey(key), SettingsStatus::notFound);
    EXPECT_EQ(load(file, "name"), "(2)");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(SettingsFile, IsMadeWithItsFolderByTheFirstWriteForItsOwnerAlone) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "config/tessaly/settings.db");
    EXPECT_EQ(save(file, "name", "text"), SettingsStatus::success);
    EXPECT_EQ(load(file, "name"), "text");
    struct stat made {};
    ASSERT_EQ(stat((folder / "config/tessaly/settings.db").c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat((folder / "config/tessaly").c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0700U);
}

TEST(SettingsFile, ThatIsEmptyIsFilledByTheFirstWrite) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder.write("settings.db", ""));
    EXPECT_EQ(load(file, "name"), "(2)");
    EXPECT_EQ(save(file, "name", "text"), SettingsStatus::success);
    EXPECT_EQ(load(file, "name"), "text");
}

TEST(SettingsFile, KeepsItsContentWhenItIsClosed) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "settings.db", "kept");
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "kept");
}

TEST(SettingsFile, KeepsWhatAProcessWroteThatEndedWithoutClosingIt) {
    const fakes::TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
        SettingsFile file(folder / "settings.db");
        _exit(save(file, "name", "last words") == SettingsStatus::success ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "last words");
}

TEST(SettingsFile, SeesWhatAnotherProgramStored) {
    const fakes::TemporaryFolder folder;
    SettingsFile one(folder / "settings.db");
    SettingsFile other(folder / "settings.db");
    save(one, "name", "first");
    EXPECT_EQ(load(other, "name"), "first");
    save(other, "NAME", "second");
    EXPECT_EQ(load(one, "name"), "second");
}

/// Stores numbered values, each in a key that every writer makes too.
bool writeMany(const std::string& path, const std::string& writer) {
    SettingsFile file(path);
    bool stored = true;
    for (int i = 0; i < 100; ++i) {
        const std::string number = std::to_string(i);
        const std::string place = std::string(key) + "\\" + std::to_string(i % 10);
        stored = stored && save(file, writer + number, number, place) == SettingsStatus::success;
    }
    return stored;
}

std::size_t countValues(const std::string& path) {
    SettingsFile file(path);
    std::size_t count = 0;
    std::vector<std::string> names;
    EXPECT_EQ(file.subKeys(key, names), SettingsStatus::success);
    for (const std::string& name : names) {
        std::vector<SettingsValue> values;
        EXPECT_EQ(file.values(std::string(key) + "\\" + name, values), SettingsStatus::success);
        count += values.size();
    }
    return count;
}

TEST(SettingsFile, LosesNothingThatTwoProcessesWriteAtTheSameTime) {
    const fakes::TemporaryFolder folder;
    std::vector<pid_t> children;
    for (const char* writer : {"a", "b"}) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(writeMany(folder / "settings.db", writer) ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(countValues(folder / "settings.db"), 200U);
}

TEST(SettingsFile, LosesNothingThatTwoThreadsWriteAtTheSameTime) {
    const fakes::TemporaryFolder folder;
    bool first = false;
    bool second = false;
    std::thread one([&] { first = writeMany(folder / "settings.db", "a"); });
    std::thread other([&] { second = writeMany(folder / "settings.db", "b"); });
    one.join();
    other.join();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_EQ(countValues(folder / "settings.db"), 200U);
}

TEST(SettingsFile, IsMadeAnewWhenItWasDeletedWhileInUse) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    save(file, "name", "before");
    std::filesystem::remove(folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "(2)");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_EQ(save(file, "other", "after"), SettingsStatus::success);
    EXPECT_EQ(load(file, "name"), "(none)");
    EXPECT_EQ(load(file, "other"), "after");
}

TEST(SettingsFile, IsSeenAsItIsWhenItWasReplacedWhileInUse) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    save(file, "name", "old");
    writeSettings(folder / "new.db", "new");
    std::filesystem::rename(folder / "new.db", folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "new");
    save(file, "name", "changed");
    SettingsFile other(folder / "settings.db");
    EXPECT_EQ(load(other, "name"), "changed");
}

TEST(SettingsFile, RefusesAValueForAKeyThatWasDeletedMeanwhile) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    KeyHandle handle = KeyHandle::none;
    ASSERT_EQ(file.createKey(RootKey::currentUser, key, handle), SettingsStatus::success);
    ASSERT_EQ(file.deleteKey(key), SettingsStatus::success);
    EXPECT_EQ(file.setValue(handle, "name", ValueType::text, nullptr, 0), SettingsStatus::notFound);
}

TEST(SettingsFile, OfGarbageIsDamagedAndStaysAsItIs) {
    const fakes::TemporaryFolder folder;
    for (const std::size_t size : {1U, 7U, 99U, 4096U, 100000U}) {
        const std::string garbage(size, '\xA5');
        SettingsFile file(folder.write("settings.db", garbage));
        ::testing::internal::CaptureStderr();
        expectEveryOperationAnswers(file, SettingsStatus::damaged);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
        EXPECT_TRUE(folder.read("settings.db") == garbage) << size;
    }
}

TEST(SettingsFile, ThatWasTruncatedIsDamagedAndStaysAsItIs) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "whole.db", "text");
    const std::string whole = folder.read("whole.db");
    for (const std::size_t size : {std::size_t{50}, std::size_t{600}, std::size_t{4096}, whole.size() - 1}) {
        SettingsFile file(folder.write("settings.db", whole.substr(0, size)));
        expectEveryOperationAnswers(file, SettingsStatus::damaged);
        EXPECT_TRUE(folder.read("settings.db") == whole.substr(0, size)) << size;
    }
}

TEST(SettingsFile, OfAnotherProgramsDatabaseIsDamagedAndStaysAsItIs) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "settings.db", "text");
    std::string bytes = folder.read("settings.db");
    bytes.replace(68, 4, "OTHR");  // the mark of the program that the file belongs to
    SettingsFile file(folder.write("settings.db", bytes));
    expectEveryOperationAnswers(file, SettingsStatus::damaged);
    EXPECT_TRUE(folder.read("settings.db") == bytes);
}

TEST(SettingsFile, IsReadAgainOnceItWasMended) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "whole.db", "text");
    SettingsFile file(folder.write("settings.db", "garbage"));
    EXPECT_EQ(load(file, "name"), "(1009)");
    folder.write("settings.db", folder.read("whole.db"));
    EXPECT_EQ(load(file, "name"), "text");
}

TEST(SettingsFile, BelowAPlainFileHoldsNothingAndCannotBeMade) {
    const fakes::TemporaryFolder folder;
    folder.write("plain", "text");
    SettingsFile file(folder / "plain/settings.db");
    EXPECT_EQ(load(file, "name"), "(2)");
    EXPECT_EQ(save(file, "name", "text"), SettingsStatus::accessDenied);
    EXPECT_EQ(folder.read("plain"), "text");
}

TEST(SettingsFile, WhoseNameIsAFolderAnswersThatItCannotBeUsed) {
    const fakes::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "settings.db");
    SettingsFile file(folder / "settings.db");
    expectEveryOperationAnswers(file, SettingsStatus::accessDenied);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "settings.db"));
}

TEST(SettingsFile, InAPlaceThatCannotBeWrittenIsReadButNotChanged) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "settings.db", "text");
    ASSERT_EQ(chmod((folder / "settings.db").c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    {
        const WithoutRights rights;
        if (!WithoutRights::bind()) {
            GTEST_SKIP() << "permissions do not bind this user";
        }
        SettingsFile file(folder / "settings.db");
        EXPECT_EQ(load(file, "name"), "text");
        EXPECT_EQ(save(file, "name", "changed"), SettingsStatus::accessDenied);
        EXPECT_EQ(load(file, "name"), "text");
    }
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
}

TEST(SettingsFile, ThatIsReadOnlyInAWritableFolderIsReadButNotChanged) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "settings.db", "text");
    ASSERT_EQ(chmod((folder / "settings.db").c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    const WithoutRights rights;
    if (!WithoutRights::bind()) {
        GTEST_SKIP() << "permissions do not bind this user";
    }
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "text");
    EXPECT_EQ(save(file, "name", "changed"), SettingsStatus::accessDenied);
    EXPECT_EQ(load(file, "name"), "text");
}

TEST(SettingsFile, ThatMayNotBeReadAnswersThatItCannotBeUsed) {
    const fakes::TemporaryFolder folder;
    writeSettings(folder / "settings.db", "text");
    ASSERT_EQ(chmod((folder / "settings.db").c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const WithoutRights rights;
    if (!WithoutRights::bind()) {
        GTEST_SKIP() << "permissions do not bind this user";
    }
    SettingsFile file(folder / "settings.db");
    expectEveryOperationAnswers(file, SettingsStatus::accessDenied);
}

TEST(SettingsFile, InAFolderThatMayNotBeWrittenIsNotMade) {
    const fakes::TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    const WithoutRights rights;
    if (!WithoutRights::bind()) {
        GTEST_SKIP() << "permissions do not bind this user";
    }
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(load(file, "name"), "(2)");
    EXPECT_EQ(save(file, "name", "text"), SettingsStatus::accessDenied);
}

TEST(SettingsFile, ListsTheKeysBelowOneAsTheyWereSpelled) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    for (const char* path :
         {R"(Software\Ürbild\Two)", R"(software\übung)", R"(SOFTWARE\ürbild\One)", "Top"}) {
        save(file, "name", "text", path);
    }
    std::vector<std::string> names;
    EXPECT_EQ(file.subKeys("", names), SettingsStatus::success);
    EXPECT_EQ(names, (std::vector<std::string>{"Software", "Top"}));
    EXPECT_EQ(file.subKeys("SOFTWARE", names), SettingsStatus::success);
    EXPECT_EQ(names, (std::vector<std::string>{"Ürbild", "übung"}));
    EXPECT_EQ(file.subKeys(R"(software\ürbild\)", names), SettingsStatus::success);
    EXPECT_EQ(names, (std::vector<std::string>{"Two", "One"}));
    EXPECT_EQ(file.subKeys("top", names), SettingsStatus::success);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(file.subKeys("missing", names), SettingsStatus::notFound);
}

TEST(SettingsFile, TakesDoubledSeparatorsInAPathForOne) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(save(file, "name", "text", R"(\software\\maker\service\)"), SettingsStatus::success);
    EXPECT_EQ(load(file, "name"), "text");
    std::vector<std::string> names;
    EXPECT_EQ(file.subKeys("software", names), SettingsStatus::success);
    EXPECT_EQ(names, std::vector<std::string>{"maker"});
}

TEST(SettingsFile, DeletesAKeyWithEverythingBelowItAndNothingBeside) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    for (const char* path : {R"(a\b\c\d)", R"(a\b2)", R"(a\b.c)"}) {
        save(file, "name", "text", path);
    }
    save(file, "name", "text", R"(a\b)");
    EXPECT_EQ(file.deleteKey(R"(A\B\)"), SettingsStatus::success);
    std::vector<std::string> names;
    EXPECT_EQ(file.subKeys("a", names), SettingsStatus::success);
    EXPECT_EQ(names, (std::vector<std::string>{"b2", "b.c"}));
    save(file, "fresh", "text", R"(a\b)");
    std::vector<SettingsValue> values;
    EXPECT_EQ(file.values(R"(a\b)", values), SettingsStatus::success);
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values.at(0).name, "fresh");
    EXPECT_EQ(file.deleteKey("missing"), SettingsStatus::notFound);
}

}  // namespace
