// What stands on the settings store, on a settings file that is of no use.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "infra/Services.h"
#include "infra/tysRegistry.h"
#include "infra/tysSupport.h"
#include "platform/posix/settings_file.h"
#include "unit/infra/parts.h"

namespace {

using infra::LogLevel;
using infra::Services;
using infra::tysRegistry;
using platform::ValueType;

constexpr auto root = platform::RootKey::currentUser;
constexpr auto key = infra::indexerKey;

/// Every operation on a settings file that is of no use: defaults, and not a word.
void expectDefaultsAndSilence(const std::string& path) {
    platform::posix::SettingsFile file(path);
    ScriptedFiles files;
    std::vector<std::string> log;
    tysRegistry registry(file, files,
                         [&log](const std::string& message, LogLevel) { log.push_back(message); });
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    registry.SaveSettingString(root, key, "name", "text");
    registry.SaveSettingLong(root, key, "number", 1);
    registry.DeleteValue(root, key, "name");
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    EXPECT_EQ(registry.GetSettingLong(root, key, "number", 7), 7);
    std::string name = "before";
    ValueType type{};
    EXPECT_FALSE(registry.EnumValues(root, key, 0, name, type));
    EXPECT_EQ(name, "before");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(log.empty());
}

TEST(TysRegistryOnAFile, LivesOnDefaultsWhereTheFileIsDamaged) {
    const fakes::TemporaryFolder folder;
    expectDefaultsAndSilence(folder.write("settings.db", "this is no settings file"));
    EXPECT_EQ(folder.read("settings.db"), "this is no settings file");
}

// A path that leads through a plain file, and a folder in the file's place, bind for every user.
TEST(TysRegistryOnAFile, LivesOnDefaultsWhereTheFileCannotBeMade) {
    const fakes::TemporaryFolder folder;
    folder.write("plain", "text");
    expectDefaultsAndSilence(folder / "plain/settings.db");
    std::filesystem::create_directory(folder / "settings.db");
    expectDefaultsAndSilence(folder / "settings.db");
}

TEST(TysRegistryOnAFile, GivesDefaultsUntilTheFirstValueIsSaved) {
    const fakes::TemporaryFolder folder;
    platform::posix::SettingsFile file(folder / "settings.db");
    ScriptedFiles files;
    tysRegistry registry(file, files, [](const std::string& message, LogLevel) { FAIL() << message; });
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    EXPECT_FALSE(std::filesystem::exists(folder / "settings.db"));
    registry.SaveSettingString(root, key, "name", "text");
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "text");
}

TEST(WriteLogOnADamagedSettingsFile, LivesOnTheDefaults) {
    Parts parts;
    platform::posix::SettingsFile settings(parts.folder.write("settings.db", "garbage"));
    Services services({settings, parts.database, parts.automation, parts.toolkit, parts.files, parts.process,
                       parts.drives, parts.clock});
    services.support.setLogFilePath(parts.folder / "service.log");
    services.support.WriteLog("kept", LogLevel::interest);
    services.support.WriteLog("off", LogLevel::uiOutput);
    EXPECT_EQ(parts.folder.read("service.log"), "16 Nov 2026 01:47:03: Interest: kept\r\n");
}

}  // namespace
