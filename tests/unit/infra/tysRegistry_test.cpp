#include "infra/tysRegistry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "infra/tysSupport.h"
#include "unit/infra/parts.h"

namespace {

using infra::LogLevel;
using infra::tysRegistry;
using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::ValueType;

constexpr RootKey root = RootKey::currentUser;
constexpr const char* key = R"(software\orlent corporation\tessaly\service)";

class TysRegistry : public ::testing::Test {
  protected:
    void put(const std::string& name, const std::string& bytes, ValueType type) {
        KeyHandle handle = KeyHandle::none;
        ASSERT_EQ(store.createKey(root, key, handle), SettingsStatus::success);
        ASSERT_EQ(store.setValue(handle, name, type, reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                 static_cast<std::uint32_t>(bytes.size())),
                  SettingsStatus::success);
        store.closeKey(handle);
    }

    /// Type and size of a stored value; -1 where there is none.
    std::pair<int, int> stored(const std::string& name) {
        KeyHandle handle = KeyHandle::none;
        ValueType type{};
        std::uint32_t size = 0;
        if (store.openKey(root, key, handle) != SettingsStatus::success ||
            store.queryValue(handle, name, type, nullptr, size) != SettingsStatus::success) {
            return {-1, -1};
        }
        store.closeKey(handle);
        return {static_cast<int>(type), static_cast<int>(size)};
    }

    fakes::MemorySettingsStore store;
    ScriptedFiles files;
    std::vector<std::pair<std::string, LogLevel>> log;
    tysRegistry registry{store, files, [this](const std::string& message, LogLevel level) {
                             log.emplace_back(message, level);
                         }};
};

TEST_F(TysRegistry, GivesTheDefaultWhereTheKeyOrTheValueIsMissing) {
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    EXPECT_EQ(registry.GetSettingString(root, key, "name"), "");
    EXPECT_EQ(registry.GetSettingLong(root, key, "name", 7), 7);
    EXPECT_EQ(registry.GetSettingLong(root, key, "name"), 0);
    put("other", "text", ValueType::text);
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    EXPECT_EQ(registry.GetSettingLong(root, key, "name", 7), 7);
    EXPECT_TRUE(log.empty());
}

TEST_F(TysRegistry, GivesBackWhatWasSaved) {
    registry.SaveSettingString(root, key, "DataBasePath", R"(\\srv\größe\library.mdb)");
    registry.SaveSettingLong(root, key, "StoreContext", -2);
    EXPECT_EQ(registry.GetSettingString(root, key, "databasepath"), R"(\\srv\größe\library.mdb)");
    EXPECT_EQ(registry.GetSettingLong(root, key, "STORECONTEXT"), -2);
}

TEST_F(TysRegistry, KeepsEveryNumberOf32Bits) {
    for (const std::int32_t number : {0, 1, -1, 60, 0x12345678, INT32_MAX, INT32_MIN}) {
        registry.SaveSettingLong(root, key, "number", number);
        EXPECT_EQ(registry.GetSettingLong(root, key, "number", 5), number);
    }
    EXPECT_EQ(stored("number"), std::make_pair(4, 4));
}

TEST_F(TysRegistry, StoresTextWithoutAnEndingNul) {
    registry.SaveSettingString(root, key, "name", "four");
    EXPECT_EQ(stored("name"), std::make_pair(1, 4));
}

TEST_F(TysRegistry, GivesTheDefaultForANumberReadAsText) {
    registry.SaveSettingLong(root, key, "name", 42);
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
}

TEST_F(TysRegistry, GivesTheDefaultForATextReadAsNumber) {
    registry.SaveSettingString(root, key, "four", "1234");
    registry.SaveSettingString(root, key, "long", "123456");
    EXPECT_EQ(registry.GetSettingLong(root, key, "four", 7), 7);
    EXPECT_EQ(registry.GetSettingLong(root, key, "long", 7), 7);
}

TEST_F(TysRegistry, GivesTheDefaultForBytesAndNumbersOfOtherWidths) {
    put("bytes", "1234", ValueType::binary);
    put("wide", "12345678", ValueType::number);
    EXPECT_EQ(registry.GetSettingString(root, key, "bytes", "default"), "default");
    EXPECT_EQ(registry.GetSettingLong(root, key, "bytes", 7), 7);
    EXPECT_EQ(registry.GetSettingLong(root, key, "wide", 7), 7);
}

TEST_F(TysRegistry, ReadsExpandableTextAsItIsStored) {
    put("name", "%TEMP%\\x", ValueType::expandableText);
    EXPECT_EQ(registry.GetSettingString(root, key, "name"), "%TEMP%\\x");
}

TEST_F(TysRegistry, ReadsTextUpToItsFirstNul) {
    put("ended", std::string("text\0", 5), ValueType::text);
    put("embedded", std::string("before\0after\0", 13), ValueType::text);
    put("nothing", std::string("\0after", 6), ValueType::text);
    EXPECT_EQ(registry.GetSettingString(root, key, "ended"), "text");
    EXPECT_EQ(registry.GetSettingString(root, key, "embedded"), "before");
    EXPECT_EQ(registry.GetSettingString(root, key, "nothing", "default"), "");
}

TEST_F(TysRegistry, SavesEmptyTextAsAValueWithoutAnyByte) {
    registry.SaveSettingString(root, key, "name", "");
    EXPECT_EQ(stored("name"), std::make_pair(1, 0));
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "");
}

TEST_F(TysRegistry, MakesEveryMissingKeyOfThePathWhenItSaves) {
    registry.SaveSettingLong(root, R"(one\two\three)", "name", 5);
    for (const char* path : {"one", R"(one\two)", R"(one\two\three)"}) {
        KeyHandle handle = KeyHandle::none;
        EXPECT_EQ(store.openKey(root, path, handle), SettingsStatus::success) << path;
    }
    EXPECT_EQ(registry.GetSettingLong(root, R"(ONE\TWO\THREE)", "name"), 5);
}

TEST_F(TysRegistry, DeletesAValueAndLeavesItsKey) {
    registry.SaveSettingString(root, key, "name", "text");
    registry.DeleteValue(root, key, "NAME");
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    KeyHandle handle = KeyHandle::none;
    EXPECT_EQ(store.openKey(root, key, handle), SettingsStatus::success);
    registry.DeleteValue(root, key, "name");
    registry.DeleteValue(root, "missing", "name");
    EXPECT_EQ(store.openKey(root, "missing", handle), SettingsStatus::notFound);
    EXPECT_TRUE(log.empty());
}

TEST_F(TysRegistry, ListsNamesAndTypesByIndex) {
    registry.SaveSettingString(root, key, "Größe", "text");
    registry.SaveSettingLong(root, key, "number", 1);
    std::string name;
    ValueType type{};
    EXPECT_TRUE(registry.EnumValues(root, key, 0, name, type));
    EXPECT_EQ(name, "Größe");
    EXPECT_EQ(type, ValueType::text);
    EXPECT_TRUE(registry.EnumValues(root, key, 1, name, type));
    EXPECT_EQ(name, "number");
    EXPECT_EQ(type, ValueType::number);
    EXPECT_FALSE(registry.EnumValues(root, key, 2, name, type));
    EXPECT_EQ(name, "");
}

// A caller that deletes what it has handled reads a whole key at index 0; what it leaves, it meets again.
TEST_F(TysRegistry, GivesTheSameValueAtAnIndexUntilItIsDeleted) {
    registry.SaveSettingLong(root, key, "first", 1);
    registry.SaveSettingString(root, key, "second", "text");
    std::string name;
    ValueType type{};
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(registry.EnumValues(root, key, 0, name, type));
        EXPECT_EQ(name, "first");
    }
    registry.DeleteValue(root, key, "first");
    EXPECT_TRUE(registry.EnumValues(root, key, 0, name, type));
    EXPECT_EQ(name, "second");
}

TEST_F(TysRegistry, LeavesTheNameAsItWasWhereTheKeyIsMissing) {
    std::string name = "before";
    ValueType type = ValueType::binary;
    EXPECT_FALSE(registry.EnumValues(root, "missing", 0, name, type));
    EXPECT_EQ(name, "before");
    EXPECT_EQ(type, ValueType::binary);
}

TEST_F(TysRegistry, EmptiesTheNameWhereTheKeyHoldsNothing) {
    registry.SaveSettingString(root, key, "name", "text");
    registry.DeleteValue(root, key, "name");
    std::string name = "before";
    ValueType type{};
    EXPECT_FALSE(registry.EnumValues(root, key, 0, name, type));
    EXPECT_EQ(name, "");
}

TEST_F(TysRegistry, EndsAListAtANameOrAValueThatIsTooLong) {
    const std::string longest(254, 'n');
    registry.SaveSettingString(root, "names", longest, "text");
    registry.SaveSettingString(root, "names", longest + "n", "text");
    registry.SaveSettingString(root, "values", "fits", std::string(255, 'v'));
    registry.SaveSettingString(root, "values", "long", std::string(256, 'v'));
    std::string name;
    ValueType type{};
    EXPECT_TRUE(registry.EnumValues(root, "names", 0, name, type));
    EXPECT_EQ(name, longest);
    EXPECT_FALSE(registry.EnumValues(root, "names", 1, name, type));
    EXPECT_TRUE(registry.EnumValues(root, "values", 0, name, type));
    EXPECT_FALSE(registry.EnumValues(root, "values", 1, name, type));
    EXPECT_EQ(name, "");
}

TEST_F(TysRegistry, GivesTheTemporaryFolderAsTheSystemTellsIt) {
    files.temporary = "/var/tmp/";
    EXPECT_EQ(registry.getTempDirectory(), "/var/tmp/");
    EXPECT_EQ(files.askedRoom, 255U);
    files.temporary.clear();
    EXPECT_EQ(registry.getTempDirectory(), "");
}

TEST_F(TysRegistry, ClosesEveryKeyThatItOpened) {
    std::string name;
    ValueType type{};
    registry.SaveSettingString(root, key, "name", "text");
    registry.SaveSettingLong(root, key, "number", 1);
    registry.GetSettingString(root, key, "name");
    registry.GetSettingLong(root, key, "missing");
    registry.EnumValues(root, key, 5, name, type);
    registry.DeleteValue(root, key, "name");
    EXPECT_EQ(store.openHandles(), 0U);
}

TEST_F(TysRegistry, SaysNothingAboutStatusesThatAreNotSuccess) {
    registry.SaveSettingString(root, key, "name", "text");
    for (const SettingsStatus status : {SettingsStatus::accessDenied, SettingsStatus::damaged}) {
        store.failWith = status;
        std::string name = "before";
        ValueType type{};
        registry.SaveSettingString(root, key, "name", "changed");
        registry.SaveSettingLong(root, key, "name", 5);
        registry.DeleteValue(root, key, "name");
        EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
        EXPECT_EQ(registry.GetSettingLong(root, key, "name", 7), 7);
        EXPECT_FALSE(registry.EnumValues(root, key, 0, name, type));
        EXPECT_EQ(name, "before");
    }
    store.failWith.reset();
    EXPECT_EQ(registry.GetSettingString(root, key, "name"), "text");
    EXPECT_TRUE(log.empty());
}

TEST_F(TysRegistry, LogsAnErrorUnderTheLabelOfTheOperationAndGivesWhatItHad) {
    registry.SaveSettingString(root, key, "name", "text");
    store.conversionFails = true;
    std::string name = "before";
    ValueType type{};
    registry.DeleteValue(root, key, "name");
    EXPECT_EQ(registry.GetSettingString(root, key, "name", "default"), "default");
    registry.SaveSettingString(root, key, "name", "changed");
    EXPECT_EQ(registry.GetSettingLong(root, key, "name", 7), 7);
    registry.SaveSettingLong(root, key, "name", 5);
    EXPECT_FALSE(registry.EnumValues(root, key, 0, name, type));
    EXPECT_EQ(name, "before");
    files.folderFailure = [] { throw base::RuntimeError(5, "no folder"); };
    EXPECT_EQ(registry.getTempDirectory(), "");
    const std::string fault = "text cannot be converted";
    const std::vector<std::pair<std::string, LogLevel>> expected{
        {"tysRegistry.DeleteValue - " + fault, LogLevel::errorReport},
        {"tysRegistry.GetSettingString - " + fault, LogLevel::errorReport},
        {"tysRegistry.SaveSettingString - " + fault, LogLevel::errorReport},
        {"tysRegistry.GetSettingLong - " + fault, LogLevel::errorReport},
        {"tysRegistry.SaveSettingLong - " + fault, LogLevel::errorReport},
        {"tysRegistry.EnumValues - " + fault, LogLevel::errorReport},
        {"tysRegistry.getTempDirectory - no folder", LogLevel::errorReport},
    };
    EXPECT_EQ(log, expected);
    EXPECT_EQ(store.openHandles(), 0U);
}

}  // namespace
