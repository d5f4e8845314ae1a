#include "platform/windows/windows_settings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "infra/tysRegistry.h"
#include "infra/tysSupport.h"
#include "platform/windows/com_automation.h"
#include "platform/windows/utf16.h"
#include "platform/windows/windows_files.h"
#include "unit/platform/windows/scratch_registry.h"

namespace {

using platform::RootKey;
using platform::ValueType;
using platform::windows::toUtf8;
using platform::windows::WindowsSettings;

constexpr RootKey root = RootKey::currentUser;
constexpr const char* keyPath = R"(software\orlent corporation\tessaly\service)";

/// A letter beyond ASCII, in both cases where it has two.
struct OwnLetter {
    wchar_t lower;
    wchar_t upper;
};

/// One that the code page of this machine has.
OwnLetter ownLetter() {
    for (const OwnLetter letter : {OwnLetter{L'\u00F6', L'\u00D6'}, OwnLetter{L'\u0436', L'\u0416'},
                                   OwnLetter{L'\u03B2', L'\u0392'}, OwnLetter{L'\u05D0', L'\u05D0'},
                                   OwnLetter{L'\u0628', L'\u0628'}, OwnLetter{L'\u0E01', L'\u0E01'}}) {
        BOOL replaced = FALSE;
        const bool hasAll = ::GetACP() == CP_UTF8;
        ::WideCharToMultiByte(CP_ACP, hasAll ? 0 : WC_NO_BEST_FIT_CHARS, &letter.lower, 1, nullptr, 0,
                              nullptr, hasAll ? nullptr : &replaced);
        if (replaced == FALSE) {
            return letter;
        }
    }
    ADD_FAILURE() << "name a letter of code page " << ::GetACP();
    return {L'o', L'O'};
}

/// The service's own settings on the registry, looked at from outside.
class Registry : public ::testing::Test {
  protected:
    /// Type and bytes of a value as another program sees them; the type -1 where there is none.
    std::pair<int, std::string> stored(const std::string& name) {
        DWORD type = 0;
        DWORD size = 0;
        if (::RegGetValueA(HKEY_CURRENT_USER, keyPath, name.c_str(), RRF_RT_ANY | RRF_NOEXPAND, &type,
                           nullptr, &size) != ERROR_SUCCESS) {
            return {-1, ""};
        }
        HKEY key = nullptr;
        EXPECT_EQ(::RegOpenKeyA(HKEY_CURRENT_USER, keyPath, &key), ERROR_SUCCESS);
        std::string bytes(size + 2, '?');
        size += 2;
        EXPECT_EQ(::RegQueryValueExA(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()),
                                     &size),
                  ERROR_SUCCESS);
        ::RegCloseKey(key);
        return {static_cast<int>(type), bytes.substr(0, size)};
    }

    /// Stores a value as another program does, in the system's own wide characters.
    void put(const std::wstring& name, DWORD type, const std::wstring& text) {
        HKEY key = nullptr;
        ASSERT_EQ(::RegCreateKeyA(HKEY_CURRENT_USER, keyPath, &key), ERROR_SUCCESS);
        ASSERT_EQ(::RegSetValueExW(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(text.data()),
                                   static_cast<DWORD>(text.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        ::RegCloseKey(key);
    }

    ScratchRegistry scratch;
    WindowsSettings settings;
    platform::windows::ComAutomationFactory automation;
    platform::windows::WindowsFiles files{automation};
    std::vector<std::string> log;
    infra::tysRegistry registry{
        settings, files, [this](const std::string& message, infra::LogLevel) { log.push_back(message); }};
};

TEST_F(Registry, KeepsATextAsATextWithItsEnd) {
    registry.SaveSettingString(root, keyPath, "DataBasePath", "C:\\library.mdb");
    EXPECT_EQ(stored("DataBasePath"), std::make_pair(int{REG_SZ}, std::string("C:\\library.mdb\0", 15)));
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "DataBasePath"), "C:\\library.mdb");
}

TEST_F(Registry, KeepsAnEmptyTextWithoutAnyByte) {
    registry.SaveSettingString(root, keyPath, "LogFilePath", "");
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyA(HKEY_CURRENT_USER, keyPath, &key), ERROR_SUCCESS);
    DWORD type = 0;
    DWORD size = 99;
    EXPECT_EQ(::RegQueryValueExA(key, "LogFilePath", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    ::RegCloseKey(key);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "LogFilePath", "default"), "");
}

TEST_F(Registry, KeepsANumberInFourBytes) {
    registry.SaveSettingLong(root, keyPath, "PollInterval", -2);
    EXPECT_EQ(stored("PollInterval"), std::make_pair(int{REG_DWORD}, std::string("\xFE\xFF\xFF\xFF")));
    EXPECT_EQ(registry.GetSettingLong(root, keyPath, "PollInterval"), -2);
}

TEST_F(Registry, ReadsATextWithoutItsEnd) {
    put(L"name", REG_SZ, L"hello");
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "name"), "hello");
}

TEST_F(Registry, ReadsAnExpandableTextAsItIsStored) {
    put(L"name", REG_EXPAND_SZ, std::wstring(L"%TEMP%\\a\0", 9));
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "name"), "%TEMP%\\a");
}

TEST_F(Registry, ReadsATextUpToItsFirstNul) {
    put(L"name", REG_SZ, std::wstring(L"before\0after\0", 13));
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "name"), "before");
}

TEST_F(Registry, GivesTheDefaultForAValueOfAnotherType) {
    registry.SaveSettingLong(root, keyPath, "number", 5);
    registry.SaveSettingString(root, keyPath, "text", "5");
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "number", "default"), "default");
    EXPECT_EQ(registry.GetSettingLong(root, keyPath, "text", 7), 7);
}

TEST_F(Registry, MakesEveryMissingKeyForANumber) {
    registry.SaveSettingLong(root, R"(a\b\c)", "number", 5);
    EXPECT_EQ(registry.GetSettingLong(root, R"(A\B\C)", "NUMBER"), 5);
}

TEST_F(Registry, ListsTheValuesOfAKey) {
    std::string name = "before";
    ValueType type{};
    EXPECT_FALSE(registry.EnumValues(root, keyPath, 0, name, type));
    EXPECT_EQ(name, "before");
    registry.SaveSettingString(root, keyPath, "C:\\Temp\\1.tmp", "1");
    EXPECT_TRUE(registry.EnumValues(root, keyPath, 0, name, type));
    EXPECT_EQ(name, "C:\\Temp\\1.tmp");
    EXPECT_EQ(type, ValueType::text);
    registry.DeleteValue(root, keyPath, name);
    EXPECT_FALSE(registry.EnumValues(root, keyPath, 0, name, type));
    EXPECT_EQ(name, "");
}

// The values that the service itself stores never come near the room for names and data.
TEST_F(Registry, EndsAListAtAValueThatDoesNotFit) {
    registry.SaveSettingString(root, keyPath, "a", std::string(254, 'x'));
    std::string name;
    ValueType type{};
    EXPECT_TRUE(registry.EnumValues(root, keyPath, 0, name, type));
    registry.SaveSettingString(root, keyPath, "a", std::string(256, 'x'));
    EXPECT_FALSE(registry.EnumValues(root, keyPath, 0, name, type));
    EXPECT_EQ(name, "");
}

TEST_F(Registry, KeepsTheCharactersOfTheCodePage) {
    const OwnLetter letter = ownLetter();
    const std::string lower = toUtf8({&letter.lower, 1});
    const std::string upper = toUtf8({&letter.upper, 1});
    registry.SaveSettingString(root, keyPath, "Gr" + lower + "n", "na" + lower + "ve");
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "GR" + upper + "N"), "na" + lower + "ve");
    wchar_t text[10] = {};
    DWORD size = sizeof text;
    EXPECT_EQ(::RegGetValueW(HKEY_CURRENT_USER, L"software\\orlent corporation\\tessaly\\service",
                             (std::wstring(L"Gr") + letter.lower + L"n").c_str(), RRF_RT_REG_SZ, nullptr,
                             text, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(std::wstring(text), std::wstring(L"na") + letter.lower + L"ve");
}

// No code page has half a surrogate pair, UTF-8 included.
TEST_F(Registry, LogsATextThatTheCodePageDoesNotHave) {
    const std::string half = "\xED\xA0\xBC";
    registry.SaveSettingString(root, keyPath, "name", half);
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0], "tysRegistry.SaveSettingString - \"" + half +
                          "\" has a character that is not in the system's code page " +
                          std::to_string(::GetACP()));
    EXPECT_EQ(registry.GetSettingString(root, keyPath, "name", "default"), "default");
}

TEST_F(Registry, GivesTheSystemsFolderForTemporaryFiles) {
    const std::string folder = registry.getTempDirectory();
    EXPECT_TRUE(folder.ends_with('\\')) << folder;
    EXPECT_NE(::GetFileAttributesA(folder.c_str()), INVALID_FILE_ATTRIBUTES);
}

}  // namespace
